// KERNAL records: the functions that make them. What the built-in ones hold is tested in contract/.
#include <gtest/gtest.h>

#include <vector>

#include "ombrilo/ombrilo.h"
#include "support/failing_memory.h"

namespace ombrilo::test {
namespace {

// All numbers of a record; entries in their order.
std::vector<int32_t> NumbersOf(const KERNAL& k) {
  std::vector<int32_t> numbers = {k.width, k.height, k.anchorX, k.anchorY, k.count, k.bias};
  numbers.insert(numbers.end(), k.offsets, k.offsets + 2 * k.count);
  numbers.insert(numbers.end(), k.weights, k.weights + k.count);
  return numbers;
}

TEST(Kernal, NewCloneZeroDestroy) {
  KERNAL* made = omb_newKERNAL(5, 4, 3, 2, 2, -9, "mine ");
  ASSERT_NE(made, nullptr);
  for (int i = 0; i < 4; ++i) made->offsets[i] = 10 + i;
  for (int i = 0; i < 2; ++i) made->weights[i] = 20 + i;
  KERNAL* copy = omb_cloneKERNAL(made);
  EXPECT_NE(copy->weights, made->weights);
  omb_destroyKERNAL(made);  // the copy does not need it
  EXPECT_EQ(NumbersOf(*copy), (std::vector{5, 4, 3, 2, 2, -9, 10, 11, 12, 13, 20, 21}));
  EXPECT_STREQ(copy->name, "mine ");
  omb_destroyKERNAL(copy);
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
  for (int n = 1; n <= 4; ++n) {
    MemoryWatch watch(n);
    KERNAL* made = omb_newKERNAL(3, 3, 1, 1, 9, 0, "x");
    watch.Stop();
    EXPECT_EQ(made, nullptr);
    EXPECT_TRUE(watch.failed());
    EXPECT_EQ(watch.still_held(), 0);
  }
}

}  // namespace
}  // namespace ombrilo::test
