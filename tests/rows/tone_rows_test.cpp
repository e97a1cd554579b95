// Row functions on three-byte pixels: every instruction set the processor has gives the bytes of
// the plain code, at every length around the ends of vectors and runs, and touches nothing else.
// That the bytes are right is for the tests of the operations to say.
#include <gtest/gtest.h>

#include <functional>
#include <map>

#include "rows/row_functions.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

using rows::RowFunctions;

std::vector<uint8_t> Random(size_t count, uint32_t seed) {
  std::vector<uint8_t> bytes;
  const auto noise = Noise(256, seed);
  while (bytes.size() < count) bytes.push_back(noise(static_cast<int>(bytes.size()), 0) & 255);
  return bytes;
}

TEST(ToneRows, EveryLevelGivesTheSameBytes) {
  // On n pixels at p; other input and output at q.
  using Call = std::function<void(const RowFunctions&, size_t n, uint8_t* p, uint8_t* q)>;
  const std::vector<uint8_t> tables = Random(768, 53);
  std::vector<Call> calls;
  for (const int amount : {-255, -20, 0, 20, 255}) {
    calls.push_back([=](auto& f, size_t n, auto* p, auto*) { f.add_amount(p, n, amount); });
    calls.push_back([=](auto& f, size_t n, auto* p, auto*) {
      f.adjust_lights(p, n, amount, 60 - amount / 4, -amount);
    });
  }
  for (const size_t c : {0u, 1u, 2u}) {
    calls.push_back([=](auto& f, size_t n, auto* p, auto*) { f.clear_channel(p, n, c); });
    calls.push_back([=](auto& f, size_t n, auto* p, auto* q) { f.extract_channel(p, n, c, q); });
  }
  for (const uint32_t limit : {0u, 12700u, 25501u}) {
    calls.push_back([=](auto& f, size_t n, auto* p, auto* q) { f.threshold(p, n, limit, q); });
  }
  calls.push_back(
      [&](auto& f, size_t n, auto* p, auto*) { f.apply_channel_tables(p, n, tables.data()); });
  calls.push_back([](auto& f, size_t n, auto* p, auto* q) { f.spread(q, n, p); });
  calls.push_back([](auto& f, size_t n, auto* p, auto* q) { f.gray_percent(p, n, q); });
  calls.push_back([](auto& f, size_t n, auto* p, auto* q) { f.gray_double(p, n, q); });
  for (const size_t step : {1u, 3u}) {
    calls.push_back([=](auto& f, size_t n, auto* p, auto* q) {
      uint32_t sets[8][rows::kCounters] = {};
      f.count_bytes(p, step, n, sets);
      for (size_t v = 0; v < n && v < 256; ++v) {
        q[v] = 0;
        for (const auto& set : sets) q[v] = static_cast<uint8_t>(q[v] + set[v]);
      }
    });
  }
  std::vector<size_t> lengths = {1023, 1024, 1025, 1087, 2047, 2100};
  for (size_t n = 0; n < 200; ++n) lengths.push_back(n);
  for (const size_t n : lengths) {
    for (size_t k = 0; k < calls.size(); ++k) {
      std::vector<uint8_t> expected;
      for (const RowFunctions* const* level = rows::Supported(); *level != nullptr; ++level) {
        std::vector<uint8_t> bytes = Random(4 * n + 3, 51);
        calls[k](**level, n, bytes.data() + 1, bytes.data() + 3 * n + 2);
        if (expected.empty()) expected = bytes;
        ASSERT_EQ(bytes, expected) << (*level)->name << ", call " << k << ", " << n << " pixels";
      }
    }
  }
}

// The whole-number forms of gray values against their definitions, over a dense set of colors.
TEST(ToneRows, GrayValues) {
  std::vector<uint8_t> bgr, percent, exact;
  for (int b = 0; b < 256; b += 5) {
    for (int g = 0; g < 256; g += 3) {
      for (int r = 0; r < 256; ++r) {
        for (const int v : {b, g, r}) bgr.push_back(static_cast<uint8_t>(v));
        percent.push_back(static_cast<uint8_t>((59 * g + 30 * r + 11 * b) / 100));
        exact.push_back(static_cast<uint8_t>(0.3 * r + 0.59 * g + 0.11 * b));
      }
    }
  }
  EXPECT_NE(percent, exact);
  for (const RowFunctions* const* level = rows::Supported(); *level != nullptr; ++level) {
    std::vector<uint8_t> gray(percent.size());
    (*level)->gray_percent(bgr.data(), gray.size(), gray.data());
    EXPECT_EQ(gray, percent) << (*level)->name;
    (*level)->gray_double(bgr.data(), gray.size(), gray.data());
    EXPECT_EQ(gray, exact) << (*level)->name;
  }
}

}  // namespace
}  // namespace ombrilo::test
