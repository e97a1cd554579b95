#include "support/image.h"

#include <cstdlib>
#include <cstring>
#include <utility>

#include "core/bytes.h"
#include "core/packed_dib.h"

namespace ombrilo::test {

namespace {

// One scrambling step (Steele, Lea and Flood's SplitMix).
uint32_t Scramble(uint64_t x) {
  x += 0x9E3779B97F4A7C15u;
  x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9u;
  x = (x ^ (x >> 27)) * 0x94D049BB133111EBu;
  return static_cast<uint32_t>(x >> 32);
}

// Pixel access bit by bit, deliberately apart from the library's own.
uint32_t GetBits(const uint8_t* row, int bit_count, int x) {
  const size_t first = static_cast<size_t>(x) * static_cast<size_t>(bit_count);
  if (bit_count < 8) {
    return row[first / 8] >> (8 - bit_count - static_cast<int>(first % 8)) &
           ((1u << bit_count) - 1);
  }
  uint32_t value = 0;
  for (int i = 0; i < bit_count / 8; ++i) value |= uint32_t{row[first / 8 + i]} << 8 * i;
  return value;
}

void SetBits(uint8_t* row, int bit_count, int x, uint32_t value) {
  const size_t first = static_cast<size_t>(x) * static_cast<size_t>(bit_count);
  if (bit_count < 8) {
    const int shift = 8 - bit_count - static_cast<int>(first % 8);
    const uint32_t mask = ((1u << bit_count) - 1) << shift;
    row[first / 8] = static_cast<uint8_t>((row[first / 8] & ~mask) | (value << shift & mask));
    return;
  }
  for (int i = 0; i < bit_count / 8; ++i) row[first / 8 + i] = static_cast<uint8_t>(value >> 8 * i);
}

}  // namespace

TestImage& TestImage::operator=(TestImage&& other) noexcept {
  std::swap(dib_, other.dib_);
  return *this;
}

TestImage::~TestImage() { std::free(dib_); }

TestImage TestImage::Clone() const {
  const std::vector<uint8_t> bytes = Bytes();
  void* copy = std::malloc(bytes.size());
  std::memcpy(copy, bytes.data(), bytes.size());
  return TestImage(static_cast<PackedDib*>(copy));
}

uint32_t TestImage::Pixel(int x, int y) const {
  const DibView view = *DibView::Open(dib_);
  return GetBits(view.row(view.height() - 1 - y), view.bit_count(), x);
}

uint32_t TestImage::Color(int index) const {
  const DibHeader header = DibHeader::Read(dib_);
  const uint8_t* entry =
      raw() + header.header_size + static_cast<size_t>(index) * header.table_step();
  return Rgb(entry[2], entry[1], entry[0]);
}

std::vector<std::string> TestImage::Rows() const {
  std::vector<std::string> rows;
  for (int y = 0; y < height(); ++y) {
    std::string& row = rows.emplace_back();
    for (int x = 0; x < width(); ++x)
      row += (bit_count() == 1 ? ".#" : "0123456789abcdef")[Pixel(x, y)];
  }
  return rows;
}

std::vector<uint32_t> TestImage::Pixels() const {
  std::vector<uint32_t> pixels;
  for (int y = 0; y < height(); ++y) {
    for (int x = 0; x < width(); ++x) pixels.push_back(Pixel(x, y));
  }
  return pixels;
}

std::vector<uint32_t> TestImage::Colors() const {
  std::vector<uint32_t> colors = Pixels();
  for (uint32_t& value : colors) {
    if (bit_count() <= 8) value = Color(static_cast<int>(value));
  }
  return colors;
}

std::vector<uint8_t> TestImage::Bytes() const {
  const DibView view = *DibView::Open(dib_);
  return std::vector<uint8_t>(view.block(), view.block() + view.extent());
}

ImageBuilder::ImageBuilder(int bit_count, int width, int height)
    : bit_count_(bit_count), width_(width), height_(height) {
  colors_ = GrayRamp(static_cast<int>(ColorsOfDepth(static_cast<uint16_t>(bit_count))));
}

ImageBuilder& ImageBuilder::CoreHeader(uint32_t size_field) {
  size_field_ = size_field;
  return *this;
}

ImageBuilder& ImageBuilder::Colors(std::vector<uint32_t> rgb) {
  colors_ = std::move(rgb);
  return *this;
}

ImageBuilder& ImageBuilder::Pixels(std::function<uint32_t(int, int)> value) {
  value_ = std::move(value);
  return *this;
}

ImageBuilder& ImageBuilder::Filler(uint8_t byte) {
  filler_ = byte;
  return *this;
}

ImageBuilder& ImageBuilder::Field(size_t offset, uint32_t value) {
  fields_.emplace_back(offset, value);
  return *this;
}

TestImage ImageBuilder::Build() const {
  const bool core = size_field_ != 40;
  const size_t step = core ? 3 : 4;
  const size_t rows_offset = size_field_ + step * colors_.size();
  const size_t stride = static_cast<size_t>(StrideOf(width_, static_cast<uint16_t>(bit_count_)));
  const size_t rows = height_ < 1 ? 0 : static_cast<size_t>(height_);
  const size_t size = rows_offset + stride * rows;
  auto* block = static_cast<uint8_t*>(std::malloc(size));
  std::memset(block, 0, size_field_);
  std::memset(block + size_field_, filler_, size - size_field_);
  StoreU32(block, size_field_);
  if (core) {
    StoreU16(block + 4, static_cast<uint16_t>(width_));
    StoreU16(block + 6, static_cast<uint16_t>(height_));
    StoreU16(block + 8, 1);
    StoreU16(block + 10, static_cast<uint16_t>(bit_count_));
  } else {
    StoreU32(block + 4, static_cast<uint32_t>(width_));
    StoreU32(block + 8, static_cast<uint32_t>(height_));
    StoreU16(block + 12, 1);
    StoreU16(block + 14, static_cast<uint16_t>(bit_count_));
    if (colors_.size() != ColorsOfDepth(static_cast<uint16_t>(bit_count_))) {
      StoreU32(block + 32, static_cast<uint32_t>(colors_.size()));
    }
  }
  for (size_t i = 0; i < colors_.size(); ++i) {
    for (size_t c = 0; c < 3; ++c) {
      block[size_field_ + step * i + c] = static_cast<uint8_t>(colors_[i] >> 8 * c);
    }
  }
  for (size_t r = 0; r < rows && value_; ++r) {
    uint8_t* row = block + rows_offset + stride * r;
    for (int x = 0; x < width_; ++x) {
      SetBits(row, bit_count_, x, value_(x, height_ - 1 - static_cast<int>(r)));
    }
  }
  for (const auto& [offset, value] : fields_) StoreU32(block + offset, value);
  return TestImage(reinterpret_cast<PackedDib*>(block));
}

std::vector<uint32_t> VariedColors(int count, uint32_t seed) {
  std::vector<uint32_t> colors;
  for (int i = 0; i < count; ++i) {
    colors.push_back(Scramble(uint64_t{seed} << 32 | static_cast<uint32_t>(i)) & 0xFFFFFF);
  }
  return colors;
}

std::vector<uint32_t> GrayRamp(int count) {
  std::vector<uint32_t> colors;
  for (int i = 0; i < count; ++i) {
    const int level = count < 2 ? 0 : i * 255 / (count - 1);
    colors.push_back(Rgb(level, level, level));
  }
  return colors;
}

std::function<uint32_t(int, int)> Noise(uint32_t limit, uint32_t seed) {
  return [=](int x, int y) {
    return Scramble((uint64_t{seed} << 40) + (uint64_t{static_cast<uint32_t>(y)} << 20) +
                    static_cast<uint32_t>(x)) %
           limit;
  };
}

}  // namespace ombrilo::test
