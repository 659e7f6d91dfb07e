// SPDX-License-Identifier: MIT
// Thousands of random actions on a simulated clock; after each, everything that shows or tells the position
// agrees with a model that is nothing but arithmetic.
//
// TRV_WALK_ACTIONS and TRV_WALK_SEED choose another walk; the seed is printed.
#include <cstdlib>
#include <random>

#include "codec/message_time.h"
#include "codec/picture_geometry.h"
#include "codec/speech_frame.h"
#include "codec/vdec.h"
#include "playback/timeline.h"
#include "res/resource.h"
#include "tests/playback/player_fixture.h"

// The renderer's timer comes here (the linker's --wrap): it ticks when the simulated clock does.
MMTIMERID SetTicks(UINT, UINT, UINT, TIMECALLBACK, DWORD_PTR,
                   UINT) __asm__("__wrap__Z17timeSetEventAfterjjjPFvjjmmmEmj");
UINT KillTicks(MMTIMERID) __asm__("__wrap__Z13timeKillEventj");

namespace {

struct {
    MMTIMERID id = 0;  // 0: none runs
    UINT period = 0, left = 0;
    TIMECALLBACK callback = nullptr;
    DWORD_PTR user = 0;
    MMTIMERID last = 0;
} g_ticks;

}  // namespace

MMTIMERID SetTicks(UINT delay, UINT period, UINT, TIMECALLBACK callback, DWORD_PTR user, UINT) {
    g_ticks = {g_ticks.last + 1, period, delay, callback, user, g_ticks.last + 1};
    return g_ticks.id;
}

UINT KillTicks(MMTIMERID) {
    g_ticks.id = 0;
    return 0;
}

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kActions = 1000;
#else
constexpr int kActions = 5000;
#endif

int Setting(const char* name, int otherwise) {
    const char* value = std::getenv(name);
    return value == nullptr ? otherwise : std::atoi(value);
}

using Look = std::vector<COLORREF>;

// A message and what becomes of it in time.
struct Walked {
    MessageBuilder message;
    int rate = 0;
    std::vector<int> speechAt;  // the message's frame at which each speech frame sounds
    std::vector<uint8_t> speech;
    std::vector<Look> pictures;
    int length = 0;
};

Look LookOf(const uint8_t* picture) {
    Look look;
    for (int i = 1; i < 8; ++i) {
        const uint8_t* bgr = picture + (kPictureHeight - 1 - i * 30) * kPictureRowBytes + i * 40 * 3;
        look.push_back(RGB(bgr[2], bgr[1], bgr[0]));
    }
    return look;
}

// records: s speech block, v picture, . stray byte.
Walked Make(int rate, const std::string& records) {
    Walked walked;
    walked.rate = rate;
    MessageClock clock(rate);
    MessageBuilder body(rate);
    std::vector<uint8_t> picture(kPictureBytes);
    vdec_init();
    vdec_set_quality(3);
    for (const char record : records) {
        const size_t from = body.Data().size();
        if (record == 's') {
            body.Speech(1);
            for (int i = 0; i < kFramesPerSpeechBlock; ++i)
                walked.speechAt.push_back(static_cast<int>(clock.NextSpeechFrame()) + i);
            walked.speech.insert(walked.speech.end(), body.Data().begin() + static_cast<long>(from) + 1,
                                 body.Data().end());
            clock.AddSpeechBlock();
        } else if (record == 'v') {
            body.Picture();
            vdec_decode(body.Data().data() + from + 3, body.Data().size() - from - 3, picture.data());
            walked.pictures.push_back(LookOf(picture.data()));
            clock.AddPicture();
        } else {
            body.Bytes({9});
        }
    }
    vdec_free();
    walked.length = static_cast<int>(clock.Length());
    walked.message = MessageBuilder(rate, static_cast<uint32_t>(walked.length));
    walked.message.Bytes({body.Data().begin() + kMessageDataStart, body.Data().end()});
    return walked;
}

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

    enum class State { None, Stopped, Paused, Interrupted, Playing };

    // What the model says of the sound: the next frame to be heard, decoded as it should be.
    void SoundFrom(int frame, int decodeFrom) {
        gsm_destroy(m_decoder);
        m_decoder = gsm_create();
        m_nextSpeech = 0;
        m_soundKnown = true;
        const Walked& walked = Current();
        while (m_nextSpeech < walked.speechAt.size() && walked.speechAt[m_nextSpeech] < frame) {
            int16_t unheard[kSpeechFrameSamples];
            if (walked.speechAt[m_nextSpeech] >= decodeFrom)
                DecodeSpeechFrame(m_decoder, walked.speech.data() + m_nextSpeech * kSpeechFrameBytes,
                                  unheard);
            ++m_nextSpeech;
        }
        m_sound->ForgetHeard();
    }
    std::vector<int16_t> NextSound() {
        std::vector<int16_t> block(kSpeechFrameSamples);
        const Walked& walked = Current();
        if (m_nextSpeech < walked.speechAt.size() && walked.speechAt[m_nextSpeech] == m_position) {
            DecodeSpeechFrame(m_decoder, walked.speech.data() + m_nextSpeech * kSpeechFrameBytes,
                              block.data());
            ++m_nextSpeech;
        }
        return block;
    }
    const Walked& Current() const { return m_messages[static_cast<size_t>(m_current)]; }

    // Lets everybody do what there is to do.
    static void Settle() {
        for (int asleep = 0; asleep < 3;) {
            HeadlessToolkit::Pump();
            asleep = watch::OthersSleep() ? asleep + 1 : 0;
            std::this_thread::yield();
        }
    }

    void OpenAnother(int which) {
        m_current = which;
        const std::string path = m_folder.Path(std::to_string(which));
        if (!std::filesystem::exists(path)) Current().message.Write(path);
        ASSERT_TRUE(Panel().Open(path));
        m_state = State::Paused;
        m_position = 0;
        m_atOnce = true;
        SoundFrom(0, 0);
    }
    void Seek(int frame) {
        m_position = std::clamp(frame, 0, Current().length - 1);
        if (m_state == State::Stopped) m_state = State::Paused;
        m_atOnce = true;
        SoundFrom(m_position, m_position - 50 - (Current().rate == 0 ? Trace().GetVisibleCount() : 0));
    }
    void Rewound() {
        m_state = State::Stopped;
        m_position = 0;
        m_atOnce = true;
        m_soundKnown = false;  // the decoder keeps the memory of what had been read ahead
    }

    CWaveformWnd& Trace() const { return static_cast<CWaveformWnd&>(*CWnd::FromHandle(ChildOfFrame(0))); }

    // One block's time.
    void Tick() {
        Settle();
        const bool heard = m_state == State::Playing;
        const size_t before = m_sound->HeardCount();
        m_sound->Advance(20);
        HeadlessToolkit::Pump();
        if (heard) {
            ASSERT_EQ(m_sound->HeardCount(), before + kSpeechFrameSamples)
                << "left waiting at " << m_position;
            if (m_soundKnown) {
                const std::vector<int16_t> all = m_sound->Heard();
                ASSERT_EQ(std::vector<int16_t>(all.end() - kSpeechFrameSamples, all.end()), NextSound())
                    << "at " << m_position;
                if (all.size() > 100000) m_sound->ForgetHeard();
            }
            m_atOnce = false;
            if (++m_position == Current().length) {
                ++m_ended;
                Rewound();
            }
        } else {
            ASSERT_EQ(m_sound->HeardCount(), before);
        }
        if (g_ticks.id == 0) return;
        for (g_ticks.left = g_ticks.left < 20 ? 0 : g_ticks.left - 20;
             g_ticks.id != 0 && g_ticks.left == 0;) {
            g_ticks.left = g_ticks.period;
            Settle();
            g_ticks.callback(g_ticks.id, 0, g_ticks.user, 0, 0);
        }
    }

    void Check() {
        Settle();
        ASSERT_EQ(m_main->ended, m_ended);
        ASSERT_EQ(m_main->plays, m_plays);
        ASSERT_TRUE(m_toolkit.boxes.empty());
        if (m_state == State::None) return;
        const Walked& walked = Current();
        ASSERT_EQ(Panel().GetPosition(), m_position);
        ASSERT_EQ(Panel().GetLength(), walked.length);
        CString text;
        text.Format(IDS_TIME_FORMAT, m_position / 3000, m_position % 3000 / 50.0);
        ASSERT_EQ(Text(IDC_CURRENT), m_state == State::Stopped || !m_timeShown ? "" : text.Str());
        if (walked.rate == 0) return;

        const int last = static_cast<int>(walked.pictures.size()) - 1;
        const int due = std::min(Timeline(walked.rate).PictureAt(m_position), last);
        const Look shown = Shown();
        const auto isShown = [&](int number) {
            return shown == (number < 0 ? Look(7, 0U) : walked.pictures[static_cast<size_t>(number)]);
        };
        ASSERT_TRUE(isShown(due) ||
                    (!m_atOnce && (isShown(std::max(due - 1, -1)) || isShown(std::min(due + 1, last)))))
            << "due " << due << ", at once " << m_atOnce;
    }
    Look Shown() const {
        Look look;
        for (int i = 1; i < 8; ++i) look.push_back(Pixel(ChildOfFrame(2), i * 40, i * 30));
        return look;
    }

    void Act(std::mt19937& random);

    std::vector<Walked> m_messages;
    int m_current = 0;
    std::string m_log;  // of the latest actions: which, and the position before
    State m_state = State::None;
    int m_position = 0;
    int m_ended = 0;
    std::vector<bool> m_plays;  // what the main window is told of interruptions
    bool m_atOnce = false;      // nothing has been heard since the picture was shown by a seek
    bool m_timeShown = true;    // the elapsed time is empty from Stop to the first block
    gsm m_decoder = gsm_create();
    size_t m_nextSpeech = 0;
    bool m_soundKnown = false;
};

void PanelWalk::Act(std::mt19937& random) {
    const auto upTo = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
    const int action = upTo(99);
    m_log += " " + std::to_string(action) + "@" + std::to_string(m_position);
    if (m_state == State::None || action < 3) {
        OpenAnother(upTo(static_cast<int>(m_messages.size()) - 1));
        m_timeShown = true;
    } else if (action < 5) {
        Panel().Close();
        m_state = State::None;
    } else if (action < 9) {
        Panel().Stop();
        if (m_state != State::Stopped) Rewound();
        m_timeShown = false;
    } else if (action < 24) {
        Panel().Play();
        m_state = State::Playing;
    } else if (action < 34) {
        Panel().Pause();
        if (m_state != State::Stopped) m_state = State::Paused;
    } else if (action < 50) {
        const int frame = upTo(Current().length + 20) - 10;
        Panel().SeekTo(frame);
        Seek(frame);
        m_timeShown = true;
    } else if (action < 60) {
        for (int i = upTo(5); i >= 0; --i) {
            const int frames = upTo(500) - 250;
            Panel().SeekBy(frames);
            Seek(m_position + frames);
        }
        m_timeShown = true;
    } else if (action < 66) {
        const int steps = upTo(4) - 2;
        Panel().StepPicture(steps);
        if (m_state != State::Stopped) m_state = State::Paused;
        const int rate = Current().rate;
        const int64_t picture = rate == 0 ? 0 : Timeline(rate).PictureAt(m_position) + steps;
        Seek(rate == 0     ? m_position + 5 * steps
             : picture < 0 ? 0
                           : static_cast<int>(PictureDueFrame(picture, rate)));
        m_timeShown = true;
    } else if (action < 72) {
        const bool played = m_state == State::Playing;
        const auto what = static_cast<DWORD>(1 + upTo(2));
        m_sound->Interrupt(what);
        if (what == WOM_CALL_BEGINS && played) m_state = State::Interrupted;
        if (what == WOM_CALL_ENDS && m_state == State::Interrupted) m_state = State::Playing;
        if (what == WOM_UNPLUGGED && m_state != State::Stopped) m_state = State::Paused;
        const bool plays = m_state == State::Playing;
        if (plays != played) m_plays.push_back(plays);
    } else {
        for (int i = upTo(action < 95 ? 12 : 80); i >= 0; --i) {
            const bool playing = m_state == State::Playing;
            ASSERT_NO_FATAL_FAILURE(Tick());
            if (playing) m_timeShown = true;
            if (m_state == State::Stopped) m_timeShown = false;
        }
    }
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
