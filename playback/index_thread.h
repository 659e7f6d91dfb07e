// SPDX-License-Identifier: MIT
// The thread that builds a message's index while it may already play.
#pragma once

#include "platform/framework/afxwin.h"
#include "playback/message_source.h"

// Posted to the message panel when the index is complete. wParam: the source's nSerial.
inline constexpr UINT WM_INDEX_BUILT = WM_USER + 204;

// Starts the thread, unless it runs already; it goes on where the index ended and ends with the message, or
// when the source's stopIndexing is requested. Without it a message plays all the same, and places in it are
// found by reading from the start. UI thread.
void StartIndexing(const std::shared_ptr<MessageSource>& pSource);
