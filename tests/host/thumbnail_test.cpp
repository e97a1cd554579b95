#include "thumbnail.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "support/image.h"

namespace omb {
namespace {

using ombrilo::test::ImageBuilder;
using ombrilo::test::Noise;
using ombrilo::test::TestImage;
using ombrilo::test::VariedColors;

TEST(Thumbnail, FitsTheBoxAndIsResizedAtEveryDepth) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const auto& [w, h, box_w, box_h, new_w, new_h] :
         {std::array{9, 4, 9, 9, 9, 4}, {37, 23, 10, 10, 10, 6}, {50, 3, 7, 7, 7, 1}}) {
      ImageBuilder builder(bits, w, h);
      if (bits <= 8) builder.Colors(VariedColors(1 << bits, 3));
      const TestImage image = builder.Pixels(Noise(bits < 32 ? 1u << bits : 0xFFFFFFFF, 5)).Build();
      TestImage expected = image.Clone();
      ASSERT_EQ(omb_transformat(expected.ref()), 1u);
      ASSERT_EQ(
          omb_resize(expected.ref(), static_cast<uint32_t>(new_w), static_cast<uint32_t>(new_h), 4),
          1u);
      TestImage small(Thumbnail(image.get(), box_w, box_h).release());
      EXPECT_EQ(small.Bytes(), expected.Bytes()) << bits << " bits, " << w << " x " << h;
    }
  }
}

}  // namespace
}  // namespace omb
