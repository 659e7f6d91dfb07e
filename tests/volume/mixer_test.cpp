// Mixer access on a mixer that can lack things and refuse.
#include <gtest/gtest.h>

#include <bit>
#include <functional>
#include <iterator>

#include "platform/sound/simulated_mixer_driver.h"
#include "volume/mixer.h"

namespace {

using Driver = SimulatedMixerDriver;

class MixerAccess : public testing::Test {
protected:
    MixerAccess() { SetMixerDriver(m_driver); }
    ~MixerAccess() override { SetMixerDriver(nullptr); }

    // One bit for each control that is found.
    unsigned FindAll() {
        const BOOL found[] = {m_mixer.FindMasterVolume(), m_mixer.FindMasterMute(), m_mixer.FindWaveVolume(),
                              m_mixer.FindWaveMute(), m_mixer.FindWavePeakMeter()};
        unsigned bits = 0;
        for (unsigned i = 0; i < std::size(found); ++i) bits |= found[i] ? 1U << i : 0U;
        return bits;
    }

    // One bit for each value operation that succeeds: the five reads, then the four writes.
    unsigned UseAll() {
        DWORD value = 7;
        BOOL flag = FALSE;
        LONG level = 0;
        const BOOL done[] = {
            m_mixer.GetMasterVolume(value), m_mixer.GetMasterMute(flag), m_mixer.GetWaveVolume(value),
            m_mixer.GetWaveMute(flag),      m_mixer.GetPeakLevel(level), m_mixer.SetMasterVolume(1),
            m_mixer.SetMasterMute(TRUE),    m_mixer.SetWaveVolume(1),    m_mixer.SetWaveMute(TRUE)};
        unsigned bits = 0;
        for (unsigned i = 0; i < std::size(done); ++i) bits |= done[i] ? 1U << i : 0U;
        return bits;
    }

    std::shared_ptr<Driver> m_driver = std::make_shared<Driver>();
    CMixer m_mixer{nullptr};
};

TEST_F(MixerAccess, OpensTheDevicesThatThereAreAndGivesThemBack) {
    EXPECT_EQ(m_mixer.GetNumDevs(), 1U);
    EXPECT_FALSE(m_mixer.Open(1));
    m_driver->SetOpenResult(MMSYSERR_ALLOCATED);
    EXPECT_FALSE(m_mixer.Open(0));
    CString name("untouched");
    EXPECT_FALSE(m_mixer.GetName(name));
    EXPECT_TRUE(name == "untouched");
    m_driver->SetOpenResult(MMSYSERR_NOERROR);
    for (const char* device : {"Built-in", "Headset"}) {
        m_driver->SetName(device);
        EXPECT_TRUE(m_mixer.Open(0));
        EXPECT_EQ(m_driver->OpenMixers(), 1U);
        EXPECT_TRUE(m_mixer.GetName(name));
        EXPECT_TRUE(name == device);
    }
    m_driver->SetCount(0);
    EXPECT_EQ(m_mixer.GetNumDevs(), 0U);
    EXPECT_FALSE(m_mixer.Open(0));
    m_driver->SetCount(1);
    m_driver->SetNameResult(MMSYSERR_ERROR);
    {
        CMixer nameless(nullptr);
        EXPECT_FALSE(nameless.Open(0));
    }
    m_mixer.Close();
    EXPECT_EQ(m_driver->OpenMixers(), 0U);
}

TEST_F(MixerAccess, FindsWhatTheDeviceHasAndUsesNothingElse) {
    const auto without = [](DWORD control) { return [=](Driver& d) { d.RemoveControl(control); }; };
    const struct {
        const char* name;
        std::function<void(Driver&)> make;
        unsigned found, usable;
    } cases[] = {
        {"everything", [](Driver&) {}, 0b11111, 0b111111111},
        {"no master volume", without(Driver::kMasterVolume), 0b11110, 0b111011110},
        {"no master mute", without(Driver::kMasterMute), 0b11101, 0b110111101},
        {"no wave volume", without(Driver::kWaveVolume), 0b11011, 0b101111011},
        {"no wave mute", without(Driver::kWaveMute), 0b10111, 0b011110111},
        {"no meter", without(Driver::kWavePeak), 0b01111, 0b111101111},
        {"no wave output", [](Driver& d) { d.RemoveLine(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT); }, 0b00011,
         0b001100011},
        {"no speakers", [](Driver& d) { d.RemoveLine(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS); }, 0, 0},
        {"wave output elsewhere", [](Driver& d) { d.DisconnectWaveFromSpeakers(); }, 0b01111, 0b111101111},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        m_driver = std::make_shared<Driver>();
        test.make(*m_driver);
        SetMixerDriver(m_driver);
        ASSERT_TRUE(m_mixer.Open(0));
        EXPECT_EQ(UseAll(), 0U) << "nothing was looked for yet";
        EXPECT_EQ(m_driver->Reads() + m_driver->Writes(), 0U);
        EXPECT_EQ(FindAll(), test.found);
        EXPECT_EQ(UseAll(), test.usable);
        EXPECT_EQ(m_driver->Reads() + m_driver->Writes(), static_cast<unsigned>(std::popcount(test.usable)));
        m_mixer.Close();
        EXPECT_EQ(FindAll() | UseAll(), 0U);
    }
}

TEST_F(MixerAccess, ValuesGoToTheirControlsAndBack) {
    m_driver->SetBounds(Driver::kMasterVolume, 10, 50000);
    ASSERT_TRUE(m_mixer.Open(0));
    ASSERT_EQ(FindAll(), 0b11111U);
    EXPECT_EQ(m_mixer.GetMasterVolumeMin(), 10U);
    EXPECT_EQ(m_mixer.GetMasterVolumeMax(), 50000U);
    EXPECT_EQ(m_mixer.GetWaveVolumeMin(), 0U);
    EXPECT_EQ(m_mixer.GetWaveVolumeMax(), 65535U);
    EXPECT_EQ(m_mixer.GetPeakMin(), -32768);
    EXPECT_EQ(m_mixer.GetPeakMax(), 32767);

    EXPECT_TRUE(m_mixer.SetMasterVolume(11));
    EXPECT_TRUE(m_mixer.SetWaveVolume(65535));
    EXPECT_EQ(m_driver->Value(Driver::kMasterVolume), 11U);
    EXPECT_EQ(m_driver->Value(Driver::kWaveVolume), 65535U);
    EXPECT_TRUE(m_mixer.SetMasterMute(5));
    EXPECT_EQ(m_driver->Value(Driver::kMasterMute), 1U);
    EXPECT_TRUE(m_mixer.SetMasterMute(FALSE));
    EXPECT_EQ(m_driver->Value(Driver::kMasterMute), 0U);

    m_driver->SetBounds(Driver::kWaveMute, 0, 2);
    m_driver->Change(Driver::kWaveMute, 2);
    BOOL mute = FALSE;
    EXPECT_TRUE(m_mixer.GetWaveMute(mute));
    EXPECT_EQ(mute, TRUE);
    m_driver->Change(Driver::kWavePeak, static_cast<DWORD>(-32768));
    LONG level = 0;
    EXPECT_TRUE(m_mixer.GetPeakLevel(level));
    EXPECT_EQ(level, -32768);
}

TEST_F(MixerAccess, ARefusalLeavesTheAnswerAlone) {
    ASSERT_TRUE(m_mixer.Open(0));
    ASSERT_EQ(FindAll(), 0b11111U);
    m_driver->SetReadResult(MMSYSERR_NODRIVER);
    m_driver->SetWriteResult(MMSYSERR_NODRIVER);
    DWORD value = 123;
    BOOL mute = 45;
    LONG level = 67;
    EXPECT_FALSE(m_mixer.GetMasterVolume(value));
    EXPECT_FALSE(m_mixer.GetWaveMute(mute));
    EXPECT_FALSE(m_mixer.GetPeakLevel(level));
    EXPECT_FALSE(m_mixer.SetWaveVolume(1));
    EXPECT_FALSE(m_mixer.SetMasterMute(TRUE));
    EXPECT_EQ(value, 123U);
    EXPECT_EQ(mute, 45);
    EXPECT_EQ(level, 67);
    EXPECT_EQ(m_driver->Reads() + m_driver->Writes(), 5U) << "nothing is tried twice";
}

}  // namespace
