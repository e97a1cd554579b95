#include "image_view.h"

#include <windowsx.h>

#include <algorithm>
#include <cmath>

#include "theme.h"

namespace ombview {

namespace {

constexpr int kLine = 48;  // pixels that one click on a scroll bar's arrow moves

Point PointOf(LPARAM lparam) { return {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)}; }

}  // namespace

ImageView::ImageView(HWND parent, Events events) : events_(std::move(events)) {
  Create(L"OmbviewImage", WS_CHILD | WS_VISIBLE | WS_HSCROLL | WS_VSCROLL, 0, parent);
  Moved();
}

void ImageView::SetImageSize(Point size) {
  has_image_ = size.x > 0 && size.y > 0;
  complaint_.clear();
  if (!has_image_) rendering_.bitmap.reset();
  viewport_.SetImage(size.x, size.y);
  if (selection_ && (selection_->right > size.x || selection_->bottom > size.y)) Select({});
  Moved();
}

void ImageView::Show(Rendering rendering) {
  rendering_ = std::move(rendering);
  complaint_.clear();
  Repaint();
}

void ImageView::Complain(const std::wstring& complaint) {
  rendering_.bitmap.reset();
  complaint_ = complaint;
  Repaint();
}

void ImageView::Fit() {
  viewport_.Fit();
  Moved();
}

void ImageView::Zoom(double zoom) {
  viewport_.ZoomTo(zoom, viewport_.center());
  Moved();
}

void ImageView::Step(bool in) {
  viewport_.Step(in, viewport_.center());
  Moved();
}

void ImageView::SetSelecting(bool selecting) {
  selecting_ = selecting;
  if (!selecting) Select({});
}

void ImageView::Select(std::optional<Rect> pixels) {
  if (pixels && pixels->empty()) pixels.reset();
  selection_ = pixels;
  Repaint();
  events_.selected();
}

// Scroll bars as they are needed. One that comes or goes changes the area, and this runs again
// meanwhile: each reads the viewport anew.
void ImageView::Moved() {
  for (const int bar : {SB_HORZ, SB_VERT}) {
    const auto along = [bar](Point point) { return bar == SB_HORZ ? point.x : point.y; };
    const int whole = along(viewport_.scaled()), page = along(viewport_.area());
    SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, along(viewport_.origin()), 0};
    if (has_image_ && whole > page) {
      info.nMax = whole - 1;
      info.nPage = static_cast<UINT>(page);
    }
    SetScrollInfo(handle(), bar, &info, TRUE);
  }
  Repaint();
  events_.moved();
  POINT pointer = {};
  if (pointed_ && GetCursorPos(&pointer) && ScreenToClient(handle(), &pointer)) {
    PointAt({pointer.x, pointer.y});
  }
}

void ImageView::PointAt(Point at) {
  events_.pointed(has_image_ ? viewport_.PixelAt(at) : std::nullopt);
}

void ImageView::Scroll(int bar, int request) {
  SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
  GetScrollInfo(handle(), bar, &info);
  const int page = static_cast<int>(info.nPage);
  int by = 0;
  if (request == SB_LINEUP) by = -kLine;
  if (request == SB_LINEDOWN) by = kLine;
  if (request == SB_PAGEUP) by = -page;
  if (request == SB_PAGEDOWN) by = page;
  if (request == SB_THUMBTRACK) by = info.nTrackPos - info.nPos;
  if (by == 0) return;
  viewport_.PanBy(bar == SB_HORZ ? -by : 0, bar == SB_VERT ? -by : 0);
  Moved();
}

void ImageView::OnWheel(UINT message, WPARAM wparam, LPARAM lparam) {
  const int turned = GET_WHEEL_DELTA_WPARAM(wparam);
  POINT at = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
  ScreenToClient(handle(), &at);
  if ((LOWORD(wparam) & MK_CONTROL) != 0) {
    viewport_.Step(turned > 0, {at.x, at.y});
    return Moved();
  }
  const bool across = message == WM_MOUSEHWHEEL || (LOWORD(wparam) & MK_SHIFT) != 0;
  const int by = turned * 2 * kLine / WHEEL_DELTA * (message == WM_MOUSEHWHEEL ? -1 : 1);
  viewport_.PanBy(across ? by : 0, across ? 0 : by);
  Moved();
}

void ImageView::OnPress(Point at, bool selects) {
  if (!has_image_) return;
  SetFocus(GetParent(handle()));
  SetCapture(handle());
  last_ = at;
  drag_ = selects ? Drag::kSelect : Drag::kPan;
  if (selects) corner_ = viewport_.CornerAt(at);
  SetCursor(LoadCursorW(nullptr, selects ? IDC_CROSS : IDC_SIZEALL));
}

void ImageView::OnDrag(Point at) {
  if (drag_ == Drag::kPan) {
    viewport_.PanBy(at.x - last_.x, at.y - last_.y);
    last_ = at;
    return Moved();
  }
  const Point corner = viewport_.CornerAt(at);
  Select(Rect{std::min(corner.x, corner_.x), std::min(corner.y, corner_.y),
              std::max(corner.x, corner_.x), std::max(corner.y, corner_.y)});
}

void ImageView::Paint(Painting& painting) {
  const RECT area = ClientRect();
  painting.Fill(area, CurrentTheme().ground);
  if (!complaint_.empty() || !has_image_) {
    const std::wstring hint = L"Drop an image here, or open one with Ctrl+O";
    painting.Text((complaint_.empty() ? hint : complaint_).c_str(), area, CurrentTheme().faint_text,
                  DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    return;
  }
  if (!rendering_.bitmap) return;
  // Until the new rendering is there, the last one is shown, moved and stretched.
  const Viewport& old = rendering_.viewport;
  const bool fixed = rendering_.fixed;
  const double ratio = fixed ? 1 : viewport_.zoom() / old.zoom();
  const auto place = [ratio](int x, int old_begin, int begin) {
    return begin + static_cast<int>(std::lround((x - old_begin) * ratio));
  };
  BITMAP shape = {};
  GetObjectW(rendering_.bitmap.get(), sizeof shape, &shape);
  const Point from = old.begin(), to = fixed ? from : viewport_.begin();
  painting.Bitmap(rendering_.bitmap.get(),
                  {place(rendering_.begin.x, from.x, to.x), place(rendering_.begin.y, from.y, to.y),
                   place(rendering_.begin.x + shape.bmWidth, from.x, to.x),
                   place(rendering_.begin.y + shape.bmHeight, from.y, to.y)});
  PaintSelection(painting.dc());
}

// Black and white dashes are visible on any background.
void ImageView::PaintSelection(HDC dc) {
  if (!selection_) return;
  const Rect frame = viewport_.OnScreen(*selection_);
  const HGDIOBJ brush = SelectObject(dc, GetStockObject(NULL_BRUSH));
  for (const auto& [style, color] :
       {std::pair(PS_SOLID, RGB(255, 255, 255)), {PS_DOT, RGB(0, 0, 0)}}) {
    const GdiObject<HPEN> pen(CreatePen(style, 1, color));
    const HGDIOBJ previous = SelectObject(dc, pen.get());
    Rectangle(dc, frame.left - 1, frame.top - 1, frame.right + 1, frame.bottom + 1);
    SelectObject(dc, previous);
  }
  SelectObject(dc, brush);
}

LRESULT ImageView::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      viewport_.SetArea(LOWORD(lparam), HIWORD(lparam));
      Moved();
      return 0;
    case WM_HSCROLL:
      Scroll(SB_HORZ, LOWORD(wparam));
      return 0;
    case WM_VSCROLL:
      Scroll(SB_VERT, LOWORD(wparam));
      return 0;
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL:
      OnWheel(message, wparam, lparam);
      return 0;
    case WM_LBUTTONDOWN:
      OnPress(PointOf(lparam), selecting_ != ((wparam & MK_SHIFT) != 0));
      return 0;
    case WM_MBUTTONDOWN:
      OnPress(PointOf(lparam), false);
      return 0;
    case WM_LBUTTONUP:
    case WM_MBUTTONUP:
      // A click without a drag takes the rectangle away.
      if (drag_ == Drag::kSelect && PointOf(lparam) == last_) Select({});
      ReleaseCapture();
      return 0;
    case WM_CAPTURECHANGED:
      drag_ = Drag::kNone;
      return 0;
    case WM_MOUSEMOVE: {
      TRACKMOUSEEVENT leaving = {sizeof leaving, TME_LEAVE, handle(), 0};
      TrackMouseEvent(&leaving);
      if (drag_ != Drag::kNone) OnDrag(PointOf(lparam));
      pointed_ = true;
      PointAt(PointOf(lparam));
      return 0;
    }
    case WM_MOUSELEAVE:
      pointed_ = false;
      events_.pointed({});
      return 0;
    case WM_SETCURSOR:
      if (LOWORD(lparam) != HTCLIENT) break;
      SetCursor(LoadCursorW(nullptr, selecting_ ? IDC_CROSS : IDC_ARROW));
      return TRUE;
  }
  return Window::OnMessage(message, wparam, lparam);
}

}  // namespace ombview
