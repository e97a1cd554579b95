// Row functions of bytes and pixels give the bytes of plain code at every level and at every length
// around the ends of vectors and runs, and write nothing outside the row. That the bytes of plain
// code are right is for the tests of the operations to say, except where operations do not reach
// all there is. Neighbourhoods, resampling and searches are not here: the tests of their operations
// run at every level.
#include "rows/row_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <memory>
#include <numeric>
#include <string>

#include "support/image.h"

namespace ombrilo::test {
namespace {

using simd::RowFunctions;

constexpr size_t kRoom = 16;  // on both sides of rows

// Inputs without any order, in blocks of exactly the length that a function may read.
struct Input {
  explicit Input(size_t n) : bytes(4 * n + 4), rows(2, std::vector<uint8_t>(n + 1)) {
    int x = 0;
    const auto noise = Noise(256, static_cast<uint32_t>(n));
    const auto next = [&] { return static_cast<uint8_t>(noise(x++, 1)); };
    std::generate(bytes.begin(), bytes.end(), next);
    std::generate(table, std::end(table), next);
    for (auto& row : rows) std::generate(row.begin(), row.end(), next);
    from[0] = rows[0].data(), from[1] = rows[1].data();
  }

  std::vector<uint8_t> bytes;
  std::vector<std::vector<uint8_t>> rows;
  uint8_t table[768];
  const uint8_t* from[2];
};

// Outputs of one call, with guards on both sides.
class Output {
 public:
  template <class T = uint8_t>
  T* New(size_t count) {
    std::vector<uint8_t>& block = blocks.emplace_back(count * sizeof(T) + 2 * kRoom, kGuard);
    std::iota(block.begin() + kRoom, block.end() - kRoom, uint8_t{7});
    return reinterpret_cast<T*>(block.data() + kRoom);
  }
  uint8_t* Copy(const uint8_t* from, size_t count) {
    return std::copy_n(from, count, New(count)) - count;
  }
  bool GuardsStand() const {
    return std::all_of(blocks.begin(), blocks.end(), [](const auto& block) {
      const auto guards = std::count(block.begin(), block.begin() + kRoom, kGuard) +
                          std::count(block.end() - kRoom, block.end(), kGuard);
      return guards == 2 * kRoom;
    });
  }

  std::vector<std::vector<uint8_t>> blocks;

 private:
  static constexpr uint8_t kGuard = 0xC3;
};

struct Case {
  const char* name;
  std::function<void(const RowFunctions& f, const Input& in, size_t n, Output& out)> call;
};

// Bytes, indices and three-byte pixels.
void AddPixelCases(std::vector<Case>& all) {
  using simd::ChannelBits;
  static const ChannelBits five_six_five[] = {{0x1F, 0, 3}, {0x7E0, 5, 2}, {0xF800, 11, 3}};
  static const ChannelBits odd[] = {{0x3FF00000, 20, 30}, {0, 31, 8}, {0x00F00F00, 8, 0}};
  all.insert(
      all.end(),
      {{"invert", [](auto& f, auto& in, auto n, auto& o) { f.invert(o.Copy(in.from[0], n), n); }},
       {"apply_table", [](auto& f, auto& in, auto n,
                          auto& o) { f.apply_table(o.Copy(in.from[0], n), n, in.table); }},
       {"unpack, pack",
        [](auto& f, auto& in, auto n, auto& o) {
          f.unpack1(&*in.bytes.end() - (n + 7) / 8, n, o.New(n));
          f.unpack4(&*in.bytes.end() - (n + 1) / 2, n, o.New(n));
          f.pack1(in.bytes.data(), n, o.New((n + 7) / 8));
          f.pack4(in.bytes.data(), n, o.New((n + 1) / 2));
        }},
       {"drop_fourth_byte",
        [](auto& f, auto& in, auto n, auto& o) {
          f.drop_fourth_byte(in.bytes.data() + 4, n, o.New(3 * n));
        }},
       {"blend_over, swap_red_blue, add_alpha",
        [](auto& f, auto& in, auto n, auto& o) {
          const uint8_t background[] = {1, 128, 254};
          for (const bool swap : {false, true}) {
            f.blend_over(in.bytes.data() + 4, n, swap, background, o.New(3 * n));
            f.add_alpha(&*in.bytes.end() - 3 * n, n, swap, o.New(4 * n));
          }
          f.swap_red_blue(&*in.bytes.end() - 3 * n, n, o.New(3 * n));
        }},
       {"channels",
        [](auto& f, auto& in, auto n, auto& o) {
          for (const size_t c : {0, 1, 2}) {
            f.clear_channel(o.Copy(in.bytes.data(), 3 * n), n, c);
            f.extract_channel(in.bytes.data(), n, c, o.New(n));
          }
          for (const size_t size : {2, 4}) {
            f.pick_channels(in.bytes.data(), size, n, five_six_five, o.New(3 * n));
            f.pick_channels(in.bytes.data(), size, n, odd, o.New(3 * n));
          }
          f.apply_channel_tables(o.Copy(in.bytes.data(), 3 * n), n, in.table);
          f.spread(in.bytes.data(), n, o.New(3 * n));
          f.luminance(in.bytes.data(), n, o.New(n));
          f.give_luminance(o.Copy(in.bytes.data(), 3 * n), n, in.from[0]);
          for (const int percent : {-30, 40}) {
            f.change_hsi(o.Copy(in.bytes.data(), 3 * n), n, 3 * percent, percent, percent);
            f.change_hsl(o.Copy(in.bytes.data(), 3 * n), n, 3 * percent, percent, percent);
          }
          f.expand_colors(in.bytes.data(), n, in.table, o.New(3 * n));
          f.gray_percent(in.bytes.data(), n, o.New(n));
          f.gray_double(in.bytes.data(), n, o.New(n));
        }},
       {"count_bytes",
        [](auto& f, auto& in, auto n, auto& o) {
          for (const size_t step : {1, 3}) {
            uint32_t sets[8][simd::kCounters] = {};
            f.count_bytes(in.bytes.data(), step, n, sets);
            auto* counts = o.template New<uint32_t>(256);
            for (int v = 0; v < 256; ++v) {
              counts[v] = 0;
              for (const auto& set : sets) counts[v] += set[v];
            }
          }
        }},
       {"swap_bytes, mirrors", [](auto& f, auto& in, auto n, auto& o) {
          f.swap_bytes(o.Copy(in.from[0], n), o.Copy(in.from[1], n), n);
          for (const int bits : {1, 4, 8}) f.mirror(in.bytes.data(), n, bits, o.New(n));
          f.mirror(in.bytes.data(), 3 * n, 24, o.New(3 * n));
          const size_t columns = n % 16, rows = n % 17;  // 15 x 16 in 3 x 256 bytes
          const auto from_step = static_cast<ptrdiff_t>(3 * columns);
          const auto to_step = static_cast<ptrdiff_t>(3 * rows);
          f.transpose24(in.table, from_step, columns, rows, o.New(3 * columns * rows), to_step);
        }}});
  for (size_t shift = 1; shift < 8; ++shift) {
    all.push_back({"shift_bits", [=](auto& f, auto& in, auto n, auto& o) {
                     f.shift_bits(in.from[0], shift, n, o.New(n));
                   }});
  }
  for (const uint32_t area : {2u, 9u, 60u, 65535u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    all.push_back({"scatter, sums", [=](auto& f, auto& in, auto n, auto& o) {
                     uint32_t side = 1;
                     while (uint64_t{side} * side < area) ++side;
                     const auto width = static_cast<uint32_t>(n) + 40;
                     const simd::Scatter scatter = {area * 0x100000001u,
                                                    area,
                                                    side,
                                                    (side - 1) / 2,
                                                    width,
                                                    3000,
                                                    side + 2,
                                                    3,
                                                    700,
                                                    7,
                                                    1500};
                     f.scatter(scatter, n, o.template New<int32_t>(n));
                     std::vector<uint64_t> sums(n);
                     for (size_t i = 0; i < n; ++i) sums[i] = in.bytes[i] * uint64_t{area};
                     f.divide_sums(sums.data(), n, area, o.New(n));
                     auto* columns16 = o.template New<uint16_t>(n);
                     f.add_bytes(in.bytes.data(), n, columns16);
                   }});
  }
  for (const size_t block : {1, 2, 3, 5, 16, 300}) {
    all.push_back({"blocks", [=](auto& f, auto& in, auto n, auto& o) {
                     std::vector<uint16_t> columns(3 * n);
                     for (size_t i = 0; i < 3 * n; ++i) columns[i] = uint16_t(in.bytes[i] * 257);
                     const size_t blocks = (n + block - 1) / block;
                     for (const size_t step : {1, 3}) {
                       auto* sums = o.template New<uint64_t>(step * blocks);
                       f.sum_blocks(columns.data(), step, n, block, sums);
                       f.repeat_colors(in.bytes.data(), step, n, block, o.New(step * n + 7));
                     }
                   }});
  }
  for (const int amount : {-255, -20, 0, 20, 255}) {
    all.push_back({"amounts", [=](auto& f, auto& in, auto n, auto& o) {
                     f.add_amount(o.Copy(in.from[0], n), n, amount);
                     f.adjust_lights(o.Copy(in.bytes.data(), 3 * n), n, amount, 60 - amount / 4,
                                     -amount);
                     f.threshold(in.bytes.data(), n, static_cast<uint32_t>(12750 + 50 * amount),
                                 o.New((n + 7) / 8));
                   }});
  }
}

TEST(RowFunctions, EveryLevelGivesTheSameBytes) {
  std::vector<Case> cases;
  AddPixelCases(cases);
  std::vector<size_t> lengths = {415, 582, 816, 1023, 1024, 1025, 1087, 1143, 2047, 2100};
  for (size_t n = 0; n <= 300; ++n) lengths.push_back(n);
  for (const size_t n : lengths) {
    const Input input(n);
    for (const Case& c : cases) {
      Output expected;
      for (auto level = simd::Supported(); *level != nullptr; ++level) {
        Output output;
        c.call(**level, input, n, output);
        ASSERT_TRUE(output.GuardsStand()) << c.name << ", " << (*level)->name << ", " << n;
        if (level == simd::Supported()) expected = output;
        ASSERT_TRUE(output.blocks == expected.blocks)
            << c.name << ", " << (*level)->name << ", " << n;
      }
    }
  }
}

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
                        has("avx512", {"avx512f", "avx512bw", "avx512vl", "avx512vbmi"}));
  std::printf("Instruction sets tested:%s\n", tested.c_str());
}
#endif

// Sums of differences, with orders by turns and so many lists that room for them runs out.
TEST(RowFunctions, SearchBySumsWithTurns) {
  constexpr size_t kCount = 40000;
  const auto memory = std::make_unique<simd::SumsLists>();
  simd::SumsLists& lists = *memory;
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
    std::fill(std::begin(lists.lists), std::end(lists.lists), 0);
    lists.used = 256;
    (*level)->find_by_sums(lists, colors.data(), 3, kCount, found.data());
    EXPECT_EQ(found, expected) << (*level)->name;
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
