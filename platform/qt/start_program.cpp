// SPDX-License-Identifier: MIT
#include "platform/shell/start_program.h"

#include <QProcess>

#include "platform/framework/winuser.h"

namespace {

constexpr UINT started = 33;
constexpr UINT file_not_found = 2;

// The time in it, 1 ms after the display's start, is what the program's toolkit tells the window manager as
// the time of the person's wish: earlier than any use of the window that has the keyboard.
constexpr const char* notification_from_long_ago = "DESKTOP_STARTUP_ID=trvplayer_TIME1";

bool Start(QStringList words, const QString& variable) {
    if (words.isEmpty()) return false;
    QProcess process;
    process.setProgram(words.takeFirst());
    process.setArguments(words);
    if (!variable.isEmpty()) {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
        process.setProcessEnvironment(environment);
    }
    return process.startDetached();
}

}  // namespace

bool StartDetached(const std::vector<std::string>& arguments, const std::string& variable) {
    QStringList words;
    for (const std::string& argument : arguments) words << QString::fromStdString(argument);
    return Start(words, QString::fromStdString(variable));
}

UINT WinExec(LPCTSTR lpCmdLine, UINT uCmdShow) {
    const bool activate = uCmdShow != static_cast<UINT>(SW_SHOWNOACTIVATE);
    return Start(QProcess::splitCommand(QString::fromUtf8(lpCmdLine)),
                 activate ? "" : notification_from_long_ago)
               ? started
               : file_not_found;
}
