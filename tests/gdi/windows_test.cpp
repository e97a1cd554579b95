// The bridge on a real screen: what it copies is what Windows shows.
#include <gtest/gtest.h>
#include <windows.h>

#include "core/bytes.h"
#include "core/nearest_entry.h"
#include "core/packed_dib.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

TestImage FromBitmap(HBITMAP bitmap) {
  return TestImage(reinterpret_cast<PackedDib*>(omb_bmtodib(bitmap, nullptr)));
}

TestImage FromWindow(HWND window, uint16_t selector) {
  return TestImage(reinterpret_cast<PackedDib*>(omb_CopyWindowToDIB(window, selector)));
}

std::vector<uint32_t> Colors(const TestImage& image) {
  std::vector<uint32_t> colors = image.Pixels();
  if (image.bit_count() > 8) return colors;
  for (uint32_t& value : colors) value = image.Color(static_cast<int>(value));
  return colors;
}

TEST(WindowsBridge, DeviceBitmapsThereAndBack) {
  for (const UINT bits : {1, 16, 24, 32}) {
    SCOPED_TRACE(bits);
    constexpr int kWidth = 37, kHeight = 11;
    const size_t stride = (kWidth * bits + 15) / 16 * 2;
    std::vector<uint8_t> device(stride * kHeight);
    for (size_t i = 0; i < device.size(); ++i) {
      const bool unused = (bits == 32 && i % 4 == 3) || (bits == 24 && i % stride == 3 * kWidth) ||
                          (bits == 1 && i % stride >= kWidth / 8);
      device[i] = unused ? uint8_t{0} : static_cast<uint8_t>(i * 41 + i / 7);
    }
    if (bits == 16) {  // 5 bits a channel
      for (size_t i = 1; i < device.size(); i += 2) device[i] &= 0x7F;
    }
    const HBITMAP bitmap = CreateBitmap(kWidth, kHeight, 1, bits, device.data());
    const TestImage image = FromBitmap(bitmap);
    ASSERT_NE(image.get(), nullptr);
    ASSERT_EQ(image.bit_count(), bits == 1 ? 1 : 24);
    ASSERT_EQ(image.width(), kWidth);
    ASSERT_EQ(image.height(), kHeight);
    const std::vector<uint32_t> colors = Colors(image);
    for (int i = 0; i < kWidth * kHeight; ++i) {
      const uint8_t* row = &device[stride * static_cast<size_t>(i / kWidth)];
      const int x = i % kWidth;
      uint32_t expected = 0;
      if (bits == 1) {
        expected = (row[x / 8] >> (7 - x % 8) & 1) != 0 ? 0xFFFFFF : 0;
      } else if (bits == 16) {
        const int pixel = LoadU16(row + 2 * x);
        const auto eight = [&](int shift) {
          const int five = pixel >> shift & 31;
          return five << 3 | five >> 2;
        };
        expected = Rgb(eight(10), eight(5), eight(0));
      } else {
        const uint8_t* pixel = row + static_cast<size_t>(x) * bits / 8;
        expected = Rgb(pixel[2], pixel[1], pixel[0]);
      }
      ASSERT_EQ(colors[static_cast<size_t>(i)], expected) << i;
    }

    const HDC screen = GetDC(nullptr);
    const HBITMAP again = CreateBitmap(kWidth, kHeight, 1, bits, nullptr);
    EXPECT_EQ(SetDIBits(screen, again, 0, kHeight, omb_FindDIBBits(image.get()),
                        reinterpret_cast<const BITMAPINFO*>(image.get()), DIB_RGB_COLORS),
              kHeight);
    std::vector<uint8_t> back(device.size(), 0);
    GetBitmapBits(again, static_cast<LONG>(back.size()), back.data());
    if (bits == 32) {
      for (size_t i = 3; i < back.size(); i += 4) back[i] = 0;
    }
    EXPECT_EQ(back, device);
    ReleaseDC(nullptr, screen);
    DeleteObject(again);
    DeleteObject(bitmap);
  }
  EXPECT_EQ(omb_bmtodib(nullptr, nullptr), 0u);
  EXPECT_EQ(omb_bmtodib(reinterpret_cast<HBITMAP>(0x12345678), nullptr), 0u);
}

TEST(WindowsBridge, SectionsShowTheImage) {
  for (const int bits : {1, 4, 8, 24}) {
    for (const int used : {0, 2}) {
      SCOPED_TRACE(testing::Message() << bits << " bits, " << used << " colors");
      ImageBuilder builder(bits, 19, 6);
      const int full = bits <= 8 ? 1 << bits : 0;
      builder.Colors(VariedColors(used == 0 ? full : used, 5));
      builder.Pixels(Noise(used != 0 && bits <= 8 ? 2 : bits <= 8 ? 1u << bits : 0x1000000, 2));
      const TestImage image = builder.Build();
      const HBITMAP section = omb_DIBToDIBSection(image.get());
      ASSERT_NE(section, nullptr);
      const HDC memory = CreateCompatibleDC(nullptr);
      const HGDIOBJ previous = SelectObject(memory, section);
      for (int y = 0; y < 6; ++y) {
        for (int x = 0; x < 19; ++x) {
          const uint32_t value = image.Pixel(x, y);
          const uint32_t color = bits <= 8 ? image.Color(static_cast<int>(value)) : value;
          ASSERT_EQ(GetPixel(memory, x, y), RGB(color >> 16, color >> 8 & 255, color & 255));
        }
      }
      if (bits <= 8) {
        std::vector<uint32_t> table(256, 0);
        EXPECT_EQ(GetDIBColorTable(memory, 0, 256, reinterpret_cast<RGBQUAD*>(table.data())),
                  static_cast<UINT>(full));
        const std::vector<uint8_t> bytes = image.Bytes();
        for (int i = 0; i < full; ++i) {
          const size_t at = 40 + 4 * static_cast<size_t>(i);
          uint32_t expected = 0;
          for (size_t c = 0; c < 3; ++c) {
            expected |= (at + c < bytes.size() ? uint32_t{bytes[at + c]} : 0) << 8 * c;
          }
          EXPECT_EQ(table[static_cast<size_t>(i)] & 0xFFFFFF, expected) << i;
        }
      }
      SelectObject(memory, previous);
      DeleteDC(memory);
      // The way back gives the same colors.
      EXPECT_EQ(Colors(FromBitmap(section)), Colors(image));
      DeleteObject(section);
    }
  }
}

// A window of one color under another, each column of its client area with a color of its own.
uint32_t ColumnColor(int x) { return Rgb(3 * x, 255 - 2 * x, 16 * (x % 16)); }

LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_NCPAINT) {  // the border: red all over
    const HDC dc = GetWindowDC(window);
    RECT rect = {0, 0, 1000, 1000};
    const HBRUSH brush = CreateSolidBrush(RGB(255, 0, 0));
    FillRect(dc, &rect, brush);
    DeleteObject(brush);
    ReleaseDC(window, dc);
    return 0;
  }
  if (message == WM_NCCALCSIZE) {
    auto* rect = reinterpret_cast<RECT*>(second);
    *rect = {rect->left + 4, rect->top + 9, rect->right - 4, rect->bottom - 4};
    return 0;
  }
  if (message == WM_PAINT) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(window, &paint);
    for (int x = 0; x < 72; ++x) {
      const uint32_t color = ColumnColor(x);
      RECT rect = {x, 0, x + 1, 100};
      const HBRUSH brush = CreateSolidBrush(RGB(color >> 16, color >> 8 & 255, color & 255));
      FillRect(dc, &rect, brush);
      DeleteObject(brush);
    }
    EndPaint(window, &paint);
    return 0;
  }
  return DefWindowProcW(window, message, first, second);
}

class ShownWindow {
 public:
  ShownWindow(int left, int top) {
    WNDCLASSW kind = {};
    kind.lpfnWndProc = OnMessage;
    kind.hInstance = GetModuleHandleW(nullptr);
    kind.lpszClassName = L"OmbriloTest";
    RegisterClassW(&kind);
    window_ = CreateWindowExW(WS_EX_TOPMOST, kind.lpszClassName, L"", WS_POPUP, left, top, 80, 60,
                              nullptr, nullptr, kind.hInstance, nullptr);
    ShowWindow(window_, SW_SHOWNA);
    RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_UPDATENOW);
    // The window is shown by another process.
    for (int i = 0; i < 50; ++i) {
      for (MSG message; PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE);) {
        DispatchMessageW(&message);
      }
      GdiFlush();
      const TestImage image = FromWindow(window_, 2);
      if (image.get() != nullptr && image.Pixel(image.width() - 1, 20) == ColumnColor(71)) break;
      Sleep(20);
    }
  }
  ~ShownWindow() { DestroyWindow(window_); }
  HWND get() const { return window_; }

 private:
  HWND window_;
};

void ExpectColumns(const TestImage& image, int left, int top, int first_column) {
  for (int y = top; y < top + 47; ++y) {
    for (int x = first_column; x < 72; ++x) {
      ASSERT_EQ(image.Pixel(left + x - first_column, y), ColumnColor(x)) << x << ", " << y;
    }
  }
}

TEST(WindowsBridge, WindowsAreCopiedFromTheScreen) {
  const ShownWindow shown(120, 70);
  const TestImage whole = FromWindow(shown.get(), 1);
  ASSERT_NE(whole.get(), nullptr);
  EXPECT_EQ(whole.bit_count(), 24);
  ASSERT_EQ(whole.width(), 80);
  ASSERT_EQ(whole.height(), 60);
  EXPECT_EQ(whole.Pixel(0, 0), 0xFF0000u);
  EXPECT_EQ(whole.Pixel(79, 59), 0xFF0000u);
  EXPECT_EQ(whole.Pixel(40, 8), 0xFF0000u);
  ExpectColumns(whole, 4, 9, 0);

  const TestImage client = FromWindow(shown.get(), 2);
  ASSERT_EQ(client.width(), 72);
  ASSERT_EQ(client.height(), 47);
  ExpectColumns(client, 0, 0, 0);

  EXPECT_EQ(omb_CopyWindowToDIB(shown.get(), 0), 0u);
  EXPECT_EQ(omb_CopyWindowToDIB(shown.get(), 3), 0u);
  EXPECT_EQ(omb_CopyWindowToDIB(nullptr, 1), 0u);
}

TEST(WindowsBridge, AWindowOverTheLeftEdgeIsCut) {
  const ShownWindow shown(-24, 70);
  const TestImage whole = FromWindow(shown.get(), 1);
  ASSERT_EQ(whole.width(), 56);
  EXPECT_EQ(whole.Pixel(55, 30), 0xFF0000u);
  ExpectColumns(whole, 0, 9, 20);
  const TestImage client = FromWindow(shown.get(), 2);
  ASSERT_EQ(client.width(), 52);
  ExpectColumns(client, 0, 0, 20);
}

// Wine counts its objects for nobody, but finds each by its number.
size_t GdiObjects() {
  const DWORD counted = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
  if (counted != 0) return counted;
  size_t count = 0;
  for (uintptr_t i = 1; i < 65536; ++i) {
    count += GetObjectType(reinterpret_cast<HGDIOBJ>(i)) != 0 ? 1u : 0u;
  }
  return count;
}

TEST(WindowsBridge, NothingStaysBehind) {
  const ShownWindow shown(120, 70);
  const TestImage image = ImageBuilder(8, 9, 9).Build();
  const auto call = [&] {
    const HBITMAP section = omb_DIBToDIBSection(image.get());
    FromBitmap(section);
    FromWindow(shown.get(), 2);
    DeleteObject(section);
    DeleteObject(reinterpret_cast<HPALETTE>(omb_CreateDIBPalette(image.get())));
  };
  call();
  const size_t before = GdiObjects();
  const HBITMAP one = CreateBitmap(1, 1, 1, 1, nullptr);
  ASSERT_EQ(GdiObjects(), before + 1);
  DeleteObject(one);
  for (int i = 0; i < 1000; ++i) call();
  EXPECT_EQ(GdiObjects(), before);
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
      NearestEntry nearest(*MakeDIBPalette(*DibView::Open(image.get())));
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
