// Flips and turns by right angles: pixels move and nothing else changes.
#include <gtest/gtest.h>

#include <algorithm>

#include "core/packed_dib.h"
#include "support/failing_memory.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

constexpr int kSizes[][2] = {{1, 1}, {1, 9},  {9, 1},   {2, 2},     {3, 2},     {7, 8},
                             {8, 7}, {9, 17}, {64, 65}, {515, 198}, {1030, 19}, {3, 1025}};

std::vector<uint32_t> TableOf(int bits) { return VariedColors(bits <= 8 ? 1 << bits : 0, 1); }

// Every byte of the rows is noise, padding included.
TestImage NoisyImage(int bits, bool core, int width, int height) {
  ImageBuilder builder(bits, width, height);
  builder.Colors(TableOf(bits));
  if (core) builder.CoreHeader();
  TestImage image = builder.Build();
  const Dib dib = *Dib::Open(image.get());
  const auto noise = Noise(256, 2);
  for (int y = 0; y < height; ++y) {
    for (size_t i = 0; i < dib.stride(); ++i) {
      dib.row(y)[i] = static_cast<uint8_t>(noise(static_cast<int>(i), y));
    }
  }
  return image;
}

template <class Check>
void ForEveryImage(std::initializer_list<int> depths, Check&& check) {
  AtEveryLevel([&] {
    for (const int bits : depths) {
      for (const auto& [width, height] : kSizes) {
        for (const bool core : {false, true}) {
          SCOPED_TRACE(testing::Message()
                       << bits << " bits " << core << " " << width << "x" << height);
          check(NoisyImage(bits, core, width, height));
          if (testing::Test::HasFailure()) return;
        }
      }
    }
  });
}

TEST(RightAngles, MovePixelsExactlyAndZeroThePadding) {
  ForEveryImage({1, 4, 8, 24}, [](const TestImage& source) {
    const int w = source.width(), h = source.height();
    for (const int quarters : {1, 2, 3}) {
      // Header fields other than the sizes stay, and the color table.
      ImageBuilder builder(source.bit_count(), quarters == 2 ? w : h, quarters == 2 ? h : w);
      builder.Colors(TableOf(source.bit_count())).CoreHeader(source.raw()[0]);
      const TestImage expected = builder
                                     .Pixels([&](int x, int y) {
                                       return quarters == 1   ? source.Pixel(y, h - 1 - x)
                                              : quarters == 2 ? source.Pixel(w - 1 - x, h - 1 - y)
                                                              : source.Pixel(w - 1 - y, x);
                                     })
                                     .Build();
      TestImage turned = source.Clone();
      ASSERT_EQ(omb_rotate(turned.ref(), static_cast<float>(90 * quarters) + 0.009f, 9), 1u);
      ASSERT_EQ(turned.Bytes(), expected.Bytes()) << quarters;
    }
  });
}

TEST(RightAngles, Refusals) {
  for (const float degrees : {90.0f, 180.0f, 270.0f}) {
    Untouched deep(16), negative(ImageBuilder(8, 4, 2).Field(8, 0xFFFFFFFE).Build()),
        narrow(ImageBuilder(8, 4, 2).Field(4, 0xFFFFFFFE).Build());
    for (Untouched* image : {&deep, &negative, &narrow}) {
      EXPECT_EQ(omb_rotate(image->ref(), degrees, 1), 0u);
    }
    for (const auto& [w, h] : {std::pair{0, 3}, {4, 0}}) {
      TestImage empty = ImageBuilder(8, w, h).Build();
      EXPECT_EQ(omb_rotate(empty.ref(), degrees, 1), 1u);
      EXPECT_EQ(empty.width(), degrees == 180 ? w : h);
      EXPECT_EQ(empty.height(), degrees == 180 ? h : w);
    }
  }
  // A line of 2^26 pixels is 8 MB; upright each of its pixels takes 4 bytes.
  TestImage line = ImageBuilder(1, 1 << 26, 1).Build();
  EXPECT_EQ(omb_rotate(line.ref(), 270, 1), 1u);
  TestImage longer = ImageBuilder(1, 1 << 29, 1).Build();
  EXPECT_EQ(omb_rotate(longer.ref(), 90, 1), 0u);
}

// At any depth; each row's padding goes with it.
TEST(Flips, TopToBottomMovesWholeRows) {
  ForEveryImage({1, 4, 8, 16, 24, 32}, [](const TestImage& source) {
    TestImage image = source.Clone();
    ASSERT_EQ(omb_flipvert(image.get()), 1u);
    const TestImage expected = source.Clone();
    const DibView from = *DibView::Open(source.get());
    const Dib to = *Dib::Open(expected.get());
    for (int y = 0; y < from.height(); ++y) {
      std::copy_n(from.row(y), from.stride(), to.row(from.height() - 1 - y));
    }
    ASSERT_EQ(image.Bytes(), expected.Bytes());
  });
}

TEST(Flips, LeftToRightKeepsPaddingAndIsItsOwnInverse) {
  ForEveryImage({1, 4, 8, 24}, [](const TestImage& source) {
    TestImage image = source.Clone();
    MemoryWatch watch(1);
    ASSERT_EQ(omb_fliphor(image.get()), 1u);
    watch.Stop();
    ASSERT_FALSE(watch.failed());  // nothing is allocated
    std::vector<uint32_t> expected = source.Pixels();
    for (auto row = expected.begin(); row != expected.end(); row += source.width()) {
      std::reverse(row, row + source.width());
    }
    ASSERT_EQ(image.Pixels(), expected);
    ASSERT_EQ(omb_fliphor(image.get()), 1u);
    ASSERT_EQ(image.Bytes(), source.Bytes());  // padding never changed
  });
}

}  // namespace
}  // namespace ombrilo::test
