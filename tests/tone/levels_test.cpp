#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/image.h"

namespace ombrilo::test {
namespace {

struct Limits {
  int low, high;
};

int Channel(uint32_t rgb, size_t c) { return static_cast<int>(rgb >> 8 * c & 255); }

// Of each channel, straight from the definition.
std::array<Limits, 3> LimitsOf(const std::vector<uint32_t>& colors, size_t samples, double low,
                               double high, bool strict, bool shared) {
  const double low_count = std::trunc(static_cast<double>(samples) * low);
  const double high_count = std::trunc(static_cast<double>(samples) * high);
  std::array<Limits, 3> limits;
  for (size_t c = 0; c < 3; ++c) {
    limits[c] = {-1, 255};
    int last = -1;
    for (int i = 0; i < 256; ++i) {
      const auto up_to = static_cast<double>(std::count_if(
          colors.begin(), colors.end(), [=](uint32_t rgb) { return Channel(rgb, c) <= i; }));
      if (limits[c].low < 0 && up_to > low_count) limits[c].low = i;
      if (strict ? up_to < high_count : up_to <= high_count) last = i;
    }
    limits[c] = {std::max(limits[c].low, 0), last < 0 ? 255 : last};
  }
  const auto [a, b, c] = limits;
  if (shared) limits.fill({std::min({a.low, b.low, c.low}), std::max({a.high, b.high, c.high})});
  return limits;
}

uint32_t Stretch(uint32_t rgb, const std::array<Limits, 3>& limits) {
  uint32_t result = 0;
  for (size_t c = 0; c < 3; ++c) {
    const auto [low, high] = limits[c];
    const int v = Channel(rgb, c);
    const int to = v < low ? 0 : v > high ? 255 : low == high ? v : (v - low) * 255 / (high - low);
    result |= static_cast<uint32_t>(to) << 8 * c;
  }
  return result;
}

// Channels with different ranges, away from the ends.
uint32_t Scene(int x, int y) {
  const uint32_t noise = Noise(1 << 24, 3)(x, y);
  return Rgb(10 + (noise & 127), 100 + (noise >> 8) % 90, 60 + (noise >> 16) % 150);
}

TEST(Levels, TrueColorPixelsAreMeasuredAndStretched) {
  const std::function<uint32_t(int, int)> scenes[] = {
      Scene, [](int, int) { return 0x070707u; }, [](int, int) { return 0u; },
      [](int x, int) { return x % 2 == 0 ? 0x050505u : 0x060606u; },
      [](int x, int) { return 0x010101u * (10 + static_cast<uint32_t>(x) * 5); }};
  for (const bool shared : {false, true}) {
    for (const auto& [low, high] : {std::pair{0.0, 1.0},
                                    {0.0, 0.99},
                                    {0.01, 0.99},
                                    {0.0, 0.5},
                                    {0.9, 0.1},
                                    {-1.0, 2.5},
                                    {1e300, -5e300}}) {
      for (const auto& scene : scenes) {
        ImageBuilder builder(24, 38, 5);
        builder.Filler(0x77).Pixels(scene).CoreHeader(shared ? 12 : 40);
        TestImage image = builder.Build();
        const auto limits = LimitsOf(image.Pixels(), 38 * 5, low, high, false, shared);
        const TestImage expected =
            builder.Pixels([&](int x, int y) { return Stretch(scene(x, y), limits); }).Build();
        const auto call = shared ? omb_autocontrast : omb_autolevel;
        EXPECT_EQ(call(image.get(), low, high), 1u);
        EXPECT_EQ(image.Bytes(), expected.Bytes()) << shared << " " << low << " " << high;
      }
    }
  }
}

struct Indexed {
  uint32_t size_field;
  int bits, colors;
};

std::vector<Indexed> IndexedImages() {
  std::vector<Indexed> all;
  for (const int bits : {1, 4, 8}) {
    for (const uint32_t size_field : {40u, 12u, 60u}) all.push_back({size_field, bits, 1 << bits});
    all.push_back({40, bits, 1});
  }
  return all;
}

TestImage Build(const Indexed& i) {
  std::vector<uint32_t> colors;
  for (int k = 0; k < i.colors; ++k) colors.push_back(Scene(k, 2));
  ImageBuilder builder(i.bits, 61, 9);
  builder.CoreHeader(i.size_field).Colors(colors).Filler(0x5A);
  return builder.Pixels(Noise(1u << i.bits, 4)).Build();
}

TEST(Levels, AutoLevelMeasuresAndChangesTheTableOfIndexedImages) {
  for (const Indexed& shape : IndexedImages()) {
    for (const auto& [low, high] : {std::pair{0.0, 1.0}, {0.1, 0.8}}) {
      TestImage image = Build(shape);
      std::vector<uint8_t> expected = image.Bytes();
      std::vector<uint32_t> colors;
      for (int i = 0; i < shape.colors; ++i) colors.push_back(image.Color(i));
      const auto limits = LimitsOf(colors, colors.size(), low, high, false, false);
      for (size_t i = 0; i < colors.size(); ++i) {
        const uint32_t to = Stretch(colors[i], limits);
        uint8_t* entry = &expected[shape.size_field + (shape.size_field == 40 ? 4 : 3) * i];
        for (size_t c = 0; c < 3; ++c) entry[c] = static_cast<uint8_t>(Channel(to, c));
      }
      EXPECT_EQ(omb_autolevel(image.get(), low, high), 1u);
      EXPECT_EQ(image.Bytes(), expected) << shape.size_field << " " << shape.bits;
    }
  }
}

// Every pixel in order, each look-up on the bytes as they are at that moment: colors from byte 40
// in steps of 4, the nearest entry among the table's colors at the call's beginning.
void ReferenceAutoContrast(std::vector<uint8_t>& block, const TestImage& before, double high) {
  const size_t bits = static_cast<size_t>(before.bit_count()), width = 61, height = 9;
  const auto color = [&](size_t at) {
    uint32_t rgb = 0;
    for (size_t c = 0; c < 3; ++c) rgb |= at + c < block.size() ? block[at + c] << 8 * c : 0u;
    return rgb;
  };
  std::vector<uint32_t> palette, colors;
  for (size_t i = 0; i < 1u << bits; ++i) {
    palette.push_back(color(block[0] + (block[0] == 40 ? 4 : 3) * i));
  }
  for (size_t y = bits == 1 ? height - 1 : 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      colors.push_back(color(40 + 4 * before.Pixel(static_cast<int>(x), static_cast<int>(y))));
    }
  }
  const auto limits = LimitsOf(colors, width * height, 0.02, high, true, true);
  const size_t stride = (width * bits + 31) / 32 * 4;
  for (size_t y = 0; y < height; ++y) {
    for (size_t x = 0; x < width; ++x) {
      uint8_t& byte = block[block.size() - stride * (height - y) + x * bits / 8];
      const size_t shift = 8 - bits - x * bits % 8, mask = (size_t{1} << bits) - 1;
      const uint32_t wanted = Stretch(color(40 + 4 * (byte >> shift & mask)), limits);
      const auto distance = [=](uint32_t rgb) {
        int sum = 0;
        for (size_t c = 0; c < 3; ++c) {
          sum += (Channel(wanted, c) - Channel(rgb, c)) * (Channel(wanted, c) - Channel(rgb, c));
        }
        return sum;
      };
      const auto nearest =
          std::min_element(palette.begin(), palette.end(),
                           [&](uint32_t a, uint32_t b) { return distance(a) < distance(b); });
      const size_t index = static_cast<size_t>(nearest - palette.begin());
      byte = static_cast<uint8_t>((byte & ~(mask << shift)) | index << shift);
    }
  }
}

TEST(Levels, AutoContrastMapsPixelsOfIndexedImagesToTheKeptTable) {
  for (const Indexed& shape : IndexedImages()) {
    TestImage image = Build(shape);
    std::vector<uint8_t> expected = image.Bytes();
    // At 1 bit usual fractions change nothing, as one row of nine is counted.
    const double high = shape.bits == 1 ? 0.06 : 0.9;
    ReferenceAutoContrast(expected, image, high);
    EXPECT_EQ(omb_autocontrast(image.get(), 0.02, high), 1u);
    EXPECT_EQ(image.Bytes(), expected) << shape.size_field << " " << shape.bits;
  }
}

TEST(Levels, RefusalsAndImagesWithoutRows) {
  for (const int bits : {1, 2, 4, 8, 16, 24, 32}) {
    for (const int height : {2, 0, -2}) {
      const bool taken = bits <= 8 ? bits != 2 : bits == 24;
      if (taken && height == 2) continue;
      TestImage image = ImageBuilder(bits, 5, height).Pixels(Noise(4, 1)).Build();
      const std::vector<uint8_t> before = image.Bytes();
      EXPECT_EQ(omb_autolevel(image.get(), 0, 1), taken);
      EXPECT_EQ(omb_autocontrast(image.get(), 0, 1), taken);
      EXPECT_EQ(image.Bytes(), before);
    }
  }
  // Half 5, half 6, with a high count just above the half: both levels are 5.
  TestImage same = ImageBuilder(8, 10, 1).Pixels([](int x, int) { return 5u + x % 2; }).Build();
  const std::vector<uint8_t> before = same.Bytes();
  EXPECT_EQ(omb_autocontrast(same.get(), 0, 0.6), 0u);
  EXPECT_EQ(same.Bytes(), before);
}

}  // namespace
}  // namespace ombrilo::test
