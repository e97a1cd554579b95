// omb_dilate, omb_erode and the operations composed of them, against whole-image references.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/naive.h"

namespace ombrilo::test {
namespace {

constexpr auto kAll = [](int, int) { return true; };

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

// At 24 bits and at 8 bits of gray, bytes are levels. Of more than 65535 columns or rows,
// comparisons see the cut size, in rows that are as long as the cut width.
TEST(Composites, AreDifferencesAndSumsOfLevels) {
  const auto bytes_of = [](const TestImage& from, void (*operation)(PackedDib*)) {
    TestImage copy = from.Clone();
    operation(copy.get());
    return copy.Bytes();
  };
  for (const int bits : {8, 24}) {
    for (const auto& [width, height] :
         {std::pair{1, 7}, {5, 7}, {36, 7}, {70, 1}, {65536 + 4, 7}, {1, 65536 + 5}}) {
      const TestImage image =
          ImageBuilder(bits, width, height).Pixels(Noise(1u << bits, 8)).Filler(0x5A).Build();
      const auto before = image.Bytes();
      const auto eroded = bytes_of(image, omb_erode), opened = bytes_of(image, omb_mathopen);
      auto edge = eroded, hat = opened, composed = opened;
      const int row = (width & 0xFFFF) * bits / 8, stride = (row + 3) / 4 * 4;
      const auto rows = static_cast<size_t>(omb_FindDIBBits(image.get()) - image.raw());
      for (int k = 0; k < (height & 0xFFFF) * stride; ++k) {
        if (k % stride >= row) continue;
        const size_t i = rows + static_cast<size_t>(k);
        edge[i] = static_cast<uint8_t>(before[i] - eroded[i]);
        hat[i] = static_cast<uint8_t>(before[i] - opened[i]);
        composed[i] = static_cast<uint8_t>(std::min(opened[i] + eroded[i], 255));
      }
      SCOPED_TRACE(testing::Message() << bits << " bits, " << width << " x " << height);
      ExpectAtEveryLevel(image, edge, omb_pickedge);
      ExpectAtEveryLevel(image, bits == 24 ? hat : before, omb_tophat);
      ExpectAtEveryLevel(image, bits == 24 ? composed : before, omb_opencompose);
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
