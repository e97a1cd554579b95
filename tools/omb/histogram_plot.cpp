// Plots of histograms: block characters for terminals, SVG for documents.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>

#include "histogram.h"
#include "text.h"

namespace omb {

namespace {

// Sums of neighbouring values, one for each bar.
std::vector<uint64_t> Bars(const Histogram& histogram, size_t bars) {
  std::vector<uint64_t> sums(bars, 0);
  for (size_t i = 0; i < 256; ++i) sums[i * bars / 256] += histogram.counts[i];
  return sums;
}

std::string Statistics(const Histogram& histogram) {
  char text[128];
  std::snprintf(text, sizeof text, "mean %.1f, median %d, min %d, max %d", histogram.mean(),
                histogram.median(), histogram.minimum(), histogram.maximum());
  return text;
}

std::string Percentage(uint64_t part, uint64_t total) {
  char text[32];
  std::snprintf(
      text, sizeof text, "%.1f%%",
      100.0 * static_cast<double>(part) / static_cast<double>(std::max<uint64_t>(total, 1)));
  return text;
}

// "cut at the top: 252-255 (95.2%)"; nothing when no bar is cut.
std::string CutNote(const Histogram& histogram, const std::vector<uint64_t>& bars,
                    const std::vector<size_t>& cut) {
  std::string note;
  const size_t width = 256 / bars.size();
  for (const size_t bar : cut) {
    note += note.empty() ? "cut at the top: " : ", ";
    note += std::to_string(bar * width);
    if (width > 1) note += "-" + std::to_string((bar + 1) * width - 1);
    note += " (" + Percentage(bars[bar], histogram.total()) + ")";
  }
  return note;
}

std::string PadLeft(std::string text, size_t width) {
  text.insert(0, width - std::min(width, text.size()), ' ');
  return text;
}

const char* TerminalColor(Channel channel) {
  static const char* const colors[] = {"\033[31m", "\033[32m", "\033[34m", ""};
  return colors[static_cast<int>(channel) - 1];
}

constexpr size_t kMargin = 12;  // for counts

// "0      64      128     192    255", each where its value is.
std::string TextAxis(size_t bars) {
  std::string axis(bars, ' ');
  for (const int value : {0, 64, 128, 192, 255}) {
    const std::string label = std::to_string(value);
    const size_t at = static_cast<size_t>(value) * bars / 256;
    axis.replace(std::min(at, bars - label.size()), label.size(), label);
  }
  return axis;
}

std::string TextPlotOf(const Histogram& histogram, size_t bar_count, int rows, bool colored) {
  static const char* const kEighths[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
  const std::vector<uint64_t> bars = Bars(histogram, bar_count);
  const PlotScale scale = ScaleFor(bars);
  std::vector<int> heights;  // in eighths of a row; at least 1 for what occurs
  for (const uint64_t bar : bars) {
    const double share = std::min(1.0, static_cast<double>(bar) / static_cast<double>(scale.top));
    heights.push_back(std::max(bar > 0 ? 1 : 0, static_cast<int>(std::lround(share * 8 * rows))));
  }
  std::string plot;
  plot += PadLeft(histogram.name(), kMargin - 2) + "  " + Statistics(histogram) + "\n";
  for (int row = rows - 1; row >= 0; --row) {
    const std::string count = row == rows - 1 ? Grouped(scale.top) : row == 0 ? "0" : "";
    plot += PadLeft(count, kMargin - 2) + " │";
    if (colored) plot += TerminalColor(histogram.channel);
    for (const int height : heights) plot += kEighths[std::clamp(height - 8 * row, 0, 8)];
    if (colored) plot += "\033[0m";
    plot += "\n";
  }
  plot += std::string(kMargin - 1, ' ') + "└";
  for (size_t i = 0; i < bar_count; ++i) plot += "─";
  plot += "\n" + std::string(kMargin, ' ') + TextAxis(bar_count) + "\n";
  const std::string note = CutNote(histogram, bars, scale.cut);
  if (!note.empty()) plot += std::string(kMargin, ' ') + note + "\n";
  return plot;
}

// A rounded step that divides the range up to `top` into two to five parts.
uint64_t TickStep(uint64_t top) {
  uint64_t power = 1;
  while (power * 10 <= top / 2) power *= 10;
  for (const uint64_t factor : {5, 2}) {
    if (power * factor <= top / 2) return power * factor;
  }
  return power;
}

const char* DrawingColor(Channel channel) {
  static const char* const colors[] = {"#d62f2f", "#2a9d48", "#2f5fd6", "#4a4a4a"};
  return colors[static_cast<int>(channel) - 1];
}

// The drawing's measures.
constexpr int kWidth = 800, kLeft = 86, kTop = 64, kPlotWidth = 680, kPlotHeight = 300;
constexpr int kRight = kLeft + kPlotWidth, kBottom = kTop + kPlotHeight, kLegend = kBottom + 76;

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

std::string Label(double x, double y, const char* anchor, const std::string& text) {
  return "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" text-anchor=\"" + anchor + "\">" +
         Escaped(text) + "</text>\n";
}

std::string Line(double x1, double y1, double x2, double y2, const char* color) {
  return "<path d=\"M" + Number(x1) + " " + Number(y1) + "L" + Number(x2) + " " + Number(y2) +
         "\" stroke=\"" + color + "\"/>\n";
}

std::string Curve(const Histogram& histogram, uint64_t top) {
  const double step = kPlotWidth / 256.0;
  std::string path = "M" + std::to_string(kLeft) + " " + std::to_string(kBottom);
  for (size_t i = 0; i < 256; ++i) {
    const double share =
        std::min(1.0, static_cast<double>(histogram.counts[i]) / static_cast<double>(top));
    path += "V" + Number(std::round((kBottom - share * kPlotHeight) * 100) / 100) + "H" +
            Number(kLeft + step * static_cast<double>(i + 1));
  }
  path += "V" + std::to_string(kBottom) + "Z";
  const std::string color = DrawingColor(histogram.channel);
  return "<path d=\"" + path + "\" fill=\"" + color + "\" fill-opacity=\".28\" stroke=\"" + color +
         "\" stroke-width=\"1.2\" stroke-linejoin=\"round\"/>\n";
}

}  // namespace

PlotScale ScaleFor(const std::vector<uint64_t>& bars) {
  std::vector<uint64_t> tallest = bars;
  std::sort(tallest.begin(), tallest.end(), std::greater<>());
  PlotScale scale = {std::max<uint64_t>(tallest[0], 1), {}};
  const uint64_t third = tallest.size() > 2 ? tallest[2] : 0;
  if (third == 0 || tallest[0] <= 2 * third) return scale;
  scale.top = third;
  for (size_t i = 0; i < bars.size(); ++i) {
    if (bars[i] > third) scale.cut.push_back(i);
  }
  return scale;
}

std::string TextPlot(const std::vector<Histogram>& histograms, int bars, bool colored) {
  std::string plot;
  for (const Histogram& histogram : histograms) {
    if (!plot.empty()) plot += "\n";
    plot +=
        TextPlotOf(histogram, static_cast<size_t>(bars), histograms.size() > 1 ? 7 : 12, colored);
  }
  return plot;
}

std::string SvgPlot(const std::vector<Histogram>& histograms, const std::string& title) {
  uint64_t top = 1;
  for (const Histogram& histogram : histograms) {
    top = std::max(top, ScaleFor(Bars(histogram, 256)).top);
  }
  const int height = kLegend + 24 * static_cast<int>(histograms.size());
  const std::string size =
      "width=\"" + std::to_string(kWidth) + "\" height=\"" + std::to_string(height) + "\"";
  std::string svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" " + size + " viewBox=\"0 0 " +
                    std::to_string(kWidth) + " " + std::to_string(height) +
                    "\" font-family=\"system-ui, 'DejaVu Sans', sans-serif\" font-size=\"13\" "
                    "fill=\"#4c4842\">\n<rect " +
                    size +
                    " fill=\"#fcfbf9\"/>\n<g fill=\"#23211e\" font-size=\"17\" "
                    "font-weight=\"600\">" +
                    Label(kLeft, 36, "start", title) + "</g>\n";
  for (uint64_t count = 0; count <= top; count += TickStep(top)) {
    const double y = kBottom - kPlotHeight * static_cast<double>(count) / static_cast<double>(top);
    svg += Line(kLeft, y, kRight, y, count == 0 ? "#8a8478" : "#e6e2da");
    svg += Label(kLeft - 10, y + 4.5, "end", Grouped(count));
  }
  for (const Histogram& histogram : histograms) svg += Curve(histogram, top);
  for (const int value : {0, 32, 64, 96, 128, 160, 192, 224, 255}) {
    const double x = kLeft + kPlotWidth / 256.0 * (value + 0.5);
    svg += Line(x, kBottom, x, kBottom + 5, "#8a8478");
    svg += Label(x, kBottom + 21, "middle", std::to_string(value));
  }
  svg += Label(kLeft + kPlotWidth / 2, kBottom + 44, "middle", "value");
  svg += "<g transform=\"translate(18 " + std::to_string(kTop + kPlotHeight / 2) +
         ") rotate(-90)\">" + Label(0, 0, "middle", "pixels") + "</g>\n";
  int y = kLegend;
  for (const Histogram& histogram : histograms) {
    const std::vector<uint64_t> bars = Bars(histogram, 256);
    std::vector<size_t> cut;
    for (size_t i = 0; i < bars.size(); ++i) {
      if (bars[i] > top) cut.push_back(i);
    }
    const std::string note = CutNote(histogram, bars, cut);
    svg += "<rect x=\"" + std::to_string(kLeft) + "\" y=\"" + std::to_string(y - 11) +
           "\" width=\"12\" height=\"12\" rx=\"2\" fill=\"" + DrawingColor(histogram.channel) +
           "\"/>\n";
    svg += Label(kLeft + 20, y, "start", histogram.name());
    svg += Label(kLeft + 76, y, "start", Statistics(histogram) + (note.empty() ? "" : "; " + note));
    y += 24;
  }
  return svg + "</svg>\n";
}

}  // namespace omb
