// Histograms of images, and their plots.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "image.h"

namespace omb {

enum class Channel { kRed = 1, kGreen = 2, kBlue = 3, kGray = 4 };

// How often each value of a channel occurs.
struct Histogram {
  Channel channel;
  std::array<uint64_t, 256> counts{};

  const char* name() const;
  uint64_t total() const;
  int minimum() const;
  int maximum() const;
  int median() const;  // the lower one of two
  double mean() const;
};

// Whether every pixel, or every entry of the color table, is gray.
bool IsGray(const PackedDib* dib);

// Counts an image of any depth and size without changing it. Throws std::runtime_error.
std::vector<Histogram> Measure(const PackedDib* dib, const std::vector<Channel>& channels);

// The scale of a plot. One or two values, such as the white of a page, may dwarf all others: their
// bars are then cut, so that the others can be seen.
struct PlotScale {
  uint64_t top;             // the count that reaches the top
  std::vector<size_t> cut;  // the bars that go beyond
};
PlotScale ScaleFor(const std::vector<uint64_t>& bars);

// Block characters: `bars` of them across, a divisor of 256; with colors where `colored`.
std::string TextPlot(const std::vector<Histogram>& histograms, int bars, bool colored);

// An SVG drawing. The title is UTF-8.
std::string SvgPlot(const std::vector<Histogram>& histograms, const std::string& title);

}  // namespace omb
