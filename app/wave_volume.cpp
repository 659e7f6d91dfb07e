// SPDX-License-Identifier: MIT
#include "app/wave_volume.h"

#include "app/play_commands.h"

BOOL CWaveVolume::Open() {
    if (m_mixer.HasWaveVolume()) return TRUE;
    if (!m_mixer.Open(0) || !m_mixer.FindWaveVolume()) return FALSE;
    m_mixer.FindWaveMute();
    return TRUE;
}

void CWaveVolume::Step(BOOL bLouder) {
    DWORD dwVolume = 0;
    if (!Open() || !m_mixer.GetWaveVolume(dwVolume)) return;
    m_mixer.SetWaveVolume(
        SteppedVolume(dwVolume, m_mixer.GetWaveVolumeMin(), m_mixer.GetWaveVolumeMax(), bLouder != FALSE));
}

void CWaveVolume::ToggleMute() {
    BOOL bMute = FALSE;
    if (Open() && m_mixer.GetWaveMute(bMute)) m_mixer.SetWaveMute(!bMute);
}

double CWaveVolume::Get() {
    DWORD dwVolume = 0;
    if (!Open() || !m_mixer.GetWaveVolume(dwVolume)) return 1;
    return VolumeShare(dwVolume, m_mixer.GetWaveVolumeMin(), m_mixer.GetWaveVolumeMax());
}

void CWaveVolume::Set(double fVolume) {
    if (Open())
        m_mixer.SetWaveVolume(VolumeOfShare(fVolume, m_mixer.GetWaveVolumeMin(), m_mixer.GetWaveVolumeMax()));
}
