// The UI thread's message queue: the one place where other threads hand work to the UI thread.
//
// A message posted to a window that has been destroyed meanwhile is dropped when it is taken out.
#pragma once

#include "platform/framework/wintypes.h"

// Appends a message for the window. Any thread; never blocks on the UI thread, and allocates nothing while
// fewer than 4096 messages wait. FALSE when the handle names no window.
BOOL PostMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

// Delivers a message and returns its result. On the UI thread the window procedure is called at once; on
// another thread the caller waits until the UI thread has handled it (0 when the window goes first). That
// thread must run its message loop: a sender whom it waits for would never be answered.
LRESULT SendMessage(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

// Whether the handle names a living window. Any thread.
BOOL IsWindow(HWND hWnd);
