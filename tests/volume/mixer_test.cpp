// Mixer access, and the mixer functions under it, on a mixer that can lack things and refuse.
#include <gtest/gtest.h>

#include <bit>
#include <iterator>

#include "tests/support/simulated_sound.h"
#include "volume/mixer.h"

namespace {

class MixerAccess : public testing::Test, protected SimulatedSound {
protected:
    // One bit for each control that is found.
    unsigned FindAll() {
        const BOOL found[] = {m_access.FindMasterVolume(), m_access.FindMasterMute(),
                              m_access.FindWaveVolume(), m_access.FindWaveMute(),
                              m_access.FindWavePeakMeter()};
        return Bits(found);
    }

    // One bit for each value operation that succeeds: the five reads, then the four writes.
    unsigned UseAll() {
        const BOOL done[] = {m_access.GetMasterVolume(m_value), m_access.GetMasterMute(m_flag),
                             m_access.GetWaveVolume(m_value),   m_access.GetWaveMute(m_flag),
                             m_access.GetPeakLevel(m_level),    m_access.SetMasterVolume(1),
                             m_access.SetMasterMute(TRUE),      m_access.SetWaveVolume(1),
                             m_access.SetWaveMute(TRUE)};
        return Bits(done);
    }

    unsigned Reached() const { return m_mixer->Reads() + m_mixer->Writes(); }

    CMixer m_access{nullptr};
    DWORD m_value = 123;
    BOOL m_flag = 45;
    LONG m_level = 67;

private:
    template <std::size_t count>
    static unsigned Bits(const BOOL (&results)[count]) {
        unsigned bits = 0;
        for (unsigned i = 0; i < count; ++i) bits |= results[i] ? 1U << i : 0U;
        return bits;
    }
};

TEST_F(MixerAccess, OpensTheDevicesThatThereAreAndNamesThem) {
    CString name("untouched");
    EXPECT_FALSE(m_access.Open(1));
    EXPECT_FALSE(m_access.GetName(name));
    EXPECT_TRUE(name == "untouched");
    // Thirty-one characters, however many bytes they are.
    const std::string wide = "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x94\x8A 5678901234567890123456789012";
    for (const std::string& device : {std::string("Built-in"), wide, wide + "3"}) {
        m_mixer->SetName(device);
        EXPECT_TRUE(m_access.Open(0));
        EXPECT_TRUE(m_access.GetName(name));
        EXPECT_STREQ(name, device.substr(0, wide.size() - 1).c_str());
    }
    m_mixer->SetCount(0);
    EXPECT_EQ(m_access.GetNumDevs(), 0U);
    EXPECT_FALSE(m_access.Open(0));
    m_mixer->SetCount(1);
    m_mixer->SetResult(MMSYSERR_ERROR);
    EXPECT_FALSE(m_access.Open(0)) << "without a name";
}

TEST_F(MixerAccess, FindsWhatTheDeviceHasAndUsesNothingElse) {
    const struct {
        const char* name;
        unsigned missing, found, usable;
    } cases[] = {
        {"nothing missing", 0, 0b11111, 0b111111111},
        {"no master volume", 1U << kMasterVolume, 0b11110, 0b111011110},
        {"no master mute", 1U << kMasterMute, 0b11101, 0b110111101},
        {"no wave volume", 1U << kWaveVolume, 0b11011, 0b101111011},
        {"no wave mute", 1U << kWaveMute, 0b10111, 0b011110111},
        {"no meter", 1U << kWavePeak, 0b01111, 0b111101111},
        {"no wave output", 1U << kWaveVolume | 1U << kWaveMute | 1U << kWavePeak, 0b00011, 0b001100011},
        {"no speakers", 1U << kMasterVolume | 1U << kMasterMute, 0b01100, 0b110001100},
        {"wave output elsewhere", 1U, 0b01111, 0b111101111},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        m_mixer->SetMissing(test.missing);
        ASSERT_TRUE(m_access.Open(0));
        const unsigned before = Reached();
        EXPECT_EQ(UseAll(), 0U) << "nothing was looked for yet";
        EXPECT_EQ(FindAll(), test.found);
        EXPECT_EQ(Reached(), before);
        EXPECT_EQ(UseAll(), test.usable);
        EXPECT_EQ(Reached() - before, static_cast<unsigned>(std::popcount(test.usable)));
        m_access.Close();
        EXPECT_EQ(FindAll() | UseAll(), 0U);
    }
}

TEST_F(MixerAccess, ValuesGoToTheirControlsAndBackAndARefusalLeavesTheAnswerAlone) {
    ASSERT_TRUE(m_access.Open(0));
    ASSERT_EQ(FindAll(), 0b11111U);
    for (const DWORD top : {m_access.GetMasterVolumeMax(), m_access.GetWaveVolumeMax()})
        EXPECT_EQ(top, 65535U);
    EXPECT_EQ(m_access.GetPeakMin(), -32768);
    EXPECT_EQ(m_access.GetPeakMax(), 32767);

    EXPECT_TRUE(m_access.SetMasterVolume(11));
    EXPECT_TRUE(m_access.SetWaveVolume(65535));
    EXPECT_FALSE(m_access.SetWaveVolume(65536));
    EXPECT_EQ(m_mixer->Value(kMasterVolume), 11U);
    EXPECT_EQ(m_mixer->Value(kWaveVolume), 65535U);
    EXPECT_TRUE(m_access.SetMasterMute(5));
    EXPECT_EQ(m_mixer->Value(kMasterMute), 1U);
    m_mixer->Change(kWaveMute, 2);
    EXPECT_TRUE(m_access.GetWaveMute(m_flag));
    EXPECT_EQ(m_flag, TRUE);
    m_mixer->Change(kWavePeak, static_cast<DWORD>(-32768));
    EXPECT_TRUE(m_access.GetPeakLevel(m_level));
    EXPECT_EQ(m_level, -32768);

    m_mixer->SetResult(MMSYSERR_NODRIVER);
    const unsigned before = Reached();
    EXPECT_EQ(UseAll(), 0U);
    EXPECT_EQ(Reached() - before, 9U) << "nothing is tried twice";
    EXPECT_EQ(m_value, 123U);
    EXPECT_EQ(m_flag, TRUE);
    EXPECT_EQ(m_level, -32768);
}

}  // namespace
