// SPDX-License-Identifier: MIT
// Mixer access, and the mixer functions under it, on a mixer that can lack things and refuse.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/simulated_sound.h"
#include "volume/mixer.h"

namespace {

class MixerAccess : public testing::Test, protected SimulatedSound {
protected:
    CMixer m_access{nullptr};
    BOOL m_flag = 45;
    LONG m_level = 67;
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

TEST_F(MixerAccess, ValuesGoToTheirControlsAndBackAndARefusalLeavesTheAnswerAlone) {
    ASSERT_TRUE(m_access.Open(0));
    ASSERT_TRUE(m_access.FindMasterVolume());
    ASSERT_TRUE(m_access.FindMasterMute());
    ASSERT_TRUE(m_access.FindWaveVolume());
    ASSERT_TRUE(m_access.FindWaveMute());
    ASSERT_TRUE(m_access.FindWavePeakMeter());
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
    EXPECT_FALSE(m_access.SetMasterVolume(1));
    EXPECT_FALSE(m_access.GetWaveMute(m_flag));
    EXPECT_FALSE(m_access.GetPeakLevel(m_level));
    EXPECT_EQ(m_flag, TRUE);
    EXPECT_EQ(m_level, -32768);
}

}  // namespace
