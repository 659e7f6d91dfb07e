// vdec_decode beside libjpeg-turbo (4:4:4, to B, G, R) and OpenJPEG (9/7) on the same pictures in about as
// many bytes: picture_peers_bench [benchmark options]
#include <benchmark/benchmark.h>
#include <openjpeg-2.5/openjpeg.h>
#include <turbojpeg.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "bench/ratio_reporter.h"
#include "playback/message_reader.h"
#include "tests/video/vdec_payload.h"
#include "video/vdec.h"

namespace {

using Bytes = std::vector<uint8_t>;

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "picture_peers_bench: %s\n", what);
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

std::vector<Bytes> RandomPayloads(int coded) {
    std::vector<Bytes> payloads;
    for (uint32_t seed = 1; seed <= 4; ++seed)
        payloads.push_back(RandomPayload(SharedCodes(), seed, coded, 1.0));
    return payloads;
}

// The quality whose result comes nearest to a size from below, or the lowest one.
Bytes ToJpeg(const Bytes& bgr, size_t size) {
    const tjhandle compressor = tjInitCompress();
    Bytes best;
    for (int quality = 1; quality <= 100; ++quality) {
        unsigned char* data = nullptr;
        unsigned long length = 0;
        if (tjCompress2(compressor, bgr.data(), kPictureWidth, 0, kPictureHeight, TJPF_BGR, &data, &length,
                        TJSAMP_444, quality, TJFLAG_BOTTOMUP) != 0)
            Fail(tjGetErrorStr2(compressor));
        if (best.empty() || length <= size) best.assign(data, data + length);
        tjFree(data);
    }
    tjDestroy(compressor);
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
    std::vector<Bytes> jpeg2000s;
};

Set MakeSet(std::string name, std::vector<Bytes> payloads) {
    Set set{std::move(name), std::move(payloads), {}, {}};
    Bytes bgr(kPictureBytes);
    for (const Bytes& payload : set.payloads) {
        if (!vdec_decode(payload.data(), payload.size(), bgr.data())) Fail("the decoder is not ready");
        set.jpegs.push_back(ToJpeg(bgr, payload.size()));
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

void Jpeg(benchmark::State& state, const Set& set) {
    const tjhandle decompressor = tjInitDecompress();
    Bytes bgr(kPictureBytes);
    Run(state, set.jpegs, [&](const Bytes& data) {
        if (tjDecompress2(decompressor, data.data(), data.size(), bgr.data(), kPictureWidth, 0,
                          kPictureHeight, TJPF_BGR, TJFLAG_BOTTOMUP) != 0)
            Fail(tjGetErrorStr2(decompressor));
        benchmark::DoNotOptimize(bgr.data());
    });
    tjDestroy(decompressor);
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
    for (const int coded : {40, 100, 170, 230, 290})
        sets.push_back(MakeSet("coded" + std::to_string(coded), RandomPayloads(coded)));

    std::vector<RatioReporter::Pair> pairs;
    for (const Set& set : sets) {
        Register("Vdec/", Vdec, set);
        Register("Jpeg/", Jpeg, set);
        Register("Jpeg2000/", Jpeg2000, set);
        pairs.push_back({set.name + ": vdec_decode / libjpeg-turbo 4:4:4", "Vdec/" + set.name,
                         "Jpeg/" + set.name, "aim: 1 or less"});
        pairs.push_back({set.name + ": OpenJPEG 9/7 / vdec_decode", "Jpeg2000/" + set.name,
                         "Vdec/" + set.name, "aim: 8 or more"});
    }
    const int result = RunBenchmarks(argc, argv, std::move(pairs));
    vdec_free();
    return result;
}
