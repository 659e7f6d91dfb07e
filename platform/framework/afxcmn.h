// SPDX-License-Identifier: MIT
// The dialogs' standard controls, tool tips and the file dialog.
#pragma once

#include "platform/framework/afxicon.h"
#include "platform/framework/afxwin.h"

class CStatic : public CWnd {};

struct DRAWITEMSTRUCT {
    UINT itemState;  // ODS_…
    CDC* dc;
    RECT rcItem;
};

class CButton : public CWnd {
public:
    // BM_GETCHECK and BM_SETCHECK of a check box.
    int GetCheck() const { return static_cast<int>(SendMessage(BM_GETCHECK)); }
    void SetCheck(int check) { SendMessage(BM_SETCHECK, static_cast<WPARAM>(check)); }
    // Paints an owner-drawn button. Difference from the framework: the context is a CDC, not a handle.
    virtual void DrawItem(DRAWITEMSTRUCT*) {}

protected:
    DECLARE_MESSAGE_MAP()
    afx_msg LRESULT OnReflectedDrawItem(WPARAM, LPARAM lParam);
};

class CSliderCtrl : public CWnd {
public:
    void SetRange(int minimum, int maximum, BOOL redraw = FALSE);
    void SetPos(int position) { SendMessage(TBM_SETPOS, 1, position); }
    int GetPos() const { return static_cast<int>(SendMessage(TBM_GETPOS)); }
};

// A tool tip for one window. Difference from the framework: one tool (id 1), whose messages the layer relays
// by itself once RelayEvent is called for them.
class CToolTipCtrl {
public:
    CToolTipCtrl() = default;
    ~CToolTipCtrl();
    CToolTipCtrl(const CToolTipCtrl&) = delete;
    CToolTipCtrl& operator=(const CToolTipCtrl&) = delete;
    BOOL Create(CWnd* parent);
    void DestroyToolTipCtrl();
    HWND GetSafeHwnd() const { return m_parent; }
    void SetDelayTime(UINT which, int milliseconds);
    void Activate(BOOL active);
    int GetToolCount() const { return m_hasTool ? 1 : 0; }
    BOOL AddTool(CWnd* window, LPCTSTR text, const RECT* rect, UINT_PTR id);
    // Shown when the pointer moves next, also in place of a text that is up.
    void UpdateTipText(LPCTSTR text, CWnd* window, UINT_PTR id);
    // Shows, moves and hides the tip as the mouse messages of its window ask.
    void RelayEvent(const MSG* message);

private:
    HWND m_parent = nullptr;
    CString m_text;
    CRect m_rect;
    bool m_hasTool = false;
    bool m_active = false;
    int m_initial = 500;
    int m_autoPop = 5000;
    int m_reshow = 100;
};

// The system's dialog for choosing a file.
class CFileDialog {
public:
    struct OPENFILENAME {
        DWORD Flags;  // of those, OFN_ALLOWMULTISELECT makes a difference
        LPCTSTR lpstrTitle;
        LPCTSTR lpstrInitialDir;  // "" for where the toolkit begins
    };
    // defaultExtension: only "", as a name without ending gets that of the pattern that is chosen; fileName:
    // "" for opening. Anything else ends the program with a message. filter: pairs of description and
    // pattern, each ended by '|', ended by one more. Before a file is replaced the dialog asks, flags or not.
    CFileDialog(BOOL openFile, LPCTSTR defaultExtension, LPCTSTR fileName, DWORD flags, LPCTSTR filter,
                CWnd* parent);
    // IDOK or IDCANCEL. The parent may be destroyed while the dialog is up; the dialog then closes
    // (IDCANCEL).
    int DoModal();
    CString GetPathName() const { return m_paths.empty() ? CString() : m_paths.front(); }
    // In place of GetStartPosition and GetNextPathName: all that were chosen.
    const std::vector<CString>& GetPathNames() const { return m_paths; }
    OPENFILENAME m_ofn;

private:
    BOOL m_openFile;
    CString m_fileName;
    CString m_filter;
    std::vector<CString> m_paths;
    CWnd* m_parent;
};
