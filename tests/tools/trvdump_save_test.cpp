// SPDX-License-Identifier: MIT
// trvdump's films and sound, looked at through ffmpeg and libsndfile.

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <sstream>
#include <thread>

#include "codec/message_time.h"
#include "codec/picture_geometry.h"
#include "tests/support/message_builder.h"
#include "tests/tools/run_tool.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Samples = std::vector<int16_t>;

ToolRun Shell(const std::string& script) {
    return RunProgram({"bash", "-c", "set -o pipefail; trvdump=" TRVDUMP_PATH "; " + script});
}

// When each picture of a film is seen, in milliseconds, and how it looks: B, G, R from the top.
struct Film {
    std::vector<double> times;
    std::vector<Bytes> pictures;
};

Film Decode(const std::string& path, const TestFolder& folder) {
    Film film;
    std::istringstream times(RunProgram({"ffprobe", "-v", "error", "-select_streams", "v", "-show_entries",
                                         "frame=pts_time", "-of", "csv=p=0", path})
                                 .out);
    for (std::string line; std::getline(times, line);)
        if (!line.empty()) film.times.push_back(1000 * std::atof(line.c_str()));
    const std::string raw = folder.Path("decoded.raw");
    EXPECT_EQ(RunProgram({"ffmpeg", "-v", "error", "-y", "-i", path, "-fps_mode", "passthrough", "-f",
                          "rawvideo", "-pix_fmt", "bgr24", raw})
                  .status,
              0);
    const Bytes all = ReadBytes(raw);
    EXPECT_EQ(all.size() % kPictureBytes, 0U);
    for (auto at = all.begin(); at != all.end(); at += kPictureBytes)
        film.pictures.emplace_back(at, at + kPictureBytes);
    return film;
}

Samples SoundOf(const std::string& path, const TestFolder& folder) {
    const std::string raw = folder.Path("sound.raw");
    EXPECT_EQ(
        RunProgram({"ffmpeg", "-v", "error", "-y", "-i", path, "-ar", "8000", "-f", "s16le", raw}).status, 0);
    const Bytes bytes = ReadBytes(raw);
    Samples samples(bytes.size() / 2);
    std::memcpy(samples.data(), bytes.data(), 2 * samples.size());
    return samples;
}

double Difference(const Bytes& a, const Bytes& b) {
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) sum += std::abs(a[i] - b[i]);
    return sum / static_cast<double>(a.size());
}

// A message of gaudy pictures, a second or so each, every one unlike its neighbours.
MessageBuilder PictureMessage(int rate, int pictures, int blocks) {
    MessageBuilder message(rate, static_cast<uint32_t>(blocks) * 10);
    int written = 0;
    for (int block = 0; block < blocks; ++block) {
        for (; written < std::min<int64_t>(pictures, PicturesDueAt(10 * block + 9, rate)); ++written)
            message.Picture();
        message.Speech(1);
    }
    return message;
}

// The decoder's pictures of a message, rows from the top, and black in front of them.
std::vector<Bytes> PicturesOf(const std::string& message, const TestFolder& folder) {
    std::vector<Bytes> pictures(1, Bytes(kPictureBytes));
    EXPECT_EQ(RunTrvdump({"--bgr", folder.Path("bgr"), message}).status, 0);
    for (int number = 1;; ++number) {
        char name[32];
        std::snprintf(name, sizeof name, "bgr/picture-%04d.bgr", number);
        if (!std::filesystem::exists(folder.Path(name))) return pictures;
        const Bytes upside_down = ReadBytes(folder.Path(name));
        Bytes picture;
        for (auto row = upside_down.end(); row != upside_down.begin(); row -= kPictureRowBytes)
            picture.insert(picture.end(), row - kPictureRowBytes, row);
        pictures.push_back(picture);
    }
}

}  // namespace

struct FilmCase {
    friend void PrintTo(const FilmCase& c, std::ostream* out) { *out << c.ending << " from " << c.from; }

    const char* ending;
    int rate;
    const char *from, *to;
    double from_ms, to_ms;
    double precision_ms;  // of the form's times
    double closeness;     // mean difference of a channel; 0: exact
};

class TrvdumpFilm : public testing::TestWithParam<FilmCase> {};

INSTANTIATE_TEST_SUITE_P(Forms, TrvdumpFilm,
                         testing::Values(FilmCase{"mkv", 3, "0", "100", 0, 4000, 1, 0},
                                         FilmCase{"mkv", 5, "1.30", "2.74", 1300, 2740, 1, 0},
                                         FilmCase{"mkv", 1, "0:02.5", "3.5", 2500, 3500, 1, 0},
                                         FilmCase{"mp4", 4, "0:00:00.62", "100", 620, 4000, 1, 6},
                                         FilmCase{"webm", 2, "0.22", "100", 220, 4000, 8, 6},
                                         FilmCase{"gif", 3, "0.5", "100", 500, 4000, 10, 12}),
                         [](const auto& test) {
                             return test.param.ending + std::to_string(test.param.rate);
                         });

// Each picture looks like the one that the player shows then, and is seen from the moment on at which the
// player shows it; the sound begins and ends with the film.
TEST_P(TrvdumpFilm, ShowsWhatThePlayerShowsWhenItShowsIt) {
    const FilmCase& c = GetParam();
    const TestFolder folder;
    const std::string message = folder.Path("m.trv");
    const std::string output = folder.Path(std::string("f.") + c.ending);
    const auto period = static_cast<double>(PicturePeriodMilliseconds(c.rate));
    // The last picture stays for the rest.
    PictureMessage(c.rate, static_cast<int>(3000 / period), 20).Write(message);
    const ToolRun run =
        RunTrvdump({"--video", output, "--pcm", folder.Path("pcm"), "--from", c.from, "--to", c.to, message});
    ASSERT_EQ(run.status, 0) << run.err;
    const std::vector<Bytes> pictures = PicturesOf(message, folder);
    const Film film = Decode(output, folder);
    ASSERT_EQ(film.times.size(), film.pictures.size());
    const double start = film.times[0];  // where the container begins, because of its sound's encoder
    EXPECT_LE(start, 8);
    std::size_t i = 0;
    for (double at = c.from_ms; at < c.to_ms; at = (std::floor(at / period) + 1) * period, ++i) {
        ASSERT_LT(i, film.times.size());
        EXPECT_NEAR(film.times[i] - start, at - c.from_ms, c.precision_ms) << i;
        const auto due = std::min<std::size_t>(static_cast<std::size_t>(at / period), pictures.size() - 1);
        EXPECT_LE(Difference(film.pictures[i], pictures[due]), c.closeness) << i;
    }
    EXPECT_EQ(i, film.times.size());

    const Bytes pcm = ReadBytes(folder.Path("pcm"));
    EXPECT_EQ(static_cast<double>(pcm.size()), (c.to_ms - c.from_ms) * 16);
    if (std::string(c.ending) == "gif") return;
    const Samples sound = SoundOf(output, folder);
    EXPECT_NEAR(static_cast<double>(2 * sound.size()), static_cast<double>(pcm.size()),
                c.closeness > 0 ? 2048 : 0);
    if (c.closeness == 0) {
        EXPECT_EQ(std::memcmp(sound.data(), pcm.data(), pcm.size()), 0);
    }
    const ToolRun probe =
        RunProgram({"ffprobe", "-v", "error", "-show_entries", "format=duration", "-of", "csv=p=0", output});
    EXPECT_NEAR(1000 * std::atof(probe.out.c_str()), c.to_ms - c.from_ms, c.closeness > 0 ? 20 : 1);
}

// A range of the film is, picture by picture, that part of the whole one.
TEST(TrvdumpTrace, IsTheFilmOfAMessageOfSpeech) {
    const TestFolder folder;
    const std::string message = Sample("greeting-voice.trv");
    ASSERT_EQ(RunTrvdump({"--video", folder.Path("all.mkv"), "--to", "5", message}).status, 0);
    ASSERT_EQ(
        RunTrvdump({"--video", folder.Path("part.mkv"), "--from", "4.00", "--to", "4.42", message}).status,
        0);
    const Film all = Decode(folder.Path("all.mkv"), folder);
    const Film part = Decode(folder.Path("part.mkv"), folder);
    EXPECT_EQ(all.pictures.size(), 125U);
    ASSERT_EQ(part.pictures.size(), 11U);
    for (std::size_t i = 0; i < part.pictures.size(); ++i)
        ASSERT_EQ(part.pictures[i], all.pictures[100 + i]) << i;

    const auto pixel = [](const Bytes& picture, int x, int y) {
        return &picture[static_cast<std::size_t>(y * kPictureWidth + x) * 3];
    };
    // The trace moves left by two pixels with each level, four with each picture; its own column is green.
    for (const std::size_t i : {20U, 80U, 123U}) {
        int traced = 0;
        for (int y = 5; y < 218; ++y) {
            for (int x = 5; x < 300; ++x) {
                const bool here = pixel(all.pictures[i + 1], x, y)[1] == 255;
                ASSERT_EQ(here, pixel(all.pictures[i], x + 4, y)[1] == 255) << i << " " << x << "," << y;
                traced += here ? 1 : 0;
            }
        }
        EXPECT_GT(traced, 50);
    }
}

// A stretch of the sound is the very samples of that stretch of all of it, in every form that keeps them, and
// lies in its place in the others.
TEST(TrvdumpSound, RangesAreExactInEveryForm) {
    const TestFolder folder;
    const std::string message = Sample("greeting-voice.trv");
    const Samples all = SoundOf(
        [&] {
            EXPECT_EQ(RunTrvdump({"--audio", folder.Path("all.wav"), message}).status, 0);
            return folder.Path("all.wav");
        }(),
        folder);
    ASSERT_EQ(all.size(), 540U * 160U);
    const struct {
        const char *form, *from, *to;
        std::ptrdiff_t first, last;  // frames
    } cases[] = {{"wav", "0", "0.02", 0, 1},
                 {"wav", "3.14", "9:59:59", 157, 540},
                 {"flac", "0:07", "0:00:08.5", 350, 425},
                 {"opus", "2.01", "6", 101, 300},
                 {"ogg", "2", "6", 100, 300},
                 {"mp3", "2", "6", 100, 300}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.form);
        const std::string output = folder.Path(std::string("part.") + c.form);
        const ToolRun run =
            RunTrvdump({"--audio", output, "--force", "--from", c.from, "--to", c.to, message});
        ASSERT_EQ(run.status, 0) << run.err;
        const Samples part = SoundOf(output, folder);
        const Samples expected(all.begin() + 160 * c.first, all.begin() + 160 * c.last);
        if (c.form == std::string("wav") || c.form == std::string("flac")) {
            EXPECT_EQ(part, expected);
            continue;
        }
        // Where it fits best is within a codec's delay of its place.
        double best = 0;
        int best_shift = 0;
        for (int shift = -1200; shift <= 1200; shift += 5) {
            double product = 0;
            for (int i = 2000; i < 20000; ++i)
                product += part[static_cast<std::size_t>(i + shift)] * double{1} *
                           expected[static_cast<std::size_t>(i)];
            if (product > best) best = product, best_shift = shift;
        }
        EXPECT_LE(std::abs(best_shift), c.form == std::string("mp3") ? 1105 : 80);
        EXPECT_NEAR(static_cast<double>(part.size()), static_cast<double>(expected.size()), 2304);
    }
}

// What comes through a pipe gives the same as the file, and what goes into one is whole.
TEST(TrvdumpFilter, PipesAreAsGoodAsFiles) {
    const TestFolder folder;
    const std::string video = Sample("greeting-video.trv");
    EXPECT_EQ(RunTrvdump({"--video", folder.Path("v.mkv"), "--pcm", folder.Path("p"), video}).status, 0);
    const std::string md5 = " -v error -f md5 -";
    const std::string expected = Shell("ffmpeg -i " + folder.Path("v.mkv") + md5).out;
    EXPECT_EQ(Shell("cat " + video + " | $trvdump --video - --format mkv - | ffmpeg -i -" + md5).out,
              expected);
    EXPECT_EQ(Shell("cat " + video + " | $trvdump --pcm - - | cmp - " + folder.Path("p")).status, 0);
    const ToolRun mp4 = Shell("cat " + video + " | $trvdump --video - --format mp4 - | ffprobe -v error " +
                              "-count_packets -show_entries stream=nb_read_packets -of csv=p=0 -");
    EXPECT_EQ(std::atoi(mp4.out.c_str()), 32) << mp4.out << mp4.err;
    for (const char* form : {"flac", "opus", "mp3"}) {
        const ToolRun run = Shell("$trvdump --audio - --format " + std::string(form) + " - <" + video +
                                  " | ffmpeg -v error -i - -ar 8000 -f s16le - | wc -c");
        EXPECT_NEAR(std::atof(run.out.c_str()), 166400, 5000) << form << run.err;
    }
    // The description of what came through a pipe, and an output that would have to read it again.
    EXPECT_NE(Shell("cat " + video + " | $trvdump --json-lines -").out.find("\"speech_blocks\": 52"),
              std::string::npos);
    EXPECT_EQ(
        Shell("cat " + video + " | $trvdump --pcm " + folder.Path("a") + " --wav " + folder.Path("b") + " -")
            .status,
        1);
}

// Two hundred messages, twenty of them broken: each good one is written, each line is its message's, in
// order.
TEST(TrvdumpBatch, GoesOnPastBrokenMessages) {
    const TestFolder folder;
    std::vector<std::string> arguments = {"--json-lines", "--jobs", "4", "--pcm", folder.Path("{}.raw")};
    for (int i = 0; i < 200; ++i) {
        const std::string path = folder.Path("m" + std::to_string(i) + ".trv");
        MessageBuilder(i % 10 == 3 ? 9 : 0, 10).Speech(1 + i % 7).Write(path);
        arguments.push_back(path);
    }
    const ToolRun run = RunTrvdump(arguments);
    EXPECT_EQ(run.status, 1);
    std::istringstream lines(run.out);
    std::string line;
    for (int i = 0; i < 200; ++i) {
        ASSERT_TRUE(std::getline(lines, line));
        const std::string name = "m" + std::to_string(i);
        EXPECT_NE(line.find(name + ".trv\""), std::string::npos) << line;
        EXPECT_EQ(line.find("\"error\"") != std::string::npos, i % 10 == 3) << line;
        const std::string raw = folder.Path(name + ".raw");
        ASSERT_EQ(std::filesystem::exists(raw), i % 10 != 3) << i;
        if (i % 10 != 3) {
            EXPECT_EQ(std::filesystem::file_size(raw), 3200U * static_cast<unsigned>(1 + i % 7));
        }
    }
    EXPECT_FALSE(std::getline(lines, line));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 20 + 180 * 6 / 7 - 1) << run.err;
}

// The commands that docs/trvdump.md gives for a folder of messages, as they stand there.
TEST(TrvdumpBatch, WorksAsTheDocumentsSay) {
    const TestFolder folder;
    std::filesystem::create_directory(folder.Path("messages"));
    std::filesystem::copy_file(Sample("greeting-voice.trv"), folder.Path("messages/a.trv"));
    std::filesystem::copy_file(Sample("greeting-video.trv"), folder.Path("messages/b c.trv"));
    WriteBytes(folder.Path("messages/broken.trv"), {1});
    const Bytes document = ReadBytes(TestData("../../docs/trvdump.md"));
    const std::string text(document.begin(), document.end());
    const std::string mark = "<!-- tested -->\n```\n";
    const auto begin = text.find(mark);
    ASSERT_NE(begin, std::string::npos);
    const std::string script =
        text.substr(begin + mark.size(), text.find("```", begin + mark.size()) - begin - mark.size());
    const ToolRun run = Shell("cd " + folder.Path().string() + "; PATH=${trvdump%/*}:$PATH; " + script);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "1\n");
    EXPECT_TRUE(std::filesystem::exists(folder.Path("sound/a.opus")));
    EXPECT_TRUE(std::filesystem::exists(folder.Path("sound/b c.opus")));
}

// Whatever stops a film, a word says so and nothing is left of it; what was there before stays.
TEST(TrvdumpFailure, LeavesNothingBehind) {
    const TestFolder folder;
    std::filesystem::create_directory(folder.Path("bin"));
    std::filesystem::create_directory(folder.Path("out"));
    const std::string message = Sample("greeting-video.trv");
    const std::string film = folder.Path("out/f.mkv");
    WriteBytes(film, {1});
    const struct {
        const char* ffmpeg;  // what the program of that name does; null: there is none
        const char* arguments;
        const char* complaint;
    } cases[] = {{nullptr, "--force", "ffmpeg is not installed"},
                 {"kill -9 $$", "--force", "ended by signal 9"},
                 {"head -c 100000 <&3 >/dev/null; kill -9 $$", "--force", "ended by signal 9"},
                 {"echo No space left on device >&2", "--force", "No space left on device"},
                 {"exit 3", "--force", "exit status 3"},
                 {"cat <&3 >/dev/null", "", "is there already"},
                 {"cat <&3 >/dev/null", "--from 11", "nothing to save"},
                 {"cat <&3 >/dev/null", "--from 1 --video /nowhere/f.mkv", "/nowhere/f.mkv"}};
    for (const auto& c : cases) {
        const std::string program = folder.Path("bin/ffmpeg");
        std::filesystem::remove(program);
        if (c.ffmpeg != nullptr) {
            const std::string script = std::string("#!/bin/bash\n") + c.ffmpeg + "\n";
            WriteBytes(program, {script.begin(), script.end()});
            chmod(program.c_str(), 0755);
        }
        const std::string path = c.ffmpeg == nullptr ? "" : ":/usr/bin:/bin";
        const bool elsewhere = std::string(c.arguments).find("--from") == 0;
        const ToolRun run =
            Shell("PATH=" + folder.Path("bin") + path + " $trvdump --video " +
                  (elsewhere ? folder.Path("out/new.mkv") : film) + " " + c.arguments + " " + message);
        EXPECT_EQ(run.status, 1) << c.complaint;
        EXPECT_NE(run.err.find(c.complaint), std::string::npos) << run.err;
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder.Path("out")), {}), 1)
            << c.complaint;
        EXPECT_EQ(ReadBytes(film), Bytes{1}) << c.complaint;
    }

    // The same command may replace what it made, where files have attributes to tell by; no other may.
    const std::string raw = folder.Path("s.raw");
    ASSERT_EQ(RunTrvdump({"--pcm", raw, message}).status, 0);
    if (RunTrvdump({"--pcm", raw, message}).status != 0) GTEST_SKIP() << "no attributes here";
    EXPECT_EQ(RunTrvdump({"--pcm", raw, "--to", "1", message}).status, 1);
    EXPECT_EQ(RunTrvdump({"--pcm", raw, "--to", "1", "--force", message}).status, 0);
    EXPECT_EQ(ReadBytes(raw).size(), 16000U);
}

// A signal at any moment ends trvdump by that signal, with neither film nor half of one nor a child left.
TEST(TrvdumpCancel, LeavesNothingBehindAtAnyMoment) {
    const TestFolder folder;
    PictureMessage(5, 3000, 3000).Write(folder.Path("long.trv"));
    std::minstd_rand random(7);
    for (const int number : {SIGINT, SIGTERM, SIGINT, SIGHUP, SIGINT}) {
        ChildProcess child({TRVDUMP_PATH, "--video", folder.Path("f.mp4"), folder.Path("long.trv")});
        std::this_thread::sleep_for(std::chrono::milliseconds(random() % 300));
        child.Signal(number);
        EXPECT_TRUE(child.Wait() == -number) << number;
        EXPECT_EQ(folder.Names(), std::vector<std::string>{"long.trv"});
    }
}
