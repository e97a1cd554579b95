// omb_diffuse: frosted glass. Every pixel becomes a random one of those around it.
//
// Ahead of the row that is written runs a ring of copies of the rows that pixels can come from.
#include <algorithm>
#include <cstring>

#ifdef _WIN32
#include <windows.h>
#else
#include <ctime>
#endif

#include "core/buffer.h"
#include "core/packed_dib.h"
#include "core/pixels.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

uint64_t SeedOfClock() {
#ifdef _WIN32
  LARGE_INTEGER ticks = {};
  QueryPerformanceCounter(&ticks);
  return static_cast<uint64_t>(ticks.QuadPart);
#else
  std::timespec now = {};
  std::timespec_get(&now, TIME_UTC);
  return static_cast<uint64_t>(now.tv_sec) * 1000000000u + static_cast<uint64_t>(now.tv_nsec);
#endif
}

// The smallest number whose square is at least `area`.
uint32_t SideOf(uint32_t area) {
  uint32_t side = 1;
  while (uint64_t{side} * side < area) ++side;
  return side;
}

class Diffusion {
 public:
  // Takes the memory; false when there is none.
  Diffusion(const Dib& dib, uint32_t area, uint64_t seed) : dib_(dib) {
    scatter_.seed = seed;
    scatter_.area = area;
    scatter_.side = SideOf(area);
    scatter_.before = (scatter_.side - 1) / 2;
    scatter_.width = static_cast<uint32_t>(dib.width());
    scatter_.height = static_cast<uint32_t>(dib.pixel_rows());
    after_ = (area - 1) / scatter_.side - scatter_.before;
    scatter_.ring = std::min(scatter_.height, scatter_.before + 1 + after_);
    ring_ = NewScratchBuffer<uint8_t>(scatter_.ring * dib.stride());
  }
  explicit operator bool() const { return ring_ != nullptr; }

  void Run() {
    uint32_t copied = 0;
    for (uint32_t y = 0; y < scatter_.height; ++y) {
      const uint32_t needed = std::min(scatter_.height, y + after_ + 1);
      for (; copied < needed; ++copied) {
        std::memcpy(ring_.get() + copied % scatter_.ring * dib_.stride(),
                    dib_.row(static_cast<int32_t>(copied)), dib_.stride());
      }
      scatter_.y = y;
      for (uint32_t x = 0; x < scatter_.width; x += std::min(kRun, scatter_.width - x)) {
        scatter_.x = x;
        Pick(std::min(kRun, scatter_.width - x));
      }
    }
  }

 private:
  static constexpr uint32_t kRun = 1024;  // pixels; whole bytes at any depth

  void Pick(size_t count) const {
    const simd::RowFunctions& rows = simd::Active();
    const uint16_t bits = dib_.bit_count();
    int32_t column[kRun], row[kRun], offset[kRun];
    uint8_t shift[kRun];
    rows.scatter(scatter_, count, column, row);
    const auto stride = static_cast<int32_t>(dib_.stride());
    FindPixels(column, 0, row, stride, bits, count, offset, shift);
    const auto bytes = static_cast<int32_t>(scatter_.ring) * stride;
    uint8_t* const to = dib_.row(static_cast<int32_t>(scatter_.y)) + size_t{scatter_.x} * bits / 8;
    switch (bits) {
      case 1:
        return rows.pick1(ring_.get(), bytes, offset, shift, 0, count, to);
      case 8:
        return rows.pick8(ring_.get(), bytes, offset, 0, count, to);
      case 24:
        return rows.pick24(ring_.get(), bytes, offset, 0, count, to);
    }
    uint8_t indices[kRun];
    for (size_t i = 0; i < count; ++i) {
      indices[i] = static_cast<uint8_t>(ring_[static_cast<size_t>(offset[i])] >> shift[i]);
    }
    PackIndices(indices, bits, count, to);
  }

  const Dib& dib_;
  simd::Scatter scatter_ = {};
  uint32_t after_;
  Buffer<uint8_t> ring_;
};

}  // namespace

}  // namespace ombrilo

uint32_t omb_diffuse_seed(PackedDib* image, uint32_t area, uint64_t seed) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || (!dib->indexed() && dib->bit_count() != 24)) return 0;
  const auto width = static_cast<uint64_t>(dib->width());
  if (area < 2 || area > width * width) return 0;
  Diffusion diffusion(*dib, area, seed);
  if (!diffusion) return 0;
  diffusion.Run();
  return 1;
}

uint32_t omb_diffuse(PackedDib* image, uint32_t area) {
  return omb_diffuse_seed(image, area, ombrilo::SeedOfClock());
}
