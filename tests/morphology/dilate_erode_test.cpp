// omb_dilate, omb_erode and the operations composed of them, against whole-image references.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/naive.h"

namespace ombrilo::test {
namespace {

constexpr auto kAll = [](int, int) { return true; };

TestImage WithBytes(const TestImage& image, const std::vector<uint8_t>& bytes) {
  TestImage copy = image.Clone();
  std::copy(bytes.begin(), bytes.end(), copy.raw());
  return copy;
}

// The image after a dilation (erosion), the slow way.
TestImage Squared(const TestImage& image, bool dilate) {
  const Naive source(image);
  const int sign = dilate ? -1 : 1;
  return WithBytes(
      image, NaiveResult(image, false, kAll, [&](int x, int y) {
        Bgr result = source.At(x, y);
        for (int i = 0; i < 9; ++i) {
          const Bgr& other = source.At(std::clamp(x + sign * (i % 3), 0, source.width - 1),
                                       std::clamp(y + sign * (i / 3), 0, source.height - 1));
          for (size_t c = 0; c < 3; ++c) {
            result[c] = dilate ? std::max(result[c], other[c]) : std::min(result[c], other[c]);
          }
        }
        return result;
      }));
}
TestImage Dilated(const TestImage& image) { return Squared(image, true); }
TestImage Eroded(const TestImage& image) { return Squared(image, false); }

// The image with each color replaced by `rule(own color, that of `other`)`, through other's table.
TestImage Joined(const TestImage& image, const TestImage& other, int (*rule)(int own, int other)) {
  const Naive theirs(other);
  TestImage colored = image.Clone();
  const size_t rows = static_cast<size_t>(omb_FindDIBBits(image.get()) - image.raw());
  const Naive own = [&] {
    // A short table goes on in the pixels, and colors are those of `other`.
    Naive naive(image);
    if (naive.bits < 24) {
      for (int y = 0; y < naive.height; ++y) {
        for (int x = 0; x < naive.width; ++x) {
          naive.At(x, y) = theirs.palette[image.Pixel(x, naive.height - 1 - y)];
        }
      }
    }
    return naive;
  }();
  const std::vector<uint8_t> bytes = other.Bytes();
  std::copy(bytes.begin() + static_cast<int>(rows), bytes.end(), colored.raw() + rows);
  return WithBytes(image, NaiveResult(colored, false, kAll, [&](int x, int y) {
                     Bgr result;
                     for (size_t c = 0; c < 3; ++c) {
                       result[c] = rule(own.At(x, y)[c], theirs.At(x, y)[c]);
                     }
                     return result;
                   }));
}

TEST(DilateErode, EveryDepthTableAndSizeAgreesWithTheReference) {
  ForVariedImages([](const TestImage& image) {
    const TestImage dilated = Dilated(image), eroded = Eroded(image);
    ExpectAtEveryLevel(image, dilated.Bytes(), omb_dilate);
    ExpectAtEveryLevel(image, dilated.Bytes(), omb_gradientize);
    ExpectAtEveryLevel(image, eroded.Bytes(), omb_erode);
    ExpectAtEveryLevel(image, Dilated(eroded).Bytes(), omb_mathopen);
    ExpectAtEveryLevel(image, Eroded(dilated).Bytes(), omb_mathclose);
    ExpectAtEveryLevel(image, Eroded(Dilated(Dilated(eroded))).Bytes(), omb_denoise);
  });
}

TEST(DilateErode, OneBitImagesFollowTheirColors) {
  const std::vector<uint32_t> tables[] = {{0x000000, 0xFFFFFF}, {0xFFFFFF, 0x000000},
                                          {0x808080, 0x808080}, {0xFF0000, 0x0000FF},
                                          {0x00FF00, 0x10FF10}, {0xFF8000, 0x00FF40}};
  for (const auto& table : tables) {
    for (const int width : {1, 2, 3, 7, 8, 9, 63, 64, 65, 130, 517}) {
      const TestImage image = ImageBuilder(1, width, 6)
                                  .Colors(table)
                                  .Filler(0x69)
                                  .Pixels([&](int x, int y) {
                                    return static_cast<uint32_t>(Noise(16, 55)(x / 2, y) < 9);
                                  })
                                  .Build();
      ExpectAtEveryLevel(image, Dilated(image).Bytes(), omb_dilate);
      ExpectAtEveryLevel(image, Eroded(image).Bytes(), omb_erode);
    }
  }
}

TEST(Composites, AgreeWithTheReference) {
  ForVariedImages([](const TestImage& image) {
    const TestImage eroded = Eroded(image);
    const bool wraps = image.bit_count() < 8;
    const TestImage edge =
        wraps ? Joined(image, eroded, [](int a, int b) { return (a - b) & 255; })
              : Joined(image, eroded, [](int a, int b) { return std::max(a - b, 0); });
    ExpectAtEveryLevel(image, edge.Bytes(), omb_pickedge);
    const bool color = image.bit_count() == 24;
    const TestImage opened = Dilated(eroded);
    const TestImage composed =
        Joined(opened, eroded, [](int a, int b) { return std::min(a + b, 255); });
    ExpectAtEveryLevel(image, color ? composed.Bytes() : image.Bytes(), omb_opencompose);
    const TestImage hat = Joined(image, opened, [](int a, int b) { return std::max(a - b, 0); });
    ExpectAtEveryLevel(image, color ? hat.Bytes() : image.Bytes(), omb_tophat);
  });
}

// More than 65535 columns: comparisons see the cut width, in rows that are as long as that.
TEST(Composites, WidthsBeyond16BitsAreCut) {
  const int width = 65536 + 4, cut = 4, height = 3;
  const TestImage image = ImageBuilder(24, width, height).Pixels(Noise(1 << 24, 8)).Build();
  const auto bytes_of = [](const TestImage& from, void (*operation)(PackedDib*)) {
    TestImage copy = from.Clone();
    operation(copy.get());
    return copy.Bytes();
  };
  const auto eroded = bytes_of(image, omb_erode), opened = bytes_of(image, omb_mathopen);
  auto edge = eroded, hat = opened, composed = opened;
  const auto before = image.Bytes();
  for (size_t i = 40; i < 40 + 12 * height; ++i) {  // 4 pixels of 3 bytes and no padding
    edge[i] = static_cast<uint8_t>(before[i] - eroded[i]);
    hat[i] = static_cast<uint8_t>(before[i] - opened[i]);
    composed[i] = static_cast<uint8_t>(std::min(opened[i] + eroded[i], 255));
  }
  static_assert(cut * 3 % 4 == 0);
  EXPECT_EQ(bytes_of(image, omb_pickedge), edge);
  EXPECT_EQ(bytes_of(image, omb_tophat), hat);
  EXPECT_EQ(bytes_of(image, omb_opencompose), composed);
}

}  // namespace
}  // namespace ombrilo::test
