// SPDX-License-Identifier: MIT
// The UI thread's message queue: the one place where other threads pass work to the UI thread.
//
// A message posted to a window that has been destroyed meanwhile is dropped when its turn comes.
#pragma once

#include <span>

#include "platform/framework/wintypes.h"

// Appends a message for the window. Any thread; never blocks on the UI thread, and allocates nothing while
// fewer than 4096 messages wait. FALSE when the handle names no window.
BOOL PostMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);
// One message for each lParam, and the UI thread is woken once.
BOOL PostMessages(HWND hWnd, UINT message, WPARAM wParam, std::span<const LPARAM> lParams);

// Calls the window's procedure and returns its result, 0 when there is no window. Difference from the
// framework: UI thread only; on another one the program ends with a message.
LRESULT SendMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

// Whether the handle names a living window. Any thread.
BOOL IsWindow(HWND hWnd);
