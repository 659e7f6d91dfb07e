// SPDX-License-Identifier: MIT
// Thousands of random actions on a simulated clock; after each, everything that shows or tells the position
// agrees with a model that is nothing but arithmetic.
//
// TRV_WALK_ACTIONS and TRV_WALK_SEED choose another walk; the seed is printed.
#include <cstdlib>
#include <deque>
#include <random>

#include "codec/message_time.h"
#include "codec/speech_frame.h"
#include "platform/framework/window.h"
#include "res/resource.h"
#include "tests/playback/player_fixture.h"
#include "tests/playback/walked_message.h"

namespace {

constexpr int kActions = watch::kSanitized ? 1000 : 5000;

int Setting(const char* name, int otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr ? otherwise : std::atoi(value);
}

// What waits at the simulated server is not taken back.
constexpr size_t kKeptBlocks = 8;
// The sound of normal speed follows that of another where the two fit; a voice's longest period at most.
constexpr int kMostJump = 8000 / 65;

std::string Repeat(const std::string& records, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += records;
    return all;
}

class PanelWalk : public PlayerTest {
protected:
    PanelWalk() {
        m_messages.push_back(Make(0, Repeat("s", 150)));
        m_messages.push_back(Make(5, Repeat("vs", 120)));
        m_messages.push_back(Make(1, Repeat("vsssss", 30)));
        m_messages.push_back(Make(3, Repeat("vsvsvss", 20) + Repeat("v", 40) + "." + Repeat("vsvsvss", 10)));
        m_messages.push_back(Make(4, Repeat("v", 60)));
        m_messages.push_back(Make(5, Repeat("s", 7) + Repeat("v", 30) + Repeat("s.", 20)));
    }
    void SetUp() override {
        PlayerTest::SetUp();
        CRect rect;
        Trace().GetClientRect(rect);  // within an edge of one pixel
        m_trace.Create(WS_CHILD | WS_VISIBLE, CRect(0, 0, rect.right + 2, rect.bottom + 2), &m_host, 0);
        m_trace.SetBackgroundColor(RGB(0, 0, 0));
        m_trace.SetGridColor(RGB(0x1F, 0x1F, 0x1F));
        m_trace.SetPlotColor(RGB(0, 0xFF, 0));
        m_trace.SetShift(2);
        m_trace.SetRange(0.0F, 2.0F, TRUE);
    }

    enum class State { None, Stopped, Paused, Interrupted, Playing };

    // A block that is still to be played.
    struct Block {
        int speed;
        bool
            joins;  // fades over from another speed, and may jump on a little where it goes to the normal one
    };

    // What the model says of the sound: frames from here on, decoded as they should be.
    void SoundFrom(int frame, int decodeFrom) {
        gsm_destroy(m_decoder);
        m_decoder = gsm_create();
        m_soundKnown = true;
        m_blocks.clear();
        m_slack = 0;
        m_decoded.clear();
        m_decodedFrom = std::max(decodeFrom, 0);
        m_levelsFrom = std::max(decodeFrom + 50, 0);
        m_traceKnown = Current().rate == 0 && m_levelsFrom < frame;
        m_nextSpeech = static_cast<size_t>(
            std::lower_bound(Current().speechAt.begin(), Current().speechAt.end(), m_decodedFrom) -
            Current().speechAt.begin());
    }
    // Samples of the message from number `from` on.
    std::span<const int16_t> Decoded(int64_t from, int count) {
        const Walked& walked = Current();
        const int64_t start = int64_t{m_decodedFrom} * kSpeechFrameSamples;
        while (start + static_cast<int64_t>(m_decoded.size()) < from + count) {
            const size_t end = m_decoded.size();
            m_decoded.resize(end + kSpeechFrameSamples);
            const int frame = m_decodedFrom + static_cast<int>(end / kSpeechFrameSamples);
            if (m_nextSpeech == walked.speechAt.size() || walked.speechAt[m_nextSpeech] != frame) continue;
            DecodeSpeechFrame(m_decoder, walked.speech.data() + m_nextSpeech++ * kSpeechFrameBytes,
                              m_decoded.data() + end);
        }
        return std::span(m_decoded).subspan(static_cast<size_t>(from - start), static_cast<size_t>(count));
    }
    const Walked& Current() const { return m_messages[static_cast<size_t>(m_current)]; }

    // Lets everybody do what there is to do.
    static void Settle() {
        for (int asleep = 0; asleep < 3;) {
            HeadlessToolkit::Pump();
            asleep = watch::OthersSleep() ? asleep + 1 : 0;
            // Who looks again at once uses up its share of a busy machine, and then waits for everybody.
            if (asleep == 0) std::this_thread::sleep_for(std::chrono::microseconds(20));
        }
    }

    void OpenAnother(int which) {
        SetServerAway(false);
        m_current = which;
        const std::string path = m_folder.Path(std::to_string(which));
        if (!std::filesystem::exists(path)) Current().message.Write(path);
        ASSERT_TRUE(Panel().Open(path));
        m_state = State::Paused;
        m_samples = 0;
        SoundFrom(0, 0);
    }
    void Seek(int frame) {
        frame = std::clamp(frame, 0, Current().length - 1);
        m_samples = int64_t{frame} * kSpeechFrameSamples;
        if (m_state == State::Stopped) m_state = State::Paused;
        m_timeShown = true;
        SoundFrom(frame, frame - 50 - (Current().rate == 0 ? Trace().GetVisibleCount() : 0));
    }
    void Rewound() {
        m_state = State::Stopped;
        m_samples = 0;
        m_blocks.clear();
        m_slack = 0;
        m_timeShown = false;
        m_levelsFrom = 0;
        m_traceKnown = Current().rate == 0;  // empty
        m_soundKnown = false;                // the decoder keeps the memory of what had been read ahead
    }
    void SetServerAway(bool away) {
        m_serverAway = away;
        m_sound->SetServerAway(away);
    }
    void SetSpeed(int speed) {
        Panel().SetSpeed(speed);
        const int before = std::exchange(m_speed, speed);
        if (speed == before) return;
        const bool playing = m_state == State::Playing;
        m_blocks.resize(playing && !m_serverAway ? kKeptBlocks : 0, {before, false});
        if (playing) m_blocks.push_back({speed, true});
    }
    int Position() const { return static_cast<int>(m_samples / kSpeechFrameSamples); }
    int64_t SamplesLeft() const { return int64_t{Current().length} * kSpeechFrameSamples - m_samples; }

    CWaveformWnd& Trace() const { return static_cast<CWaveformWnd&>(*CWnd::FromHandle(ChildOfFrame(0))); }

    // One block's time.
    void Tick() {
        Settle();
        m_sound->ForgetHeard();
        m_sound->Advance(20);
        HeadlessToolkit::Pump();
        if (m_state == State::Playing)
            ASSERT_NO_FATAL_FAILURE(Hear(m_sound->Heard()));
        else
            ASSERT_EQ(m_sound->HeardCount(), 0U);
    }

    void Hear(const std::vector<int16_t>& heard) {
        Block block = {m_speed, false};
        if (!m_blocks.empty()) {
            block = m_blocks.front();
            m_blocks.pop_front();
        }
        const int samples = SamplesInBlock(kSpeechFrameSamples, block.speed, SamplesLeft());
        const auto played = static_cast<size_t>(PlayedSamples(samples, block.speed));
        const bool ended = m_main->ended > m_ended;
        if (m_serverAway) {
            ASSERT_EQ(heard.size(), 0U);
        } else if (m_slack == 0 || !ended) {
            ASSERT_EQ(heard.size(), played) << "left waiting";
        }
        if (block.speed == kNormalSpeed && !block.joins && m_soundKnown && !m_serverAway && !ended) {
            ASSERT_NO_FATAL_FAILURE(FindIn(heard));
        }
        m_samples += samples;
        if (!m_soundKnown) m_traceKnown = false;
        if (block.speed == kNormalSpeed && block.joins) m_slack += kMostJump;
        m_timeShown = true;
        if (SamplesLeft() > (ended ? m_slack : 0)) return;
        ++m_ended;
        Rewound();
    }
    // What was heard is what the model says, at the place where the model is or, after a jump, may be.
    void FindIn(const std::vector<int16_t>& heard) {
        std::vector<int> jumps;
        for (int jump = 0; jump <= m_slack && jump < SamplesLeft(); ++jump) {
            const std::span<const int16_t> expected = Decoded(m_samples + jump, kSpeechFrameSamples);
            if (std::equal(heard.begin(), heard.end(), expected.begin())) jumps.push_back(jump);
        }
        ASSERT_FALSE(jumps.empty()) << "other samples";
        if (jumps.size() != 1) return;
        m_samples += jumps[0];
        m_slack = 0;
    }

    void Check() {
        Settle();
        ASSERT_EQ(m_main->ended, m_ended);
        ASSERT_EQ(m_main->plays, m_plays);
        ASSERT_TRUE(m_toolkit.boxes.empty());
        if (m_state == State::None) return;
        const Walked& walked = Current();
        const int position = Panel().GetPosition();
        ASSERT_GE(position, m_samples / kSpeechFrameSamples);
        ASSERT_LE(position, (m_samples + m_slack) / kSpeechFrameSamples);
        ASSERT_EQ(Panel().GetLength(), walked.length);
        auto& bar = static_cast<CPositionBar&>(*Panel().GetDlgItem(IDC_POSITION_BAR));
        ASSERT_EQ(bar.GetPosition(), position);
        if (m_traceKnown && ++m_tracesDue % 3 == 0) {  // many pixels
            ASSERT_NO_FATAL_FAILURE(CheckTrace(position));
        }
        CString text;
        text.Format(IDS_TIME_FORMAT, position / 3000, position % 3000 / 50.0);
        ASSERT_EQ(Text(IDC_CURRENT), m_state == State::Stopped || !m_timeShown ? "" : text.Str());
        if (walked.rate == 0) return;

        const int64_t due = std::min(PictureAt(position, walked.rate), std::ssize(walked.pictures) - 1);
        ASSERT_EQ(Shown(), due < 0 ? Look(7, 0U) : walked.pictures[static_cast<size_t>(due)])
            << "due " << due;
    }
    // The levels up to the position, in the trace as in another one that is shown them at once.
    void CheckTrace(int position) {
        std::vector<float> levels;
        for (int frame = m_levelsFrom; frame < position; ++frame)
            levels.push_back(1.0F +
                             static_cast<float>(Decoded(int64_t{frame} * kSpeechFrameSamples, 1)[0]) / 32768);
        m_trace.ShowValues(levels.data(), static_cast<int>(levels.size()));
        HeadlessToolkit::Pump();
        const auto shown = windows::SurfaceOf(Trace().m_hWnd);
        const auto expected = windows::SurfaceOf(m_trace.m_hWnd);
        // But for the segment that is just scrolling out.
        int different = 0;
        for (int y = 0; y < shown->height(); ++y)
            for (int x = 8; x < shown->width(); ++x) different += shown->pixel(x, y) != expected->pixel(x, y);
        ASSERT_EQ(different, 0);
    }
    Look Shown() const {
        Look look;
        for (int i = 1; i < 8; ++i) look.push_back(Pixel(ChildOfFrame(2), i * 40, i * 30));
        return look;
    }

    void Act(std::mt19937& random);
    void Drag(std::mt19937& random);

    std::vector<Walked> m_messages;
    int m_current = 0;
    std::string m_log;  // of the latest actions: which, and the position before
    State m_state = State::None;
    int64_t m_samples = 0;  // the position
    int m_slack = 0;        // how much more it may be
    int m_speed = kNormalSpeed;
    std::deque<Block> m_blocks;  // the next ones; those behind them have the speed
    bool m_serverAway = false;
    int m_ended = 0;
    std::vector<bool> m_plays;  // what the main window is told of interruptions
    bool m_timeShown = true;    // the elapsed time is empty from Stop to the first block
    gsm m_decoder = gsm_create();
    size_t m_nextSpeech = 0;
    int m_decodedFrom = 0;  // frame
    std::vector<int16_t> m_decoded;
    bool m_soundKnown = false;
    int m_levelsFrom = 0;  // the first frame that the trace shows
    bool m_traceKnown = false;
    int m_tracesDue = 0;
    struct Host : CDialog {
        Host() {
            Create(IDD_ABOUTBOX);
            ShowWindow(SW_SHOW);
        }
    } m_host;
    CWaveformWnd m_trace;
};

void PanelWalk::Act(std::mt19937& random) {
    const auto upTo = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
    const int action = upTo(99);
    m_log += " " + std::to_string(action) + "@" + std::to_string(Position());
    if (m_state == State::None || action < 3) {
        OpenAnother(upTo(static_cast<int>(m_messages.size()) - 1));
        m_timeShown = true;
    } else if (action < 5) {
        Panel().Close();
        m_state = State::None;
    } else if (action < 8) {
        Panel().Stop();
        if (m_state != State::Stopped) Rewound();
    } else if (action < 22) {
        Panel().Play();
        m_state = State::Playing;
    } else if (action < 29) {
        Panel().Pause();
        if (m_state != State::Stopped) m_state = State::Paused;
    } else if (action < 42) {
        const int frame = upTo(Current().length + 20) - 10;
        Panel().SeekTo(frame);
        Seek(frame);
    } else if (action < 48) {
        for (int i = upTo(5); i >= 0; --i) {
            const int frames = upTo(500) - 250;
            const int from = Panel().GetPosition();
            Panel().SeekBy(frames);
            Seek(from + frames);
        }
    } else if (action < 52) {
        const int steps = upTo(4) - 2;
        const int from = Panel().GetPosition();
        Panel().StepPicture(steps);
        if (m_state != State::Stopped) m_state = State::Paused;
        const int rate = Current().rate;
        const int64_t picture = rate == 0 ? 0 : PictureAt(from, rate) + steps;
        Seek(rate == 0     ? from + 5 * steps
             : picture < 0 ? 0
                           : static_cast<int>(PictureDueFrame(picture, rate)));
    } else if (action < 56) {
        Drag(random);
    } else if (action < 66) {
        SetSpeed(action < 64 ? SteppedSpeed(m_speed, upTo(6) - 3) : kNormalSpeed);
    } else if (action < 69) {
        SetServerAway(!m_serverAway);
    } else if (action < 73) {
        const bool played = m_state == State::Playing;
        const auto what = static_cast<DWORD>(1 + upTo(2));
        m_sound->Interrupt(what);
        if (what == WOM_CALL_BEGINS && played) m_state = State::Interrupted;
        if (what == WOM_CALL_ENDS && m_state == State::Interrupted) m_state = State::Playing;
        if (what == WOM_UNPLUGGED && m_state != State::Stopped) m_state = State::Paused;
        const bool plays = m_state == State::Playing;
        if (plays != played) m_plays.push_back(plays);
    } else {
        for (int i = upTo(action < 95 ? 12 : 80); i >= 0; --i) ASSERT_NO_FATAL_FAILURE(Tick());
    }
}

// Silent while the head is held.
void PanelWalk::Drag(std::mt19937& random) {
    const bool playing = m_state == State::Playing;
    const int from = Panel().GetPosition();
    const auto to = [&] { return static_cast<int>(random() % static_cast<unsigned>(Current().length)); };
    for (auto i = random() % 3; i < 3; ++i) {
        const int frame = to();
        Panel().SendMessage(WM_POSITION_DRAGGED, static_cast<WPARAM>(frame));
        if (playing) m_state = State::Paused;
        Seek(frame);
        ASSERT_NO_FATAL_FAILURE(Check());
        ASSERT_NO_FATAL_FAILURE(Tick());
    }
    const bool cancels = random() % 4 == 0;
    const int frame = cancels ? from : to();
    Panel().SendMessage(cancels ? WM_POSITION_DRAG_CANCELLED : WM_POSITION_RELEASED,
                        static_cast<WPARAM>(frame));
    if (playing) m_state = State::Playing;
    Seek(frame);
}

TEST_F(PanelWalk, PositionPictureTimeAndSoundAgreeAfterEachAction) {
    const int seed = Setting("TRV_WALK_SEED", static_cast<int>(std::random_device()() >> 1));
    const int actions = Setting("TRV_WALK_ACTIONS", kActions);
    std::printf("seed %d, %d actions\n", seed, actions);
    std::mt19937 random(static_cast<unsigned>(seed));
    for (int i = 0; i < actions; ++i) {
        SCOPED_TRACE(testing::Message()
                     << "action " << i << " of seed " << seed << ", message " << m_current << m_log);
        m_log.erase(0, m_log.size() > 200 ? m_log.size() - 200 : 0);
        ASSERT_NO_FATAL_FAILURE(Act(random));
        ASSERT_NO_FATAL_FAILURE(Check());
    }
    gsm_destroy(m_decoder);
}

}  // namespace
