// New blocks, what headers say, and palettes made of color tables.
#include <gtest/gtest.h>

#include <cstdlib>

#include "core/bytes.h"
#include "support/failing_memory.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

// A header with any sizes, without rows.
TestImage Info(uint32_t width, uint32_t height, int bits, uint32_t used = 0, uint32_t planes = 1) {
  const uint32_t depth = static_cast<uint32_t>(bits) << 16;
  ImageBuilder builder(bits, 0, 0);
  builder.Field(4, width).Field(8, height).Field(12, depth | planes).Field(32, used);
  return builder.Build();
}
TestImage Core(uint32_t size, uint32_t width, uint32_t height, int bits) {
  ImageBuilder builder(bits, 0, 0);
  return builder.CoreHeader().Field(0, size).Field(4, height << 16 | width).Build();
}

TEST(NewDib, HeaderTableAndZeroedRowsAtEveryDepth) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    const TestImage image(omb_newdib(5, 3, static_cast<uint16_t>(bits)));
    ASSERT_NE(image.get(), nullptr);
    EXPECT_EQ(image.Bytes(), ImageBuilder(bits, 5, 3).Build().Bytes()) << bits;
  }
}

TEST(NewDib, RefusesWhatCannotBe) {
  constexpr int kCases[][3] = {{5, 3, 0},  {5, 3, 2},           {5, 3, 12},
                               {5, 3, 48}, {0, 3, 8},           {3, 0, 8},
                               {3, -3, 8}, {0x7FFFFFFF, 1, 24}, {0x10000, 0x8000, 8}};
  for (const auto& [width, height, bits] : kCases) {
    EXPECT_EQ(omb_newdib(width, height, static_cast<uint16_t>(bits)), nullptr) << bits;
  }
  MemoryWatch watch(1);
  EXPECT_EQ(omb_newdib(5, 3, 8), nullptr);
}

TEST(HeaderQueries, SizesAndDepthComeFromTheHeaderKind) {
  const TestImage info = Info(0x12345, 0xFFFFFFF0, 24);
  EXPECT_EQ(omb_DIBWidth(info.get()), 0x12345u);
  EXPECT_EQ(omb_DIBHeight(info.get()), 0xFFFFFFF0u);
  EXPECT_EQ(omb_DIBBitCount(info.get()), 24);
  for (const uint32_t size : {12u, 41u, 0u, 0xFFFFFFFFu}) {
    const TestImage core = Core(size, 0xFFFE, 0x8001, 4);
    EXPECT_EQ(omb_DIBWidth(core.get()), 0xFFFEu);
    EXPECT_EQ(omb_DIBHeight(core.get()), 0x8001u);
    EXPECT_EQ(omb_DIBBitCount(core.get()), 4);
  }
}

TEST(HeaderQueries, ColorsTableSizeAndStartOfPixels) {
  const struct {
    TestImage image;
    uint32_t colors;
    uint16_t table;
  } cases[] = {
      {Info(1, 1, 1), 2, 8},
      {Info(1, 1, 4), 16, 64},
      {Info(1, 1, 8), 256, 1024},
      {Info(1, 1, 8, 17), 17, 68},
      {Info(1, 1, 24), 0, 0},
      {Info(1, 1, 24, 2), 2, 8},
      {Info(1, 1, 2), 0, 0},
      // The table's size is a 16-bit number, the number of colors is not.
      {Info(1, 1, 8, 16384), 16384, 0},
      {Info(1, 1, 8, 16385), 16385, 4},
      {Info(1, 1, 8, 65536), 65536, 0},
      {Info(1, 1, 8, 65537), 65537, 4},
      {Core(12, 1, 1, 1), 2, 6},
      {Core(12, 1, 1, 8), 256, 768},
      {Core(12, 1, 1, 2), 0, 0},
      {Core(41, 1, 1, 4), 16, 48},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(omb_DIBNumColors(c.image.get()), c.colors);
    EXPECT_EQ(omb_PaletteSize(c.image.get()), c.table);
    EXPECT_EQ(omb_FindDIBBits(c.image.get()) - c.image.raw(), LoadU32(c.image.raw()) + c.table);
  }
}

TEST(HeaderQueries, BytesPerLineCountsPlanesIn32Bits) {
  const std::pair<TestImage, int32_t> cases[] = {
      {Info(1, 1, 1), 4},
      {Info(1, 1, 24), 4},
      {Info(5, 1, 24), 16},
      {Info(5, 1, 8, 0, 3), 16},
      {Info(5, 1, 24, 0, 0), 0},
      // Division rounds toward zero: (-24 * 3 + 31) / 32 is -1.
      {Info(0xFFFFFFFD, 1, 24), -4},
      {Info(0x20000000, 1, 8), 0},
      // Also for an image that operations would refuse: 24 * 0x10000001 wraps to 0x80000018.
      {Info(0x10000001, 1, 24), static_cast<int32_t>(0x80000018u + 31) / 32 * 4},
  };
  for (const auto& [image, bytes] : cases) EXPECT_EQ(omb_BytesPerLine(image.get()), bytes);
}

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
