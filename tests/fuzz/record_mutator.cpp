// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "codec/message_format.h"

// Changes messages (behind one byte of the target's own) record by record, since changes of single bytes
// seldom leave what follows a record.

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t most);

namespace {

using Bytes = std::vector<uint8_t>;

constexpr size_t kFirstRecord = 1 + kMessageDataStart;
constexpr std::array<size_t, 11> kLengths = {0, 1, 2, 9, 330, 331, 4096, 16383, 16384, 0x4001, 0xFFFF};

// Where each record begins, and the end.
std::vector<size_t> Starts(const Bytes& bytes) {
    std::vector<size_t> starts;
    size_t at = kFirstRecord;
    while (at < bytes.size()) {
        starts.push_back(at);
        if (bytes[at] == kSpeechRecord) {
            at += 1 + kSpeechBlockBytes;
        } else if (bytes[at] == kVideoRecord && at + 2 < bytes.size()) {
            at += 3 + (bytes[at + 1] | size_t{bytes[at + 2]} << 8);
        } else {
            ++at;
        }
    }
    starts.push_back(bytes.size());
    return starts;
}

}  // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t most, unsigned seed) {
    std::minstd_rand random(seed);
    const auto below = [&](size_t count) { return random() % std::max<size_t>(count, 1); };
    if (size <= kFirstRecord || below(3) == 0) return LLVMFuzzerMutate(data, size, most);
    Bytes bytes(data, data + size);
    const std::vector<size_t> starts = Starts(bytes);
    const size_t chosen = below(starts.size() - 1);
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(starts[chosen]);
    const auto to = bytes.begin() + static_cast<std::ptrdiff_t>(starts[chosen + 1]);
    const auto other = static_cast<std::ptrdiff_t>(starts[below(starts.size())]);
    const size_t length = kLengths[below(kLengths.size())];
    const Bytes record(from, to);
    switch (below(7)) {
        case 0:
            bytes.erase(from, to);
            break;
        case 1:
            bytes.insert(bytes.begin() + other, record.begin(), record.end());
            break;
        case 2: {  // speech, whole or not
            const Bytes fresh(1 + (below(2) == 0 ? kSpeechBlockBytes : below(kSpeechBlockBytes)));
            bytes.insert(bytes.begin() + other, fresh.begin(), fresh.end());
            break;
        }
        case 3: {  // a picture, whole or not
            Bytes fresh(3 + (below(2) == 0 ? length : below(64)));
            fresh[0] = kVideoRecord;
            fresh[1] = static_cast<uint8_t>(length);
            fresh[2] = static_cast<uint8_t>(length >> 8);
            bytes.insert(bytes.begin() + other, fresh.begin(), fresh.end());
            break;
        }
        case 4:  // another length
            if (record.size() < 3) return LLVMFuzzerMutate(data, size, most);
            from[1] = static_cast<uint8_t>(length);
            from[2] = static_cast<uint8_t>(length >> 8);
            break;
        case 5:  // cut near a record's start
            bytes.resize(std::min(bytes.size(), static_cast<size_t>(other) + below(4)));
            break;
        default: {  // other bytes within
            Bytes body = record;
            body.resize(body.size() + 8);
            body.resize(LLVMFuzzerMutate(body.data(), record.size(), body.size()));
            bytes.erase(from, to);
            const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(starts[chosen]);
            bytes.insert(at, body.begin(), body.end());
        }
    }
    size = std::min(bytes.size(), most);
    std::memcpy(data, bytes.data(), size);
    return size;
}
