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

// Runs `call(functions, bytes, count)` at every level and length on a buffer that ends behind
// `used(count)` bytes, and compares with plain code.
void CompareLevels(const std::function<size_t(size_t)>& used,
                   const std::function<void(const RowFunctions&, uint8_t*, size_t)>& call) {
  const RowFunctions* const* levels = Supported();
  for (size_t count = 0; count <= kLongest; ++count) {
    std::vector<uint8_t> expected = Bytes(used(count), 7);
    call(*levels[0], expected.data(), count);
    for (int i = 1; levels[i] != nullptr; ++i) {
      std::vector<uint8_t> actual = Bytes(used(count), 7);
      actual.shrink_to_fit();
      call(*levels[i], actual.data(), count);
      ASSERT_EQ(actual, expected) << levels[i]->name << ", " << count;
    }
  }
}

size_t Same(size_t count) { return count; }

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

TEST(RowFunctions, Invert) {
  CompareLevels(Same, [](const RowFunctions& f, uint8_t* bytes, size_t count) {
    const std::vector<uint8_t> before(bytes, bytes + count);
    f.invert(bytes, count);
    for (size_t i = 0; i < count; ++i) ASSERT_EQ(bytes[i], 255 - before[i]);
  });
}

TEST(RowFunctions, ApplyTable) {
  const std::vector<uint8_t> table = Bytes(256, 99);
  CompareLevels(Same, [&](const RowFunctions& f, uint8_t* bytes, size_t count) {
    const std::vector<uint8_t> before(bytes, bytes + count);
    f.apply_table(bytes, count, table.data());
    for (size_t i = 0; i < count; ++i) ASSERT_EQ(bytes[i], table[before[i]]);
  });
  for (int i = 0; Supported()[i] != nullptr; ++i) {  // every value, in both halves of a vector
    std::vector<uint8_t> all(512);
    for (size_t v = 0; v < all.size(); ++v) all[v] = static_cast<uint8_t>(v);
    Supported()[i]->apply_table(all.data(), all.size(), table.data());
    for (size_t v = 0; v < all.size(); ++v) ASSERT_EQ(all[v], table[v % 256]);
  }
}

// The buffer holds the packed row, then one byte per pixel.
TEST(RowFunctions, Unpacking) {
  CompareLevels([](size_t n) { return (n + 7) / 8 + n; },
                [](const RowFunctions& f, uint8_t* bytes, size_t n) {
                  f.unpack1(bytes, n, bytes + (n + 7) / 8);
                });
  CompareLevels([](size_t n) { return (n + 1) / 2 + n; },
                [](const RowFunctions& f, uint8_t* bytes, size_t n) {
                  f.unpack4(bytes, n, bytes + (n + 1) / 2);
                });
}

TEST(RowFunctions, Packing) {
  CompareLevels(
      [](size_t n) { return n + (n + 7) / 8; },
      [](const RowFunctions& f, uint8_t* bytes, size_t n) { f.pack1(bytes, n, bytes + n); });
  CompareLevels(
      [](size_t n) { return n + (n + 1) / 2; },
      [](const RowFunctions& f, uint8_t* bytes, size_t n) { f.pack4(bytes, n, bytes + n); });
}

TEST(RowFunctions, ShiftBits) {
  for (size_t shift = 1; shift < 8; ++shift) {
    CompareLevels([](size_t n) { return 2 * n + 1; },
                  [=](const RowFunctions& f, uint8_t* bytes, size_t n) {
                    f.shift_bits(bytes, shift, n, bytes + n + 1);
                  });
  }
}

// The buffer holds the pixels, then a word of channels for each.
TEST(RowFunctions, PickChannels) {
  const ChannelBits layouts[][3] = {{{0x1F, 0, 3}, {0x7E0, 5, 2}, {0xF800, 11, 3}},
                                    {{0x3FF00000, 20, 30}, {0, 31, 8}, {0x00F00F00, 8, 0}}};
  for (const ChannelBits(&bgr)[3] : layouts) {
    for (const size_t size : {2u, 4u}) {
      CompareLevels([=](size_t n) { return (size + 4) * n; },
                    [&](const RowFunctions& f, uint8_t* bytes, size_t n) {
                      std::vector<uint32_t> words(n);
                      f.pick_channels(bytes, size, n, bgr, words.data());
                      if (n != 0) std::memcpy(bytes + size * n, words.data(), 4 * n);
                    });
    }
  }
}

TEST(RowFunctions, DropFourthByte) {
  CompareLevels([](size_t n) { return 7 * n; },
                [](const RowFunctions& f, uint8_t* bytes, size_t n) {
                  f.drop_fourth_byte(bytes, n, bytes + 4 * n);
                  for (size_t i = 0; i < 3 * n; ++i)
                    ASSERT_EQ(bytes[4 * n + i], bytes[i / 3 * 4 + i % 3]);
                });
}

}  // namespace
}  // namespace ombrilo::rows
