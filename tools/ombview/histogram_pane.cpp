#include "histogram_pane.h"

#include <algorithm>
#include <cmath>

#include "theme.h"
#include "wide.h"

namespace ombview {

namespace {

COLORREF ColorOf(omb::Channel channel) {
  constexpr COLORREF kColors[] = {RGB(0xE8, 0x5B, 0x5B), RGB(0x5B, 0xC4, 0x78),
                                  RGB(0x5C, 0x8F, 0xF0), RGB(0x90, 0x90, 0x96)};
  return kColors[static_cast<int>(channel) - 1];
}

std::wstring StatisticsOf(const omb::Histogram& histogram) {
  wchar_t text[80];
  swprintf(text, ARRAYSIZE(text), L"mean %.1f   median %d   %d–%d", histogram.mean(),
           histogram.median(), histogram.minimum(), histogram.maximum());
  return text;
}

}  // namespace

void PlotBars(Painting& painting, const RECT& plot, const omb::Histogram& histogram,
              COLORREF color) {
  painting.Fill(plot, CurrentTheme().plot);
  const int width = plot.right - plot.left, height = plot.bottom - plot.top;
  for (int quarter = 1; quarter < 4; ++quarter) {
    const LONG x = plot.left + width * quarter / 4;
    painting.Fill({x, plot.top, x + 1, plot.bottom}, CurrentTheme().line);
  }
  const auto& counts = histogram.counts;
  const uint64_t top = omb::ScaleFor({counts.begin(), counts.end()}).top;
  for (int x = 0; x < width; ++x) {
    const auto first = static_cast<size_t>(x * 256 / width);
    const auto last = std::max(first + 1, static_cast<size_t>((x + 1) * 256 / width));
    const uint64_t count = *std::max_element(counts.data() + first, counts.data() + last);
    if (count == 0) continue;
    const double share = static_cast<double>(count) / static_cast<double>(top);
    const auto bar = static_cast<LONG>(std::clamp(std::lround(share * height), 1L, LONG{height}));
    painting.Fill({plot.left + x, plot.bottom - bar, plot.left + x + 1, plot.bottom}, color);
  }
}

HistogramPane::HistogramPane(HWND parent) {
  Create(L"OmbviewHistogram", WS_CHILD | WS_VISIBLE, 0, parent);
}

int HistogramPane::Width() { return Scaled(256) + 2 * Scaled(14); }

void HistogramPane::Show(std::vector<omb::Histogram> histograms) {
  histograms_ = std::move(histograms);
  complaint_.clear();
  Repaint();
}

void HistogramPane::Complain(const std::wstring& complaint) {
  histograms_.clear();
  complaint_ = complaint;
  Repaint();
}

std::vector<omb::Histogram> HistogramsOf(const PackedDib* image) {
  using omb::Channel;
  return omb::IsGray(image) ? omb::Measure(image, {Channel::kGray})
                            : omb::Measure(image, {Channel::kRed, Channel::kGreen, Channel::kBlue});
}

void HistogramPane::Paint(Painting& painting) {
  const RECT area = ClientRect();
  const int margin = Scaled(14), line = Scaled(20);
  painting.Fill(area, CurrentTheme().bar);
  painting.Fill({0, 0, 1, area.bottom}, CurrentTheme().line);
  RECT rest = {area.left + margin, area.top + margin, area.right - margin, area.bottom - margin};
  painting.Text(complaint_.c_str(), rest, CurrentTheme().faint_text, DT_WORDBREAK);
  const int count = static_cast<int>(histograms_.size());
  const int each = count == 0 ? 0 : (rest.bottom - rest.top) / count;
  const int plot_height = std::clamp(each - 2 * line - margin, 1, Scaled(150));
  for (const omb::Histogram& histogram : histograms_) {
    RECT plot = rest;
    plot.top += line;
    plot.bottom = plot.top + plot_height;
    painting.Text(Wide(histogram.name()).c_str(), rest, CurrentTheme().bar_text);
    PlotBars(painting, plot, histogram, ColorOf(histogram.channel));
    rest.top = plot.bottom + Scaled(3);
    painting.Text(StatisticsOf(histogram).c_str(), rest, CurrentTheme().faint_text);
    rest.top += line + margin;
  }
}

}  // namespace ombview
