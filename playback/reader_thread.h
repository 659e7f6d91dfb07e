// SPDX-License-Identifier: MIT
// The reader thread: reads a message's records in file order and turns them into sound and pictures.
#pragma once

#include <memory>

#include "platform/framework/afxmt.h"
#include "platform/framework/afxwin.h"
#include "playback/message_source.h"

// Posted by the reader thread to the message panel. wParam: the number of the gate's Move that the reader was
// following; it tells what comes late.

// Everything has been read and handed over. lParam: the MessageEnd.
inline constexpr UINT WM_READER_ENDED = WM_USER + 202;
// There was more after all, because the file has grown.
inline constexpr UINT WM_READER_GOES_ON = WM_USER + 203;

// The file has grown by speech for a time that silence was handed over for.
inline constexpr UINT WM_LATE_SPEECH = WM_USER + 206;

// The source's trace holds the levels before the place that was sought.
inline constexpr UINT WM_TRACE_READ = WM_USER + 205;

// The thread's procedure; takes a std::shared_ptr<MessageSource> made with new, which it deletes, and returns
// 0. Records are read as far ahead as the queues allow, and what plays them sets the pace; without a sound
// device that is real time. Stretches without speech are filled with silence, so that the sound device's
// clock runs through them too. At the end of the message the reader tells the device, stops running and posts
// WM_READER_ENDED; when it is run again it looks whether the file has grown. It ends through
// CReaderGate::End. Its buffers are made once, when it starts.
UINT ReaderThreadProc(LPVOID pParams);
