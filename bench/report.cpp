// docs/performance.md and its chart.
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "run.h"

namespace ombrilo::bench {

namespace {

std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Format(const char* format, ...) {
  char text[512];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  return text;
}

std::string Machine() {
  std::ifstream info("/proc/cpuinfo");
  std::string line, model = "unknown processor";
  while (std::getline(info, line)) {
    if (line.starts_with("model name")) model = line.substr(line.find(": ") + 2);
  }
  std::string text = model + ", GCC " __VERSION__;
#ifdef OMBRILO_HAVE_OPENCV
  text += ", OpenCV " CV_VERSION;
#endif
#ifdef OMBRILO_HAVE_LEPTONICA
  char* version = getLeptonicaVersion();
  text += std::string(", ") + version;
  lept_free(version);
#endif
  return text;
}

std::string Table(const std::vector<Row>& rows) {
  std::string text =
      "| row | ns per pixel | peer | its ns per pixel | ratio | of memcpy |\n"
      "|---|---:|---|---:|---:|---:|\n";
  double logarithms = 0;
  int count = 0, ahead = 0;
  for (const Row& row : rows) {
    text += Format("| %s | %.3f |", row.name.c_str(), row.time);
    if (row.ratio > 0) {
      text += Format(" %s | %.3f | %.2f |", row.peer.name.c_str(), row.time * row.ratio, row.ratio);
      logarithms += std::log(row.ratio);
      ++count;
      ahead += row.ratio > 1;
    } else {
      text += " | | |";
    }
    text += row.share > 0 ? Format(" %.0f %% |\n", 100 * row.share) : " |\n";
  }
  return Format(
             "%s.\n\n%d of %d rows are ahead of their peer; the geometric mean of the ratios is "
             "%.2f.\n\n![Ratios](performance.svg)\n\n",
             Machine().c_str(), ahead, count, std::exp(logarithms / std::max(count, 1))) +
         text;
}

// Ratios as bars on a logarithmic scale.
std::string Chart(const std::vector<Row>& rows) {
  constexpr int kLine = 14, kNames = 250, kOctave = 60, kTop = 20;
  std::string bars;
  int y = kTop;
  for (const Row& row : rows) {
    if (row.ratio <= 0) continue;
    const double octaves = std::clamp(std::log2(row.ratio), -1.0, 7.0);
    const double left = kNames + kOctave * (1 + std::min(octaves, 0.0));
    bars += Format(
        "<text x='%d' y='%d' text-anchor='end'>%s</text>"
        "<rect x='%.1f' y='%d' width='%.1f' height='10' fill='%s'/>"
        "<text x='%.1f' y='%d'>%.2f</text>\n",
        kNames - 6, y + 9, row.name.c_str(), left, y, kOctave * std::max(std::abs(octaves), 0.02),
        row.ratio > 1 ? "#2a7f62" : "#b5462f", kNames + kOctave * (1 + std::max(octaves, 0.0)) + 4,
        y + 9, row.ratio);
    y += kLine;
  }
  std::string text = Format(
      "<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d' "
      "font-family='sans-serif' font-size='10'>\n"
      "<rect width='100%%' height='100%%' fill='white'/>\n",
      kNames + 9 * kOctave, y + 10);
  for (int octave = -1; octave <= 7; ++octave) {
    const int x = kNames + kOctave * (1 + octave);
    text += Format(
        "<text x='%d' y='12' text-anchor='middle'>%g</text>"
        "<path d='M%d %dV%d' stroke='%s'/>\n",
        x, std::exp2(octave), x, kTop - 4, y, octave == 0 ? "#333" : "#ccc");
  }
  return text + bars + "</svg>\n";
}

}  // namespace

bool WriteReport(const std::vector<Row>& rows) {
  const std::string path = "docs/performance.md";
  const std::string first = "<!-- measured -->\n", last = "<!-- /measured -->";
  std::ifstream old(path);
  std::string text((std::istreambuf_iterator<char>(old)), {});
  const size_t from = text.find(first), to = text.find(last);
  if (from == std::string::npos || to == std::string::npos) {
    std::fprintf(stderr, "%s: run from the source folder\n", path.c_str());
    return false;
  }
  text.replace(from + first.size(), to - from - first.size(), Table(rows));
  std::ofstream(path) << text;
  std::ofstream("docs/performance.svg") << Chart(rows);
  return true;
}

}  // namespace ombrilo::bench
