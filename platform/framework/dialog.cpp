// Dialogs from the compiled resources.
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

// Rounds to the nearest, as the original does.
constexpr int FromUnitsX(int units) {
    return (units * kBaseUnitX + 2) / 4;
}
constexpr int FromUnitsY(int units) {
    return (units * kBaseUnitY + 4) / 8;
}

constexpr DWORD kCommonChildStyles = WS_CHILD | WS_VISIBLE | WS_DISABLED | WS_BORDER | WS_GROUP | WS_TABSTOP;

Window::Kind KindOf(const resources::DialogItem& item) {
    if (item.class_name == "STATIC") return Window::Kind::kStatic;
    if (item.class_name == "BUTTON") return Window::Kind::kButton;
    if (item.class_name == "msctls_trackbar32") return Window::Kind::kTrackbar;
    Unsupported("class of a dialog's control", item.class_name);
}

void CheckStyle(Window::Kind kind, DWORD style, DWORD exStyle) {
    DWORD known = kCommonChildStyles;
    bool typeKnown = true;
    switch (kind) {
        case Window::Kind::kStatic: {
            known |= SS_TYPEMASK | SS_NOPREFIX | SS_CENTERIMAGE | SS_SUNKEN;
            const DWORD type = style & SS_TYPEMASK;
            typeKnown =
                type <= SS_ICON || type == SS_BITMAP || type == SS_ETCHEDHORZ || type == SS_ETCHEDVERT;
            break;
        }
        case Window::Kind::kButton: {
            known |= BS_TYPEMASK | BS_ICON;
            const DWORD type = style & BS_TYPEMASK;
            typeKnown = type <= BS_DEFPUSHBUTTON || type == BS_AUTOCHECKBOX || type == BS_OWNERDRAW;
            break;
        }
        case Window::Kind::kTrackbar:
            known |= TBS_VERT | TBS_BOTH;
            typeKnown = (style & (TBS_VERT | TBS_BOTH)) == (TBS_VERT | TBS_BOTH);
            break;
        default:
            break;
    }
    if ((style & ~known) != 0 || !typeKnown) Unsupported("style of a dialog's control", style);
    if ((exStyle & ~(WS_EX_STATICEDGE | WS_EX_CLIENTEDGE)) != 0)
        Unsupported("extended style of a dialog's control", exStyle);
}

// The frame styles that the window manager carries out, and those that say what is the case anyhow.
void CheckDialog(const resources::Dialog& dialog) {
    constexpr DWORD kKnown = WS_POPUP | WS_CHILD | WS_VISIBLE | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX |
                             DS_3DLOOK | DS_SETFONT | DS_MODALFRAME;
    if ((dialog.style & ~kKnown) != 0) Unsupported("style of a dialog", dialog.style);
    if ((dialog.ex_style & ~WS_EX_APPWINDOW) != 0) Unsupported("extended style of a dialog", dialog.ex_style);
    if (!dialog.class_name.empty()) Unsupported("class of a dialog", dialog.class_name);
    if (dialog.menu != 0 && !resources::LoadMenu(dialog.menu)) Unsupported("menu of a dialog", dialog.menu);
}

void AddControl(Window& dialog, const resources::DialogItem& item) {
    auto control = std::make_unique<Window>();
    control->kind = KindOf(item);
    control->style = item.style;
    control->exStyle = item.ex_style;
    CheckStyle(control->kind, control->style, control->exStyle);
    control->id = static_cast<UINT>(item.id);
    control->parent = &dialog;
    const int x = FromUnitsX(item.x);
    const int y = FromUnitsY(item.y);
    control->rect = CRect(x, y, x + FromUnitsX(item.cx), y + FromUnitsY(item.cy));
    control->text = item.text;
    control->hasFace = control->kind == Window::Kind::kStatic;
    if (item.resource != 0) {
        control->picture = control->StaticType() == SS_ICON
                               ? resources::LoadIcon(item.resource, GetSystemMetrics(SM_CXICON))
                               : resources::LoadBitmap(item.resource);
        // A picture keeps its own size: the control takes it over.
        if (control->picture.has_value()) {
            control->rect.right = x + control->picture->width;
            control->rect.bottom = y + control->picture->height;
        }
    }
    const bool visible = (item.style & WS_VISIBLE) != 0;
    Window& made = windows::Create(std::move(control), nullptr);
    made.visible = visible;
    if (visible) made.peer->Show(SW_SHOW);
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
    const auto found = resources::LoadDialog(templateId);
    if (!found.has_value()) Unsupported("dialog", templateId);
    if (m_hWnd != nullptr) return FALSE;
    CheckDialog(*found);
    const bool child = (found->style & WS_CHILD) != 0;
    Window* parentWindow = child && parent != nullptr ? windows::Find(parent->GetSafeHwnd()) : nullptr;
    if (child && parentWindow == nullptr) return FALSE;

    auto window = std::make_unique<Window>();
    window->kind = Window::Kind::kDialog;
    window->style = found->style;
    window->exStyle = found->ex_style;
    window->parent = parentWindow;
    window->owner = child ? nullptr : TopLevelOf(parent);
    window->menu = found->menu;
    const int x = child ? FromUnitsX(found->x) : 0;
    const int y = child ? FromUnitsY(found->y) : 0;
    window->rect = CRect(x, y, x + FromUnitsX(found->cx), y + FromUnitsY(found->cy));
    window->text = found->title;
    window->hasFace = true;
    const HWND handle = windows::Create(std::move(window), this).handle;
    for (const resources::DialogItem& item : found->items) {
        Window* record = windows::Find(handle);
        if (record == nullptr) return FALSE;
        AddControl(*record, item);
    }
    SendMessage(WM_INITDIALOG);
    if (IsWindow(handle) == FALSE) return FALSE;
    if ((found->style & WS_VISIBLE) != 0) ShowWindow(SW_SHOW);
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
