#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "core/bytes.h"
#include "core/packed_dib.h"
#include "quantize/published_network.h"
#include "rows/row_functions.h"
#include "support/failing_memory.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

uint32_t Scene(int x, int y) {
  return Rgb(x * 2 + y / 3, 255 - (x ^ y) % 200, (x * y / 16 + (x > 40 ? 90 : 0)) % 256);
}

using Picture = std::function<uint32_t(int x, int y)>;

TestImage Make(int bits, int width, int height, uint32_t header, const Picture& picture = Scene) {
  ImageBuilder builder(bits, width, height);
  builder.Filler(0xA5).Pixels(bits == 24 ? picture : Noise(1u << bits, 6));  // padding is sampled
  if (bits <= 8) builder.Colors(VariedColors(1 << bits, 5));
  if (header != 40) builder.CoreHeader(header);
  if (header == 40) builder.Field(20, 777).Field(36, 3);
  return builder.Build();
}

// The 24-bit image that quantizing works on.
TestImage TrueColor(const TestImage& image) {
  if (image.bit_count() == 24) return image.Clone();
  const uint32_t header = LoadU32(image.raw());
  ImageBuilder builder(24, image.width(), image.height());
  builder.Pixels([&](int x, int y) { return image.Color(static_cast<int>(image.Pixel(x, y))); });
  if (header != 40) builder.CoreHeader(header);
  if (header == 40) builder.Field(20, 777);
  return builder.Build();
}

// The new block of either operation, all of it.
std::vector<uint8_t> Expected(const TestImage& image, int bits, bool dither) {
  const TestImage source = TrueColor(image);
  const DibView view = *DibView::Open(source.get());
  const PublishedNetwork network(view.rows(), static_cast<int>(view.stride()) * view.height(),
                                 bits);
  const int width = view.width(), height = view.height(), packing = dither && bits < 4 ? 4 : bits;
  const size_t table = view.header().header_size, step = view.core() ? 3 : 4;
  const size_t rows = table + (step << bits);
  const int64_t stride = StrideOf(width, static_cast<uint16_t>(bits));
  std::vector<uint8_t> block(
      rows + static_cast<size_t>(StrideOf(width, static_cast<uint16_t>(packing)) * height));
  std::copy(view.block(), view.block() + table, block.begin());
  StoreU16(&block[view.core() ? 10 : 14], static_cast<uint16_t>(bits));
  if (!view.core()) StoreU32(&block[32], dither ? 0 : 1u << bits);
  if (!view.core()) StoreU32(&block[36], 0);
  for (size_t i = 0; i < network.colors.size(); ++i) {
    std::copy_n(network.colors[i].begin(), 3, &block[table + step * i]);
  }

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
      const size_t color = 40 + 4 * static_cast<size_t>(find(p));
      for (size_t c = 0; c < 3; ++c) {
        const int chosen = color + c < block.size() ? block[color + c] : 0;
        const float error = static_cast<float>(p[c]) - static_cast<float>(chosen);
        p[c] = chosen;
        if (x + 1 < width - 1) add(at(x + 1, y)[c], error, 0.375);
        if (y >= 1) add(at(x, y - 1)[c], error, 0.375);
        if (x + 1 < width - 1 && y >= 1) add(at(x + 1, y - 1)[c], error, 0.25);
      }
    }
  }
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      uint8_t& byte = block[rows + static_cast<size_t>(y * stride + x * packing / 8)];
      const int shift = 8 - packing - x * packing % 8, mask = ((1 << packing) - 1) << shift;
      byte = static_cast<uint8_t>((byte & ~mask) | find(at(x, y)) << shift);
    }
  }
  return block;
}

// At every instruction level.
void ExpectPublished(const TestImage& image, int bits, bool dither) {
  const std::vector<uint8_t> expected = Expected(image, bits, dither);
  for (int level = 0; rows::Supported()[level] != nullptr; ++level) {
    rows::Use(rows::Supported()[level]);
    TestImage actual = image.Clone();
    ASSERT_EQ((dither ? omb_dither : omb_neuquant)(actual.ref(), bits), 1);
    ASSERT_EQ(std::vector<uint8_t>(actual.raw(), actual.raw() + expected.size()), expected)
        << image.bit_count() << " to " << bits << " bits, dithered: " << dither << ", "
        << image.width() << " wide, header " << LoadU32(image.raw()) << ", level " << level;
  }
  rows::Use(nullptr);
}

void ExpectPublished(const TestImage& image) {
  for (const int bits : {1, 2, 4, 8}) {
    if (image.bit_count() != bits && bits != 2) ExpectPublished(image, bits, false);
    if (image.bit_count() == 24) ExpectPublished(image, bits, true);
  }
}

TEST(Quantize, FollowsThePublishedNetwork) {
  // In 131 rows of 4 bytes, the last sampled colors reach past the end.
  for (const uint32_t header : {40u, 12u, 64u}) {
    for (const int bits : {1, 4, 8, 24}) {
      for (const auto& [width, height] : {std::pair{97, 61}, {1, 131}, {2, 9}, {3, 1}}) {
        ExpectPublished(Make(bits, width, height, header));
      }
    }
  }
  // Noise keeps every neuron moving; one color alone drives its neuron's frequency to the top;
  // close colors are looked up over and over again, some among many entries.
  ExpectPublished(Make(24, 251, 160, 40, Noise(1u << 24, 7)));
  ExpectPublished(Make(24, 300, 190, 40, [](int, int) { return Rgb(200, 17, 90); }));
  ExpectPublished(Make(24, 250, 200, 40, [](int x, int y) {
    return 0x600000u | (Noise(1u << 24, 8)(x, y) & 0x1F1F1F);
  }));
  // Lengths that are multiples of the first prime, and of the first two, of which steps are made.
  ExpectPublished(Make(24, 1, 499, 40));
  ExpectPublished(Make(24, 1, 499 * 491, 40), 4, false);
}

TEST(Quantize, RefusesWhatItDoesNotTake) {
  for (const auto operation : {omb_neuquant, omb_dither}) {
    constexpr int kCases[][2] = {{24, 0},  {24, -1}, {24, 3}, {24, 5}, {24, 16}, {24, 24},
                                 {24, 32}, {16, 8},  {32, 8}, {2, 8},  {8, 8},   {1, 1}};
    for (const auto& [depth, bits] : kCases) {
      TestImage image = ImageBuilder(depth, 9, 4).Filler(3).Build();
      const std::vector<uint8_t> before = image.Bytes();
      EXPECT_EQ(operation(image.ref(), bits), 0) << depth << " to " << bits;
      EXPECT_EQ(image.Bytes(), before);
    }
  }
  TestImage indexed = Make(8, 9, 4, 40);
  EXPECT_EQ(omb_dither(indexed.ref(), 4), 0);
  TestImage two = Make(24, 9, 4, 40);
  EXPECT_EQ(omb_neuquant(two.ref(), 2), 0);
  // At 24 bits, the bits of a row no longer fit a signed 32-bit count.
  TestImage wide = ImageBuilder(1, 100'000'000, 1).Build();
  EXPECT_EQ(omb_neuquant(wide.ref(), 24), 0);
  EXPECT_EQ(wide.bit_count(), 1);
}

TEST(Quantize, TheCopyOfAnIndexedImageStaysWhenMemoryRunsOutLater) {
  for (int n = 2; n <= 3; ++n) {
    TestImage image = Make(8, 40, 30, 40);
    const TestImage expected = TrueColor(image);
    MemoryWatch watch(n);
    const int result = omb_neuquant(image.ref(), 4);
    watch.Stop();
    EXPECT_TRUE(watch.failed());
    EXPECT_EQ(result, 0);
    EXPECT_EQ(image.Bytes(), expected.Bytes());
    EXPECT_EQ(watch.still_held(), 0);
  }
}

}  // namespace
}  // namespace ombrilo::test
