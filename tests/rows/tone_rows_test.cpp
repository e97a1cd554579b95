// Row functions on three-byte pixels, at every instruction set the processor has, against plain
// definitions, at every length around the vectors' and the runs' ends.
#include <gtest/gtest.h>

#include "rows/row_functions.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

using rows::RowFunctions;
using Bytes = std::vector<uint8_t>;

Bytes Random(size_t count, uint32_t seed) {
  const auto noise = Noise(256, seed);
  Bytes bytes;
  for (size_t i = 0; i < count; ++i)
    bytes.push_back(static_cast<uint8_t>(noise(static_cast<int>(i), 0)));
  return bytes;
}

// Runs `call` on `pixels` noisy pixels with untouchable bytes on both sides, and `reference` on a
// copy, color by color.
template <class Call, class Reference>
void Compare(size_t pixels, Call call, Reference reference) {
  Bytes actual = Random(3 * pixels + 2, 51);
  Bytes expected = actual;
  for (size_t x = 0; x < pixels; ++x) reference(&expected[1 + 3 * x]);
  call(actual.data() + 1);
  ASSERT_EQ(actual, expected) << pixels << " pixels";
}

// The same for results in a buffer of their own, one byte a pixel.
template <class Call, class Reference>
void CompareBytes(size_t pixels, Call call, Reference reference) {
  const Bytes bgr = Random(3 * pixels, 52);
  Bytes actual(pixels + 2, 0xEE), expected = actual;
  for (size_t x = 0; x < pixels; ++x) expected[1 + x] = reference(&bgr[3 * x]);
  call(bgr.data(), actual.data() + 1);
  ASSERT_EQ(actual, expected) << pixels << " pixels";
}

int Sum(const uint8_t* p) { return 11 * p[0] + 59 * p[1] + 30 * p[2]; }

TEST(ToneRows, EveryLevelGivesTheSameBytes) {
  std::vector<size_t> lengths = {1023, 1024, 1025, 1087, 2047, 2100};
  for (size_t n = 0; n < 200; ++n) lengths.push_back(n);
  const Bytes tables = Random(768, 53);
  for (const RowFunctions* const* level = rows::Supported(); *level != nullptr; ++level) {
    const RowFunctions& f = **level;
    SCOPED_TRACE(f.name);
    for (const size_t n : lengths) {
      for (const int amount : {-255, -20, 0, 20, 255}) {
        Compare(
            n, [&](uint8_t* p) { f.add_amount(p, 3 * n, amount); },
            [&](uint8_t* p) {
              for (int c = 0; c < 3; ++c) {
                p[c] = static_cast<uint8_t>(std::clamp(p[c] + amount, 0, 255));
              }
            });
      }
      Compare(
          n, [&](uint8_t* p) { f.apply_channel_tables(p, n, tables.data()); },
          [&](uint8_t* p) {
            for (size_t c = 0; c < 3; ++c) p[c] = tables[256 * c + p[c]];
          });
      for (size_t channel = 0; channel < 3; ++channel) {
        Compare(
            n, [&](uint8_t* p) { f.clear_channel(p, n, channel); },
            [&](uint8_t* p) { p[channel] = 0; });
        CompareBytes(
            n, [&](auto* p, auto* to) { f.extract_channel(p, n, channel, to); },
            [&](const uint8_t* p) { return p[channel]; });
      }
      const Bytes gray = Random(n, 54);
      size_t next = 0;
      Compare(
          n, [&](uint8_t* p) { f.spread(gray.data(), n, p); },
          [&](uint8_t* p) { p[0] = p[1] = p[2] = gray[next++]; });
      CompareBytes(
          n, [&](auto* p, auto* to) { f.gray_percent(p, n, to); },
          [](const uint8_t* p) { return static_cast<uint8_t>(Sum(p) / 100); });
      CompareBytes(
          n, [&](auto* p, auto* to) { f.gray_double(p, n, to); },
          [](const uint8_t* p) {
            return static_cast<uint8_t>(0.3 * p[2] + 0.59 * p[1] + 0.11 * p[0]);
          });
      for (const auto& [h, s1, s2] : {std::tuple{-90, 60, -20}, {255, -255, 1}, {0, 0, 255}}) {
        const auto add = [](uint8_t* p, bool chosen, int amount) {
          if (!chosen || amount == 0) return;
          p[2] = static_cast<uint8_t>(std::clamp(p[2] + amount, 0, 255));
          p[1] = static_cast<uint8_t>(std::clamp(p[1] + amount, 0, 255));
          p[0] = static_cast<uint8_t>(std::clamp(p[1] + amount, 0, 255));
        };
        Compare(
            n, [&, h = h, s1 = s1, s2 = s2](uint8_t* p) { f.adjust_lights(p, n, h, s1, s2); },
            [&, h = h, s1 = s1, s2 = s2](uint8_t* p) {
              add(p, p[0] + p[1] + p[2] > 510, h);
              add(p, p[0] + p[1] + p[2] < 255, s1);
              add(p, p[0] + p[1] + p[2] < 255, s2);
            });
      }
      const Bytes bgr = Random(3 * n, 55);
      for (const uint32_t limit : {0u, 12700u, 25501u}) {
        Bytes bits((n + 7) / 8 + 1, 0xA5), expected = bits;
        for (size_t x = 0; x < n; ++x) {
          const int mask = 0x80 >> x % 8;
          const bool white = static_cast<uint32_t>(Sum(&bgr[3 * x])) >= limit;
          expected[x / 8] = static_cast<uint8_t>((expected[x / 8] & ~mask) | (white ? mask : 0));
        }
        f.threshold(bgr.data(), n, limit, bits.data());
        ASSERT_EQ(bits, expected) << n;
      }
      for (const size_t step : {1u, 3u}) {
        uint32_t sets[4][256] = {};
        std::vector<uint32_t> expected(256), actual(256);
        for (size_t i = 0; i < n; ++i) ++expected[bgr[step * i]];
        f.count_bytes(bgr.data(), step, n, sets);
        for (size_t v = 0; v < 256; ++v) {
          actual[v] = sets[0][v] + sets[1][v] + sets[2][v] + sets[3][v];
        }
        ASSERT_EQ(actual, expected);
      }
    }
  }
}

// The whole-number division and the order of the double-precision sum, over every weighted sum and
// a dense set of colors.
TEST(ToneRows, GrayOverTheWholeRange) {
  Bytes bgr, percent, exact;
  for (int b = 0; b < 256; b += 5) {
    for (int g = 0; g < 256; g += 3) {
      for (int r = 0; r < 256; ++r) {
        for (const int v : {b, g, r}) bgr.push_back(static_cast<uint8_t>(v));
        percent.push_back(static_cast<uint8_t>((59 * g + 30 * r + 11 * b) / 100));
        const volatile double red = 0.3 * r, green = 0.59 * g, blue = 0.11 * b;
        const volatile double two = red + green;
        exact.push_back(static_cast<uint8_t>(two + blue));
      }
    }
  }
  for (const RowFunctions* const* level = rows::Supported(); *level != nullptr; ++level) {
    Bytes gray(percent.size());
    (*level)->gray_percent(bgr.data(), gray.size(), gray.data());
    EXPECT_EQ(gray, percent) << (*level)->name;
    (*level)->gray_double(bgr.data(), gray.size(), gray.data());
    EXPECT_EQ(gray, exact) << (*level)->name;
  }
  EXPECT_NE(percent, exact);
}

}  // namespace
}  // namespace ombrilo::test
