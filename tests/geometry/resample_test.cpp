// omb_scale and omb_rotate beside a plain reference that reads one sample at a time.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "core/packed_dib.h"
#include "core/read_ahead.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

struct Picture {
  int width, height;
  std::vector<uint32_t> pixels;  // rows from the bottom
};

// The pixels of an image whose header may no longer tell its size.
Picture Read(TestImage& image, int width, int height) {
  uint8_t* raw = image.raw();
  const bool core = raw[0] != 40;
  const auto put = [&](size_t at, int value) {
    raw[at] = static_cast<uint8_t>(value);
    raw[at + 1] = static_cast<uint8_t>(value >> 8);
  };
  put(4, width);
  put(core ? 6 : 8, height);
  Picture picture = {width, height, {}};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) picture.pixels.push_back(image.Pixel(x, height - 1 - y));
  }
  return picture;
}

float Cubic(float t) {
  const float a = std::fabs(t);
  if (a < 1) return 1 - 2 * (a * a) + (a * a) * a;
  if (a < 2) return 4 - 8 * a + 5 * (a * a) - (a * a) * a;
  return 0;
}

class Reference {
 public:
  explicit Reference(const TestImage& source)
      : bits_(source.bit_count()), colors_(Naive(source).palette) {
    TestImage copy = source.Clone();
    from_ = Read(copy, source.width(), source.height());
  }

  Picture Scaled(int width, int height, uint32_t mode) const {
    const int w = from_.width, h = from_.height;
    const float fx = static_cast<float>(w) / static_cast<float>(width);
    const float fy = static_cast<float>(h) / static_cast<float>(height);
    Picture to = {width, height, {}};
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const float sx = static_cast<float>(x) * fx, sy = static_cast<float>(y) * fy;
        const int ix = static_cast<int>(sx), iy = static_cast<int>(sy);
        to.pixels.push_back(Sample(sx - static_cast<float>(ix), sy - static_cast<float>(iy),
                                   std::min(ix, w), std::min(iy, h), x, y, mode));
      }
    }
    return to;
  }

  Picture Rotated(double degrees, uint32_t mode) const {
    const double theta = degrees / 180 * 3.1415926;
    const float c = static_cast<float>(std::cos(theta)), s = static_cast<float>(std::sin(theta));
    const float w = static_cast<float>(from_.width), h = static_cast<float>(from_.height);
    const int width =
        static_cast<int>(std::max(std::fabs(w * c - h * s), std::fabs(w * c + h * s)) + 0.5f);
    const int height =
        static_cast<int>(std::max(std::fabs(h * c - w * s), std::fabs(h * c + w * s)) + 0.5f);
    Picture to = {width, height, {}};
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const float u = static_cast<float>(x - width / 2), v = static_cast<float>(height / 2 - y);
        const float sx = u * c + v * s + static_cast<float>(from_.width / 2);
        const float sy = u * s - v * c + static_cast<float>(from_.height / 2);
        const int ix = static_cast<int>(sx), iy = static_cast<int>(sy);
        const bool inside = ix >= 0 && ix < from_.width && iy >= 0 && iy < from_.height;
        to.pixels.push_back(inside ? Sample(sx - static_cast<float>(ix),
                                            sy - static_cast<float>(iy), ix, iy, x, y, mode)
                                   : (1u << bits_) - 1);
      }
    }
    return to;
  }

 private:
  uint32_t PixelAt(int column, int row) const {
    column = std::max(0, std::min(column, from_.width - 1));
    row = std::max(0, std::min(row, from_.height - 1));
    return from_.pixels[static_cast<size_t>(row * from_.width + column)];
  }

  uint32_t Sample(float dx, float dy, int ix, int iy, int x, int y, uint32_t mode) const {
    if (mode == 1) return PixelAt(ix, iy);
    Bgr color;
    for (size_t c = 0; c < 3; ++c) {
      const float value =
          mode == 2 ? Bilinear(dx, dy, ix, iy, c) : Bicubic(dx, dy, ix, iy, x, y, c);
      color[c] = static_cast<int>(std::max(0.0f, std::min(255.0f, value)));
    }
    return bits_ == 24 ? Rgb(color[2], color[1], color[0])
                       : static_cast<uint32_t>(Nearest(colors_, color));
  }

  float ChannelAt(int column, int row, size_t c) const {
    const uint32_t pixel = PixelAt(column, row);
    return static_cast<float>(bits_ == 24 ? static_cast<int>(pixel >> 8 * c & 255)
                                          : colors_[pixel][c]);
  }

  float Bilinear(float dx, float dy, int ix, int iy, size_t c) const {
    if (ix + 1 >= from_.width - 1) ix = from_.width - 2;
    if (iy + 1 >= from_.height - 1) iy = from_.height - 2;
    return (1 - dy) * (1 - dx) * ChannelAt(ix, iy, c) + (1 - dy) * dx * ChannelAt(ix + 1, iy, c) +
           (1 - dx) * dy * ChannelAt(ix, iy + 1, c) + dx * dy * ChannelAt(ix + 1, iy + 1, c);
  }

  float Bicubic(float dx, float dy, int ix, int iy, int x, int y, size_t c) const {
    const int w = from_.width, h = from_.height;
    int dxo[4] = {x - 1 < 0 ? 0 : -1, 0, x + 1 > w - 1 ? 0 : 1, 2};
    int dyo[4] = {y - 1 < 0 ? 0 : -1, 0, y + 1 > h - 1 ? 0 : 1, 2};
    if (x + 2 > w - 1) dxo[3] = dxo[2] == 1 ? 1 : 0;
    if (y + 2 > h - 1) dyo[3] = dyo[2] == 1 ? 1 : 0;
    if (bits_ == 24 && x + 2 > w - 1) {
      dxo[2] = 0;
      dxo[3] = 1;
    }
    const float across[4] = {Cubic(1 + dx), Cubic(dx), Cubic(1 - dx), Cubic(2 - dx)};
    const float down[4] = {Cubic(1 + dy), Cubic(dy), Cubic(1 - dy), Cubic(2 - dy)};
    float total = 0;
    for (int j = 0; j < 4; ++j) {
      float sum = 0;
      for (int k = 0; k < 4; ++k) {
        if (iy + dyo[j] > h - 1) iy = h - dyo[j] - 1;
        if (iy + dyo[j] < 0) iy = -dyo[j];
        if (ix + dxo[k] > w - 1) ix = w - ix - 1;
        if (ix + dxo[k] < 0) ix = -dxo[k];
        sum += ChannelAt(ix + dxo[k], iy + dyo[j], c) * across[k];
      }
      total += sum * down[j];
    }
    return total;
  }

  int bits_;
  std::vector<Bgr> colors_;
  Picture from_;
};

struct Kind {
  int bits;
  bool core;
  std::vector<uint32_t> colors;
};

std::vector<Kind> Kinds() {
  std::vector<Kind> kinds;
  for (const bool core : {false, true}) {
    for (const int bits : {1, 4, 8}) {
      kinds.push_back({bits, core, GrayRamp(1 << bits)});
      kinds.push_back({bits, core, VariedColors(1 << bits, 5)});
    }
    kinds.push_back({24, core, {}});
  }
  std::vector<uint32_t> falling = GrayRamp(256);  // gray, but indices are not the levels
  std::reverse(falling.begin(), falling.end());
  kinds.push_back({8, false, falling});
  kinds.push_back({4, false, GrayRamp(3)});  // the rest of the entries lies beyond, partly nowhere
  kinds.push_back({8, false, VariedColors(5, 6)});
  return kinds;
}

TestImage Make(const Kind& kind, int width, int height) {
  ImageBuilder builder(kind.bits, width, height);
  builder.Colors(kind.colors).Pixels(Noise(1u << kind.bits, 7)).Filler(0xA5);
  if (kind.core) builder.CoreHeader();
  return builder.Build();
}

// Runs an operation at every level and compares with the reference.
template <class Operation>
void ExpectEverywhere(const TestImage& source, const Picture& expected, Operation&& operation) {
  AtEveryLevel([&] {
    TestImage image = source.Clone();
    ASSERT_EQ(operation(image.ref()), 1u);
    ASSERT_EQ(Read(image, expected.width, expected.height).pixels, expected.pixels);
  });
}

TEST(Scale, EqualsTheReferenceAtEveryDepthSizeAndMode) {
  constexpr int kSizes[][4] = {
      {1, 1, 3, 2},       {2, 1, 5, 4},       {1, 2, 2, 7},      {2, 2, 9, 9},
      {3, 3, 7, 8},       {4, 4, 3, 11},      {5, 7, 13, 17},    {17, 9, 6, 4},
      {9, 30, 31, 9},     {61, 41, 53, 97},   {700, 5, 9, 12},   {9, 6, 6090, 7},
      {5000, 4, 4600, 3}, {300, 40, 133, 33}, {90, 40, 700, 33}, {2000, 35, 150, 33},
      {90, 80, 45, 40},   {90, 80, 45, 33},   {60, 30, 120, 60}};  // whole positions on an axis
  for (const Kind& kind : Kinds()) {
    for (const auto& [w, h, to_w, to_h] : kSizes) {
      const auto new_w = static_cast<uint32_t>(to_w), new_h = static_cast<uint32_t>(to_h);
      const TestImage source = Make(kind, w, h);
      const Reference reference(source);
      for (const uint32_t mode : {1u, 2u, 3u}) {
        SCOPED_TRACE(::testing::Message()
                     << kind.bits << " bits " << kind.core << " from " << w << "x" << h << " to "
                     << new_w << "x" << new_h << " mode " << mode);
        ExpectEverywhere(source, reference.Scaled(to_w, to_h, mode),
                         [&](PackedDib** image) { return omb_scale(image, new_w, new_h, mode); });
        if (HasFatalFailure()) return;
      }
    }
  }
}

TEST(Rotate, EqualsTheReferenceAtEveryDepthAngleAndMode) {
  constexpr int kSizes[][2] = {{1, 1}, {1, 6},   {2, 2},   {3, 5},
                               {4, 4}, {31, 23}, {600, 9}, {131, 150}};
  for (const Kind& kind : Kinds()) {
    for (const auto& [w, h] : kSizes) {
      const TestImage source = Make(kind, w, h);
      const Reference reference(source);
      for (const double degrees : {10.0, -90.0, 187.5, -359.0}) {
        for (const uint32_t mode : {1u, 2u, 3u}) {
          SCOPED_TRACE(::testing::Message() << kind.bits << " bits " << kind.core << " " << w << "x"
                                            << h << " by " << degrees << " mode " << mode);
          ExpectEverywhere(source, reference.Rotated(degrees, mode), [&](PackedDib** image) {
            const double turns = degrees < 0 ? -720 : 720;
            return omb_rotate(image, static_cast<float>(degrees + turns), mode);
          });
          if (HasFatalFailure()) return;
        }
      }
    }
  }
}

// At half of the size positions are whole: pixels are picked, in either mode. What a core's
// caches do not hold is sampled in pieces.
TEST(Scale, LargeImagesAtHalfSizeArePicked) {
  for (const int bits : {8, 24}) {
    const int width = bits == 8 ? 6002 : 4002,
              height = int{kCoreCached} / (width * bits / 8) / 2 * 2 + 2;
    const TestImage image(omb_newdib(width, height, static_cast<uint16_t>(bits)));
    const Dib source = *Dib::Open(image.get());
    const auto noise = Noise(256, 7);
    std::vector<uint8_t> bytes(source.stride());
    for (size_t i = 0; i < bytes.size(); ++i) {
      bytes[i] = static_cast<uint8_t>(noise(static_cast<int>(i), 0));
    }
    for (int y = 0; y < height; ++y) {
      for (size_t i = 0; i < bytes.size(); ++i) {
        source.row(y)[i] = static_cast<uint8_t>(bytes[i] + 3 * y);
      }
    }
    const size_t pixel = static_cast<size_t>(bits) / 8;
    for (const uint32_t mode : {OMB_RESAMPLE_POINT, OMB_RESAMPLE_BILINEAR}) {
      TestImage half = image.Clone();
      ASSERT_EQ(omb_scale(half.ref(), static_cast<uint32_t>(width) / 2,
                          static_cast<uint32_t>(height) / 2, mode),
                1u);
      const DibView result = *DibView::Open(half.get());
      size_t wrong = 0;
      for (int y = 0; y < height / 2; ++y) {
        for (size_t i = 0; i < pixel * static_cast<size_t>(width) / 2; ++i) {
          wrong += result.row(y)[i] != source.row(2 * y)[i + i / pixel * pixel];
        }
      }
      EXPECT_EQ(wrong, 0u) << bits << ' ' << mode;
    }
  }
}

// In a core header, scaling writes 32 bits of width over both sizes; rotating keeps 16 of each.
TEST(Resampling, HeadersOfResults) {
  TestImage core = Make({8, true, GrayRamp(256)}, 20, 10);
  ASSERT_EQ(omb_scale(core.ref(), 65536 + 7, 200, 1), 1u);
  EXPECT_EQ(core.width(), 7);
  EXPECT_EQ(core.height(), 1);
  TestImage rotated = Make({1, true, GrayRamp(2)}, 65535, 700);
  ASSERT_EQ(omb_rotate(rotated.ref(), 359.3f, 1), 1u);
  EXPECT_EQ(rotated.width(), 65539 - 65536);
  EXPECT_EQ(rotated.height(), 1501);

  TestImage info = ImageBuilder(8, 20, 10).Filler(0xA5).Field(20, 1234).Build();
  const std::vector<uint8_t> before = info.Bytes();
  ASSERT_EQ(omb_scale(info.ref(), 30, 9, 2), 1u);
  std::vector<uint8_t> after = info.Bytes();
  EXPECT_EQ(after.size(), 40u + 1024 + 32 * 9);
  EXPECT_EQ(after.back(), 0) << "padding";
  std::copy_n(before.begin() + 4, 8, after.begin() + 4);
  EXPECT_TRUE(std::equal(before.begin(), before.begin() + 40 + 1024, after.begin()));
}

// Depths and modes that paint nothing, and sizes without pixels.
TEST(Resampling, BlankImages) {
  for (const auto& [bits, mode] : {std::pair{2, 2u}, {16, 2u}, {32, 1u}, {24, 4u}, {8, 0u}}) {
    TestImage scaled = ImageBuilder(bits, 5, 4).Pixels(Noise(4, 1)).Filler(9).Build();
    TestImage rotated = scaled.Clone();
    EXPECT_EQ(omb_scale(scaled.ref(), 7, 3, mode), 1u);
    EXPECT_EQ(scaled.Pixels(), std::vector<uint32_t>(21, 0)) << bits;
    EXPECT_EQ(omb_rotate(rotated.ref(), 20, mode), 1u);
    const std::vector<uint8_t> bytes = rotated.Bytes();
    EXPECT_TRUE(std::all_of(omb_FindDIBBits(rotated.get()), rotated.raw() + bytes.size(),
                            [](uint8_t byte) { return byte == 255; }));
  }
  for (const uint32_t mode : {1u, 2u, 3u}) {
    TestImage image = Make({8, false, VariedColors(256, 1)}, 5, 4);
    EXPECT_EQ(omb_scale(image.ref(), 0, 4, mode), 1u);
    EXPECT_EQ(omb_scale(image.ref(), 6, 2, mode), 1u) << "from no width";
    EXPECT_EQ(image.Pixels(), std::vector<uint32_t>(12, 0));
    EXPECT_EQ(omb_scale(image.ref(), 6, 0, mode), 1u);
    EXPECT_EQ(omb_scale(image.ref(), 3, 2, mode), 1u) << "from no height";
    EXPECT_EQ(image.Pixels(), std::vector<uint32_t>(6, 0));
  }
}

TEST(Resampling, Refusals) {
  Untouched image(8, 5, 4);
  for (const auto& [w, h] : {std::pair{5u, 4u},
                             {0xFFFFFFFFu, 1u},
                             {1u, 0xFFFFFFFFu},
                             {0x10000u, 0x10000u},
                             {0x7FFFFFFFu, 1u},
                             {1u, 0x20000000u},
                             {0x80000000u, 0u},
                             {0x0FFFFFFDu, 0u}}) {
    EXPECT_EQ(omb_scale(image.ref(), w, h, 2), 0u) << w << " " << h;
  }
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float degrees : {0.0f, 360.0f, 0.005f, -0.005f, 720.005f, -1080.0f, infinity,
                              -infinity, infinity - infinity, 2147483648.0f, -3e9f}) {
    EXPECT_EQ(omb_rotate(image.ref(), degrees, 1), 0u) << degrees;
  }
  // The widest row whose bits, rounded up to 32, are a signed number.
  TestImage wide = image.Clone();
  EXPECT_EQ(omb_scale(wide.ref(), 0x0FFFFFFCu, 0, 2), 1u);
  TestImage line = Make({1, false, GrayRamp(2)}, 1 << 20, 1);
  EXPECT_EQ(omb_rotate(line.ref(), 45, 1), 0u) << "68 GB";
}

}  // namespace
}  // namespace ombrilo::test
