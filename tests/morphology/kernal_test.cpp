// KERNAL records: the built-in table and the functions that make records.
#include "morphology/kernal.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

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

// By index, then those that nobody is handed out.
constexpr uint32_t kDigests[] = {
    0x7949D2F8, 0xC33E42C4, 0x3EFDC6AC, 0xC4CE4F80, 0x2848AEDE, 0xD14FE420, 0xCA20FD33, 0x4239F97B,
    0x83F5C1D3, 0x1BF2A6D7, 0xA4DA4778, 0xC9C7B342, 0x11518155, 0x6C212D9F, 0x37332F69, 0xF2768CAA,
    0xF9105FAA, 0x978BC7FA, 0x6E43D6C5, 0x2095D8FD, 0xC13DD66D, 0xDDAC198B, 0x783033D3, 0x7208B81F,
    0xA28B90AA, 0xEECA4A24, 0x26CC8E96, 0x5574A08F, 0xACB25BF2, 0x95F31E53, 0xC628F53B, 0x95C0C09B,
    0x64CE1D48, 0x8FA3A8E0, 0xB474D2F8, 0x0054185A, 0x48441802, 0xA3A557F2, 0x0B16F9EE, 0xC18192DF,
    0x15DC19C5, 0x874FEFC3, 0xDE6A3F97, 0x0944DF17, 0x00FB7E3F, 0xEF8A08D1, 0x9F8EDA9D, 0xF978A165,
};

TEST(KernalTable, EveryRecordIsAsItAlwaysWas) {
  std::vector<const KERNAL*> records;
  for (uint32_t i = 0; i < 45; ++i) records.push_back(omb_getKERNAL(i));
  for (const KERNAL* extra : {&kGauss3x3, &kGauss5x5, &kGauss7x7}) records.push_back(extra);
  for (size_t i = 0; i < records.size(); ++i) {
    EXPECT_EQ(DigestOf(*records[i]), kDigests[i]) << records[i]->name;
    KERNAL* clone = omb_cloneKERNAL(records[i]);
    EXPECT_EQ(DigestOf(*clone), kDigests[i]) << records[i]->name;
    EXPECT_NE(clone->weights, records[i]->weights);
    omb_destroyKERNAL(clone);
  }
  for (const uint32_t index : {45u, 46u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(omb_getKERNAL(index), nullptr);
  }
}

TEST(Kernal, NewCloneZeroDestroy) {
  KERNAL* made = omb_newKERNAL(5, 4, 3, 2, 2, -9, "mine ");
  ASSERT_NE(made, nullptr);
  for (int i = 0; i < 4; ++i) made->offsets[i] = 10 + i;
  for (int i = 0; i < 2; ++i) made->weights[i] = 20 + i;
  KERNAL* copy = omb_cloneKERNAL(made);
  omb_destroyKERNAL(made);  // the copy stands alone
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
