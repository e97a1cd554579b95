// KERNAL records: the built-in table and the functions that make records.
#include "morphology/kernal.h"

#include <gtest/gtest.h>

#include <map>
#include <numeric>
#include <string>

#include "support/failing_memory.h"

namespace ombrilo::test {
namespace {

struct Expected {
  std::string name;
  int count, sum;
};

const Expected kExpected[] = {
    {"Circle 3x3", 9, 0},    {"Circle 5x5", 21, 0},   {"Circle 7x7", 37, 0},
    {"Circle 11x11", 97, 0}, {"Colomn 1x3", 3, 0},    {"Cross 3x3", 5, 0},
    {"hipass 3x3", 9, 1},    {"hipass 5x5", 21, 1},   {"hipass 7x7", 37, 1},
    {"higauss 5x5", 17, 1},  {"higauss 7x7", 33, 10}, {"higauss 9x9", 73, 50},
    {"horzedge 3x3", 6, 0},  {"horzedge 5x5", 20, 0}, {"horzedge 7x7", 42, 0},
    {"laplace 3x3", 9, 0},   {"laplace 5x5", 17, 0},  {"laplace 7x7", 49, 0},
    {"lopass 3x3", 8, 8},    {"lopass 5x5", 25, 25},  {"lopass 7x7", 49, 49},
    {"Ring 3x3", 8, 0},      {"Ring 5x5", 16, 0},     {"Ring 7x7", 28, 0},
    {"Row 3x1", 3, 0},       {"Row 5x1", 5, 0},       {"Row 7x1", 7, 0},
    {"sculpt ", 2, 0},       {"Square 2x2", 4, 0},    {"Square 3x3", 9, 0},
    {"Square 5x5", 25, 0},   {"Square 7x7", 49, 0},   {"tophat 3x3", 9, 0},
    {"tophat 5x5", 21, 0},   {"tophat 7x7", 37, 0},   {"unsharp 3x3", 9, 9},
    {"unsharp 5x5", 25, 25}, {"unsharp 7x7", 49, 49}, {"variance 3x3", 8, 8},
    {"vertedge 3x3", 6, 0},  {"vertedge 5x5", 20, 0}, {"vertedge 7x7", 42, 0},
    {"well 3x3", 9, 0},      {"well 5x5", 21, 0},     {"well 7x7", 37, 0}};

// Sizes are in the names; anchors are the middle, rounded down.
void ExpectRecord(const KERNAL& kernal, const Expected& e) {
  SCOPED_TRACE(e.name);
  const bool sculpt = e.name == "sculpt ";
  const std::string size = sculpt ? "3x3" : e.name.substr(e.name.find(' ') + 1);
  const int width = std::stoi(size), height = std::stoi(size.substr(size.find('x') + 1));
  EXPECT_EQ(kernal.name, e.name);
  EXPECT_EQ(kernal.width, width);
  EXPECT_EQ(kernal.height, height);
  EXPECT_EQ(kernal.anchorX, (width - 1) / 2);
  EXPECT_EQ(kernal.anchorY, (height - 1) / 2);
  ASSERT_EQ(kernal.count, e.count);
  EXPECT_EQ(kernal.bias, sculpt ? 128 : 0);
  EXPECT_EQ(std::accumulate(kernal.weights, kernal.weights + e.count, 0), e.sum);
  for (int i = 0; i < e.count; ++i) {
    const int column = kernal.offsets[2 * i] + kernal.anchorX;
    const int row = kernal.anchorY - kernal.offsets[2 * i + 1];
    EXPECT_TRUE(column >= 0 && column < width && row >= 0 && row < height) << i;
  }
}

using Weights = std::map<std::pair<int, int>, int>;

// Positions occur once, except in "higauss 7x7".
Weights WeightsOf(const KERNAL& kernal) {
  Weights weights;
  for (int i = 0; i < kernal.count; ++i) {
    weights[{kernal.offsets[2 * i], kernal.offsets[2 * i + 1]}] += kernal.weights[i];
  }
  return weights;
}

TEST(KernalTable, SizesCountsAndSums) {
  for (uint32_t i = 0; i < 45; ++i) {
    ExpectRecord(*omb_getKERNAL(i), kExpected[i]);
    EXPECT_EQ(WeightsOf(*omb_getKERNAL(i)).size(), size_t(i == 10 ? 29 : kExpected[i].count)) << i;
  }
  ExpectRecord(kGauss3x3, {"gauss 3x3", 9, 16});
  ExpectRecord(kGauss5x5, {"gauss 5x5", 25, 52});
  ExpectRecord(kGauss7x7, {"gauss 7x7", 49, 140});
  for (const uint32_t index : {45u, 46u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(omb_getKERNAL(index), nullptr);
  }
}

// What counts and sums cannot tell: orientation, and values that cancel out.
TEST(KernalTable, DirectionsAndSinglePositions) {
  const auto weights = [](uint32_t index) { return WeightsOf(*omb_getKERNAL(index)); };
  EXPECT_EQ(weights(27), (Weights{{{-1, 1}, -1}, {{1, -1}, 1}}));
  EXPECT_EQ(weights(28), (Weights{{{0, 0}, 0}, {{0, -1}, 0}, {{1, 0}, 0}, {{1, -1}, 0}}));
  EXPECT_EQ(
      weights(12),
      (Weights{
          {{-1, 1}, -1}, {{0, 1}, -2}, {{1, 1}, -1}, {{-1, -1}, 1}, {{0, -1}, 2}, {{1, -1}, 1}}));
  EXPECT_EQ(
      weights(39),
      (Weights{
          {{-1, 1}, -1}, {{-1, 0}, -2}, {{-1, -1}, -1}, {{1, 1}, 1}, {{1, 0}, 2}, {{1, -1}, 1}}));
  for (const uint32_t i : {13u, 14u, 40u, 41u}) {
    for (const auto& [at, weight] : weights(i)) {
      const int side = i < 15 ? -at.second : at.first;
      EXPECT_EQ(weight, side > 0 ? 1 : -1);
      EXPECT_NE(side, 0);
    }
  }
  // Every other grid is its own mirror image.
  for (uint32_t i = 0; i < 45; ++i) {
    if (i == 10 || (i >= 12 && i <= 14) || i == 27 || i == 28 || (i >= 39 && i <= 41)) continue;
    const Weights own = weights(i);
    for (const auto& [at, weight] : own) {
      EXPECT_EQ(own.at({-at.first, at.second}), weight) << i;
      EXPECT_EQ(own.at({at.first, -at.second}), weight) << i;
    }
  }
  EXPECT_EQ(weights(11).at({1, 0}), 27);
  EXPECT_EQ(weights(11).at({2, 0}), 7);
  EXPECT_EQ(weights(11).at({3, 1}), -8);
  EXPECT_EQ(weights(34).at({1, 1}), 3);
  EXPECT_EQ(weights(33).count({1, 1}), 1u);
  EXPECT_EQ(weights(33).at({1, 1}), -1);
  EXPECT_EQ(weights(44).at({1, 1}), -3);
  EXPECT_EQ(WeightsOf(kGauss7x7).at({1, 0}), 8);
  EXPECT_EQ(WeightsOf(kGauss7x7).at({3, 2}), 1);
}

TEST(KernalTable, Higauss7IsAnIrregularList) {
  const KERNAL& kernal = *omb_getKERNAL(10);
  const int expected[33][3] = {
      {-1, 3, -1}, {0, 3, -1},  {1, 3, -1},   {-2, 2, -1},  {-1, 2, -1}, {1, 2, -1},   {2, 2, -1},
      {-3, 1, -1}, {-2, 1, -1}, {-1, 1, 2},   {0, 1, 4},    {1, 1, 2},   {2, 1, -1},   {3, 1, -1},
      {-3, 0, -1}, {-1, 0, 4},  {0, 0, 10},   {1, 0, 4},    {3, 0, -1},  {-3, -1, -1}, {-2, -1, -1},
      {-1, -1, 2}, {0, -1, 4},  {1, -1, 2},   {2, -1, -1},  {3, -1, -1}, {-1, -3, -1}, {0, -3, -1},
      {1, -3, -1}, {0, 0, -1},  {-1, -1, -1}, {-1, -1, -1}, {-1, -1, -1}};
  for (int i = 0; i < 33; ++i) {
    EXPECT_EQ(kernal.offsets[2 * i], expected[i][0]) << i;
    EXPECT_EQ(kernal.offsets[2 * i + 1], expected[i][1]) << i;
    EXPECT_EQ(kernal.weights[i], expected[i][2]) << i;
  }
}

TEST(Kernal, NewCloneZeroDestroy) {
  KERNAL* made = omb_newKERNAL(5, 4, 3, 2, 2, -9, "mine ");
  ASSERT_NE(made, nullptr);
  for (int i = 0; i < 4; ++i) made->offsets[i] = 10 + i;
  for (int i = 0; i < 2; ++i) made->weights[i] = 20 + i;
  KERNAL* copy = omb_cloneKERNAL(made);
  omb_destroyKERNAL(made);  // the copy stands alone
  ExpectRecord(*omb_getKERNAL(27), kExpected[27]);
  EXPECT_EQ(std::string(copy->name), "mine ");
  EXPECT_EQ(copy->width, 5);
  EXPECT_EQ(copy->height, 4);
  EXPECT_EQ(copy->anchorX, 3);
  EXPECT_EQ(copy->anchorY, 2);
  EXPECT_EQ(copy->bias, -9);
  EXPECT_EQ(copy->offsets[3], 13);
  EXPECT_EQ(copy->weights[1], 21);
  omb_destroyKERNAL(copy);

  for (uint32_t i = 0; i < 45; ++i) {
    KERNAL* clone = omb_cloneKERNAL(omb_getKERNAL(i));
    ExpectRecord(*clone, kExpected[i]);
    EXPECT_EQ(WeightsOf(*clone), WeightsOf(*omb_getKERNAL(i)));
    EXPECT_NE(clone->weights, omb_getKERNAL(i)->weights);
    omb_destroyKERNAL(clone);
  }
  KERNAL* empty = omb_newKERNAL(1, 1, 0, 0, 0, 0, nullptr);
  EXPECT_STREQ(empty->name, "");
  omb_destroyKERNAL(empty);

  KERNAL fields = *omb_getKERNAL(3);
  omb_zeroKERNAL(&fields);
  EXPECT_EQ(fields.width | fields.height | fields.anchorX | fields.anchorY | fields.count, 0);
  EXPECT_TRUE(fields.offsets == nullptr && fields.name == nullptr && fields.weights == nullptr);
  omb_zeroKERNAL(nullptr);
  omb_destroyKERNAL(nullptr);
  EXPECT_EQ(omb_cloneKERNAL(nullptr), nullptr);
}

TEST(Kernal, NothingIsLeftOfAFailure) {
  EXPECT_EQ(omb_newKERNAL(3, 3, 1, 1, -1, 0, "x"), nullptr);
  for (const bool clone : {false, true}) {
    for (int n = 1; n <= 4; ++n) {
      MemoryWatch watch(n);
      KERNAL* made =
          clone ? omb_cloneKERNAL(omb_getKERNAL(0)) : omb_newKERNAL(3, 3, 1, 1, 9, 0, "x");
      watch.Stop();
      EXPECT_EQ(made, nullptr);
      EXPECT_TRUE(watch.failed());
      EXPECT_EQ(watch.still_held(), 0);
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
