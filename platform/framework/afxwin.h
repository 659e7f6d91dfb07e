// SPDX-License-Identifier: MIT
// Windows, dialogs and the application object in the framework's shape.
//
// Unless a comment says otherwise, everything here belongs to the UI thread. A window object that wraps no
// window (m_hWnd null, or destroyed) does nothing when it is asked to do something.
#pragma once

#include <vector>

#include "platform/framework/afxgdi.h"
#include "platform/framework/afxmsg.h"
#include "platform/framework/afxmt.h"
#include "platform/framework/afxstr.h"
#include "platform/framework/message_queue.h"

class AccessibleValue;
class CDataExchange;

// Registers a window class and returns its name: how its windows erase (background: null for not
// at all) and whether they repaint when their size changes. The name lives until the program ends.
// Differences from the framework: the class cursor is always the arrow, a class has no icon.
LPCTSTR AfxRegisterWndClass(UINT classStyle, const CBrush* background = nullptr);

class CWnd {
public:
    CWnd() = default;
    // Destroys the window if it still exists.
    virtual ~CWnd();
    CWnd(const CWnd&) = delete;
    CWnd& operator=(const CWnd&) = delete;

    HWND m_hWnd = nullptr;
    HWND GetSafeHwnd() const { return m_hWnd; }
    // The object that wraps the window, null for none.
    static CWnd* FromHandle(HWND hWnd);

    // Creates a window of a registered class; FALSE without a parent. The rectangle is the outer one, in the
    // parent's client coordinates. Only WS_CHILD windows are created this way (dialogs create the others),
    // with WS_VISIBLE, WS_BORDER and an edge if wanted; another style or class ends the program with a
    // message.
    BOOL CreateEx(DWORD exStyle, LPCTSTR className, LPCTSTR title, DWORD style, const RECT& rect,
                  CWnd* parent, UINT id);
    // Wraps a window that exists, so that its messages come here first. FALSE when it is wrapped already.
    BOOL SubclassWindow(HWND hWnd);
    // Destroys the window: WM_DESTROY to it and then to its children, then, children first, WM_NCDESTROY,
    // which unwraps each and calls PostNcDestroy.
    virtual BOOL DestroyWindow();

    BOOL ShowWindow(int cmdShow);
    BOOL IsWindowVisible() const;
    // A top-level window that is minimised.
    BOOL IsIconic() const;
    BOOL EnableWindow(BOOL enable = TRUE);
    BOOL IsWindowEnabled() const;
    void MoveWindow(const RECT* rect, BOOL repaint = TRUE);
    // Centres the window in its parent's client area (a top-level window: on its screen).
    void CenterWindow();
    void GetClientRect(RECT* rect) const;
    void ClientToScreen(POINT* point) const;
    void ScreenToClient(POINT* point) const;
    void SetWindowText(LPCTSTR text);
    void GetWindowText(CString& text) const;
    DWORD GetStyle() const;
    CWnd* GetParent() const;
    CWnd* GetOwner() const;
    // Null for a control that no object wraps; there are no temporary objects.
    CWnd* GetDlgItem(int id) const;
    CWnd* SetFocus();
    static CWnd* GetFocus();
    // The application's active top-level window, null while another program's is active.
    static CWnd* GetActiveWindow();
    static CWnd* WindowFromPoint(POINT screen);
    // Difference from the framework: the pointer is not taken from other programs. While a window has the
    // capture it receives every mouse message of the application, and one WM_MOUSEMOVE with a position
    // outside when the pointer leaves it.
    CWnd* SetCapture();
    static CWnd* GetCapture();

    // Marks the client area, or a part of it, for painting.
    void Invalidate(BOOL erase = TRUE);
    void InvalidateRect(const RECT* rect, BOOL erase = TRUE);
    // flags: RDW_INVALIDATE, RDW_ERASE, RDW_UPDATENOW; another ends the program with a message.
    BOOL RedrawWindow(const RECT* rect, UINT flags);
    // Paints now what is marked.
    void UpdateWindow();

    // Any thread; see message_queue.h.
    BOOL PostMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return ::PostMessage(m_hWnd, message, wParam, lParam);
    }
    LRESULT SendMessage(UINT message, WPARAM wParam = 0, LPARAM lParam = 0) const {
        return ::SendMessage(m_hWnd, message, wParam, lParam);
    }
    // A periodic timer: WM_TIMER with the id every so many milliseconds until KillTimer or destruction.
    UINT_PTR SetTimer(UINT_PTR id, UINT milliseconds);
    BOOL KillTimer(UINT_PTR id);
    HICON SetIcon(HICON icon, BOOL bigIcon);
    // Addition to the framework: shows a keyboard short cut beside the window's menu command and lets it
    // work, in the toolkit's portable notation ("Ctrl+O", "Media Play"); several are separated by "; ". The
    // first is the one shown.
    void SetCommandShortcut(UINT commandId, LPCTSTR shortcuts);
    // Addition to the framework: what assistive programs call the window.
    void SetAccessibleName(LPCTSTR name);
    // Addition to the framework: the value that assistive programs read and set; null for a window without.
    virtual AccessibleValue* GetAccessibleValue() { return nullptr; }
    // Tells them that it has changed.
    void AnnounceValue();
    // Addition to the framework: shows a child window alone on the whole screen, in place of its top-level
    // window's contents, as large as it fits and black around it; or in its place again. The keyboard stays
    // the top-level window's.
    void ShowFullScreen(BOOL full);
    // Lets files be dropped on the window (WM_DROPFILES).
    void DragAcceptFiles(BOOL accept = TRUE);
    // A modal message box over this window; type MB_OK or MB_ICONERROR, another ends the program with a
    // message. Gives IDOK. The window may be destroyed while the box is up; the box then closes.
    int MessageBox(LPCTSTR text, LPCTSTR caption, UINT type);
    // Moves values between a dialog's controls and members through DoDataExchange.
    BOOL UpdateData(BOOL saveAndValidate = TRUE);

    // Called for each posted or input message of a window on the way to it; TRUE keeps the message.
    virtual BOOL PreTranslateMessage(MSG* message);
    virtual LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam);
    // What the window's class does with the message.
    virtual LRESULT DefWindowProc(UINT message, WPARAM wParam, LPARAM lParam);

protected:
    friend class CDataExchange;
    static const AFX_MSGMAP* GetThisMessageMap();
    virtual const AFX_MSGMAP* GetMessageMap() const { return GetThisMessageMap(); }
    // Hands the message that is being handled on to DefWindowProc.
    LRESULT Default();
    virtual void DoDataExchange(CDataExchange*) {}
    virtual void PreSubclassWindow() {}
    // The window is gone; the last call to the object about it.
    virtual void PostNcDestroy() {}

    // Defaults of the mapped messages: each is Default().
    afx_msg void OnPaint() { Default(); }
    afx_msg void OnClose() { Default(); }
    afx_msg void OnDestroy() { Default(); }
    afx_msg void OnSize(UINT, int, int) { Default(); }
    afx_msg void OnTimer(UINT_PTR) { Default(); }
    afx_msg void OnVScroll(UINT, UINT, CScrollBar*) { Default(); }
    afx_msg void OnSysCommand(UINT, LPARAM) { Default(); }
    afx_msg void OnMouseMove(UINT, CPoint) { Default(); }
    afx_msg void OnLButtonDown(UINT, CPoint) { Default(); }
    afx_msg void OnLButtonUp(UINT, CPoint) { Default(); }
    afx_msg void OnLButtonDblClk(UINT, CPoint) { Default(); }
    // FALSE lets the parent have it.
    afx_msg BOOL OnMouseWheel(UINT, short, CPoint) { return static_cast<BOOL>(Default()); }
    afx_msg void OnKeyDown(UINT, UINT, UINT) { Default(); }
    afx_msg void OnCaptureChanged(CWnd*) { Default(); }
    afx_msg void OnSetFocus(CWnd*) { Default(); }
    afx_msg void OnKillFocus(CWnd*) { Default(); }
    afx_msg BOOL OnSetCursor(CWnd*, UINT, UINT) { return static_cast<BOOL>(Default()); }
    afx_msg void OnDropFiles(HDROP) { Default(); }

private:
    bool Dispatch(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result);
};

// Whether VK_SHIFT or VK_CONTROL is held: negative if so. Other keys end the program with a message.
short GetKeyState(int key);

// Ends the capture, if a window of the application has it (WM_CAPTURECHANGED notifies it).
BOOL ReleaseCapture();

// How many files were dropped, and the path of one. Differences from the framework: two functions for its
// one, and nothing is to be released.
UINT DragQueryFileCount(HDROP drop);
CString DragQueryFile(HDROP drop, UINT index);

// Moves a dialog's data; here it only binds controls to members.
class CDataExchange {
public:
    CDataExchange(CWnd* dialog, BOOL saveAndValidate)
        : m_bSaveAndValidate(saveAndValidate), m_pDlgWnd(dialog) {}
    BOOL m_bSaveAndValidate;
    CWnd* m_pDlgWnd;
};

// Wraps the dialog's control by the member, once. A control that the dialog does not have is a fault of the
// program: it ends with a message.
void DDX_Control(CDataExchange* dx, int id, CWnd& control);

class CDialog : public CWnd {
public:
    CDialog() = default;
    // For DoModal.
    explicit CDialog(UINT templateId, CWnd* parent = nullptr) : m_templateId(templateId), m_parent(parent) {}

    // Creates a modeless dialog from the program's resources: the controls, then WM_INITDIALOG
    // (OnInitDialog). A template that is not there, or that has a class or style that the layer does not
    // support, ends the program with a message.
    BOOL Create(UINT templateId, CWnd* parent = nullptr);
    // Shows the dialog and runs until EndDialog; returns its result, or IDCANCEL when its window goes first.
    int DoModal();
    void EndDialog(int result);

    virtual BOOL OnInitDialog();

protected:
    DECLARE_MESSAGE_MAP()
    virtual void OnOK() { EndDialog(IDOK); }
    virtual void OnCancel() { EndDialog(IDCANCEL); }

private:
    friend class CWnd;
    afx_msg void OnDialogOK() { OnOK(); }
    afx_msg void OnDialogCancel() { OnCancel(); }
    afx_msg LRESULT OnDialogInit(WPARAM, LPARAM);
    UINT m_templateId = 0;
    CWnd* m_parent = nullptr;
    bool m_modal = false;
    int m_result = IDCANCEL;
};

// What the command line says. Differences from the framework: every plain argument is a file to open, not the
// first alone; a word that begins with '-' is a switch and is skipped; a leading slash is a path.
class CCommandLineInfo {
public:
    std::vector<CString> m_fileNames;
};

// The application: exactly one object, created before the program's entry.
class CWinApp {
public:
    CWinApp();
    virtual ~CWinApp();
    CWinApp(const CWinApp&) = delete;
    CWinApp& operator=(const CWinApp&) = delete;

    // FALSE ends the program at once.
    virtual BOOL InitInstance() { return TRUE; }
    // Runs the message loop until the main window is destroyed.
    virtual int Run();
    virtual int ExitInstance() { return 0; }
    // Sees every posted or input message of the application's windows before it is delivered; the default
    // asks the window and its parents. TRUE keeps the message. Message boxes, the file dialog and open menus
    // are not asked.
    virtual BOOL PreTranslateMessage(MSG* message);
    void ParseCommandLine(CCommandLineInfo& info) const;
    // Nothing is stored; taken so that the program says whose settings they would be.
    void SetRegistryKey(LPCTSTR company) { m_registryKey = company; }
    void Enable3dControls() {}

    // The name of the program's desktop entry, by which the desktop knows its windows. Before the first
    // window.
    void SetAppID(LPCTSTR id);

    CWnd* m_pMainWnd = nullptr;  // when this window is destroyed, Run returns
    int m_nCmdShow = SW_SHOWNORMAL;
    CString m_strAppName;         // what assistive programs call the program; in place of m_pszAppName
    CString m_strExecutablePath;  // full path of the running program; in place of m_pszHelpFilePath

private:
    friend int AfxWinMain(int argc, char** argv);
    CString m_registryKey;
    int m_argc = 0;
    char** m_argv = nullptr;
};

// Addition to the framework: how large the contents of all windows are, in per cent of what the screen's
// scale gives them. UI thread.
void SetContentScale(int percent);

CWinApp* AfxGetApp();
CWnd* AfxGetMainWnd();

// The program's entry: prepares the toolkit, runs the application object, returns the exit code.
int AfxWinMain(int argc, char** argv);
