// SPDX-License-Identifier: MIT
// trvmake, run as a program; what it writes is read back by trvdump.

#include <gtest/gtest.h>
#include <sndfile.h>

#include <QColor>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <numbers>
#include <span>

#include "codec/message_reader.h"
#include "codec/message_time.h"
#include "tests/tools/run_tool.h"

namespace {

// A tone in the first channel, silence in the others.
void WriteTone(const std::string& path, int format, int rate, int channels, double seconds) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = channels;
    info.format = format;
    SNDFILE* const file = sf_open(path.c_str(), SFM_WRITE, &info);
    ASSERT_NE(file, nullptr) << sf_strerror(nullptr);
    const auto frames = static_cast<std::size_t>(std::lround(seconds * rate));
    std::vector<float> samples(frames * static_cast<std::size_t>(channels), 0.0F);
    for (std::size_t i = 0; i < frames; ++i) {
        const double phase = 2 * std::numbers::pi * 440 * static_cast<double>(i) / rate;
        samples[i * static_cast<std::size_t>(channels)] = static_cast<float>(0.5 * std::sin(phase));
    }
    EXPECT_EQ(sf_writef_float(file, samples.data(), static_cast<sf_count_t>(frames)), frames);
    sf_close(file);
}

std::vector<int16_t> DecodedSamples(const std::string& message) {
    const TestFolder folder;
    EXPECT_EQ(RunTrvdump({"--pcm", folder.Path("s"), message}).status, 0);
    const std::vector<uint8_t> bytes = ReadBytes(folder.Path("s"));
    std::vector<int16_t> samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), bytes.size());
    return samples;
}

QJsonObject Describe(const std::string& message) {
    return QJsonDocument::fromJson(QByteArray::fromStdString(RunTrvdump({"--json", message}).out)).object();
}

// Strength of the 440 Hz tone and of everything, root mean square, over a stretch of samples.
struct Strength {
    double tone, all;
};
Strength Measure(std::span<const int16_t> samples) {
    double cosine = 0, sine = 0, squares = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double phase = 2 * std::numbers::pi * 440 * static_cast<double>(i) / 8000;
        cosine += samples[i] * std::cos(phase);
        sine += samples[i] * std::sin(phase);
        squares += static_cast<double>(samples[i]) * samples[i];
    }
    const auto count = static_cast<double>(samples.size());
    return {std::hypot(cosine, sine) / count * std::numbers::sqrt2, std::sqrt(squares / count)};
}

std::string SavePicture(const std::string& path, int width, int height, const QColor& colour) {
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(colour);
    EXPECT_TRUE(image.save(QString::fromStdString(path)));
    return path;
}

}  // namespace

TEST(TrvmakeSound, FormatsRatesAndChannelsGiveTheSameSpeech) {
    const struct {
        const char* name;
        int format, rate, channels;
    } cases[] = {
        {"plain.wav", SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1},
        {"fast.wav", SF_FORMAT_WAV | SF_FORMAT_FLOAT, 192000, 2},
        {"disc.flac", SF_FORMAT_FLAC | SF_FORMAT_PCM_24, 44100, 2},
        {"slow.aiff", SF_FORMAT_AIFF | SF_FORMAT_PCM_16, 5512, 1},
    };
    const TestFolder folder;
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        WriteTone(folder.Path(c.name), c.format, c.rate, c.channels, 1.9);
        const ToolRun run = RunTrvmake({"--sound", folder.Path(c.name), folder.Path("m.trv")});
        ASSERT_EQ(run.status, 0) << run.err;
        const QJsonObject report = Describe(folder.Path("m.trv"));
        EXPECT_EQ(report["pictures_per_second"].toInt(-1), 0);
        EXPECT_EQ(report["frame_count"].toInt(), 100);
        EXPECT_TRUE(report["warnings"].toArray().isEmpty());

        const std::vector<int16_t> samples = DecodedSamples(folder.Path("m.trv"));
        ASSERT_EQ(samples.size(), 16000U);
        // One second of it: the tone, at its level among silent channels, and little else.
        const Strength middle = Measure(std::span(samples).subspan(4000, 8000));
        EXPECT_NEAR(middle.tone, 0.5 * 32768 / std::numbers::sqrt2 / c.channels, 800.0 / c.channels);
        EXPECT_LT(middle.all, middle.tone * 1.05);
        // The rest of the last block is silence.
        EXPECT_LT(Measure(std::span(samples).last(500)).all, 150);
    }
}

// Each picture stands before the block of speech during which it falls due, and the last is seen for its
// whole period; as the player counts, nothing waits and nothing is cut off.
TEST(TrvmakePictures, AreSeenInTime) {
    const TestFolder folder;
    const std::string picture = SavePicture(folder.Path("p.png"), 32, 24, Qt::gray);
    const struct {
        double seconds;
        int rate, pictures;
        int64_t blocks;
    } cases[] = {{0.0001, 0, 0, 1}, {0.2, 0, 0, 1},  {0.2002, 0, 0, 2}, {6.0, 0, 0, 30},
                 {1.2, 1, 1, 10},   {1.2, 1, 2, 15}, {1.2, 2, 1, 6},    {1.2, 2, 3, 10},
                 {1.2, 3, 4, 9},    {1.2, 4, 2, 6},  {1.2, 5, 7, 8},    {0.4, 5, 31, 32}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.rate) + ", " + std::to_string(c.pictures) + ", " +
                     std::to_string(c.seconds));
        WriteTone(folder.Path("s.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1, c.seconds);
        std::vector<std::string> arguments = {"--sound", folder.Path("s.wav"), "-o", folder.Path("m.trv")};
        if (c.pictures > 0)
            arguments.insert(arguments.end(), {"--rate", std::to_string(c.rate), "--pictures"});
        arguments.insert(arguments.end(), static_cast<std::size_t>(c.pictures), picture);
        ASSERT_EQ(RunTrvmake(arguments).status, 0);
        EXPECT_TRUE(Describe(folder.Path("m.trv"))["warnings"].toArray().isEmpty());

        const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
            std::fopen(folder.Path("m.trv").c_str(), "rb"), &std::fclose);
        MessageReader reader;
        ASSERT_TRUE(reader.Rewind(file.get()));
        MessageClock clock(c.rate);
        for (MessageRecord record; (record = reader.Read(file.get())).kind != MessageRecordKind::End;) {
            EXPECT_EQ(clock.SilenceBeforeSpeech(), 0);
            if (record.kind == MessageRecordKind::Speech) {
                clock.AddSpeechBlock();
            } else {
                const int64_t due = PictureDueFrame(clock.Pictures(), c.rate);
                EXPECT_GE(due, clock.NextSpeechFrame());
                EXPECT_LT(due, clock.NextSpeechFrame() + kFramesPerSpeechBlock);
                clock.AddPicture();
            }
        }
        EXPECT_EQ(clock.Pictures(), c.pictures);
        EXPECT_EQ(clock.SpeechEnd(), c.blocks * kFramesPerSpeechBlock);
        EXPECT_EQ(clock.Length(), clock.SpeechEnd());
        if (c.pictures > 0) {
            EXPECT_GE(clock.SpeechEnd(), PictureDueFrame(c.pictures, c.rate));
        }
    }
}

TEST(TrvmakePictures, FitTheFrameUprightOnBlack) {
    const TestFolder folder;
    WriteTone(folder.Path("s.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1, 0.2);
    // Red above blue, in a tall picture: 120 pixels wide in the middle of the frame.
    QImage tall(50, 100, QImage::Format_RGB32);
    for (int y = 0; y < 100; ++y) {
        for (int x = 0; x < 50; ++x) tall.setPixelColor(x, y, y < 50 ? Qt::red : Qt::blue);
    }
    ASSERT_TRUE(tall.save(QString::fromStdString(folder.Path("tall.png"))));
    const std::string clear = SavePicture(folder.Path("clear.png"), 640, 480, QColor(255, 255, 255, 0));
    const std::string large = SavePicture(folder.Path("large.jpg"), 3000, 1000, Qt::white);
    const std::string tiny = SavePicture(folder.Path("tiny.bmp"), 1, 1, Qt::green);
    ASSERT_EQ(RunTrvmake({"--sound", folder.Path("s.wav"), "--rate=5", "--pictures", folder.Path("tall.png"),
                          clear, large, tiny, folder.Path("m.trv")})
                  .status,
              0);
    ASSERT_EQ(RunTrvdump({"--png", folder.Path("out"), folder.Path("m.trv")}).status, 0);

    const struct {
        int picture, x, y;
        QColor colour;
    } points[] = {
        {1, 108, 60, Qt::red},    {1, 211, 180, Qt::blue}, {1, 40, 120, Qt::black}, {1, 280, 120, Qt::black},
        {2, 160, 120, Qt::black}, {3, 10, 120, Qt::white}, {3, 160, 30, Qt::black}, {3, 160, 210, Qt::black},
        {4, 160, 5, Qt::green},   {4, 10, 120, Qt::black},
    };
    for (const auto& point : points) {
        char name[32];
        std::snprintf(name, sizeof name, "out/picture-%04d.png", point.picture);
        const QColor found = QImage(QString::fromStdString(folder.Path(name))).pixelColor(point.x, point.y);
        // The colour bands are coarse, so edges reach some way in.
        const int distance = std::abs(found.red() - point.colour.red()) +
                             std::abs(found.green() - point.colour.green()) +
                             std::abs(found.blue() - point.colour.blue());
        EXPECT_LT(distance, 130) << name << " at " << point.x << "," << point.y << " is "
                                 << found.name().toStdString();
    }
}

TEST(TrvmakeFailures, WriteNothingAndSayWhy) {
    const TestFolder folder;
    const std::string sound = folder.Path("s.wav");
    WriteTone(sound, SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1, 0.5);
    WriteTone(folder.Path("silent.wav"), SF_FORMAT_WAV | SF_FORMAT_PCM_16, 8000, 1, 0);
    const std::string picture = SavePicture(folder.Path("p.png"), 8, 8, Qt::gray);
    WriteBytes(folder.Path("text.png"), {'t', 'e', 'x', 't'});
    WriteBytes(folder.Path("old.trv"), {'o', 'l', 'd'});
    const std::vector<std::string> before = folder.Names();

    const struct {
        int status;
        std::vector<std::string> arguments;
        std::string complaint;
    } cases[] = {
        {1, {"--sound", folder.Path("none.wav"), "OUT"}, folder.Path("none.wav")},
        {1, {"--sound", folder.Path("silent.wav"), "OUT"}, "holds no sound"},
        {1,
         {"--sound", sound, "--pictures", picture, folder.Path("text.png"), "--rate", "5", "OUT"},
         "text.png"},
        {1, {"--sound", sound, sound}, "made from"},
        {1, {"--sound", sound, folder.Path("none/m.trv")}, "none/m.trv"},
        {1, {"--sound", sound, folder.Path().string()}, "not a regular file"},
        {2, {}, "--help"},
        {2, {"--sound", sound}, "no message"},
        {2, {"--sound", sound, "--rate", "3", "OUT"}, "--pictures"},
        {2, {"--sound", sound, "--pictures", picture, "--rate", "6", "OUT"}, "1 to 5"},
        {2, {"--sound", sound, "--quality", "4", "OUT"}, "0 to 3"},
        {1, {"--input", folder.Path("none.mp4"), "OUT"}, "No such file"},
        {1, {"--input", folder.Path("text.png"), "OUT"}, "cannot be read"},
        {1, {"--input", sound, "--rate", "2", "OUT"}, "holds no pictures"},
        {2, {"--input", sound, "--sound", sound, "OUT"}, "--input"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> arguments = c.arguments;
        for (std::string& argument : arguments) {
            if (argument == "OUT") argument = folder.Path("old.trv");
        }
        const ToolRun run = RunTrvmake(arguments);
        EXPECT_EQ(run.status, c.status) << testing::PrintToString(arguments);
        EXPECT_NE(run.err.find(c.complaint), std::string::npos) << run.err;
        EXPECT_EQ(folder.Names(), before) << testing::PrintToString(arguments);
        EXPECT_EQ(ReadBytes(folder.Path("old.trv")), (std::vector<uint8_t>{'o', 'l', 'd'}));
    }
}

// A message made from a film is that film: the pictures at their times, the sound with them.
TEST(TrvmakeInput, FilmToMessageAndBack) {
    const TestFolder folder;
    const std::string original = Sample("greeting-video.trv");
    ASSERT_EQ(RunTrvdump({"--bgr", folder.Path("before"), "--video", folder.Path("f.mkv"), "--audio",
                          folder.Path("s.flac"), original})
                  .status,
              0);
    ASSERT_EQ(RunTrvmake({"--input", folder.Path("f.mkv"), "--rate", "3", folder.Path("m.trv")}).status, 0);
    const QJsonObject report = Describe(folder.Path("m.trv"));
    EXPECT_EQ(report["frame_count"].toInt(), 520);
    EXPECT_TRUE(report["warnings"].toArray().isEmpty());
    // The last of the message's 32 is due after its end.
    ASSERT_EQ(report["video_records"].toArray().size(), 31);
    ASSERT_EQ(RunTrvdump({"--bgr", folder.Path("after"), folder.Path("m.trv")}).status, 0);
    for (const char* name :
         {"picture-0001.bgr", "picture-0002.bgr", "picture-0017.bgr", "picture-0031.bgr"}) {
        const std::vector<uint8_t> before = ReadBytes(folder.Path(std::string("before/") + name));
        const std::vector<uint8_t> after = ReadBytes(folder.Path(std::string("after/") + name));
        double squares = 0;
        for (std::size_t i = 0; i < before.size(); ++i) squares += std::pow(before[i] - after[i], 2);
        EXPECT_LT(squares / static_cast<double>(before.size()), 1) << name;  // 48 dB
    }
    // A file of sound becomes a message of speech, the same that libsndfile's samples give.
    ASSERT_EQ(RunTrvmake({"--input", folder.Path("s.flac"), folder.Path("i.trv")}).status, 0);
    ASSERT_EQ(RunTrvmake({"--sound", folder.Path("s.flac"), folder.Path("s.trv")}).status, 0);
    EXPECT_EQ(ReadBytes(folder.Path("i.trv")), ReadBytes(folder.Path("s.trv")));
}
