#include <gtest/gtest.h>

#include "support/failing_memory.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

struct Limits {
  int low, high;
};

// Straight from the definition, on a list of samples.
Limits LimitsOf(const std::vector<int>& samples, int64_t n, double low, double high, bool strict) {
  Limits limits = {0, 255};
  const auto up_to = [&](int value) {
    return std::count_if(samples.begin(), samples.end(), [=](int s) { return s <= value; });
  };
  for (int i = 255; i >= 0; --i) {
    if (up_to(i) > static_cast<int64_t>(static_cast<double>(n) * low)) limits.low = i;
  }
  const int64_t count = static_cast<int64_t>(static_cast<double>(n) * high);
  for (int i = 0; i < 256; ++i) {
    if (strict ? up_to(i) < count : up_to(i) <= count) limits.high = i;
  }
  return limits;
}

uint32_t Stretch(uint32_t value, Limits l) {
  const int v = static_cast<int>(value & 255);
  if (v < l.low) return 0;
  if (v > l.high) return 255;
  return static_cast<uint32_t>(l.low == l.high ? v : (v - l.low) * 255 / (l.high - l.low));
}

uint32_t Stretch(uint32_t rgb, const Limits (&bgr)[3]) {
  return Stretch(rgb, bgr[0]) | Stretch(rgb >> 8, bgr[1]) << 8 | Stretch(rgb >> 16, bgr[2]) << 16;
}

void LimitsOfColors(const std::vector<uint32_t>& colors, int64_t n, double low, double high,
                    bool strict, bool shared, Limits (&limits)[3]) {
  for (int c = 0; c < 3; ++c) {
    std::vector<int> samples;
    for (const uint32_t rgb : colors) samples.push_back(static_cast<int>(rgb >> 8 * c & 255));
    limits[c] = LimitsOf(samples, n, low, high, strict);
  }
  if (!shared) return;
  const Limits all = {std::min({limits[0].low, limits[1].low, limits[2].low}),
                      std::max({limits[0].high, limits[1].high, limits[2].high})};
  for (Limits& l : limits) l = all;
}

// Channels with different ranges, away from the ends.
uint32_t Scene(int x, int y) {
  const uint32_t noise = Noise(1 << 24, 3)(x, y);
  return Rgb(static_cast<int>(10 + (noise & 127)), static_cast<int>(100 + (noise >> 8) % 90),
             static_cast<int>(60 + (noise >> 16) % 150));
}

constexpr double kFractions[][2] = {{0, 1},    {0.01, 0.99}, {0.2, 0.5},     {0.9, 0.1},
                                    {-1, 2.5}, {0.5, 0.5},   {1e300, -5e300}};

TEST(Levels, TrueColorAgainstTheDefinition) {
  for (const bool shared : {false, true}) {
    for (const auto& [low, high] : kFractions) {
      ImageBuilder builder(24, 37, 5);
      builder.Filler(0x77).Pixels(Scene).CoreHeader(shared ? 12 : 40);
      TestImage image = builder.Build();
      Limits limits[3];
      const bool huge = low > 1e9;  // nothing exceeds the low count, nothing is below the high one
      if (huge) {
        for (Limits& l : limits) l = {0, 255};
      } else {
        LimitsOfColors(image.Pixels(), 37 * 5, low, high, false, shared, limits);
      }
      const TestImage expected =
          builder.Pixels([&](int x, int y) { return Stretch(Scene(x, y), limits); }).Build();
      EXPECT_EQ(
          shared ? omb_autocontrast(image.get(), low, high) : omb_autolevel(image.get(), low, high),
          1u);
      EXPECT_EQ(image.Bytes(), expected.Bytes()) << shared << " " << low;
    }
  }
}

TEST(Levels, AutoLevelMeasuresAndChangesTheTableOfIndexedImages) {
  for (const uint32_t size_field : {40u, 12u}) {
    for (const int bits : {1, 4, 8}) {
      for (const auto& [low, high] : {std::pair{0.0, 1.0}, {0.1, 0.8}}) {
        std::vector<uint32_t> colors;
        const int count = size_field == 40 && bits > 1 ? (1 << bits) - 3 : 1 << bits;
        for (int i = 0; i < count; ++i) colors.push_back(Scene(i, 1));
        TestImage image = ImageBuilder(bits, 9, 2)
                              .CoreHeader(size_field)
                              .Colors(colors)
                              .Filler(0xA5)
                              .Pixels([](int, int) { return 1; })
                              .Build();
        const TestImage before = image.Clone();
        Limits limits[3];
        LimitsOfColors(colors, count, low, high, false, false, limits);
        EXPECT_EQ(omb_autolevel(image.get(), low, high), 1u);
        for (int i = 0; i < count; ++i) {
          EXPECT_EQ(image.Color(i), Stretch(before.Color(i), limits)) << bits << " " << i;
        }
        EXPECT_EQ(image.Pixels(), before.Pixels());
        if (size_field == 40) {
          EXPECT_EQ(image.raw()[43], 0xA5);
        }
      }
    }
  }
}

TEST(Levels, KnownValues) {
  // 10 to 200 in every channel.
  const auto value = [](int x, int) { return 0x010101u * static_cast<uint32_t>(10 + x); };
  for (const bool shared : {false, true}) {
    const auto call = shared ? omb_autocontrast : omb_autolevel;
    TestImage ramp = ImageBuilder(24, 191, 1).Pixels(value).Build();
    EXPECT_EQ(call(ramp.get(), 0, 1), 1u);
    EXPECT_EQ(ramp.Pixel(0, 0), 0u);
    EXPECT_EQ(ramp.Pixel(190, 0), Rgb(197, 197, 197));
    // One value: the high level falls below it. At value 0 no high level is found, and it stays.
    for (const uint32_t gray : {0x070707u, 0u}) {
      TestImage flat = ImageBuilder(24, 6, 2).Pixels([=](int, int) { return gray; }).Build();
      EXPECT_EQ(call(flat.get(), 0, 0.99), 1u);
      EXPECT_EQ(flat.Pixel(5, 1), gray == 0 ? 0u : 0xFFFFFFu);
    }
    // Levels that coincide leave their value alone.
    TestImage halves = ImageBuilder(24, 6, 2)
                           .Pixels([](int x, int) { return x % 2 ? 0x050505u : 0x060606u; })
                           .Build();
    EXPECT_EQ(call(halves.get(), 0, 0.5), 1u);
    EXPECT_EQ(halves.Pixel(1, 0), 0x050505u);
    EXPECT_EQ(halves.Pixel(0, 0), 0xFFFFFFu);
  }
  TestImage indexed = ImageBuilder(8, 191, 1).Pixels([](int x, int) { return 10u + x; }).Build();
  EXPECT_EQ(omb_autocontrast(indexed.get(), 0, 1), 1u);
  EXPECT_EQ(indexed.Pixel(190, 0), 255u);  // high level 199
  EXPECT_EQ(indexed.Pixel(189, 0), 255u);
  EXPECT_EQ(indexed.Pixel(188, 0), 188u * 255 / 189);
}

// Every pixel in order, each look-up and each search on the bytes as they are at that moment:
// colors from byte 40 in steps of 4, nearest entry among the table's colors at the call's
// beginning.
void ReferenceAutoContrast(std::vector<uint8_t>& block, const TestImage& before, double low,
                           double high) {
  const int bits = before.bit_count(), width = before.width(), height = before.height();
  const bool core = block[0] != 40;
  const auto byte = [&](size_t i) { return i < block.size() ? uint32_t{block[i]} : 0u; };
  const auto color = [&](size_t base, size_t step, size_t i) {
    const size_t at = base + step * i;
    return byte(at) | byte(at + 1) << 8 | byte(at + 2) << 16;
  };
  std::vector<uint32_t> palette;
  for (size_t i = 0; i < size_t{1} << bits; ++i) {
    palette.push_back(color(block[0], core ? 3 : 4, i));
  }
  std::vector<uint32_t> colors;
  for (int y = bits == 1 ? height - 1 : 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) colors.push_back(color(40, 4, before.Pixel(x, y)));
  }
  Limits limits[3];
  LimitsOfColors(colors, width * height, low, high, true, true, limits);
  const size_t stride = (static_cast<size_t>(width * bits) + 31) / 32 * 4;
  const size_t rows = block.size() - stride * static_cast<size_t>(height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      uint8_t& b =
          block[rows + stride * static_cast<size_t>(y) + static_cast<size_t>(x * bits / 8)];
      const int shift = 8 - bits - x * bits % 8;
      const uint32_t index = b >> shift & ((1 << bits) - 1);
      const uint32_t wanted = Stretch(color(40, 4, index), limits);
      int best = INT32_MAX;
      uint32_t nearest = 0;
      for (uint32_t i = 0; i < palette.size(); ++i) {
        int distance = 0;
        for (int c = 0; c < 3; ++c) {
          const int d =
              static_cast<int>(wanted >> 8 * c & 255) - static_cast<int>(palette[i] >> 8 * c & 255);
          distance += d * d;
        }
        if (distance < best) best = distance, nearest = i;
      }
      b = static_cast<uint8_t>((b & ~(((1 << bits) - 1) << shift)) | nearest << shift);
    }
  }
}

TEST(Levels, AutoContrastOfIndexedImagesMapsPixelsToTheKeptTable) {
  for (const uint32_t size_field : {40u, 12u, 60u}) {
    for (const int bits : {1, 4, 8}) {
      for (const bool full : {true, false}) {
        if (!full && size_field != 40) continue;
        SCOPED_TRACE("header " + std::to_string(size_field) + ", bits " + std::to_string(bits));
        std::vector<uint32_t> colors;
        const int count = full ? 1 << bits : 1;  // the other entries lie over the pixels
        for (int i = 0; i < count; ++i) colors.push_back(Scene(i, 2));
        TestImage image = ImageBuilder(bits, 61, 9)
                              .CoreHeader(size_field)
                              .Colors(colors)
                              .Filler(0x5A)
                              .Pixels(Noise(1u << bits, 4))
                              .Build();
        std::vector<uint8_t> expected = image.Bytes();
        // At 1 bit usual fractions change nothing, as one row of nine is counted.
        const double high = bits == 1 ? 0.06 : 0.9;
        ReferenceAutoContrast(expected, image, 0.02, high);
        EXPECT_EQ(omb_autocontrast(image.get(), 0.02, high), 1u);
        EXPECT_EQ(image.Bytes(), expected);
      }
    }
  }
}

TEST(Levels, Refusals) {
  EXPECT_EQ(omb_autolevel(nullptr, 0, 1), 0u);
  EXPECT_EQ(omb_autocontrast(nullptr, 0, 1), 0u);
  for (const int bits : {2, 16, 32}) {
    TestImage image = ImageBuilder(bits, 5, 2).Pixels(Noise(4, 1)).Build();
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(omb_autolevel(image.get(), 0, 1), 0u);
    EXPECT_EQ(omb_autocontrast(image.get(), 0, 1), 0u);
    EXPECT_EQ(image.Bytes(), before);
  }
  // Half 5, half 6 with a high count just above the half: both levels are 5.
  TestImage same = ImageBuilder(8, 10, 1).Pixels([](int x, int) { return 5u + x % 2; }).Build();
  const std::vector<uint8_t> before = same.Bytes();
  EXPECT_EQ(omb_autocontrast(same.get(), 0, 0.6), 0u);
  EXPECT_EQ(same.Bytes(), before);
  for (const int height : {0, -2}) {
    for (const int bits : {1, 4, 8, 24}) {
      TestImage empty = ImageBuilder(bits, 7, height).Build();
      EXPECT_EQ(omb_autolevel(empty.get(), 0, 1), 1u);
      EXPECT_EQ(omb_autocontrast(empty.get(), 0, 1), 1u);
    }
  }
  ExpectRefusalWithoutMemory([] { return ImageBuilder(8, 33, 3).Pixels(Noise(200, 1)).Build(); },
                             [](PackedDib** image) { return omb_autocontrast(*image, 0.01, 0.9); });
}

}  // namespace
}  // namespace ombrilo::test
