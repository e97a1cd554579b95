#include "curve_editor.h"

#include <windowsx.h>

#include <algorithm>
#include <cstdlib>

#include "histogram_pane.h"
#include "theme.h"

namespace ombview {

namespace {

constexpr int kReach = 9;  // levels beside a point that still take hold of it
constexpr COLORREF kCurve = RGB(0x20, 0x6F, 0xD6);

}  // namespace

CurveEditor::CurveEditor(HWND parent, RECT where, std::vector<omb::Histogram> histograms,
                         Events events)
    : histograms_(std::move(histograms)), events_(std::move(events)) {
  Create(L"OmbviewCurve", WS_CHILD | WS_VISIBLE | WS_BORDER, 0, parent);
  MoveWindow(handle(), where.left, where.top, where.right - where.left, where.bottom - where.top,
             FALSE);
}

void CurveEditor::Show(const std::optional<std::array<uint8_t, 256>>& curve,
                       const std::optional<CurvePoints>& points) {
  curve_ = curve;
  if (!held_) points_ = points;
  Repaint();
}

void CurveEditor::ShowLevels(const std::optional<std::array<uint8_t, 256>>& curve, int first,
                             int second) {
  curve_ = curve;
  levels_ = {first, second};
  Repaint();
}

int CurveEditor::X(int level) const { return MulDiv(level, ClientRect().right - 1, 255); }

int CurveEditor::Y(int level) const { return MulDiv(255 - level, ClientRect().bottom - 1, 255); }

CurvePoint CurveEditor::PlaceOf(LPARAM lparam) const {
  const RECT area = ClientRect();
  return {
      std::clamp(MulDiv(GET_X_LPARAM(lparam), 255, std::max(1L, area.right - 1)), 0, 255),
      std::clamp(255 - MulDiv(GET_Y_LPARAM(lparam), 255, std::max(1L, area.bottom - 1)), 0, 255)};
}

void CurveEditor::Press(CurvePoint place) {
  if (levels_) {
    const auto& levels = *levels_;
    held_ = std::abs(levels[0] - place.x) <= std::abs(levels[1] - place.x) ? 0 : 1;
  } else if (points_) {
    held_ = points_->Near(place, kReach);
    if (!held_) held_ = points_->Put(place);
  }
  if (!held_) return;
  SetCapture(handle());
  Drag(place);
}

void CurveEditor::Drag(CurvePoint place) {
  if (levels_) return events_.level(static_cast<int>(*held_), place.x);
  points_->Move(*held_, place);
  events_.curve(*points_);
}

void CurveEditor::Remove(CurvePoint place) {
  const auto point = points_ ? points_->Near(place, kReach) : std::nullopt;
  if (!point) return;
  points_->Remove(*point);
  events_.curve(*points_);
}

void CurveEditor::Paint(Painting& painting) {
  const RECT area = ClientRect();
  const Theme& theme = CurrentTheme();
  painting.Fill(area, theme.plot);
  if (!histograms_.empty()) PlotBars(painting, area, histograms_.front(), theme.line);
  for (int quarter = 1; quarter < 4; ++quarter) {
    const int level = quarter * 64;
    painting.Line(X(level), 0, X(level), area.bottom, theme.line);
    painting.Line(0, Y(level), area.right, Y(level), theme.line);
  }
  painting.Line(X(0), Y(0), X(255), Y(255), theme.line);
  const int width = Scaled(2);
  for (int i = 1; curve_ && i < 256; ++i) {
    const auto at = static_cast<size_t>(i);
    painting.Line(X(i - 1), Y((*curve_)[at - 1]), X(i), Y((*curve_)[at]), kCurve, width);
  }
  if (levels_) {
    painting.Line(X((*levels_)[0]), 0, X((*levels_)[0]), area.bottom, RGB(0, 0, 0), width);
    painting.Line(X((*levels_)[1]), 0, X((*levels_)[1]), area.bottom, RGB(0xE0, 0xA0, 0x20), width);
  }
  if (!points_) return;
  const int r = Scaled(4);
  for (const CurvePoint& point : points_->points()) {
    painting.Fill({X(point.x) - r, Y(point.y) - r, X(point.x) + r + 1, Y(point.y) + r + 1}, kCurve);
    painting.Fill({X(point.x) - r + 2, Y(point.y) - r + 2, X(point.x) + r - 1, Y(point.y) + r - 1},
                  RGB(255, 255, 255));
  }
}

LRESULT CurveEditor::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_LBUTTONDOWN:
      Press(PlaceOf(lparam));
      return 0;
    case WM_MOUSEMOVE:
      if (held_) Drag(PlaceOf(lparam));
      return 0;
    case WM_LBUTTONUP:
      ReleaseCapture();
      return 0;
    case WM_CAPTURECHANGED:
      held_.reset();
      return 0;
    case WM_RBUTTONUP:
    case WM_LBUTTONDBLCLK:
      Remove(PlaceOf(lparam));
      return 0;
  }
  return Window::OnMessage(message, wparam, lparam);
}

}  // namespace ombview
