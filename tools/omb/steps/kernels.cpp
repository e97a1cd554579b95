#include "steps/kernels.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <utility>
#include <vector>

#include "text.h"

namespace omb {

namespace {

using Lines = std::vector<std::string>;

std::string Plain(std::string name) {
  std::erase_if(name, [](char c) { return c == ' ' || c == '-' || c == '_'; });
  return Lowercase(std::move(name));
}

// Columns that UTF-8 takes in a terminal.
size_t ColumnsOf(const std::string& text) {
  return static_cast<size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

std::string PadLeft(const std::string& text, size_t columns) {
  return std::string(columns - std::min(columns, ColumnsOf(text)), ' ') + text;
}

// Weights at their places; several at one place are added up.
Lines Grid(const KERNAL& kernel) {
  const bool weights = HasWeights(kernel);
  std::map<std::pair<int32_t, int32_t>, int64_t> at;
  for (int32_t i = 0; i < kernel.count; ++i) {
    at[{kernel.offsets[2 * i], kernel.offsets[2 * i + 1]}] += kernel.weights[i];
  }
  size_t width = 1;
  for (const auto& [place, weight] : at) width = std::max(width, std::to_string(weight).size());
  Lines lines;
  for (int32_t row = 0; row < kernel.height; ++row) {
    // Rows that are stored later are higher in the picture.
    const int32_t dy = kernel.anchorY - row;
    std::string line;
    for (int32_t dx = -kernel.anchorX; dx < kernel.width - kernel.anchorX; ++dx) {
      const auto entry = at.find({dx, dy});
      const bool anchor = dx == 0 && dy == 0;
      const std::string cell = entry == at.end() ? "·"
                               : weights         ? std::to_string(entry->second)
                                                 : "■";
      line += anchor ? PadLeft("[" + cell + "]", width + 2) : " " + PadLeft(cell, width) + " ";
    }
    lines.push_back(line);
  }
  return lines;
}

std::string Facts(const KERNAL& kernel) {
  if (!HasWeights(kernel)) return std::to_string(kernel.count) + " pixels";
  int64_t sum = 0;
  for (int32_t i = 0; i < kernel.count; ++i) sum += kernel.weights[i];
  std::string facts =
      sum == 0 || sum == 1 ? "sum " + std::to_string(sum) : "divided by " + std::to_string(sum);
  if (kernel.bias != 0) facts += ", then +" + std::to_string(kernel.bias);
  return facts;
}

Lines Drawing(uint32_t number, const KERNAL& kernel) {
  Lines lines = {std::to_string(number) + "  " + kernel.name};
  for (std::string& line : Grid(kernel)) lines.push_back("  " + std::move(line));
  lines.push_back("  " + Facts(kernel));
  return lines;
}

size_t WidthOf(const Lines& lines) {
  size_t width = 0;
  for (const std::string& line : lines) width = std::max(width, ColumnsOf(line));
  return width;
}

std::string SideBySide(const std::vector<Lines>& drawings, size_t gap) {
  size_t height = 0;
  for (const Lines& drawing : drawings) height = std::max(height, drawing.size());
  std::string text;
  for (size_t i = 0; i < height; ++i) {
    std::string line;
    size_t column = 0;
    for (const Lines& drawing : drawings) {
      const std::string part = i < drawing.size() ? drawing[i] : "";
      line += part;
      column += WidthOf(drawing) + gap;
      line += std::string(column - ColumnsOf(line), ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

}  // namespace

const KERNAL* FindKernel(const std::string& text) {
  uint32_t number = 0;
  const char* last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, number);
  if (error == std::errc() && end == last) return omb_getKERNAL(number);
  for (uint32_t i = 0; const KERNAL* kernel = omb_getKERNAL(i); ++i) {
    if (Plain(kernel->name) == Plain(text)) return kernel;
  }
  return nullptr;
}

bool HasWeights(const KERNAL& kernel) {
  return std::any_of(kernel.weights, kernel.weights + kernel.count,
                     [](int32_t weight) { return weight != 0; });
}

std::string DrawKernels(int columns) {
  constexpr size_t kGap = 4;
  std::string text;
  std::vector<Lines> row;
  size_t width = 0;
  const auto flush = [&] {
    if (!text.empty()) text += "\n";
    text += SideBySide(row, kGap);
    row.clear();
    width = 0;
  };
  for (uint32_t i = 0; const KERNAL* kernel = omb_getKERNAL(i); ++i) {
    Lines drawing = Drawing(i, *kernel);
    const size_t needed = WidthOf(drawing);
    if (!row.empty() && width + needed > static_cast<size_t>(columns)) flush();
    width += needed + kGap;
    row.push_back(std::move(drawing));
  }
  flush();
  return text;
}

}  // namespace omb
