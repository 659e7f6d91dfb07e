// SPDX-License-Identifier: MIT
#include "playback/index_thread.h"

namespace {

UINT IndexThreadProc(LPVOID pParams) {
    const std::unique_ptr<std::shared_ptr<MessageSource>> pShared(
        static_cast<std::shared_ptr<MessageSource>*>(pParams));
    MessageSource& source = **pShared;
    const bool bBuilt = source.index.Build(fileno(source.pFile), source.stopIndexing.get_token());
    source.bIndexing = false;
    if (bBuilt) PostMessage(source.outputs.hPanel, WM_INDEX_BUILT, source.nSerial, 0);
    return 0;
}

}  // namespace

void StartIndexing(const std::shared_ptr<MessageSource>& pSource) {
    if (fileno(pSource->pFile) < 0 || pSource->bIndexing.exchange(true)) return;
    auto pForThread = std::make_unique<std::shared_ptr<MessageSource>>(pSource);
    if (AfxBeginThread(IndexThreadProc, pForThread.get()) == nullptr) {
        pSource->bIndexing = false;
    } else {
        pForThread.release();
    }
}
