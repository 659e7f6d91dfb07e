// SPDX-License-Identifier: MIT
// How many frames a decoder has to be given before a place in a message for its samples there to be those of
// a decoder that came from the start: speech_preroll MESSAGE...
//
// For each pre-roll, 10,000 random places in the messages' speech, one after the other in one stream: the
// share where the following second comes out the same to the last bit, and the largest difference of samples.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <span>
#include <type_traits>
#include <vector>

#include "codec/message_reader.h"
#include "codec/speech_frame.h"

namespace {

constexpr int kPlaces = 10000;
constexpr size_t kComparedFrames = 50;

struct DestroyGsm {
    void operator()(gsm state) const { gsm_destroy(state); }
};
using Gsm = std::unique_ptr<std::remove_pointer_t<gsm>, DestroyGsm>;

void AppendFrames(const char* path, std::vector<uint8_t>& frames) {
    std::FILE* file = std::fopen(path, "rb");
    MessageReader reader;
    if (file == nullptr || !reader.Rewind(file)) {
        std::perror(path);
        std::exit(1);
    }
    for (MessageRecord record; (record = reader.Read(file)).kind != MessageRecordKind::End;) {
        if (record.kind == MessageRecordKind::Speech)
            frames.insert(frames.end(), record.body.begin(), record.body.end());
    }
    std::fclose(file);
}

struct Difference {
    bool any = false;
    int largest = 0;
};

Difference DifferenceAt(size_t place, size_t preroll, const std::vector<uint8_t>& frames,
                        const std::vector<int16_t>& straight) {
    const Gsm decoder(gsm_create());
    int16_t samples[kSpeechFrameSamples];
    for (size_t i = place - preroll; i < place; ++i)
        DecodeSpeechFrame(decoder.get(), frames.data() + i * kSpeechFrameBytes, samples);
    Difference difference;
    for (size_t i = place; i < place + kComparedFrames; ++i) {
        DecodeSpeechFrame(decoder.get(), frames.data() + i * kSpeechFrameBytes, samples);
        const int16_t* expected = straight.data() + i * kSpeechFrameSamples;
        if (std::memcmp(samples, expected, sizeof samples) == 0) continue;
        difference.any = true;
        for (size_t k = 0; k < kSpeechFrameSamples; ++k)
            difference.largest = std::max(difference.largest, std::abs(samples[k] - expected[k]));
    }
    return difference;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: speech_preroll MESSAGE...\n");
        return 2;
    }
    std::vector<uint8_t> frames;
    for (const char* path : std::span(argv + 1, argv + argc)) AppendFrames(path, frames);
    const size_t count = frames.size() / kSpeechFrameBytes;
    std::vector<int16_t> straight(count * kSpeechFrameSamples);
    const Gsm decoder(gsm_create());
    for (size_t i = 0; i < count; ++i)
        DecodeSpeechFrame(decoder.get(), frames.data() + i * kSpeechFrameBytes,
                          straight.data() + i * kSpeechFrameSamples);

    std::printf("%zu frames, %d places\npre-roll   equal   largest difference\n", count, kPlaces);
    for (const size_t preroll : {0U, 5U, 10U, 20U, 30U, 50U, 75U, 100U, 150U, 200U}) {
        if (preroll + kComparedFrames >= count) break;
        std::mt19937 random(1);
        std::uniform_int_distribution<size_t> places(preroll, count - kComparedFrames);
        int equal = 0;
        int largest = 0;
        for (int i = 0; i < kPlaces; ++i) {
            const Difference difference = DifferenceAt(places(random), preroll, frames, straight);
            equal += difference.any ? 0 : 1;
            largest = std::max(largest, difference.largest);
        }
        std::printf("%8zu %6.2f %% %8d of 32768\n", preroll, 100.0 * equal / kPlaces, largest);
    }
    return 0;
}
