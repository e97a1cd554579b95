// The bridge on a real screen. The viewer's tests copy windows from it; every call in order, and
// every failure, is in bridge_test.cpp.
#include <gtest/gtest.h>
#include <windows.h>

#include "core/nearest_entry.h"
#include "core/packed_dib.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

TestImage FromBitmap(HBITMAP bitmap) {
  return TestImage(reinterpret_cast<PackedDib*>(omb_bmtodib(bitmap, nullptr)));
}

TEST(WindowsBridge, DeviceBitmapsBecomeImages) {
  constexpr int kWidth = 37, kHeight = 11;
  for (const UINT bits : {1, 24, 32}) {
    const size_t stride = (kWidth * bits + 15) / 16 * 2;
    std::vector<uint8_t> device(stride * kHeight);
    std::vector<uint32_t> expected;
    for (size_t y = 0; y < kHeight; ++y) {
      for (size_t x = 0; x < kWidth; ++x) {
        const uint32_t noise = Noise(1 << 24, 5)(static_cast<int>(x), static_cast<int>(y));
        expected.push_back(bits > 1 ? noise : (noise & 1) * 0xFFFFFF);
        uint8_t* pixel = &device[y * stride + x * bits / 8];
        if (bits == 1) *pixel |= static_cast<uint8_t>((noise & 1) << (7 - x % 8));
        for (size_t c = 0; bits > 1 && c < 3; ++c) pixel[c] = static_cast<uint8_t>(noise >> 8 * c);
      }
    }
    const HBITMAP bitmap = CreateBitmap(kWidth, kHeight, 1, bits, device.data());
    const TestImage image = FromBitmap(bitmap);
    ASSERT_NE(image.get(), nullptr);
    EXPECT_EQ(image.bit_count(), bits == 1 ? 1 : 24);
    EXPECT_EQ(image.width(), kWidth);
    EXPECT_EQ(image.Colors(), expected) << bits << " bits";
    DeleteObject(bitmap);
  }
  EXPECT_EQ(omb_bmtodib(nullptr, nullptr), 0u);
  EXPECT_EQ(omb_bmtodib(reinterpret_cast<HBITMAP>(0x12345678), nullptr), 0u);
}

TEST(WindowsBridge, SectionsShowTheImage) {
  for (const int bits : {1, 4, 8, 24}) {
    const TestImage image = ImageBuilder(bits, 19, 6)
                                .Colors(VariedColors(bits <= 8 ? 1 << bits : 0, 5))
                                .Pixels(Noise(1u << bits, 2))
                                .Build();
    const HBITMAP section = omb_DIBToDIBSection(image.get());
    ASSERT_NE(section, nullptr);
    const HDC memory = CreateCompatibleDC(nullptr);
    const HGDIOBJ previous = SelectObject(memory, section);
    const uint32_t color = image.Colors()[2 * 19 + 7];
    EXPECT_EQ(GetPixel(memory, 7, 2), RGB(color >> 16, color >> 8 & 255, color & 255));
    SelectObject(memory, previous);
    DeleteDC(memory);
    // The way back gives the same colors.
    EXPECT_EQ(FromBitmap(section).Colors(), image.Colors()) << bits << " bits";
    DeleteObject(section);
  }
}

TEST(WindowsBridge, NearestEntryIsTheSystems) {
  for (const int count : {2, 16, 256}) {
    for (uint32_t seed = 0; seed < 6; ++seed) {
      std::vector<uint32_t> colors = seed == 0 ? GrayRamp(count) : VariedColors(count, seed);
      if (seed == 5) {  // ties
        for (uint32_t& color : colors) color &= 0xC0C0C0;
      }
      const int bits = count == 2 ? 1 : count == 16 ? 4 : 8;
      const TestImage image = ImageBuilder(bits, 1, 1).Colors(colors).Build();
      const auto system = reinterpret_cast<HPALETTE>(omb_CreateDIBPalette(image.get()));
      NearestEntry nearest(*MakeDIBPalette(*DibView::Open(image.get())), UINT64_MAX);
      for (const uint32_t c : VariedColors(3000, 77 + seed)) {
        const auto red = static_cast<uint8_t>(c >> 16), green = static_cast<uint8_t>(c >> 8),
                   blue = static_cast<uint8_t>(c);
        ASSERT_EQ(nearest.Find(blue, green, red),
                  GetNearestPaletteIndex(system, RGB(red, green, blue)));
      }
      DeleteObject(system);
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
