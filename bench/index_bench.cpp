// SPDX-License-Identifier: MIT
// How long it takes to index long messages from the page cache: index_bench [benchmark options]
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

#include "codec/message_index.h"

namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

constexpr int64_t kBlocksPerHour = 5 * 3600;

void Require(bool holds, const char* what) {
    if (holds) return;
    std::perror(what);
    std::exit(1);
}

// A message of so many blocks of speech, each behind a picture if `payload` is not 0. Bodies are holes.
File SparseMessage(int64_t blocks, uint16_t payload) {
    File file(std::tmpfile(), &std::fclose);
    Require(file != nullptr, "temporary file");
    off_t offset = kMessageDataStart;
    for (int64_t i = 0; i < blocks; ++i) {
        if (payload > 0) {
            const uint8_t head[] = {kVideoRecord, static_cast<uint8_t>(payload),
                                    static_cast<uint8_t>(payload >> 8)};
            Require(pwrite(fileno(file.get()), head, sizeof head, offset) == sizeof head, "temporary file");
            offset += static_cast<off_t>(sizeof head) + payload;
        }
        offset += 1 + static_cast<off_t>(kSpeechBlockBytes);
    }
    Require(ftruncate(fileno(file.get()), offset) == 0, "temporary file");
    return file;
}

void Index(benchmark::State& state, int64_t blocks, uint16_t payload) {
    const File file = SparseMessage(blocks, payload);
    const int rate = payload > 0 ? kMaxVideoRate : 0;
    int64_t slices = 0;
    for (auto _ : state) {
        MessageIndex index(rate);
        for (slices = 1; index.BuildSlice(fileno(file.get()));) ++slices;
        Require(index.Extent().length == blocks * kFramesPerSpeechBlock, "length");
    }
    state.counters["slices"] = static_cast<double>(slices);
}

BENCHMARK_CAPTURE(Index, voice_hour, kBlocksPerHour, 0)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Index, video_ten_hours_2kB, 10 * kBlocksPerHour, 2000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Index, video_ten_hours_6kB, 10 * kBlocksPerHour, 6000)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Index, video_ten_hours_16kB, 10 * kBlocksPerHour, 16384)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
