#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/untouched.h"

namespace ombrilo::test {
namespace {

struct Limits {
  int low, high;
};

int Channel(uint32_t rgb, size_t c) { return static_cast<int>(rgb >> 8 * c & 255); }

// Of each channel, straight from the definition.
std::array<Limits, 3> LimitsOf(const std::vector<uint32_t>& colors, size_t samples, double low,
                               double high, bool shared) {
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
      if (up_to <= high_count) last = i;
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
  constexpr double kParts[][2] = {{0.0, 1.0}, {0.0, 0.99}, {0.01, 0.99},   {0.0, 0.5},
                                  {0.9, 0.1}, {-1.0, 2.5}, {1e300, -5e300}};
  for (const bool shared : {false, true}) {
    for (const auto& [low, high] : kParts) {
      for (const auto& scene : scenes) {
        ImageBuilder builder(24, 38, 5);
        builder.Filler(0x77).Pixels(scene).CoreHeader(shared ? 12 : 40);
        TestImage image = builder.Build();
        const auto limits = LimitsOf(image.Pixels(), 38 * 5, low, high, shared);
        const TestImage expected =
            builder.Pixels([&](int x, int y) { return Stretch(scene(x, y), limits); }).Build();
        const auto call = shared ? omb_autocontrast : omb_autolevel;
        EXPECT_EQ(call(image.get(), low, high), 1u);
        EXPECT_EQ(image.Bytes(), expected.Bytes()) << shared << " " << low << " " << high;
      }
    }
  }
}

// Of indexed images the samples are the table's entries, each once, whatever the pixels use.
TEST(Levels, EntriesOfTablesAreMeasuredAndStretched) {
  for (const int bits : {1, 4, 8}) {
    for (const int colors :
         {1 << bits, -(1 << bits), (1 << bits) / 2 + 1}) {  // below 0: core header
      for (const auto& [low, high] : {std::pair{0.0, 1.0}, {0.0, 0.99}, {0.1, 0.8}, {0.3, 0.5}}) {
        std::vector<uint32_t> table(static_cast<size_t>(std::abs(colors)));
        for (size_t i = 0; i < table.size(); ++i) table[i] = Scene(static_cast<int>(i), 1);
        ImageBuilder builder(bits, 19, 2);
        builder.Filler(0x77).CoreHeader(colors < 0 ? 12 : 40).Pixels([](int, int) { return 1u; });
        TestImage image = builder.Colors(table).Build();
        const auto limits = LimitsOf(table, table.size(), low, high, false);
        for (uint32_t& color : table) color = Stretch(color, limits);
        EXPECT_EQ(omb_autolevel(image.get(), low, high), 1u);
        EXPECT_EQ(image.Bytes(), builder.Colors(table).Build().Bytes())
            << bits << " bits, " << colors << " colors, " << low << " to " << high;
      }
    }
  }
}

// At 1 bit only the first stored row is counted, of as many samples as the image has: by the high
// fraction of 0.06 that is 32 of 61 pixels.
TEST(Levels, OneBitImagesAreMeasuredByOneRow) {
  for (const uint32_t bottom : {0u, 1u}) {
    ImageBuilder builder(1, 61, 9);
    builder.Colors({0x404040, 0x808080});
    TestImage image =
        builder.Pixels([=](int, int y) { return y == 8 ? bottom : 1 - bottom; }).Build();
    const std::vector<uint32_t> before = image.Pixels();
    EXPECT_EQ(omb_autocontrast(image.get(), 0.02, 0.06), 1u);
    EXPECT_EQ(image.Pixels(), bottom == 1 ? before : std::vector<uint32_t>(61 * 9, 1));
  }
}

// Half 5, half 6, with a high count just above the half: both levels are 5.
TEST(Levels, OneLevelIsRefused) {
  const Untouched same(
      ImageBuilder(8, 10, 1).Pixels([](int x, int) { return 5u + x % 2; }).Build());
  EXPECT_EQ(omb_autocontrast(same.get(), 0, 0.6), 0u);
}

}  // namespace
}  // namespace ombrilo::test
