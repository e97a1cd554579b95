#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numeric>
#include <string>

#include "morphology/kernal.h"
#include "rows/row_functions.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

// Rank order takes bytes for columns at all depths but 24 bits.
std::vector<uint8_t> Naive(const TestImage& image, const Margins& band, bool rank, int passes,
                           const std::function<int(const Neighbour&)>& value) {
  const int step = image.bit_count() == 24 ? 3 : 1;
  if (!rank && step == 1 && image.bit_count() != 8) return image.Bytes();
  return NaiveBytes(image, step, band, passes, value);
}

std::vector<uint8_t> NaiveRank(const TestImage& image, int r, int passes, int percentile) {
  return Naive(image, {r, r, r, r}, true, passes, [=](const Neighbour& p) {
    std::vector<int> square;
    for (int dy = -r; dy <= r; ++dy) {
      for (int dx = -r; dx <= r; ++dx) square.push_back(p(dx, dy));
    }
    std::sort(square.begin(), square.end());
    return square[(square.size() - 1) * static_cast<size_t>(percentile) / 100];
  });
}

int Root(int a, int b) { return static_cast<int>(std::sqrt(static_cast<double>(a * a + b * b))); }

std::vector<uint8_t> NaiveSobel(const TestImage& image) {
  return Naive(image, {1, 1, 1, 1}, false, 1, [](const Neighbour& p) {
    const int gy = p(-1, -1) + 2 * p(0, -1) + p(1, -1) - p(-1, 1) - 2 * p(0, 1) - p(1, 1);
    const int gx = p(1, -1) + 2 * p(1, 0) + p(1, 1) - p(-1, -1) - 2 * p(-1, 0) - p(-1, 1);
    return std::min(Root(gx, gy), 255);
  });
}

std::vector<uint8_t> NaiveRoberts(const TestImage& image) {
  return Naive(image, {1, 0, 0, 1}, false, 1, [](const Neighbour& p) {
    return Root(p(0, 0) - p(1, -1), p(0, -1) - p(1, 0)) & 255;
  });
}

// Depths, and sizes around neighbourhoods and vectors.
void ForPages(const std::function<void(const TestImage&)>& test) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const auto& [width, height] :
         {std::pair{1, 9}, {2, 2}, {3, 3}, {6, 8}, {7, 7}, {9, 6}, {71, 9}, {140, 8}}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, " << width << " x " << height);
      test(ImageBuilder(bits, width, height)
               .Pixels(Noise(bits < 32 ? 1u << bits : ~0u, 3))
               .Filler(0x77)
               .Colors(VariedColors(bits <= 8 ? 1 << bits : 0, 2))
               .Build());
    }
  }
}

TEST(EnhancePage, RankOrderSortsEverySquare) {
  ForPages([](const TestImage& image) {
    for (int size = 0; size <= 2; ++size) {
      // Every rank of nine, and the ends.
      for (const int percentile : {0, 3, 13, 25, 38, 50, 64, 75, 88, 99, 100}) {
        const int passes = percentile == 64 ? 2 : 1;
        ExpectAtEveryLevel(image, NaiveRank(image, size + 1, passes, percentile), omb_EnhancePage,
                           size, passes, 1, 2, percentile, 8, 9, 9);
      }
      ExpectAtEveryLevel(image, NaiveRank(image, size + 1, 3, 50), omb_EnhancePage, size, 3, 0, 0,
                         -7, 7, 0, 0);
    }
  });
}

// Columns are sorted in blocks of 768 bytes.
TEST(EnhancePage, RankOrderOfLongRows) {
  const TestImage image = ImageBuilder(24, 1400, 8).Pixels(Noise(1 << 24, 7)).Build();
  for (int size = 0; size <= 2; ++size) {
    for (const int percentile : {25, 50}) {
      ExpectAtEveryLevel(image, NaiveRank(image, size + 1, 1, percentile), omb_EnhancePage, size, 1,
                         1, 2, percentile, 8, 9, 9);
    }
  }
}

// Exchanges that rank all squares of zeros and ones rank all others. Columns count, so each has all
// its ones on one side; every five neighbouring counts are somewhere.
TEST(EnhancePage, RankOrderOfZerosAndOnes) {
  constexpr int kWidth = 5 * 6 * 6 * 6 * 6 * 6;
  constexpr int kPowers[] = {1, 6, 36, 216, 1296};
  const auto ones = [&](int x) { return x / 5 / kPowers[x % 5] % 6; };
  const auto source = [&](int x, int y) { return y < ones(x) ? 1u : 0u; };
  const TestImage image = ImageBuilder(8, kWidth, 5).Pixels(source).Build();
  for (int rank = 0; rank < 25; ++rank) {
    const auto ranked = [&](int x, int y) {
      if (y != 2 || x < 2 || x >= kWidth - 2) return source(x, y);
      const int all = ones(x - 2) + ones(x - 1) + ones(x) + ones(x + 1) + ones(x + 2);
      return all >= 25 - rank ? 1u : 0u;
    };
    const TestImage expected = ImageBuilder(8, kWidth, 5).Pixels(ranked).Build();
    ExpectAtEveryLevel(image, expected.Bytes(), omb_EnhancePage, 1, 1, 1, 2, (100 * rank + 23) / 24,
                       8, 9, 9);
  }
}

const KERNAL* Named(const std::string& name) {
  for (const KERNAL* extra : {&kGauss3x3, &kGauss5x5, &kGauss7x7}) {
    if (name == extra->name) return extra;
  }
  for (uint32_t i = 0; i < 45; ++i) {
    if (name == omb_getKERNAL(i)->name) return omb_getKERNAL(i);
  }
  return nullptr;
}

TEST(PageFilters, HandOverToTheNamedKernels) {
  const TestImage image = ImageBuilder(24, 15, 14).Pixels(Noise(1u << 24, 4)).Build();
  const auto expect = [&](const std::string& name, const std::function<int(PackedDib*)>& call) {
    ASSERT_NE(Named(name), nullptr) << name;
    TestImage expected = image.Clone(), actual = image.Clone();
    ASSERT_EQ(omb_DoConvoluteDIB(expected.get(), Named(name), 2, 7), 1);
    EXPECT_EQ(call(actual.get()), 1) << name;
    EXPECT_EQ(actual.Bytes(), expected.Bytes()) << name;
    EXPECT_NE(actual.Bytes(), image.Bytes()) << name;
  };
  const char* const kSizes[] = {"3x3", "5x5", "7x7", "9x9"};
  for (int size = 0; size <= 2; ++size) {
    const char* const names[] = {"lopass ",  "hipass ",  "gauss ",
                                 "higauss ", "unsharp ", "unsharp "};
    for (int mode = 0; mode < 6; ++mode) {
      expect(std::string(names[mode]) + kSizes[size + (mode == 3)],
             [&](PackedDib* dib) { return omb_EnhancePage(dib, size, 2, 7, 11, 12, mode, 2, 0); });
    }
    for (const auto& [mode, name] :
         {std::pair{3, "laplace "}, {5, "horzedge "}, {6, "vertedge "}}) {
      expect(std::string(name) + kSizes[size], [&, mode = mode](PackedDib* dib) {
        return omb_EdgePage(dib, size, 2, 7, mode, 1, 2);
      });
    }
  }
  expect("sculpt ", [](PackedDib* dib) { return omb_EdgePage(dib, -9, 2, 7, 2); });
}

TEST(PageFilters, RefuseUnknownSelections) {
  const Untouched image(24, 40, 20);
  const auto enhance = [&](int size, int passes, int percentile, int mode, int scope) {
    return omb_EnhancePage(image.get(), size, passes, 10, 0, percentile, mode, scope, 0);
  };
  for (const int mode : {-1, 4, 6, 9}) EXPECT_EQ(enhance(0, 1, 50, mode, 1), 0);
  for (const int mode : {-1, 4, 7}) EXPECT_EQ(omb_EdgePage(image.get(), 0, 1, 10, mode), 0);
  for (int mode = 0; mode <= 8; ++mode) {
    for (const int size : {-1, 3}) {
      EXPECT_EQ(enhance(size, 1, 50, mode, 2), 0);
      if (mode > 2) {
        EXPECT_EQ(omb_EdgePage(image.get(), size, 1, 10, mode), 0);
      }
    }
    EXPECT_EQ(omb_EnhancePage(nullptr, 0, 1, 10, 0, 50, mode, 2, 0), 0);
    EXPECT_EQ(omb_EdgePage(nullptr, 0, 1, 10, mode), 0);
  }
  for (const int percentile : {-1, 101, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(enhance(0, 1, percentile, 8, 0), 0);
    EXPECT_EQ(enhance(0, 0, percentile, 8, 0), 0);
  }
  for (const int passes : {0, -5}) EXPECT_EQ(enhance(2, passes, 50, 7, 0), 1);
}

TEST(EdgePage, GradientMagnitudes) {
  ForPages([](const TestImage& image) {
    ExpectAtEveryLevel(image, NaiveSobel(image), omb_EdgePage, 77, 0, 0, 0);
    ExpectAtEveryLevel(image, NaiveRoberts(image), omb_EdgePage, -77, 0, 0, 1);
  });
}

// Every pair of differences, at every level.
TEST(EdgePage, RootsAreTruncatedExactly) {
  std::vector<uint8_t> own(512), before(512), result(256);
  std::iota(own.begin(), own.begin() + 256, uint8_t{0});
  for (int i = 0; simd::Supported()[i] != nullptr; ++i) {
    for (int b = 0; b < 256; ++b) {
      std::fill_n(before.begin(), 256, static_cast<uint8_t>(b));
      simd::Supported()[i]->roberts_magnitude(before.data(), own.data(), 256, 256, result.data());
      for (int a = 0; a < 256; ++a) {
        ASSERT_EQ(result[static_cast<size_t>(a)], Root(a, b) & 255) << a << ", " << b;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
