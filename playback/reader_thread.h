// The reader thread: reads a message's records in file order and turns them into sound and pictures.
#pragma once

#include <gsm/gsm.h>

#include <cstdio>

#include "audio/wave_device.h"
#include "codec/message_reader.h"
#include "codec/queue_limits.h"
#include "controls/waveform_wnd.h"
#include "platform/framework/afxmt.h"
#include "playback/reader_gate.h"
#include "video/video_wnd.h"

// Posted by the reader thread to the message panel when it has met the end of the message. It only asks the
// panel to look at how things stand, so one that comes late does no harm.
inline constexpr UINT WM_READER_ENDED = WM_USER + 202;

static_assert(CWaveDevice::kBlocks == kSoundBlockSlots);

// What the panel hands to the thread; it outlives the thread. The thread uses everything but pGate and the
// queues' counts only while the gate lets it.
struct ReaderParams {
    CWnd* pPanel = nullptr;             // gets WM_READER_ENDED
    CWaveformWnd* pWaveform = nullptr;  // null: no level values are wanted
    CWaveDevice* pWaveDevice = nullptr;
    gsm hSpeech = nullptr;  // decoder state of this message
    CVideoWnd* pVideo = nullptr;
    std::FILE** ppFile = nullptr;      // the panel's stream
    MessageReader* pReader = nullptr;  // at the stream's position
    CReaderGate* pGate = nullptr;
};

// The thread's procedure; takes its ReaderParams and gives 0. It reads ahead as far as the queues allow, and
// what plays them sets the pace. At the end of the message it tells the device, clears the run flag and posts
// WM_READER_ENDED; when the flag is set again it reads on from where the message then stands. It ends through
// CReaderGate::End. Its buffers are made once, when it starts.
UINT ReaderThreadProc(LPVOID pParams);
