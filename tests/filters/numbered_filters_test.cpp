// omb_convolute, omb_emboss, omb_sobel and omb_medianblur against whole-image references.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <string>
#include <tuple>

#include "filters/numbered_kernels.h"
#include "support/failing_memory.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

// Every channel by itself, from its own neighbours; 0 where `half` pixels on a side are missing.
std::vector<uint8_t> Filtered(
    const TestImage& image, int half,
    const std::function<int(size_t channel, const Neighbour& at)>& filter) {
  const Naive source(image);
  return NaiveResult(
      image, true,
      [&](int x, int y) {
        return x >= half && y >= half && x < source.width - half && y < source.height - half;
      },
      [&](int x, int y) {
        Bgr result;
        for (size_t c = 0; c < 3; ++c) {
          result[c] = filter(c, [&](int dx, int dy) { return source.At(x + dx, y + dy)[c]; });
        }
        return result;
      });
}

std::vector<uint8_t> Convoluted(const TestImage& image, uint32_t type, uint32_t color) {
  const int32_t* weights = kNumberedKernel[type - 1].weights;
  const int half = kNumberedKernel[type - 1].half, size = 2 * half + 1;
  const int divisor = std::accumulate(weights, weights + size * size, 0);
  return Filtered(image, half, [&](size_t c, const Neighbour& at) {
    int sum = 0;
    for (int i = 0; i < size * size; ++i) sum += weights[i] * at(i % size - half, i / size - half);
    if (divisor != 0) sum /= divisor;
    return std::clamp(sum + static_cast<int>(color >> (16 - 8 * c) & 255), 0, 255);
  });
}

TEST(Convolute, EveryKernelAgreesWithTheReference) {
  for (const int bits : {8, 24}) {
    const TestImage image = ImageBuilder(bits, 41, 7).Pixels(Noise(1u << bits, 5)).Build();
    for (uint32_t type = 1; type <= 39; ++type) {
      SCOPED_TRACE(type);
      ExpectAtEveryLevel(image, Convoluted(image, type, 0), omb_convolute, type);
    }
  }
}

TEST(Convolute, EveryDepthTableAndSizeAgreesWithTheReference) {
  ForVariedImages([](const TestImage& image) {
    for (const uint32_t type : {2u, 5u, 8u, 13u}) {
      ExpectAtEveryLevel(image, Convoluted(image, type, 0), omb_convolute, type);
    }
  });
}

TEST(Emboss, AgreesWithTheReference) {
  ForVariedImages([](const TestImage& image) {
    for (const auto& relief : {std::pair{0u, 0x808080u}, {5u, 0xFF0012u}, {27u, 0xFF10FE80u}}) {
      const uint32_t direction = relief.first, color = relief.second;
      ExpectAtEveryLevel(image, Convoluted(image, 12 + direction, color), omb_emboss, direction,
                         color);
    }
  });
}

TEST(NumberedFilters, NumbersOutsideTheTablesDoNothing) {
  const Untouched image(24);
  for (const uint32_t type : {0u, 40u, 0xFFFFFFFFu}) omb_convolute(image.get(), type);
  EXPECT_EQ(omb_emboss(image.get(), 28, 0), 0u);
}

TEST(Sobel, AgreesWithTheReference) {
  ForVariedImages([](const TestImage& image) {
    const auto expected = Filtered(image, 1, [](size_t, const Neighbour& at) {
      int s[9];
      for (int i = 0; i < 9; ++i) s[i] = at(i % 3 - 1, i / 3 - 1);
      return std::max({std::abs(((s[0] + s[1] + s[2]) - (s[6] + s[7] + s[8])) / 3),
                       std::abs(((s[0] + s[3] + s[6]) - (s[2] + s[5] + s[8])) / 3),
                       std::abs(((s[0] + s[1] + s[3]) - (s[5] + s[7] + s[8])) / 3),
                       std::abs(((s[1] + s[2] + s[5]) - (s[3] + s[6] + s[7])) / 3)});
    });
    ExpectAtEveryLevel(image, expected, omb_sobel);
  });
}

TEST(MedianBlur, AgreesWithTheReference) {
  ForVariedImages([](const TestImage& image) {
    const auto expected = Filtered(image, 3, [](size_t, const Neighbour& at) {
      int samples[] = {at(0, 0),  at(-2, 0), at(-1, 0), at(1, 0), at(2, 0),
                       at(0, -2), at(0, -1), at(0, 1),  at(0, 2)};
      std::sort(std::begin(samples), std::end(samples));
      return samples[4];
    });
    ExpectAtEveryLevel(image, expected, omb_medianblur);
  });
}

// No second image: a window of rows, and the nearest-entry search's memory where there is a table,
// which is more from so many pixels on that it is little beside them.
TEST(NumberedFilters, LargeImagesTakeLessThanAMebibyte) {
  for (const auto& [bits, height, mebibytes] :
       {std::tuple{1, 2400, 1u}, {8, 300, 1u}, {24, 100, 1u}, {8, 2400, 6u}}) {
    const TestImage image = ImageBuilder(bits, 4000, height).Build();
    const size_t most = size_t{mebibytes} << 20;
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"convolute", [&] { omb_convolute(image.get(), 2); }},
        {"kernal", [&] { omb_DoConvoluteDIB(image.get(), omb_getKERNAL(37), 1, 10); }},
        {"sobel", [&] { omb_sobel(image.get()); }},
        {"medianblur", [&] { omb_medianblur(image.get()); }},
        {"dilate", [&] { omb_dilate(image.get()); }},
        {"open", [&] { omb_mathopen(image.get()); }},
        {"morph", [&, bits = bits] {
           if (bits != 1) omb_DoKernalMorphDIB(image.get(), bits, 2, omb_getKERNAL(2), 1);
         }}};
    for (const auto& [name, call] : calls) {
      MemoryWatch watch(0);
      call();
      watch.Stop();
      EXPECT_LT(watch.peak_bytes(), most) << name << ", " << bits << " bits";
      RecordProperty(std::string(name) + std::to_string(bits),
                     std::to_string(watch.peak_bytes() / 1024));
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
