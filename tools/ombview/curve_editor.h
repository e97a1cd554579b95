// A square over a histogram in which a tone curve is drawn by dragging its points, or two levels by
// dragging their lines.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "histogram.h"
#include "tone_curve.h"
#include "window.h"

namespace ombview {

class CurveEditor : public Window {
 public:
  // `edited` hears the points or the two levels when the person has moved them.
  struct Events {
    std::function<void(const CurvePoints&)> curve;
    std::function<void(int which, int level)> level;
  };

  // The histogram of all channels is drawn behind the curve.
  CurveEditor(HWND parent, RECT where, const std::vector<omb::Histogram>& histograms,
              Events events);

  // What to show: the curve that the step makes, and what of it can be dragged.
  void Show(const std::optional<std::array<uint8_t, 256>>& curve,
            const std::optional<CurvePoints>& points);
  void ShowLevels(const std::optional<std::array<uint8_t, 256>>& curve, int first, int second);

 private:
  void Paint(Painting& painting) override;
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  CurvePoint PlaceOf(LPARAM lparam) const;
  RECT Plot() const;
  int X(int level) const;
  int Y(int level) const;
  void Press(CurvePoint place);
  void Drag(CurvePoint place);
  void Remove(CurvePoint place);

  omb::Histogram histogram_;
  Events events_;
  std::optional<std::array<uint8_t, 256>> curve_;
  std::optional<CurvePoints> points_;
  std::optional<std::array<int, 2>> levels_;
  std::optional<size_t> held_;
};

}  // namespace ombview
