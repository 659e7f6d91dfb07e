// SPDX-License-Identifier: MIT
// Starting other programs.
#pragma once

#include <string>
#include <vector>

#include "platform/framework/wintypes.h"

// Starts a program with its arguments and does not wait for it: it runs in a session of its own, outlives
// this process and leaves no zombie. The program is an absolute path, or a name that is looked up on PATH. It
// inherits standard input, output and error. variable, if not empty, is a "NAME=value" that its environment
// gets besides. Returns false when there is no such program or it cannot be run. UI thread.
bool StartDetached(const std::vector<std::string>& arguments, const std::string& variable = {});

// Runs a command line: words parted by blanks, double quotes around a word that holds some. Returns 33 when
// the program was started, else 2 (a value up to 31 is a failure). Of the show commands only
// SW_SHOWNOACTIVATE makes a difference: the program's window is to leave the keyboard where it is, which is
// asked of it and the window manager by a start-up notification from long ago. UI thread.
UINT WinExec(LPCTSTR lpCmdLine, UINT uCmdShow);
