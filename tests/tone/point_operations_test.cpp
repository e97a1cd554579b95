// Operations that send each color to a color by itself, against a color-by-color reference: on the
// pixels of 24-bit images and on the color tables of others. Reserved bytes, padding and what else
// the block holds stay.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/naive.h"

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

struct Operation {
  std::string name;
  std::function<uint32_t(PackedDib*)> call;
  std::function<Bgr(Bgr)> reference;
  bool at_24_bits = true;  // in place there, too
};

std::vector<Operation> Operations() {
  std::vector<Operation> all;
  all.push_back({"invert", omb_invert, [](Bgr v) {
                   return Bgr{255 - v[0], 255 - v[1], 255 - v[2]};
                 }});
  constexpr int kTones[][2] = {{40, 0},  {-40, 0},   {300, 0},  {INT32_MIN, 0}, {0, 0},
                               {0, 50},  {0, 127},   {0, 128},  {0, 255},       {0, INT32_MAX},
                               {0, -50}, {0, -127},  {0, -200}, {1, 1},         {-30, 20},
                               {60, -9}, {99, -4000}};
  for (const auto& tone : kTones) {
    const int b = tone[0], c = tone[1];
    all.push_back({"tone", [=](PackedDib* p) { return omb_brightnesscontrast(p, b, c); },
                   [=](Bgr v) {
                     return Bgr{Toned(v[0], b, c), Toned(v[1], b, c), Toned(v[2], b, c)};
                   }});
  }
  for (const double g : {0.45, 2.0, 1.0001, -1.0}) {  // 0 to the -1 is infinity
    all.push_back({"gamma", [=](PackedDib* p) { return omb_gammacorrection(p, g); },
                   [=](Bgr v) {
                     return Bgr{Gamma(v[0], g), Gamma(v[1], g), Gamma(v[2], g)};
                   }});
  }
  constexpr int kLights[][3] = {{-10, 0, 0},   {30, 20, 0}, {0, 20, 20},
                                {0, 100, -60}, {5, 90, 90}, {INT32_MIN, INT32_MAX, -7}};
  for (const auto& l : kLights) {
    const int h = l[0], s1 = l[1], s2 = l[2];
    all.push_back({"lights", [=](PackedDib* p) { return omb_adjustghms(p, h, s1, s2); },
                   [=](Bgr v) { return Lit(v, h, s1, s2); }});
  }
  for (const size_t c : {0u, 1u, 2u}) {
    all.push_back({"filter",
                   [=](PackedDib* p) { return omb_filtercolor(p, 3 - static_cast<uint32_t>(c)); },
                   [=](Bgr v) { return v[c] = 0, v; }});
    const auto extract = [=](PackedDib* p) {
      return omb_extractcolor(&p, 3 - static_cast<uint32_t>(c));
    };
    all.push_back({"extract", extract,
                   [=](Bgr v) {
                     Bgr kept = {};
                     kept[c] = v[c];
                     return kept;
                   },
                   false});
  }
  all.push_back({"gray", [](PackedDib* p) { return omb_gray(&p); },
                 [](Bgr v) {
                   const int gray = (11 * v[0] + 59 * v[1] + 30 * v[2]) / 100;
                   return Bgr{gray, gray, gray};
                 },
                 false});
  return all;
}

// Noise with more than a fair share of very dark and very light colors, and their limits.
uint32_t Scene(int x, int y) {
  const uint32_t noise = Noise(1 << 24, 5)(x, y);
  if (x % 7 == 0) return Rgb(255, 255, x % 2) - (x % 3 == 0 ? 0xAAAA : 0) * (y % 2u);
  return x % 3 == 0 ? noise & 0x7F7F7F : x % 3 == 1 ? noise | 0x808080 : noise;
}

uint32_t Sent(const Operation& op, uint32_t rgb) { return RgbOf(op.reference(BgrOf(rgb))); }

TEST(PointOperations, ChangePixelsOfTrueColorImages) {
  for (const Operation& op : Operations()) {
    if (!op.at_24_bits) continue;
    for (const int width : {1, 5, 70, 1100}) {
      ImageBuilder builder(24, width, 3);
      TestImage image = builder.Pixels(Scene).Filler(0xA5).Build();
      const TestImage expected =
          builder.Pixels([&](int x, int y) { return Sent(op, Scene(x, y)); }).Build();
      EXPECT_EQ(op.call(image.get()), 1u) << op.name;
      EXPECT_EQ(image.Bytes(), expected.Bytes()) << op.name << ", width " << width;
    }
  }
}

// Whole tables and, after an information header, short and long ones.
TEST(PointOperations, ChangeTablesOfIndexedImages) {
  for (const Operation& op : Operations()) {
    for (const int bits : {1, 4, 8}) {
      for (const int colors :
           {1 << bits, -(1 << bits), 1, (1 << bits) + 3}) {  // below 0: core header
        std::vector<uint32_t> table = VariedColors(std::abs(colors), 9);
        if (bits == 8)
          std::transform(table.begin(), table.end() - 1, table.begin() + 1, [](uint32_t c) {
            return Scene(static_cast<int>(c % 50), static_cast<int>(c % 3));
          });
        ImageBuilder builder(bits, 37, 3);
        builder.Pixels(Noise(1u << bits, 2)).Filler(0xA5).CoreHeader(colors < 0 ? 12 : 40);
        TestImage image = builder.Colors(table).Build();
        for (uint32_t& color : table) color = Sent(op, color);
        const TestImage expected = builder.Colors(table).Build();
        EXPECT_EQ(op.call(image.get()), 1u) << op.name;
        EXPECT_EQ(image.Bytes(), expected.Bytes()) << op.name << ", " << bits << ", " << colors;
      }
    }
  }
}

// Pixels after a color table: gamma and lights take the table, the others the pixels.
TEST(PointOperations, TrueColorImagesWithATable) {
  for (const Operation& op : Operations()) {
    if (!op.at_24_bits) continue;
    const bool in_table = op.name == "gamma" || op.name == "lights";
    const auto sent = [&](bool changed, uint32_t rgb) { return changed ? Sent(op, rgb) : rgb; };
    std::vector<uint32_t> table = VariedColors(5, 8);
    ImageBuilder builder(24, 37, 3);
    TestImage image = builder.Colors(table).Pixels(Scene).Filler(0xA5).Build();
    for (uint32_t& color : table) color = sent(in_table, color);
    builder.Colors(table).Pixels([&](int x, int y) { return sent(!in_table, Scene(x, y)); });
    EXPECT_EQ(op.call(image.get()), 1u);
    EXPECT_EQ(image.Bytes(), builder.Build().Bytes()) << op.name;
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

TEST(PointOperations, NothingToDo) {
  TestImage dot = ImageBuilder(24, 1, 1).Pixels([](int, int) { return 0x0180FFu; }).Build();
  omb_gammacorrection(dot.get(), std::nan(""));
  EXPECT_EQ(dot.Pixel(0, 0), 0u);
  EXPECT_EQ(omb_adjustghms(nullptr, 0, 0, 0), 0u);
  for (const int bits : {8, 24}) {
    TestImage image = ImageBuilder(bits, 9, 2).Pixels(Noise(256, 1)).Build();
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(omb_gammacorrection(image.get(), 1.000000001), 0u);
    EXPECT_EQ(omb_adjustghms(image.get(), 0, 0, 0), 0u);
    for (const uint32_t channel : {0u, 4u, 0x80000001u}) {
      EXPECT_EQ(omb_filtercolor(image.get(), channel), 0u);
      EXPECT_EQ(omb_extractcolor(image.ref(), channel), 0u);
    }
    EXPECT_EQ(image.Bytes(), before);
  }
}

}  // namespace
}  // namespace ombrilo::test
