#include <gtest/gtest.h>

#include "core/bytes.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

struct Header {
  uint8_t bytes[40] = {};
  const PackedDib* dib() const { return reinterpret_cast<const PackedDib*>(bytes); }
};

Header Info(uint32_t width, uint32_t height, uint16_t bits, uint32_t used = 0,
            uint16_t planes = 1) {
  Header h;
  StoreU32(h.bytes, 40);
  StoreU32(h.bytes + 4, width);
  StoreU32(h.bytes + 8, height);
  StoreU16(h.bytes + 12, planes);
  StoreU16(h.bytes + 14, bits);
  StoreU32(h.bytes + 32, used);
  return h;
}

Header Core(uint32_t size, uint16_t width, uint16_t height, uint16_t bits) {
  Header h;
  StoreU32(h.bytes, size);
  StoreU16(h.bytes + 4, width);
  StoreU16(h.bytes + 6, height);
  StoreU16(h.bytes + 10, bits);
  return h;
}

TEST(HeaderQueries, SizesAndDepthComeFromTheHeaderKind) {
  const Header info = Info(0x12345, 0xFFFFFFF0, 24);
  EXPECT_EQ(omb_DIBWidth(info.dib()), 0x12345u);
  EXPECT_EQ(omb_DIBHeight(info.dib()), 0xFFFFFFF0u);
  EXPECT_EQ(omb_DIBBitCount(info.dib()), 24);
  for (const uint32_t size : {12u, 41u, 0u, 0xFFFFFFFFu}) {
    const Header core = Core(size, 0xFFFE, 0x8001, 4);
    EXPECT_EQ(omb_DIBWidth(core.dib()), 0xFFFEu);
    EXPECT_EQ(omb_DIBHeight(core.dib()), 0x8001u);
    EXPECT_EQ(omb_DIBBitCount(core.dib()), 4);
  }
}

TEST(HeaderQueries, ColorsTableSizeAndStartOfPixels) {
  struct Case {
    Header header;
    uint32_t colors;
    uint16_t table;
  };
  const Case cases[] = {
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
  for (const Case& c : cases) {
    EXPECT_EQ(omb_DIBNumColors(c.header.dib()), c.colors);
    EXPECT_EQ(omb_PaletteSize(c.header.dib()), c.table);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(omb_FindDIBBits(c.header.dib())) -
                  reinterpret_cast<uintptr_t>(c.header.bytes),
              LoadU32(c.header.bytes) + c.table);
  }
}

TEST(HeaderQueries, BytesPerLineCountsPlanesIn32Bits) {
  const std::pair<Header, int32_t> cases[] = {
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
  for (const auto& [header, bytes] : cases) EXPECT_EQ(omb_BytesPerLine(header.dib()), bytes);
}

}  // namespace
}  // namespace ombrilo::test
