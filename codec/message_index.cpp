// SPDX-License-Identifier: MIT
#include "codec/message_index.h"

#include <sys/types.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <limits>
#include <thread>

namespace {

// What stands between two headers is read along while that is less than this: copying it costs less than
// another call.
constexpr size_t kFarBytes = 8192;
// Behind a long body: enough for a speech block and the header that follows it.
constexpr size_t kSmallRead = 512;
constexpr size_t kSliceBytes = size_t{1} << 20;
// A read counts as so many bytes, however few it returns.
constexpr size_t kCallBytes = 2048;

constexpr std::chrono::milliseconds kFullSpeed{500};
constexpr int kRestPerWork = 9;

std::chrono::nanoseconds ProcessorTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

}  // namespace

MessageIndex::MessageIndex(int rate) : m_buffer(kMaxRead), m_read_size(kMaxRead / 16), m_clock(rate) {
    m_fresh.reserve(kSliceRecords);
}

bool MessageIndex::BuildSlice(int descriptor) {
    if (m_scanned.end == MessageEnd::BadLength) return false;
    m_scanned.end = MessageEnd::None;
    m_scanned.declared_bytes = 0;
    m_scanned.error = 0;
    m_slice_bytes = 0;
    bool more = true;
    while (more && m_slice_bytes < kSliceBytes && m_fresh.size() < kSliceRecords) more = Step(descriptor);
    Publish();
    return more;
}

bool MessageIndex::Build(int descriptor, const std::stop_token& stop) {
    std::chrono::nanoseconds worked{0};
    while (!stop.stop_requested()) {
        const auto start = ProcessorTime();
        if (!BuildSlice(descriptor)) return true;
        const auto slice = ProcessorTime() - start;
        worked += slice;
        if (worked > kFullSpeed) std::this_thread::sleep_for(kRestPerWork * slice);
    }
    return false;
}

MessageExtent MessageIndex::Extent() const {
    const std::scoped_lock lock(m_mutex);
    return m_extent;
}

MessagePlace MessageIndex::PlaceForFrame(int64_t frame) const {
    return LastPlace([frame](const Checkpoint& checkpoint) { return checkpoint.frame > frame; });
}

MessagePlace MessageIndex::PlaceForPicture(int64_t picture) const {
    return LastPlace([picture](const Checkpoint& checkpoint) { return checkpoint.pictures > picture; });
}

template <class IsAfter>
MessagePlace MessageIndex::LastPlace(IsAfter is_after) const {
    const std::scoped_lock lock(m_mutex);
    const auto after =
        std::partition_point(m_checkpoints.begin(), m_checkpoints.end(),
                             [&](const Checkpoint& checkpoint) { return !is_after(checkpoint); });
    if (after == m_checkpoints.begin()) return {};
    const Checkpoint& found = *(after - 1);
    return {static_cast<int64_t>(found.offset), found.frame, found.pictures};
}

// One record, or the stray bytes before the next as far as they are in the buffer. False at the end.
bool MessageIndex::Step(int descriptor) {
    if (!Has(descriptor, m_offset, 1)) return EndWith(MessageEnd::Clean, 0);
    const uint8_t type = ByteAt(m_offset);
    size_t head = 1;
    size_t body = kSpeechBlockBytes;
    if (type == kVideoRecord) {
        head = 3;
        if (!Has(descriptor, m_offset, head)) return EndWith(MessageEnd::PartialRecord, 0);
        body = static_cast<size_t>(ByteAt(m_offset + 1) | ByteAt(m_offset + 2) << 8);
        if (body > kMaxPayloadBytes) return EndWith(MessageEnd::BadLength, static_cast<unsigned>(body));
    } else if (type != kSpeechRecord) {
        SkipStrayBytes();
        return true;
    }
    // Its last byte shows that it is whole.
    if (body > 0 && !Has(descriptor, m_offset + head + body - 1, 1))
        return EndWith(MessageEnd::PartialRecord, static_cast<unsigned>(body));

    if (m_records % m_stride == 0) AddCheckpoint();
    ++m_records;
    if (type == kSpeechRecord) {
        m_clock.AddSpeechBlock();
    } else {
        m_clock.AddPicture();
    }
    m_offset += head + body;
    return true;
}

void MessageIndex::SkipStrayBytes() {
    const auto from = m_buffer.begin() + static_cast<std::ptrdiff_t>(m_offset - m_buffer_offset);
    const auto to = m_buffer.begin() + static_cast<std::ptrdiff_t>(m_buffered);
    static_assert(kSpeechRecord == 0 && kVideoRecord == 1);
    const auto record = std::find_if(from, to, [](uint8_t byte) { return byte <= kVideoRecord; });
    m_scanned.skipped_bytes += static_cast<uint64_t>(record - from);
    m_offset += static_cast<uint64_t>(record - from);
}

void MessageIndex::AddCheckpoint() {
    constexpr int64_t kMost = std::numeric_limits<uint32_t>::max();
    // After years of speech seeking ends; counting does not.
    if (m_clock.SpeechEnd() > kMost || m_clock.Pictures() > kMost) return;
    if (m_checkpoints.size() + m_fresh.size() == kMaxCheckpoints) {
        Publish();
        HalveCheckpoints();
    }
    m_fresh.push_back(
        {m_offset, static_cast<uint32_t>(m_clock.SpeechEnd()), static_cast<uint32_t>(m_clock.Pictures())});
}

// Whether the file has `bytes` (kSmallRead at most) at `offset`, which are then in the buffer.
bool MessageIndex::Has(int descriptor, uint64_t offset, size_t bytes) {
    if (offset >= m_buffer_offset && offset + bytes <= m_buffer_offset + m_buffered) return true;
    const uint64_t behind = m_buffer_offset + m_buffered;
    const bool far = offset >= behind + kFarBytes;
    m_read_size = far ? kSmallRead : std::min(2 * m_read_size, kMaxRead);
    m_buffer_offset = offset;
    m_buffered = 0;
    while (m_buffered < bytes) {
        const ssize_t got = pread(descriptor, m_buffer.data() + m_buffered, m_read_size - m_buffered,
                                  static_cast<off_t>(offset + m_buffered));
        if (got == 0) return false;
        if (got < 0 && errno != EINTR) {
            m_scanned.error = errno;
            return false;
        }
        if (got > 0) m_buffered += static_cast<size_t>(got);
        m_slice_bytes += kCallBytes + static_cast<size_t>(std::max<ssize_t>(got, 0));
    }
    return true;
}

bool MessageIndex::EndWith(MessageEnd end, unsigned declared_bytes) {
    m_scanned.end = m_scanned.error != 0 ? MessageEnd::ReadError : end;
    m_scanned.end_offset = static_cast<int64_t>(m_offset);
    m_scanned.declared_bytes = declared_bytes;
    return false;
}

void MessageIndex::Publish() {
    m_scanned.length = m_clock.Length();
    m_scanned.pictures = m_clock.Pictures();
    const std::scoped_lock lock(m_mutex);
    m_extent = m_scanned;
    m_checkpoints.insert(m_checkpoints.end(), m_fresh.begin(), m_fresh.end());
    m_fresh.clear();
}

void MessageIndex::HalveCheckpoints() {
    const std::scoped_lock lock(m_mutex);
    for (size_t i = 0; 2 * i < m_checkpoints.size(); ++i) m_checkpoints[i] = m_checkpoints[2 * i];
    m_checkpoints.resize(m_checkpoints.size() / 2);
    m_stride *= 2;
}
