// SPDX-License-Identifier: MIT
// The mixer of the sound system: two volumes, their mutes and a peak meter.
//
// UI thread only. Nothing here shows a message. Every operation that talks to the mixer gives FALSE while
// none is open, and so does a value operation on a control that has not been found.
#pragma once

#include "platform/framework/afxwin.h"
#include "platform/sound/mixer_functions.h"

class CMixer {
public:
    // Changes of any control, by any program, are posted to the window as MM_MIXM_CONTROL_CHANGE with the
    // control's id in lParam. Not owned; null for no notifications.
    explicit CMixer(CWnd* pNotifyWnd);
    virtual ~CMixer();
    CMixer(const CMixer&) = delete;
    CMixer& operator=(const CMixer&) = delete;

    // How many mixer devices there are.
    UINT GetNumDevs();
    // FALSE when there is no such device or it refuses.
    BOOL Open(UINT nDevice);
    void Close();
    // The device's product name, as it is now.
    BOOL GetName(CString& strName);

    // Each looks its control up and keeps id and bounds; FALSE when the device does not have it.
    BOOL FindMasterVolume();
    BOOL FindMasterMute();
    BOOL FindWaveVolume();
    BOOL FindWaveMute();
    // The meter is looked for among the sources that feed the speakers.
    BOOL FindWavePeakMeter();
    // The lookup behind the first four: the first line of the component type, its control of the given type.
    BOOL FindControl(DWORD dwComponentType, DWORD dwControlType);

    // Whether a Find has succeeded since the device was opened.
    BOOL HasMasterVolume() const { return m_bMasterVolume; }
    BOOL HasMasterMute() const { return m_bMasterMute; }
    BOOL HasWaveVolume() const { return m_bWaveVolume; }
    BOOL HasWaveMute() const { return m_bWaveMute; }

    DWORD GetMasterVolumeId() const { return m_dwMasterVolumeId; }
    DWORD GetMasterVolumeMin() const { return m_dwMasterVolumeMin; }
    DWORD GetMasterVolumeMax() const { return m_dwMasterVolumeMax; }
    DWORD GetMasterMuteId() const { return m_dwMasterMuteId; }
    DWORD GetWaveVolumeId() const { return m_dwWaveVolumeId; }
    DWORD GetWaveVolumeMin() const { return m_dwWaveVolumeMin; }
    DWORD GetWaveVolumeMax() const { return m_dwWaveVolumeMax; }
    DWORD GetWaveMuteId() const { return m_dwWaveMuteId; }
    LONG GetPeakMin() const { return m_lPeakMin; }
    LONG GetPeakMax() const { return m_lPeakMax; }

    // A refused read leaves the argument alone. Volumes run from Min to Max.
    BOOL GetMasterVolume(DWORD& dwValue) const;
    BOOL SetMasterVolume(DWORD dwValue);
    BOOL GetMasterMute(BOOL& bMute) const;
    BOOL SetMasterMute(BOOL bMute);
    BOOL GetWaveVolume(DWORD& dwValue) const;
    BOOL SetWaveVolume(DWORD dwValue);
    BOOL GetWaveMute(BOOL& bMute) const;
    BOOL SetWaveMute(BOOL bMute);
    // The meter's reading now, between GetPeakMin and GetPeakMax.
    BOOL GetPeakLevel(LONG& lLevel) const;

private:
    BOOL ReadCaps();
    HMIXEROBJ MixerObject() const;
    BOOL GetLine(DWORD dwComponentType, MIXERLINE& line) const;
    BOOL GetLineControl(DWORD dwLineId, DWORD dwControlType, MIXERCONTROL& control) const;
    BOOL GetControlValue(DWORD dwId, DWORD& dwValue) const;
    BOOL SetControlValue(DWORD dwId, DWORD dwValue);
    BOOL GetControlBool(DWORD dwId, BOOL& bValue) const;
    BOOL SetControlBool(DWORD dwId, BOOL bValue);

    CWnd* m_pNotifyWnd;
    UINT m_nDevices = 0;
    HMIXER m_hMixer = nullptr;
    MIXERCAPS m_caps{};
    DWORD m_dwMasterVolumeId = 0;
    DWORD m_dwMasterVolumeMin = 0;
    DWORD m_dwMasterVolumeMax = 0;
    DWORD m_dwMasterMuteId = 0;
    DWORD m_dwWaveVolumeId = 0;
    DWORD m_dwWaveVolumeMin = 0;
    DWORD m_dwWaveVolumeMax = 0;
    DWORD m_dwPeakMeterId = 0;
    DWORD m_dwWaveMuteId = 0;
    LONG m_lPeakMin = 0;
    LONG m_lPeakMax = 0;
    // Found on the open device. An id alone does not tell: 0 can be a control of the device.
    BOOL m_bMasterVolume = FALSE;
    BOOL m_bMasterMute = FALSE;
    BOOL m_bWaveVolume = FALSE;
    BOOL m_bWaveMute = FALSE;
    BOOL m_bPeakMeter = FALSE;
};
