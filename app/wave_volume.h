// SPDX-License-Identifier: MIT
// The player's own volume, as keys and other programs change it.
#pragma once

#include "volume/mixer.h"

// UI thread only. The mixer is opened when something is first asked for; the volume dialog has its own and
// follows. Without a mixer nothing is changed.
class CWaveVolume {
public:
    // Once the mixer is open, changes by any program are posted to the window as MM_MIXM_CONTROL_CHANGE.
    explicit CWaveVolume(CWnd* pNotifyWnd) : m_mixer(pNotifyWnd) {}

    // By a twentieth of the range.
    void Step(BOOL bLouder);
    void ToggleMute();
    // Of 1; 1 without a mixer.
    double Get();
    void Set(double fVolume);

private:
    BOOL Open();
    CMixer m_mixer;
};
