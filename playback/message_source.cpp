// SPDX-License-Identifier: MIT
#include "playback/message_source.h"

#include <algorithm>

#include "audio/wave_device.h"
#include "codec/queue_limits.h"
#include "video/video_wnd.h"

namespace {

std::atomic<unsigned> g_nLastSerial = 0;

}  // namespace

MessageSource::MessageSource(std::FILE* pOpenFile, BYTE nRate, DWORD nCount)
    : nSerial(++g_nLastSerial), pFile(pOpenFile), nVideoRate(nRate), nFrameCount(nCount), index(nRate) {}

MessageSource::~MessageSource() {
    if (hSpeech != nullptr) gsm_destroy(hSpeech);
    std::fclose(pFile);
}

int64_t MessageSource::Length() const {
    const MessageExtent extent = index.Extent();
    return extent.end == MessageEnd::None ? std::max<int64_t>(nFrameCount, extent.length) : extent.length;
}

BOOL MessageOutputs::HaveRoom(CReaderGate::Need need) const {
    if (need.nPictures != 0 && pVideo->GetQueuedCount() + need.nPictures > kMaxQueuedPictures) return FALSE;
    if (need.nBlocks == 0) return TRUE;
    return bSound ? pWaveDevice->GetQueuedCount() + need.nBlocks <= kMaxQueuedBlocks
                  : noSound.HasRoom(need.nBlocks, RealTimePace::Clock::now());
}
