#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>

#include "core/bytes.h"
#include "core/packed_dib.h"
#include "morphology/kernal.h"
#include "rows/row_functions.h"
#include "support/failing_memory.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

// A block's bytes as page filters take them, with sizes from the header.
struct Block {
  std::vector<uint8_t> bytes;
  bool core;
  int width, height, bits;
  int64_t bits_times_planes, start;

  explicit Block(const TestImage& image) : bytes(image.Bytes()) {
    core = LoadU32(image.raw()) != 40;
    width = image.width();
    height = image.height();
    bits = image.bit_count();
    start = omb_FindDIBBits(image.get()) - image.raw();
    bits_times_planes = int64_t{LoadU16(&bytes[12])} * LoadU16(&bytes[14]);
  }
  int64_t Stride(int64_t w) const {
    return static_cast<int32_t>(static_cast<uint32_t>(bits_times_planes * w + 31)) / 32 * 4;
  }
  bool Inside(int64_t at) const { return at < static_cast<int64_t>(bytes.size()); }
  int Get(int64_t at) const { return Inside(at) ? bytes[static_cast<size_t>(at)] : 0; }
  void Set(int64_t at, int value) {
    if (Inside(at)) bytes[static_cast<size_t>(at)] = static_cast<uint8_t>(value);
  }
};

// The bytes afterwards, or none for a refusal.
std::vector<uint8_t> NaiveRank(const TestImage& image, int n, int passes, int percentile) {
  Block block(image);
  const int r = n / 2, step = block.bits == 24 ? 3 : 1;
  const int height = block.height & 0xFFFF;
  int width = block.width & 0xFFFF;
  const int64_t stride = block.Stride(width) & 0xFFFF;
  if (stride == 0) return block.bytes;
  if (step == 3 && 3 * width > stride) return {};
  if (step == 1) width = static_cast<int>(std::min<int64_t>(width, stride));
  for (int pass = 0; pass < passes; ++pass) {
    const Block before = block;
    for (int64_t y = r; y < height - r; ++y) {
      for (int x = r * step; x < (width - r) * step; ++x) {
        std::vector<int> square;
        for (int dy = -r; dy <= r; ++dy) {
          for (int dx = -r; dx <= r; ++dx) {
            square.push_back(before.Get(block.start + (y + dy) * stride + x + dx * step));
          }
        }
        std::sort(square.begin(), square.end());
        block.Set(block.start + y * stride + x,
                  square[static_cast<size_t>((n * n - 1) * percentile / 100)]);
      }
    }
  }
  return block.bytes;
}

std::vector<uint8_t> NaiveGradient(const TestImage& image, int mode) {
  Block block(image);
  const Block before = block;
  const int step = block.bits == 24 ? 3 : 1;
  const int64_t stride = block.Stride(LoadU32(&block.bytes[4]));
  if ((block.bits != 8 && block.bits != 24) || block.width < 2 || block.height < 2) {
    return block.bytes;
  }
  if (stride == 0) return block.bytes;
  if (stride < block.width * step) return {};
  for (int64_t y = 0; y < block.height; ++y) {
    for (int x = 0; x < block.width * step; ++x) {
      const auto p = [&](int dx, int dy) {
        return before.Get(block.start + (y + dy) * stride + x + dx * step);
      };
      const bool frame = y == 0 || x >= (block.width - 1) * step;
      if (mode == 1 && !frame) {
        const int a = p(0, 0) - p(1, -1), b = p(0, -1) - p(1, 0);
        block.Set(block.start + y * stride + x,
                  static_cast<int>(std::sqrt(static_cast<double>(a * a + b * b))) & 255);
      }
      if (mode == 0 && !frame && x >= step && y < block.height - 1) {
        const int gy = p(-1, -1) + 2 * p(0, -1) + p(1, -1) - p(-1, 1) - 2 * p(0, 1) - p(1, 1);
        const int gx = p(1, -1) + 2 * p(1, 0) + p(1, 1) - p(-1, -1) - 2 * p(-1, 0) - p(-1, 1);
        const double root = std::sqrt(static_cast<double>(gx * gx + gy * gy));
        block.Set(block.start + y * stride + x, root > 255 ? 255 : static_cast<int>(root));
      }
    }
  }
  return block.bytes;
}

// Runs `operation` on a copy at every instruction level. No bytes are a refusal.
void Expect(const TestImage& image, const std::vector<uint8_t>& expected, const std::string& what,
            const std::function<int32_t(PackedDib*)>& operation) {
  for (int level = 0; rows::Supported()[level] != nullptr; ++level) {
    rows::Use(rows::Supported()[level]);
    TestImage copy = image.Clone();
    EXPECT_EQ(operation(copy.get()), expected.empty() ? 0 : 1) << what;
    ASSERT_EQ(copy.Bytes(), expected.empty() ? image.Bytes() : expected) << what << ", " << level;
  }
  rows::Use(nullptr);
}

// Depths, header kinds, planes, and sizes around neighbourhoods and vectors.
void ForPages(const std::function<void(const TestImage&, const std::string&)>& test) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const auto& [width, height] :
         {std::pair{1, 9}, {2, 2}, {3, 3}, {6, 8}, {7, 7}, {9, 6}, {71, 9}, {140, 8}}) {
      for (const int planes : {1, 0, 2, -1}) {
        if (planes != 1 && width != 9 && width != 71) continue;
        ImageBuilder builder(bits, width, height);
        builder.Pixels(Noise(bits < 32 ? 1u << bits : ~0u, 3)).Filler(0x77);
        if (bits <= 8) builder.Colors(VariedColors(1 << bits, 2));
        if (planes < 0) builder.CoreHeader();
        if (planes >= 0) builder.Field(12, static_cast<uint32_t>(bits << 16 | planes));
        test(builder.Build(), std::to_string(bits) + " bits, " + std::to_string(width) + " x " +
                                  std::to_string(height) + ", " + std::to_string(planes));
      }
    }
  }
}

TEST(EnhancePage, RankOrderSortsEverySquare) {
  ForPages([](const TestImage& image, const std::string& what) {
    for (int size = 0; size <= 2; ++size) {
      const int n = 3 + 2 * size;
      for (const int percentile : {0, 3, 50, 64, 99, 100}) {
        const int passes = percentile == 64 ? 2 : 1;
        Expect(image, NaiveRank(image, n, passes, percentile),
               what + ", percentile " + std::to_string(percentile) + " of " + std::to_string(n),
               [&](PackedDib* dib) {
                 return omb_EnhancePage(dib, size, passes, 1, 2, percentile, 8, 9, 9);
               });
      }
      Expect(image, NaiveRank(image, n, 3, 50), what + ", median",
             [&](PackedDib* dib) { return omb_EnhancePage(dib, size, 3, 0, 0, -7, 7, 0, 0); });
    }
  });
}

TEST(EnhancePage, RankOrderRefusesAndLeavesAlone) {
  TestImage image = ImageBuilder(24, 9, 9).Pixels(Noise(1u << 24, 1)).Build();
  const std::vector<uint8_t> before = image.Bytes();
  for (const int percentile : {-1, 101, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(omb_EnhancePage(image.get(), 0, 1, 0, 0, percentile, 8, 0, 0), 0);
    EXPECT_EQ(omb_EnhancePage(image.get(), 0, 0, 0, 0, percentile, 8, 0, 0), 0);
  }
  for (const int passes : {0, -5}) {
    EXPECT_EQ(omb_EnhancePage(image.get(), 2, passes, 0, 0, 50, 8, 0, 0), 1);
    EXPECT_EQ(omb_EnhancePage(image.get(), 2, passes, 0, 0, 0, 7, 0, 0), 1);
  }
  EXPECT_EQ(image.Bytes(), before);
  EXPECT_EQ(omb_EnhancePage(nullptr, 0, 1, 0, 0, 50, 7, 0, 0), 0);
  // Only the low 16 bits of width and height count: 65537 x 3 is 1 x 3.
  TestImage wide = ImageBuilder(8, 65537, 3).Pixels(Noise(256, 2)).Build();
  const std::vector<uint8_t> wide_before = wide.Bytes();
  EXPECT_EQ(omb_EnhancePage(wide.get(), 0, 1, 0, 0, 50, 7, 0, 0), 1);
  EXPECT_EQ(wide.Bytes(), wide_before);
  // A row length of 65536 counts as 0, so that rows overlap.
  TestImage overlapping = ImageBuilder(24, 21845, 3).Build();
  EXPECT_EQ(omb_EnhancePage(overlapping.get(), 0, 1, 0, 0, 50, 7, 0, 0), 0);
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
    for (const auto& [mode, name] : {std::pair{0, "lopass "},
                                     {1, "hipass "},
                                     {2, "gauss "},
                                     {3, "higauss "},
                                     {4, "unsharp "},
                                     {5, "unsharp "}}) {
      expect(std::string(name) + kSizes[size + (mode == 3 ? 1 : 0)],
             [&, mode = mode](PackedDib* dib) {
               return omb_EnhancePage(dib, size, 2, 7, 11, 12, mode, 2, 0);
             });
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
  TestImage image = ImageBuilder(24, 15, 14).Pixels(Noise(1u << 24, 4)).Build();
  const std::vector<uint8_t> before = image.Bytes();
  const auto enhance = [&](int size, int mode, int scope, int curve) {
    return omb_EnhancePage(image.get(), size, 1, 10, 0, 50, mode, scope, curve);
  };
  for (const int mode : {-1, 6, 9}) EXPECT_EQ(enhance(0, mode, 0, 0), 0);
  for (const int mode : {0, 1, 2, 3, 4, 5, 7, 8}) {
    for (const int size : {-1, 3}) EXPECT_EQ(enhance(size, mode, 2, 0), 0);
  }
  for (const int scope : {0, 1}) {
    for (const int curve : {-1, 0, 3, 4}) EXPECT_EQ(enhance(1, 4, scope, curve), 0);
  }
  for (const int mode : {-1, 4, 7}) EXPECT_EQ(omb_EdgePage(image.get(), 0, 1, 10, mode), 0);
  for (const int mode : {3, 5, 6}) {
    for (const int size : {-1, 3}) EXPECT_EQ(omb_EdgePage(image.get(), size, 1, 10, mode), 0);
  }
  EXPECT_EQ(image.Bytes(), before);
  for (int mode = 0; mode <= 8; ++mode) {
    EXPECT_EQ(omb_EnhancePage(nullptr, 0, 1, 10, 0, 50, mode, 2, 0), 0);
    EXPECT_EQ(omb_EdgePage(nullptr, 0, 1, 10, mode), 0);
  }
}

TEST(EdgePage, GradientMagnitudes) {
  ForPages([](const TestImage& image, const std::string& what) {
    for (int mode = 0; mode <= 1; ++mode) {
      Expect(image, NaiveGradient(image, mode), what + ", mode " + std::to_string(mode),
             [&](PackedDib* dib) { return omb_EdgePage(dib, 77, 0, 0, mode); });
    }
  });
}

// Every pair of differences, at every level.
TEST(EdgePage, RootsAreTruncatedExactly) {
  for (int i = 0; rows::Supported()[i] != nullptr; ++i) {
    for (int b = 0; b < 256; ++b) {
      std::vector<uint8_t> upper(512), lower(512), result(256);
      for (int a = 0; a < 256; ++a) {
        upper[static_cast<size_t>(a)] = static_cast<uint8_t>(b);
        lower[static_cast<size_t>(a)] = static_cast<uint8_t>(a);
      }
      rows::Supported()[i]->roberts_magnitude(upper.data(), lower.data(), 256, 256, result.data());
      for (int a = 0; a < 256; ++a) {
        const double root = std::sqrt(static_cast<double>(a * a + b * b));
        ASSERT_EQ(result[static_cast<size_t>(a)], static_cast<int>(root) & 255) << a << ", " << b;
      }
    }
  }
  TestImage diagonal = ImageBuilder(8, 2, 2).Rows({"00", "00"}).Build();
  const size_t first = static_cast<size_t>(omb_FindDIBBits(diagonal.get()) - diagonal.raw());
  diagonal.raw()[first] = 255;      // stored row 0
  diagonal.raw()[first + 4] = 255;  // stored row 1
  EXPECT_EQ(omb_EdgePage(diagonal.get(), 0, 0, 0, 1), 1);
  EXPECT_EQ(diagonal.raw()[first + 4], 360 - 256);
  EXPECT_EQ(diagonal.raw()[first], 255);
}

TEST(PageFilters, ChangeNothingWithoutMemory) {
  const auto make = [] { return ImageBuilder(24, 20, 12).Pixels(Noise(1u << 24, 6)).Build(); };
  for (const int mode : {2, 5, 7, 8}) {
    ExpectRefusalWithoutMemory(make, [=](PackedDib** image) {
      return omb_EnhancePage(*image, 1, 2, 10, 0, 30, mode, 0, 0) != 0;
    });
  }
  for (const int mode : {0, 1, 2, 3}) {
    ExpectRefusalWithoutMemory(
        make, [=](PackedDib** image) { return omb_EdgePage(*image, 1, 2, 10, mode) != 0; });
  }
}

}  // namespace
}  // namespace ombrilo::test
