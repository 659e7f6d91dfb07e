// SPDX-License-Identifier: MIT
// Ends a stream for good. Everything with the lock held.
#pragma once

#include <pulse/stream.h>

// Drops the caller's reference. A stream that the server is still creating cannot be ended yet: it is as soon
// as it is there, since it would stay at the server otherwise.
inline void EndStream(pa_stream* stream) {
    pa_stream_set_state_callback(stream, nullptr, nullptr);
    pa_stream_set_read_callback(stream, nullptr, nullptr);
    pa_stream_set_moved_callback(stream, nullptr, nullptr);
    pa_stream_set_event_callback(stream, nullptr, nullptr);
    if (pa_stream_get_state(stream) == PA_STREAM_CREATING) {
        const auto created = [](pa_stream* late, void*) {
            if (pa_stream_get_state(late) == PA_STREAM_CREATING) return;
            pa_stream_set_state_callback(late, nullptr, nullptr);
            pa_stream_disconnect(late);
            pa_stream_unref(late);
        };
        pa_stream_set_state_callback(stream, created, nullptr);
        return;
    }
    pa_stream_disconnect(stream);
    pa_stream_unref(stream);
}
