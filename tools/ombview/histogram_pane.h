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

  void Show(std::vector<omb::Histogram> histograms);
  void Complain(const std::wstring& complaint);
  const std::vector<omb::Histogram>& histograms() const { return histograms_; }
  static int Width();

 private:
  void Paint(Painting& painting) override;

  std::vector<omb::Histogram> histograms_;
  std::wstring complaint_;
};

// What the pane shows of an image: one histogram for gray ones, three for others. Throws
// std::runtime_error.
std::vector<omb::Histogram> HistogramsOf(const PackedDib* image);

// The bars of a histogram, as high as the highest value under each column of the plot.
void PlotBars(Painting& painting, const RECT& plot, const omb::Histogram& histogram,
              COLORREF color);

}  // namespace ombview
