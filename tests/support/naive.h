// Whole-image, pixel-by-pixel references for neighbourhood filters, apart from the library's own
// walks, pixel access and nearest-entry search. Rows count as they are stored: bottom row first.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <type_traits>
#include <vector>

#include "support/image.h"

namespace ombrilo::test {

using Bgr = std::array<int, 3>;

constexpr Bgr BgrOf(uint32_t rgb) {
  return {static_cast<int>(rgb & 255), static_cast<int>(rgb >> 8 & 255),
          static_cast<int>(rgb >> 16 & 255)};
}
constexpr uint32_t RgbOf(const Bgr& bgr) { return Rgb(bgr[2], bgr[1], bgr[0]); }

// The lowest index of the entries that are nearest to the color.
int Nearest(const std::vector<Bgr>& palette, const Bgr& color);

// A copy of the image with other bytes.
TestImage WithBytes(const TestImage& image, const std::vector<uint8_t>& bytes);

// The colors of an image of 1, 4, 8 or 24 bits.
struct Naive {
  explicit Naive(const TestImage& image);

  const Bgr& At(int x, int y) const { return pixels[static_cast<size_t>(y * width + x)]; }
  Bgr& At(int x, int y) { return pixels[static_cast<size_t>(y * width + x)]; }

  int bits, width, height;
  std::vector<Bgr> pixels;
  std::vector<Bgr> palette;  // 2, 16 or 256 entries; what follows a short table, then zeros
};

// The block's bytes after every pixel for which `computed(x, y)` has become the color or nearest
// entry of `result(x, y)`. With `zeroed`, all other bits of the rows are 0; otherwise they stay.
std::vector<uint8_t> NaiveResult(const TestImage& image, bool zeroed,
                                 const std::function<bool(int x, int y)>& computed,
                                 const std::function<Bgr(int x, int y)>& result);

// A neighbour of a byte, in pixels: 0 outside the block, -1 outside the image.
using Neighbour = std::function<int(int dx, int dy)>;

// The block, seen as pixels of `step` bytes, after `passes` over all bytes whose pixels have this
// many others on each side; each byte in the block becomes `value` of what was there before the
// pass.
struct Margins {
  int64_t before, after, left, right;
};
std::vector<uint8_t> NaiveBytes(const TestImage& image, int step, const Margins& margins,
                                int passes, const std::function<int(const Neighbour&)>& value);

// An image of noise: both header kinds, depths 1, 4, 8 and 24, gray, colored and short tables, and
// sizes that are smaller than a neighbourhood, degenerate, and around vector lengths.
void ForVariedImages(const std::function<void(const TestImage&)>& test);

// Once at every instruction level.
void AtEveryLevel(const std::function<void()>& test);

// Calls a function with a copy of the image, or with the address of one, and these arguments at
// every instruction level: its result, where it has one, must be 1, and the copy's bytes
// `expected`.
template <class Function, class... Arguments>
void ExpectAtEveryLevel(const TestImage& image, const std::vector<uint8_t>& expected,
                        Function function, Arguments... arguments) {
  AtEveryLevel([&] {
    TestImage copy = image.Clone();
    if constexpr (std::is_invocable_v<Function, PackedDib**, Arguments...>) {
      EXPECT_TRUE(function(copy.ref(), arguments...) == 1);
    } else if constexpr (std::is_void_v<std::invoke_result_t<Function, PackedDib*, Arguments...>>) {
      function(copy.get(), arguments...);
    } else {
      EXPECT_TRUE(function(copy.get(), arguments...) == 1);
    }
    EXPECT_EQ(copy.Bytes(), expected);
  });
}

}  // namespace ombrilo::test
