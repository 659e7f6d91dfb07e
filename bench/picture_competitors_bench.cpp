// SPDX-License-Identifier: MIT
// vdec_decode beside libjpeg-turbo (4:4:4, to B, G, R) and OpenJPEG (9/7) on the same pictures in about as
// many bytes, and beside libjpeg-turbo at its usual quality 75: picture_competitors_bench [benchmark options]
#include <benchmark/benchmark.h>
#include <openjpeg-2.5/openjpeg.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "bench/ratio_reporter.h"
#include "codec/message_reader.h"
#include "codec/vdec.h"
#include "tools/encode/picture_encoder.h"

namespace {

using Bytes = std::vector<uint8_t>;

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "picture_competitors_bench: %s\n", what);
    std::exit(1);
}

std::vector<Bytes> SamplePayloads() {
    std::FILE* file = std::fopen(SAMPLES_FOLDER "/greeting-video.trv", "rb");
    MessageReader reader;
    if (file == nullptr || !reader.Rewind(file)) Fail("no sample message");
    std::vector<Bytes> payloads;
    for (MessageRecord record; (record = reader.Read(file)).kind != MessageRecordKind::End;)
        if (record.kind == MessageRecordKind::Video)
            payloads.emplace_back(record.body.begin(), record.body.end());
    std::fclose(file);
    payloads.resize(8);
    return payloads;
}

// Shaded pictures under noise of up to `noise` either way, which sets how many bytes they take.
std::vector<Bytes> BusyPayloads(int noise) {
    std::mt19937 random(1);
    std::uniform_int_distribution<int> grain(-noise, noise);
    tools::PictureEncoder encoder(3);
    std::vector<Bytes> payloads;
    Bytes bgr(kPictureBytes);
    for (int picture = 0; picture < 4; ++picture) {
        for (size_t pixel = 0; pixel < kPictureBytes / 3; ++pixel) {
            const int column = static_cast<int>(pixel % kPictureWidth);
            const int row = static_cast<int>(pixel / kPictureWidth);
            const int shades[] = {column * 200 / kPictureWidth + 28, row * 200 / kPictureHeight + 28,
                                  (column + row + 40 * picture) % 200 + 28};
            const int shared = grain(random);
            for (size_t channel = 0; channel < 3; ++channel)
                bgr[3 * pixel + channel] = static_cast<uint8_t>(std::clamp(shades[channel] + shared, 0, 255));
        }
        const auto payload = encoder.Encode(std::span<const uint8_t, kPictureBytes>(bgr));
        payloads.emplace_back(payload.begin(), payload.end());
    }
    return payloads;
}

Bytes ToJpeg(const Bytes& bgr, int quality) {
    const tjhandle compressor = tjInitCompress();
    unsigned char* data = nullptr;
    unsigned long length = 0;
    if (tjCompress2(compressor, bgr.data(), kPictureWidth, 0, kPictureHeight, TJPF_BGR, &data, &length,
                    TJSAMP_444, quality, TJFLAG_BOTTOMUP) != 0)
        Fail(tjGetErrorStr2(compressor));
    Bytes jpeg(data, data + length);
    tjFree(data);
    tjDestroy(compressor);
    return jpeg;
}

// The best quality that fits into a size. Quality 1 can already be too large: it is taken all the same.
Bytes ToJpegOfSize(const Bytes& bgr, size_t size) {
    Bytes best = ToJpeg(bgr, 1);
    for (int quality = 2; quality <= 100; ++quality) {
        Bytes jpeg = ToJpeg(bgr, quality);
        if (jpeg.size() <= size) best = std::move(jpeg);
    }
    return best;
}

// OpenJPEG reads and writes through calls.
struct MemoryStream {
    Bytes* data;
    size_t at = 0;

    static OPJ_SIZE_T Read(void* buffer, OPJ_SIZE_T count, void* self) {
        auto& stream = *static_cast<MemoryStream*>(self);
        const size_t got = std::min(count, stream.data->size() - stream.at);
        if (got == 0) return static_cast<OPJ_SIZE_T>(-1);
        std::memcpy(buffer, stream.data->data() + stream.at, got);
        stream.at += got;
        return got;
    }
    static OPJ_SIZE_T Write(void* buffer, OPJ_SIZE_T count, void* self) {
        auto& stream = *static_cast<MemoryStream*>(self);
        if (stream.data->size() < stream.at + count) stream.data->resize(stream.at + count);
        std::memcpy(stream.data->data() + stream.at, buffer, count);
        stream.at += count;
        return count;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T to, void* self) {
        static_cast<MemoryStream*>(self)->at = static_cast<size_t>(to);
        return OPJ_TRUE;
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T count, void* self) {
        static_cast<MemoryStream*>(self)->at += static_cast<size_t>(count);
        return count;
    }
};

opj_stream_t* OpenStream(MemoryStream& stream, bool input) {
    opj_stream_t* opened = opj_stream_default_create(input ? OPJ_TRUE : OPJ_FALSE);
    opj_stream_set_user_data(opened, &stream, nullptr);
    opj_stream_set_user_data_length(opened, stream.data->size());
    opj_stream_set_read_function(opened, MemoryStream::Read);
    opj_stream_set_write_function(opened, MemoryStream::Write);
    opj_stream_set_seek_function(opened, MemoryStream::Seek);
    opj_stream_set_skip_function(opened, MemoryStream::Skip);
    return opened;
}

Bytes ToJpeg2000(const Bytes& bgr, size_t size) {
    opj_image_cmptparm_t components[3] = {};
    for (opj_image_cmptparm_t& component : components) {
        component.dx = component.dy = 1;
        component.w = kPictureWidth;
        component.h = kPictureHeight;
        component.prec = 8;
    }
    opj_image_t* image = opj_image_create(3, components, OPJ_CLRSPC_SRGB);
    image->x1 = kPictureWidth;
    image->y1 = kPictureHeight;
    for (size_t pixel = 0; pixel < kPictureBytes / 3; ++pixel)
        for (size_t channel = 0; channel < 3; ++channel)
            image->comps[channel].data[pixel] = bgr[3 * pixel + 2 - channel];

    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.irreversible = 1;
    parameters.tcp_mct = 1;
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_rates[0] = static_cast<float>(kPictureBytes) / static_cast<float>(size);
    opj_codec_t* codec = opj_create_compress(OPJ_CODEC_J2K);
    Bytes result;
    MemoryStream memory{&result};
    opj_stream_t* stream = OpenStream(memory, false);
    if (opj_setup_encoder(codec, &parameters, image) == OPJ_FALSE ||
        opj_start_compress(codec, image, stream) == OPJ_FALSE || opj_encode(codec, stream) == OPJ_FALSE ||
        opj_end_compress(codec, stream) == OPJ_FALSE)
        Fail("OpenJPEG does not encode");
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    opj_image_destroy(image);
    return result;
}

// A set of pictures in the three forms.
struct Set {
    std::string name;
    std::vector<Bytes> payloads;
    std::vector<Bytes> jpegs;
    std::vector<Bytes> jpeg75s;
    std::vector<Bytes> jpeg2000s;
};

Set MakeSet(std::string name, std::vector<Bytes> payloads) {
    Set set{std::move(name), std::move(payloads), {}, {}, {}};
    Bytes bgr(kPictureBytes);
    for (const Bytes& payload : set.payloads) {
        if (!vdec_decode(payload.data(), payload.size(), bgr.data())) Fail("the decoder is not ready");
        set.jpegs.push_back(ToJpegOfSize(bgr, payload.size()));
        set.jpeg75s.push_back(ToJpeg(bgr, 75));
        set.jpeg2000s.push_back(ToJpeg2000(bgr, payload.size()));
    }
    return set;
}

void Run(benchmark::State& state, const std::vector<Bytes>& pictures,
         const std::function<void(const Bytes&)>& decode) {
    size_t next = 0;
    for (auto _ : state) decode(pictures[next++ % pictures.size()]);
    double bytes = 0;
    for (const Bytes& picture : pictures) bytes += static_cast<double>(picture.size());
    state.counters["bytes"] = bytes / static_cast<double>(pictures.size());
}

void Vdec(benchmark::State& state, const Set& set) {
    Bytes bgr(kPictureBytes);
    Run(state, set.payloads, [&](const Bytes& payload) {
        vdec_decode(payload.data(), payload.size(), bgr.data());
        benchmark::DoNotOptimize(bgr.data());
    });
}

// Where rows start at a multiple of 32 bytes libjpeg-turbo writes past the caches, which costs it a third
// more here; so it gets a place between.
uint8_t* JpegTarget(Bytes& memory) {
    memory.resize(kPictureBytes + 64);
    const size_t past = reinterpret_cast<uintptr_t>(memory.data()) % 32;
    return memory.data() + (past <= 16 ? 16 - past : 48 - past);
}

void JpegToBgr(benchmark::State& state, const std::vector<Bytes>& jpegs) {
    const tjhandle decompressor = tjInitDecompress();
    Bytes memory;
    uint8_t* const bgr = JpegTarget(memory);
    Run(state, jpegs, [&](const Bytes& data) {
        if (tjDecompress2(decompressor, data.data(), data.size(), bgr, kPictureWidth, 0, kPictureHeight,
                          TJPF_BGR, TJFLAG_BOTTOMUP) != 0)
            Fail(tjGetErrorStr2(decompressor));
        benchmark::DoNotOptimize(*bgr);
    });
    tjDestroy(decompressor);
}

void Jpeg(benchmark::State& state, const Set& set) {
    JpegToBgr(state, set.jpegs);
}

void Jpeg75(benchmark::State& state, const Set& set) {
    JpegToBgr(state, set.jpeg75s);
}

// To planes of integers, which is where OpenJPEG ends; packing B, G, R is not counted.
void Jpeg2000(benchmark::State& state, const Set& set) {
    Run(state, set.jpeg2000s, [](const Bytes& data) {
        opj_dparameters_t parameters;
        opj_set_default_decoder_parameters(&parameters);
        opj_codec_t* codec = opj_create_decompress(OPJ_CODEC_J2K);
        Bytes copy = data;
        MemoryStream memory{&copy};
        opj_stream_t* stream = OpenStream(memory, true);
        opj_image_t* image = nullptr;
        if (opj_setup_decoder(codec, &parameters) == OPJ_FALSE ||
            opj_read_header(stream, codec, &image) == OPJ_FALSE ||
            opj_decode(codec, stream, image) == OPJ_FALSE)
            Fail("OpenJPEG does not decode");
        benchmark::DoNotOptimize(image->comps[0].data);
        opj_image_destroy(image);
        opj_stream_destroy(stream);
        opj_destroy_codec(codec);
    });
}

void Register(const char* decoder, void (*run)(benchmark::State&, const Set&), const Set& set) {
    benchmark::RegisterBenchmark((decoder + set.name).c_str(), run, std::cref(set))
        ->Unit(benchmark::kMicrosecond);
}

}  // namespace

int main(int argc, char** argv) {
    vdec_init();
    std::vector<Set> sets;
    sets.push_back(MakeSet("sample", SamplePayloads()));
    for (const int noise : {20, 60, 130, 255})
        sets.push_back(MakeSet("noise" + std::to_string(noise), BusyPayloads(noise)));

    std::vector<RatioReporter::Pair> pairs;
    for (const Set& set : sets) {
        Register("Vdec/", Vdec, set);
        Register("Jpeg/", Jpeg, set);
        Register("Jpeg75/", Jpeg75, set);
        Register("Jpeg2000/", Jpeg2000, set);
        pairs.push_back({set.name + ": vdec_decode / libjpeg-turbo, same bytes", "Vdec/" + set.name,
                         "Jpeg/" + set.name, "aim: 1 or less"});
        pairs.push_back({set.name + ": vdec_decode / libjpeg-turbo, quality 75", "Vdec/" + set.name,
                         "Jpeg75/" + set.name, "aim: 1 or less"});
        pairs.push_back({set.name + ": OpenJPEG 9/7 / vdec_decode", "Jpeg2000/" + set.name,
                         "Vdec/" + set.name, "aim: 8 or more"});
    }
    const int result = RunBenchmarks(argc, argv, std::move(pairs));
    vdec_free();
    return result;
}
