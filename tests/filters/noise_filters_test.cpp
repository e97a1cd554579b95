// Frosted glass and mosaic, pixel by pixel.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/failing_memory.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

// Indices, or colors, with rows from the bottom as they are stored.
uint32_t Stored(const TestImage& image, int64_t x, int64_t y) {
  return image.Pixel(static_cast<int>(x), image.height() - 1 - static_cast<int>(y));
}

uint64_t Random(uint64_t z) {
  z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
  z = (z ^ z >> 27) * 0x94D049BB133111EBu;
  return z ^ z >> 31;
}

TEST(Diffuse, EachPixelIsTheOneThatTheSeedChooses) {
  constexpr uint64_t kSeed = 0xF00DFACE12345678u;
  ForVariedImages([](const TestImage& image) {
    const int64_t width = image.width(), height = image.height();
    for (const uint32_t area : {2u, 3u, 5u, 9u, 10u, 49u, 4000u, 0xFFFFFFFFu}) {
      TestImage copy = image.Clone();
      const bool fits = width >= 2 && area <= static_cast<uint64_t>(width * width);
      EXPECT_EQ(omb_diffuse_seed(copy.get(), area, kSeed), fits) << width << " " << area;
      if (!fits) {
        EXPECT_EQ(copy.Bytes(), image.Bytes());
        continue;
      }
      int64_t side = 1;
      while (side * side < area) ++side;
      const int64_t before = (side - 1) / 2;
      for (int64_t y = 0; y < height; ++y) {
        for (int64_t x = 0; x < width; ++x) {
          const auto place = static_cast<uint64_t>(y * width + x + 1);
          const uint64_t z = Random(kSeed + place * 0x9E3779B97F4A7C15u);
          const auto r = static_cast<int64_t>((z >> 32) * area >> 32);
          const int64_t column = std::clamp<int64_t>(x + r % side - before, 0, width - 1);
          const int64_t row = std::clamp<int64_t>(y + r / side - before, 0, height - 1);
          ASSERT_EQ(Stored(copy, x, y), Stored(image, column, row)) << x << " " << y << " " << area;
        }
      }
    }
  });
}

// What is not a pixel stays, and all levels agree on what is.
TEST(Diffuse, PaddingStays) {
  for (const int bits : {1, 4, 8, 24}) {
    const TestImage image =
        ImageBuilder(bits, 1027, 3).Pixels([](int, int) { return 1u; }).Filler(0xA5).Build();
    ExpectAtEveryLevel(image, image.Bytes(), omb_diffuse, 25u);
  }
}

TEST(Diffuse, TheClockGivesOtherPicturesOfTheSamePixels) {
  TestImage image = ImageBuilder(24, 64, 64).Pixels(Noise(1 << 24, 1)).Build();
  TestImage other = image.Clone();
  const std::vector<uint32_t> before = image.Pixels();
  EXPECT_EQ(omb_diffuse(image.get(), 9) & omb_diffuse(other.get(), 9), 1u);
  EXPECT_NE(image.Pixels(), other.Pixels());
  for (int y = 1; y < 63; ++y) {
    for (int x = 1; x < 63; ++x) {
      bool found = false;
      for (int k = 0; k < 9; ++k) {
        const int column = x + k % 3 - 1, row = y + k / 3 - 1;
        found = found || image.Pixel(x, y) == before[static_cast<size_t>(64 * row + column)];
      }
      ASSERT_TRUE(found) << x << " " << y;
    }
  }
}

// Rows in reach, not the image.
TEST(Diffuse, TakesMemoryForItsReach) {
  TestImage image = ImageBuilder(24, 400, 300).Build();
  MemoryWatch watch(0);
  omb_diffuse(image.get(), 9);
  watch.Stop();
  EXPECT_LT(watch.peak_bytes(), 4u * 1200);
}

TEST(Granulate, EveryPixelIsTheMeanOfItsBlock) {
  constexpr int kBlocks[][2] = {{1, 1}, {2, 2}, {3, 5}, {16, 7}, {1, 300}, {300, 1}, {9999, 9999}};
  ForVariedImages([&](const TestImage& image) {
    const Naive naive(image);
    for (const auto& block : kBlocks) {
      const int width = block[0], height = block[1];
      std::vector<Bgr> means(naive.pixels.size());
      for (int top = 0; top < naive.height; top += height) {
        for (int left = 0; left < naive.width; left += width) {
          // Rows of the reference count from the bottom.
          const int right = std::min(left + width, naive.width);
          const int end = naive.height - top, first = std::max(end - height, 0);
          const int64_t n = int64_t{right - left} * (end - first);
          for (size_t c = 0; c < 3; ++c) {
            int64_t sum = n / 2;
            for (int y = first; y < end; ++y) {
              for (int x = left; x < right; ++x) sum += naive.At(x, y)[c];
            }
            for (int y = first; y < end; ++y) {
              for (int x = left; x < right; ++x) {
                means[static_cast<size_t>(y * naive.width + x)][c] = static_cast<int>(sum / n);
              }
            }
          }
        }
      }
      const auto expected = NaiveResult(
          image, false, [](int, int) { return true; },
          [&](int x, int y) { return means[static_cast<size_t>(y * naive.width + x)]; });
      ExpectAtEveryLevel(image, expected, omb_granulate, static_cast<uint32_t>(width),
                         static_cast<uint32_t>(height));
    }
  });
}

// More rows than 16 bits hold the sums of, and a block of more pixels than single precision counts.
TEST(Granulate, LargeBlocks) {
  const auto level = [](int x, int y) { return y % 7 == 0 ? Rgb(254, x, 3) : Rgb(255, x, 3); };
  TestImage image = ImageBuilder(24, 256, 700).Pixels(level).Build();
  EXPECT_EQ(omb_granulate(image.get(), 0xFFFFFFFF, 0xFFFFFFFF), 1u);
  EXPECT_EQ(image.Pixels(), std::vector<uint32_t>(256 * 700, Rgb(255, 128, 3)));
}

TEST(NoiseFilters, Refusals) {
  for (const int bits : {1, 8, 24, 32}) {
    const Untouched image(bits);
    EXPECT_EQ(omb_granulate(image.get(), 0, 3) | omb_granulate(image.get(), 3, 0), 0u);
    EXPECT_EQ(omb_diffuse(image.get(), 1) | omb_diffuse_seed(image.get(), 82, 0), 0u);
    if (bits != 32) continue;
    EXPECT_EQ(omb_granulate(image.get(), 2, 2) | omb_diffuse(image.get(), 9), 0u);
  }
}

}  // namespace
}  // namespace ombrilo::test
