// Operations that send each color to a color by itself: what they change at which depth, against a
// color-by-color reference.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "support/image.h"

namespace ombrilo::test {
namespace {

int Red(uint32_t rgb) { return static_cast<int>(rgb >> 16 & 255); }
int Green(uint32_t rgb) { return static_cast<int>(rgb >> 8 & 255); }
int Blue(uint32_t rgb) { return static_cast<int>(rgb & 255); }

// A channel through brightness and contrast.
int Toned(int value, int brightness, int contrast) {
  value = std::clamp(value + brightness, 0, 255);
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

uint32_t Lit(uint32_t rgb, bool (*chosen)(int sum), int amount) {
  if (amount == 0 || !chosen(Red(rgb) + Green(rgb) + Blue(rgb))) return rgb;
  const int green = std::clamp(Green(rgb) + amount, 0, 255);
  return Rgb(std::clamp(Red(rgb) + amount, 0, 255), green, std::clamp(green + amount, 0, 255));
}

uint32_t AdjustedLights(uint32_t rgb, int highlights, int shadows1, int shadows2) {
  const auto dark = [](int sum) { return sum < 255; };
  return Lit(Lit(Lit(
                     rgb, [](int sum) { return sum > 510; }, highlights),
                 dark, shadows1),
             dark, shadows2);
}

template <class Channel>
uint32_t EachChannel(uint32_t rgb, Channel channel) {
  return Rgb(channel(Red(rgb)), channel(Green(rgb)), channel(Blue(rgb)));
}

struct Operation {
  std::string name;
  std::function<uint32_t(PackedDib**)> call;
  std::function<uint32_t(uint32_t)> reference;
  bool pixels_without_table;  // a table changes instead of the pixels at any depth
  bool in_place_at_24_bits = true;
  uint32_t refusal = 0;  // result at depths it does not take
};

std::vector<Operation> Operations() {
  std::vector<Operation> all;
  constexpr int kTones[][2] = {{40, 0},  {-40, 0},  {300, 0},        {-300, 0},
                               {0, 50},  {0, 127},  {0, 128},        {0, 255},
                               {0, -50}, {0, -127}, {0, -200},       {-30, 20},
                               {60, -9}, {1, 1},    {INT32_MAX, -1}, {INT32_MIN, INT32_MAX}};
  for (const auto& tone : kTones) {
    const int b = tone[0], c = tone[1];
    all.push_back({"brightness " + std::to_string(b) + " contrast " + std::to_string(c),
                   [=](PackedDib** image) { return omb_brightnesscontrast(*image, b, c); },
                   [=](uint32_t rgb) {
                     return EachChannel(rgb, [=](int v) {
                       return Toned(v, std::clamp(b, -300, 300), std::min(c, 300));
                     });
                   },
                   false, true, 1});
  }
  for (const double gamma : {0.45, 2.0, 1.0001}) {
    all.push_back(
        {"gamma " + std::to_string(gamma),
         [=](PackedDib** image) { return omb_gammacorrection(*image, gamma); },
         [=](uint32_t rgb) { return EachChannel(rgb, [=](int v) { return Gamma(v, gamma); }); },
         true});
  }
  constexpr int kLights[][3] = {{-10, 0, 0},
                                {30, 20, 0},
                                {0, 20, 20},
                                {0, 300, 0},
                                {0, 100, -60},
                                {5, 90, 90},
                                {INT32_MIN, INT32_MAX, -7}};
  for (const auto& light : kLights) {
    const int h = light[0], s1 = light[1], s2 = light[2];
    all.push_back({"lights " + std::to_string(h) + " " + std::to_string(s1),
                   [=](PackedDib** image) { return omb_adjustghms(*image, h, s1, s2); },
                   [=](uint32_t rgb) {
                     const auto near = [](int a) { return std::clamp(a, -600, 600); };
                     return AdjustedLights(rgb, near(h), near(s1), near(s2));
                   },
                   true});
  }
  for (uint32_t channel = 1; channel <= 3; ++channel) {
    const uint32_t mask = 0xFF0000u >> 8 * (channel - 1);
    all.push_back({"filter " + std::to_string(channel),
                   [=](PackedDib** image) { return omb_filtercolor(*image, channel); },
                   [=](uint32_t rgb) { return rgb & ~mask; }, false});
    all.push_back({"extract " + std::to_string(channel),
                   [=](PackedDib** image) { return omb_extractcolor(image, channel); },
                   [=](uint32_t rgb) { return rgb & mask; }, false, false});
  }
  all.push_back({"gray", omb_gray,
                 [](uint32_t rgb) {
                   const int gray = (11 * Blue(rgb) + 59 * Green(rgb) + 30 * Red(rgb)) / 100;
                   return Rgb(gray, gray, gray);
                 },
                 false, false});
  return all;
}

// Noise with more than a fair share of very dark and very light colors.
uint32_t Scene(int x, int y) {
  const uint32_t noise = Noise(1 << 24, 5)(x, y);
  return x % 3 == 0 ? noise & 0x7F7F7F : x % 3 == 1 ? noise | 0x808080 : noise;
}

TEST(PointOperations, IndexedImagesChangeTheAnnouncedTableAlone) {
  for (const Operation& op : Operations()) {
    for (const uint32_t size_field : {40u, 12u, 41u}) {
      for (const int bits : {1, 4, 8}) {
        for (const bool full : {true, false}) {
          if (!full && size_field != 40) continue;  // only an information header has a short table
          SCOPED_TRACE(op.name + ", header " + std::to_string(size_field) + ", bits " +
                       std::to_string(bits));
          std::vector<uint32_t> colors;
          for (int i = 0; i < (full ? 1 << bits : 1 + bits / 4); ++i) colors.push_back(Scene(i, 9));
          TestImage image = ImageBuilder(bits, 13, 3)
                                .CoreHeader(size_field)
                                .Colors(colors)
                                .Pixels(Noise(1u << bits, 6))
                                .Filler(0xA5)
                                .Build();
          const PackedDib* const address = image.get();
          std::vector<uint8_t> expected = image.Bytes();
          for (size_t i = 0; i < colors.size(); ++i) {
            const uint32_t rgb = op.reference(colors[i]);
            uint8_t* entry = &expected[size_field + (size_field == 40 ? 4 : 3) * i];
            for (int c = 0; c < 3; ++c) entry[c] = static_cast<uint8_t>(rgb >> 8 * c);
          }
          EXPECT_EQ(op.call(image.ref()), 1u);
          EXPECT_EQ(image.get(), address);
          EXPECT_EQ(image.Bytes(), expected);
        }
      }
    }
  }
}

TEST(PointOperations, TrueColorImagesChangeTheirPixelsAndKeepPadding) {
  for (const Operation& op : Operations()) {
    if (!op.in_place_at_24_bits) continue;
    for (const uint32_t size_field : {40u, 12u, 14u}) {
      for (const int width : {1, 5, 70, 1100}) {
        SCOPED_TRACE(op.name + ", width " + std::to_string(width));
        ImageBuilder builder(24, width, 3);
        builder.CoreHeader(size_field).Filler(0x5A);
        TestImage image = builder.Pixels(Scene).Build();
        const TestImage expected =
            builder.Pixels([&](int x, int y) { return op.reference(Scene(x, y)); }).Build();
        EXPECT_EQ(op.call(image.ref()), 1u);
        EXPECT_EQ(image.Bytes(), expected.Bytes());
      }
    }
  }
}

TEST(PointOperations, AColorTableAtTwentyFourBits) {
  for (const Operation& op : Operations()) {
    if (!op.in_place_at_24_bits) continue;
    SCOPED_TRACE(op.name);
    const std::vector<uint32_t> colors = {0x010203, 0xFDFEFF, 0x102030};
    ImageBuilder builder(24, 5, 2);
    TestImage image = builder.Colors(colors).Pixels(Scene).Build();
    const TestImage before = image.Clone();
    EXPECT_EQ(op.call(image.ref()), 1u);
    for (int i = 0; i < 3; ++i) {
      const uint32_t color = before.Color(i);
      EXPECT_EQ(image.Color(i), op.pixels_without_table ? op.reference(color) : color);
    }
    const uint32_t pixel = before.Pixel(4, 1);
    EXPECT_EQ(image.Pixel(4, 1), op.pixels_without_table ? pixel : op.reference(pixel));
  }
}

TEST(PointOperations, WhatIsRefusedOrHasNoRowsStaysAsItIs) {
  for (const Operation& op : Operations()) {
    SCOPED_TRACE(op.name);
    for (const int height : {0, -3}) {
      if (!op.in_place_at_24_bits) continue;
      TestImage image = ImageBuilder(24, 4, height).Build();
      const std::vector<uint8_t> before = image.Bytes();
      EXPECT_EQ(op.call(image.ref()), 1u);
      EXPECT_EQ(image.Bytes(), before);
    }
    for (const int bits : {2, 16, 32}) {
      if (op.pixels_without_table) continue;
      TestImage image = ImageBuilder(bits, 5, 2).Pixels(Scene).Build();
      const std::vector<uint8_t> before = image.Bytes();
      EXPECT_EQ(op.call(image.ref()), op.refusal);
      EXPECT_EQ(image.Bytes(), before);
    }
  }
}

TEST(PointOperations, ResultsForNullAndNothingToDo) {
  EXPECT_EQ(omb_brightnesscontrast(nullptr, 10, 10), 1u);
  EXPECT_EQ(omb_gammacorrection(nullptr, 2.0), 0u);
  EXPECT_EQ(omb_adjustghms(nullptr, 1, 0, 0), 1u);
  EXPECT_EQ(omb_adjustghms(nullptr, 0, 0, 0), 0u);
  EXPECT_EQ(omb_filtercolor(nullptr, 1), 0u);
  for (const int bits : {8, 24}) {
    TestImage image = ImageBuilder(bits, 9, 2).Pixels(Noise(256, 1)).Build();
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(omb_brightnesscontrast(image.get(), 0, 0), 1u);
    EXPECT_EQ(omb_gammacorrection(image.get(), 1.000000001), 0u);
    EXPECT_EQ(omb_adjustghms(image.get(), 0, 0, 0), 0u);
    for (const uint32_t channel : {0u, 4u, 0x80000001u}) {
      EXPECT_EQ(omb_filtercolor(image.get(), channel), 0u);
      EXPECT_EQ(omb_extractcolor(image.ref(), channel), 0u);
    }
    EXPECT_EQ(image.Bytes(), before);
  }
}

// Values worked out by hand, so that the reference is not the only witness.
TEST(PointOperations, KnownValues) {
  const auto map = [](int value, const std::function<void(PackedDib*)>& call) {
    TestImage image = ImageBuilder(24, 1, 1).Pixels([=](int, int) { return value; }).Build();
    call(image.get());
    return image.Pixel(0, 0);
  };
  constexpr int kContrast[][3] = {{50, 50, 0},     {50, 51, 1},    {50, 205, 255},  {50, 206, 255},
                                  {50, 128, 128},  {127, 127, 0},  {127, 128, 255}, {-50, 0, 50},
                                  {-50, 128, 127}, {-50, 255, 205}};
  for (const auto& row : kContrast) {
    const int contrast = row[0], value = row[1], result = row[2];
    EXPECT_EQ(map(value, [=](PackedDib* p) { omb_brightnesscontrast(p, 0, contrast); }) & 255,
              static_cast<uint32_t>(result))
        << contrast << " " << value;
  }
  const auto gamma = [&](int value, double g) {
    return map(value, [=](PackedDib* p) { omb_gammacorrection(p, g); }) & 255;
  };
  EXPECT_EQ(gamma(0, 2.0), 0u);
  EXPECT_EQ(gamma(128, 2.0), 64u);
  EXPECT_EQ(gamma(255, 2.0), 255u);
  EXPECT_EQ(gamma(64, 0.5), 128u);
  EXPECT_EQ(gamma(0, -1.0), 255u);  // infinite
  EXPECT_EQ(gamma(9, std::nan("")), 0u);

  const auto lights = [&](uint32_t rgb, int h, int s1, int s2) {
    return map(static_cast<int>(rgb), [=](PackedDib* p) { omb_adjustghms(p, h, s1, s2); });
  };
  EXPECT_EQ(lights(0xFFFFFF, -10, 0, 0), Rgb(245, 245, 235));
  EXPECT_EQ(lights(Rgb(0, 255, 255), -10, 0, 0), Rgb(0, 255, 255));  // sum 510
  EXPECT_EQ(lights(Rgb(1, 255, 255), -10, 0, 0), Rgb(0, 245, 235));  // sum 511
  EXPECT_EQ(lights(Rgb(85, 85, 85), 0, 9, 0), Rgb(85, 85, 85));      // sum 255
  EXPECT_EQ(lights(Rgb(30, 20, 10), 0, 20, 0), Rgb(50, 40, 60));
  EXPECT_EQ(lights(Rgb(30, 20, 10), 0, 20, 20), Rgb(70, 60, 80));
  EXPECT_EQ(lights(0, 0, 300, 0), 0xFFFFFFu);
}

// Without a table, gamma and lights walk the pixel data three bytes to a pixel at every depth, with
// their own row advance, and end with the data.
TEST(PointOperations, ByteWalksStayInsideThePixelData) {
  for (const int bits : {2, 8, 16, 32}) {
    for (const int width : {1, 3, 4, 30}) {
      SCOPED_TRACE(std::to_string(bits) + " bits, width " + std::to_string(width));
      const int height = 4;
      ImageBuilder builder(bits, width, height);
      builder.Colors({}).Pixels(Noise(1u << std::min(bits, 24), 8)).Filler(0x33);
      if (bits == 8) builder.Field(32, 65536);  // a table of 0 entries
      const TestImage before = builder.Build();
      std::vector<uint8_t> toned = before.Bytes(), lit = toned;
      const size_t stride = (toned.size() - 40) / height;
      size_t at = 40;
      for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, at += 3) {
          for (size_t i = at; i < std::min(at + 3, toned.size()); ++i) {
            toned[i] = static_cast<uint8_t>(Gamma(toned[i], 2.0));
          }
          if (at + 3 > lit.size()) continue;  // a last group that does not fit stays
          const uint32_t rgb = AdjustedLights(Rgb(lit[at + 2], lit[at + 1], lit[at]), 9, 30, 0);
          for (int c = 0; c < 3; ++c) lit[at + c] = static_cast<uint8_t>(rgb >> 8 * c);
        }
        at += stride - static_cast<size_t>(width * bits / 8);
      }
      TestImage image = before.Clone();
      EXPECT_EQ(omb_gammacorrection(image.get(), 2.0), 1u);
      EXPECT_EQ(image.Bytes(), toned);
      image = before.Clone();
      EXPECT_EQ(omb_adjustghms(image.get(), 9, 30, 0), 1u);
      EXPECT_EQ(image.Bytes(), lit);
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
