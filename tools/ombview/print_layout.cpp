#include "print_layout.h"

#include <algorithm>

namespace ombview {

namespace {

constexpr double kMargin = 0.4;  // inches

// The length on both sides of the middle that the printable part and the margins leave.
double Room(int sheet, int first, int end, int dots) {
  const double middle = sheet / 2.0;
  const double margin = std::max({kMargin * dots, double(first), double(sheet - end)});
  return std::max(1.0, 2 * (middle - margin));
}

}  // namespace

Rect PlaceOn(const Paper& paper, int width, int height) {
  const auto [size, printable, dots] = paper;
  // A printer's dots need not be square.
  const double across = Room(size.x, printable.left, printable.right, dots.x) / dots.x;
  const double down = Room(size.y, printable.top, printable.bottom, dots.y) / dots.y;
  const double inches = std::min(across / width, down / height);  // of a pixel
  const int w = std::max(1, static_cast<int>(inches * width * dots.x + 0.5));
  const int h = std::max(1, static_cast<int>(inches * height * dots.y + 0.5));
  const int left = (size.x - w) / 2, top = (size.y - h) / 2;
  return {left, top, left + w, top + h};
}

}  // namespace ombview
