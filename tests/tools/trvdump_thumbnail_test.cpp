// SPDX-License-Identifier: MIT
// trvdump --thumbnail, as file managers call it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QImage>
#include <array>

#include "tests/support/message_builder.h"
#include "tests/tools/run_tool.h"

namespace {

using Bytes = std::vector<uint8_t>;

QImage Thumbnail(const std::string& message, const char* size) {
    const TestFolder folder;
    const ToolRun run = RunTrvdump({"--size", size, "--thumbnail", folder.Path("t.png"), "--", message});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out + run.err, "");
    return QImage(QString::fromStdString(folder.Path("t.png"))).convertToFormat(QImage::Format_RGB32);
}

// Pixels of the trace's colour in a range of columns.
int TracePixels(const QImage& image, int left, int right) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = left; x < right; ++x) count += image.pixel(x, y) == qRgb(0, 255, 0) ? 1 : 0;
    }
    return count;
}

}  // namespace

TEST(TrvdumpThumbnail, OfAVideoMessageIsTheFirstPictureWithSomethingOnIt) {
    const TestFolder folder;
    const std::string sample = Sample("greeting-video.trv");
    ASSERT_EQ(RunTrvdump({"--png", folder.Path("all"), sample}).status, 0);
    const QImage picture = QImage(QString::fromStdString(folder.Path("all/picture-0001.png")))
                               .convertToFormat(QImage::Format_RGB32);
    // A picture is not enlarged.
    EXPECT_EQ(Thumbnail(sample, "1024"), picture);

    const QImage half = Thumbnail(sample, "160");
    ASSERT_EQ(half.size(), QSize(160, 120));
    for (int y = 0; y < half.height(); ++y) {
        for (int x = 0; x < half.width(); ++x) {
            const QRgb from[] = {picture.pixel(2 * x, 2 * y), picture.pixel(2 * x + 1, 2 * y),
                                 picture.pixel(2 * x, 2 * y + 1), picture.pixel(2 * x + 1, 2 * y + 1)};
            int green = 2, blue = 2;
            for (const QRgb pixel : from) green += qGreen(pixel), blue += qBlue(pixel);
            ASSERT_EQ(qGreen(half.pixel(x, y)), green / 4) << x << "," << y;
            ASSERT_EQ(qBlue(half.pixel(x, y)), blue / 4) << x << "," << y;
        }
    }

    // Empty payloads are grey pictures. The search for another one has an end.
    const Bytes records = ReadBytes(sample);
    for (const auto& [empty, found] : {std::pair{9, true}, {500000, false}}) {
        MessageBuilder message(3);
        for (int i = 0; i < empty; ++i) message.Video(0, {});
        message.Bytes({records.begin() + 13, records.end()}).Write(folder.Path("m.trv"));
        EXPECT_EQ(Thumbnail(folder.Path("m.trv"), "320") == picture, found) << empty;
    }
}

TEST(TrvdumpThumbnail, OfSpeechShowsItsLevelsOverItsWholeLength) {
    const TestFolder folder;
    const Bytes speech = ReadBytes(Sample("greeting-voice.trv"));
    // As much of the silence at the sample's end as there is speech, before it; then foreign bytes between
    // them; then a message of a terabyte, mostly silent, which would take hours to read, of a date that 32
    // bits do not hold.
    const std::ptrdiff_t blocks = static_cast<std::ptrdiff_t>(speech.size() - 13) / 331;
    for (const std::size_t foreign : {0U, 150U}) {
        Bytes message(speech.begin(), speech.begin() + 13);
        for (std::ptrdiff_t i = 0; i < 4 * blocks; ++i)
            message.insert(message.end(), speech.end() - 331, speech.end());
        message.insert(message.end(), foreign, 9);
        for (int i = 0; i < 4; ++i) message.insert(message.end(), speech.begin() + 13, speech.end());
        WriteBytes(folder.Path("m.trv"), message);
        const QImage image = Thumbnail(folder.Path("m.trv"), "256");
        ASSERT_EQ(image.size(), QSize(256, 192));
        EXPECT_GT(TracePixels(image, 128, 256), 4 * TracePixels(image, 0, 124)) << foreign;
    }
    ASSERT_EQ(truncate(folder.Path("m.trv").c_str(), off_t{1} << 40), 0);
    const std::array<timespec, 2> times{{{time_t{1} << 33, 0}, {time_t{1} << 33, 0}}};
    ASSERT_EQ(utimensat(AT_FDCWD, folder.Path("m.trv").c_str(), times.data(), 0), 0);
    Thumbnail(folder.Path("m.trv"), "256");
    // No speech at all, and the longest duration, in the least room.
    MessageBuilder(0, 0xFFFFFFFF).Write(folder.Path("m.trv"));
    EXPECT_EQ(TracePixels(Thumbnail(folder.Path("m.trv"), "16"), 0, 16), 0);
}
