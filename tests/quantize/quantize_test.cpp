#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <vector>

#include "core/packed_dib.h"
#include "quantize/published_network.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

using Picture = std::function<uint32_t(int x, int y)>;

uint32_t Scene(int x, int y) {
  return Rgb(x * 2 + y / 3, 255 - (x ^ y) % 200, (x * y / 16 + (x > 40 ? 90 : 0)) % 256);
}

TestImage TrueColor(int width, int height, const Picture& picture = Scene) {
  return ImageBuilder(24, width, height)
      .Filler(0xA5)
      .Pixels(picture)
      .Build();  // padding is sampled
}

// The pixels' palette indices; rows count as they are stored: from the bottom.
std::vector<int> Expected(const TestImage& image, const PublishedNetwork& network, bool dither) {
  const DibView view = *DibView::Open(image.get());
  const int width = view.width(), height = view.height();
  std::vector<int32_t> work(static_cast<size_t>(3 * width * height));
  const auto at = [&](int x, int y) { return &work[static_cast<size_t>(3 * (y * width + x))]; };
  for (int y = 0; y < height; ++y) std::copy_n(view.row(y), 3 * width, at(0, y));
  const auto find = [&](int32_t* p) {
    for (int c = 0; c < 3; ++c) p[c] = std::clamp(p[c], 0, 255);
    return network.Search(p[0], p[1], p[2]);
  };
  const auto add = [](int32_t& value, float error, double weight) {
    const float share = static_cast<float>(static_cast<double>(error) * weight);
    value = static_cast<int32_t>(static_cast<float>(value) + share);
  };
  for (int y = 0; dither && y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      int32_t* p = at(x, y);
      const PublishedNetwork::Neuron& chosen = network.colors[static_cast<size_t>(find(p))];
      for (size_t c = 0; c < 3; ++c) {
        const float error = static_cast<float>(p[c]) - static_cast<float>(chosen[c]);
        p[c] = chosen[c];
        if (x + 1 < width - 1) add(at(x + 1, y)[c], error, 0.375);
        if (y >= 1) add(at(x, y - 1)[c], error, 0.375);
        if (x + 1 < width - 1 && y >= 1) add(at(x + 1, y - 1)[c], error, 0.25);
      }
    }
  }
  std::vector<int> indices;
  for (int i = 0; i < width * height; ++i) indices.push_back(find(at(i % width, i / width)));
  return indices;
}

// At every instruction level. What other headers and depths make of it is in the checksums.
void ExpectPublished(const TestImage& image, std::initializer_list<int> depths = {1, 4, 8}) {
  const DibView view = *DibView::Open(image.get());
  for (const int bits : depths) {
    const PublishedNetwork network(view.rows(), static_cast<int>(view.stride()) * view.height(),
                                   bits);
    for (const bool dither : {false, true}) {
      if (dither && bits == 1) continue;  // whose rows overlap
      const std::vector<int> expected = Expected(image, network, dither);
      SCOPED_TRACE(testing::Message() << image.width() << " x " << image.height() << " to " << bits
                                      << " bits, dithered: " << dither);
      AtEveryLevel([&] {
        TestImage actual = image.Clone();
        ASSERT_EQ((dither ? omb_dither : omb_neuquant)(actual.ref(), bits), 1);
        for (int i = 0; i < 1 << bits; ++i) {
          const auto [blue, green, red, position] = network.colors[static_cast<size_t>(i)];
          ASSERT_EQ(actual.Color(i), Rgb(red, green, blue)) << i;
        }
        std::vector<int> indices;
        for (int i = 0; i < image.width() * image.height(); ++i) {
          const int row = image.height() - 1 - i / image.width();
          indices.push_back(static_cast<int>(actual.Pixel(i % image.width(), row)));
        }
        ASSERT_EQ(indices, expected);
      });
    }
  }
}

TEST(Quantize, FollowsThePublishedNetwork) {
  // In 131 rows of 4 bytes, the last sampled colors reach past the end.
  for (const auto& [width, height] : {std::pair{97, 61}, {1, 131}, {2, 9}, {3, 1}}) {
    ExpectPublished(TrueColor(width, height));
  }
  // Noise keeps every neuron moving; one color alone drives its neuron's frequency to the top;
  // close colors are looked up over and over again, some among many entries.
  ExpectPublished(TrueColor(251, 160, Noise(1u << 24, 7)));
  ExpectPublished(TrueColor(300, 190, [](int, int) { return Rgb(200, 17, 90); }));
  ExpectPublished(TrueColor(
      250, 200, [](int x, int y) { return 0x600000u | (Noise(1u << 24, 8)(x, y) & 0x1F1F1F); }));
  // Lengths that are multiples of the first prime, and of the first two, of which steps are made.
  ExpectPublished(TrueColor(1, 499));
  ExpectPublished(TrueColor(1, 499 * 491), {4});
}

TEST(Quantize, RefusesWhatItDoesNotTake) {
  for (const auto operation : {omb_neuquant, omb_dither}) {
    constexpr int kCases[][2] = {{24, 0},  {24, -1}, {24, 3}, {24, 5}, {24, 16}, {24, 24},
                                 {24, 32}, {16, 8},  {32, 8}, {2, 8},  {8, 8},   {1, 1}};
    for (const auto& [depth, bits] : kCases) {
      Untouched image(depth);
      EXPECT_EQ(operation(image.ref(), bits), 0) << depth << " to " << bits;
    }
  }
  // At 24 bits, the bits of a row no longer fit a signed 32-bit count.
  TestImage wide = ImageBuilder(1, 100'000'000, 1).Build();
  EXPECT_EQ(omb_neuquant(wide.ref(), 24), 0);
  EXPECT_EQ(wide.bit_count(), 1);
}

TEST(Quantize, IndexedImagesAreExpanded) {
  TestImage image =
      ImageBuilder(8, 40, 30).Colors(VariedColors(256, 5)).Pixels(Noise(256, 6)).Build();
  const std::vector<uint32_t> colors = image.Colors();
  EXPECT_EQ(omb_neuquant(image.ref(), 24), 1);
  EXPECT_EQ(image.Pixels(), colors);
}

}  // namespace
}  // namespace ombrilo::test
