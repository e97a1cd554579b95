#include "gdi/fake_gdi.h"

#include <cstring>
#include <sstream>
#include <utility>

#include "core/packed_dib.h"

namespace ombrilo::test {

namespace {

FakeGdi fake;

// Notes a call; false when it is one that fails.
template <class... Values>
bool Call(const char* name, const Values&... values) {
  std::ostringstream text;
  text << name;
  ((text << ' ' << values), ...);
  fake.calls.push_back(text.str());
  int count = 0;
  for (const std::string& call : fake.calls) count += call.starts_with(name) ? 1 : 0;
  return !fake.failing.contains(name) &&
         !fake.failing.contains(std::string(name) + " " + std::to_string(count));
}

// Handles are small numbers that tell their kind.
template <class Handle>
Handle Make(const char* kind, uintptr_t number) {
  ++fake.held[kind];
  return reinterpret_cast<Handle>(number);
}

constexpr uintptr_t kScreen = 1, kMemory = 2, kNewBitmap = 3, kNewPalette = 4, kSection = 5,
                    kOld = 6;

const char* KindOf(gdi::Object object) {
  const auto number = reinterpret_cast<uintptr_t>(object);
  return number == kNewBitmap ? "bitmap" : number == kNewPalette ? "palette" : "section";
}

// What is selected into the memory context.
gdi::Object selected;

}  // namespace

FakeGdi& Fake() { return fake; }

FakeGdi& NewFake() {
  fake = {};
  fake.caps[gdi::kHorzRes] = 640;
  fake.caps[gdi::kVertRes] = 480;
  fake.caps[gdi::kBitsPixel] = 32;
  fake.caps[gdi::kPlanes] = 1;
  selected = reinterpret_cast<gdi::Object>(kOld);
  return fake;
}

}  // namespace ombrilo::test

namespace ombrilo::gdi {

using namespace test;

int BitBlt(Dc, int x, int y, int width, int height, Dc, int from_x, int from_y, uint32_t op) {
  return Call("BitBlt", x, y, width, height, from_x, from_y, op);
}

Bitmap CreateCompatibleBitmap(Dc, int width, int height) {
  if (!Call("CreateCompatibleBitmap", width, height)) return nullptr;
  return Make<Bitmap>("bitmap", kNewBitmap);
}

Dc CreateCompatibleDC(Dc) { return Call("CreateCompatibleDC") ? Make<Dc>("dc", kMemory) : nullptr; }

Dc CreateDCA(const char* driver) {
  return Call("CreateDCA", driver) ? Make<Dc>("dc", kScreen) : nullptr;
}

Bitmap CreateDIBSection(Dc, const void* bitmap_info, uint32_t usage, void** bits) {
  const auto* info = static_cast<const uint8_t*>(bitmap_info);
  if (!Call("CreateDIBSection", usage)) return nullptr;
  const DibHeader header = DibHeader::Read(reinterpret_cast<const PackedDib*>(info));
  Fake().section.assign(
      static_cast<size_t>(StrideOf(header.width, header.bit_count) * header.height), 0xEE);
  *bits = Call("bits") ? Fake().section.data() : nullptr;
  return Make<Bitmap>("section", kSection);
}

Palette CreatePalette(const void* log_palette) {
  const auto* bytes = static_cast<const uint8_t*>(log_palette);
  Fake().palette.assign(bytes, bytes + 4 + 4 * (bytes[2] | bytes[3] << 8));
  return Call("CreatePalette") ? Make<Palette>("palette", kNewPalette) : nullptr;
}

int DeleteDC(Dc dc) {
  if (dc != nullptr) --Fake().held["dc"];
  return Call("DeleteDC");
}

int DeleteObject(Object object) {
  if (object != nullptr) --Fake().held[KindOf(object)];
  return Call("DeleteObject");
}

int GdiFlush() { return Call("GdiFlush"); }

int GetDeviceCaps(Dc dc, int index) { return dc == nullptr ? 0 : Fake().caps[index]; }

int GetDIBits(Dc, Bitmap, uint32_t start, uint32_t rows, void* bits, void* bitmap_info, uint32_t) {
  Fake().last_info = bitmap_info;
  const bool works = Call("GetDIBits", start, rows, bits != nullptr);
  auto* packed = static_cast<PackedDib*>(bitmap_info);
  auto* info = static_cast<uint8_t*>(bitmap_info);
  const DibHeader header = DibHeader::Read(packed);
  const size_t size = static_cast<size_t>(StrideOf(header.width, header.bit_count)) * rows;
  if (!works) return 0;
  const auto stored = static_cast<uint32_t>(size);
  if (Fake().completes_size) std::memcpy(info + kInfoSizeImage, &stored, 4);
  std::memset(info + kInfoHeaderSize, 0x5A, header.table_size());
  auto* to = static_cast<uint8_t*>(bits);
  for (size_t i = 0; to != nullptr && i < size; ++i) to[i] = FakeGdi::PixelByte(i);
  return static_cast<int>(rows);
}

int GetObjectA(Object, int size, void* to) {
  if (!Call("GetObjectA", size)) return 0;
  std::memcpy(to, &Fake().shape, sizeof Fake().shape);
  return size;
}

Object GetStockObject(int index) {
  Call("GetStockObject", index);
  return reinterpret_cast<Object>(kOld);
}

uint32_t GetSystemPaletteEntries(Dc, uint32_t start, uint32_t count, void* entries) {
  Call("GetSystemPaletteEntries", start, count);
  std::memset(entries, 0x33, size_t{4} * count);
  return count;
}

uint32_t RealizePalette(Dc) { return Call("RealizePalette"); }

Object SelectObject(Dc, Object object) {
  Call("SelectObject");
  return std::exchange(selected, object);
}

Palette SelectPalette(Dc, Palette palette, int background) {
  Call("SelectPalette", palette == nullptr ? "null" : "palette", background);
  return reinterpret_cast<Palette>(kOld);
}

uint32_t SetDIBColorTable(Dc, uint32_t start, uint32_t count, const void* quads) {
  Call("SetDIBColorTable", start, count);
  const auto* bytes = static_cast<const uint8_t*>(quads);
  Fake().quads.assign(bytes, bytes + size_t{4} * count);
  return count;
}

int ClientToScreen(Window, Point* point) {
  point->x += Fake().client_origin.x;
  point->y += Fake().client_origin.y;
  return Call("ClientToScreen");
}

int GetClientRect(Window, Rect* rect) {
  *rect = Fake().client_rect;
  return Call("GetClientRect");
}

Dc GetDC(Window) { return Call("GetDC") ? Make<Dc>("dc", kScreen) : nullptr; }

int GetWindowRect(Window, Rect* rect) {
  *rect = Fake().window_rect;
  return Call("GetWindowRect");
}

int IsRectEmpty(const Rect* rect) { return rect->left >= rect->right || rect->top >= rect->bottom; }

int ReleaseDC(Window, Dc dc) {
  if (dc != nullptr) --Fake().held["dc"];
  return Call("ReleaseDC");
}

}  // namespace ombrilo::gdi
