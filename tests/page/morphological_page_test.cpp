#include <gtest/gtest.h>

#include <algorithm>

#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

// Of every shape and size: its pixels, from a drawing.
std::vector<std::pair<int, int>> Shape(int size, int shape) {
  static const std::vector<std::string> circles[] = {
      {"###", "###", "###"},
      {".###.", "#####", "#####", "#####", ".###."},
      {"..###..", ".#####.", "#######", "#######", "#######", ".#####.", "..###.."}};
  const int r = size + 1;
  std::vector<std::pair<int, int>> pixels;
  for (int dy = -r; dy <= r; ++dy) {
    for (int dx = -r; dx <= r; ++dx) {
      const bool in_circle = circles[size][size_t(dy + r)][size_t(dx + r)] == '#';
      if (shape == 0 || (shape == 1 && in_circle) || (shape == 2 && dy == 0) ||
          (shape == 3 && dx == 0)) {
        pixels.emplace_back(dx, dy);
      }
    }
  }
  return pixels;
}

std::vector<uint8_t> Repeated(const TestImage& image, int size, int shape, bool dilate, int times) {
  return NaiveBytes(image, image.bit_count() / 8, {}, times, [&](const Neighbour& at) {
    int extreme = at(0, 0);
    for (const auto& [dx, dy] : Shape(size, shape)) {
      const int value = at(dx, dy);
      if (value < 0) continue;
      extreme = dilate ? std::max(extreme, value) : std::min(extreme, value);
    }
    return extreme;
  });
}

TEST(MorphologicalPage, EveryModeShapeAndSize) {
  int turn = 0;
  for (const int bits : {8, 24}) {
    for (const bool core : {false, true}) {
      for (const auto& [width, height] : {std::pair{1, 1}, {2, 9}, {9, 5}, {40, 13}, {71, 6}}) {
        ImageBuilder builder(bits, width, height);
        if (core) builder.CoreHeader();
        const TestImage image = builder.Filler(0x5A).Pixels(Noise(1u << bits, 9)).Build();
        for (int shape = 0; shape < 4; ++shape) {
          const int size = ++turn % 3, n = 1 + turn / 3 % 3;
          const auto eroded = Repeated(image, size, shape, false, n);
          const auto dilated = Repeated(image, size, shape, true, n);
          const auto opened = Repeated(WithBytes(image, eroded), size, shape, true, n);
          const auto closed = Repeated(WithBytes(image, dilated), size, shape, false, n);
          for (int mode = 0; mode < 8; ++mode) {
            std::vector<uint8_t> expected = image.Bytes();
            for (size_t i = 0; i < expected.size(); ++i) {
              const int v = expected[i], light = std::max<int>(closed[i], 64);
              const int results[] = {eroded[i],
                                     dilated[i],
                                     opened[i],
                                     closed[i],
                                     dilated[i] - eroded[i],
                                     v - opened[i],
                                     closed[i] - v,
                                     (255 * v + light / 2) / light};
              // Header, table and padding are what no operation changes.
              const auto x = static_cast<int>(i) -
                             static_cast<int>(omb_FindDIBBits(image.get()) - image.raw());
              const int line = width * bits / 8;
              if (x >= 0 && x % ((line + 3) / 4 * 4) < line) {
                expected[i] = static_cast<uint8_t>(results[mode]);
              }
            }
            SCOPED_TRACE(testing::Message()
                         << bits << " bits, " << width << " x " << height << ", size " << size
                         << ", shape " << shape << ", n " << n << ", mode " << mode);
            ExpectAtEveryLevel(image, expected, omb_MorphologicalPage, size, shape, n, mode);
          }
        }
      }
    }
  }
}

TEST(MorphologicalPage, IsKernelDrivenMorphologyThatReachesFar) {
  constexpr uint32_t kRecords[3][3] = {{29, 30, 31}, {0, 1, 2}, {24, 25, 26}};
  const TestImage image = ImageBuilder(24, 61, 33).Pixels(Noise(1 << 24, 4)).Build();
  for (int shape = 0; shape < 3; ++shape) {
    for (int mode = 0; mode < 4; ++mode) {
      const int size = mode % 3;
      for (const int n : {4, 13, INT32_MAX}) {
        TestImage expected = image.Clone(), actual = image.Clone();
        ASSERT_EQ(
            omb_DoKernalMorphDIB(expected.get(), 24, mode, omb_getKERNAL(kRecords[shape][size]), n),
            1);
        EXPECT_EQ(omb_MorphologicalPage(actual.get(), size, shape, n, mode), 1);
        EXPECT_EQ(actual.Bytes(), expected.Bytes()) << shape << ", " << mode << ", " << n;
      }
    }
  }
}

TEST(MorphologicalPage, RefusesAndLeavesAlone) {
  const Untouched image(24, 40, 20);
  for (const int bad : {-1, 8}) {
    for (const int n : {0, 1}) {
      EXPECT_EQ(omb_MorphologicalPage(image.get(), bad, 0, n, 0), 0);
      EXPECT_EQ(omb_MorphologicalPage(image.get(), 0, bad, n, 0), 0);
      EXPECT_EQ(omb_MorphologicalPage(image.get(), 0, 0, n, bad), 0);
    }
  }
  EXPECT_EQ(omb_MorphologicalPage(image.get(), 3, 0, 1, 0), 0);
  EXPECT_EQ(omb_MorphologicalPage(image.get(), 0, 4, 1, 0), 0);
  EXPECT_EQ(omb_MorphologicalPage(nullptr, 0, 0, 1, 0), 0);
  EXPECT_EQ(omb_MorphologicalPage(image.get(), 2, 0, 0, 7), 1);
  for (const int bits : {1, 4, 16, 32}) {
    TestImage other = ImageBuilder(bits, 9, 8).Build();
    EXPECT_EQ(omb_MorphologicalPage(other.get(), 0, 0, 0, 0), 0);
  }
}

}  // namespace
}  // namespace ombrilo::test
