// SPDX-License-Identifier: MIT
// Saves a message on a thread of its own, and shows how far that is.
#pragma once

#include <atomic>
#include <string>

#include "platform/framework/afxcmn.h"
#include "platform/framework/afxwin.h"

// Posted to the dialog's parent when the saving has ended: done, failed or cancelled.
inline constexpr UINT WM_SAVING_ENDED = WM_USER + 301;

// A modeless dialog beside the main window, which goes on playing. UI thread only. Deleting it cancels the
// saving and waits for its end; nothing is left of a file that is not whole.
class CSavingDlg : public CDialog {
public:
    explicit CSavingDlg(CWnd* pParent);
    ~CSavingDlg() override;

    // Starts saving the message as what the path's ending says, replacing a file of that name. FALSE when
    // there is no such form, or no thread. Once only.
    BOOL Start(const CString& strMessage, const CString& strPath);
    // After WM_SAVING_ENDED: why it failed; empty when it did not, or was cancelled.
    CString GetFailure() const { return CString(m_failure); }

protected:
    DECLARE_MESSAGE_MAP()
    void DoDataExchange(CDataExchange* pDX) override;
    BOOL OnInitDialog() override;
    void OnOK() override {}
    void OnCancel() override;
    afx_msg void OnTimer(UINT_PTR nIDEvent);

private:
    static UINT SavingThreadProc(LPVOID pParam);
    void Save();
    void ShowState();

    HWND m_hParent;
    CStatic m_state;
    CWinThread* m_pThread = nullptr;
    std::string m_message;
    std::string m_path;
    std::string m_failure;  // the thread's, until it has ended
    std::atomic<int> m_nPercent = 0;
    std::atomic<bool> m_bCancelled = false;
};
