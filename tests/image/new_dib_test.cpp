#include <gtest/gtest.h>

#include "core/packed_dib.h"
#include "support/failing_memory.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

TEST(NewDib, HeaderTableAndZeroedRowsAtEveryDepth) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    const TestImage image(omb_newdib(5, 3, static_cast<uint16_t>(bits)));
    ASSERT_NE(image.get(), nullptr);
    EXPECT_EQ(image.Bytes(), ImageBuilder(bits, 5, 3).Build().Bytes()) << bits;
  }
}

TEST(NewDib, RefusesWhatCannotBe) {
  for (const int bits : {0, 2, 12, 48}) {
    EXPECT_EQ(omb_newdib(5, 3, static_cast<uint16_t>(bits)), nullptr);
  }
  EXPECT_EQ(omb_newdib(0, 3, 8), nullptr);
  EXPECT_EQ(omb_newdib(3, 0, 8), nullptr);
  EXPECT_EQ(omb_newdib(3, -3, 8), nullptr);
  EXPECT_EQ(omb_newdib(0x7FFFFFFF, 1, 24), nullptr);
  EXPECT_EQ(omb_newdib(0x10000, 0x8000, 8), nullptr);
  MemoryWatch watch(1);
  EXPECT_EQ(omb_newdib(5, 3, 8), nullptr);
}

}  // namespace
}  // namespace ombrilo::test
