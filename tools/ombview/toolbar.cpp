#include "toolbar.h"

#include <commctrl.h>
#include <windowsx.h>

#include <algorithm>

#include "commands.h"
#include "menus.h"
#include "theme.h"

namespace ombview {

namespace {

// A picture on a grid of 16 x 16: "10,4 12,4" is a line, "o8,8,5" a circle; lines go on from point
// to point until a semicolon.
struct Button {
  WORD command;  // 0: a gap
  const char* picture;
};

constexpr Button kButtons[] = {
    {kOpen, "1,13 1,3 6,3 7,5 13,5 13,7; 1,13 4,7 15,7 12,13 1,13"},
    {kSave, "2,2 12,2 14,4 14,14 2,14 2,2; 5,2 5,6 11,6 11,2; 4,14 4,9 12,9 12,14"},
    {kPrint, "4,6 4,2 12,2 12,6; 4,12 2,12 2,6 14,6 14,12 12,12; 4,9 12,9 12,14 4,14 4,9"},
    {0, ""},
    {kUndo, "6,3 2,7 6,11; 2,7 10,7 13,9 13,12 11,14 8,14"},
    {kRedo, "10,3 14,7 10,11; 14,7 6,7 3,9 3,12 5,14 8,14"},
    {0, ""},
    {kZoomOut, "o7,7,5; 11,11 15,15; 5,7 10,7"},
    {kZoomIn, "o7,7,5; 11,11 15,15; 5,7 10,7; 7,5 7,10"},
    {kActualSize, "2,5 4,3 4,13; 8,6 8,7; 8,10 8,11; 12,5 14,3 14,13"},
    {kFit,
     "1,5 1,1 5,1; 11,1 15,1 15,5; 15,11 15,15 11,15; 5,15 1,15 1,11; 5,5 11,5 11,11 5,11 5,5"},
    {0, ""},
    {kSelecting,
     "1,1 4,1; 7,1 10,1; 13,1 15,1 15,3; 15,6 15,9; 15,12 15,15 12,15; 9,15 6,15; "
     "3,15 1,15 1,12; 1,9 1,6; 1,3 1,1"},
    {kCropToSelection, "4,1 4,12 15,12; 1,4 12,4 12,15"},
    {kHistogram, "1,15 15,15; 3,14 3,9; 6,14 6,4; 9,14 9,7; 12,14 12,11"},
};

// Draws a picture; its units are parts of the square.
void Draw(Painting& painting, const char* picture, const RECT& square, COLORREF color) {
  const double unit = (square.right - square.left) / 16.0;
  const auto x = [&](int at) { return square.left + static_cast<int>(at * unit + .5); };
  const auto y = [&](int at) { return square.top + static_cast<int>(at * unit + .5); };
  const int width = std::max(1, Scaled(3) / 2);
  int last_x = -1, last_y = -1;
  for (const char* p = picture; *p != 0;) {
    char* end = nullptr;
    if (*p == 'o') {
      const long cx = std::strtol(p + 1, &end, 10), cy = std::strtol(end + 1, &end, 10);
      const long r = std::strtol(end + 1, &end, 10);
      const GdiObject<HPEN> pen(CreatePen(PS_SOLID, width, color));
      const HGDIOBJ previous = SelectObject(painting.dc(), pen.get());
      const HGDIOBJ brush = SelectObject(painting.dc(), GetStockObject(NULL_BRUSH));
      Ellipse(painting.dc(), x(static_cast<int>(cx - r)), y(static_cast<int>(cy - r)),
              x(static_cast<int>(cx + r)) + 1, y(static_cast<int>(cy + r)) + 1);
      SelectObject(painting.dc(), brush);
      SelectObject(painting.dc(), previous);
    } else {
      const auto at_x = static_cast<int>(std::strtol(p, &end, 10));
      const auto at_y = static_cast<int>(std::strtol(end + 1, &end, 10));
      if (last_x >= 0) painting.Line(x(last_x), y(last_y), x(at_x), y(at_y), color, width);
      last_x = at_x, last_y = at_y;
    }
    p = end;
    if (*p == ';') ++p, last_x = -1;
    while (*p == ' ') ++p;
  }
}

}  // namespace

Toolbar::Toolbar(HWND parent, std::function<State(WORD)> state) : state_(std::move(state)) {
  Create(L"OmbviewToolbar", WS_CHILD | WS_VISIBLE, 0, parent);
  tips_ = CreateWindowExW(WS_EX_TOPMOST, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_ALWAYSTIP, 0, 0,
                          0, 0, handle(), nullptr, nullptr, nullptr);
  MakeTips();
}

int Toolbar::Height() { return Scaled(38); }

RECT Toolbar::ButtonAt(int i) const {
  int left = Scaled(6);
  for (int k = 0; k < i; ++k) left += Scaled(kButtons[k].command == 0 ? 13 : 34);
  return {left, Scaled(3), left + Scaled(32), Scaled(35)};
}

int Toolbar::ButtonUnder(LPARAM lparam) const {
  for (int i = 0; i < static_cast<int>(std::size(kButtons)); ++i) {
    const RECT area = ButtonAt(i);
    if (kButtons[i].command != 0 && PtInRect(&area, {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)})) {
      return i;
    }
  }
  return -1;
}

void Toolbar::SetHot(int i) {
  if (hot_ == i) return;
  hot_ = i;
  Repaint();
}

void Toolbar::MakeTips() {
  for (int i = 0; i < static_cast<int>(std::size(kButtons)); ++i) {
    if (kButtons[i].command == 0) continue;
    std::wstring text = TipOf(kButtons[i].command);
    TTTOOLINFOW tip = {};
    tip.cbSize = sizeof tip;
    tip.uFlags = TTF_SUBCLASS;
    tip.hwnd = handle();
    tip.uId = static_cast<UINT_PTR>(i);
    tip.rect = ButtonAt(i);
    tip.lpszText = text.data();
    SendMessageW(tips_, TTM_DELTOOLW, 0, reinterpret_cast<LPARAM>(&tip));
    SendMessageW(tips_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tip));
  }
}

void Toolbar::Paint(Painting& painting) {
  const Theme& theme = CurrentTheme();
  const RECT area = ClientRect();
  painting.Fill(area, theme.bar);
  painting.Fill({0, area.bottom - 1, area.right, area.bottom}, theme.line);
  for (int i = 0; i < static_cast<int>(std::size(kButtons)); ++i) {
    const RECT button = ButtonAt(i);
    if (kButtons[i].command == 0) {
      const LONG middle = button.left + Scaled(5);
      painting.Fill({middle, Scaled(9), middle + 1, Scaled(29)}, theme.line);
      continue;
    }
    const State state = state_(kButtons[i].command);
    if (state.on || (i == hot_ && state.possible)) painting.Fill(button, theme.hot);
    const int margin = Scaled(8);
    const RECT square = {button.left + margin, button.top + margin, button.right - margin,
                         button.bottom - margin};
    Draw(painting, kButtons[i].picture, square, state.possible ? theme.bar_text : theme.line);
  }
}

LRESULT Toolbar::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_DPICHANGED_AFTERPARENT:
      MakeTips();
      return 0;
    case WM_MOUSEMOVE: {
      TRACKMOUSEEVENT leaving = {sizeof leaving, TME_LEAVE, handle(), 0};
      TrackMouseEvent(&leaving);
      SetHot(ButtonUnder(lparam));
      return 0;
    }
    case WM_MOUSELEAVE:
      SetHot(-1);
      return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
      pressed_ = ButtonUnder(lparam);
      return 0;
    case WM_LBUTTONUP: {
      const int button = ButtonUnder(lparam);
      if (button < 0 || button != pressed_ || !state_(kButtons[button].command).possible) return 0;
      SendMessageW(GetParent(handle()), WM_COMMAND, kButtons[button].command, 0);
      return 0;
    }
  }
  return Window::OnMessage(message, wparam, lparam);
}

}  // namespace ombview
