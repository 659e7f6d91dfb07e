// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <stop_token>
#include <vector>

#include "codec/message_reader.h"
#include "codec/message_time.h"

// A record of a message and what stands before it: a reader that begins there with clock MessageClock(rate,
// frame, pictures) counts as one does that came from the start.
struct MessagePlace {
    int64_t offset = kMessageDataStart;
    int64_t frame = 0;  // end of the speech before it
    int64_t pictures = 0;
};

// What is known of a message so far.
struct MessageExtent {
    int64_t length = 0;  // in frames of 20 ms
    int64_t pictures = 0;
    uint64_t skipped_bytes = 0;
    // The rest is there once `end` is not None: then all of the file has been seen.
    MessageEnd end = MessageEnd::None;
    int64_t end_offset = 0;       // of the record that brought the end, or the file's length
    unsigned declared_bytes = 0;  // by that record
    int error = 0;                // errno of ReadError
};

// Where in its file a message's time is. One pass over the record headers builds it, without reading bodies
// where that is slower, on any thread but one at a time (the builder); it can be asked at any time on any
// thread. It finds the same records and the same end as MessageReader.
//
// It takes at most 16 bytes a record and 1 MiB in all: a longer message gets a checkpoint at every second,
// fourth, … record only.
class MessageIndex {
public:
    static constexpr size_t kMaxCheckpoints = 65536;

    // `rate`: the header's pictures per second, 0 for speech alone.
    explicit MessageIndex(int rate);

    // Builder. `descriptor` is the message's file, open for reading; its position is neither used nor moved.

    // Indexes on for a millisecond or so, as long as no read stalls. False at the end of the message. Called
    // again after that it looks whether a message that ended with its file, or that could not be read, goes
    // on there now; one that ended with a bad length has ended for good.
    bool BuildSlice(int descriptor);
    // Indexes on to the end, or until a stop is requested. After half a second of processor time it takes a
    // tenth of one processor only. True when the end was reached.
    bool Build(int descriptor, const std::stop_token& stop);

    // Any thread.

    MessageExtent Extent() const;

    // The last checkpoint from which the speech of `frame` is still to come. Records between it and the one
    // looked for are to be read and counted: none in a message of up to kMaxCheckpoints records. While the
    // index is not complete this may be a place far before.
    MessagePlace PlaceForFrame(int64_t frame) const;
    // The same for picture `picture` (from 0).
    MessagePlace PlaceForPicture(int64_t picture) const;

private:
    struct Checkpoint {
        uint64_t offset;
        uint32_t frame;
        uint32_t pictures;
    };
    static_assert(sizeof(Checkpoint) == 16);
    static constexpr size_t kSliceRecords = 4096;
    static constexpr size_t kMaxRead = size_t{1} << 16;

    // Builder.
    bool Step(int descriptor);
    void SkipStrayBytes();
    void AddCheckpoint();
    bool Has(int descriptor, uint64_t offset, size_t bytes);
    uint8_t ByteAt(uint64_t offset) const { return m_buffer[static_cast<size_t>(offset - m_buffer_offset)]; }
    bool EndWith(MessageEnd end, unsigned declared_bytes);
    void Publish();
    void HalveCheckpoints();

    template <class IsAfter>
    MessagePlace LastPlace(IsAfter is_after) const;

    // The builder's alone.
    std::vector<uint8_t> m_buffer;
    uint64_t m_buffer_offset = 0;
    size_t m_buffered = 0;
    size_t m_read_size;
    size_t m_slice_bytes = 0;
    uint64_t m_offset = kMessageDataStart;
    MessageClock m_clock;
    uint64_t m_records = 0;
    uint64_t m_stride = 1;
    MessageExtent m_scanned;
    std::vector<Checkpoint> m_fresh;  // not yet published

    mutable std::mutex m_mutex;
    std::vector<Checkpoint> m_checkpoints;  // of records 0, stride, 2 * stride, …
    MessageExtent m_extent;
};
