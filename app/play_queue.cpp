// SPDX-License-Identifier: MIT
#include "app/play_queue.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>

#include "app/natural_order.h"

namespace {

namespace fs = std::filesystem;

constexpr LPCTSTR kExtension = ".trv";

CString Absolute(const CString& strPath) {
    std::error_code error;
    const fs::path path = fs::absolute(strPath.Str(), error);
    return error ? strPath : CString(path.native());
}

}  // namespace

BOOL CPlayQueue::IsMessage(const CString& strName) {
    CString strExtension = strName.Right(4);
    strExtension.MakeLower();
    return strExtension == kExtension;
}

std::vector<CString> CPlayQueue::MessagesAmong(const std::vector<CString>& files) {
    if (files.size() < 2) return files;
    std::vector<CString> messages;
    std::copy_if(files.begin(), files.end(), std::back_inserter(messages), IsMessage);
    if (messages.empty()) messages.push_back(files.front());
    return messages;
}

void CPlayQueue::Set(const std::vector<CString>& messages) {
    m_queue.clear();
    std::transform(messages.begin(), messages.end(), std::back_inserter(m_queue), Absolute);
    m_nAt = 0;
    SetCurrent(m_queue.empty() ? CString() : m_queue.front());
}

void CPlayQueue::SetCurrent(const CString& strPath) {
    m_strCurrent = strPath;
    if (!strPath.IsEmpty()) m_strFolder = CString(fs::path(strPath.Str()).parent_path().native());
}

BOOL CPlayQueue::MayGoNext() const {
    return m_queue.size() < 2 ? !m_strCurrent.IsEmpty() : m_nAt + 1 < m_queue.size();
}

BOOL CPlayQueue::MayGoPrevious() const {
    return m_queue.size() < 2 ? !m_strCurrent.IsEmpty() : m_nAt > 0;
}

CString CPlayQueue::Go(int nStep) {
    if (m_queue.size() < 2) {
        const CString strFound = Neighbour(nStep);
        if (!strFound.IsEmpty()) Set({strFound});
        return strFound;
    }
    if (nStep > 0 ? !MayGoNext() : !MayGoPrevious()) return {};
    m_nAt = nStep > 0 ? m_nAt + 1 : m_nAt - 1;
    SetCurrent(m_queue[m_nAt]);
    return m_strCurrent;
}

// The nearest of the folder's messages on that side of the current one, which itself need not be there any
// more.
CString CPlayQueue::Neighbour(int nStep) const {
    const fs::path current(m_strCurrent.Str());
    const std::string strName = current.filename().native();
    std::string strBest;
    std::error_code error;
    for (fs::directory_iterator it(current.parent_path(), error), end; !error && it != end;
         it.increment(error)) {
        const std::string strOther = it->path().filename().native();
        if (!IsMessage(CString(strOther))) continue;
        const bool bBeyond = nStep > 0 ? NaturalLess(strName, strOther) : NaturalLess(strOther, strName);
        const bool bNearer =
            strBest.empty() || (nStep > 0 ? NaturalLess(strOther, strBest) : NaturalLess(strBest, strOther));
        if (!bBeyond || !bNearer) continue;
        std::error_code unknown;
        if (it->is_regular_file(unknown)) strBest = strOther;
    }
    return strBest.empty() ? CString() : CString((current.parent_path() / strBest).native());
}
