// The bridge on a screen that is made up: every call in order, and every failure.
#include "gdi/bridge.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "core/bytes.h"
#include "core/gdi.h"
#include "core/packed_dib.h"
#include "support/failing_memory.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

// Handles are small numbers that tell their kind.
constexpr uintptr_t kScreen = 1, kMemory = 2, kNewBitmap = 3, kNewPalette = 4, kSection = 5,
                    kOld = 6;

struct FakeGdi {
  // What the system is like.
  gdi::BitmapShape shape = {0, 21, 5, 0, 1, 32, nullptr};  // of every bitmap
  std::set<std::string> failing;  // calls that fail; "GetDIBits 2" is the second one
  bool completes_size = true;     // GetDIBits fills in biSizeImage
  std::map<int, int> caps = {
      {gdi::kHorzRes, 640}, {gdi::kVertRes, 480}, {gdi::kBitsPixel, 32}, {gdi::kPlanes, 1}};
  gdi::Rect window_rect = {}, client_rect = {};
  gdi::Point client_origin = {};

  // What has happened: every call with what matters of it, in order.
  std::vector<std::string> calls;
  // Handles that exist, by kind: "dc", "bitmap", "palette", "section".
  std::map<std::string, int> held;
  gdi::Object selected = reinterpret_cast<gdi::Object>(kOld);
  void* last_info = nullptr;     // what GetDIBits was given
  std::vector<uint8_t> palette;  // the last LOGPALETTE
  std::vector<uint8_t> section;  // the bits of the last DIB section
  std::vector<uint8_t> quads;    // the last color table

  // The byte `i` of the pixels that GetDIBits gives.
  static uint8_t PixelByte(size_t i) { return static_cast<uint8_t>(i * 7 + 1); }
};

// The one screen; a test begins with a new one.
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

template <class Handle>
Handle Make(const char* kind, uintptr_t number) {
  ++fake.held[kind];
  return reinterpret_cast<Handle>(number);
}

const char* KindOf(gdi::Object object) {
  const auto number = reinterpret_cast<uintptr_t>(object);
  return number == kNewBitmap ? "bitmap" : number == kNewPalette ? "palette" : "section";
}

FakeGdi& NewFake() { return fake = {}; }

// A handle that no call has made.
template <class Handle>
Handle AnyHandle() {
  return reinterpret_cast<Handle>(uintptr_t{0x1000});
}

}  // namespace
}  // namespace ombrilo::test

// The calls of core/gdi.h.
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
  fake.section.assign(static_cast<size_t>(StrideOf(header.width, header.bit_count) * header.height),
                      0xEE);
  *bits = Call("bits") ? fake.section.data() : nullptr;
  return Make<Bitmap>("section", kSection);
}

Palette CreatePalette(const void* log_palette) {
  const auto* bytes = static_cast<const uint8_t*>(log_palette);
  fake.palette.assign(bytes, bytes + 4 + 4 * (bytes[2] | bytes[3] << 8));
  return Call("CreatePalette") ? Make<Palette>("palette", kNewPalette) : nullptr;
}

int DeleteDC(Dc dc) {
  if (dc != nullptr) --fake.held["dc"];
  return Call("DeleteDC");
}

int DeleteObject(Object object) {
  if (object != nullptr) --fake.held[KindOf(object)];
  return Call("DeleteObject");
}

int GdiFlush() { return Call("GdiFlush"); }

int GetDeviceCaps(Dc dc, int index) { return dc == nullptr ? 0 : fake.caps[index]; }

int GetDIBits(Dc, Bitmap, uint32_t start, uint32_t rows, void* bits, void* bitmap_info, uint32_t) {
  fake.last_info = bitmap_info;
  const bool works = Call("GetDIBits", start, rows, bits != nullptr);
  auto* packed = static_cast<PackedDib*>(bitmap_info);
  auto* info = static_cast<uint8_t*>(bitmap_info);
  const DibHeader header = DibHeader::Read(packed);
  const size_t size = static_cast<size_t>(StrideOf(header.width, header.bit_count)) * rows;
  if (!works) return 0;
  const auto stored = static_cast<uint32_t>(size);
  if (fake.completes_size) std::memcpy(info + kInfoSizeImage, &stored, 4);
  std::memset(info + kInfoHeaderSize, 0x5A, header.table_size());
  auto* to = static_cast<uint8_t*>(bits);
  for (size_t i = 0; to != nullptr && i < size; ++i) to[i] = FakeGdi::PixelByte(i);
  return static_cast<int>(rows);
}

int GetObjectA(Object, int size, void* to) {
  if (!Call("GetObjectA", size)) return 0;
  std::memcpy(to, &fake.shape, sizeof fake.shape);
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
  return std::exchange(fake.selected, object);
}

Palette SelectPalette(Dc, Palette palette, int background) {
  Call("SelectPalette", palette == nullptr ? "null" : "palette", background);
  return reinterpret_cast<Palette>(kOld);
}

uint32_t SetDIBColorTable(Dc, uint32_t start, uint32_t count, const void* quads) {
  Call("SetDIBColorTable", start, count);
  const auto* bytes = static_cast<const uint8_t*>(quads);
  fake.quads.assign(bytes, bytes + size_t{4} * count);
  return count;
}

int ClientToScreen(Window, Point* point) {
  point->x += fake.client_origin.x;
  point->y += fake.client_origin.y;
  return Call("ClientToScreen");
}

int GetClientRect(Window, Rect* rect) {
  *rect = fake.client_rect;
  return Call("GetClientRect");
}

Dc GetDC(Window) { return Call("GetDC") ? Make<Dc>("dc", kScreen) : nullptr; }

int GetWindowRect(Window, Rect* rect) {
  *rect = fake.window_rect;
  return Call("GetWindowRect");
}

int IsRectEmpty(const Rect* rect) { return rect->left >= rect->right || rect->top >= rect->bottom; }

int ReleaseDC(Window, Dc dc) {
  if (dc != nullptr) --fake.held["dc"];
  return Call("ReleaseDC");
}

}  // namespace ombrilo::gdi

namespace ombrilo::test {
namespace {

using Strings = std::vector<std::string>;

void ExpectHeld(const std::map<std::string, int>& expected) {
  for (const auto& [kind, count] : fake.held) {
    EXPECT_EQ(count, expected.contains(kind) ? expected.at(kind) : 0) << kind;
  }
}

// The screen has its old palette again and is released: the last three calls.
void ExpectScreenRestored() {
  const Strings& calls = fake.calls;
  ASSERT_GE(calls.size(), 3u);
  EXPECT_EQ(Strings(calls.end() - 3, calls.end()),
            (Strings{"SelectPalette palette 1", "RealizePalette", "ReleaseDC"}));
  ExpectHeld({});
}

TEST(BitmapToDib, DepthFollowsTheDevice) {
  const struct {
    uint16_t planes, bits;
    int depth;
  } cases[] = {{1, 1, 1}, {1, 2, 4},  {2, 1, 4},  {1, 4, 4},   {4, 1, 4},   {1, 5, 8},
               {1, 8, 8}, {1, 9, 24}, {3, 8, 24}, {1, 16, 24}, {1, 32, 24}, {0x8001, 2, 4}};
  for (const auto& c : cases) {
    for (const bool completes : {true, false}) {
      SCOPED_TRACE(testing::Message() << c.planes << " x " << c.bits << ' ' << completes);
      NewFake();
      fake.shape.planes = c.planes;
      fake.shape.bits_per_pixel = c.bits;
      fake.completes_size = completes;
      const TestImage image(BitmapToDib(AnyHandle<gdi::Bitmap>(), nullptr));
      ASSERT_NE(image.get(), nullptr);
      const int depth = c.depth;
      ASSERT_EQ(image.bit_count(), depth);
      const std::vector<uint8_t> bytes = image.Bytes();
      const auto rows = static_cast<size_t>((21 * depth + 31) / 32 * 4 * 5);
      EXPECT_EQ(LoadU32(&bytes[kInfoSizeImage]), rows);
      ASSERT_EQ(bytes.size(), 40 + (depth == 24 ? 0 : size_t{4} << depth) + rows);
      for (size_t i = 0; i < rows; ++i) {
        ASSERT_EQ(bytes[bytes.size() - rows + i], FakeGdi::PixelByte(i));
      }
      EXPECT_EQ(fake.calls, (Strings{"GetObjectA " + std::to_string(sizeof(gdi::BitmapShape)),
                                     "GetStockObject 15", "GetDC", "SelectPalette palette 0",
                                     "RealizePalette", "GetDIBits 0 5 0", "GetDIBits 0 5 1",
                                     "SelectPalette palette 1", "RealizePalette", "ReleaseDC"}));
    }
  }
}

TEST(BitmapToDib, Failures) {
  NewFake();
  EXPECT_EQ(BitmapToDib(nullptr, nullptr), nullptr);
  EXPECT_EQ(fake.calls, Strings{});
  NewFake().failing = {"GetObjectA"};
  EXPECT_EQ(BitmapToDib(AnyHandle<gdi::Bitmap>(), nullptr), nullptr);
  EXPECT_EQ(fake.calls, Strings{"GetObjectA " + std::to_string(sizeof(gdi::BitmapShape))});

  for (int n = 1; n <= 2; ++n) {  // the block, and its new size
    NewFake();
    MemoryWatch watch(n);
    PackedDib* image = BitmapToDib(AnyHandle<gdi::Bitmap>(), AnyHandle<gdi::Palette>());
    watch.Stop();
    EXPECT_TRUE(watch.failed());
    EXPECT_EQ(image, nullptr);
    EXPECT_EQ(watch.still_held(), 0);
    ExpectScreenRestored();
  }

  // The one failure that keeps its block.
  NewFake();
  fake.shape.bits_per_pixel = 1;
  fake.failing = {"GetDIBits 2"};
  MemoryWatch watch(0);
  EXPECT_EQ(BitmapToDib(AnyHandle<gdi::Bitmap>(), nullptr), nullptr);
  watch.Stop();
  EXPECT_EQ(watch.still_held(), 1);
  std::free(fake.last_info);
  ExpectScreenRestored();

  // A first call that fails leaves the header as it was made; a size beyond all blocks is refused.
  NewFake().failing = {"GetDIBits 1"};
  EXPECT_NE(TestImage(BitmapToDib(AnyHandle<gdi::Bitmap>(), nullptr)).get(), nullptr);
  NewFake().shape.height = 0x7FFFFFFF;
  EXPECT_EQ(BitmapToDib(AnyHandle<gdi::Bitmap>(), nullptr), nullptr);
  ExpectScreenRestored();
}

TEST(DibToSection, PixelsAndTheWholeColorTable) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const uint32_t used : {0, 2, 300}) {
      NewFake();
      ImageBuilder builder(bits, 21, 5);
      if (used != 0) builder.Colors(VariedColors(static_cast<int>(used), 3));
      const TestImage image =
          builder.Filler(9).Pixels(Noise(bits <= 8 ? 1u << bits : 0xFFFF, 1)).Build();
      EXPECT_NE(DibToSection(image.get()), nullptr);
      const std::vector<uint8_t> bytes = image.Bytes();
      const std::vector<uint8_t>& section = fake.section;
      EXPECT_EQ(section,
                std::vector<uint8_t>(bytes.end() - static_cast<long>(section.size()), bytes.end()));
      if (bits <= 8) {
        ASSERT_EQ(fake.quads.size(), size_t{4} << bits);
        for (size_t i = 0; i < fake.quads.size(); ++i) {
          ASSERT_EQ(fake.quads[i], 40 + i < bytes.size() ? bytes[40 + i] : 0) << i;
        }
      }
      Strings expected = {"GetDC",        "CreateDIBSection 0", "bits",     "CreateCompatibleDC",
                          "SelectObject", "SelectObject",       "DeleteDC", "ReleaseDC",
                          "GdiFlush"};
      if (bits <= 8) {
        expected.insert(expected.begin() + 5, "SetDIBColorTable 0 " + std::to_string(1 << bits));
      }
      EXPECT_EQ(fake.calls, expected);
      ExpectHeld({{"section", 1}});
    }
  }
}

TEST(DibToSection, Failures) {
  const TestImage image = ImageBuilder(8, 9, 4).Build();
  NewFake().failing = {"CreateDIBSection"};
  EXPECT_EQ(DibToSection(image.get()), nullptr);
  ExpectHeld({});
  NewFake().failing = {"bits"};
  EXPECT_EQ(DibToSection(image.get()), nullptr);
  ExpectHeld({{"section", 1}});  // on purpose
  NewFake();
  EXPECT_EQ(DibToSection(nullptr), nullptr);
  EXPECT_EQ(DibToSection(ImageBuilder(8, 9, 4).CoreHeader().Build().get()), nullptr);
  EXPECT_EQ(DibToSection(ImageBuilder(8, 9, 0).Build().get()), nullptr);
  EXPECT_EQ(fake.calls, Strings{});
  // The planes field lies: never more than the section and the block hold.
  for (const uint32_t planes : {0u, 2u, 0xFFFFu}) {
    NewFake();
    EXPECT_NE(DibToSection(ImageBuilder(8, 8, 4).Field(12, planes | 8 << 16).Build().get()),
              nullptr);
    EXPECT_EQ(fake.section[31], planes == 0 ? 0xEE : 0);
  }
}

TEST(CopyScreenRect, IsClippedToTheScreen) {
  const struct {
    gdi::Rect rect;
    std::string blit;  // empty: refused
  } cases[] = {{{10, 20, 110, 70}, "0 0 100 50 10 20"},
               {{-30, -5, 70, 45}, "0 0 70 45 0 0"},
               {{600, 470, 700, 500}, "0 0 40 10 600 470"},
               {{-5, -5, 1000, 1000}, "0 0 640 480 0 0"},
               {{10, 20, 10, 70}, ""},
               {{-50, 0, 0, 10}, ""},
               {{640, 0, 700, 10}, ""},
               {{0, 700, 10, 800}, ""}};
  for (const auto& c : cases) {
    NewFake();
    const gdi::Bitmap bitmap = CopyScreenRect(c.rect);
    EXPECT_EQ(bitmap != nullptr, !c.blit.empty());
    for (const std::string& call : fake.calls) {
      if (!call.starts_with("BitBlt")) continue;
      EXPECT_EQ(call, "BitBlt " + c.blit + " 13369376");
    }
    ExpectHeld({{"bitmap", c.blit.empty() ? 0 : 1}});
  }
  NewFake().failing = {"CreateDCA"};
  EXPECT_EQ(CopyScreenRect({0, 0, 9, 9}), nullptr);
  ExpectHeld({});
}

TEST(CopySystemPalette, EntriesByTheScreensDepth) {
  const struct {
    int bits, planes;
    size_t entries;
    const char* asked;
  } cases[] = {{8, 1, 256, "0 256"}, {1, 4, 16, "0 16"}, {32, 1, 1, "0 1"}, {16, 1, 0, "0 65536"}};
  for (const auto& c : cases) {
    NewFake();
    fake.caps[gdi::kBitsPixel] = c.bits;
    fake.caps[gdi::kPlanes] = c.planes;
    EXPECT_NE(CopySystemPalette(), nullptr);
    EXPECT_EQ(fake.calls, (Strings{"GetDC", std::string("GetSystemPaletteEntries ") + c.asked,
                                   "CreatePalette", "ReleaseDC"}));
    EXPECT_EQ(LoadU16(fake.palette.data()), 0x300);
    std::vector<uint8_t> entries(fake.palette.begin() + 4, fake.palette.end());
    EXPECT_EQ(entries, std::vector<uint8_t>(4 * c.entries, 0x33));
    ExpectHeld({{"palette", 1}});
  }
  NewFake().failing = {"GetDC"};
  EXPECT_EQ(CopySystemPalette(), nullptr);
  NewFake();
  MemoryWatch watch(1);
  EXPECT_EQ(CopySystemPalette(), nullptr);
  watch.Stop();
  EXPECT_EQ(watch.still_held(), 0);
  ExpectHeld({{"dc", 1}});  // on purpose
}

TEST(CopyWindowToDib, WindowAndClientArea) {
  for (const uint16_t selector : {1, 2}) {
    NewFake();
    fake.window_rect = {-8, 30, 40, 80};
    fake.client_rect = {0, 0, 30, 20};
    fake.client_origin = {-4, 50};
    const TestImage image(CopyWindowToDib(AnyHandle<gdi::Window>(), selector));
    EXPECT_NE(image.get(), nullptr);
    bool found = false;
    for (const std::string& call : fake.calls) {
      found |= call == (selector == 1 ? "BitBlt 0 0 40 50 0 30 13369376"
                                      : "BitBlt 0 0 26 20 0 50 13369376");
    }
    EXPECT_TRUE(found);
    ExpectHeld({});
    for (const char* call : {"CreateCompatibleBitmap", "GetObjectA", "GetDIBits 2"}) {
      fake.failing = {call};
      fake.calls.clear();
      EXPECT_EQ(CopyWindowToDib(AnyHandle<gdi::Window>(), selector), nullptr) << call;
      ExpectHeld({});
    }
    std::free(fake.last_info);  // which the last of these failures keeps
  }
  NewFake();
  EXPECT_EQ(CopyWindowToDib(nullptr, 1), nullptr);
  EXPECT_EQ(CopyWindowToDib(AnyHandle<gdi::Window>(), 0), nullptr);
  EXPECT_EQ(CopyWindowToDib(AnyHandle<gdi::Window>(), 3), nullptr);
  EXPECT_EQ(fake.calls, Strings{});
}

}  // namespace
}  // namespace ombrilo::test
