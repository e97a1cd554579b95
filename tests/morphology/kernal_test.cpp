// KERNAL records: the functions that make them. What the built-in ones hold is tested in contract/.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "ombrilo/ombrilo.h"
#include "support/every_export.h"
#include "support/failing_memory.h"

namespace ombrilo::test {
namespace {

// Everything that a record says; entries in their order.
uint32_t DigestOf(const KERNAL& kernal) {
  Digest digest;
  for (const int32_t field :
       {kernal.width, kernal.height, kernal.anchorX, kernal.anchorY, kernal.count, kernal.bias}) {
    digest.Add(&field, sizeof field);
  }
  const auto count = static_cast<size_t>(kernal.count);
  digest.Add(kernal.offsets, 2 * count * sizeof *kernal.offsets);
  digest.Add(kernal.weights, count * sizeof *kernal.weights);
  digest.Add(kernal.name, std::strlen(kernal.name));
  return static_cast<uint32_t>(digest.value());
}

TEST(Kernal, NewCloneZeroDestroy) {
  KERNAL* made = omb_newKERNAL(5, 4, 3, 2, 2, -9, "mine ");
  ASSERT_NE(made, nullptr);
  for (int i = 0; i < 4; ++i) made->offsets[i] = 10 + i;
  for (int i = 0; i < 2; ++i) made->weights[i] = 20 + i;
  KERNAL* copy = omb_cloneKERNAL(made);
  EXPECT_NE(copy->weights, made->weights);
  omb_destroyKERNAL(made);  // the copy does not need it
  int32_t offsets[] = {10, 11, 12, 13}, weights[] = {20, 21};
  char name[] = "mine ";
  EXPECT_EQ(DigestOf(*copy), DigestOf({5, 4, 3, 2, 2, -9, offsets, name, weights}));
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
