// Row functions give the bytes of plain code at every level and at every length around the ends of
// vectors and runs, and write nothing outside the row. That the bytes of plain code are right is
// for the tests of the operations to say, except where operations do not reach all there is.
#include "rows/row_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
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
  explicit Input(size_t n) : bytes(4 * n + 4) {
    int x = 0;
    const auto noise = Noise(0x7FFFFFFF, static_cast<uint32_t>(n));
    const auto next = [&] { return noise(x++, 1); };
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(next() >> 8);
    for (uint8_t& byte : table) byte = static_cast<uint8_t>(next() >> 8);
    for (uint32_t& entry : colors) entry = next();
    for (int k = 0; k < 9; ++k) {
      for (size_t i = 0; i < n + 2 * kRoom + simd::kReadAhead;
           ++i) {  // both ends of the range often enough
        const uint32_t value = next() % 1024;
        rows[k].push_back(static_cast<uint8_t>(value >= 896 ? 255 : value >= 768 ? 0 : value));
      }
      from[k] = rows[k].data() + kRoom;
    }
    for (size_t i = 0; i < n + 1; ++i) columns.push_back(static_cast<int32_t>(next() % 5000));
    for (int k = 0; k < 8; ++k) {
      for (size_t i = 0; i < n + simd::kRunPadding; ++i) {
        words[k].push_back(next());
        levels[k].push_back(static_cast<float>(next()) / 1e9f - 1);
        for (int c = 0; c < 3; ++c) planes[k].push_back(300 * levels[k].back() * (c - 0.5f));
      }
      taps[k] = words[k].data(), floats[k] = levels[k].data(), sums[k] = planes[k].data();
    }
  }

  std::vector<uint8_t> bytes, rows[9];
  std::vector<int32_t> columns;
  std::vector<uint32_t> words[8];
  std::vector<float> levels[8], planes[8];
  uint8_t table[768];
  uint32_t colors[256];
  const uint8_t* from[9];
  const uint32_t* taps[8];
  const float *floats[8], *sums[8];
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

void AddNeighbourhoodCases(std::vector<Case>& all) {
  for (const size_t rows : {1, 2, 3, 4, 5, 6, 7, 8, 9}) {
    all.push_back({"max_of, min_of", [=](auto& f, auto& in, auto n, auto& o) {
                     f.max_of(in.from, rows, n, o.New(n));
                     f.min_of(in.from, rows, n, o.New(n));
                   }});
  }
  for (const int step : {1, 3}) {
    all.push_back({"squares, gradients", [=](auto& f, auto& in, auto n, auto& o) {
                     f.median9(in.from, n, o.New(n));
                     f.square_max(in.from, size_t(step), n, o.New(n));
                     f.square_min(in.from, size_t(step), n, o.New(n));
                     f.sobel(in.from, step, n, o.New(n));
                     f.sobel_magnitude(in.from, step, n, o.New(n));
                     f.roberts_magnitude(in.from[0], in.from[1], step, n, o.New(n));
                   }});
  }
  for (const size_t rank : {0, 3, 8, 12, 24, 30, 48}) {
    for (const size_t step : {1, 3}) {
      all.push_back({"ranks", [=](auto& f, auto& in, auto n, auto& o) {
                       const auto distance = static_cast<ptrdiff_t>(step);
                       if (rank < 9) f.rank_of_columns(in.from, 3, distance, rank, n, o.New(n));
                       if (rank == 12) f.rank_of_columns(in.from, 5, distance, rank, n, o.New(n));
                       if (n == 0) return;
                       for (size_t size = rank < 25 ? 5 : 7; size <= 7; size += 2) {
                         const size_t reach = size / 2 * step, length = n + 7 + 16 * reach;
                         std::vector<uint8_t> planes[7];
                         const uint8_t* rows[7];
                         for (size_t k = 0; k < size; ++k) {
                           planes[k].resize(length + simd::kPlanesRoom);
                           f.split_planes(in.from[k], reach, n, planes[k].data());
                           rows[k] = planes[k].data();
                         }
                         f.rank_of_planes(rows, size, distance, rank, n, o.New(n));
                       }
                     }});
    }
  }
  all.push_back({"add, subtract", [](auto& f, auto& in, auto n, auto& o) {
                   f.copy_unless(in.from[0], 255, n, o.New(n));
                   f.add_saturated(in.from[0], n, o.New(n));
                   f.subtract_saturated(in.from[0], n, o.New(n));
                   f.subtract_wrapped(in.from[0], n, o.New(n));
                   f.subtract_from(in.from[0], n, o.New(n));
                   f.divide_by_light(in.from[0], n, o.New(n));
                 }});
  all.push_back({"tone curves", [](auto& f, auto& in, auto n, auto& o) {
                   f.blend_curves(in.table, in.table + 1, 77, 2, o.template New<uint32_t>(512));
                   f.map_between_curves(o.Copy(in.from[0], n), n, in.from[1], in.colors);
                 }});
  for (const size_t taps : {1, 2, 5}) {
    all.push_back({"weigh_rows, columns", [=](auto& f, auto& in, auto n, auto& o) {
                     const simd::TapPair pairs[] = {
                         {0x7FFF0001, 0x00400035}, {0x12345678, 0xFFFE0011}, {0x4321, 0xFFF0}};
                     f.weigh_rows(in.from, pairs, taps, n, o.New(n));
                     const uint8_t* rows[simd::kTapRows];
                     uint8_t* back[simd::kTapRows];
                     for (size_t r = 0; r < simd::kTapRows; ++r) {
                       rows[r] = in.from[r % 9];
                       back[r] = o.New(n);
                     }
                     uint8_t* const columns = o.New(n * simd::kTapRows);
                     f.rows_to_columns(rows, 0, n, columns);
                     f.columns_to_rows(columns, 0, n, 59 + taps, back);
                     if (n < taps) return;
                     const auto first = static_cast<uint32_t>(n - taps + 7);
                     const simd::ColumnTaps last = {first, static_cast<uint32_t>(taps), 0};
                     f.weigh_columns(columns, 7, &last, pairs, 1, 1, o.New(simd::kTapRows));
                   }});
  }
  all.push_back({"one-bit pixels", [](auto& f, auto& in, auto n, auto& o) {
                   constexpr uint8_t kOutcome[] = {0xFF, 0, 0x5A, 0x33};
                   constexpr uint8_t kAny[] = {0, 0xFF, 0xFF}, kAll[] = {0, 0xFF, 0};
                   for (const uint8_t* outcome : {kOutcome, kAny, kAll}) {
                     f.square_bits_left(in.from, outcome, n, o.New(n));
                     f.square_bits_right(in.from, outcome, n, o.New(n));
                   }
                   f.map_bit_pairs(in.from[0], kOutcome, n, o.New(n));
                 }});
  for (const auto finish : {simd::kFinishClamp, simd::kFinishReciprocal, simd::kFinishI16,
                            simd::kFinishFloat, simd::kFinishExact}) {
    for (const int wide : {0, 1, 2}) {  // 2: with weights of more than 16 bits
      if (wide != 0 && finish < simd::kFinishFloat) continue;
      for (const int32_t strength : {10, 4}) {
        all.push_back(
            {"weigh, convolve", [=](auto& f, auto& in, auto n, auto& o) {
               const simd::WeightRun runs[] = {
                   {1, 2, 1}, {3, 1, 1}, {wide == 2 ? 100001 : 7, 2, 2}};
               int16_t offset[simd::kConvolutionOffsets];
               for (int i = 0; i < simd::kConvolutionOffsets; ++i) offset[i] = i % 3 * 7;
               constexpr size_t kBlock = simd::kConvolutionBlock;
               std::vector<uint8_t> sums((n + kBlock - 1) / kBlock * kBlock * 2);
               f.weigh({in.from, runs, 2}, n, sums.data());
               std::vector<uint8_t> totals(sums.size(), 77);
               f.weigh_running({in.from + 3, runs, 1}, n, true, sums.data(), totals.data());
               const uint8_t* sum_rows[] = {sums.data(), totals.data()};
               constexpr simd::WeightRun kTwice = {2, 2, 0};
               simd::Convolution c = {};
               c.bytes = {in.from, runs, 3};
               c.sums = {sum_rows, &kTwice, wide == 0 && n % 2 == 0};
               c.wide = wide != 0;
               c.finish = finish, c.offset = offset;
               c.lowest = wide != 0 || finish == simd::kFinishClamp ? 0 : 18 * 255;
               c.highest = 14 * 256 - 1, c.multiplier = 37450, c.shift = 3;
               c.divisor = 14, c.strength = strength, c.bias = 3;
               c.own = in.from[3];
               f.convolve(c, n, o.New(n));
             }});
      }
    }
  }
}

// Arrays of a run may be read and written beyond its end; only what is before counts.
template <class T, class Use>
void WithPadding(Output& out, size_t planes, size_t n, Use&& use) {
  const size_t plane = n + simd::kRunPadding;
  std::vector<T> values(planes * plane);
  use(values.data(), plane);
  for (size_t k = 0; k < planes; ++k) std::copy_n(&values[k * plane], n, out.New<T>(n));
}

void AddResamplingCases(std::vector<Case>& all) {
  // Pixels from far apart to neighbours, in one row or not, up to the last byte.
  for (const auto& [channels, step] : {std::pair{1, 600},
                                       {1, 50},
                                       {1, 20},
                                       {1, 13},
                                       {3, 600},
                                       {3, 61},
                                       {3, 50},
                                       {3, 49},
                                       {3, 13}}) {
    for (const bool one_row : {true, false}) {
      all.push_back(
          {"sampling",
           [one_row, channels = channels, step = step](auto& f, auto& in, auto n, auto& o) {
             if (n == 0) return;
             const auto wide = static_cast<size_t>(channels);
             std::vector<int32_t> offsets(n + simd::kRunPadding);
             for (size_t i = 0; i < n; ++i) {
               offsets[one_row ? i : (i * 7 + n / 2) % n] =
                   static_cast<int32_t>(i) * step / 20 * channels;
             }
             std::fill(offsets.begin() + static_cast<ptrdiff_t>(n), offsets.end(), offsets[n - 1]);
             const int32_t last = *std::max_element(offsets.begin(), offsets.end());
             const auto places = [&](size_t pixels, auto&& use) {
               const size_t size = static_cast<size_t>(last) + pixels * wide;
               std::vector<uint8_t> lower(size), upper(size);
               for (size_t k = 0; k < size; ++k) {
                 lower[k] = in.table[k % 768], upper[k] = in.table[5 * k % 768];
               }
               use(simd::PixelPlaces{lower.data(), static_cast<int32_t>(size), offsets.data(),
                                     channels, one_row},
                   upper.data());
             };
             places(1, [&](const auto& p, const uint8_t*) { f.pick(p, n, o.New(wide * n)); });
             places(2, [&](const auto& p, const uint8_t* upper) {
               f.bilinear(p, upper, in.floats[0], in.floats[1], n, o.New(wide * n));
               if (one_row) {
                 WithPadding<float>(o, 2 * wide, n, [&](float* pairs, size_t plane) {
                   f.spread_pairs(p, plane, n, pairs);
                 });
               }
             });
             for (const auto& columns : {std::array{0, 1, 2, 3}, {1, 1, 2, 3}, {0, 1, 1, 2}}) {
               places(4, [&](const auto& p, const uint8_t*) {
                 WithPadding<float>(o, wide, n, [&](float* sums, size_t plane) {
                   f.cubic_across(p, columns.data(), in.floats, plane, n, sums);
                 });
               });
             }
             const std::vector<float> pairs(2 * wide * (n + simd::kRunPadding), 100.5f);
             f.blend_pairs(pairs.data(), in.sums[0], channels, in.floats[0], *in.floats[1], n / 4,
                           n, o.New(wide * n));
             f.cubic_down(in.sums, in.floats + 4, channels, one_row, n + simd::kRunPadding, n,
                          o.New(wide * n));
           }});
    }
  }
  all.push_back({"places, weights, positions", [](auto& f, auto& in, auto n, auto& o) {
                   if (n == 0) return;
                   const simd::SampledArea area = {1, 4000, 2, 4998, 1, 2, 3, 70000};
                   WithPadding<int32_t>(o, 1, n, [&](int32_t* offset, size_t) {
                     *o.New(1) =
                         f.find_places(area, in.columns.data(), in.columns.data() + 1, n, offset);
                   });
                   std::vector<float> fractions(in.floats[0], in.floats[0] + n);
                   for (int k = 0; k < 2; ++k) {
                     WithPadding<float>(o, 4, n, [&](float* values, size_t plane) {
                       float* const weights[4] = {values, values + plane, values + 2 * plane,
                                                  values + 3 * plane};
                       f.cubic_weights(fractions.data(), n, weights);
                     });
                     for (float& fraction : fractions) fraction -= std::floor(fraction);
                   }
                   const simd::TurnedAxis axis = {0.9876f, 0.3f, 12};
                   WithPadding<int32_t>(o, 1, n, [&](int32_t* whole, size_t) {
                     WithPadding<float>(o, 1, n, [&](float* fraction, size_t) {
                       f.turned_positions(axis, -17, n, whole, fraction);
                     });
                   });
                 }});
}

// What searches remember is not to change what they find: all share it.
template <class Lists>
Lists& ListsOf(const uint32_t (&colors)[256]) {
  static const auto lists = std::make_unique<Lists>();
  lists->count = lists->used = 256;
  for (uint32_t i = 0; i < 256; ++i) lists->pool[i] = (colors[i] & 0xFFFFFF) | i << 24;
  std::fill(std::begin(lists->lists), std::end(lists->lists), 0);
  return *lists;
}

void AddSearchCases(std::vector<Case>& all, const Input& palette) {
  static auto& squares = ListsOf<simd::SquaresLists>(palette.colors);
  static auto& sums = ListsOf<simd::SumsLists>(palette.colors);
  for (int green = 0; green < 256; ++green) sums.start[green] = green * 3 / 4 + 20;
  for (const size_t step : {3, 4}) {
    all.push_back({"find", [=](auto& f, auto& in, auto n, auto& o) {
                     f.find_by_squares(squares, &*in.bytes.end() - step * n, step, n, o.New(n));
                     f.find_by_sums(sums, &*in.bytes.end() - step * n, step, n, o.New(n));
                   }});
  }
  for (const size_t count : {1, 2, 7, 17}) {  // rows
    all.push_back({"diffuse", [=](auto& f, auto& in, auto n, auto& o) {
                     const size_t width = n / count, stride = (3 * width + 3) / 4 * 4;
                     std::vector<uint8_t> rows(stride * count);
                     for (size_t i = 0; i < rows.size(); ++i) rows[i] = in.bytes[i % 4 * n + i / 4];
                     auto* before = reinterpret_cast<uint32_t*>(
                         o.Copy(reinterpret_cast<const uint8_t*>(in.taps[0]), 4 * width));
                     f.diffuse(sums, {in.colors, rows.data(), stride, width, count, before,
                                      o.New(width * count)});
                   }});
  }
}

TEST(RowFunctions, EveryLevelGivesTheSameBytes) {
  std::vector<Case> cases;
  AddPixelCases(cases);
  AddNeighbourhoodCases(cases);
  AddResamplingCases(cases);
  AddSearchCases(cases, Input(0));
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
  uint32_t ramp[256];
  for (uint32_t i = 0; i < 256; ++i) ramp[i] = i * 0x010101;
  auto& lists = ListsOf<simd::SumsLists>(ramp);
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

// A network of minima and maxima that orders all zeros and ones orders everything.
TEST(RowFunctions, MedianOfAllZerosAndOnes) {
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
  for (auto level = simd::Supported(); *level != nullptr; ++level) {
    std::vector<uint8_t> to(512);
    (*level)->median9(from, 512, to.data());
    EXPECT_EQ(to, expected) << (*level)->name;
  }
}

// Likewise where columns are sorted first: only the number of ones in each column counts.
TEST(RowFunctions, RanksOfZerosAndOnes) {
  for (const size_t size : {3, 5}) {
    std::vector<uint8_t> rows[5];
    std::vector<size_t> ones(size), sums;
    while (ones.back() <= size) {
      for (size_t x = 0; x < size; ++x) {
        for (size_t y = 0; y < size; ++y) {
          rows[y].push_back((y + sums.size()) % size < ones[x]);  // the ones are around the end
        }
      }
      sums.push_back(std::accumulate(ones.begin(), ones.end(), size_t{0}));
      ++ones[0];
      for (size_t x = 0; x + 1 < size && ones[x] > size; ++x) ones[x] = 0, ++ones[x + 1];
    }
    const uint8_t* from[5];
    for (size_t y = 0; y < size; ++y) from[y] = rows[y].data() + size / 2;
    for (auto level = simd::Supported(); *level != nullptr; ++level) {
      for (size_t rank = size == 3 ? 0 : 12; rank < (size == 3 ? 9 : 13); ++rank) {
        std::vector<uint8_t> to(rows[0].size() - (size - 1));
        (*level)->rank_of_columns(from, size, 1, rank, to.size(), to.data());
        for (size_t i = 0; i < sums.size(); ++i) {
          ASSERT_EQ(to[i * size], sums[i] + rank >= size * size) << (*level)->name << ", " << i;
        }
      }
    }
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
