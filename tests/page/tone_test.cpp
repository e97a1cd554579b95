// Tone curves of pages against their definition, in whole numbers of 64 bits.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

struct Tone {
  int curve, percent, strength, size, block;  // block 0: the whole image
};

using Counts = std::array<int64_t, 256>;
using Curve = std::array<int64_t, 256>;

int64_t Level(const Bgr& c, int bits) {
  return bits == 8 ? c[0] : (299 * c[2] + 587 * c[1] + 114 * c[0] + 500) / 1000;
}

int64_t Line(int64_t a, int64_t b, int64_t v) {
  if (a >= b) return v;
  if (v <= a) return 0;
  return v >= b ? 255 : (510 * (v - a) + b - a) / (2 * (b - a));
}

int64_t Logarithm(int64_t v) {
  if (v <= 50) return 0;
  return std::min<int64_t>(255, static_cast<int64_t>(163.3133 * std::log(double(v) / 50.0) + 0.5));
}

int64_t Paper(const Counts& h, int64_t n, int k) {
  int64_t sum = 0, best = -1, paper = 0;
  for (int v = 0; v < 256; ++v) sum += v * h[size_t(v)];
  for (int64_t v = sum / n; v < 256; ++v) {
    int64_t near = 0;
    for (int64_t u = v - k; u <= v + k; ++u) near += u >= 0 && u <= 255 ? h[size_t(u)] : 0;
    if (near >= best) best = near, paper = v;
  }
  return paper;
}

// `least` paper: of blocks.
Curve CurveOf(const Counts& h, const Tone& tone, int64_t least) {
  int64_t n = 0, lo = 256, hi = -1, excess = 0, first = 0, sum = 0;
  for (const int64_t count : h) n += count;
  const int64_t cut = n * std::max(tone.strength, 0) / 1000;
  const int64_t limit = tone.strength > 0 ? std::max<int64_t>(1, n * tone.strength / 25600) : n;
  int64_t below = 0;
  for (int v = 0; v < 256; ++v) {
    if (n - below > cut) hi = v;
    below += h[size_t(v)];
    if (below > cut && lo == 256) lo = v;
    excess += std::max<int64_t>(0, h[size_t(v)] - limit);
  }
  const bool blocks = tone.block != 0;
  int64_t paper = Paper(h, n, blocks ? 2 : std::max(tone.size, 0));
  if (blocks) paper = std::max(paper, least);
  Curve g;
  for (int64_t v = 0; v < 256; ++v) {
    int64_t f = v;
    if (tone.curve == 0) {
      sum += std::min(h[size_t(v)], limit);
      const int64_t c = sum + excess * (v + 1) / 256;
      if (first == 0) first = c;
      if (first != n) f = c == 0 ? 0 : ((c - first) * 255 + (n - first) / 2) / (n - first);
    } else if (tone.curve == 1) {
      f = Line(blocks ? std::min(lo, hi / 2) : lo, hi, v);
    } else if (tone.curve == 2) {
      f = Line(std::min(lo, paper / 2), paper - paper / 8, v);
    } else {
      f = Logarithm(blocks ? std::min<int64_t>(255, v * 255 / paper) : v);
    }
    g[size_t(v)] = v + (f - v) * std::min(tone.percent, 100) / 100;
  }
  // One level: nothing is spread, not even below it.
  if (tone.curve == 0 && first == n) {
    for (int64_t v = 0; v < 256; ++v) g[size_t(v)] = v;
  }
  return g;
}

// The blocks around a pixel on an axis, with their weights.
struct Around {
  int64_t first, second, weight;
};

Around Find(int64_t at, int64_t block, int64_t count) {
  const int64_t t = 2 * at + 1 - block;
  if (t < 0) return {0, 0, 0};
  const int64_t a = t / (2 * block);
  if (a >= count - 1) return {count - 1, count - 1, 0};
  return {a, a + 1, t % (2 * block) * 128 / block};
}

Bgr Given(const Bgr& color, int64_t wanted) {
  const int64_t own = Level(color, 24);
  int64_t c[3], least = 255, most = 0;
  for (int i = 0; i < 3; ++i) {
    c[i] = color[size_t(i)] + wanted - own;
    least = std::min(least, c[i]), most = std::max(most, c[i]);
  }
  Bgr given;
  for (int i = 0; i < 3; ++i) {
    if (least < 0) {
      c[i] = wanted + (c[i] - wanted) * wanted / (wanted - least);
    } else if (most > 255) {
      c[i] = wanted + (c[i] - wanted) * (255 - wanted) / (most - wanted);
    }
    given[size_t(i)] = static_cast<int>(c[i]);
  }
  return given;
}

std::vector<uint8_t> Toned(const TestImage& image, const Tone& tone) {
  Naive pixels(image);
  if (pixels.bits == 8) {  // bytes are levels
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) {
        const int v = static_cast<int>(image.Pixel(x, image.height() - 1 - y));
        pixels.At(x, y) = {v, v, v};
      }
    }
  }
  const int width = image.width(), height = image.height();
  const int b = tone.block == 0 ? std::max(width, height) * 2 : tone.block;
  const int columns = std::max(1, (width + b / 2) / b), rows = std::max(1, (height + b / 2) / b);
  std::vector<Counts> counts(size_t(columns * rows));
  Counts whole = {};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto level = size_t(Level(pixels.At(x, y), pixels.bits));
      const int block = std::min(y / b, rows - 1) * columns + std::min(x / b, columns - 1);
      ++counts[size_t(block)][level], ++whole[level];
    }
  }
  const int64_t least = std::max<int64_t>(1, Paper(whole, int64_t{width} * height, 2) / 4);
  std::vector<Curve> curves;
  for (const Counts& h : counts) curves.push_back(CurveOf(h, tone, least));
  std::vector<uint8_t> bytes = image.Bytes();
  const auto start = static_cast<size_t>(omb_FindDIBBits(image.get()) - image.raw());
  const size_t step = size_t(pixels.bits) / 8, stride = (size_t(width) * step + 3) / 4 * 4;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const Bgr color = pixels.At(x, y);
      const auto v = size_t(Level(color, pixels.bits));
      const Around h = Find(x, b, columns), u = Find(y, b, rows);
      const auto g = [&](int64_t row, int64_t column) {
        return curves[size_t(row * columns + column)][v];
      };
      const int64_t lower =
          g(u.first, h.first) * (256 - h.weight) + g(u.first, h.second) * h.weight;
      const int64_t upper =
          g(u.second, h.first) * (256 - h.weight) + g(u.second, h.second) * h.weight;
      const int64_t level = (lower * (256 - u.weight) + upper * u.weight + 32768) / 65536;
      const Bgr given = step == 1 ? Bgr{int(level), 0, 0} : Given(color, level);
      for (size_t c = 0; c < step; ++c) {
        bytes[start + size_t(y) * stride + size_t(x) * step + c] = static_cast<uint8_t>(given[c]);
      }
    }
  }
  return bytes;
}

TEST(PageTone, CurvesOfTheImageAndOfBlocks) {
  // A shadow, a page without any, three levels, and one.
  const std::function<uint32_t(int, int)> scenes[] = {
      [](int x, int y) { return 90u + uint32_t(x + y) - Noise(70, 3)(x, y); },
      [](int x, int y) { return Noise(8, 6)(x, y) == 0 ? 30u : 225 + Noise(20, 2)(x, y); },
      [](int x, int y) { return 60u * Noise(3, 6)(x, y); },
      [](int, int) { return 77u; },
  };
  int turn = 0;
  for (const int bits : {8, 24}) {
    for (const auto& scene : scenes) {
      for (const auto& [width, height] : {std::pair{1, 1}, {24, 23}, {88, 70}, {523, 9}}) {
        ImageBuilder builder(bits, width, height);
        if (turn % 2 == 1) builder.CoreHeader();
        const TestImage image =
            builder.Filler(0x5A)
                .Pixels([&](int x, int y) {
                  const uint32_t v = scene(x, y) & 255;
                  return bits == 8 ? v : v | Noise(256, 1)(x, y) << 8 | (v ^ 0x50) << 16;
                })
                .Build();
        for (int curve = 0; curve < 4; ++curve) {
          for (const int block : {0, 16, 17, 33, 800}) {
            constexpr int kStrengths[] = {0, 10, 300, -5, 1000, 120}, kPercents[] = {100, 60, 250};
            const Tone tone = {curve, kPercents[turn % 3], kStrengths[turn % 6], turn % 5 - 1,
                               block};
            ++turn;
            SCOPED_TRACE(testing::Message()
                         << bits << " bits, " << width << " x " << height << ", curve " << curve
                         << ", block " << block << ", strength " << tone.strength);
            ExpectAtEveryLevel(image, Toned(image, tone), omb_EnhancePage, tone.size, tone.percent,
                               tone.strength, block, 0, 4, block == 0 ? 0 : 1, curve);
          }
        }
      }
    }
  }
}

TEST(PageTone, RefusesAndLeavesAlone) {
  const Untouched image(24, 40, 20);
  const auto call = [](PackedDib* dib, int percent, int block, int scope, int curve) {
    return omb_EnhancePage(dib, 9, percent, 0, block, 0, 4, scope, curve);
  };
  for (const int percent : {0, 100}) {
    for (const int curve : {-1, 4}) {
      EXPECT_EQ(call(image.get(), percent, 20, 0, curve), 0);
      EXPECT_EQ(call(image.get(), percent, 20, 1, curve), 0);
    }
    for (const int block : {-1, 0, 15, 32768}) {
      EXPECT_EQ(call(image.get(), percent, block, 1, 2), 0);
    }
    for (const int scope : {0, 1}) {
      EXPECT_EQ(call(nullptr, percent, 20, scope, 0), 0);
      TestImage other = ImageBuilder(4, 9, 8).Build();
      EXPECT_EQ(call(other.get(), percent, 20, scope, 0), 0);
    }
  }
  for (const int percent : {0, -3}) EXPECT_EQ(call(image.get(), percent, 20, 1, 2), 1);
}

}  // namespace
}  // namespace ombrilo::test
