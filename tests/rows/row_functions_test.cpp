// Every instruction set gives the bytes of plain code, for every row length from 0 to 300, and
// touches nothing outside the row.
#include "rows/row_functions.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <vector>

namespace ombrilo::rows {
namespace {

constexpr size_t kLongest = 300;

std::vector<uint8_t> Bytes(size_t count, uint32_t seed) {
  std::vector<uint8_t> bytes(count);
  for (size_t i = 0; i < count; ++i) {
    seed = seed * 1664525u + 1013904223u;
    bytes[i] = static_cast<uint8_t>(seed >> 24);
  }
  return bytes;
}

// What a function does to a buffer that ends behind `bytes_per_pixel` bytes for each of n pixels
// and `more`: input first, output behind it. That plain code's bytes are right is for the tests of
// pixels and operations to say.
struct Case {
  const char* name;
  size_t bytes_per_pixel, more;
  std::function<void(const RowFunctions&, uint8_t* bytes, size_t n)> call;
};

const std::vector<Case>& Cases() {
  static const std::vector<uint8_t> table = Bytes(256, 99);
  static const ChannelBits five_six_five[] = {{0x1F, 0, 3}, {0x7E0, 5, 2}, {0xF800, 11, 3}};
  static const ChannelBits odd[] = {{0x3FF00000, 20, 30}, {0, 31, 8}, {0x00F00F00, 8, 0}};
  static std::vector<Case> cases = {
      {"invert", 1, 0, [](auto& f, auto* p, size_t n) { f.invert(p, n); }},
      {"apply_table", 1, 0, [](auto& f, auto* p, size_t n) { f.apply_table(p, n, table.data()); }},
      {"unpack1", 2, 0,
       [](auto& f, auto* p, size_t n) { f.unpack1(p + n - (n + 7) / 8, n, p + n); }},
      {"unpack4", 2, 0,
       [](auto& f, auto* p, size_t n) { f.unpack4(p + n - (n + 1) / 2, n, p + n); }},
      {"pack1", 2, 0, [](auto& f, auto* p, size_t n) { f.pack1(p, n, p + 2 * n - (n + 7) / 8); }},
      {"pack4", 2, 0, [](auto& f, auto* p, size_t n) { f.pack4(p, n, p + 2 * n - (n + 1) / 2); }},
      {"drop_fourth_byte", 7, 0,
       [](auto& f, auto* p, size_t n) { f.drop_fourth_byte(p, n, p + 4 * n); }},
  };
  for (size_t shift = 1; shift < 8; ++shift) {
    cases.push_back({"shift_bits", 2, 1,
                     [=](auto& f, auto* p, size_t n) { f.shift_bits(p, shift, n, p + n + 1); }});
  }
  for (const ChannelBits* bgr : {five_six_five, odd}) {
    for (const size_t size : {2u, 4u}) {
      cases.push_back({"pick_channels", size + 3, 0, [=](auto& f, auto* p, size_t n) {
                         f.pick_channels(p, size, n, bgr, p + size * n);
                       }});
    }
  }
  return cases;
}

TEST(RowFunctions, EveryLevelGivesTheSameBytes) {
  for (const Case& c : Cases()) {
    for (size_t n = 0; n <= kLongest; ++n) {
      const std::vector<uint8_t> before = Bytes(c.bytes_per_pixel * n + c.more, 7);
      std::vector<uint8_t> expected;
      for (const RowFunctions* const* level = Supported(); *level != nullptr; ++level) {
        std::vector<uint8_t> bytes = before;
        c.call(**level, bytes.data(), n);
        if (level == Supported()) expected = bytes;
        ASSERT_EQ(bytes, expected) << c.name << ", " << (*level)->name << ", " << n;
      }
    }
  }
}

TEST(RowFunctions, PlainCodeComesFirstAndTheWidestIsActive) {
  const RowFunctions* const* levels = Supported();
  EXPECT_STREQ(levels[0]->name, "plain");
  const RowFunctions* widest = levels[0];
  for (int i = 1; levels[i] != nullptr; ++i) widest = levels[i];
  EXPECT_EQ(&Active(), widest);
  Use(levels[0]);
  EXPECT_EQ(&Active(), levels[0]);
  Use(nullptr);
  EXPECT_EQ(&Active(), widest);
  testing::Test::RecordProperty("active", widest->name);
}

// Every byte value in both halves of a vector.
TEST(RowFunctions, TablesMapEveryValue) {
  const std::vector<uint8_t> table = Bytes(256, 99);
  for (const RowFunctions* const* level = Supported(); *level != nullptr; ++level) {
    std::vector<uint8_t> all(512);
    for (size_t v = 0; v < all.size(); ++v) all[v] = static_cast<uint8_t>(v);
    (*level)->apply_table(all.data(), all.size(), table.data());
    for (size_t v = 0; v < all.size(); ++v) ASSERT_EQ(all[v], table[v % 256]);
  }
}

}  // namespace
}  // namespace ombrilo::rows
