// SPDX-License-Identifier: MIT
// Dialogs from the compiled resources.
#include <algorithm>
#include <initializer_list>
#include <string>

#include "platform/framework/afxcmn.h"
#include "platform/framework/resources.h"
#include "platform/framework/unsupported.h"
#include "platform/framework/window.h"

namespace {

// Base units of the dialogs' face, fixed whatever font the desktop has, so that geometry is the same
// everywhere: an average character is 6 pixels wide and 13 high.
constexpr int kBaseUnitX = 6;
constexpr int kBaseUnitY = 13;

// Rounds to the nearest, as the framework does.
constexpr int FromUnitsX(int units) {
    return (units * kBaseUnitX + 2) / 4;
}
constexpr int FromUnitsY(int units) {
    return (units * kBaseUnitY + 4) / 8;
}

struct ControlClass {
    const char* name;
    Window::Kind kind;
    DWORD typeMask;  // the bits of the style that are its type
    DWORD styles;    // those that may be set beside WS_…
    std::initializer_list<DWORD> types;
};

const ControlClass& ClassOf(const resources::DialogItem& item) {
    static const ControlClass kClasses[] = {
        {"static",
         Window::Kind::kStatic,
         SS_TYPEMASK,
         SS_NOPREFIX | SS_CENTERIMAGE | SS_SUNKEN,
         {SS_LEFT, SS_CENTER, SS_RIGHT, SS_ICON, SS_BITMAP, SS_ETCHEDHORZ, SS_ETCHEDVERT}},
        {"button",
         Window::Kind::kButton,
         BS_TYPEMASK,
         BS_ICON,
         {BS_PUSHBUTTON, BS_DEFPUSHBUTTON, BS_AUTOCHECKBOX}},
        {"msctls_trackbar32", Window::Kind::kTrackbar, TBS_VERT | TBS_BOTH, 0, {TBS_VERT | TBS_BOTH}},
    };
    constexpr DWORD kCommon = WS_CHILD | WS_VISIBLE | WS_DISABLED | WS_BORDER | WS_GROUP | WS_TABSTOP;
    for (const ControlClass& c : kClasses) {
        if (item.className != c.name) continue;
        if ((item.style & ~(c.typeMask | c.styles | kCommon)) != 0 ||
            std::find(c.types.begin(), c.types.end(), item.style & c.typeMask) == c.types.end())
            Unsupported("style of a dialog's control", item.style);
        if ((item.exStyle & ~WS_EX_STATICEDGE) != 0)
            Unsupported("extended style of a dialog's control", item.exStyle);
        return c;
    }
    Unsupported("class of a dialog's control", item.className);
}

// The frame styles that the window manager carries out, and those that say what is the case anyhow.
void CheckDialog(const resources::Dialog& dialog) {
    constexpr DWORD kKnown = WS_POPUP | WS_CHILD | WS_VISIBLE | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX |
                             DS_3DLOOK | DS_SETFONT | DS_MODALFRAME;
    if ((dialog.style & ~kKnown) != 0) Unsupported("style of a dialog", dialog.style);
    if ((dialog.exStyle & ~WS_EX_APPWINDOW) != 0) Unsupported("extended style of a dialog", dialog.exStyle);
}

// In units, as a window's rectangle.
template <class Box>
CRect FromUnits(const Box& box, int x, int y) {
    return CRect(x, y, x + FromUnitsX(box.cx), y + FromUnitsY(box.cy));
}

void AddControl(Window& dialog, const resources::DialogItem& item) {
    auto control = std::make_unique<Window>();
    control->kind = ClassOf(item).kind;
    control->style = item.style;
    control->exStyle = item.exStyle;
    control->id = static_cast<UINT>(item.id);
    control->parent = &dialog;
    control->rect = FromUnits(item, FromUnitsX(item.x), FromUnitsY(item.y));
    control->text = item.text;
    control->hasFace = control->kind == Window::Kind::kStatic;
    if (item.resource != 0) {
        control->pictureId = item.resource;
        control->picture = control->StaticType() == SS_ICON
                               ? resources::LoadIcon(item.resource, GetSystemMetrics(SM_CXICON))
                               : resources::LoadBitmap(item.resource);
        // A picture keeps its own size: the control takes it over.
        if (control->picture.has_value()) {
            control->rect.right = control->rect.left + control->picture->width;
            control->rect.bottom = control->rect.top + control->picture->height;
        }
    }
    const bool visible = (item.style & WS_VISIBLE) != 0;
    Window& made = windows::Create(std::move(control), nullptr);
    made.visible = visible;
    if (visible) made.native->Show(SW_SHOW);
}

HWND TopLevelOf(const CWnd* window) {
    const Window* record = window == nullptr ? nullptr : windows::Find(window->GetSafeHwnd());
    while (record != nullptr && record->parent != nullptr) record = record->parent;
    return record == nullptr ? nullptr : record->handle;
}

}  // namespace

BEGIN_MESSAGE_MAP(CDialog, CWnd)
ON_MESSAGE(WM_INITDIALOG, OnDialogInit)
ON_COMMAND(IDOK, OnDialogOK)
ON_COMMAND(IDCANCEL, OnDialogCancel)
END_MESSAGE_MAP()

BOOL CDialog::Create(UINT templateId, CWnd* parent) {
    if (m_hWnd != nullptr) return FALSE;
    const resources::Dialog found = resources::LoadDialog(templateId);
    CheckDialog(found);
    const bool child = (found.style & WS_CHILD) != 0;
    Window* parentWindow = child && parent != nullptr ? windows::Find(parent->GetSafeHwnd()) : nullptr;
    if (child && parentWindow == nullptr) return FALSE;

    auto window = std::make_unique<Window>();
    window->kind = Window::Kind::kDialog;
    window->style = found.style;
    window->exStyle = found.exStyle;
    window->parent = parentWindow;
    window->owner = child ? nullptr : TopLevelOf(parent);
    window->menu = found.menu;
    window->rect =
        child ? FromUnits(found, FromUnitsX(found.x), FromUnitsY(found.y)) : FromUnits(found, 0, 0);
    window->text = found.title;
    window->hasFace = true;
    const HWND handle = windows::Create(std::move(window), this).handle;
    for (const resources::DialogItem& item : found.items) {
        Window* record = windows::Find(handle);
        if (record == nullptr) return FALSE;
        AddControl(*record, item);
    }
    SendMessage(WM_INITDIALOG);
    if (IsWindow(handle) == FALSE) return FALSE;
    if ((found.style & WS_VISIBLE) != 0) ShowWindow(SW_SHOW);
    return TRUE;
}

LRESULT CDialog::OnDialogInit(WPARAM, LPARAM) {
    return OnInitDialog();
}

BOOL CDialog::OnInitDialog() {
    UpdateData(FALSE);
    return TRUE;
}

int CDialog::DoModal() {
    m_result = IDCANCEL;
    if (Create(m_templateId, m_parent == nullptr ? AfxGetMainWnd() : m_parent) == FALSE) return IDCANCEL;
    m_modal = true;
    const HWND handle = m_hWnd;
    if (Window* window = windows::Find(handle)) window->visible = true;
    windows::PaintSoon();
    Toolkit()->RunModal(handle);
    // The object outlives its window: a modal dialog's belongs to the caller of DoModal.
    if (IsWindow(handle) != FALSE) DestroyWindow();
    m_modal = false;
    return m_result;
}

void CDialog::EndDialog(int result) {
    if (!m_modal) return;
    m_result = result;
    Toolkit()->EndModal(m_hWnd);
}

void DDX_Control(CDataExchange* dx, int id, CWnd& control) {
    if (control.GetSafeHwnd() != nullptr) return;
    const Window* dialog = windows::Find(dx->m_pDlgWnd->GetSafeHwnd());
    if (dialog != nullptr)
        for (const Window* child : dialog->children)
            if (child->id == static_cast<UINT>(id) && control.SubclassWindow(child->handle) != FALSE) return;
    Unsupported("binding to control", std::to_string(id));
}
