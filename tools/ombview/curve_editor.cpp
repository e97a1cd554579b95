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

omb::Histogram SumOf(const std::vector<omb::Histogram>& histograms) {
  omb::Histogram sum = {};
  for (const omb::Histogram& histogram : histograms) {
    for (size_t i = 0; i < sum.counts.size(); ++i) sum.counts[i] += histogram.counts[i];
  }
  return sum;
}

}  // namespace

CurveEditor::CurveEditor(HWND parent, RECT where, const std::vector<omb::Histogram>& histograms,
                         Events events)
    : histogram_(SumOf(histograms)), events_(std::move(events)) {
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

// With room for the points at its corners.
RECT CurveEditor::Plot() const {
  RECT plot = ClientRect();
  InflateRect(&plot, -Scaled(6), -Scaled(6));
  return plot;
}

int CurveEditor::X(int level) const {
  const RECT plot = Plot();
  return plot.left + MulDiv(level, plot.right - plot.left - 1, 255);
}

int CurveEditor::Y(int level) const {
  const RECT plot = Plot();
  return plot.top + MulDiv(255 - level, plot.bottom - plot.top - 1, 255);
}

CurvePoint CurveEditor::PlaceOf(LPARAM lparam) const {
  const RECT plot = Plot();
  const auto level = [](int at, LONG size) {
    return std::clamp(MulDiv(at, 255, std::max<LONG>(1, size - 1)), 0, 255);
  };
  return {level(GET_X_LPARAM(lparam) - plot.left, plot.right - plot.left),
          level(plot.bottom - 1 - GET_Y_LPARAM(lparam), plot.bottom - plot.top)};
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
  const RECT plot = Plot();
  const Theme& theme = CurrentTheme();
  painting.Fill(ClientRect(), theme.plot);
  PlotBars(painting, plot, histogram_, theme.line);
  for (int quarter = 0; quarter <= 4; ++quarter) {
    const int level = std::min(quarter * 64, 255);
    painting.Line(X(level), plot.top, X(level), plot.bottom, theme.line);
    painting.Line(plot.left, Y(level), plot.right, Y(level), theme.line);
  }
  painting.Line(X(0), Y(0), X(255), Y(255), theme.line);
  const int width = Scaled(2);
  for (int i = 1; curve_ && i < 256; ++i) {
    const auto at = static_cast<size_t>(i);
    painting.Line(X(i - 1), Y((*curve_)[at - 1]), X(i), Y((*curve_)[at]), kCurve, width);
  }
  if (levels_) {
    const auto line = [&](int level, COLORREF color) {
      painting.Line(X(level), plot.top, X(level), plot.bottom, color, width);
    };
    line((*levels_)[0], theme.bar_text);
    line((*levels_)[1], RGB(0xE0, 0xA0, 0x20));
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
