#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "core/bytes.h"
#include "core/packed_dib.h"
#include "quantize/published_network.h"
#include "support/failing_memory.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

uint32_t Scene(int x, int y) {
  return Rgb(x * 2 + y / 3, 255 - (x ^ y) % 200, (x * y / 16 + (x > 40 ? 90 : 0)) % 256);
}

enum Picture { kScene, kNoise, kFlat, kClose };

TestImage Make(int bits, int width, int height, uint32_t header, Picture picture = kScene) {
  ImageBuilder builder(bits, width, height);
  if (bits <= 8) {
    builder.Colors(VariedColors(1 << bits, 5)).Pixels(Noise(1u << bits, 6));
  } else if (picture == kFlat) {
    builder.Pixels([](int, int) { return Rgb(200, 17, 90); });
  } else if (picture == kClose) {
    builder.Pixels([](int x, int y) { return 0x600000u | (Noise(1u << 24, 8)(x, y) & 0x1F1F1F); });
  } else {
    builder.Pixels(picture == kScene ? Scene : Noise(1u << 24, 7));
  }
  builder.Filler(0xA5);  // padding is sampled
  if (header != 40) builder.CoreHeader(header);
  if (header == 40) builder.Field(20, 777).Field(36, 3);
  return builder.Build();
}

// The 24-bit image that quantizing works on.
TestImage TrueColor(const TestImage& image) {
  TestImage copy = image.Clone();
  if (copy.bit_count() == 24) return copy;
  const int width = image.width(), height = image.height();
  const uint32_t header = LoadU32(image.raw());
  ImageBuilder builder(24, width, height);
  builder.Pixels([&](int x, int y) { return image.Color(static_cast<int>(image.Pixel(x, y))); });
  if (header != 40) builder.CoreHeader(header);
  if (header == 40) builder.Field(20, 777);
  return builder.Build();
}

struct Reference {
  const DibView view;
  const PublishedNetwork network;
  const int bits;
  std::vector<uint8_t> block;
  size_t table, rows, stride;

  Reference(const TestImage& image, int depth, uint32_t colors_used, int packing)
      : view(*DibView::Open(image.get())),
        network(view.rows(), static_cast<int>(view.stride()) * view.height(), depth),
        bits(depth) {
    const size_t step = view.core() ? 3 : 4, height = static_cast<size_t>(view.height());
    table = view.header().header_size;
    rows = table + (step << bits);
    stride = static_cast<size_t>((view.width() * bits + 31) / 32 * 4);
    const auto wide = static_cast<size_t>((view.width() * packing + 31) / 32 * 4);
    block.assign(rows + height * std::max(stride, wide), 0);
    std::copy(view.block(), view.block() + table, block.begin());
    StoreU16(&block[view.core() ? 10 : 14], static_cast<uint16_t>(bits));
    if (!view.core()) StoreU32(&block[32], colors_used);
    if (!view.core()) StoreU32(&block[36], 0);
    for (size_t i = 0; i < 1u << bits; ++i) {
      for (size_t c = 0; c < 3; ++c) {
        block[table + step * i + c] = static_cast<uint8_t>(network.colors()[i][c]);
      }
    }
  }

  void Put(int x, int y, int index, int packing) {
    uint8_t& byte =
        block[rows + static_cast<size_t>(y) * stride + static_cast<size_t>(x * packing / 8)];
    const int shift = 8 - packing - x * packing % 8, mask = ((1 << packing) - 1) << shift;
    byte = static_cast<uint8_t>((byte & ~mask) | index << shift);
  }
};

std::vector<uint8_t> ExpectedNeuquant(const TestImage& image, int bits) {
  const TestImage true_color = TrueColor(image);
  Reference r(true_color, bits, 1u << bits, bits);
  for (int y = 0; y < r.view.height(); ++y) {
    for (int x = 0; x < r.view.width(); ++x) {
      const uint8_t* p = r.view.row(y) + 3 * x;
      r.Put(x, y, r.network.Search(p[0], p[1], p[2]), bits);
    }
  }
  return r.block;
}

std::vector<uint8_t> ExpectedDither(const TestImage& image, int bits) {
  const int packing = bits == 8 ? 8 : 4;
  Reference r(image, bits, 0, packing);
  const int width = r.view.width(), height = r.view.height();
  std::vector<int32_t> work(static_cast<size_t>(3 * width * height));
  const auto at = [&](int x, int y) { return &work[static_cast<size_t>(3 * (y * width + x))]; };
  for (int y = 0; y < height; ++y) std::copy_n(r.view.row(y), 3 * width, at(0, y));
  const auto find = [&](int32_t* p) {
    for (int c = 0; c < 3; ++c) p[c] = p[c] < 0 ? 0 : p[c] > 255 ? 255 : p[c];
    return r.network.Search(p[0], p[1], p[2]);
  };
  const auto add = [](int32_t& value, float error, double weight) {
    const float share = static_cast<float>(static_cast<double>(error) * weight);
    value = static_cast<int32_t>(static_cast<float>(value) + share);
  };
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      int32_t* p = at(x, y);
      const size_t color = 40 + 4 * static_cast<size_t>(find(p));
      for (int c = 0; c < 3; ++c) {
        const size_t byte = color + static_cast<size_t>(c);
        const int chosen = byte < r.block.size() ? r.block[byte] : 0;
        const float error = static_cast<float>(p[c]) - static_cast<float>(chosen);
        p[c] = chosen;
        if (x + 1 < width - 1) add(at(x + 1, y)[c], error, 0.375);
        if (y >= 1) add(at(x, y - 1)[c], error, 0.375);
        if (x + 1 < width - 1 && y >= 1) add(at(x + 1, y - 1)[c], error, 0.25);
      }
    }
  }
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) r.Put(x, y, find(at(x, y)), packing);
  }
  return r.block;
}

std::vector<uint8_t> Block(const TestImage& image, size_t size) {
  return std::vector<uint8_t>(image.raw(), image.raw() + size);
}

void ExpectBoth(const TestImage& image, const std::string& what) {
  for (const int bits : {1, 2, 4, 8}) {
    if (image.bit_count() != bits && bits != 2) {
      TestImage actual = image.Clone();
      ASSERT_EQ(omb_neuquant(actual.ref(), bits), 1) << what << bits;
      const std::vector<uint8_t> expected = ExpectedNeuquant(image, bits);
      ASSERT_EQ(Block(actual, expected.size()), expected) << what << bits;
    }
    if (image.bit_count() == 24) {
      TestImage actual = image.Clone();
      ASSERT_EQ(omb_dither(actual.ref(), bits), 1) << what << bits;
      const std::vector<uint8_t> expected = ExpectedDither(image, bits);
      ASSERT_EQ(Block(actual, expected.size()), expected) << what << "dither " << bits;
    }
  }
}

TEST(Quantize, FollowsThePublishedNetworkAtEveryDepthAndHeader) {
  for (const uint32_t header : {40u, 12u, 64u}) {
    for (const int bits : {1, 4, 8, 24}) {
      for (const auto& [width, height] : {std::pair{97, 61}, {1, 40}, {2, 9}, {3, 1}}) {
        ExpectBoth(Make(bits, width, height, header), std::to_string(header) + ", " +
                                                          std::to_string(bits) + " bits, " +
                                                          std::to_string(width) + " wide, to ");
      }
    }
  }
}

// Noise keeps every neuron moving; one color alone drives its neuron's frequency to the top; close
// colors are looked up over and over again, some among many entries.
TEST(Quantize, LongRunsFollowThePublishedNetwork) {
  ExpectBoth(Make(24, 251, 160, 40, kNoise), "noise, ");
  ExpectBoth(Make(24, 500, 250, 40, kFlat), "one color, ");
  ExpectBoth(Make(24, 250, 200, 40, kClose), "close colors, ");
}

// Lengths that are multiples of the first prime, and of the first two, of which steps are made.
TEST(Quantize, StepsAvoidDivisorsOfThePicture) {
  ExpectBoth(Make(24, 1, 499, 40), "499, ");
  TestImage image = Make(24, 1, 499 * 491, 40);
  const std::vector<uint8_t> expected = ExpectedNeuquant(image, 4);
  ASSERT_EQ(omb_neuquant(image.ref(), 4), 1);
  EXPECT_EQ(image.Bytes(), expected);
}

TEST(Quantize, ExpandsIndexedImagesTo24Bits) {
  for (const uint32_t header : {40u, 12u}) {
    for (const int bits : {1, 4, 8}) {
      TestImage image = Make(bits, 13, 5, header);
      const TestImage expected = TrueColor(image);
      EXPECT_EQ(omb_neuquant(image.ref(), 24), 1);
      EXPECT_EQ(image.Bytes(), expected.Bytes());
      // A depth that nothing has: the copy stays.
      TestImage odd = Make(bits, 13, 5, header);
      EXPECT_EQ(omb_neuquant(odd.ref(), 5), 0);
      EXPECT_EQ(odd.Bytes(), expected.Bytes());
    }
  }
  // Colors past a short table come from what follows it, and are 0 past the block.
  TestImage image = ImageBuilder(8, 4, 1)
                        .Colors({0x102030})
                        .Pixels([](int x, int) { return x == 3 ? 200u : static_cast<uint32_t>(x); })
                        .Build();
  EXPECT_EQ(omb_neuquant(image.ref(), 24), 1);
  EXPECT_EQ(image.Pixels(), (std::vector<uint32_t>{0x102030, 0x020100, 0, 0}));
}

TEST(Quantize, RefusesWhatItDoesNotTake) {
  PackedDib* null = nullptr;
  for (const auto operation : {omb_neuquant, omb_dither}) {
    EXPECT_EQ(operation(nullptr, 8), 0);
    EXPECT_EQ(operation(&null, 8), 0);
    for (const auto& [depth, bits] : {std::pair{24, 0},
                                      {24, -1},
                                      {24, 3},
                                      {24, 5},
                                      {24, 16},
                                      {24, 24},
                                      {24, 32},
                                      {16, 8},
                                      {32, 8},
                                      {2, 8},
                                      {8, 8},
                                      {1, 1}}) {
      TestImage image = ImageBuilder(depth, 9, 4).Filler(3).Build();
      const std::vector<uint8_t> before = image.Bytes();
      const PackedDib* address = image.get();
      EXPECT_EQ(operation(image.ref(), bits), 0) << depth << " to " << bits;
      EXPECT_EQ(image.get(), address);
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

// The pixels of the 24-bit copy stand on its width and height.
TEST(Quantize, SizeFieldsBelowTheHeadersLengthStayInsideTheBlocks) {
  for (const uint32_t size_field : {0u, 4u, 7u}) {
    TestImage image = ImageBuilder(8, 30, 20).CoreHeader().Pixels(Noise(256, 9)).Filler(90).Build();
    std::memcpy(image.raw(), &size_field, sizeof size_field);
    EXPECT_EQ(omb_neuquant(image.ref(), 4), 1);
  }
}

TEST(Quantize, ImagesWithoutPixelsGetTheStartingPalette) {
  for (const auto operation : {omb_neuquant, omb_dither}) {
    for (const auto& [width, height] : {std::pair{7, 0}, {7, -3}, {0, 5}, {0x7FFFFFFF, 0}}) {
      TestImage image = ImageBuilder(24, 1, 0)
                            .Field(4, static_cast<uint32_t>(width))
                            .Field(8, static_cast<uint32_t>(height))
                            .Build();
      EXPECT_EQ(operation(image.ref(), 4), 1);
      EXPECT_EQ(omb_DIBHeight(image.get()), static_cast<uint32_t>(height));
      for (int i = 0; i < 16; ++i) EXPECT_EQ(image.Color(i), Rgb(16 * i, 16 * i, 16 * i));
    }
  }
}

TEST(Quantize, RefusesWithoutMemory) {
  const auto make = [] { return Make(24, 40, 30, 40); };
  ExpectRefusalWithoutMemory(make, [](PackedDib** i) { return omb_neuquant(i, 4) != 0; });
  ExpectRefusalWithoutMemory(make, [](PackedDib** i) { return omb_dither(i, 4) != 0; });
  const auto indexed = [] { return Make(8, 40, 30, 40); };
  ExpectRefusalWithoutMemory(indexed, [](PackedDib** i) { return omb_neuquant(i, 24) != 0; });
  // The 24-bit copy of an indexed image stays when memory runs out later.
  for (int n = 2; n <= 3; ++n) {
    TestImage image = indexed();
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
