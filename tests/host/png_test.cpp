// PNG files of every kind against the samples that they were made from.
#include <png.h>

#include "core/bytes.h"
#include "host/files.h"

namespace ombrilo::test {
namespace {

struct PngFile {
  int color_type;
  int depth;
  bool interlaced = false;
  std::vector<uint32_t> colors = {};  // 0xRRGGBB
  std::vector<uint8_t> alphas = {};
  int key = -1;  // the transparent value of each sample; below 0: none

  static constexpr int kWidth = 13, kHeight = 10;

  int channels() const {
    return color_type == PNG_COLOR_TYPE_RGB_ALPHA    ? 4
           : color_type == PNG_COLOR_TYPE_RGB        ? 3
           : color_type == PNG_COLOR_TYPE_GRAY_ALPHA ? 2
                                                     : 1;
  }
  uint32_t limit() const { return 1u << depth; }
  uint32_t Sample(int x, int y, int c) const {
    // Extremes and the key come often; an index is one that the palette has.
    const uint32_t value =
        Noise(colors.empty() ? limit() : static_cast<uint32_t>(colors.size()), 9)(4 * x + c, y);
    if (!colors.empty() || value % 4 > 1) return value;
    if (key >= 0 && x % 3 == 0) return static_cast<uint32_t>(key);
    return value % 4 == 0 ? 0 : limit() - 1;
  }
  uint8_t Sample8(int x, int y, int c) const {
    return static_cast<uint8_t>(Sample(x, y, c) * 255.0 / (limit() - 1) + 0.5);
  }
  std::vector<uint8_t> Bytes() const;
  uint32_t Expected(int x, int y) const;
};

std::vector<uint8_t> PngFile::Bytes() const {
  std::vector<uint8_t> bytes;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(
      png, &bytes,
      [](png_structp p, png_bytep from, size_t count) {
        auto* to = static_cast<std::vector<uint8_t>*>(png_get_io_ptr(p));
        to->insert(to->end(), from, from + count);
      },
      nullptr);
  png_set_IHDR(png, info, kWidth, kHeight, depth, color_type,
               interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, 0, 0);
  std::vector<png_color> palette;
  for (const uint32_t color : colors) {
    palette.push_back({static_cast<png_byte>(color >> 16), static_cast<png_byte>(color >> 8),
                       static_cast<png_byte>(color)});
  }
  if (!palette.empty()) png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
  const auto value = static_cast<png_uint_16>(key);
  const png_color_16 keys = {0, value, value, value, value};
  if (!alphas.empty()) {
    png_set_tRNS(png, info, alphas.data(), static_cast<int>(alphas.size()), nullptr);
  } else if (key >= 0) {
    png_set_tRNS(png, info, nullptr, 0, &keys);
  }
  png_set_gAMA(png, info, 1.0);  // which must not change a sample
  png_set_pHYs(png, info, 11811, 5906, PNG_RESOLUTION_METER);
  png_write_info(png, info);
  std::vector<std::vector<uint8_t>> rows;
  std::vector<png_bytep> pointers;
  for (int y = 0; y < kHeight; ++y) {
    std::vector<uint8_t>& row = rows.emplace_back(png_get_rowbytes(png, info));
    for (int x = 0; x < kWidth; ++x) {
      for (int c = 0; c < channels(); ++c) {
        const int bit = (x * channels() + c) * depth;
        const uint32_t sample = Sample(x, y, c);
        const auto at = static_cast<size_t>(bit / 8);
        if (depth == 16) {
          row[at] = static_cast<uint8_t>(sample >> 8);
          row[at + 1] = static_cast<uint8_t>(sample);
        } else {
          row[at] |= static_cast<uint8_t>(sample << (8 - depth - bit % 8));
        }
      }
    }
  }
  for (auto& row : rows) pointers.push_back(row.data());
  png_write_image(png, pointers.data());
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return bytes;
}

uint32_t PngFile::Expected(int x, int y) const {
  double rgb[3];
  double alpha = 255;
  const uint32_t first = Sample(x, y, 0);
  for (int c = 0; c < 3; ++c) {
    rgb[c] = !colors.empty() ? colors[first] >> (16 - 8 * c) & 255
                             : Sample8(x, y, channels() < 3 ? 0 : c);
  }
  if (channels() % 2 == 0) alpha = Sample8(x, y, channels() - 1);
  if (first < alphas.size()) alpha = alphas[first];
  if (key >= 0) {
    bool all = true;
    for (int c = 0; c < channels(); ++c) {
      all = all && Sample(x, y, c) == static_cast<uint32_t>(key);
    }
    if (all) alpha = 0;
  }
  for (double& value : rgb) value = (value * alpha + 255 * (255 - alpha)) / 255 + 0.5;
  return Rgb(static_cast<int>(rgb[0]), static_cast<int>(rgb[1]), static_cast<int>(rgb[2]));
}

TEST(PngFile, EveryKind) {
  std::vector<PngFile> files;
  for (const int depth : {1, 2, 4, 8, 16}) {
    files.push_back({PNG_COLOR_TYPE_GRAY, depth});
    files.push_back({PNG_COLOR_TYPE_GRAY, depth});
    files.back().key = (1 << depth) - 2;
    if (depth <= 8) {
      // One color short of what the depth could have.
      const int count = (1 << depth) - (depth > 1 ? 1 : 0);
      files.push_back({PNG_COLOR_TYPE_PALETTE, depth});
      files.back().colors = VariedColors(count, 8);
      files.push_back(files.back());
      files.back().alphas = {0, 100};
    }
    if (depth < 8) continue;
    for (const int type :
         {PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA, PNG_COLOR_TYPE_GRAY_ALPHA}) {
      files.push_back({type, depth});
    }
    files.push_back({PNG_COLOR_TYPE_RGB, depth});
    files.back().key = 0;
  }
  for (PngFile& file : files) {
    for (const bool interlaced : {false, true}) {
      file.interlaced = interlaced;
      SCOPED_TRACE(testing::Message() << "type " << file.color_type << ", depth " << file.depth
                                      << ", key " << file.key << ", interlaced " << interlaced);
      Strings remarks;
      const TestImage image = Decode(file.Bytes(), &remarks);
      ExpectPlainHeader(image);
      const bool color = file.channels() >= 3;
      EXPECT_EQ(image.bit_count(), color ? 24 : file.depth == 2 ? 4 : std::min(file.depth, 8));
      const bool transparent = file.key >= 0 || !file.alphas.empty() || file.channels() % 2 == 0;
      EXPECT_EQ(remarks.size(), transparent ? 1u : 0u);
      EXPECT_EQ(LoadU32(image.raw() + 24), 11811u);
      EXPECT_EQ(LoadU32(image.raw() + 28), 5906u);
      const std::vector<uint32_t> colors = Colors(image);
      for (int y = 0; y < file.kHeight; ++y) {
        for (int x = 0; x < file.kWidth; ++x) {
          ASSERT_EQ(colors[static_cast<size_t>(y * file.kWidth + x)], file.Expected(x, y))
              << x << ", " << y;
        }
      }
      if (file.depth == 2 || file.color_type == PNG_COLOR_TYPE_RGB_ALPHA) ExpectSafe(file.Bytes());
    }
  }
}

TEST(PngFile, AFileThatClaimsToBeHugeIsRefused) {
  std::vector<uint8_t> file = PngFile{PNG_COLOR_TYPE_RGB, 8}.Bytes();
  // IHDR at byte 12: the type, width, height … and a checksum.
  for (const size_t at : {size_t{18}, size_t{22}}) file[at] = 0x20;
  uint32_t crc = 0xFFFFFFFF;
  for (size_t i = 12; i < 29; ++i) {
    crc ^= file[i];
    for (int k = 0; k < 8; ++k) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
  }
  for (size_t i = 0; i < 4; ++i) file[29 + i] = static_cast<uint8_t>(~crc >> (24 - 8 * i));
  EXPECT_EQ(DecodeError(file), "the file is too short for 8205 x 8202 pixels");
}

}  // namespace
}  // namespace ombrilo::test
