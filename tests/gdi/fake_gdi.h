// The calls of core/gdi.h as a screen that fails when it is told to.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "core/gdi.h"

namespace ombrilo::test {

struct FakeGdi {
  // What the system is like.
  gdi::BitmapShape shape = {0, 21, 5, 0, 1, 32, nullptr};  // of every bitmap
  std::set<std::string> failing;  // calls that fail; "GetDIBits 2" is the second one
  bool completes_size = true;     // GetDIBits fills in biSizeImage
  int caps[32] = {};              // by index
  gdi::Rect window_rect = {}, client_rect = {};
  gdi::Point client_origin = {};

  // What has happened: every call with what matters of it, in order.
  std::vector<std::string> calls;
  // Handles that exist, by kind: "dc", "bitmap", "palette", "section".
  std::map<std::string, int> held;
  void* last_info = nullptr;     // what GetDIBits was given
  std::vector<uint8_t> palette;  // the last LOGPALETTE
  std::vector<uint8_t> section;  // the bits of the last DIB section
  std::vector<uint8_t> quads;    // the last color table

  // The byte `i` of the pixels that GetDIBits gives.
  static uint8_t PixelByte(size_t i) { return static_cast<uint8_t>(i * 7 + 1); }
};

// The one screen; a test begins with a new one.
FakeGdi& Fake();
FakeGdi& NewFake();

// A handle that no call has made.
template <class Handle>
Handle AnyHandle() {
  return reinterpret_cast<Handle>(uintptr_t{0x1000});
}

}  // namespace ombrilo::test
