// Tone curves against their definitions.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/untouched.h"

namespace ombrilo::test {
namespace {

using Curve = std::array<uint8_t, 256>;
using Points = std::vector<OmbPoint>;

// Piece by piece, from slopes that are computed once.
Curve Smooth(const Points& points) {
  const size_t last = points.size() - 1;
  std::vector<double> h, d, s, m(points.size());
  for (size_t i = 0; i < last; ++i) {
    h.push_back(points[i + 1].x - points[i].x);
    d.push_back(points[i + 1].y - points[i].y);
    s.push_back(d[i] / h[i]);
  }
  const auto limited = [](double slope, double most) {
    return std::min(std::max(slope, -2 * most), 2 * most);
  };
  const auto end = [&](size_t a, size_t b) {
    const double slope =
        (d[a] * h[b] * (2 * h[a] + h[b]) - d[b] * h[a] * h[a]) / (h[a] * h[b] * (h[a] + h[b]));
    return slope * d[a] > 0 ? limited(slope, std::abs(s[a])) : 0;
  };
  if (last == 1) m = {s[0], s[0]};
  if (last > 1) m[0] = end(0, 1), m[last] = end(last - 1, last - 2);
  for (size_t i = 1; i < last; ++i) {
    const size_t a = i - 1, b = i;
    if (d[a] * d[b] <= 0) continue;
    const double slope = (d[a] * h[b] * h[b] + d[b] * h[a] * h[a]) / (h[a] * h[b] * (h[a] + h[b]));
    m[i] = limited(slope, std::min(std::abs(s[a]), std::abs(s[b])));
  }
  Curve curve;
  for (int v = 0; v < 256; ++v) {
    auto& to = curve[static_cast<size_t>(v)];
    size_t i = 0;
    while (i <= last && points[i].x <= v) ++i;  // the first point after the level
    to = static_cast<uint8_t>(points[i == 0 ? 0 : i - 1].y);
    if (i == 0 || i > last) continue;
    --i;
    const double t = v - points[i].x;
    const double bend = (m[i] - s[i]) * (h[i] - t) - (m[i + 1] - s[i]) * t;
    to = static_cast<uint8_t>(points[i].y + d[i] * t / h[i] +
                              t * (h[i] - t) * bend / (h[i] * h[i]) + 0.5);
  }
  return curve;
}

// Halves go up, also where the line falls.
Curve Straight(const Points& points) {
  Curve curve;
  for (int v = 0; v < 256; ++v) {
    auto& to = curve[static_cast<size_t>(v)];
    to = static_cast<uint8_t>(v < points[0].x ? points[0].y : points.back().y);
    for (size_t i = 0; i + 1 < points.size(); ++i) {
      const auto [x0, y0] = points[i];
      const auto [x1, y1] = points[i + 1];
      if (v < x0 || v > x1) continue;
      to = static_cast<uint8_t>(std::floor(
          (2.0 * (y0 * (x1 - x0) + (v - x0) * (y1 - y0)) + (x1 - x0)) / (2 * (x1 - x0))));
    }
  }
  return curve;
}

std::vector<Points> ManyPoints() {
  std::vector<Points> all = {
      {{0, 0}, {255, 255}},         {{9, 77}},
      {{0, 0}, {1, 255}},           {{0, 255}, {255, 0}},
      {{100, 3}, {103, 250}},       {{0, 0}, {100, 0}, {101, 255}, {255, 255}},
      {{0, 0}, {10, 1}, {255, 255}}};
  for (uint32_t seed = 1; seed < 60; ++seed) {
    const auto noise = Noise(256, seed);
    Points points;
    const int step = 1 + static_cast<int>(noise(0, 0)) % 90;
    for (int x = static_cast<int>(noise(0, 1) % 40); x < 256; x += 1 + (step + x) % 90) {
      points.push_back({x, static_cast<int32_t>(noise(x, 2))});
    }
    all.push_back(points);
  }
  Points full;
  for (int x = 0; x < 256; ++x) full.push_back({x, (x * 37 + 11) & 255});
  all.push_back(full);
  return all;
}

uint32_t Count(const Points& points) { return static_cast<uint32_t>(points.size()); }

// Every level in each channel, under a table that does not matter.
ImageBuilder Levels() {
  ImageBuilder builder(24, 256, 2);
  builder.Pixels([](int x, int y) { return Rgb(x, x * 3 + y, 255 - x); }).Filler(0x5A);
  return builder.Colors(GrayRamp(4));
}

void ExpectCurve(const Curve& curve, const std::function<uint32_t(PackedDib*, uint32_t)>& call) {
  for (uint32_t channel = 0; channel < 4; ++channel) {
    const auto to = [&](uint32_t rgb) {
      for (uint32_t c = 1; c <= 3; ++c) {
        if (channel != 0 && c != channel) continue;
        const uint32_t shift = 24 - 8 * c, v = rgb >> shift & 255;
        rgb = (rgb & ~(255u << shift)) | uint32_t{curve[v]} << shift;
      }
      return rgb;
    };
    TestImage image = Levels().Build();
    const TestImage before = image.Clone();
    EXPECT_EQ(call(image.get(), channel), 1u);
    const auto pixel = [&](int x, int y) { return to(before.Pixel(x, y)); };
    EXPECT_EQ(image.Bytes(), Levels().Pixels(pixel).Build().Bytes()) << channel;
  }
}

TEST(ToneCurve, EveryLevelOfTheChannelGoesThroughIt) {
  for (const Points& points : ManyPoints()) {
    Curve fitted;
    ASSERT_EQ(omb_bestfit(points.data(), Count(points), fitted.data()), 1u);
    EXPECT_EQ(fitted, Smooth(points));
    ExpectCurve(fitted, [&](PackedDib* dib, uint32_t channel) {
      return omb_curve(dib, points.data(), Count(points), channel);
    });
    ExpectCurve(Straight(points), [&](PackedDib* dib, uint32_t channel) {
      return omb_segmentoperation(dib, points.data(), Count(points), channel);
    });
  }
  constexpr int kSliders[][2] = {{0, 255}, {40, 200},  {7, 8},   {7, 9},
                                 {0, 0},   {255, 255}, {200, 40}};
  for (const auto& sliders : kSliders) {
    const int x1 = sliders[0], x2 = sliders[1];
    Points points = {{std::min(x1, x2), x1 <= x2 ? 0 : 255},
                     {std::max(x1, x2), x1 <= x2 ? 255 : 0}};
    if (x1 == x2) points = x1 == 0 ? Points{{0, 255}} : Points{{x1 - 1, 0}, {x1, 255}};
    Curve curve = Straight(points);
    // The falling line is the complement of the rising one: its halves go down.
    for (int v = 0; v < 256 && x1 > x2; ++v) {
      const int d = x1 - x2, rise = std::clamp((510 * (v - x2) + d) / (2 * d), 0, 255);
      curve[static_cast<size_t>(v)] = static_cast<uint8_t>(v <= x2 ? 255 : 255 - rise);
    }
    ExpectCurve(curve, [&](PackedDib* dib, uint32_t channel) {
      return omb_x1x2_changed(dib, x1, x2, channel);
    });
  }
}

TEST(ToneCurve, TablesChangeAndGrayOnesStayGray) {
  for (const int bits : {1, 4, 8}) {
    for (const bool gray : {true, false}) {
      const int count = bits == 8 ? 100 : 1 << bits;  // a table that is shorter than its depth's
      const auto colors = gray ? GrayRamp(count) : VariedColors(count, 5);
      const auto builder = [&](const std::vector<uint32_t>& table) {
        ImageBuilder image(bits, 9, 3);
        return image.Colors(table).Pixels(Noise(1u << bits, 3)).Filler(0xA5).Build();
      };
      TestImage image = builder(colors);
      EXPECT_EQ(omb_x1x2_changed(image.get(), 255, 0, OMB_CHANNEL_RED), 1u);
      std::vector<uint32_t> expected;
      for (const uint32_t rgb : colors) expected.push_back(rgb ^ (gray ? 0xFFFFFF : 0xFF0000));
      EXPECT_EQ(image.Bytes(), builder(expected).Bytes()) << bits << gray;
    }
  }
}

TEST(ToneCurve, Refusals) {
  const Points wrong[] = {
      {}, {{0, 256}}, {{-1, 0}}, {{256, 0}}, {{5, -1}}, {{5, 5}, {5, 6}}, {{0, 0}, {9, 9}, {8, 9}}};
  const Untouched image(24);
  Curve curve;
  curve.fill(77);
  const Curve untouched = curve;
  Points many(257);
  for (int i = 0; i < 257; ++i) many[static_cast<size_t>(i)] = {std::min(i, 255), 0};
  EXPECT_EQ(omb_bestfit(many.data(), 257, curve.data()), 0u);
  EXPECT_EQ(omb_bestfit(nullptr, 1, curve.data()), 0u);
  constexpr OmbPoint kDot = {0, 0};
  EXPECT_EQ(omb_bestfit(&kDot, 1, nullptr), 0u);
  for (const Points& points : wrong) {
    EXPECT_EQ(omb_bestfit(points.data(), Count(points), curve.data()), 0u);
    EXPECT_EQ(omb_curve(image.get(), points.data(), Count(points), 0), 0u);
    EXPECT_EQ(omb_segmentoperation(image.get(), points.data(), Count(points), 0), 0u);
  }
  EXPECT_EQ(omb_curve(image.get(), &kDot, 1, 4) | omb_segmentoperation(image.get(), &kDot, 1, 4),
            0u);
  EXPECT_EQ(omb_x1x2_changed(image.get(), 0, 256, 0) | omb_x1x2_changed(image.get(), -1, 9, 0), 0u);
  EXPECT_EQ(curve, untouched);
}

}  // namespace
}  // namespace ombrilo::test
