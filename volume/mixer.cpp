// SPDX-License-Identifier: MIT
#include "volume/mixer.h"

CMixer::CMixer(CWnd* pNotifyWnd) : m_pNotifyWnd(pNotifyWnd) {}

CMixer::~CMixer() {
    Close();
}

UINT CMixer::GetNumDevs() {
    m_nDevices = mixerGetNumDevs();
    return m_nDevices;
}

BOOL CMixer::Open(UINT nDevice) {
    if (nDevice >= GetNumDevs()) return FALSE;
    Close();

    const HWND hNotify = m_pNotifyWnd == nullptr ? nullptr : m_pNotifyWnd->GetSafeHwnd();
    if (mixerOpen(&m_hMixer, nDevice, reinterpret_cast<DWORD_PTR>(hNotify), 0,
                  hNotify == nullptr ? CALLBACK_NULL : CALLBACK_WINDOW) != MMSYSERR_NOERROR) {
        m_hMixer = nullptr;
        return FALSE;
    }
    return ReadCaps();
}

BOOL CMixer::ReadCaps() {
    return mixerGetDevCaps(reinterpret_cast<UINT_PTR>(m_hMixer), &m_caps, sizeof(m_caps)) == MMSYSERR_NOERROR;
}

void CMixer::Close() {
    if (m_hMixer == nullptr) return;
    mixerClose(m_hMixer);
    m_hMixer = nullptr;
    m_caps = {};
    m_bMasterVolume = m_bMasterMute = m_bWaveVolume = m_bWaveMute = m_bPeakMeter = FALSE;
}

BOOL CMixer::GetName(CString& strName) {
    if (m_hMixer == nullptr) return FALSE;
    // The device is whichever output is the default one now; one that has gone leaves its name.
    ReadCaps();
    strName = m_caps.szPname;
    return TRUE;
}

BOOL CMixer::FindMasterVolume() {
    return FindControl(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_VOLUME);
}

BOOL CMixer::FindMasterMute() {
    return FindControl(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, MIXERCONTROL_CONTROLTYPE_MUTE);
}

BOOL CMixer::FindWaveVolume() {
    return FindControl(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, MIXERCONTROL_CONTROLTYPE_VOLUME);
}

BOOL CMixer::FindWaveMute() {
    return FindControl(MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT, MIXERCONTROL_CONTROLTYPE_MUTE);
}

BOOL CMixer::FindControl(DWORD dwComponentType, DWORD dwControlType) {
    MIXERLINE line{};
    MIXERCONTROL control{};
    if (!GetLine(dwComponentType, line)) return FALSE;
    if (!GetLineControl(line.dwLineID, dwControlType, control)) return FALSE;

    const bool bSpeakers = dwComponentType == MIXERLINE_COMPONENTTYPE_DST_SPEAKERS;
    if (!bSpeakers && dwComponentType != MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT) return FALSE;
    if (dwControlType == MIXERCONTROL_CONTROLTYPE_VOLUME) {
        (bSpeakers ? m_dwMasterVolumeId : m_dwWaveVolumeId) = control.dwControlID;
        (bSpeakers ? m_dwMasterVolumeMin : m_dwWaveVolumeMin) = control.Bounds.dwMinimum;
        (bSpeakers ? m_dwMasterVolumeMax : m_dwWaveVolumeMax) = control.Bounds.dwMaximum;
        (bSpeakers ? m_bMasterVolume : m_bWaveVolume) = TRUE;
        return TRUE;
    }
    if (dwControlType == MIXERCONTROL_CONTROLTYPE_MUTE) {
        (bSpeakers ? m_dwMasterMuteId : m_dwWaveMuteId) = control.dwControlID;
        (bSpeakers ? m_bMasterMute : m_bWaveMute) = TRUE;
        return TRUE;
    }
    return FALSE;
}

BOOL CMixer::FindWavePeakMeter() {
    MIXERLINE speakers{};
    if (!GetLine(MIXERLINE_COMPONENTTYPE_DST_SPEAKERS, speakers)) return FALSE;

    for (DWORD dwSource = 0; dwSource < speakers.cConnections; ++dwSource) {
        MIXERLINE line{};
        line.cbStruct = sizeof(line);
        line.dwDestination = speakers.dwDestination;
        line.dwSource = dwSource;
        if (mixerGetLineInfo(MixerObject(), &line, MIXER_GETLINEINFOF_SOURCE | MIXER_OBJECTF_HMIXER) !=
                MMSYSERR_NOERROR ||
            line.dwComponentType != MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT) {
            continue;
        }
        MIXERCONTROL control{};
        if (!GetLineControl(line.dwLineID, MIXERCONTROL_CONTROLTYPE_PEAKMETER, control)) return FALSE;
        m_dwPeakMeterId = control.dwControlID;
        m_lPeakMin = control.Bounds.lMinimum;
        m_lPeakMax = control.Bounds.lMaximum;
        m_bPeakMeter = TRUE;
        return TRUE;
    }
    return FALSE;
}

BOOL CMixer::GetMasterVolume(DWORD& dwValue) const {
    return m_bMasterVolume && GetControlValue(m_dwMasterVolumeId, dwValue);
}

BOOL CMixer::SetMasterVolume(DWORD dwValue) {
    return m_bMasterVolume && SetControlValue(m_dwMasterVolumeId, dwValue);
}

BOOL CMixer::GetMasterMute(BOOL& bMute) const {
    return m_bMasterMute && GetControlBool(m_dwMasterMuteId, bMute);
}

BOOL CMixer::SetMasterMute(BOOL bMute) {
    return m_bMasterMute && SetControlBool(m_dwMasterMuteId, bMute);
}

BOOL CMixer::GetWaveVolume(DWORD& dwValue) const {
    return m_bWaveVolume && GetControlValue(m_dwWaveVolumeId, dwValue);
}

BOOL CMixer::SetWaveVolume(DWORD dwValue) {
    return m_bWaveVolume && SetControlValue(m_dwWaveVolumeId, dwValue);
}

BOOL CMixer::GetWaveMute(BOOL& bMute) const {
    return m_bWaveMute && GetControlBool(m_dwWaveMuteId, bMute);
}

BOOL CMixer::SetWaveMute(BOOL bMute) {
    return m_bWaveMute && SetControlBool(m_dwWaveMuteId, bMute);
}

BOOL CMixer::GetPeakLevel(LONG& lLevel) const {
    DWORD dwValue = 0;
    if (!m_bPeakMeter || !GetControlValue(m_dwPeakMeterId, dwValue)) return FALSE;
    lLevel = static_cast<LONG>(dwValue);
    return TRUE;
}

HMIXEROBJ CMixer::MixerObject() const {
    return reinterpret_cast<HMIXEROBJ>(m_hMixer);
}

BOOL CMixer::GetLine(DWORD dwComponentType, MIXERLINE& line) const {
    if (m_hMixer == nullptr) return FALSE;
    line.cbStruct = sizeof(line);
    line.dwComponentType = dwComponentType;
    return mixerGetLineInfo(MixerObject(), &line, MIXER_GETLINEINFOF_COMPONENTTYPE | MIXER_OBJECTF_HMIXER) ==
           MMSYSERR_NOERROR;
}

BOOL CMixer::GetLineControl(DWORD dwLineId, DWORD dwControlType, MIXERCONTROL& control) const {
    MIXERLINECONTROLS controls{};
    controls.cbStruct = sizeof(controls);
    controls.dwLineID = dwLineId;
    controls.dwControlType = dwControlType;
    controls.cControls = 1;
    controls.cbmxctrl = sizeof(control);
    controls.pamxctrl = &control;
    return mixerGetLineControls(MixerObject(), &controls,
                                MIXER_GETLINECONTROLSF_ONEBYTYPE | MIXER_OBJECTF_HMIXER) == MMSYSERR_NOERROR;
}

namespace {

// One 32-bit value stands for all channels of the control.
MIXERCONTROLDETAILS OneValue(DWORD dwId, void* pValue) {
    MIXERCONTROLDETAILS details{};
    details.cbStruct = sizeof(details);
    details.dwControlID = dwId;
    details.cChannels = 1;
    details.cbDetails = sizeof(DWORD);
    details.paDetails = pValue;
    return details;
}

}  // namespace

BOOL CMixer::GetControlValue(DWORD dwId, DWORD& dwValue) const {
    DWORD dwRead = 0;
    MIXERCONTROLDETAILS details = OneValue(dwId, &dwRead);
    if (mixerGetControlDetails(MixerObject(), &details,
                               MIXER_GETCONTROLDETAILSF_VALUE | MIXER_OBJECTF_HMIXER) != MMSYSERR_NOERROR) {
        return FALSE;
    }
    dwValue = dwRead;
    return TRUE;
}

BOOL CMixer::SetControlValue(DWORD dwId, DWORD dwValue) {
    MIXERCONTROLDETAILS details = OneValue(dwId, &dwValue);
    return mixerSetControlDetails(MixerObject(), &details,
                                  MIXER_SETCONTROLDETAILSF_VALUE | MIXER_OBJECTF_HMIXER) == MMSYSERR_NOERROR;
}

BOOL CMixer::GetControlBool(DWORD dwId, BOOL& bValue) const {
    DWORD dwValue = 0;
    if (!GetControlValue(dwId, dwValue)) return FALSE;
    bValue = dwValue != 0 ? TRUE : FALSE;
    return TRUE;
}

BOOL CMixer::SetControlBool(DWORD dwId, BOOL bValue) {
    return SetControlValue(dwId, bValue ? 1U : 0U);
}
