// The controls of the server's mixer device: their ids, and what the mixer's parts report.
#pragma once

#include <functional>

#include "platform/framework/wintypes.h"

inline constexpr DWORD kMasterVolumeId = 1;
inline constexpr DWORD kMasterMuteId = 2;
inline constexpr DWORD kWaveVolumeId = 3;
inline constexpr DWORD kWaveMuteId = 4;
inline constexpr DWORD kWavePeakId = 5;

// Called with the id of a control whose value has changed, with the lock held.
using ControlChanged = std::function<void(DWORD controlId)>;
