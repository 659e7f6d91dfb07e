// Window messages of the player's own.
#pragma once

#include "platform/framework/winuser.h"

// Sent by the message panel to the main window when a message has been played to its end.
inline constexpr UINT WM_PLAYBACK_ENDED = WM_USER + 201;

// Sent by the volume dialog to the wave device's window when it is closed with its close box, and passed on
// from there to the main window.
inline constexpr UINT WM_VOLUME_CLOSED = WM_USER + 101;

// Posted by the reader thread to the message panel when it has met the end of the message. It only asks the
// panel to look at how things stand, so one that comes late does no harm.
inline constexpr UINT WM_READER_ENDED = WM_USER + 202;
