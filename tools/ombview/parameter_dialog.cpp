#include "parameter_dialog.h"

#include <commctrl.h>
#include <commdlg.h>

#include <algorithm>

#include "choice_pictures.h"
#include "curve_editor.h"
#include "errors.h"
#include "slider.h"
#include "theme.h"
#include "wide.h"
#include "window.h"

namespace ombview {

namespace {

using omb::Parameter;

constexpr int kFirstColorButton = 300, kFirstPictures = 400, kComplaint = 500;
constexpr int kListHeight = 300;  // of lists that open

std::string CapitalizedFirst(std::string text) {
  if (text[0] >= 'a' && text[0] <= 'z') text[0] = static_cast<char>(text[0] - 'a' + 'A');
  return text;
}

// Whether the first argument is a curve, and whether the first two are the levels that become black
// and white.
bool IsDrawn(const omb::Step& step) { return std::string(step.parameters[0].name) == "points"; }
bool HasLevels(const omb::Step& step) { return std::string(step.name) == "x1x2_changed"; }

class ParameterDialog {
 public:
  ParameterDialog(const omb::Step& step, const omb::Arguments& initial, const SharedImage& image,
                  const std::vector<omb::Histogram>& histograms, const DialogEvents& events)
      : step_(step), initial_(initial), image_(image), histograms_(histograms), events_(events) {}

  std::optional<omb::Call> Ask(HWND owner) {
    // A dialog without controls; they come when it is there.
    struct {
      alignas(4) DLGTEMPLATE dialog = {};
      WORD menu = 0, window_class = 0, title = 0;
    } layout;
    layout.dialog.style = DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU;
    CreateDialogIndirectParamW(GetModuleHandleW(nullptr), &layout.dialog, owner, Procedure,
                               reinterpret_cast<LPARAM>(this));
    // A loop of its own rather than the system's: keys that are held must reach the window behind.
    EnableWindow(owner, FALSE);
    ShowWindow(dialog_, SW_SHOW);
    MSG message;
    while (!ended_ && GetMessageW(&message, nullptr, 0, 0) > 0) {
      if (events_.takes_key(message) || IsDialogMessageW(dialog_, &message)) continue;
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
    if (!ended_) PostQuitMessage(static_cast<int>(message.wParam));
    EnableWindow(owner, TRUE);
    DestroyWindow(dialog_);
    return call_;
  }

 private:
  static INT_PTR CALLBACK Procedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) SetWindowLongPtrW(dialog, DWLP_USER, lparam);
    auto* self = reinterpret_cast<ParameterDialog*>(GetWindowLongPtrW(dialog, DWLP_USER));
    if (self == nullptr) return FALSE;
    self->dialog_ = dialog;
    switch (message) {
      case WM_INITDIALOG:
        self->Build();
        return FALSE;  // the focus is set
      case WM_COMMAND:
        self->OnCommand(LOWORD(wparam), HIWORD(wparam));
        return TRUE;
      case WM_HSCROLL:
        self->OnSlider(reinterpret_cast<HWND>(lparam));
        return TRUE;
      case WM_CTLCOLORDLG:
      case WM_CTLCOLORSTATIC:
      case WM_CTLCOLOREDIT:
      case WM_CTLCOLORLISTBOX:
      case WM_CTLCOLORBTN:
        return reinterpret_cast<INT_PTR>(ColorControl(message, reinterpret_cast<HDC>(wparam)));
      case WM_NOTIFY:
        self->OnNotify(*reinterpret_cast<const NMHDR*>(lparam));
        return TRUE;
    }
    return FALSE;
  }

  // ---- Building ----

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
    Add(WC_STATICW, Wide(CapitalizedFirst(parameter.name)), SS_NOPREFIX | SS_ENDELLIPSIS,
        {kLeft, top_ + Scaled(4), kControls - Scaled(6), top_ + kRow}, 0);
    RECT where = {kControls, top_, kControls + Scaled(180), top_ + kRow};
    const auto choices = ChoicesOf(parameter);
    const auto scale = choices.empty() ? SliderScale::For(parameter) : std::nullopt;
    if (scale) {
      where.left = kRight - Scaled(84), where.right = kRight;
      AddSlider(*scale, {kControls, top_, where.left - Scaled(8), top_ + kRow}, i);
    }
    if (!choices.empty()) {
      AddList(parameter, choices, initial, where, id);
    } else {
      Add(WC_EDITW, initial, WS_TABSTOP | ES_AUTOHSCROLL, where, id);
    }
    if (parameter.kind == Parameter::Kind::kColor) {
      const RECT beside = {where.right + Scaled(8), top_, where.right + Scaled(96), top_ + kRow};
      Add(WC_BUTTONW, L"Choose…", WS_TABSTOP, beside, kFirstColorButton + i);
    }
    top_ += kRow + Scaled(2);
    // A slider and a list show the form.
    const bool listed = parameter.kind == Parameter::Kind::kChoice || choices.size() > 4 || scale;
    AddText(CapitalizedFirst(parameter.help) + (listed ? "" : ": " + parameter.Form()), kControls);
    if (choices.size() >= kFewestPictures) AddPictures(i, choices);
    top_ += kGap;
  }

  // Only choices keep to the list; elsewhere other texts can be typed.
  void AddList(const Parameter& parameter, const std::vector<std::string>& choices,
               const std::wstring& initial, RECT where, int id) {
    const bool fixed = parameter.kind == Parameter::Kind::kChoice;
    where.bottom += Scaled(kListHeight);
    const DWORD style = WS_TABSTOP | WS_VSCROLL | (fixed ? CBS_DROPDOWNLIST : CBS_DROPDOWN);
    const HWND list = Add(WC_COMBOBOXW, L"", style, where, id);
    for (const std::string& choice : choices) {
      const std::wstring text = Wide(choice);
      SendMessageW(list, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
    const auto wanted = reinterpret_cast<LPARAM>(initial.c_str());
    SendMessageW(list, CB_SETCURSEL, SendMessageW(list, CB_FINDSTRINGEXACT, WPARAM(-1), wanted), 0);
    if (!fixed) SetWindowTextW(list, initial.c_str());
  }

  void AddSlider(const SliderScale& scale, RECT where, int i) {
    const HWND slider = Add(TRACKBAR_CLASSW, L"", TBS_HORZ | TBS_NOTICKS, where, kFirstSlider + i);
    SendMessageW(slider, TBM_SETRANGEMIN, FALSE, 0);
    SendMessageW(slider, TBM_SETRANGEMAX, FALSE, scale.places());
    SendMessageW(slider, TBM_SETPAGESIZE, 0, std::max(1, scale.places() / 20));
  }

  void AddPictures(int i, const std::vector<std::string>& choices) {
    top_ += Scaled(6);
    const int side = Scaled(kPictureSide);
    const int rows = choices.size() > 8 ? 3 : choices.size() > 3 ? 2 : 1;
    const RECT where = {kLeft, top_, kRight, top_ + rows * (side + Scaled(30)) + Scaled(8)};
    constexpr DWORD kStyle =
        WS_TABSTOP | WS_BORDER | LVS_ICON | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_AUTOARRANGE;
    const HWND list = Add(WC_LISTVIEWW, L"", kStyle, where, kFirstPictures + i);
    const HIMAGELIST pictures =
        ImageList_Create(side, side, ILC_COLOR32, static_cast<int>(choices.size()), 1);
    ListView_SetImageList(list, pictures, LVSIL_NORMAL);  // which owns them now
    ListView_SetIconSpacing(list, side + Scaled(36), side + Scaled(30));
    for (int k = 0; k < std::ssize(choices); ++k) {
      std::wstring text = Wide(choices[static_cast<size_t>(k)]);
      LVITEMW item = {};
      item.mask = LVIF_TEXT | LVIF_IMAGE;
      item.iItem = k;
      item.iImage = k;
      item.pszText = text.data();
      const omb::Image shown = PictureOfChoice(step_, initial_, static_cast<size_t>(i),
                                               choices[static_cast<size_t>(k)], image_.get(), side);
      const GdiObject<HBITMAP> bitmap(omb_DIBToDIBSection(shown.get()));
      ImageList_Add(pictures, bitmap.get(), nullptr);
      SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    }
    top_ = where.bottom;
  }

  // Above the fields, whose texts follow what is drawn.
  void AddCurveEditor() {
    const RECT where = {kControls, top_, kRight, top_ + Scaled(260)};
    curve_.emplace(dialog_, where, histograms_,
                   CurveEditor::Events{
                       [this](const CurvePoints& points) { SetText(0, Wide(points.Text())); },
                       [this](int which, int level) { SetText(which, std::to_wstring(level)); }});
    top_ = where.bottom + kGap;
  }

  void ShowCurve(const std::optional<omb::Call>& call) {
    if (!curve_) return;
    std::optional<std::array<uint8_t, 256>> curve;
    try {
      if (call) curve = CurveOf(*call);
    } catch (const omb::StepError&) {  // then none is shown
    }
    if (IsDrawn(step_)) return curve_->Show(curve, CurvePoints::Parse(TextOf(0)));
    const auto level = [this](int i) {
      return static_cast<int>(ParameterAt(i).Parse(TextOf(i)).value_or(omb::Value{}).number);
    };
    curve_->ShowLevels(curve, level(0), level(1));
  }

  void Build() {
    SetWindowTextW(dialog_, Wide(step_.Title()).c_str());
    top_ = kGap;
    AddText(step_.summary, kLeft);
    top_ += kGap;
    if (IsDrawn(step_) || HasLevels(step_)) AddCurveEditor();
    for (int i = 0; i < std::ssize(step_.parameters); ++i) AddParameter(i);
    Add(WC_STATICW, L"", SS_NOPREFIX, {kLeft, top_, kRight, top_ + 2 * kRow}, kComplaint);
    top_ += 2 * kRow + kGap / 2;
    const int button = Scaled(92);
    Add(WC_STATICW, L"F8: compare", SS_NOPREFIX,
        {kLeft, top_ + Scaled(4), kLeft + Scaled(160), top_ + kRow}, 0);
    Add(WC_BUTTONW, L"OK", WS_TABSTOP | BS_DEFPUSHBUTTON,
        {kRight - 2 * button - Scaled(8), top_, kRight - button - Scaled(8), top_ + kRow}, IDOK);
    Add(WC_BUTTONW, L"Cancel", WS_TABSTOP, {kRight - button, top_, kRight, top_ + kRow}, IDCANCEL);
    top_ += kRow + kGap;
    Place();
    ApplyThemeToDialog(dialog_);
    // Selected as a whole: what is typed takes the place of what was there.
    const HWND first = GetDlgItem(dialog_, kFirstParameter);
    SetFocus(first);
    SendMessageW(first, EM_SETSEL, 0, -1);
    built_ = true;
    Changed();
  }

  // As large as it has become, at the right of the window that it belongs to, so that it covers
  // little of the image.
  void Place() {
    RECT size = {0, 0, kRight + kLeft, top_};
    AdjustWindowRectExForDpi(&size, static_cast<DWORD>(GetWindowLongPtrW(dialog_, GWL_STYLE)),
                             FALSE, static_cast<DWORD>(GetWindowLongPtrW(dialog_, GWL_EXSTYLE)),
                             static_cast<UINT>(Dpi()));
    const HWND owner = GetWindow(dialog_, GW_OWNER);
    RECT area = {};
    GetWindowRect(owner, &area);
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(owner, MONITOR_DEFAULTTONEAREST), &monitor);
    const int width = size.right - size.left, height = size.bottom - size.top;
    const auto left = std::clamp<LONG>(area.right - width - Scaled(12), monitor.rcWork.left,
                                       std::max(monitor.rcWork.left, monitor.rcWork.right - width));
    const auto top = std::clamp<LONG>(area.top + Scaled(100), monitor.rcWork.top,
                                      std::max(monitor.rcWork.top, monitor.rcWork.bottom - height));
    MoveWindow(dialog_, left, top, width, height, FALSE);
  }

  // ---- What is entered ----

  std::string TextOf(int i) const {
    wchar_t text[1000] = {};
    GetDlgItemTextW(dialog_, kFirstParameter + i, text, ARRAYSIZE(text));
    return Narrow(text);
  }

  void SetText(int i, const std::wstring& text) {
    const HWND control = GetDlgItem(dialog_, kFirstParameter + i);
    SetWindowTextW(control, text.c_str());
    // A list that keeps to its choices takes no text, but chooses.
    SendMessageW(control, CB_SELECTSTRING, WPARAM(-1), reinterpret_cast<LPARAM>(text.c_str()));
    Changed();
  }

  const Parameter& ParameterAt(int i) const { return step_.parameters[static_cast<size_t>(i)]; }
  int Count() const { return static_cast<int>(step_.parameters.size()); }

  void OnCommand(int id, int notice) {
    if (id == IDOK) return Accept();
    if (id == IDCANCEL) return End();
    const int color = id - kFirstColorButton, field = id - kFirstParameter;
    if (color >= 0 && color < Count()) return ChooseColorOf(color);
    if (field < 0 || field >= Count() || !built_) return;
    if (notice == CBN_SELCHANGE) {
      // The text follows only after this message.
      const HWND list = GetDlgItem(dialog_, id);
      wchar_t text[200] = {};
      SendMessageW(list, CB_GETLBTEXT, static_cast<WPARAM>(SendMessageW(list, CB_GETCURSEL, 0, 0)),
                   reinterpret_cast<LPARAM>(text));
      return SetText(field, text);
    }
    if (notice == EN_CHANGE || notice == CBN_EDITCHANGE) Changed();
  }

  void OnSlider(HWND slider) {
    const int i = GetDlgCtrlID(slider) - kFirstSlider;
    const auto scale = SliderScale::For(ParameterAt(i));
    if (!scale || moving_) return;
    moving_ = true;
    SetText(i, Wide(scale->TextAt(static_cast<int>(SendMessageW(slider, TBM_GETPOS, 0, 0)))));
    moving_ = false;
  }

  void OnNotify(const NMHDR& notice) {
    const int i = static_cast<int>(notice.idFrom) - kFirstPictures;
    if (!built_ || notice.code != LVN_ITEMCHANGED || i < 0 || i >= Count()) return;
    const auto& change = reinterpret_cast<const NMLISTVIEW&>(notice);
    if ((change.uNewState & LVIS_SELECTED) == 0) return;
    SetText(i, Wide(ChoicesOf(ParameterAt(i))[static_cast<size_t>(change.iItem)]));
  }

  // Sliders follow what is typed; whoever shows a preview is told.
  void Changed() {
    if (!built_) return;
    for (int i = 0; i < Count() && !moving_; ++i) {
      const auto scale = SliderScale::For(ParameterAt(i));
      const auto value = ParameterAt(i).Parse(TextOf(i));
      if (!scale || !value) continue;
      SendDlgItemMessageW(dialog_, kFirstSlider + i, TBM_SETPOS, TRUE,
                          scale->PlaceOf(value->number));
    }
    const auto call = Entered();
    ShowCurve(call);
    events_.changed(call);
  }

  // Understood just as on the command line, by the same rules. What is wrong is said in the dialog.
  std::optional<omb::Call> Entered() {
    std::string text = step_.name;
    for (int i = 0; i < Count(); ++i) text += (i == 0 ? "=" : ",") + TextOf(i);
    std::wstring complaint;
    std::optional<omb::Call> call;
    try {
      call = omb::ParseCall(text);
    } catch (const omb::UsageError& error) {
      const std::string message = error.what();
      const size_t colon = message.find(": ");  // after the step's name
      complaint = Wide(CapitalizedFirst(message.substr(colon == message.npos ? 0 : colon + 2)));
    }
    SetDlgItemTextW(dialog_, kComplaint, complaint.c_str());
    return call;
  }

  void Accept() {
    call_ = Entered();
    if (call_) return End();
    MessageBeep(MB_ICONWARNING);
  }

  void End() {
    ended_ = true;
    PostMessageW(dialog_, WM_NULL, 0, 0);  // for the loop to see it
  }

  void ChooseColorOf(int i) {
    static COLORREF custom[16] = {};
    CHOOSECOLORW choice = {};
    choice.lStructSize = sizeof choice;
    choice.hwndOwner = dialog_;
    choice.lpCustColors = custom;
    choice.Flags = CC_FULLOPEN | CC_RGBINIT;
    const auto value = ParameterAt(i).Parse(TextOf(i));
    if (value) choice.rgbResult = static_cast<COLORREF>(value->number);
    if (!ChooseColorW(&choice)) return;
    wchar_t text[8];
    swprintf(text, ARRAYSIZE(text), L"#%02x%02x%02x", GetRValue(choice.rgbResult),
             GetGValue(choice.rgbResult), GetBValue(choice.rgbResult));
    SetText(i, text);
  }

  // Measures in pixels; `top_` is where the next control goes.
  const int kLeft = Scaled(16), kControls = Scaled(110), kRight = Scaled(440), kRow = Scaled(25),
            kGap = Scaled(14);
  int top_ = 0;

  const omb::Step& step_;
  const omb::Arguments& initial_;
  const SharedImage image_;
  const std::vector<omb::Histogram>& histograms_;
  const DialogEvents& events_;
  std::optional<CurveEditor> curve_;
  HWND dialog_ = nullptr;
  bool built_ = false, ended_ = false;
  bool moving_ = false;  // a slider, which must not be moved by its own text
  std::optional<omb::Call> call_;
};

}  // namespace

std::optional<omb::Call> AskForArguments(HWND owner, const omb::Step& step,
                                         const omb::Arguments& initial, const SharedImage& image,
                                         const std::vector<omb::Histogram>& histograms,
                                         const DialogEvents& events) {
  return ParameterDialog(step, initial, image, histograms, events).Ask(owner);
}

}  // namespace ombview
