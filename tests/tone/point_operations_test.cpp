// Operations that send each color to a color by itself, against a color-by-color reference: on the
// pixels of 24-bit images and on the color tables of others. Reserved bytes, padding and what else
// the block holds stay; where the image is replaced, so does the header.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/packed_dib.h"
#include "rows/row_functions.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

int Toned(int value, int brightness, int contrast) {
  value = std::clamp(value + std::clamp(brightness, -300, 300), 0, 255);
  if (contrast > 0) {
    if (value <= contrast) return 0;
    return value > 255 - contrast ? 255 : (value - contrast) * 255 / (255 - 2 * contrast);
  }
  return contrast < 0 ? (value * (255 + 2 * contrast) / 255 - contrast) & 255 : value;
}

int Gamma(int value, double gamma) {
  const double power = std::pow(value, gamma) / (std::pow(255.0, gamma) / 255);
  return static_cast<int>(std::min(power + 0.5, 255.0));
}

Bgr Lit(Bgr color, int highlights, int shadows1, int shadows2) {
  int step = 0;
  for (const int amount : {highlights, shadows1, shadows2}) {
    const int sum = color[0] + color[1] + color[2];
    const bool chosen = step++ == 0 ? sum > 510 : sum < 255;
    if (!chosen || amount == 0) continue;
    const auto add = [=](int v) { return std::clamp(v + std::clamp(amount, -600, 600), 0, 255); };
    color = {add(add(color[1])), add(color[1]), add(color[2])};
  }
  return color;
}

// The comparison as it is defined: double precision, rounded to single.
bool White(const Bgr& bgr, int threshold, int first_white_tie) {
  const auto gray = static_cast<float>(0.59 * bgr[1] + 0.3 * bgr[2] + 0.11 * bgr[0]);
  const auto limit = static_cast<float>(threshold);
  return gray > limit || (gray == limit && threshold >= first_white_tie);
}

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

struct Operation {
  std::string name;
  std::function<uint32_t(PackedDib**)> call;
  std::function<Bgr(Bgr)> reference;
  int bits = 24;           // of the result at 24 bits
  bool tables = true;      // change, of indexed images
  bool own_table = false;  // changes at 24 bits, where there is one, in place of the pixels
  uint32_t result = 1;     // at 24 bits
};

// -80 degrees turn some colors to just below red, which single precision rounds to red.
constexpr int kAdjustments[][4] = {
    {1, 10, -20, 255},  {1, -255, 0, 1},    {2, 10, -35, 900}, {2, -100, 33, -1}, {3, 0, 0, 1},
    {3, 120, 0, 0},     {3, -360, 0, 0},    {3, 37, 60, -20},  {3, -61, 100, 30}, {3, 0, -100, 0},
    {3, 359, -7, 100},  {4, 0, 0, -1},      {4, 240, 0, 0},    {4, 360, 0, 0},    {4, -37, 45, 20},
    {4, 61, 100, -100}, {4, -300, -100, 5}, {4, 1, -1, -99},   {3, -80, 9, 0},    {4, -80, 9, 0}};

std::vector<Operation> Operations() {
  const auto each = [](std::function<int(int)> f) {
    return [=](Bgr v) { return Bgr{f(v[0]), f(v[1]), f(v[2])}; };
  };
  std::vector<Operation> all;
  all.push_back(
      {"invert", [](auto** p) { return omb_invert(*p); }, each([](int v) { return 255 - v; })});
  constexpr int kTones[][2] = {{40, 0},  {-40, 0},   {300, 0},  {INT32_MIN, 0}, {0, 0},
                               {0, 50},  {0, 127},   {0, 128},  {0, 255},       {0, INT32_MAX},
                               {0, -50}, {0, -127},  {0, -200}, {1, 1},         {-30, 20},
                               {60, -9}, {99, -4000}};
  for (const auto& tone : kTones) {
    const int b = tone[0], c = tone[1];
    all.push_back({"tone", [=](auto** p) { return omb_brightnesscontrast(*p, b, c); },
                   each([=](int v) { return Toned(v, b, c); })});
  }
  for (const double g : {0.45, 2.0, 1.0001, -1.0}) {  // 0 to the -1 is infinity
    all.push_back({"gamma", [=](auto** p) { return omb_gammacorrection(*p, g); },
                   each([=](int v) { return Gamma(v, g); }), 24, true, true});
  }
  constexpr int kLights[][3] = {{-10, 0, 0},   {30, 20, 0}, {0, 20, 20},
                                {0, 100, -60}, {5, 90, 90}, {INT32_MIN, INT32_MAX, -7}};
  for (const auto& l : kLights) {
    const int h = l[0], s1 = l[1], s2 = l[2];
    all.push_back({"lights", [=](auto** p) { return omb_adjustghms(*p, h, s1, s2); },
                   [=](Bgr v) { return Lit(v, h, s1, s2); }, 24, true, true});
  }
  for (const size_t c : {0u, 1u, 2u}) {
    const auto channel = 3 - static_cast<uint32_t>(c);
    all.push_back({"filter", [=](auto** p) { return omb_filtercolor(*p, channel); },
                   [=](Bgr v) { return v[c] = 0, v; }});
    // The result is 0 although the image has been replaced.
    all.push_back({"extract", [=](auto** p) { return omb_extractcolor(p, channel); },
                   [=](Bgr v) {
                     Bgr kept = {};
                     kept[c] = v[c];
                     return kept;
                   },
                   8, true, false, 0});
  }
  all.push_back({"gray", omb_gray,
                 [](Bgr v) {
                   const int gray = (11 * v[0] + 59 * v[1] + 30 * v[2]) / 100;
                   return Bgr{gray, gray, gray};
                 },
                 8});
  for (const int threshold : {INT32_MIN, -1, 0, 1, 100, 127, 128, 129, 200, 254, 255, INT32_MAX}) {
    all.push_back({"binary", [=](auto** p) { return omb_binary(p, threshold); },
                   [=](Bgr v) {
                     return White(v, threshold, 129) ? Bgr{255, 255, 255} : Bgr{};
                   },
                   1, false});
  }
  for (const auto& adjustment : kAdjustments) {
    const int mode = adjustment[0], a = adjustment[1], b = adjustment[2], c = adjustment[3];
    const auto number = static_cast<uint32_t>(mode);
    all.push_back({"adjust", [=](auto** p) { return omb_adjustcolor(*p, number, a, b, c); },
                   [=](Bgr v) { return Adjusted(v, mode, a, b, c); }});
  }
  for (const Bgr& v : {Bgr{100, -100, 33}, {-1, 2, 99}, {-100, -100, 100}, {0, 0, -7}}) {
    for (uint32_t range = 0; range < 4; ++range) {
      for (const uint32_t keep : {0u, 1u, 0x80000000u}) {
        all.push_back(
            {"balance", [=](auto** p) { return omb_balance(*p, v[2], v[1], v[0], range, keep); },
             [=](Bgr own) { return Balanced(own, v, static_cast<int>(range), keep != 0); }, 24,
             false});
      }
    }
  }
  // Their places tell those of one name apart.
  for (size_t i = 0; i < all.size(); ++i) all[i].name.append(" ").append(std::to_string(i));
  return all;
}

// Noise, much of it dark or light; grays, and colors whose weighted sum is a whole number; a cube
// of colors with the corners, the grays and what lies beside both.
uint32_t Scene(int x, int y) {
  const uint32_t noise = Noise(1 << 24, 5)(x, y);
  if (y == 0) return x % 3 == 0 ? noise & 0x7F7F7F : x % 3 == 1 ? noise | 0x808080 : noise;
  const int gray = x / 2 & 255;
  if (y == 1 && x % 2 == 0) return Rgb(gray, gray, gray);
  if (y == 1) return Rgb(gray / 3 * 3, gray, static_cast<int>(noise & 3) * 50);
  constexpr int kLevels[] = {0, 1, 2, 50, 85, 127, 128, 129, 170, 200, 253, 254, 255};
  return Rgb(kLevels[x % 13], kLevels[x / 13 % 13], kLevels[x / 169 % 13]);
}

uint32_t Sent(const Operation& op, uint32_t rgb) { return RgbOf(op.reference(BgrOf(rgb))); }

// In place, or as indices in a new image. Other fields of the header stay.
TEST(PointOperations, ChangePixelsOfTrueColorImages) {
  for (const Operation& op : Operations()) {
    for (const auto& [size_field, colors] : {std::pair{40u, 0}, {40u, 5}, {12u, 0}, {50u, 0}}) {
      for (const int width : {1, 5, 70, 259, 2200}) {
        ImageBuilder source(24, width, 3), wanted(op.bits, width, 3);
        std::vector<uint32_t> table = VariedColors(colors, 8);
        source.CoreHeader(size_field).Colors(table).Pixels(Scene).Filler(0xA5);
        const bool in_table = op.own_table && colors > 0;
        for (uint32_t& color : table) color = in_table ? Sent(op, color) : color;
        for (int i = 0; op.bits < 24 && i < 1 << op.bits; ++i) {
          if (i == 0) table.clear();
          table.push_back(op.bits == 1 ? i * 0xFFFFFFu : Sent(op, i * 0x010101u));
        }
        wanted.CoreHeader(size_field).Colors(table).Filler(op.bits < 24 ? 0 : 0xA5);
        wanted.Pixels([&](int x, int y) {
          const Bgr sent = op.reference(BgrOf(Scene(x, y)));
          if (op.bits == 24) return in_table ? Scene(x, y) : RgbOf(sent);
          return static_cast<uint32_t>(*std::max_element(sent.begin(), sent.end()) %
                                       (1 << op.bits));
        });
        if (size_field == 40) {
          source.Field(20, 77).Field(24, 2835).Field(36, 3);
          wanted.Field(20, 77).Field(24, 2835).Field(36, op.bits < 24 ? 0 : 3);
          if (op.bits == 1) wanted.Field(32, 2);
        }
        TestImage image = source.Build();
        EXPECT_EQ(op.call(image.ref()), op.result) << op.name;
        EXPECT_EQ(image.Bytes(), wanted.Build().Bytes())
            << op.name << ", width " << width << ", header " << size_field << ", colors " << colors;
      }
    }
  }
}

// What no cache holds is changed in pieces: with and without padding after the rows.
TEST(PointOperations, RowsOfLargeImagesAreThoseOfSmallOnes) {
  constexpr int kHeight = 2400, kDistinct = 4;
  uint32_t (*const operations[])(PackedDib*) = {
      omb_invert, [](PackedDib* dib) { return omb_gammacorrection(dib, 2); },
      [](PackedDib* dib) { return omb_filtercolor(dib, OMB_CHANNEL_GREEN); },
      [](PackedDib* dib) { return omb_adjustghms(dib, 10, 20, 30); }};
  for (const int width : {2400, 2401}) {
    for (const auto operation : operations) {
      const TestImage few =
          ImageBuilder(24, width, kDistinct).Pixels(Noise(1 << 24, 3)).Filler(0xA5).Build();
      const TestImage many(omb_newdib(width, kHeight, 24));
      const DibView few_rows = *DibView::Open(few.get());
      const Dib many_rows = *Dib::Open(many.get());
      for (int y = 0; y < kHeight; ++y) {
        std::memcpy(many_rows.row(y), few_rows.row(y % kDistinct), few_rows.stride());
      }
      EXPECT_EQ(operation(few.get()), 1u);
      EXPECT_EQ(operation(many.get()), 1u);
      for (int y = 0; y < kHeight; ++y) {
        ASSERT_EQ(std::memcmp(many_rows.row(y), few_rows.row(y % kDistinct), few_rows.stride()), 0)
            << width << ' ' << y;
      }
    }
  }
}

// Whole tables and, after an information header, short and long ones.
TEST(PointOperations, ChangeTablesOfIndexedImages) {
  for (const Operation& op : Operations()) {
    for (const int bits : {1, 4, 8}) {
      for (const int colors :
           {1 << bits, -(1 << bits), 1, (1 << bits) + 3}) {  // below 0: core header
        if (!op.tables) continue;
        std::vector<uint32_t> table;
        for (int i = 0; i < std::abs(colors); ++i) table.push_back(Scene(7 * i + 5, 2));
        ImageBuilder builder(bits, 37, 3);
        builder.Pixels(Noise(1u << bits, 2)).Filler(0xA5).CoreHeader(colors < 0 ? 12 : 40);
        TestImage image = builder.Colors(table).Build();
        for (uint32_t& color : table) color = Sent(op, color);
        const TestImage expected = builder.Colors(table).Build();
        EXPECT_EQ(op.call(image.ref()), 1u) << op.name;
        EXPECT_EQ(image.Bytes(), expected.Bytes()) << op.name << ", " << bits << ", " << colors;
      }
    }
  }
}

// Only the table changes: its colors, and the reserved bytes to 0.
TEST(PointOperations, PseudocolorReplacesGrayTables) {
  for (const int bits : {1, 4, 8, 24}) {
    const int full = bits == 24 ? 5 : 1 << bits;
    for (const int colors : {full, -full, 1, 259}) {  // below 0: core header
      if (bits == 24 && colors < 0) continue;         // has no table
      std::vector<uint32_t> table(static_cast<size_t>(std::abs(colors)));
      for (size_t i = 0; i < table.size(); ++i) table[i] = 0x010101 * (i * 37 & 255);
      ImageBuilder builder(bits, 37, 3);
      builder.Pixels(Noise(1u << bits, 2)).Filler(0xA5).CoreHeader(colors < 0 ? 12 : 40);
      TestImage image = builder.Colors(table).Build();
      std::vector<uint8_t> given;
      for (uint32_t& color : table) {
        color = Noise(1 << 24, 3)(static_cast<int>(given.size()), 0);
        for (const int shift : {0, 8, 16}) given.push_back(static_cast<uint8_t>(color >> shift));
        given.push_back(0x5A);
      }
      TestImage expected = builder.Colors(table).Build();
      for (size_t i = 0; colors > 0 && i < table.size(); ++i) expected.raw()[43 + 4 * i] = 0;
      EXPECT_EQ(omb_pseudocolor(image.get(), nullptr), 0u);
      EXPECT_EQ(omb_pseudocolor(image.get(), given.data()), 1u);
      EXPECT_EQ(image.Bytes(), expected.Bytes()) << bits << ", " << colors;
      EXPECT_EQ(omb_pseudocolor(image.get(), given.data()), 0u);  // not gray any more
      EXPECT_EQ(image.Bytes(), expected.Bytes());
    }
  }
}

TEST(Binary, TiesAtOneBitAreWhiteFrom128On) {
  const std::vector<uint32_t> table = {0x808080, 0x7F7F7F};
  for (const int threshold : {126, 127, 128, 129}) {
    TestImage image = ImageBuilder(1, 37, 3).Colors(table).Pixels(Noise(2, 33)).Build();
    const std::vector<uint32_t> pixels = image.Pixels();
    EXPECT_EQ(omb_binary(image.ref(), threshold), 1u);
    EXPECT_EQ(image.Pixels(), pixels);
    for (int i = 0; i < 2; ++i) {
      const bool white = White(BgrOf(table[static_cast<size_t>(i)]), threshold, 128);
      EXPECT_EQ(image.Color(i), white ? 0xFFFFFFu : 0u) << threshold;
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
      ExpectAtEveryLevel(image,
                         NaiveResult(
                             image, false, [](int, int) { return true; }, result),
                         omb_balance, 80, 20, -60, 1u, 1u);
    }
  }
}

// Contrasts are computed in some sets. 2 needs another fraction than most, 22 too.
TEST(PointOperations, EveryContrastInEverySet) {
  const TestImage levels =
      ImageBuilder(24, 259, 1).Pixels([](int x, int) { return Rgb(x, x, 255 - x); }).Build();
  for (auto set = simd::Supported(); *set != nullptr; ++set) {
    simd::Use(*set);
    for (int contrast = -130; contrast <= 130; ++contrast) {
      const int brightness = contrast % 3 * 20;
      TestImage image = levels.Clone();
      omb_brightnesscontrast(image.get(), brightness, contrast);
      for (int x = 0; x < 259; ++x) {
        const int v = Toned(x & 255, brightness, contrast);
        ASSERT_EQ(image.Pixel(x, 0), Rgb(v, v, Toned((255 - x) & 255, brightness, contrast)))
            << (*set)->name << ' ' << contrast << ' ' << x;
      }
    }
  }
  simd::Use(nullptr);
}

TEST(PointOperations, NothingToDo) {
  TestImage dot = ImageBuilder(24, 1, 1).Pixels([](int, int) { return 0x0180FFu; }).Build();
  omb_gammacorrection(dot.get(), std::nan(""));
  EXPECT_EQ(dot.Pixel(0, 0), 0u);
  EXPECT_EQ(omb_adjustghms(nullptr, 0, 0, 0), 0u);
  constexpr int kWrong[][4] = {{0, 0, 0, 0},    {5, 0, 0, 0},   {1, 256, 0, 0}, {1, 0, 0, -256},
                               {2, 0, -101, 0}, {2, 0, 0, 901}, {3, 361, 0, 0}, {3, 0, 101, 0},
                               {4, 0, 0, -101}, {4, -361, 0, 0}};
  for (const int bits : {8, 24, 32}) {
    Untouched image(bits);
    PackedDib* const dib = image.get();
    EXPECT_EQ(omb_gammacorrection(dib, 1.000000001) | omb_adjustghms(dib, 0, 0, 0), 0u);
    for (const uint32_t channel : {0u, 4u, 0x80000001u}) {
      EXPECT_EQ(omb_filtercolor(dib, channel) | omb_extractcolor(image.ref(), channel), 0u);
    }
    for (const auto& row : kWrong) {
      const auto mode = static_cast<uint32_t>(row[0]);
      EXPECT_EQ(omb_adjustcolor(dib, mode, row[1], row[2], row[3]), 0u) << mode;
    }
    EXPECT_EQ(omb_adjustcolor(dib, OMB_ADJUST_HSI, 0, 0, 0), bits != 32);
    EXPECT_EQ(omb_balance(dib, 0, 0, 0, OMB_BALANCE_ALL, 1), bits != 32);
    EXPECT_EQ(omb_balance(dib, 101, 0, 0, 0, 0) | omb_balance(dib, 0, -101, 0, 0, 0) |
                  omb_balance(dib, 1, 0, 101, 0, 0) | omb_balance(dib, 1, 0, 0, 4, 0),
              0u);
  }
}

}  // namespace
}  // namespace ombrilo::test
