// SPDX-License-Identifier: MIT
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "bench/gsm_layout.h"
#include "bench/ratio_reporter.h"
#include "codec/huff.h"
#include "codec/message_reader.h"
#include "codec/speech_frame.h"
#include "codec/vdec.h"
#include "tests/codec/vdec_payload.h"
#include "tests/codec/vdec_reference.h"

// The decoders beside their reference implementations: decoders_bench [benchmark options]

namespace {

using Payload = std::vector<uint8_t>;

struct SampleMessage {
    std::vector<Payload> payloads;
    std::vector<uint8_t> frames;  // kSpeechFrameBytes each
};

const SampleMessage& Sample() {
    static const SampleMessage sample = [] {
        SampleMessage message;
        std::FILE* file = std::fopen(SAMPLES_FOLDER "/greeting-video.trv", "rb");
        MessageReader reader;
        if (file == nullptr || !reader.Rewind(file)) {
            std::perror("greeting-video.trv");
            std::exit(1);
        }
        for (MessageRecord record; (record = reader.Read(file)).kind != MessageRecordKind::End;) {
            if (record.kind == MessageRecordKind::Video) {
                message.payloads.emplace_back(record.body.begin(), record.body.end());
            } else {
                message.frames.insert(message.frames.end(), record.body.begin(), record.body.end());
            }
        }
        std::fclose(file);
        return message;
    }();
    return sample;
}

// Nearly all block positions coded, payloads of about 6 kB.
const std::vector<Payload>& Busy() {
    static const std::vector<Payload> busy = [] {
        std::vector<Payload> payloads;
        for (uint32_t seed = 1; seed <= 4; ++seed) payloads.push_back(RandomPayload(seed, 290, 1.0));
        return payloads;
    }();
    return busy;
}

const std::vector<Payload>& Payloads(bool busy) {
    return busy ? Busy() : Sample().payloads;
}

void ReportBytes(benchmark::State& state, const std::vector<Payload>& payloads) {
    double bytes = 0;
    for (const Payload& payload : payloads) bytes += static_cast<double>(payload.size());
    state.counters["payload"] = bytes / static_cast<double>(payloads.size());
}

// One bit a step, of a payload that holds all it needs.
void ReferenceReadSymbols(const VdecCodes& codes, const uint8_t* payload, size_t length,
                          VdecSymbols& symbols) {
    symbols.head = vdec_read_head(payload, length);
    const size_t counts[] = {1200, 300, 300, static_cast<size_t>(symbols.head.coarse_count),
                             static_cast<size_t>(symbols.head.fine_count)};
    size_t bit_position = 336;
    for (size_t group = 0; group < kGroupCount; ++group) {
        const VdecGroupInfo& info = vdec_groups[group];
        for (size_t i = 0; i < counts[group]; ++i) {
            const int32_t symbol = huff_decode_symbol(codes.trees[group], payload, length, bit_position);
            symbols.values[info.first_value + i] =
                static_cast<int16_t>(vdec_symbol_value(symbol, info.sign_point));
        }
    }
}

// Inverse transform and colour conversion of one picture. The reference works in place, so its planes are
// filled anew outside the measured time.
void TransformReference(benchmark::State& state) {
    const auto symbols = std::make_unique<VdecSymbols>();
    vdec_read_symbols(SharedCodes(), Busy()[0].data(), Busy()[0].size(), *symbols);
    ReferencePlanes planes;
    std::vector<uint8_t> picture(kPictureBytes);
    for (auto _ : state) {
        ReferenceReconstruct(*symbols, 3, planes);
        const double start = ThreadSeconds();
        ReferenceInverseDwt(planes);
        ReferenceToBgr(planes, picture.data());
        benchmark::DoNotOptimize(picture.data());
        state.SetIterationTime(ThreadSeconds() - start);
    }
}

void TransformShipped(benchmark::State& state, VdecIsa isa) {
    const VdecKernels* kernels = vdec_kernels_for(isa);
    if (kernels == nullptr) {
        state.SkipWithError("not on this machine");
        return;
    }
    const auto symbols = std::make_unique<VdecSymbols>();
    vdec_read_symbols(SharedCodes(), Busy()[0].data(), Busy()[0].size(), *symbols);
    const auto coefficients = std::make_unique<VdecCoefficients>();
    const auto planes = std::make_unique<VdecHalfPlanes>();
    std::vector<uint8_t> picture(kPictureBytes);
    for (auto _ : state) {
        vdec_reconstruct(*symbols, 3, *coefficients);
        const double start = ThreadSeconds();
        vdec_inverse_dwt(*kernels, *coefficients, *planes);
        vdec_to_bgr(*kernels, *planes, picture.data());
        benchmark::DoNotOptimize(picture.data());
        state.SetIterationTime(ThreadSeconds() - start);
    }
}

using ReadSymbols = void (*)(const VdecCodes&, const uint8_t*, size_t, VdecSymbols&);

void Symbols(benchmark::State& state, ReadSymbols read, bool busy) {
    const auto symbols = std::make_unique<VdecSymbols>();
    size_t next = 0;
    for (auto _ : state) {
        const Payload& payload = Payloads(busy)[next++ % Payloads(busy).size()];
        read(SharedCodes(), payload.data(), payload.size(), *symbols);
        benchmark::DoNotOptimize(symbols->values.data());
    }
    ReportBytes(state, Payloads(busy));
}

void Decode(benchmark::State& state, bool busy) {
    vdec_init();
    std::vector<uint8_t> picture(kPictureBytes);
    size_t next = 0;
    for (auto _ : state) {
        const Payload& payload = Payloads(busy)[next++ % Payloads(busy).size()];
        vdec_decode(payload.data(), payload.size(), picture.data());
        benchmark::DoNotOptimize(picture.data());
    }
    vdec_free();
    ReportBytes(state, Payloads(busy));
}

// A second of speech an iteration.
constexpr size_t kFramesPerSecond = 50;

void SpeechLibgsm(benchmark::State& state) {
    const size_t frames = Sample().frames.size() / kSpeechFrameBytes;
    std::vector<gsm_byte> layouts(Sample().frames.size());
    for (size_t i = 0; i < frames; ++i) {
        ToGsmLayout(Sample().frames.data() + i * kSpeechFrameBytes, layouts.data() + i * kSpeechFrameBytes);
    }
    const gsm decoder = gsm_create();
    int16_t samples[kSpeechFrameSamples];
    size_t next = 0;
    for (auto _ : state) {
        for (size_t i = 0; i < kFramesPerSecond; ++i, ++next) {
            gsm_decode(decoder, layouts.data() + next % frames * kSpeechFrameBytes, samples);
            benchmark::DoNotOptimize(samples);
        }
    }
    gsm_destroy(decoder);
}

void SpeechShipped(benchmark::State& state) {
    const size_t frames = Sample().frames.size() / kSpeechFrameBytes;
    const gsm decoder = gsm_create();
    int16_t samples[kSpeechFrameSamples];
    size_t next = 0;
    for (auto _ : state) {
        for (size_t i = 0; i < kFramesPerSecond; ++i, ++next) {
            DecodeSpeechFrame(decoder, Sample().frames.data() + next % frames * kSpeechFrameBytes, samples);
            benchmark::DoNotOptimize(samples);
        }
    }
    gsm_destroy(decoder);
}

BENCHMARK(TransformReference)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(TransformShipped, scalar, VdecIsa::Scalar)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(TransformShipped, sse2, VdecIsa::Sse2)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(TransformShipped, avx2, VdecIsa::Avx2)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Symbols, bits_sample, ReferenceReadSymbols, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Symbols, table_sample, vdec_read_symbols, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Symbols, bits_busy, ReferenceReadSymbols, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Symbols, table_busy, vdec_read_symbols, true)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Decode, sample, false)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(Decode, busy, true)->Unit(benchmark::kMicrosecond);
BENCHMARK(SpeechLibgsm)->Unit(benchmark::kMicrosecond);
BENCHMARK(SpeechShipped)->Unit(benchmark::kMicrosecond);

}  // namespace

int main(int argc, char** argv) {
    return RunBenchmarks(argc, argv,
                         {{"transform and colour: reference / AVX2", "TransformReference",
                           "TransformShipped/avx2", "aim: 8 or more"},
                          {"transform and colour: reference / SSE2", "TransformReference",
                           "TransformShipped/sse2", "aim: 5 or more"},
                          {"transform and colour: reference / scalar", "TransformReference",
                           "TransformShipped/scalar", "no aim"},
                          {"symbols, sample message: bits / table", "Symbols/bits_sample",
                           "Symbols/table_sample", "aim: 3 or more"},
                          {"symbols, busy pictures: bits / table", "Symbols/bits_busy", "Symbols/table_busy",
                           "aim: 3 or more"},
                          {"speech: WAV49 layout / libgsm's own layout", "SpeechShipped", "SpeechLibgsm",
                           "aim: 1.03 or less"}});
}
