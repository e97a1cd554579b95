// Thumbnails against the definition: the average of the colors under each pixel, by area.
#include "thumbnail.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "files/pixels_out.h"
#include "support/image.h"

namespace omb {
namespace {

using ombrilo::test::ImageBuilder;
using ombrilo::test::Noise;
using ombrilo::test::TestImage;

// How much of pixel i lies under pixel `to` when `from` pixels become `count`.
double Overlap(int i, int to, int from, int count) {
  const double begin = double(to) * from / count, end = double(to + 1) * from / count;
  return std::max(0.0, std::min(end, i + 1.0) - std::max(begin, double(i)));
}

double Average(const TestImage& image, int x, int y, int width, int height, int shift) {
  double sum = 0, area = 0;
  for (int v = 0; v < image.height(); ++v) {
    for (int u = 0; u < image.width(); ++u) {
      const double share =
          Overlap(u, x, image.width(), width) * Overlap(v, y, image.height(), height);
      const uint32_t pixel = image.Pixel(u, v);
      const uint32_t color = image.bit_count() <= 8 ? image.Color(static_cast<int>(pixel)) : pixel;
      sum += share * (color >> shift & 0xFF);
      area += share;
    }
  }
  return sum / area;
}

TEST(Thumbnail, IsTheAverageByArea) {
  for (const int bits : {1, 4, 8, 24, 32}) {
    for (const auto& [from_w, from_h, box_w, box_h] :
         {std::array{9, 4, 9, 9}, std::array{37, 23, 10, 10}, std::array{7, 31, 20, 30},
          std::array{50, 3, 7, 7}, std::array{1, 90, 5, 4}}) {
      ImageBuilder builder(bits, from_w, from_h);
      if (bits <= 8) builder.Colors(ombrilo::test::VariedColors(1 << bits, 3));
      const TestImage image = builder.Pixels(Noise(bits <= 8 ? 1u << bits : 1u << 24, 5)).Build();
      const Image small = Thumbnail(image.get(), box_w, box_h);
      const Picture picture(small.get());
      ASSERT_LE(picture.width(), box_w);
      ASSERT_LE(picture.height(), box_h);
      EXPECT_TRUE(picture.width() == std::min(box_w, from_w) ||
                  picture.height() == std::min(box_h, from_h));
      std::vector<uint8_t> row(3 * static_cast<size_t>(picture.width()));
      for (int y = 0; y < picture.height(); ++y) {
        picture.ColorRow(y, row.data());
        for (size_t i = 0; i < row.size(); ++i) {
          const double expected = Average(image, static_cast<int>(i / 3), y, picture.width(),
                                          picture.height(), 8 * static_cast<int>(i % 3));
          ASSERT_NEAR(row[i], expected, 0.51) << bits << " bits, " << i << ", " << y;
        }
      }
    }
  }
}

}  // namespace
}  // namespace omb
