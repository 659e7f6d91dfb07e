// The mixer functions on the simulated mixer: look-ups, results, notifications.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

#include "platform/sound/mixer.h"
#include "platform/sound/simulated_mixer_driver.h"
#include "tests/platform/sound/mixer_calls.h"

namespace {

using Driver = SimulatedMixerDriver;

constexpr DWORD kSpeakers = MIXERLINE_COMPONENTTYPE_DST_SPEAKERS;
constexpr DWORD kWaveOut = MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT;
constexpr DWORD kVolume = MIXERCONTROL_CONTROLTYPE_VOLUME;
constexpr DWORD kPeak = MIXERCONTROL_CONTROLTYPE_PEAKMETER;

class MixerFunctions : public testing::Test {
protected:
    MixerFunctions() {
        SetMixerDriver(m_driver);
        TakePosted();
    }

    ~MixerFunctions() override {
        if (m_handle != nullptr) mixerClose(m_handle);
        EXPECT_EQ(m_driver->OpenMixers(), 0U);
        SetMixerDriver(nullptr);
    }

    void Open() { ASSERT_EQ(OpenMixer0(m_handle), MMSYSERR_NOERROR); }

    std::shared_ptr<Driver> m_driver = std::make_shared<Driver>();
    HMIXER m_handle = nullptr;
};

TEST_F(MixerFunctions, LinesAndControlsAreFoundOrSaidToBeMissing) {
    Open();
    MIXERLINE speakers;
    MIXERLINE source;
    MIXERCONTROL control;
    ASSERT_EQ(FindLine(m_handle, kSpeakers, speakers), MMSYSERR_NOERROR);
    EXPECT_EQ(speakers.cConnections, 1U);
    ASSERT_EQ(FindSource(m_handle, speakers.dwDestination, 0, source), MMSYSERR_NOERROR);
    EXPECT_EQ(source.dwComponentType, kWaveOut);
    EXPECT_EQ(FindSource(m_handle, speakers.dwDestination, 1, source), MIXERR_INVALLINE);
    EXPECT_EQ(FindSource(m_handle, 1, 0, source), MIXERR_INVALLINE);
    EXPECT_EQ(FindControl(m_handle, speakers.dwLineID, kPeak, control), MIXERR_INVALCONTROL);
    EXPECT_EQ(FindControl(m_handle, 77, kVolume, control), MIXERR_INVALLINE);
    EXPECT_EQ(FindLine(m_handle, 0x1003, source), MIXERR_INVALLINE);
    mixerClose(m_handle);

    m_driver->DisconnectWaveFromSpeakers();
    m_driver->RemoveControl(Driver::kMasterMute);
    Open();
    ASSERT_EQ(FindLine(m_handle, kSpeakers, speakers), MMSYSERR_NOERROR);
    EXPECT_EQ(speakers.cConnections, 0U);
    ASSERT_EQ(FindLine(m_handle, kWaveOut, source), MMSYSERR_NOERROR) << "still there, elsewhere";
    EXPECT_EQ(FindControl(m_handle, source.dwLineID, kVolume, control), MMSYSERR_NOERROR);
    DWORD value = 9;
    EXPECT_EQ(GetValue(m_handle, Driver::kMasterMute, value), MIXERR_INVALCONTROL);
    EXPECT_EQ(m_driver->Reads(), 0U) << "a control that is not there reaches the mixer";
    mixerClose(m_handle);
    m_handle = nullptr;

    m_driver->SetCount(0);
    EXPECT_EQ(OpenMixer0(m_handle), MMSYSERR_BADDEVICEID);
    SetMixerDriver(nullptr);
    EXPECT_EQ(mixerGetNumDevs(), 0U);
    EXPECT_EQ(OpenMixer0(m_handle), MMSYSERR_NODRIVER);
    EXPECT_EQ(m_handle, nullptr);
}

TEST_F(MixerFunctions, ValuesAreReadWrittenRefusedAndAnnounced) {
    Open();
    DWORD value = 0;
    EXPECT_EQ(SetValue(m_handle, Driver::kWaveVolume, 65535), MMSYSERR_NOERROR);
    EXPECT_EQ(GetValue(m_handle, Driver::kWaveVolume, value), MMSYSERR_NOERROR);
    EXPECT_EQ(value, 65535U);
    m_driver->Change(Driver::kMasterMute, 1);
    const std::vector<PostedMessage> posted = TakePosted();
    ASSERT_EQ(posted.size(), 2U);
    EXPECT_EQ(posted[0].msg.message, MM_MIXM_CONTROL_CHANGE);
    EXPECT_EQ(posted[0].msg.wParam, reinterpret_cast<WPARAM>(m_handle));
    EXPECT_EQ(posted[0].msg.lParam, static_cast<LPARAM>(Driver::kWaveVolume));
    EXPECT_EQ(posted[1].msg.lParam, static_cast<LPARAM>(Driver::kMasterMute));

    EXPECT_EQ(SetValue(m_handle, Driver::kWaveVolume, 65536), MIXERR_INVALVALUE);
    EXPECT_EQ(SetValue(m_handle, Driver::kWaveMute, 2), MIXERR_INVALVALUE);
    EXPECT_EQ(SetValue(m_handle, Driver::kWavePeak, 1), MMSYSERR_NOTSUPPORTED);
    EXPECT_EQ(SetValue(m_handle, 0, 1), MIXERR_INVALCONTROL);
    m_driver->SetWriteResult(MMSYSERR_ERROR);
    EXPECT_EQ(SetValue(m_handle, Driver::kWaveVolume, 1), MMSYSERR_ERROR);
    EXPECT_TRUE(TakePosted().empty());
    m_driver->SetReadResult(MMSYSERR_ERROR);
    value = 4711;
    EXPECT_EQ(GetValue(m_handle, Driver::kWaveVolume, value), MMSYSERR_ERROR);
    EXPECT_EQ(value, 4711U) << "left alone";

    MIXERCONTROLDETAILS details{sizeof details, Driver::kWaveVolume, 2, 0, sizeof value, &value};
    const DWORD flags = MIXER_GETCONTROLDETAILSF_VALUE | MIXER_OBJECTF_HMIXER;
    EXPECT_EQ(mixerGetControlDetails(Object(m_handle), &details, flags), MMSYSERR_INVALPARAM) << "2 channels";
    details.cChannels = 1;
    EXPECT_EQ(mixerGetControlDetails(Object(m_handle), &details, 0), MMSYSERR_INVALFLAG);
}

TEST_F(MixerFunctions, NameIsCutToWholeCharactersAndClosedHandlesAreDead) {
    m_driver->SetName("Thirty bytes and two for the a\xC3\xA4");
    Open();
    MIXERCAPS caps;
    const auto number = reinterpret_cast<UINT_PTR>(m_handle);
    ASSERT_EQ(mixerGetDevCaps(number, &caps, sizeof caps), MMSYSERR_NOERROR);
    EXPECT_STREQ(caps.szPname, "Thirty bytes and two for the a");
    m_driver->SetNameResult(MMSYSERR_ERROR);
    EXPECT_EQ(mixerGetDevCaps(number, &caps, sizeof caps), MMSYSERR_ERROR);

    const HMIXER closed = m_handle;
    ASSERT_EQ(mixerClose(closed), MMSYSERR_NOERROR);
    m_driver->Change(Driver::kWaveVolume, 3);
    EXPECT_TRUE(TakePosted().empty());
    Open();
    EXPECT_NE(m_handle, closed);
    MIXERLINE line;
    MIXERCONTROL control;
    DWORD value = 0;
    EXPECT_EQ(mixerClose(closed), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(mixerGetDevCaps(number, &caps, sizeof caps), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(FindLine(closed, kSpeakers, line), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(FindControl(closed, 0, kVolume, control), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(GetValue(closed, Driver::kWaveVolume, value), MMSYSERR_INVALHANDLE);
    EXPECT_EQ(SetValue(closed, Driver::kWaveVolume, value), MMSYSERR_INVALHANDLE);
}

}  // namespace
