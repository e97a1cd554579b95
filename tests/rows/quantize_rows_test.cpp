// Every instruction set teaches a palette network the same.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "rows/row_functions.h"

namespace ombrilo::rows {
namespace {

TEST(RowFunctions, LearnIsTheSameAtEveryLevel) {
  std::vector<uint8_t> samples(3 * 4000);
  uint32_t seed = 1;
  for (uint8_t& byte : samples) {
    seed = seed * 1664525u + 1013904223u;
    byte = static_cast<uint8_t>(seed >> 24);
  }
  for (const size_t count : {2, 4, 16, 256}) {
    for (const size_t reach : {0, 1, 7, 8, 15, 16, 31}) {
      const auto learn = [&](const RowFunctions& functions) {
        auto neurons = std::make_unique<Neurons>();
        neurons->count = count;
        for (size_t i = 0; i < count; ++i) {
          for (auto& channel : neurons->channel) {
            channel[Neurons::kMargin + i] = static_cast<int16_t>((i << 12) / count);
          }
          neurons->wins[i] = static_cast<uint16_t>(65536 / count - 1);
        }
        for (size_t i = 0; i <= reach; ++i) {
          const auto rate = static_cast<int32_t>((1 << 18) / (i * i + 1));
          neurons->rate[Neurons::kMargin + i] = neurons->rate[Neurons::kMargin - i] = rate;
        }
        neurons->reach = reach;
        functions.learn(samples.data(), samples.size() / 3, *neurons);
        std::vector<int> state(neurons->wins, neurons->wins + count);
        for (const auto& channel : neurons->channel) {
          const int16_t* first = channel + Neurons::kMargin;
          state.insert(state.end(), first, first + count);
        }
        return state;
      };
      const std::vector<int> expected = learn(*Supported()[0]);
      for (int i = 1; Supported()[i] != nullptr; ++i) {
        ASSERT_EQ(learn(*Supported()[i]), expected) << Supported()[i]->name << ", " << count;
      }
    }
  }
}

}  // namespace
}  // namespace ombrilo::rows
