// Images for tests: built readably, held in blocks that end exactly where their extent ends.
//
//   TestImage photo = ImageBuilder(24, 5, 4).Pixels([](int x, int y) { return Rgb(x, y, 7);
//   }).Build();
//
// Pixel values are color table indices, 0xRRGGBB at 24 bits and the raw value at 16 and 32 bits.
// Columns count from the left and rows from the top of the picture.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "ombrilo/ombrilo.h"

namespace ombrilo::test {

constexpr uint32_t Rgb(int red, int green, int blue) {
  return static_cast<uint32_t>((red & 255) << 16 | (green & 255) << 8 | (blue & 255));
}

// An owned block; released with free().
class TestImage {
 public:
  explicit TestImage(PackedDib* dib = nullptr) : dib_(dib) {}
  TestImage(TestImage&& other) noexcept : dib_(other.dib_) { other.dib_ = nullptr; }
  TestImage& operator=(TestImage&& other) noexcept;
  ~TestImage();

  PackedDib* get() const { return dib_; }
  PackedDib** ref() { return &dib_; }
  TestImage Clone() const;

  int width() const { return static_cast<int>(omb_DIBWidth(dib_)); }
  int height() const { return static_cast<int>(omb_DIBHeight(dib_)); }
  int bit_count() const { return omb_DIBBitCount(dib_); }

  uint32_t Pixel(int x, int y) const;
  // Color table entry as 0xRRGGBB.
  uint32_t Color(int index) const;
  // Rows from the top, one character a pixel: '.' and '#' at 1 bit, hexadecimal digits at 4 bits.
  std::vector<std::string> Rows() const;
  // All pixels, row by row from the top.
  std::vector<uint32_t> Pixels() const;
  // The same as 0xRRGGBB, by the color table or the usual layout.
  std::vector<uint32_t> Colors() const;
  // Every byte of the block's extent.
  std::vector<uint8_t> Bytes() const;

  uint8_t* raw() const { return reinterpret_cast<uint8_t*>(dib_); }

 private:
  PackedDib* dib_;
};

class ImageBuilder {
 public:
  ImageBuilder(int bit_count, int width, int height);

  // A header with this size field instead of 40: 12 or any other value of 12 and more.
  ImageBuilder& CoreHeader(uint32_t size_field = 12);
  // Color table entries as 0xRRGGBB. After an information header their number becomes biClrUsed
  // when it is not the depth's full number.
  ImageBuilder& Colors(std::vector<uint32_t> rgb);
  ImageBuilder& Pixels(std::function<uint32_t(int x, int y)> value);
  // The bytes that fill reserved bytes of color table entries and the padding of rows.
  ImageBuilder& Filler(uint8_t byte);
  // Writes a 32-bit field of the finished header, for headers that lie.
  ImageBuilder& Field(size_t offset, uint32_t value);

  TestImage Build() const;

 private:
  int bit_count_, width_, height_;
  uint32_t size_field_ = 40;
  std::vector<uint32_t> colors_;
  std::function<uint32_t(int, int)> value_;
  uint8_t filler_ = 0;
  std::vector<std::pair<size_t, uint32_t>> fields_;
};

// `count` colors without any order, the same for the same seed.
std::vector<uint32_t> VariedColors(int count, uint32_t seed);
// A gray ramp from black to white.
std::vector<uint32_t> GrayRamp(int count);
// Pixel values without any order; `limit` values from 0.
std::function<uint32_t(int, int)> Noise(uint32_t limit, uint32_t seed);

}  // namespace ombrilo::test
