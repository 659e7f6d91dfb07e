// SPDX-License-Identifier: MIT
#include "app/first_picture.h"

#include <cstdio>
#include <mutex>
#include <vector>

#include "codec/message_reader.h"
#include "codec/vdec.h"
#include "platform/shell/regular_file.h"
#include "platform/shell/runtime_picture.h"

namespace {

// A message whose first picture comes later than that has none.
constexpr int kMostRecords = 200;

// The first picture's bytes; none when there is none.
std::vector<uint8_t> DecodeFirst(std::FILE* pFile) {
    BYTE nRate = 0;
    DWORD nCount = 0;
    if (ReadMessageKind(pFile, nRate) != MessageHeaderError::None || nRate == 0 ||
        ReadMessageFrameCount(pFile, nCount) != MessageHeaderError::None) {
        return {};
    }
    const auto pReader = std::make_unique<MessageReader>();
    for (int i = 0; i < kMostRecords; ++i) {
        const MessageRecord record = pReader->Read(pFile);
        if (record.kind == MessageRecordKind::End) break;
        if (record.kind != MessageRecordKind::Video) continue;
        const std::unique_ptr<VdecDecoder, decltype(&vdec_destroy)> pDecoder(vdec_create(), vdec_destroy);
        if (pDecoder == nullptr) break;
        std::vector<uint8_t> picture(kPictureBytes);
        vdec_decode(*pDecoder, record.body.data(), record.body.size(), picture.data());
        return picture;
    }
    return {};
}

}  // namespace

struct CFirstPicture::Job {
    CString strPath;
    HWND hNotify = nullptr;

    std::mutex mutex;
    bool bUnwanted = false;
    bool bDone = false;
    std::unique_ptr<RuntimePicture> pPicture;
};

CFirstPicture::~CFirstPicture() {
    Drop();
}

void CFirstPicture::Want(const CString& strPath, HWND hNotify) {
    Drop();
    m_pJob = std::make_shared<Job>();
    m_pJob->strPath = strPath;
    m_pJob->hNotify = hNotify;
    auto pForThread = std::make_unique<std::shared_ptr<Job>>(m_pJob);
    if (AfxBeginThread(ThreadProc, pForThread.get()) == nullptr)
        m_pJob.reset();
    else
        pForThread.release();
}

void CFirstPicture::Drop() {
    if (m_pJob == nullptr) return;
    // The file is written under the lock: there is none afterwards.
    const std::scoped_lock lock(m_pJob->mutex);
    m_pJob->bUnwanted = true;
    m_pJob->pPicture.reset();
}

BOOL CFirstPicture::IsAwaited() const {
    if (m_pJob == nullptr) return FALSE;
    const std::scoped_lock lock(m_pJob->mutex);
    return !m_pJob->bUnwanted && !m_pJob->bDone;
}

std::string CFirstPicture::Path() const {
    if (m_pJob == nullptr) return {};
    const std::scoped_lock lock(m_pJob->mutex);
    return m_pJob->pPicture == nullptr ? std::string() : m_pJob->pPicture->Path();
}

UINT CFirstPicture::ThreadProc(LPVOID pParam) {
    const std::unique_ptr<std::shared_ptr<Job>> pOwner(static_cast<std::shared_ptr<Job>*>(pParam));
    Job& job = **pOwner;
    std::vector<uint8_t> picture;
    if (std::FILE* pFile = OpenRegularFile(job.strPath)) {
        picture = DecodeFirst(pFile);
        std::fclose(pFile);
    }
    const std::scoped_lock lock(job.mutex);
    if (job.bUnwanted) return 0;
    if (!picture.empty()) job.pPicture = WriteRuntimePicture(picture.data(), kPictureWidth, kPictureHeight);
    job.bDone = true;
    ::PostMessage(job.hNotify, WM_FIRST_PICTURE, 0, 0);
    return 0;
}
