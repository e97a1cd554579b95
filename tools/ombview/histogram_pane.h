// The part of the window that tells how often each value of a channel occurs.
#pragma once

#include <string>
#include <vector>

#include "histogram.h"
#include "window.h"

namespace ombview {

class HistogramPane : public Window {
 public:
  explicit HistogramPane(HWND parent);

  // Measures the image, when the pane is seen. Null for none.
  void Show(const PackedDib* image);
  static int Width();

 private:
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void MeasureImage();
  void Paint();

  const PackedDib* image_ = nullptr;
  bool measured_ = false;
  std::vector<omb::Histogram> histograms_;
  std::wstring complaint_;
};

}  // namespace ombview
