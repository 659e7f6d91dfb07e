// SPDX-License-Identifier: MIT
// The mixer: volume, mute and peak meter of the sound output, and news of every change to them.
//
// Device 0 is the default output of the sound system. Its destination line, the speakers, has a volume and a
// mute; its source line, the wave output, is what this program plays and has a volume, a mute and a peak
// meter. Volumes run from the bounds of their control up in steps that sound even; a value set reads back
// the same. The meter returns the loudest sample since it was last read, as a signed 16-bit sample.
//
// Threads: every function may be called on any thread. mixerGetNumDevs and mixerOpen wait up to a second for
// a sound server that does not answer; the others answer from what is known and never wait.
//
// Notification: every change of a volume or mute, whoever makes it, posts MM_MIXM_CONTROL_CHANGE to the
// window given to mixerOpen, with the handle in wParam and the control's id in lParam. When the default
// output changes, or a sound server comes back, its controls are announced that way too.
//
// Differences from the framework's system: handles are counted numbers and are never reused; an object is
// always named by its handle (MIXER_OBJECTF_HMIXER); only what is declared here can be asked for; a value
// stands for all channels alike; lines and controls have no names and lines no targets; MIXERLINECONTROLS and
// MIXERCONTROLDETAILS are 32 bytes long here (24 there, with 32-bit pointers) and MIXERCAPS 144 (48 there),
// as names are UTF-8 and its product name has room for MAXPNAMELEN - 1 characters of any length.
#pragma once

#include "platform/framework/wintypes.h"
#include "platform/sound/mmsystem.h"

using HMIXER = struct HMIXER_*;
using HMIXEROBJ = struct HMIXEROBJ_*;  // an HMIXER, cast

inline constexpr MMRESULT MIXERR_INVALLINE = 1024;
inline constexpr MMRESULT MIXERR_INVALCONTROL = 1025;
inline constexpr MMRESULT MIXERR_INVALVALUE = 1026;

inline constexpr UINT MM_MIXM_CONTROL_CHANGE = 0x3D1;

inline constexpr DWORD MIXER_OBJECTF_HMIXER = 0x80000000U;

inline constexpr DWORD MIXER_GETLINEINFOF_SOURCE = 0x00000001U;
inline constexpr DWORD MIXER_GETLINEINFOF_COMPONENTTYPE = 0x00000003U;
inline constexpr DWORD MIXER_GETLINECONTROLSF_ONEBYTYPE = 0x00000002U;
inline constexpr DWORD MIXER_GETCONTROLDETAILSF_VALUE = 0x00000000U;
inline constexpr DWORD MIXER_SETCONTROLDETAILSF_VALUE = 0x00000000U;

inline constexpr DWORD MIXERLINE_COMPONENTTYPE_DST_SPEAKERS = 0x00000004U;
inline constexpr DWORD MIXERLINE_COMPONENTTYPE_SRC_WAVEOUT = 0x00001008U;

inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_PEAKMETER = 0x10020001U;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_MUTE = 0x20010002U;
inline constexpr DWORD MIXERCONTROL_CONTROLTYPE_VOLUME = 0x50030001U;

inline constexpr DWORD MIXERCONTROL_CONTROLF_UNIFORM = 0x00000001U;

inline constexpr std::size_t MAXPNAMELEN = 32;
inline constexpr std::size_t MIXER_SHORT_NAME_CHARS = 16;
inline constexpr std::size_t MIXER_LONG_NAME_CHARS = 64;

// 144 bytes.
struct MIXERCAPS {
    WORD wMid;
    WORD wPid;
    UINT vDriverVersion;
    char szPname[4 * MAXPNAMELEN];  // the output's description, 31 characters of it at most
    DWORD fdwSupport;
    DWORD cDestinations;
};

// 168 bytes; dwUser is 32 bits wide to keep it so.
struct MIXERLINE {
    DWORD cbStruct;
    DWORD dwDestination;
    DWORD dwSource;
    DWORD dwLineID;
    DWORD fdwLine;
    DWORD dwUser;
    DWORD dwComponentType;
    DWORD cChannels;
    DWORD cConnections;  // sources of a destination
    DWORD cControls;
    char szShortName[MIXER_SHORT_NAME_CHARS];
    char szName[MIXER_LONG_NAME_CHARS];
    struct {
        DWORD dwType;
        DWORD dwDeviceID;
        WORD wMid;
        WORD wPid;
        UINT vDriverVersion;
        char szPname[MAXPNAMELEN];
    } Target;
};

// 148 bytes. The meter's bounds are signed, the others' unsigned.
struct MIXERCONTROL {
    DWORD cbStruct;
    DWORD dwControlID;
    DWORD dwControlType;
    DWORD fdwControl;
    DWORD cMultipleItems;
    char szShortName[MIXER_SHORT_NAME_CHARS];
    char szName[MIXER_LONG_NAME_CHARS];
    struct {
        union {
            LONG lMinimum;
            DWORD dwMinimum;
        };
        union {
            LONG lMaximum;
            DWORD dwMaximum;
        };
        DWORD dwReserved[4];
    } Bounds;
    struct {
        DWORD cSteps;
        DWORD dwReserved[5];
    } Metrics;
};

// 32 bytes.
struct MIXERLINECONTROLS {
    DWORD cbStruct;
    DWORD dwLineID;
    DWORD dwControlType;
    DWORD cControls;  // 1
    DWORD cbmxctrl;   // sizeof(MIXERCONTROL)
    MIXERCONTROL* pamxctrl;
};

// 32 bytes.
struct MIXERCONTROLDETAILS {
    DWORD cbStruct;
    DWORD dwControlID;
    DWORD cChannels;       // 1
    DWORD cMultipleItems;  // 0
    DWORD cbDetails;       // 4
    void* paDetails;       // a DWORD, or a LONG of the meter
};

// How many mixers there are: 1, or 0 without a sound system.
UINT mixerGetNumDevs();

// Opens a mixer. dwCallback is a window's HWND with CALLBACK_WINDOW in fdwOpen, ignored with CALLBACK_NULL.
// MMSYSERR_BADDEVICEID, MMSYSERR_INVALFLAG, MMSYSERR_INVALPARAM (a null pointer), MMSYSERR_NODRIVER. *phmx is
// written on success only.
MMRESULT mixerOpen(HMIXER* phmx, UINT uMxId, DWORD_PTR dwCallback, DWORD_PTR dwInstance, DWORD fdwOpen);

// Ends the handle and its notifications; one that another thread is posting may still follow.
MMRESULT mixerClose(HMIXER hmx);

// The mixer's description. uMxId is an open handle, cast; cbmxcaps is sizeof(MIXERCAPS).
// MMSYSERR_INVALHANDLE, MMSYSERR_INVALPARAM, MMSYSERR_NODRIVER (the sound system is gone), MMSYSERR_ERROR.
MMRESULT mixerGetDevCaps(UINT_PTR uMxId, MIXERCAPS* pmxcaps, UINT cbmxcaps);

// Finds a line: with MIXER_GETLINEINFOF_COMPONENTTYPE the first one of dwComponentType, sources following
// their destination; with MIXER_GETLINEINFOF_SOURCE the source dwSource of the destination dwDestination.
// MIXERR_INVALLINE when there is none; MMSYSERR_INVALHANDLE, MMSYSERR_INVALFLAG, MMSYSERR_INVALPARAM.
MMRESULT mixerGetLineInfo(HMIXEROBJ hmxobj, MIXERLINE* pmxl, DWORD fdwInfo);

// Finds the one control of a type on a line (MIXER_GETLINECONTROLSF_ONEBYTYPE). MIXERR_INVALLINE,
// MIXERR_INVALCONTROL; MMSYSERR_INVALHANDLE, MMSYSERR_INVALFLAG, MMSYSERR_INVALPARAM.
MMRESULT mixerGetLineControls(HMIXEROBJ hmxobj, MIXERLINECONTROLS* pmxlc, DWORD fdwControls);

// Reads or writes one 32-bit value. MIXERR_INVALCONTROL, MIXERR_INVALVALUE (out of the control's bounds),
// MMSYSERR_NODRIVER (the sound system is gone; a meter reads 0 then), MMSYSERR_NOTSUPPORTED (writing the
// meter), MMSYSERR_ERROR (refused); MMSYSERR_INVALHANDLE, MMSYSERR_INVALFLAG, MMSYSERR_INVALPARAM.
MMRESULT mixerGetControlDetails(HMIXEROBJ hmxobj, MIXERCONTROLDETAILS* pmxcd, DWORD fdwDetails);
MMRESULT mixerSetControlDetails(HMIXEROBJ hmxobj, MIXERCONTROLDETAILS* pmxcd, DWORD fdwDetails);
