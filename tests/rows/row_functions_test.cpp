// The choice of row functions, and what operations do not reach of them. All else is for the tests
// of the operations, which run at every level, and of every width (trust/sameness_test.cpp).
#include "rows/row_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "core/palette_search.h"

namespace ombrilo::test {
namespace {

using simd::RowFunctions;

TEST(RowFunctions, PlainCodeComesFirstAndTheWidestIsActive) {
  const RowFunctions* const* levels = simd::Supported();
  EXPECT_STREQ(levels[0]->name, "plain");
  const RowFunctions* widest = levels[0];
  for (int i = 1; levels[i] != nullptr; ++i) widest = levels[i];
  EXPECT_EQ(&simd::Active(), widest);
  simd::Use(levels[0]);
  EXPECT_EQ(&simd::Active(), levels[0]);
  simd::Use(nullptr);
  EXPECT_EQ(&simd::Active(), widest);
}

#if defined(__linux__) && (defined(__x86_64__) || defined(__i386__))
// What the kernel says of the processor, so that a set that it has and that is not tried is seen.
TEST(RowFunctions, EverySetOfTheProcessorIsTested) {
  const auto has = [](const char* set, std::initializer_list<const char*> flags) {
    std::ifstream info("/proc/cpuinfo");
    std::string line;
    while (std::getline(info, line) && !line.starts_with("flags")) continue;
    const bool there = std::all_of(flags.begin(), flags.end(), [&](const std::string& flag) {
      return (line + " ").find(" " + flag + " ") != std::string::npos;
    });
    return there ? std::string(" ") + set : std::string();
  };
  std::string tested;
  for (auto level = simd::Supported(); *level != nullptr; ++level) {
    tested += std::string(" ") + (*level)->name;
  }
  EXPECT_EQ(tested, " plain" + has("sse4.1", {"sse4_1"}) + has("avx2", {"avx2"}) +
                        has("avx512", {"avx512f", "avx512bw", "avx512vl", "avx512dq", "avx512vbmi",
                                       "avx512_vnni"}));
  std::printf("Instruction sets tested:%s\n", tested.c_str());
}
#endif

// Sums of differences, with orders by turns and so many lists that room for them runs out.
TEST(RowFunctions, SearchBySumsWithTurns) {
  constexpr size_t kCount = 40000;
  using simd::SumsLists;
  constexpr auto kSize = SumsLists::kForNarrow;
  std::vector<uint32_t> pool(kSize.pool), wider(kSize.wider);
  std::vector<std::array<uint32_t, 4>> cells(kSize.cells);
  SumsLists lists = {};
  lists.pool = pool.data();
  lists.wider = wider.data();
  lists.count = 256;
  for (uint32_t i = 0; i < 256; ++i) lists.pool[i] = i * 0x01010101;
  for (int green = 0; green < 256; ++green) lists.start[green] = 255 - green;
  std::vector<uint8_t> colors, expected, found(kCount);
  for (uint32_t i = 0; i < kCount; ++i) {
    const uint32_t color = i * 0x9E3779B1u;
    const int bgr[] = {uint8_t(color >> 8), uint8_t(color >> 16), uint8_t(color >> 24)};
    int best = INT32_MAX;
    for (int entry = 0; entry < 256; ++entry) {
      const int up = entry - lists.start[bgr[1]], turn = up < 0 ? -2 * up - 1 : 2 * up;
      int sum = 0;
      for (const int value : bgr) sum += std::abs(value - entry);
      best = std::min(best, sum << 17 | turn << 8 | entry);
    }
    expected.push_back(static_cast<uint8_t>(best));
    colors.insert(colors.end(), std::begin(bgr), std::end(bgr));
  }
  for (auto level = simd::Supported(); *level != nullptr; ++level) {
    for (const bool few : {false, true}) {
      std::fill(wider.begin(), wider.end(), 0);
      cells.assign(cells.size(), {});
      lists.cells = few ? nullptr : reinterpret_cast<uint32_t(*)[4]>(cells.data());
      lists.room = few ? SumsLists::kForFew.pool : kSize.pool;
      lists.used = 256;
      (*level)->find_by_sums(lists, colors.data(), 3, kCount, found.data());
      EXPECT_EQ(found, expected) << (*level)->name;
    }
  }
}

// Cells fill so slowly that they stay narrow, while room for lists runs out again and again; colors
// come back after that.
TEST(RowFunctions, SearchBySquaresInLittleRoom) {
  constexpr uint32_t kColors = 2000, kDistinct = 500, kEach = 40;
  using simd::SquaresLists;
  uint8_t crowd[256][3];
  for (int i = 0; i < 256; ++i) {
    const int parts[] = {i & 7, i >> 3 & 7, i >> 6};
    for (int c = 0; c < 3; ++c) crowd[i][c] = static_cast<uint8_t>(64 + parts[c]);
  }
  std::vector<uint8_t> colors, expected, found(kColors * kEach);
  for (uint32_t i = 0; i < kColors; ++i) {
    const uint32_t noise = i % kDistinct * 0x9E3779B1u >> 8;
    uint8_t bgr[3];
    for (int c = 0; c < 3; ++c) bgr[c] = static_cast<uint8_t>(56 + (noise >> 8 * c & 31));
    int best = INT32_MAX;
    for (int entry = 0; entry < 256; ++entry) {
      int sum = 0;
      for (int c = 0; c < 3; ++c) sum += (bgr[c] - crowd[entry][c]) * (bgr[c] - crowd[entry][c]);
      best = std::min(best, sum << 8 | entry);
    }
    expected.insert(expected.end(), kEach, static_cast<uint8_t>(best));
    for (uint32_t k = 0; k < kEach; ++k) colors.insert(colors.end(), bgr, bgr + 3);
  }
  PaletteSearch<SquaresLists> search(SquaresLists::kManyColors);
  ASSERT_TRUE(search);
  search.lists().room = 4096;
  for (auto level = simd::Supported(); *level != nullptr; ++level) {
    search.Begin(256);
    for (uint32_t i = 0; i < 256; ++i) search.SetEntry(i, crowd[i]);
    (*level)->find_by_squares(search.lists(), colors.data(), 3, found.size(), found.data());
    EXPECT_EQ(found, expected) << (*level)->name;
    EXPECT_TRUE(search.lists().narrow);
  }
}

// The whole-number forms of gray values against their definitions, over a dense set of colors.
TEST(RowFunctions, GrayValues) {
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
  for (const RowFunctions* const* level = simd::Supported(); *level != nullptr; ++level) {
    std::vector<uint8_t> gray(percent.size());
    (*level)->gray_percent(bgr.data(), gray.size(), gray.data());
    EXPECT_EQ(gray, percent) << (*level)->name;
    (*level)->gray_double(bgr.data(), gray.size(), gray.data());
    EXPECT_EQ(gray, exact) << (*level)->name;
  }
}

}  // namespace
}  // namespace ombrilo::test
