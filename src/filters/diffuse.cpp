// omb_diffuse: frosted glass. Every pixel becomes a random one of those around it.
//
// The rows that pixels can come from are copied to a ring ahead of the row that is written.
#include <algorithm>
#include <cstring>
#include <limits>

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

// Pixels are copied as bytes: an index, or blue, green and red.
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
    scatter_.channels = dib.indexed() ? 1 : 3;
    const uint64_t pitch = uint64_t{scatter_.width} * scatter_.channels;
    const uint64_t size = scatter_.ring * pitch + kSlack;
    if (size > std::numeric_limits<int32_t>::max()) return;
    scatter_.pitch = static_cast<uint32_t>(pitch);
    ring_ = NewScratchBuffer<uint8_t>(static_cast<size_t>(size));
    size_ = static_cast<int32_t>(size);
  }
  explicit operator bool() const { return ring_ != nullptr; }

  void Run() {
    uint32_t copied = 0;
    for (uint32_t y = 0; y < scatter_.height; ++y) {
      const uint32_t needed = std::min(scatter_.height, y + after_ + 1);
      for (; copied < needed; ++copied) Copy(copied);
      scatter_.y = y;
      for (uint32_t x = 0; x < scatter_.width; x += std::min<uint32_t>(kRun, scatter_.width - x)) {
        scatter_.x = x;
        Pick(std::min<uint32_t>(kRun, scatter_.width - x));
      }
    }
  }

 private:
  static constexpr size_t kSlack = 4;  // pixels of three bytes are read as four

  void Copy(uint32_t y) const {
    const uint8_t* const from = dib_.row(static_cast<int32_t>(y));
    uint8_t* const to = ring_.get() + size_t{y % scatter_.ring} * scatter_.pitch;
    if (dib_.indexed()) {
      UnpackIndices(from, dib_.bit_count(), scatter_.width, to);
    } else {
      std::memcpy(to, from, scatter_.pitch);
    }
  }

  void Pick(size_t count) const {
    const simd::RowFunctions& rows = simd::Active();
    int32_t offset[kRun + simd::kRunPadding];
    rows.scatter(scatter_, count, offset);
    std::fill_n(offset + count, simd::kRunPadding, offset[count - 1]);
    const auto channels = static_cast<int>(scatter_.channels);
    const simd::PixelPlaces places = {ring_.get(), size_, offset, channels, false};
    uint8_t* const to =
        dib_.row(static_cast<int32_t>(scatter_.y)) + size_t{scatter_.x} * dib_.bit_count() / 8;
    if (dib_.bit_count() >= 8) return rows.pick(places, count, to);
    uint8_t indices[kRun];
    rows.pick(places, count, indices);
    PackIndices(indices, dib_.bit_count(), count, to);
  }

  const Dib& dib_;
  simd::Scatter scatter_ = {};
  uint32_t after_;
  int32_t size_ = 0;  // of the ring, in bytes
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
