// BMP files made byte by byte, apart from the host's own writer.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

namespace ombrilo::test {

struct BmpFile {
  int bits = 24;
  int width = 1;
  int height = 1;
  uint32_t header_size = 40;
  bool top_down = false;
  uint32_t compression = 0;
  std::vector<uint32_t> colors = {};  // 0xRRGGBB
  uint32_t colors_used = 0;
  std::vector<uint32_t> masks = {};  // inside the header or, after 40 bytes, following it
  uint32_t gap = 0;                  // bytes before the pixels
  int64_t pixels_at = -1;            // bfOffBits; below 0: where they are
  // The raw pixel in column x, row y from the top.
  std::function<uint32_t(int x, int y)> pixel = [](int, int) { return 0u; };
  std::vector<uint8_t> data = {};  // instead of pixels when not empty

  std::vector<uint8_t> Bytes() const;
};

constexpr uint32_t kTestXPels = 11811;
constexpr uint32_t kTestYPels = 2835;

}  // namespace ombrilo::test
