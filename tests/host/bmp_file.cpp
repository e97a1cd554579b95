#include "host/bmp_file.h"

namespace ombrilo::test {

namespace {

void Put(std::vector<uint8_t>& bytes, uint32_t value, int count) {
  for (int i = 0; i < count; ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
}

std::vector<uint8_t> PackRow(const BmpFile& file, int y) {
  std::vector<uint8_t> row(static_cast<size_t>((file.width * file.bits + 31) / 32 * 4), 0);
  for (int x = 0; x < file.width; ++x) {
    const uint32_t value = file.pixel(x, y);
    const int bit = x * file.bits;
    if (file.bits < 8) {
      row[static_cast<size_t>(bit / 8)] |= static_cast<uint8_t>(value << (8 - file.bits - bit % 8));
    } else {
      for (int i = 0; i < file.bits / 8; ++i) {
        row[static_cast<size_t>(bit / 8 + i)] = static_cast<uint8_t>(value >> 8 * i);
      }
    }
  }
  return row;
}

}  // namespace

std::vector<uint8_t> BmpFile::Bytes() const {
  std::vector<uint8_t> bytes = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  Put(bytes, header_size, 4);
  if (header_size == 12) {
    Put(bytes, static_cast<uint32_t>(width), 2);
    Put(bytes, static_cast<uint32_t>(height), 2);
    Put(bytes, 1, 2);
    Put(bytes, static_cast<uint32_t>(bits), 2);
  } else {
    Put(bytes, static_cast<uint32_t>(width), 4);
    Put(bytes, static_cast<uint32_t>(top_down ? -height : height), 4);
    Put(bytes, 1, 2);
    Put(bytes, static_cast<uint32_t>(bits), 2);
    Put(bytes, compression, 4);
    Put(bytes, 0x12345678, 4);  // biSizeImage, which nobody believes
    Put(bytes, kTestXPels, 4);
    Put(bytes, kTestYPels, 4);
    Put(bytes, colors_used, 4);
    Put(bytes, 0, 4);
    for (const uint32_t mask : masks) Put(bytes, mask, 4);
    if (bytes.size() < 14 + header_size || header_size < 40) bytes.resize(14 + header_size, 0);
  }
  for (const uint32_t color : colors) Put(bytes, color, header_size == 12 ? 3 : 4);
  bytes.resize(bytes.size() + gap, 0xEE);
  const auto at = static_cast<uint32_t>(pixels_at < 0 ? bytes.size() : pixels_at);
  for (size_t i = 0; i < 4; ++i) bytes[10 + i] = static_cast<uint8_t>(at >> 8 * i);
  if (!data.empty()) {
    bytes.insert(bytes.end(), data.begin(), data.end());
    return bytes;
  }
  for (int i = 0; i < height; ++i) {
    const std::vector<uint8_t> row = PackRow(*this, top_down ? i : height - 1 - i);
    bytes.insert(bytes.end(), row.begin(), row.end());
  }
  return bytes;
}

}  // namespace ombrilo::test
