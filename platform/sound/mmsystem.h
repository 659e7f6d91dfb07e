// SPDX-License-Identifier: MIT
// Wave output: plays blocks of 16-bit samples and reports each one when it has been heard.
//
// Threads: every function may be called on any thread; the calls on one handle are taken one after the
// other. Apart from waveOutOpen (at most about a second when a sound server does not answer) none of them
// waits for anything but a short lock.
//
// Ownership: from waveOutWrite until its done notification a block's header and samples belong to the
// output and must stay where they are.
//
// Notification: each block written has exactly one MM_WOM_DONE, posted to the window given to waveOutOpen
// with the handle in wParam and the header's address in lParam, in the order the blocks were written. A
// block is done when its last sample has been heard, or when waveOutReset hands it back. A few of the last
// notifications may still be posted by another thread just after waveOutReset or waveOutClose has returned;
// the handle in wParam tells them from a later output's, since no handle is ever given out twice.
//
// Differences from the framework's system: handles are counted numbers and are never reused; WAVEHDR is 48
// bytes long here (32 there, with 32-bit pointers); an output plays PCM, 16 bits, one channel only; its
// notifications go to a window or nowhere; loops are not supported; a header is prepared for one handle and
// counts as unprepared for every other; at most WAVEOUT_MAX_BLOCKS blocks are queued.
#pragma once

#include "platform/framework/wintypes.h"

using MMRESULT = UINT;
using HWAVEOUT = struct HWAVEOUT_*;

inline constexpr MMRESULT MMSYSERR_NOERROR = 0;
inline constexpr MMRESULT MMSYSERR_ERROR = 1;
inline constexpr MMRESULT MMSYSERR_BADDEVICEID = 2;
inline constexpr MMRESULT MMSYSERR_ALLOCATED = 4;
inline constexpr MMRESULT MMSYSERR_INVALHANDLE = 5;
inline constexpr MMRESULT MMSYSERR_NODRIVER = 6;
inline constexpr MMRESULT MMSYSERR_NOMEM = 7;
inline constexpr MMRESULT MMSYSERR_NOTSUPPORTED = 8;
inline constexpr MMRESULT MMSYSERR_INVALFLAG = 10;
inline constexpr MMRESULT MMSYSERR_INVALPARAM = 11;
inline constexpr MMRESULT WAVERR_BADFORMAT = 32;
inline constexpr MMRESULT WAVERR_STILLPLAYING = 33;
inline constexpr MMRESULT WAVERR_UNPREPARED = 34;

inline constexpr UINT WAVE_MAPPER = 0xFFFFFFFFU;  // the default output
inline constexpr WORD WAVE_FORMAT_PCM = 1;

inline constexpr DWORD CALLBACK_NULL = 0x00000000U;
inline constexpr DWORD CALLBACK_WINDOW = 0x00010000U;

inline constexpr UINT MM_WOM_DONE = 0x3BD;

// An addition: something outside asks for silence, or for sound again. The output itself changes nothing;
// whoever plays is to answer with waveOutPause or waveOutReset. Posted like MM_WOM_DONE, with one of these in
// lParam.
inline constexpr UINT MM_WOM_INTERRUPT = 0x3DF;
inline constexpr DWORD WOM_CALL_BEGINS =
    1;                                     // a call begins elsewhere, and the server asks others to be silent
inline constexpr DWORD WOM_CALL_ENDS = 2;  // those asked so may sound again
inline constexpr DWORD WOM_UNPLUGGED =
    3;  // the headphones or the device that played is gone; others now hear

// WAVEHDR::dwFlags, kept by the functions below.
inline constexpr DWORD WHDR_DONE = 0x00000001U;      // handed back
inline constexpr DWORD WHDR_PREPARED = 0x00000002U;  // prepared for the handle in `reserved`
inline constexpr DWORD WHDR_INQUEUE = 0x00000010U;   // written and not yet handed back

// The most blocks that one output holds, those whose notification is not posted yet included.
inline constexpr unsigned WAVEOUT_MAX_BLOCKS = 512;

struct WAVEFORMATEX {
    WORD wFormatTag;        // WAVE_FORMAT_PCM
    WORD nChannels;         // 1
    DWORD nSamplesPerSec;   // 1000 to 192000
    DWORD nAvgBytesPerSec;  // nSamplesPerSec * nBlockAlign
    WORD nBlockAlign;       // 2
    WORD wBitsPerSample;    // 16
    WORD cbSize;            // 0
};

struct WAVEHDR {
    char* lpData;          // signed 16-bit samples, native byte order
    DWORD dwBufferLength;  // bytes, even, more than 0
    DWORD dwBytesRecorded;
    DWORD_PTR dwUser;  // the caller's own
    DWORD dwFlags;     // WHDR_…; 0 before the first waveOutPrepareHeader
    DWORD dwLoops;
    WAVEHDR* lpNext;
    DWORD_PTR reserved;  // the output's own
};

// Opens the default output; it is running, with nothing queued. uDeviceID is 0 or WAVE_MAPPER; dwCallback is
// the window's HWND with CALLBACK_WINDOW in fdwOpen, ignored with CALLBACK_NULL.
// MMSYSERR_BADDEVICEID, MMSYSERR_INVALFLAG, MMSYSERR_INVALPARAM (a null pointer),
// WAVERR_BADFORMAT, MMSYSERR_NODRIVER (no sound system, or it does not answer), MMSYSERR_ALLOCATED (it
// refuses). *phwo is written on success only.
MMRESULT waveOutOpen(HWAVEOUT* phwo, UINT uDeviceID, const WAVEFORMATEX* pwfx, DWORD_PTR dwCallback,
                     DWORD_PTR dwInstance, DWORD fdwOpen);

// Ends the output and its handle. WAVERR_STILLPLAYING while a block is queued: call waveOutReset first.
MMRESULT waveOutClose(HWAVEOUT hwo);

// Holds the sound; what is queued stays queued. Blocks written meanwhile collect.
MMRESULT waveOutPause(HWAVEOUT hwo);

// Lets a paused output sound again. On a running output it changes nothing.
MMRESULT waveOutRestart(HWAVEOUT hwo);

// Silences the output and hands back every queued block, each with its notification. Afterwards the output
// is running and empty: the next block written sounds at once unless waveOutPause comes first.
MMRESULT waveOutReset(HWAVEOUT hwo);

// Prepares a block for this handle. cbwh is sizeof(WAVEHDR). MMSYSERR_INVALPARAM (no samples, odd length),
// WAVERR_STILLPLAYING (queued). A block that is prepared already is left as it is.
MMRESULT waveOutPrepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, UINT cbwh);

// Undoes waveOutPrepareHeader. WAVERR_STILLPLAYING while the block is queued. A block that is not prepared
// is left as it is.
MMRESULT waveOutUnprepareHeader(HWAVEOUT hwo, WAVEHDR* pwh, UINT cbwh);

// Queues a prepared block behind those queued already. WAVERR_UNPREPARED, WAVERR_STILLPLAYING (queued
// already), MMSYSERR_NOMEM (WAVEOUT_MAX_BLOCKS are held). Nothing is allocated.
MMRESULT waveOutWrite(HWAVEOUT hwo, WAVEHDR* pwh, UINT cbwh);

// An addition: takes back the blocks that are still far enough from being played, newest first, so that
// others, which the caller writes at once, take their place. *puBlocks is how many blocks that were; they are
// the ones written last, are not queued any more and have no notification. What is kept is heard for about
// 150 ms more.
MMRESULT waveOutTakeBack(HWAVEOUT hwo, UINT* puBlocks);
