// The row functions of scaling, rotation and flips give the same bytes at every level and length.
#include <gtest/gtest.h>

#include <algorithm>

#include "rows/row_functions.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

using rows::RowFunctions;

// Random inputs in blocks of exactly the length that a function may touch.
struct Inputs {
  explicit Inputs(size_t n) : count(n), offsets(n), columns(n), shifts(n), bytes(3 * n + 4) {
    const auto noise = Noise(0x7FFFFFFF, static_cast<uint32_t>(n));
    int x = 0;
    const auto next = [&] { return noise(x++, 1); };
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(next());
    for (uint32_t& entry : table) entry = next();
    for (size_t i = 0; i < n; ++i) {
      // The last offset of each is the last byte.
      offsets[i] = static_cast<int32_t>(i + 1 == n ? bytes.size() - 1 : next() % bytes.size()) - 2;
      columns[i] = static_cast<int32_t>(next() % 5000);
      shifts[i] = static_cast<uint8_t>(next() % 8);
    }
    for (auto& word : words) {
      word.resize(n);
      for (uint32_t& value : word) value = next();
    }
    for (auto& level : levels) {
      level.resize(n == 0 ? 1 : n);
      for (float& value : level) value = static_cast<float>(next()) / 1e9f - 1;
    }
    for (int k = 0; k < 4; ++k) {
      taps[k] = words[k].data();
      floats[k] = levels[k].data();
      more_floats[k] = levels[4 + k].data();
    }
  }

  size_t count;
  std::vector<int32_t> offsets, columns;
  std::vector<uint8_t> shifts, bytes;
  std::vector<uint32_t> words[4];
  std::vector<float> levels[8];
  uint32_t table[256];
  const uint32_t* taps[4];
  const float *floats[4], *more_floats[4];
};

// Outputs of one function, bytes of whatever type.
class Outputs {
 public:
  template <class T>
  T* New(size_t count) {
    blocks_.emplace_back(count * sizeof(T), uint8_t{0xCD});
    return reinterpret_cast<T*>(blocks_.back().data());
  }
  bool operator==(const Outputs& other) const { return blocks_ == other.blocks_; }

 private:
  std::vector<std::vector<uint8_t>> blocks_;
};

struct Case {
  const char* name;
  void (*run)(const RowFunctions&, const Inputs&, Outputs&);
};

constexpr int kBytes[4] = {1, 3, 0, 2};

const Case kCases[] = {
    {"swap_bytes",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       auto* a = out.New<uint8_t>(in.count);
       auto* b = out.New<uint8_t>(in.count);
       std::copy_n(in.bytes.begin(), in.count, a);
       std::copy_n(in.shifts.begin(), in.count, b);
       f.swap_bytes(a, b, in.count);
     }},
    {"mirror8",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       f.mirror8(in.bytes.data(), in.count, out.New<uint8_t>(in.count));
     }},
    {"mirror24",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       f.mirror24(in.bytes.data(), in.count, out.New<uint8_t>(3 * in.count));
     }},
    {"find_pixels",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       for (const int bits : {1, 4, 8, 24}) {
         f.find_pixels(in.columns.data(), -1, bits == 4 ? nullptr : in.offsets.data(), 5000, bits,
                       in.count, out.New<int32_t>(in.count), out.New<uint8_t>(in.count));
       }
     }},
    {"fetch_words",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       f.fetch_words(in.bytes.data(), static_cast<int32_t>(in.bytes.size()), in.offsets.data(), 2,
                     in.count, out.New<uint32_t>(in.count));
       // Neighbours in a row, up to the last bytes.
       std::vector<int32_t> close(in.count);
       const auto count = static_cast<int32_t>(in.count);
       for (int32_t i = 0; i < count; ++i) close[i] = i * 5 / 2;
       f.fetch_words(in.bytes.data(), count * 5 / 2 + 4, close.data(), 0, in.count,
                     out.New<uint32_t>(in.count));
     }},
    {"fetch_indexed",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       const std::vector<uint8_t> whole(in.count);
       const auto bytes = static_cast<int32_t>(in.bytes.size());
       f.fetch_indexed(in.bytes.data(), bytes, in.offsets.data(), in.shifts.data(), 2, 1, in.table,
                       in.count, out.New<uint32_t>(in.count));
       f.fetch_indexed(in.bytes.data(), bytes, in.offsets.data(), whole.data(), 2, 255, in.table,
                       in.count, out.New<uint32_t>(in.count));
     }},
    {"low_bytes, pack_bytes",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       f.low_bytes(in.taps[0], in.count, out.New<uint8_t>(in.count));
       f.pack_bytes(in.taps, in.count, out.New<uint32_t>(in.count));
     }},
    {"bilinear",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       for (const bool one_dy : {false, true}) {
         f.bilinear(in.taps, in.floats[0], in.floats[1], one_dy, in.count,
                    out.New<uint32_t>(in.count));
         f.bilinear_gray(in.taps[0], in.taps[1], in.floats[0], in.floats[1], one_dy, in.count,
                         out.New<uint32_t>(in.count));
       }
     }},
    {"cubic",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       float* weights[4];
       for (float*& w : weights) w = out.New<float>(in.count);
       f.cubic_weights(in.floats[0], in.count, weights);
       f.cubic_across(in.taps, in.floats, in.count, in.count, out.New<float>(3 * in.count));
       f.cubic_across_gray(in.taps[0], kBytes, in.floats, in.count, out.New<float>(in.count));
       std::vector<float> planes[4];
       const float* sums[4];
       for (int k = 0; k < 4; ++k) {
         for (int c = 0; c < 3; ++c) {
           const float* from = in.floats[(k + c) % 4];
           for (size_t i = 0; i < in.count; ++i) planes[k].push_back(300 * from[i]);
         }
         sums[k] = planes[k].data();
       }
       for (const bool one_weight : {false, true}) {
         f.cubic_down(sums, in.more_floats, one_weight, in.count, in.count,
                      out.New<uint32_t>(in.count));
         f.cubic_down_gray(sums, in.more_floats, one_weight, in.count, out.New<uint32_t>(in.count));
       }
     }},
    {"positions",
     [](const RowFunctions& f, const Inputs& in, Outputs& out) {
       float* positions = out.New<float>(in.count);
       f.line_positions(-17, 0.9876f, 0.3f, 12, in.count, positions);
       f.split_positions(positions, in.count, 1, 20, out.New<int32_t>(in.count),
                         out.New<int32_t>(in.count), out.New<float>(in.count));
     }},
};

TEST(GeometryRows, EveryLevelGivesTheSameBytes) {
  for (const Case& test : kCases) {
    for (size_t n = 0; n < 80; ++n) {
      const Inputs inputs(n);
      Outputs expected;
      test.run(*rows::Supported()[0], inputs, expected);
      for (auto level = rows::Supported() + 1; *level != nullptr; ++level) {
        Outputs outputs;
        test.run(**level, inputs, outputs);
        EXPECT_TRUE(outputs == expected) << test.name << " " << (*level)->name << " " << n;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
