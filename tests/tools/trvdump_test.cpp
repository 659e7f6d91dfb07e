// trvdump, run as a program on the sample messages and on broken ones.

#include <gtest/gtest.h>
#include <unistd.h>

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <set>

#include "codec/message_format.h"
#include "codec/vdec.h"
#include "tests/tools/run_tool.h"

namespace {

using Bytes = std::vector<uint8_t>;

QJsonDocument ParseJson(const std::string& text) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(QByteArray::fromStdString(text), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << error.errorString().toStdString() << "\n" << text;
    return document;
}

QJsonArray ExpectedSamples() {
    const Bytes bytes = ReadBytes(Sample("expected.json"));
    return ParseJson(std::string(bytes.begin(), bytes.end())).array();
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
Bytes HeadOnly(uint32_t coarse_count, uint32_t fine_count, uint8_t first_flags) {
    Bytes payload(42, 0xFF);
    const uint32_t word = coarse_count | fine_count << 15;
    for (std::size_t i = 0; i < 4; ++i) payload[i] = static_cast<uint8_t>(word >> (8 * i));
    payload[4] = first_flags;
    return payload;
}

}  // namespace

TEST(TrvdumpSamples, DecodeToTheExpectedDigests) {
    const QJsonArray samples = ExpectedSamples();
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
    }
}

TEST(TrvdumpSamples, AreTruthfullyDescribed) {
    for (const QJsonValue value : ExpectedSamples()) {
        const QJsonObject sample = value.toObject();
        const std::string path = Sample(sample["file"].toString().toStdString());
        SCOPED_TRACE(path);
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

TEST(TrvdumpSamples, SummaryIsForPeople) {
    const ToolRun run = RunTrvdump({Sample("greeting-video.trv"), Sample("greeting-voice.trv")});
    EXPECT_EQ(run.status, 0);
    for (const char* part :
         {"video message, 3 pictures per second", "520 (10.40 s)", "52 blocks, 520 frames",
          "voice-only message", "540 (10.80 s)", "video records  none", "warnings       none"}) {
        EXPECT_NE(run.out.find(part), std::string::npos) << part << " is missing in\n" << run.out;
    }
}

// The messages that tools/sample/make_samples.sh makes.
TEST(TrvdumpSamples, OwnMessagesAreWhole) {
    EXPECT_EQ(WarningCodes(TestData("../../res/sample/welcome.trv")), std::set<std::string>{});
    EXPECT_EQ(WarningCodes(TestData("short.trv")), std::set<std::string>{});
}

TEST(TrvdumpSound, WavFilesSayWhatTheyHold) {
    const TestFolder folder;
    ASSERT_EQ(RunTrvdump({"--wav", folder.Path("s.wav"), Sample("greeting-voice.trv")}).status, 0);
    const Bytes wav = ReadBytes(folder.Path("s.wav"));
    // 540 frames of 320 bytes: 172800, 0x2A300. PCM, one channel, 8000 samples and 16000 bytes a second, 2
    // bytes and 16 bits a sample.
    const Bytes header = {'R', 'I', 'F', 'F', 0x24, 0xA3, 2,   0,   'W', 'A',  'V',  'E',  'f', 'm',  't',
                          ' ', 16,  0,   0,   0,    1,    0,   1,   0,   0x40, 0x1F, 0,    0,   0x80, 0x3E,
                          0,   0,   2,   0,   16,   0,    'd', 'a', 't', 'a',  0x00, 0xA3, 2,   0};
    ASSERT_EQ(wav.size(), header.size() + 172800);
    EXPECT_TRUE(std::equal(header.begin(), header.end(), wav.begin()));

    // On standard output, which cannot be gone back in, it is the same.
    const ToolRun run = RunTrvdump({"--wav", "-", Sample("greeting-voice.trv")});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.out, std::string(wav.begin(), wav.end()));
}

TEST(TrvdumpPictures, PngIsUprightAndHasTheDecodersColours) {
    const TestFolder folder;
    const std::string out = folder.Path("pictures");
    ASSERT_EQ(RunTrvdump({"--png", out, "--bgr", out, Sample("greeting-video.trv")}).status, 0);
    const Bytes bgr = ReadBytes(out + "/picture-0032.bgr");
    const QImage png(QString::fromStdString(out + "/picture-0032.png"));
    ASSERT_EQ(png.size(), QSize(kPictureWidth, kPictureHeight));
    ASSERT_EQ(bgr.size(), kPictureBytes);
    for (int y = 0; y < kPictureHeight; ++y) {
        for (int x = 0; x < kPictureWidth; ++x) {
            const std::size_t i = static_cast<std::size_t>((kPictureHeight - 1 - y) * kPictureWidth + x) * 3;
            ASSERT_EQ(png.pixelColor(x, y), QColor(bgr[i + 2], bgr[i + 1], bgr[i])) << x << "," << y;
        }
    }
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
    Bytes message = MessageHeader(0, 10);
    AppendVideo(message, 42, HeadOnly(0, 0, 0xFF));
    AppendSpeech(message, 0);
    WriteBytes(folder.Path("m.trv"), message);
    const ToolRun run =
        RunTrvdump({"--bgr", folder.Path("b"), "--pcm", folder.Path("p"), folder.Path("m.trv")});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.err.find("voice-only"), std::string::npos) << run.err;
    EXPECT_TRUE(std::filesystem::is_empty(folder.Path("b")));
    EXPECT_EQ(ReadBytes(folder.Path("p")).size(), 3200U);
}

TEST(TrvdumpFailures, FilesThatAreNoMessage) {
    const TestFolder folder;
    Bytes no_count = MessageHeader(0, 0);
    no_count.pop_back();
    WriteBytes(folder.Path("empty"), {});
    WriteBytes(folder.Path("rate-6"), MessageHeader(6, 0));
    WriteBytes(folder.Path("no-count"), no_count);
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
    WriteBytes(folder.Path("file"), {1});
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
    };
    for (const auto& c : cases) {
        const ToolRun run = RunTrvdump(c.arguments);
        EXPECT_EQ(run.status, c.status) << testing::PrintToString(c.arguments);
        EXPECT_NE(run.err.find(c.status == 2 ? "--help" : c.arguments[1]), std::string::npos) << run.err;
        EXPECT_EQ(folder.Names(), before);
    }
    EXPECT_EQ(ReadBytes(folder.Path("m.trv")), ReadBytes(sample));
    EXPECT_EQ(RunTrvdump({"--help"}).status, 0);
}

TEST(TrvdumpWarnings, EachIsFoundAndNothingElse) {
    Bytes good = MessageHeader(1, 10);
    const Bytes video = ReadBytes(Sample("greeting-video.trv"));
    ASSERT_EQ(video[13], 1U);
    const std::size_t first_length = video[14] + 256U * video[15];
    const Bytes payload(video.begin() + 16, video.begin() + 16 + static_cast<std::ptrdiff_t>(first_length));
    const auto with_video = [&](unsigned length, const Bytes& bytes) {
        Bytes message = good;
        AppendVideo(message, length, bytes);
        return message;
    };
    AppendVideo(good, static_cast<unsigned>(payload.size()), payload);
    AppendSpeech(good, 0x55);
    const auto size = static_cast<unsigned>(payload.size());
    Bytes padded = payload;
    padded.resize(16384);
    Bytes wrong_count = good, stray = good, cut_length = good, in_voice = good;
    wrong_count[9] = 11;
    stray.insert(stray.begin() + 13, {7, 255});
    cut_length.insert(cut_length.end(), {1, 0});
    in_voice[8] = 0;
    Bytes negative = with_video(0x8000, payload);
    negative[9] = 20;
    AppendSpeech(negative, 0);

    const struct {
        const char* name;
        std::set<std::string> codes;
        Bytes message;
    } cases[] = {
        {"nothing", {}, good},
        {"wrong count", {"frame-count"}, wrong_count},
        {"stray bytes", {"skipped-bytes"}, stray},
        {"cut speech", {"partial-record", "frame-count"}, {good.begin(), good.end() - 1}},
        {"cut video", {"partial-record"}, with_video(size + 1, payload)},
        {"cut length", {"partial-record"}, cut_length},
        {"16385 bytes", {"oversized-length"}, with_video(16385, Bytes(16385))},
        {"negative length", {"oversized-length", "frame-count"}, negative},
        {"largest length", {}, with_video(16384, padded)},
        {"short payload", {"payload-short"}, with_video(size - 1, {payload.begin(), payload.end() - 1})},
        {"empty payload", {"payload-short"}, with_video(0, {})},
        {"counts beyond the store",
         {"counts-out-of-range", "counts-disagree", "payload-short"},
         with_video(42, HeadOnly(3601, 9601, 0xFF))},
        {"counts beside the flags",
         {"counts-disagree", "payload-short"},
         with_video(42, HeadOnly(12, 32, 0xFC))},
        {"pictures in a voice message", {"pictures-in-voice"}, in_voice},
        {"no pictures in a video message", {"no-pictures"}, MessageHeader(5, 0)},
    };
    const TestFolder folder;
    const std::string path = folder.Path("m.trv");
    for (const auto& c : cases) {
        WriteBytes(path, c.message);
        EXPECT_EQ(WarningCodes(path), c.codes) << c.name;
        // People are told as well.
        const ToolRun run = RunTrvdump({path});
        EXPECT_EQ(run.status, 0);
        EXPECT_EQ(run.out.find("warnings       none") != std::string::npos, c.codes.empty()) << c.name;
    }
}

TEST(TrvdumpWarnings, EndsAreToldWithTheirTime) {
    Bytes start = MessageHeader(0, 20);
    AppendSpeech(start, 0);
    AppendSpeech(start, 0);
    Bytes partial = start, oversized = start;
    partial.insert(partial.end(), {0, 1, 2});
    AppendVideo(oversized, 40000, {});
    const struct {
        const char* end;
        Bytes message;
        const char* text;
    } cases[] = {{"clean", start, "length         0.40 s"},
                 {"partial-record", partial, "the file ends within a record at 0.40 s, byte 675"},
                 {"oversized-length", oversized, "claims 40000 bytes, more than 16384, at 0.40 s, byte 675"}};
    const TestFolder folder;
    const std::string path = folder.Path("m.trv");
    for (const auto& c : cases) {
        WriteBytes(path, c.message);
        EXPECT_NE(RunTrvdump({path}).out.find(c.text), std::string::npos) << c.end;
        const QJsonObject report = ParseJson(RunTrvdump({"--json", path}).out).object();
        EXPECT_EQ(report["end"].toString(), c.end);
        EXPECT_EQ(report["length_seconds"].toDouble(), 0.4) << c.end;
        EXPECT_EQ(report["end_offset"].toInt(), 675) << c.end;
    }
}
