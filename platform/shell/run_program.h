// Starting other programs.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/framework/wintypes.h"

// Starts a program with its arguments and does not wait for it: it runs in a session of its own, outlives
// this process and leaves no zombie. The program is an absolute path, or a name that is looked up on PATH. It
// inherits standard input, output and error, no other descriptor unless marked as inheritable, and the
// default handling of every signal. variable, if not empty, is a "NAME=value" that its environment gets
// besides. Returns 0 once the program runs, else the errno value: ENOENT when there is no such program. Any
// thread.
int StartDetached(const std::vector<std::string>& arguments, const std::string& variable = {});

// The file that StartDetached would run for a name; empty when there is none. Any thread.
std::string FindProgram(std::string_view name);

// Runs a command line: words parted by blanks, double quotes around a word that holds some. Returns a value
// above 31 when the program was started, else 0 (out of resources), 2 (no such program), 5 (not permitted) or
// 11 (not a program). Of the show commands only SW_SHOWNOACTIVATE makes a difference: the program's window is
// to leave the keyboard where it is, which is asked of it and the window manager by a start-up notification
// from long ago. Any thread.
UINT WinExec(LPCTSTR lpCmdLine, UINT uCmdShow);
