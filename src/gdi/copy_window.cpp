// What a window shows on the screen.
#include <algorithm>

#include "core/logical_palette.h"
#include "gdi/bridge.h"

namespace ombrilo {

namespace {

constexpr uint16_t kWholeWindow = 1;
constexpr uint16_t kClientArea = 2;

gdi::Rect ClientRectOnScreen(gdi::Window window) {
  gdi::Rect rect = {};
  gdi::GetClientRect(window, &rect);
  gdi::Point top_left = {rect.left, rect.top};
  gdi::Point bottom_right = {rect.right, rect.bottom};
  gdi::ClientToScreen(window, &top_left);
  gdi::ClientToScreen(window, &bottom_right);
  return {top_left.x, top_left.y, bottom_right.x, bottom_right.y};
}

}  // namespace

gdi::Bitmap CopyScreenRect(const gdi::Rect& rect) {
  if (gdi::IsRectEmpty(&rect)) return nullptr;
  const gdi::Dc display = gdi::CreateDCA("DISPLAY");
  const gdi::Dc memory = gdi::CreateCompatibleDC(display);
  const int left = std::max(rect.left, 0);
  const int top = std::max(rect.top, 0);
  const int width = std::min(rect.right, gdi::GetDeviceCaps(display, gdi::kHorzRes)) - left;
  const int height = std::min(rect.bottom, gdi::GetDeviceCaps(display, gdi::kVertRes)) - top;
  gdi::Bitmap bitmap = nullptr;
  if (width > 0 && height > 0) {
    bitmap = gdi::CreateCompatibleBitmap(display, width, height);
    const gdi::Object previous = gdi::SelectObject(memory, bitmap);
    gdi::BitBlt(memory, 0, 0, width, height, display, left, top, gdi::kSrcCopy);
    bitmap = static_cast<gdi::Bitmap>(gdi::SelectObject(memory, previous));
  }
  gdi::DeleteDC(display);
  gdi::DeleteDC(memory);
  return bitmap;
}

gdi::Palette CopySystemPalette() {
  const gdi::Dc screen = gdi::GetDC(nullptr);
  if (screen == nullptr) return nullptr;
  const int bits =
      gdi::GetDeviceCaps(screen, gdi::kBitsPixel) * gdi::GetDeviceCaps(screen, gdi::kPlanes) % 32;
  const uint32_t count = 1u << bits;
  // True-color screens have no system palette: the count field has 0 of their 2^24 entries.
  const Buffer<uint8_t> palette = NewLogicalPalette(count);
  // The screen's context is kept on purpose when there is no memory.
  if (!palette) return nullptr;
  gdi::GetSystemPaletteEntries(screen, 0, count, palette.get() + kLogicalPaletteEntries);
  const gdi::Palette result = gdi::CreatePalette(palette.get());
  gdi::ReleaseDC(nullptr, screen);
  return result;
}

PackedDib* CopyWindowToDib(gdi::Window window, uint16_t selector) {
  if (window == nullptr) return nullptr;
  gdi::Rect rect = {};
  if (selector == kWholeWindow) {
    gdi::GetWindowRect(window, &rect);
  } else if (selector == kClientArea) {
    rect = ClientRectOnScreen(window);
  } else {
    return nullptr;
  }
  const gdi::Bitmap bitmap = CopyScreenRect(rect);
  if (bitmap == nullptr) return nullptr;
  const gdi::Palette palette = CopySystemPalette();
  PackedDib* image = BitmapToDib(bitmap, palette);
  gdi::DeleteObject(palette);
  gdi::DeleteObject(bitmap);
  return image;
}

}  // namespace ombrilo
