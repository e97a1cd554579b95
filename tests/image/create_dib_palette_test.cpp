#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "core/bytes.h"
#include "support/image.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace ombrilo::test {
namespace {

// The entries of the palette made from an image, as red, green, blue and flags; released.
std::vector<uint32_t> Entries(const PackedDib* dib) {
  const uintptr_t palette = omb_CreateDIBPalette(dib);
  if (palette == 0) return {};
  std::vector<uint32_t> entries;
#ifdef _WIN32
  const HPALETTE handle = reinterpret_cast<HPALETTE>(palette);
  WORD count = 0;
  GetObjectA(handle, sizeof count, &count);
  entries.resize(count);
  GetPaletteEntries(handle, 0, count, reinterpret_cast<PALETTEENTRY*>(entries.data()));
  DeleteObject(handle);
#else
  auto* bytes = reinterpret_cast<uint8_t*>(palette);
  EXPECT_EQ(LoadU16(bytes), 0x300);
  entries.resize(LoadU16(bytes + 2));
  std::memcpy(entries.data(), bytes + 4, 4 * entries.size());
  std::free(bytes);
#endif
  return entries;
}

std::vector<uint32_t> Expected(const std::vector<uint32_t>& rgb) {
  std::vector<uint32_t> entries;
  for (const uint32_t c : rgb) entries.push_back((c & 255) << 16 | (c & 0xFF00) | c >> 16);
  return entries;
}

TEST(CreateDIBPalette, TakesTheAnnouncedEntriesAtAnyDepth) {
  struct Case {
    int bits, colors;
    bool core;
  };
  for (const Case& c : {Case{1, 2, false},
                        {4, 16, true},
                        {8, 256, false},
                        {8, 256, true},
                        {8, 16, false},
                        {24, 3, false}}) {
    const std::vector<uint32_t> colors = VariedColors(c.colors, 9);
    ImageBuilder builder(c.bits, 3, 2);
    builder.Colors(colors).Filler(0xFF);
    if (c.core) builder.CoreHeader();
    EXPECT_EQ(Entries(builder.Build().get()), Expected(colors));
  }
}

TEST(CreateDIBPalette, EntriesPastTheBlockAreBlack) {
  const TestImage image = ImageBuilder(24, 1, 1).Colors({0x010203}).Field(32, 16385).Build();
#ifndef _WIN32  // no palette of that size exists there
  const std::vector<uint32_t> entries = Entries(image.get());
  ASSERT_EQ(entries.size(), 16385u);
  EXPECT_EQ(entries[0], 0x030201u);
  EXPECT_EQ(entries[2], 0u);
  EXPECT_EQ(entries[16384], 0u);
#endif
}

TEST(CreateDIBPalette, NothingToMakeAPaletteOf) {
  EXPECT_EQ(omb_CreateDIBPalette(ImageBuilder(24, 1, 1).Build().get()), 0u);
  EXPECT_EQ(omb_CreateDIBPalette(ImageBuilder(8, 1, 1).Field(32, 0x10000).Build().get()), 0u);
  EXPECT_EQ(omb_CreateDIBPalette(ImageBuilder(24, 1, 1).CoreHeader().Build().get()), 0u);
}

}  // namespace
}  // namespace ombrilo::test
