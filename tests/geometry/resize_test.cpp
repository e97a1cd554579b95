// Resized images against the definition, pixel by pixel.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "core/bytes.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

double Sinc(double x) {
  return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

double Filter(uint32_t filter, double x) {
  const double a = std::fabs(x);
  if (filter == 1) return x > -0.5 && x <= 0.5 ? 1 : 0;
  if (filter == 2) return std::max(0.0, 1 - a);
  if (filter == 4) return x >= -3 && x < 3 ? Sinc(x) * Sinc(x / 3) : 0;
  if (a < 1) return (1.5 * a - 2.5) * a * a + 1;
  return a < 2 ? -0.5 * (((a - 5) * a + 8) * a - 4) : 0;
}

// One row or column.
std::vector<int> Line(const std::vector<int>& from, int m, uint32_t filter) {
  const int n = static_cast<int>(from.size());
  if (n == m) return from;
  constexpr double kRadius[] = {0, 0.5, 1, 2, 3};
  const double s = static_cast<double>(n) / m, u = std::max(1.0, s), r = kRadius[filter];
  std::vector<int> to;
  for (int i = 0; i < m; ++i) {
    const double c = (i + 0.5) * s;
    const int first = std::max(0, static_cast<int>(c - r * u + 0.5));
    const int end = std::min(n, static_cast<int>(c + r * u + 0.5));
    double weights = 0;
    for (int k = first; k < end; ++k) weights += Filter(filter, (k - c + 0.5) * (1 / u));
    int64_t sum = 1 << 21;
    for (int k = first; k < end; ++k) {
      const double weight = Filter(filter, (k - c + 0.5) * (1 / u)) / weights;
      sum += from[static_cast<size_t>(k)] * std::llround(weight * (1 << 22));
    }
    to.push_back(static_cast<int>(std::clamp<int64_t>(sum >> 22, 0, 255)));
  }
  return to;
}

// A channel, the top row first.
std::vector<std::vector<int>> Plane(const std::vector<std::vector<int>>& rows, int width,
                                    int height, uint32_t filter) {
  std::vector<std::vector<int>> across, resized(static_cast<size_t>(height));
  for (const auto& row : rows) across.push_back(Line(row, width, filter));
  for (size_t x = 0; x < static_cast<size_t>(width); ++x) {
    std::vector<int> column;
    for (const auto& row : across) column.push_back(row[x]);
    const std::vector<int> down = Line(column, height, filter);
    for (size_t y = 0; y < resized.size(); ++y) resized[y].push_back(down[y]);
  }
  return resized;
}

std::vector<uint8_t> Resized(const TestImage& image, int width, int height, uint32_t filter) {
  const Naive source(image);
  const bool core = image.Bytes()[0] == 12;
  const bool gray = source.bits <= 8 && omb_iscolorful(image.get()) == 0;
  const size_t channels = gray ? 1 : 3, header = core ? 12 : 40;
  const size_t stride = (channels * static_cast<size_t>(width) + 3) / 4 * 4;
  std::vector<uint8_t> bytes = image.Bytes();
  bytes.resize(header);
  if (core) {
    StoreU16(&bytes[4], static_cast<uint16_t>(width));
    StoreU16(&bytes[6], static_cast<uint16_t>(height));
    StoreU16(&bytes[10], gray ? 8 : 24);
  } else {
    StoreU32(&bytes[4], static_cast<uint32_t>(width));
    StoreU32(&bytes[8], static_cast<uint32_t>(height));
    StoreU16(&bytes[14], gray ? 8 : 24);
    std::fill(bytes.begin() + 32, bytes.end(), uint8_t{0});
  }
  for (int i = 0; gray && i < 256; ++i) {
    bytes.insert(bytes.end(), 3, static_cast<uint8_t>(i));
    if (!core) bytes.push_back(0);
  }
  const size_t start = bytes.size();
  bytes.resize(start + stride * static_cast<size_t>(height));
  for (size_t c = 0; c < channels; ++c) {
    std::vector<std::vector<int>> rows;
    for (int y = source.height - 1; y >= 0; --y) {
      rows.emplace_back();
      for (int x = 0; x < source.width; ++x) {
        const Bgr& p = source.At(x, y);
        rows.back().push_back(gray ? (299 * p[2] + 587 * p[1] + 114 * p[0] + 500) / 1000 : p[c]);
      }
    }
    const auto plane = Plane(rows, width, height, filter);
    for (size_t y = 0; y < plane.size(); ++y) {
      for (size_t x = 0; x < plane[y].size(); ++x) {
        bytes[start + (plane.size() - 1 - y) * stride + channels * x + c] =
            static_cast<uint8_t>(plane[y][x]);
      }
    }
  }
  return bytes;
}

void Expect(const TestImage& image, int width, int height, uint32_t filter) {
  const std::vector<uint8_t> expected = Resized(image, width, height, filter);
  SCOPED_TRACE(testing::Message() << "to " << width << " x " << height << ", filter " << filter);
  ExpectAtEveryLevel(image, expected, omb_resize, static_cast<uint32_t>(width),
                     static_cast<uint32_t>(height), filter);
}

TEST(Resize, IsTheWeightedSumOfRowsAndColumns) {
  uint32_t filter = 0;
  ForVariedImages([&](const TestImage& image) {
    for (const auto& [width, height] : {std::pair{1, 1}, {5, 13}, {41, 4}}) {
      Expect(image, width, height, filter++ % 4 + 1);
    }
    Expect(image, image.width(), image.height(), 1);
    Expect(image, image.width(), 20, 2 + filter % 3);
  });
}

// Pieces of rows, batches of rows, and the ring of rows in reach.
TEST(Resize, LargerThanWhatIsResizedAtATime) {
  for (const int bits : {1, 8, 24}) {
    const TestImage image = ImageBuilder(bits, 300, 90).Pixels(Noise(1u << bits, 8)).Build();
    for (uint32_t filter = 1; filter <= 4; ++filter) {
      Expect(image, 131, 47, filter);
      Expect(image, 5, 3, filter);
    }
    Expect(image, 600, 100, 3);
  }
}

TEST(Resize, BoxesOnAPixelsCenterCountFromTheTopLeft) {
  TestImage image = ImageBuilder(8, 3, 3).Pixels([](int x, int y) { return 16 * y + x; }).Build();
  ASSERT_EQ(omb_resize(image.ref(), 2, 2, 1), 1u);
  // Of three pixels, the middle one lies on the edge between both new ones: it goes to the first.
  EXPECT_EQ(image.Pixels(), (std::vector<uint32_t>{9, 10, 33, 34}));
}

TEST(Resize, RefusesAndLeavesAlone) {
  Untouched image(24);
  for (const uint32_t size : {0u, 32768u, 0xFFFFFFFFu}) {
    EXPECT_EQ(omb_resize(image.ref(), size, 5, 1) | omb_resize(image.ref(), 5, size, 1), 0u);
  }
  EXPECT_EQ(omb_resize(image.ref(), 5, 5, 0) | omb_resize(image.ref(), 5, 5, 5), 0u);
  EXPECT_EQ(omb_resize(image.ref(), 32767, 32767, 1), 0u);  // 3 GiB
  EXPECT_EQ(omb_resize(nullptr, 5, 5, 1), 0u);
  for (const int bits : {16, 32}) {
    Untouched other(bits);
    EXPECT_EQ(omb_resize(other.ref(), 2, 2, 1), 0u);
  }
  TestImage empty = ImageBuilder(8, 9, 0).Build();
  EXPECT_EQ(omb_resize(empty.ref(), 5, 5, 1), 1u);
  EXPECT_EQ(empty.width(), 9);
}

}  // namespace
}  // namespace ombrilo::test
