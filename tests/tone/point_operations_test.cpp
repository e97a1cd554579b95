// Operations that send each color to a color by itself: what they change at which depth, against a
// color-by-color reference.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/image.h"

namespace ombrilo::test {
namespace {

// Blue, green, red.
using Color = std::array<int, 3>;

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

Color Lit(Color color, int highlights, int shadows1, int shadows2) {
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
  std::function<uint32_t(PackedDib**)> call;
  std::function<Color(Color)> reference;
  // Indexed images change their table, true-color ones their pixels; or an image with a table, of
  // any depth, changes that; or a true-color image is replaced, which is not tested here.
  enum { kByDepth, kByTable, kTableOnly } where;
  uint32_t other_depths = 0;  // the result there, with nothing changed
};

std::vector<Operation> Operations() {
  std::vector<Operation> all;
  all.push_back({"invert", [](PackedDib** p) { return omb_invert(*p); },
                 [](Color v) {
                   return Color{255 - v[0], 255 - v[1], 255 - v[2]};
                 },
                 Operation::kByDepth});
  constexpr int kTones[][2] = {{40, 0},  {-40, 0},   {300, 0},  {INT32_MIN, 0}, {0, 0},
                               {0, 50},  {0, 127},   {0, 128},  {0, 255},       {0, INT32_MAX},
                               {0, -50}, {0, -127},  {0, -200}, {1, 1},         {-30, 20},
                               {60, -9}, {99, -4000}};
  for (const auto& tone : kTones) {
    const int b = tone[0], c = tone[1];
    all.push_back({"tone", [=](PackedDib** p) { return omb_brightnesscontrast(*p, b, c); },
                   [=](Color v) {
                     return Color{Toned(v[0], b, c), Toned(v[1], b, c), Toned(v[2], b, c)};
                   },
                   Operation::kByDepth, 1});
  }
  for (const double g : {0.45, 2.0, 1.0001, -1.0}) {  // 0 to the -1 is infinity
    all.push_back({"gamma", [=](PackedDib** p) { return omb_gammacorrection(*p, g); },
                   [=](Color v) {
                     return Color{Gamma(v[0], g), Gamma(v[1], g), Gamma(v[2], g)};
                   },
                   Operation::kByTable});
  }
  constexpr int kLights[][3] = {{-10, 0, 0},   {30, 20, 0}, {0, 20, 20},
                                {0, 100, -60}, {5, 90, 90}, {INT32_MIN, INT32_MAX, -7}};
  for (const auto& l : kLights) {
    const int h = l[0], s1 = l[1], s2 = l[2];
    all.push_back({"lights", [=](PackedDib** p) { return omb_adjustghms(*p, h, s1, s2); },
                   [=](Color v) { return Lit(v, h, s1, s2); }, Operation::kByTable});
  }
  for (const size_t c : {0u, 1u, 2u}) {
    const uint32_t channel = 3 - static_cast<uint32_t>(c);
    all.push_back({"filter", [=](PackedDib** p) { return omb_filtercolor(*p, channel); },
                   [=](Color v) { return v[c] = 0, v; }, Operation::kByDepth});
    all.push_back({"extract", [=](PackedDib** p) { return omb_extractcolor(p, channel); },
                   [=](Color v) {
                     Color only = {};
                     return only[c] = v[c], only;
                   },
                   Operation::kTableOnly});
  }
  all.push_back({"gray", omb_gray,
                 [](Color v) {
                   const int gray = (11 * v[0] + 59 * v[1] + 30 * v[2]) / 100;
                   return Color{gray, gray, gray};
                 },
                 Operation::kTableOnly});
  return all;
}

// Noise with more than a fair share of very dark and very light colors, and their limits.
uint32_t Scene(int x, int y) {
  const uint32_t noise = Noise(1 << 24, 5)(x, y);
  if (x % 7 == 0) return Rgb(255, 255, x % 2) - (x % 3 == 0 ? 0xAAAA : 0) * (y % 2u);
  return x % 3 == 0 ? noise & 0x7F7F7F : x % 3 == 1 ? noise | 0x808080 : noise;
}

void Map(const Operation& op, std::vector<uint8_t>& bytes, size_t at) {
  const Color to = op.reference({bytes[at], bytes[at + 1], bytes[at + 2]});
  for (size_t c = 0; c < 3; ++c) bytes[at + c] = static_cast<uint8_t>(to[c]);
}

struct Shape {
  uint32_t size_field;
  int bits, colors, width, height;
};

void Check(const Operation& op, const Shape& s) {
  std::vector<uint32_t> colors;
  for (int i = 0; i < s.colors; ++i) colors.push_back(Scene(i, 9));
  TestImage image = ImageBuilder(s.bits, s.width, s.height)
                        .CoreHeader(s.size_field)
                        .Colors(colors)
                        .Pixels(Scene)
                        .Filler(0xA5)
                        .Build();
  const PackedDib* const address = image.get();
  std::vector<uint8_t> expected = image.Bytes();
  const bool indexed = s.bits == 1 || s.bits == 4 || s.bits == 8;
  const size_t step = s.size_field == 40 ? 4 : 3;
  const size_t rows = s.size_field + step * colors.size();
  if (indexed || (op.where == Operation::kByTable && s.colors != 0)) {
    for (size_t i = 0; i < colors.size(); ++i) Map(op, expected, s.size_field + step * i);
  } else if (s.bits == 24) {
    const size_t width = static_cast<size_t>(s.width), stride = (3 * width + 3) / 4 * 4;
    for (size_t at = rows; at < expected.size(); at += stride) {
      for (size_t x = 0; x < width; ++x) Map(op, expected, at + 3 * x);
    }
  }
  const bool taken = indexed || s.bits == 24 || op.where == Operation::kByTable;
  EXPECT_EQ(op.call(image.ref()), taken ? 1 : op.other_depths);
  EXPECT_EQ(image.get(), address);
  EXPECT_EQ(image.Bytes(), expected);
}

TEST(PointOperations, ChangeTheTableOrThePixelsAndNothingElse) {
  std::vector<Shape> shapes;
  for (const int height : {3, 0, -3}) {
    for (const uint32_t size_field : {40u, 12u, 41u}) {
      for (const int bits : {1, 4, 8}) shapes.push_back({size_field, bits, 1 << bits, 13, height});
      for (const int width : {1, 5, 70, 1100}) shapes.push_back({size_field, 24, 0, width, height});
    }
    for (const int bits : {4, 8, 24}) shapes.push_back({40, bits, 3, 13, height});
  }
  for (const Operation& op : Operations()) {
    for (Shape s : shapes) {
      SCOPED_TRACE(op.name + ", header " + std::to_string(s.size_field) + ", bits " +
                   std::to_string(s.bits) + ", width " + std::to_string(s.width));
      if (s.size_field != 40 && s.height < 0) continue;  // cannot be stored
      if (s.bits == 24 && op.where == Operation::kTableOnly) continue;
      Check(op, s);
      s.colors = 0;
      for (const int bits : {2, 16, 32}) {
        s.bits = bits;
        if (op.where != Operation::kByTable) Check(op, s);
      }
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
