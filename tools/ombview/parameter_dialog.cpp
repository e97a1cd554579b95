#include "parameter_dialog.h"

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>

#include "errors.h"
#include "wide.h"
#include "window.h"

namespace ombview {

namespace {

using omb::Parameter;

constexpr int kFirstColorButton = 200, kComplaint = 300;
constexpr int kListHeight = 300;  // of lists that open

// What can be chosen rather than typed: the names of values, and kernels where one is wanted.
std::vector<std::string> SuggestionsFor(const Parameter& parameter) {
  std::vector<std::string> texts;
  for (const omb::Name& name : parameter.names) texts.emplace_back(name.name);
  if (parameter.fits == nullptr) return texts;
  for (uint32_t i = 0; const KERNAL* kernel = omb_getKERNAL(i); ++i) {
    if (parameter.fits(kernel->name)) texts.emplace_back(kernel->name);
  }
  return texts;
}

std::string CapitalizedFirst(std::string text) {
  if (text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

class ParameterDialog {
 public:
  ParameterDialog(const omb::Step& step, const omb::Arguments& initial)
      : step_(step), initial_(initial) {}

  std::optional<omb::Call> Ask(HWND owner) {
    // A dialog without controls; they come when it is there.
    struct {
      alignas(4) DLGTEMPLATE dialog = {};
      WORD menu = 0, window_class = 0, title = 0;
    } layout;
    layout.dialog.style = DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU;
    DialogBoxIndirectParamW(GetModuleHandleW(nullptr), &layout.dialog, owner, Procedure,
                            reinterpret_cast<LPARAM>(this));
    return call_;
  }

 private:
  static INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lparam);
    auto* self = reinterpret_cast<ParameterDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
    if (self == nullptr) return FALSE;
    self->dialog_ = dialog;
    if (message == WM_INITDIALOG) {
      self->Build();
      return FALSE;  // the focus is set
    }
    if (message != WM_COMMAND) return FALSE;
    self->OnCommand(LOWORD(wparam));
    return TRUE;
  }

  HWND Add(const wchar_t* window_class, const std::wstring& text, DWORD style, RECT where, int id) {
    const DWORD edge = std::wstring(window_class) == WC_EDITW ? WS_EX_CLIENTEDGE : 0;
    const HWND control = CreateWindowExW(
        edge, window_class, text.c_str(), WS_CHILD | WS_VISIBLE | style, where.left, where.top,
        where.right - where.left, where.bottom - where.top, dialog_,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(WindowFont()), FALSE);
    return control;
  }

  // A text that takes as many lines as it needs, from `top_` on.
  void AddText(const std::string& text, int left) {
    RECT where = {left, top_, kRight, top_};
    const std::wstring wide = Wide(text);
    const HDC dc = GetDC(dialog_);
    const HGDIOBJ previous = SelectObject(dc, WindowFont());
    DrawTextW(dc, wide.c_str(), -1, &where, DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
    SelectObject(dc, previous);
    ReleaseDC(dialog_, dc);
    where.right = kRight;
    Add(WC_STATICW, wide, SS_NOPREFIX, where, 0);
    top_ = where.bottom;
  }

  void AddParameter(int i) {
    const Parameter& parameter = step_.parameters[static_cast<size_t>(i)];
    const std::wstring initial = Wide(initial_.Text(static_cast<size_t>(i)));
    const int id = kFirstParameter + i;
    Add(WC_STATICW, Wide(parameter.name), SS_NOPREFIX,
        {kLeft, top_ + Scaled(4), kControls, top_ + kRow}, 0);
    RECT where = {kControls, top_, kControls + Scaled(180), top_ + kRow};
    const auto suggestions = SuggestionsFor(parameter);
    if (!suggestions.empty()) {
      AddList(parameter, suggestions, initial, where, id);
    } else {
      const HWND edit = Add(WC_EDITW, initial, WS_TABSTOP | ES_AUTOHSCROLL, where, id);
      if (parameter.kind == Parameter::Kind::kWhole) AddArrows(edit, parameter);
    }
    if (parameter.kind == Parameter::Kind::kColor) {
      const RECT beside = {where.right + Scaled(8), top_, where.right + Scaled(96), top_ + kRow};
      Add(WC_BUTTONW, L"Choose…", WS_TABSTOP, beside, kFirstColorButton + i);
    }
    top_ += kRow + Scaled(2);
    const bool listed = parameter.kind == Parameter::Kind::kChoice;
    AddText(CapitalizedFirst(parameter.help) + (listed ? "" : ": " + parameter.Form()), kControls);
    top_ += kGap;
  }

  // Only choices keep to the list; elsewhere other texts can be typed.
  void AddList(const Parameter& parameter, const std::vector<std::string>& suggestions,
               const std::wstring& initial, RECT where, int id) {
    const bool fixed = parameter.kind == Parameter::Kind::kChoice;
    where.bottom += Scaled(kListHeight);
    const DWORD style = WS_TABSTOP | WS_VSCROLL | (fixed ? CBS_DROPDOWNLIST : CBS_DROPDOWN);
    const HWND list = Add(WC_COMBOBOXW, L"", style, where, id);
    for (const std::string& suggestion : suggestions) {
      const std::wstring text = Wide(suggestion);
      SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
    const auto wanted = reinterpret_cast<LPARAM>(initial.c_str());
    SendMessageW(list, CB_SETCURSEL, SendMessageW(list, CB_FINDSTRINGEXACT, WPARAM(-1), wanted), 0);
    if (!fixed) SetWindowTextW(list, initial.c_str());
  }

  void AddArrows(HWND edit, const Parameter& parameter) {
    constexpr DWORD kStyle = UDS_ALIGNRIGHT | UDS_SETBUDDYINT | UDS_ARROWKEYS | UDS_NOTHOUSANDS;
    const HWND arrows = Add(UPDOWN_CLASSW, L"", kStyle, {}, 0);
    SendMessageW(arrows, UDM_SETBUDDY, reinterpret_cast<WPARAM>(edit), 0);
    SendMessageW(arrows, UDM_SETRANGE32, static_cast<WPARAM>(parameter.minimum),
                 static_cast<LPARAM>(parameter.maximum));
  }

  void Build() {
    SetWindowTextW(dialog_, Wide(step_.name).c_str());
    top_ = kGap;
    AddText(step_.summary, kLeft);
    if (step_.note != nullptr) {
      top_ += Scaled(6);
      AddText(step_.note, kLeft);
    }
    top_ += kGap;
    for (int i = 0; i < std::ssize(step_.parameters); ++i) AddParameter(i);
    Add(WC_STATICW, L"", SS_NOPREFIX, {kLeft, top_, kRight, top_ + 2 * kRow}, kComplaint);
    top_ += 2 * kRow + kGap;
    const int button = Scaled(92);
    Add(WC_BUTTONW, L"OK", WS_TABSTOP | BS_DEFPUSHBUTTON,
        {kRight - 2 * button - Scaled(8), top_, kRight - button - Scaled(8), top_ + kRow}, IDOK);
    Add(WC_BUTTONW, L"Cancel", WS_TABSTOP, {kRight - button, top_, kRight, top_ + kRow}, IDCANCEL);
    top_ += kRow + kGap;
    Place();
    SetFocus(GetDlgItem(dialog_, kFirstParameter));
  }

  // As large as it has become, in the middle of the window that it belongs to.
  void Place() {
    RECT size = {0, 0, kRight + kLeft, top_};
    AdjustWindowRectEx(&size, static_cast<DWORD>(GetWindowLongPtrW(dialog_, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrW(dialog_, GWL_EXSTYLE)));
    RECT owner = {};
    GetWindowRect(GetParent(dialog_), &owner);
    const int width = size.right - size.left, height = size.bottom - size.top;
    MoveWindow(dialog_, std::max(0L, (owner.left + owner.right - width) / 2),
               std::max(0L, (owner.top + owner.bottom - height) / 2), width, height, FALSE);
  }

  std::string TextOf(int i) const {
    wchar_t text[256] = {};
    GetDlgItemTextW(dialog_, kFirstParameter + i, text, ARRAYSIZE(text));
    return Narrow(text);
  }

  void OnCommand(int id) {
    if (id == IDOK) Accept();
    if (id == IDCANCEL) EndDialog(dialog_, 0);
    const int color = id - kFirstColorButton;
    if (color >= 0 && color < std::ssize(step_.parameters)) ChooseColorOf(color);
  }

  // Understood just as on the command line, by the same rules.
  void Accept() {
    std::string text = step_.name;
    for (int i = 0; i < std::ssize(step_.parameters); ++i) {
      text += (i == 0 ? "=" : ",") + TextOf(i);
    }
    try {
      call_ = omb::ParseCall(text);
      EndDialog(dialog_, 1);
    } catch (const omb::UsageError& error) {
      SetDlgItemTextW(dialog_, kComplaint, Wide(error.what()).c_str());
      MessageBeep(MB_ICONWARNING);
    }
  }

  void ChooseColorOf(int i) {
    static COLORREF custom[16] = {};
    CHOOSECOLORW choice = {};
    choice.lStructSize = sizeof choice;
    choice.hwndOwner = dialog_;
    choice.lpCustColors = custom;
    choice.Flags = CC_FULLOPEN | CC_RGBINIT;
    const auto value = step_.parameters[static_cast<size_t>(i)].Parse(TextOf(i));
    if (value) choice.rgbResult = static_cast<COLORREF>(value->number);
    if (!ChooseColorW(&choice)) return;
    wchar_t text[8];
    swprintf(text, ARRAYSIZE(text), L"#%02x%02x%02x", GetRValue(choice.rgbResult),
             GetGValue(choice.rgbResult), GetBValue(choice.rgbResult));
    SetDlgItemTextW(dialog_, kFirstParameter + i, text);
  }

  // Measures in pixels; `top_` is where the next control goes.
  const int kLeft = Scaled(16), kControls = Scaled(110), kRight = Scaled(440), kRow = Scaled(25),
            kGap = Scaled(14);
  int top_ = 0;

  const omb::Step& step_;
  const omb::Arguments& initial_;
  HWND dialog_ = nullptr;
  std::optional<omb::Call> call_;
};

}  // namespace

std::optional<omb::Call> AskForArguments(HWND owner, const omb::Step& step,
                                         const omb::Arguments& initial) {
  return ParameterDialog(step, initial).Ask(owner);
}

}  // namespace ombview
