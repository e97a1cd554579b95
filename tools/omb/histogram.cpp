#include "histogram.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>

#include "files/pixels_out.h"

namespace omb {

namespace {

// The library counts sides of no more than 16 bits. Pieces of this size also keep copies small.
constexpr uint32_t kPieceWidth = 32768, kPieceHeight = 512;

// Counts a copy: measuring gray turns what is measured gray.
void AddPiece(const PackedDib* dib, uint32_t x, uint32_t y, std::vector<Histogram>& histograms) {
  const uint32_t width = std::min(kPieceWidth, omb_DIBWidth(dib) - x);
  const uint32_t height = std::min(kPieceHeight, omb_DIBHeight(dib) - y);
  for (Histogram& histogram : histograms) {
    const Image piece(reinterpret_cast<PackedDib*>(
        omb_cpydibrect(dib, static_cast<int32_t>(x), y, width, height)));
    int32_t counts[256];
    if (!piece ||
        omb_getchannelhistogram(piece.get(), counts, static_cast<int>(histogram.channel)) == 0) {
      throw std::runtime_error("the library cannot measure this image, or memory ran out");
    }
    for (size_t i = 0; i < 256; ++i) histogram.counts[i] += static_cast<uint32_t>(counts[i]);
  }
}

}  // namespace

const char* Histogram::name() const {
  static const char* const names[] = {"red", "green", "blue", "gray"};
  return names[static_cast<int>(channel) - 1];
}

uint64_t Histogram::total() const {
  return std::accumulate(counts.begin(), counts.end(), uint64_t{0});
}

int Histogram::minimum() const {
  int value = 0;
  while (value < 255 && counts[static_cast<size_t>(value)] == 0) ++value;
  return value;
}

int Histogram::maximum() const {
  int value = 255;
  while (value > 0 && counts[static_cast<size_t>(value)] == 0) --value;
  return value;
}

int Histogram::median() const {
  const uint64_t half = (total() + 1) / 2;
  int value = 0;
  for (uint64_t seen = counts[0]; value < 255 && seen < half;) {
    seen += counts[static_cast<size_t>(++value)];
  }
  return value;
}

double Histogram::mean() const {
  double sum = 0;
  for (size_t i = 0; i < 256; ++i) sum += static_cast<double>(i * counts[i]);
  return sum / static_cast<double>(std::max<uint64_t>(total(), 1));
}

bool IsGray(const PackedDib* dib) {
  const Picture picture(dib);
  if (picture.indexed()) return picture.AllGray();
  std::vector<uint8_t> row(3 * static_cast<size_t>(picture.width()));
  for (int32_t y = 0; y < picture.height(); ++y) {
    picture.ColorRow(y, row.data());
    for (size_t i = 0; i < row.size(); i += 3) {
      if (row[i] != row[i + 1] || row[i] != row[i + 2]) return false;
    }
  }
  return true;
}

std::vector<Histogram> Measure(const PackedDib* dib, const std::vector<Channel>& channels) {
  std::vector<Histogram> histograms;
  for (const Channel channel : channels) histograms.push_back({channel});
  for (uint32_t y = 0; y < omb_DIBHeight(dib); y += kPieceHeight) {
    for (uint32_t x = 0; x < omb_DIBWidth(dib); x += kPieceWidth) AddPiece(dib, x, y, histograms);
  }
  return histograms;
}

}  // namespace omb
