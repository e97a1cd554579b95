// Row functions of neighbourhood filters and morphology: the same bytes at every level and length,
// nothing outside the row, and the median network on all it can meet.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <vector>

#include "rows/row_functions.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

using rows::RowFunctions;

constexpr size_t kRoom = 8;  // on both sides of every row
constexpr uint8_t kGuard = 0xC3;

// Nine rows of noise, with values at both ends often enough.
struct Input {
  explicit Input(size_t count) {
    for (int k = 0; k < 9; ++k) {
      rows[k].resize(count + 2 * kRoom);
      for (size_t i = 0; i < rows[k].size(); ++i) {
        const uint32_t noise = Noise(1024, 3)(static_cast<int>(i), k);
        rows[k][i] = static_cast<uint8_t>(noise >= 896 ? 255 : noise >= 768 ? 0 : noise);
      }
      from[k] = rows[k].data() + kRoom;
    }
  }
  std::vector<uint8_t> rows[9];
  const uint8_t* from[9];
};

using Call = std::function<void(const RowFunctions&, const Input&, size_t, uint8_t*)>;

std::vector<std::pair<const char*, Call>> Calls() {
  std::vector<std::pair<const char*, Call>> calls;
  const auto add = [&](const char* name, Call call) { calls.emplace_back(name, std::move(call)); };
  for (const size_t rows : {1, 2, 3, 4, 5, 6, 7, 8, 9}) {
    add("max_of",
        [=](auto& f, auto& in, size_t n, uint8_t* to) { f.max_of(in.from, rows, n, to); });
    add("min_of",
        [=](auto& f, auto& in, size_t n, uint8_t* to) { f.min_of(in.from, rows, n, to); });
  }
  add("copy_unless",
      [](auto& f, auto& in, size_t n, uint8_t* to) { f.copy_unless(in.from[0], 255, n, to); });
  add("median9", [](auto& f, auto& in, size_t n, uint8_t* to) { f.median9(in.from, n, to); });
  for (const int step : {1, 3}) {
    for (const size_t size : {3, 5}) {
      add("median_of_square", [=](auto& f, auto& in, size_t n, uint8_t* to) {
        f.median_of_square(in.from, size, step, n, to);
      });
    }
    add("sobel", [=](auto& f, auto& in, size_t n, uint8_t* to) { f.sobel(in.from, step, n, to); });
  }
  add("add_saturated",
      [](auto& f, auto& in, size_t n, uint8_t* to) { f.add_saturated(in.from[0], n, to); });
  add("subtract_saturated",
      [](auto& f, auto& in, size_t n, uint8_t* to) { f.subtract_saturated(in.from[0], n, to); });
  add("subtract_from",
      [](auto& f, auto& in, size_t n, uint8_t* to) { f.subtract_from(in.from[0], n, to); });
  add("subtract_wrapped",
      [](auto& f, auto& in, size_t n, uint8_t* to) { f.subtract_wrapped(in.from[0], n, to); });
  for (const bool left : {true, false}) {
    for (const bool any : {true, false}) {
      add("spread_bits", [=](auto& f, auto& in, size_t n, uint8_t* to) {
        std::vector<uint8_t> other(n + 1);
        (left ? f.spread_bits_left : f.spread_bits_right)(in.from[0], n, any ? to : other.data(),
                                                          any ? other.data() : to);
      });
    }
  }
  add("choose_bits", [](auto& f, auto& in, size_t n, uint8_t* to) {
    const uint8_t outcome[] = {0xFF, 0, 0x5A};
    f.choose_bits(in.from, in.from + 3, outcome, n, to);
  });
  add("map_bit_pairs", [](auto& f, auto& in, size_t n, uint8_t* to) {
    const uint8_t outcome[] = {0xFF, 0, 0x5A, 0x33};
    f.map_bit_pairs(in.from[0], outcome, n, to);
  });
  add("expand_colors", [](auto& f, auto& in, size_t n, uint8_t* to) {
    std::vector<uint8_t> table(768);
    for (size_t i = 0; i < 768; ++i) table[i] = static_cast<uint8_t>(i * 7 + i / 256);
    if (n % 3 == 0) f.expand_colors(in.from[0], n / 3, table.data(), to);
  });
  add("weigh", [](auto& f, auto& in, size_t n, uint8_t* to) {
    const int32_t weights[] = {3, -70, 100000, 1, -1, 9, 0, 5, -12};
    for (const size_t rows : {3, 9}) {
      std::vector<uint16_t> sums(n + 1, 0xABCD);
      f.weigh(in.from, weights, rows, n, sums.data());
      EXPECT_EQ(sums[n], 0xABCD);
      for (size_t i = 0; i < n; ++i) to[i] = static_cast<uint8_t>(to[i] ^ sums[i] ^ sums[i] >> 8);
    }
  });
  for (const int wide : {0, 1, 2}) {  // 2: in groups
    for (const auto finish :
         {rows::kFinishClamp, rows::kFinishReciprocal, rows::kFinishFloat, rows::kFinishExact}) {
      if (wide != 0 && finish < rows::kFinishFloat) continue;
      for (const int32_t strength : {10, 4}) {
        add("convolve", [=](auto& f, auto& in, size_t n, uint8_t* to) {
          const int32_t weights[] = {9, -2, 3, 1, -1, 9, 0, 5, -12};
          std::vector<int16_t> offset(rows::kConvolutionBlock, 17);
          std::vector<uint16_t> sums(n + 1);
          for (size_t i = 0; i < n; ++i) sums[i] = in.from[8][i];
          const uint16_t* sum_rows[] = {sums.data()};
          const int32_t sum_weights[] = {2};
          rows::Convolution c = {};
          c.from = in.from;
          c.weights = weights;
          c.count = 9;
          c.sums = sum_rows;
          c.sum_weights = sum_weights;
          c.sum_count = wide != 0 ? 0 : 1;
          static constexpr size_t kGroupEnds[] = {4, 9};
          c.wide = wide != 0;
          c.group_ends = kGroupEnds;
          c.group_count = wide == 2 ? 2 : 0;
          c.finish = finish;
          c.offset = offset.data();
          c.lowest = wide != 0 ? 0 : 15 * 255;
          c.highest = 14 * 256 - 1;
          c.multiplier = 37450, c.shift = 3;  // 14
          c.divisor = 14;
          c.strength = strength;
          c.bias = finish == rows::kFinishClamp ? 0 : 3;
          f.convolve(c, n, to);
        });
      }
    }
  }
  return calls;
}

TEST(NeighbourhoodRows, EveryLevelGivesTheSameBytes) {
  const auto calls = Calls();
  for (size_t n = 0; n < 1300; n = n < 140 ? n + 1 : n * 7 / 5 + 1) {
    const Input input(n);
    for (const auto& [name, call] : calls) {
      std::vector<uint8_t> first;
      for (auto level = rows::Supported(); *level != nullptr; ++level) {
        std::vector<uint8_t> to(n + 2 * kRoom, kGuard);
        for (size_t i = 0; i < n; ++i) to[kRoom + i] = static_cast<uint8_t>(i * 11);
        call(**level, input, n, to.data() + kRoom);
        for (size_t i = 0; i < kRoom; ++i) {
          ASSERT_EQ(to[i], kGuard) << name << " " << (*level)->name << ", " << n;
          ASSERT_EQ(to[to.size() - 1 - i], kGuard) << name << " " << (*level)->name << ", " << n;
        }
        if (first.empty()) first = to;
        ASSERT_EQ(to, first) << name << " " << (*level)->name << ", " << n;
      }
    }
  }
}

// A network of minima and maxima that orders all zeros and ones orders everything.
TEST(NeighbourhoodRows, MedianOfAllZerosAndOnes) {
  std::vector<uint8_t> rows[9], expected;
  for (unsigned set = 0; set < 512; ++set) {
    int ones = 0;
    for (int k = 0; k < 9; ++k) {
      rows[k].push_back(static_cast<uint8_t>(set >> k & 1));
      ones += rows[k].back();
    }
    expected.push_back(ones > 4);
  }
  const uint8_t* from[9];
  for (int k = 0; k < 9; ++k) from[k] = rows[k].data();
  for (auto level = rows::Supported(); *level != nullptr; ++level) {
    std::vector<uint8_t> to(512);
    (*level)->median9(from, 512, to.data());
    EXPECT_EQ(to, expected) << (*level)->name;
  }
}

// Likewise where columns are sorted first: only the number of ones in each column counts.
TEST(NeighbourhoodRows, MedianOfSquaresOfZerosAndOnes) {
  for (const int size : {3, 5}) {
    std::vector<uint8_t> rows[5], expected;
    std::vector<int> ones(static_cast<size_t>(size));
    while (ones.back() <= size) {
      for (int x = 0; x < size; ++x) {
        const int first = static_cast<int>(expected.size()) % size;  // of the ones, around the end
        for (int y = 0; y < size; ++y) {
          rows[y].push_back((y + first) % size < ones[static_cast<size_t>(x)]);
        }
      }
      expected.push_back(std::accumulate(ones.begin(), ones.end(), 0) > size * size / 2);
      ++ones[0];
      for (size_t x = 0; x + 1 < ones.size() && ones[x] > size; ++x) ones[x] = 0, ++ones[x + 1];
    }
    const uint8_t* from[5];
    for (int y = 0; y < size; ++y) from[y] = rows[y].data() + size / 2;
    const size_t count = rows[0].size() - static_cast<size_t>(size - 1);
    for (auto level = rows::Supported(); *level != nullptr; ++level) {
      std::vector<uint8_t> to(count);
      (*level)->median_of_square(from, static_cast<size_t>(size), 1, count, to.data());
      for (size_t i = 0; i < expected.size(); ++i) {
        ASSERT_EQ(to[i * static_cast<size_t>(size)], expected[i]) << (*level)->name << ", " << i;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
