// omb_adjustcolor and omb_balance, color by color.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/image.h"
#include "support/naive.h"

namespace ombrilo::test {
namespace {

int Limited(int value) { return std::clamp(value, 0, 255); }

// Modes 3 and 4. Each product and quotient is a statement, so that no two are fused.
Bgr Turned(const Bgr& bgr, bool lightness, int a, int b, int p) {
  const auto [blue, green, red] = bgr;
  const int max = std::max({blue, green, red}), min = std::min({blue, green, red});
  float low = static_cast<float>(min), mid = low, high = low;
  int k = 0;
  if (max != min) {
    const auto range = static_cast<float>(max - min);
    float h = max == red     ? static_cast<float>(green - blue) / range
              : max == green ? static_cast<float>(blue - red) / range + 2
                             : static_cast<float>(red - green) / range + 4;
    if (h < 0) h += 6;
    const float turn = static_cast<float>(a) / 60;
    h += turn;
    if (h < 0) h += 6;
    if (h >= 6) h -= 6;
    k = static_cast<int>(h);
    float x = h - static_cast<float>(k);
    if (k % 2 == 1) x = 1 - x;
    float s, c;
    const auto stronger = [&] {
      s *= static_cast<float>(100 + b);
      s /= 100;
      s = std::min(1.0f, s);
    };
    if (lightness) {
      const auto w = static_cast<float>(255 - std::abs(max + min - 255));
      s = range / w;
      stronger();
      c = w * s;
      low = static_cast<float>(max + min) / 2 - c / 2;
    } else {
      const float i = static_cast<float>(red + green + blue) / 3;
      const float part = static_cast<float>(min) / i;
      s = 1 - part;
      stronger();
      c = 3 * i;
      c *= s;
      c /= 1 + x;
      float most = 3 * (255 - i);
      most /= 2 - x;
      c = std::min(c, most);
      float below = c * (1 + x);
      below /= 3;
      low = i - below;
    }
    const float rise = c * x;
    mid = low + rise;
    high = low + c;
  }
  const auto mixed = [=](float v) {
    float part = p > 0 ? (255 - v) * static_cast<float>(p) : v * static_cast<float>(100 + p);
    part /= 100;
    if (p > 0) part = v + part;
    return Limited(static_cast<int>(part + 0.5f));
  };
  const int l = mixed(low), m = mixed(mid), g = mixed(high);
  const Bgr sides[] = {{l, m, g}, {l, g, m}, {m, g, l}, {g, m, l}, {g, l, m}, {m, l, g}};
  return sides[k];
}

Bgr Adjusted(const Bgr& bgr, int mode, int a, int b, int c) {
  const auto [blue, green, red] = bgr;
  if (mode == 1) return {Limited(blue + c), Limited(green + b), Limited(red + a)};
  if (mode == 2) {
    return {Limited(blue * (100 + c) / 100), Limited(green * (100 + b) / 100),
            Limited(red * (100 + a) / 100)};
  }
  return Turned(bgr, mode == 4, a, b, c);
}

int LightOf(const Bgr& bgr) { return (299 * bgr[2] + 587 * bgr[1] + 114 * bgr[0] + 500) / 1000; }

Bgr Balanced(const Bgr& bgr, const Bgr& amounts, int range, bool keep) {
  Bgr to;
  for (size_t c = 0; c < 3; ++c) {
    const int v = bgr[c], dark = std::max(255 - 2 * v, 0), light = std::max(2 * v - 255, 0);
    const int weights[] = {dark, 255 - dark - light, light, 255};
    to[c] = Limited(v + amounts[c] * weights[range] / 255);
  }
  if (!keep) return to;
  const int y = LightOf(bgr), move = y - LightOf(to);
  for (int& v : to) v += move;
  const auto [n, x] = std::minmax({to[0], to[1], to[2]});
  for (int& v : to) {
    if (n < 0) v = y + (v - y) * y / (y - n);
    if (n >= 0 && x > 255) v = y + (v - y) * (255 - y) / (x - y);
  }
  return to;
}

// A cube of colors with the corners, the grays and what lies beside both.
uint32_t Cube(int x, int y) {
  constexpr int kLevels[] = {0, 1, 2, 50, 85, 127, 128, 129, 170, 200, 253, 254, 255};
  const int i = x + 169 * y;
  return Rgb(kLevels[i % 13], kLevels[i / 13 % 13], kLevels[i / 169 % 13]);
}

void ExpectColors(const std::function<uint32_t(PackedDib*)>& call,
                  const std::function<Bgr(const Bgr&)>& reference, const std::string& name) {
  ImageBuilder builder(24, 169, 39);
  TestImage image =
      builder.Pixels([](int x, int y) { return y < 13 ? Cube(x, y) : Noise(1 << 24, 77)(x, y); })
          .Filler(0xA5)
          .Colors(GrayRamp(3))
          .Build();
  const TestImage before = image.Clone();
  EXPECT_EQ(call(image.get()), 1u) << name;
  builder.Pixels([&](int x, int y) { return RgbOf(reference(BgrOf(before.Pixel(x, y)))); });
  EXPECT_EQ(image.Bytes(), builder.Build().Bytes()) << name;
}

constexpr int kAdjustments[][4] = {
    {1, 10, -20, 255},  {1, -255, 0, 1},    {2, 10, -35, 900}, {2, -100, 33, -1}, {3, 0, 0, 1},
    {3, 120, 0, 0},     {3, -360, 0, 0},    {3, 37, 60, -20},  {3, -61, 100, 30}, {3, 0, -100, 0},
    {3, 359, -7, 100},  {4, 0, 0, -1},      {4, 240, 0, 0},    {4, 360, 0, 0},    {4, -37, 45, 20},
    {4, 61, 100, -100}, {4, -300, -100, 5}, {4, 1, -1, -99}};

TEST(AdjustColor, EachColorByItself) {
  for (const auto& adjustment : kAdjustments) {
    const int mode = adjustment[0], a = adjustment[1], b = adjustment[2], c = adjustment[3];
    const auto number = static_cast<uint32_t>(mode);
    ExpectColors([&](PackedDib* dib) { return omb_adjustcolor(dib, number, a, b, c); },
                 [&](const Bgr& bgr) { return Adjusted(bgr, mode, a, b, c); },
                 testing::PrintToString(std::array{mode, a, b, c}));
  }
  // A whole turn changes no color, in either direction.
  for (const uint32_t mode : {3u, 4u}) {
    for (const int turn : {360, -360}) {
      TestImage image = ImageBuilder(24, 169, 13).Pixels(Cube).Build();
      const std::vector<uint8_t> before = image.Bytes();
      omb_adjustcolor(image.get(), mode, turn, 0, 0);
      EXPECT_EQ(image.Bytes(), before) << mode;
    }
  }
}

TEST(AdjustColor, TablesChangeInPlaceOfPixels) {
  for (const int bits : {1, 4, 8}) {
    for (const uint32_t size_field : {40u, 12u}) {
      auto colors = VariedColors(1 << bits, 9);
      ImageBuilder builder(bits, 11, 3);
      builder.CoreHeader(size_field).Colors(colors).Pixels(Noise(1u << bits, 3)).Filler(0xA5);
      TestImage image = builder.Build();
      EXPECT_EQ(omb_adjustcolor(image.get(), OMB_ADJUST_HSL, 50, 20, 10), 1u);
      for (uint32_t& rgb : colors) {
        rgb = RgbOf(Adjusted(BgrOf(rgb), OMB_ADJUST_HSL, 50, 20, 10));
      }
      EXPECT_EQ(image.Bytes(), builder.Colors(colors).Build().Bytes()) << bits;
    }
  }
}

TEST(AdjustColor, RefusalsAndNothingToDo) {
  constexpr int kWrong[][4] = {{0, 0, 0, 0},    {5, 0, 0, 0},   {1, 256, 0, 0}, {1, 0, 0, -256},
                               {2, 0, -101, 0}, {2, 0, 0, 901}, {3, 361, 0, 0}, {3, 0, 101, 0},
                               {4, 0, 0, -101}, {4, -361, 0, 0}};
  for (const int bits : {8, 24, 32}) {
    TestImage image = ImageBuilder(bits, 9, 2).Pixels(Noise(256, 1)).Build();
    const std::vector<uint8_t> before = image.Bytes();
    for (const auto& row : kWrong) {
      const int mode = row[0], a = row[1], b = row[2], c = row[3];
      EXPECT_EQ(omb_adjustcolor(image.get(), static_cast<uint32_t>(mode), a, b, c), 0u) << mode;
    }
    EXPECT_EQ(omb_adjustcolor(image.get(), OMB_ADJUST_HSI, 0, 0, 0), bits != 32);
    EXPECT_EQ(omb_balance(image.get(), 0, 0, 0, OMB_BALANCE_ALL, 1), bits != 32);
    EXPECT_EQ(
        omb_balance(image.get(), 101, 0, 0, 0, 0) | omb_balance(image.get(), 0, -101, 0, 0, 0) |
            omb_balance(image.get(), 1, 0, 101, 0, 0) | omb_balance(image.get(), 1, 0, 0, 4, 0),
        0u);
    EXPECT_EQ(image.Bytes(), before);
  }
}

TEST(Balance, EachColorByItself) {
  constexpr Bgr kAmounts[] = {{100, -100, 33}, {-1, 2, 99}, {-100, -100, 100}, {0, 0, -7}};
  for (const Bgr& amounts : kAmounts) {
    const int blue = amounts[0], green = amounts[1], red = amounts[2];
    for (uint32_t range = 0; range < 4; ++range) {
      for (const uint32_t keep : {0u, 1u, 0x80000000u}) {
        ExpectColors(
            [&](PackedDib* dib) { return omb_balance(dib, red, green, blue, range, keep); },
            [&](const Bgr& bgr) {
              return Balanced(bgr, amounts, static_cast<int>(range), keep != 0);
            },
            testing::PrintToString(amounts) + std::to_string(range));
      }
    }
  }
}

// Indices go to the nearest of 256 colors, some of which are beyond a short table.
TEST(Balance, IndicesGoToTheNearestEntry) {
  constexpr Bgr kAmounts = {-60, 20, 80};
  for (const int count : {256, 7}) {
    for (const bool gray : {true, false}) {
      const TestImage image = ImageBuilder(8, 67, 9)
                                  .Colors(gray ? GrayRamp(count) : VariedColors(count, 2))
                                  .Pixels(Noise(256, 8))
                                  .Filler(0xA5)
                                  .Build();
      const Naive naive(image);
      const auto result = [&](int x, int y) {
        return Balanced(naive.At(x, y), kAmounts, OMB_BALANCE_MIDTONES, true);
      };
      ExpectAtEveryLevel(
          image,
          NaiveResult(
              image, false, [](int, int) { return true; }, result),
          [](PackedDib* dib) { EXPECT_EQ(omb_balance(dib, 80, 20, -60, 1, 1), 1u); });
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
