// SPDX-License-Identifier: MIT
// trvdump, run as a program on the sample messages and on broken ones.

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <set>

#include "tests/support/message_builder.h"
#include "tests/tools/run_tool.h"

namespace {

using Bytes = std::vector<uint8_t>;

QJsonDocument ParseJson(const std::string& text) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << "\n" << text;
    return document;
}

std::set<std::string> WarningCodes(const std::string& path) {
    const ToolRun run = RunTrvdump({"--json", path});
    EXPECT_EQ(run.status, 0) << run.err;
    std::set<std::string> codes;
    for (const QJsonValue warning : ParseJson(run.out).object()["warnings"].toArray()) {
        codes.insert(warning.toObject()["code"].toString().toStdString());
    }
    return codes;
}

// A payload of the head alone, with the counts and first skip flags given; its codes are missing.
Bytes HeadOnly(std::initializer_list<uint8_t> start) {
    Bytes payload(42, 0xFF);
    std::copy(start.begin(), start.end(), payload.begin());
    return payload;
}

}  // namespace

TEST(TrvdumpSamples, DecodeToTheExpectedDigestsAndAreTruthfullyDescribed) {
    const Bytes expected = ReadBytes(Sample("expected.json"));
    const QJsonArray samples = ParseJson(std::string(expected.begin(), expected.end())).array();
    ASSERT_GE(samples.size(), 2);
    for (const QJsonValue value : samples) {
        const QJsonObject sample = value.toObject();
        const std::string path = Sample(sample["file"].toString().toStdString());
        SCOPED_TRACE(path);
        const TestFolder folder;
        const ToolRun run = RunTrvdump({"--pcm", folder.Path("s.raw"), "--wav", folder.Path("s.wav"), "--bgr",
                                        folder.Path("made/deep"), path});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.err, "");

        const Bytes pcm = ReadBytes(folder.Path("s.raw"));
        EXPECT_EQ(Sha256(pcm), sample["pcm_sha256"].toString().toStdString());

        const Bytes wav = ReadBytes(folder.Path("s.wav"));
        ASSERT_EQ(wav.size(), pcm.size() + 44);
        EXPECT_TRUE(std::equal(pcm.begin(), pcm.end(), wav.begin() + 44));

        const QJsonArray digests = sample["picture_sha256"].toArray();
        for (qsizetype i = 0; i < digests.size(); ++i) {
            char name[64];
            std::snprintf(name, sizeof name, "made/deep/picture-%04d.bgr", static_cast<int>(i) + 1);
            EXPECT_EQ(Sha256(ReadBytes(folder.Path(name))), digests[i].toString().toStdString()) << name;
        }
        const auto written = std::filesystem::directory_iterator(folder.Path("made/deep"));
        EXPECT_EQ(std::distance(begin(written), end(written)), digests.size());

        const QJsonObject report = ParseJson(RunTrvdump({path, "--json"}).out).object();
        EXPECT_EQ(report["file"].toString().toStdString(), path);
        EXPECT_EQ(report["file_bytes"], sample["bytes"]);
        EXPECT_EQ(report["kind"].toString(), sample["rate"].toInt() > 0 ? "video" : "voice");
        EXPECT_EQ(report["pictures_per_second"], sample["rate"]);
        EXPECT_EQ(report["frame_count"], sample["frame_count"]);
        EXPECT_DOUBLE_EQ(report["duration_seconds"].toDouble(), sample["frame_count"].toInt() * 0.02);
        EXPECT_EQ(report["speech_frames"], sample["speech_frames_decoded"]);
        EXPECT_EQ(report["video_records"].toArray().size(), sample["pictures"].toInt());
        EXPECT_EQ(report["end"].toString(), "clean");
        EXPECT_EQ(report["end_offset"], sample["bytes"]);
        EXPECT_TRUE(report["warnings"].toArray().isEmpty());
        EXPECT_EQ(report["odd"], report["warnings"]);
    }
}

// The messages that tools/sample/make_samples.sh makes.
TEST(TrvdumpSamples, OwnMessagesAreWhole) {
    EXPECT_EQ(WarningCodes(TestData("../../res/sample/welcome.trv")), std::set<std::string>{});
    EXPECT_EQ(WarningCodes(TestData("short.trv")), std::set<std::string>{});
}

TEST(TrvdumpSound, WavFilesSayWhatTheyHold) {
    const TestFolder folder;
    const std::string path = folder.Path("s.wav");
    ASSERT_EQ(RunTrvdump({"--wav", path, Sample("greeting-voice.trv")}).status, 0);
    SF_INFO info{};
    SNDFILE* const file = sf_open(path.c_str(), SFM_READ, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    sf_close(file);
    EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_EQ(info.samplerate, 8000);
    EXPECT_EQ(info.channels, 1);
    EXPECT_EQ(info.frames, 540 * 160);

    // On standard output, which cannot be gone back in, it is the same.
    const ToolRun run = RunTrvdump({"--wav", "-", Sample("greeting-voice.trv")});
    EXPECT_EQ(run.status, 0);
    const Bytes wav = ReadBytes(path);
    EXPECT_EQ(run.out, std::string(wav.begin(), wav.end()));
}

TEST(TrvdumpPictures, QualityReachesTheDecoder) {
    const TestFolder folder;
    const std::string sample = Sample("greeting-video.trv");
    std::set<std::string> digests;
    for (const char* quality : {"0", "1", "2", "3"}) {
        const std::string out = folder.Path(quality);
        ASSERT_EQ(RunTrvdump({"--bgr", out, "--quality", quality, sample}).status, 0);
        digests.insert(Sha256(ReadBytes(out + "/picture-0001.bgr")));
    }
    EXPECT_EQ(digests.size(), 4U);
}

TEST(TrvdumpPictures, VoiceOnlyMessageGivesNoneAsInThePlayer) {
    const TestFolder folder;
    MessageBuilder(0, 10).Picture().Speech(1).Write(folder.Path("m.trv"));
    const ToolRun run =
        RunTrvdump({"--bgr", folder.Path("b"), "--pcm", folder.Path("p"), folder.Path("m.trv")});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("voice-only"), std::string::npos) << run.err;
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path("b")));
    EXPECT_EQ(ReadBytes(folder.Path("p")).size(), 3200U);
}

TEST(TrvdumpFailures, FilesThatAreNoMessage) {
    const TestFolder folder;
    WriteBytes(folder.Path("empty"), {});
    MessageBuilder(6).Write(folder.Path("rate-6"));
    MessageBuilder(0).CutBy(1).Write(folder.Path("no-count"));
    for (const auto& [name, complaint] : {std::pair{"empty", "TRV01.01"},
                                          {"rate-6", "video rate 6"},
                                          {"no-count", "frame count"},
                                          {"missing", "No such file"},
                                          {".", "is a directory"}}) {
        const ToolRun run = RunTrvdump({"--pcm", folder.Path("out"), folder.Path(name)});
        EXPECT_EQ(run.status, 1) << name;
        EXPECT_EQ(run.out, "") << name;
        EXPECT_NE(run.err.find(folder.Path(name)), std::string::npos) << run.err;
        EXPECT_NE(run.err.find(complaint), std::string::npos) << run.err;
        EXPECT_FALSE(std::filesystem::exists(folder.Path("out"))) << name;
    }
    // A good message is still described beside a bad one, and the JSON stays whole.
    const ToolRun run = RunTrvdump({"--json", folder.Path("rate-6"), Sample("greeting-voice.trv")});
    EXPECT_EQ(run.status, 1);
    const QJsonArray both = ParseJson(run.out).array();
    ASSERT_EQ(both.size(), 2);
    EXPECT_TRUE(both[0].toObject().contains("error"));
    EXPECT_EQ(both[1].toObject()["speech_blocks"].toInt(), 54);
}

TEST(TrvdumpFailures, WrongUsageAndUnwritableOutput) {
    const TestFolder folder;
    const std::string sample = Sample("greeting-voice.trv");
    const std::string out = folder.Path("out.png");
    WriteBytes(folder.Path("file"), {1});
    ASSERT_EQ(mkfifo(folder.Path("fifo").c_str(), 0600), 0);
    std::filesystem::copy_file(sample, folder.Path("m.trv"));
    const std::vector<std::string> before = folder.Names();
    const struct {
        int status;
        std::vector<std::string> arguments;
    } cases[] = {
        {2, {}},
        {2, {"--json"}},
        {2, {"--wav"}},
        {2, {"--quality", "4", sample}},
        {2, {"--pcm", "-", "--json", sample}},
        {2, {"--pcm", folder.Path("out"), sample, sample}},
        {2, {"--pcm", folder.Path("out"), "--wav", folder.Path("out"), sample}},
        {1, {"--pcm", folder.Path("none/out"), sample}},
        {1, {"--wav", "/dev/full", sample}},
        {1, {"--png", folder.Path("file"), sample}},
        {1, {"--png", folder.Path(std::string(5000, 'n')), sample}},
        {1, {"--pcm", folder.Path("m.trv"), folder.Path("m.trv")}},  // the message itself
        {1, {"--thumbnail", out, folder.Path("file")}},
        {1, {"--thumbnail", out, folder.Path("missing")}},
        {1, {"--thumbnail", out, folder.Path("fifo")}},
        {1, {"--thumbnail", folder.Path("none/out.png"), sample}},
        {1, {"--thumbnail", "/dev/full", sample}},
        {1, {"--thumbnail", folder.Path("m.trv"), folder.Path("m.trv")}},
        {2, {"--thumbnail", out, sample, sample}},
        {2, {"--thumbnail", out, "--json", sample}},
        {2, {"--thumbnail", out, "--size", "15", sample}},
        {2, {"--thumbnail", out, "--size", "1025", sample}},
        {2, {"--thumbnail", out, "--size", "1x", sample}},
        {2, {"--size", "128", sample}},
    };
    for (const auto& c : cases) {
        const ToolRun run = RunTrvdump(c.arguments);
        EXPECT_EQ(run.status, c.status) << testing::PrintToString(c.arguments);
        const std::string complaint = c.status == 2           ? "--help"
                                      : c.arguments[1] == out ? c.arguments[2]
                                                              : c.arguments[1];
        EXPECT_NE(run.err.find(complaint), std::string::npos) << run.err;
        EXPECT_EQ(folder.Names(), before);
    }
    EXPECT_EQ(ReadBytes(folder.Path("m.trv")), ReadBytes(sample));
    EXPECT_EQ(RunTrvdump({"--help"}).status, 0);
}

TEST(TrvdumpWarnings, EachIsFoundAndNothingElse) {
    const Bytes video = ReadBytes(Sample("greeting-video.trv"));
    ASSERT_EQ(video[13], 1U);
    const std::size_t size = video[14] + 256U * video[15];
    const Bytes payload(video.begin() + 16, video.begin() + 16 + static_cast<std::ptrdiff_t>(size));
    Bytes padded = payload;
    padded.resize(16384);
    const auto good = [&](int rate, unsigned frames) {
        return MessageBuilder(rate, frames).Video(size, payload).Speech(1);
    };
    // 3601 and 9601 values; 12 and 32 values beside two coded blocks.
    const Bytes beyond = HeadOnly({0x11, 0x8E, 0xC0, 0x12}), beside = HeadOnly({12, 0, 16, 0, 0xFC});

    const struct {
        const char* name;
        std::set<std::string> codes;
        MessageBuilder message;
    } cases[] = {
        {"nothing", {}, good(1, 10)},
        {"wrong count", {"frame-count"}, good(1, 11)},
        {"stray bytes", {"skipped-bytes"}, good(1, 10).Bytes({7, 255})},
        {"cut speech", {"partial-record", "frame-count"}, good(1, 10).CutBy(1)},
        {"cut video", {"partial-record"}, good(1, 10).Video(size + 1, payload)},
        {"16385 bytes", {"oversized-length"}, good(1, 10).Video(16385, Bytes(16385))},
        {"largest length", {}, good(1, 10).Video(16384, padded)},
        {"short payload",
         {"payload-short"},
         good(1, 10).Video(size - 1, {payload.begin(), payload.end() - 1})},
        {"counts beyond the store",
         {"counts-out-of-range", "counts-disagree", "payload-short"},
         good(1, 10).Video(42, beyond)},
        {"counts beside the flags", {"counts-disagree", "payload-short"}, good(1, 10).Video(42, beside)},
        {"pictures in a voice message", {"pictures-in-voice"}, good(0, 10)},
        {"no pictures in a video message", {"no-pictures"}, MessageBuilder(5, 0)},
    };
    const TestFolder folder;
    const std::string path = folder.Path("m.trv");
    for (const auto& c : cases) {
        c.message.Write(path);
        EXPECT_EQ(WarningCodes(path), c.codes) << c.name;
        // People are told as well.
        const ToolRun run = RunTrvdump({path});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out.find("warnings       none") != std::string::npos, c.codes.empty()) << c.name;
    }
}

TEST(TrvdumpWarnings, EndsAreToldWithTheirTime) {
    const auto start = [] { return MessageBuilder(0, 20).Speech(2); };
    const struct {
        const char* end;
        MessageBuilder message;
        const char* text;
    } cases[] = {
        {"clean", start(), "length         0.40 s"},
        {"partial-record", start().Bytes({0, 1, 2}), "the file ends within a record at 0.40 s, byte 675"},
        {"oversized-length", start().Video(40000, {}),
         "claims 40000 bytes, more than 16384, at 0.40 s, byte 675"}};
    const TestFolder folder;
    const std::string path = folder.Path("m.trv");
    for (const auto& c : cases) {
        c.message.Write(path);
        EXPECT_NE(RunTrvdump({path}).out.find(c.text), std::string::npos) << c.end;
        const QJsonObject report = ParseJson(RunTrvdump({"--json", path}).out).object();
        EXPECT_EQ(report["end"].toString(), c.end);
        EXPECT_EQ(report["length_seconds"].toDouble(), 0.4) << c.end;
        EXPECT_EQ(report["end_offset"].toInt(), 675) << c.end;
    }
}
