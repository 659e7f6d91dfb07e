// SPDX-License-Identifier: MIT
// The first picture of a message as a file, for the desktop's media controls.
#pragma once

#include <memory>
#include <string>

#include "platform/framework/afxwin.h"

// Posted to the main window when the picture that was wanted is there, or is known not to come.
inline constexpr UINT WM_FIRST_PICTURE = WM_USER + 401;

// UI thread only. The picture is read and decoded on a thread of its own, which is never waited for; the file
// goes with the object and when another message's picture is wanted.
class CFirstPicture {
public:
    ~CFirstPicture();

    void Want(const CString& strPath, HWND hNotify);
    // Leaves none.
    void Drop();
    BOOL IsAwaited() const;
    // Empty for none.
    std::string Path() const;

private:
    struct Job;
    static UINT ThreadProc(LPVOID pParam);
    std::shared_ptr<Job> m_pJob;
};
