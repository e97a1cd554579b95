// docs/performance.md and its chart.
#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "rows/row_functions.h"
#include "run.h"

namespace ombrilo::bench {

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

bool ReplaceMeasured(const std::string& mark, const std::string& text) {
  const std::string path = "docs/performance.md";
  const std::string first = "<!-- " + mark + " -->\n", last = "<!-- /" + mark + " -->";
  std::ifstream old(path);
  std::string page((std::istreambuf_iterator<char>(old)), {});
  const size_t from = page.find(first), to = page.find(last);
  if (from == std::string::npos || to == std::string::npos) {
    std::fprintf(stderr, "%s: run from the source folder\n", path.c_str());
    return false;
  }
  page.replace(from + first.size(), to - from - first.size(), text);
  return static_cast<bool>(std::ofstream(path) << page);
}

namespace {

// How many rows are ahead with these row functions, and by how much.
std::string Summary(const std::vector<Row>& rows, const std::string& set, double Row::*ratio) {
  double logarithms = 0;
  int count = 0, ahead = 0;
  for (const Row& row : rows) {
    if (row.*ratio <= 0) continue;
    logarithms += std::log(row.*ratio);
    ++count;
    ahead += row.*ratio > 1;
  }
  return Format("- %s: %d of %d rows are ahead of their peer; geometric mean %.2f\n", set.c_str(),
                ahead, count, std::exp(logarithms / std::max(count, 1)));
}

std::string Cells(double time, double ratio) {
  return Format(" %.3f |", time) + (ratio > 0 ? Format(" %.2f |", ratio) : " |");
}

// `beside` names the row functions of the other run; empty for none.
std::string Table(const std::vector<Row>& rows, const std::string& beside) {
  const std::string own = simd::Active().name;
  std::string text = Machine() + ".\n\n";
  std::string head = "| row | peer |", line = "|---|---|";
  if (!beside.empty()) {
    text += Summary(rows, beside, &Row::beside_ratio);
    head += " " + beside + ": ns per pixel | peer / ours |";
    line += "---:|---:|";
  }
  text += Summary(rows, own, &Row::ratio) + "\n![Ratios](performance.svg)\n\n";
  text += head + " " + own + ": ns per pixel | peer / ours | of memcpy |\n";
  text += line + "---:|---:|---:|\n";
  for (const Row& row : rows) {
    text += "| " + row.name + " | " + (row.ratio > 0 ? row.peer.name : "") + " |";
    if (!beside.empty()) text += Cells(row.beside_time, row.beside_ratio);
    text += Cells(row.time, row.ratio);
    text += row.share > 0 ? Format(" %.0f %% |\n", 100 * row.share) : " |\n";
  }
  return text;
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

bool SaveRun(const std::vector<Row>& rows, const std::string& path) {
  std::ofstream file(path);
  file << simd::Active().name << '\n';
  for (const Row& row : rows) file << row.time << ' ' << row.ratio << ' ' << row.name << '\n';
  return static_cast<bool>(file.flush());
}

bool WriteReport(std::vector<Row> rows, const std::string& beside) {
  std::string set, name;
  if (!beside.empty()) {
    std::ifstream run(beside);
    if (!std::getline(run, set)) return std::fprintf(stderr, "%s: no run\n", beside.c_str()), false;
    double time, ratio;
    while (run >> time >> ratio && std::getline(run >> std::ws, name)) {
      for (Row& row : rows) {
        if (row.name == name) row.beside_time = time, row.beside_ratio = ratio;
      }
    }
  }
  return ReplaceMeasured("measured", Table(rows, set)) &&
         static_cast<bool>(std::ofstream("docs/performance.svg") << Chart(rows));
}

}  // namespace ombrilo::bench
