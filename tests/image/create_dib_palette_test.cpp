#include <gtest/gtest.h>

#include <cstdlib>

#include "core/bytes.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

#ifndef _WIN32  // no palette of that size exists there
TEST(CreateDIBPalette, EntriesPastTheBlockAreBlack) {
  const TestImage image = ImageBuilder(24, 1, 1).Colors({0x010203}).Field(32, 16385).Build();
  auto* palette = reinterpret_cast<uint8_t*>(omb_CreateDIBPalette(image.get()));
  ASSERT_NE(palette, nullptr);
  EXPECT_EQ(LoadU16(palette), 0x300);
  EXPECT_EQ(LoadU16(palette + 2), 16385);
  EXPECT_EQ(LoadU32(palette + 4), 0x030201u);
  for (const int entry : {2, 16384}) EXPECT_EQ(LoadU32(palette + 4 + 4 * entry), 0u);
  std::free(palette);
}
#endif

TEST(CreateDIBPalette, NothingToMakeAPaletteOf) {
  EXPECT_EQ(omb_CreateDIBPalette(ImageBuilder(24, 1, 1).Build().get()), 0u);
  EXPECT_EQ(omb_CreateDIBPalette(ImageBuilder(8, 1, 1).Field(32, 0x10000).Build().get()), 0u);
  EXPECT_EQ(omb_CreateDIBPalette(ImageBuilder(24, 1, 1).CoreHeader().Build().get()), 0u);
}

}  // namespace
}  // namespace ombrilo::test
