// The line at the bottom of the window: what is shown, and what was done or is going on.
#pragma once

#include <array>
#include <string>

#include "window.h"

namespace ombview {

class StatusLine : public Window {
 public:
  enum Field { kShape, kZoom, kPixel, kSelection, kRemark, kFields };

  explicit StatusLine(HWND parent);
  static int Height();

  void Set(Field field, const std::wstring& text);
  // The progress of the work that the remark names; below 0 shows none.
  void SetProgress(double share);

 private:
  void Paint(Painting& painting) override;

  std::array<std::wstring, kFields> texts_;
  double progress_ = -1;
};

}  // namespace ombview
