// SPDX-License-Identifier: MIT
#include "tests/tools/run_tool.h"

#include <QByteArray>
#include <QCryptographicHash>

ToolRun RunTrvdump(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), TRVDUMP_PATH);
    return RunProgram(arguments);
}

ToolRun RunTrvmake(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), TRVMAKE_PATH);
    return RunProgram(arguments);
}

std::string Sha256(const std::vector<uint8_t>& bytes) {
    const QByteArray data(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256).toHex().toStdString();
}
