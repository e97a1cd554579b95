// omb_scale: an image in another size.
//
// Pixel x of the new image is sampled at source position x * (W / new width), in single precision
// and without a half-pixel offset.
#include <algorithm>

#include "core/bytes.h"
#include "core/replacement.h"
#include "geometry/strip_sampler.h"

namespace ombrilo {

namespace {

// One axis: positions of the new image's columns or rows.
class Axis {
 public:
  Axis(int32_t size, uint32_t new_size)
      : size_(size),
        factor_(static_cast<float>(size) / static_cast<float>(static_cast<int32_t>(new_size))) {}

  // Positions may reach the source's size itself by rounding.
  Position operator[](int32_t at) const {
    const float position = static_cast<float>(at) * factor_;
    if (position >= 2147483648.0f) return {size_, 0};
    const int32_t whole = static_cast<int32_t>(position);
    return {std::min(whole, size_), position - static_cast<float>(whole)};
  }

 private:
  int32_t size_;
  float factor_;
};

// False when memory ran out.
bool ScaleRows(Sampler& sampler, int32_t width, int32_t height, size_t stride, uint8_t* rows) {
  const Axis columns(sampler.width(), width), lines(sampler.height(), height);
  const int32_t most = std::min(width, StripSampler::kMost);
  int32_t span = 0;
  for (int32_t x = 0; x < width; x += std::min(most, width - x)) {
    span = std::max(span, columns[x + std::min(most, width - x) - 1].whole - columns[x].whole);
  }
  StripSampler strip(sampler, most, span, height);
  const Buffer<Position> positions = NewScratchBuffer<Position>(static_cast<size_t>(most));
  if (!strip || !positions) return false;
  for (int32_t x = 0, count; x < width; x += count) {
    count = std::min(most, width - x);
    for (int32_t i = 0; i < count; ++i) positions[static_cast<size_t>(i)] = columns[x + i];
    strip.Begin(x, positions.get(), count);
    for (int32_t y = 0; y < height; ++y) {
      strip.Sample(lines[y], lines[y + 1], y, rows + static_cast<size_t>(y) * stride);
    }
  }
  return true;
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_scale(PackedDib** image, uint32_t width, uint32_t height, uint32_t mode) {
  using namespace ombrilo;
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source) return 0;
  // The same size is "not done".
  if (width == omb_DIBWidth(*image) && height == omb_DIBHeight(*image)) return 0;
  Sampler sampler(*source, mode, uint64_t{width} * height);
  if (!sampler) return 0;
  NewBlock block = NewBlock::Resized(
      *source, width, height,
      sampler.Paints() ? NewBlock::Rows::kPixelsComeNext : NewBlock::Rows::kZeroed);
  if (!block) return 0;
  // A core header gets a width of 32 bits too, the upper half of which replaces its height.
  StoreU32(block.bytes() + kInfoWidth, width);
  // Not block.dib(): a core header no longer tells the height.
  if (width != 0 && height != 0 && sampler.Paints() &&
      !ScaleRows(sampler, static_cast<int32_t>(width), static_cast<int32_t>(height),
                 static_cast<size_t>(StrideOf(width, source->bit_count())),
                 block.bytes() + source->prefix_size())) {
    return 0;
  }
  return block.Replace(image);
}
