#include "support/naive.h"

#include <algorithm>

#include "rows/row_functions.h"

namespace ombrilo::test {

namespace {

size_t RowOffset(const TestImage& image, int y) {
  const size_t stride = (static_cast<size_t>(image.width() * image.bit_count()) + 31) / 32 * 4;
  return static_cast<size_t>(omb_FindDIBBits(image.get()) - image.raw()) +
         stride * static_cast<size_t>(y);
}

}  // namespace

int Nearest(const std::vector<Bgr>& palette, const Bgr& color) {
  int best = 1 << 30, answer = 0;
  for (size_t i = 0; i < palette.size(); ++i) {
    int distance = 0;
    for (size_t c = 0; c < 3; ++c) {
      distance += (palette[i][c] - color[c]) * (palette[i][c] - color[c]);
    }
    if (distance < best) best = distance, answer = static_cast<int>(i);
  }
  return answer;
}

TestImage WithBytes(const TestImage& image, const std::vector<uint8_t>& bytes) {
  TestImage copy = image.Clone();
  std::copy(bytes.begin(), bytes.end(), copy.raw());
  return copy;
}

Naive::Naive(const TestImage& image)
    : bits(image.bit_count()), width(image.width()), height(image.height()) {
  const std::vector<uint8_t> bytes = image.Bytes();
  const size_t header = bytes[0], step = header == 40 ? 4 : 3;
  const auto byte = [&](size_t i) { return i < bytes.size() ? int{bytes[i]} : 0; };
  for (size_t i = 0; bits < 24 && i < size_t{1} << bits; ++i) {
    const size_t at = header + step * i;
    palette.push_back({byte(at), byte(at + 1), byte(at + 2)});
  }
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const uint32_t value = image.Pixel(x, height - 1 - y);
      pixels.push_back(bits < 24 ? palette[value] : BgrOf(value));
    }
  }
}

std::vector<uint8_t> NaiveResult(const TestImage& image, bool zeroed,
                                 const std::function<bool(int, int)>& computed,
                                 const std::function<Bgr(int, int)>& result) {
  std::vector<uint8_t> bytes = image.Bytes();
  const Naive source(image);
  if (zeroed) std::fill(bytes.begin() + static_cast<int>(RowOffset(image, 0)), bytes.end(), 0);
  for (int y = 0; y < source.height; ++y) {
    uint8_t* row = bytes.data() + RowOffset(image, y);
    for (int x = 0; x < source.width; ++x) {
      if (!computed(x, y)) continue;
      const Bgr color = result(x, y);
      if (source.bits == 24) {
        for (int c = 0; c < 3; ++c) row[3 * x + c] = static_cast<uint8_t>(color[size_t(c)]);
        continue;
      }
      const int index = Nearest(source.palette, color);
      for (int bit = 0; bit < source.bits; ++bit) {
        const int at = x * source.bits + bit;
        const int mask = 0x80 >> at % 8;
        const bool set = (index >> (source.bits - 1 - bit) & 1) != 0;
        row[at / 8] = static_cast<uint8_t>((row[at / 8] & ~mask) | (set ? mask : 0));
      }
    }
  }
  return bytes;
}

std::vector<uint8_t> NaiveBytes(const TestImage& image, int step, const Margins& margins,
                                int passes, const std::function<int(const Neighbour&)>& value) {
  std::vector<uint8_t> block = image.Bytes();
  const int64_t start = omb_FindDIBBits(image.get()) - image.raw(), height = image.height();
  const int64_t stride = (image.width() * image.bit_count() + 31) / 32 * 4;
  const int64_t width = std::min<int64_t>(image.width(), stride / step);
  for (int pass = 0; pass < passes; ++pass) {
    const std::vector<uint8_t> before = block;
    for (int64_t y = std::max<int64_t>(margins.before, 0); y < height; ++y) {
      for (int64_t x = std::max<int64_t>(margins.left, 0); x < width; ++x) {
        if (y >= height - margins.after || x >= width - margins.right) continue;
        for (int c = 0; c < step; ++c) {
          const auto at = [&](int64_t column, int64_t row) {
            return static_cast<size_t>(start + row * stride + column * step + c);
          };
          const int result = value([&](int dx, int dy) {
            const int64_t column = x + dx, row = y + dy;
            if (column < 0 || column >= width || row < 0 || row >= height) return -1;
            return at(column, row) < before.size() ? int{before[at(column, row)]} : 0;
          });
          if (at(x, y) < block.size()) block[at(x, y)] = static_cast<uint8_t>(result);
        }
      }
    }
  }
  return block;
}

void ForVariedImages(const std::function<void(const TestImage&)>& test) {
  const std::pair<int, int> sizes[] = {{1, 1}, {1, 9}, {9, 1},  {2, 2},  {3, 3},  {4, 5},
                                       {7, 7}, {8, 6}, {6, 11}, {17, 8}, {33, 7}, {70, 9}};
  enum Table { kRamp, kGrays, kColored, kShort };
  uint32_t seed = 0;
  for (const int bits : {1, 4, 8, 24}) {
    for (const bool core : {false, true}) {
      for (const Table table : {kRamp, kGrays, kColored, kShort}) {
        // Core headers have no short tables, and 24 bits have no table.
        if ((core && table == kShort) || (bits == 24 && table != kRamp)) continue;
        for (const auto& [width, height] : sizes) {
          ImageBuilder builder(bits, width, height);
          builder.Pixels(Noise(1u << bits, ++seed)).Filler(0x5A);
          if (core) builder.CoreHeader();
          if (table == kGrays) {  // out of order, some levels twice and others not at all
            std::vector<uint32_t> grays;
            for (int i = 0; i < 1 << bits; ++i)
              grays.push_back(Rgb(240 - 6 * i, 240 - 6 * i, 240 - 6 * i));
            builder.Colors(grays);
          }
          if (table == kColored) builder.Colors(VariedColors(1 << bits, seed));
          if (table == kShort) builder.Colors(VariedColors((1 << bits) - 1, seed));
          SCOPED_TRACE(testing::Message() << bits << " bits, core " << core << ", table " << table
                                          << ", " << width << " x " << height);
          test(builder.Build());
          if (testing::Test::HasFailure()) return;
        }
      }
    }
  }
}

void AtEveryLevel(const std::function<void()>& test) {
  for (auto level = simd::Supported(); *level != nullptr; ++level) {
    SCOPED_TRACE((*level)->name);
    simd::Use(*level);
    test();
    if (testing::Test::HasFatalFailure()) break;
  }
  simd::Use(nullptr);
}

}  // namespace ombrilo::test
