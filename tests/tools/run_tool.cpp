#include "tests/tools/run_tool.h"

#include <QByteArray>
#include <QCryptographicHash>
#include <iterator>

#include "codec/message_format.h"

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

std::vector<uint8_t> MessageHeader(uint8_t rate, uint32_t frame_count) {
    std::vector<uint8_t> message(std::begin(kMessageMagic), std::end(kMessageMagic));
    message.push_back(rate);
    for (int shift = 0; shift < 32; shift += 8) message.push_back(static_cast<uint8_t>(frame_count >> shift));
    return message;
}

void AppendSpeech(std::vector<uint8_t>& message, uint8_t filler) {
    message.push_back(kSpeechRecord);
    message.insert(message.end(), kSpeechBlockBytes, filler);
}

void AppendVideo(std::vector<uint8_t>& message, unsigned length_field, const std::vector<uint8_t>& payload) {
    message.push_back(kVideoRecord);
    message.push_back(static_cast<uint8_t>(length_field));
    message.push_back(static_cast<uint8_t>(length_field >> 8));
    message.insert(message.end(), payload.begin(), payload.end());
}
