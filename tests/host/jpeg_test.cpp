// JPEG files of kinds that the host does not write.
#include <cstdio>
#include <cstdlib>

// The header needs <cstdio>'s names before it.
#include <jpeglib.h>

#include "core/bytes.h"
#include "host/files.h"

namespace ombrilo::test {
namespace {

// An image of one color, in the samples of `space`.
std::vector<uint8_t> OneColor(J_COLOR_SPACE in, J_COLOR_SPACE space, std::vector<uint8_t> samples,
                              const std::function<void(jpeg_compress_struct*)>& change = {}) {
  jpeg_error_mgr errors;
  jpeg_compress_struct encoder;
  encoder.err = jpeg_std_error(&errors);
  jpeg_create_compress(&encoder);
  unsigned char* block = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&encoder, &block, &size);
  encoder.image_width = encoder.image_height = 19;
  encoder.input_components = static_cast<int>(samples.size());
  encoder.in_color_space = in;
  jpeg_set_defaults(&encoder);
  jpeg_set_colorspace(&encoder, space);
  jpeg_set_quality(&encoder, 100, TRUE);
  if (change) change(&encoder);
  jpeg_start_compress(&encoder, TRUE);
  std::vector<uint8_t> row;
  for (int x = 0; x < 19; ++x) row.insert(row.end(), samples.begin(), samples.end());
  JSAMPROW rows = row.data();
  for (int y = 0; y < 19; ++y) jpeg_write_scanlines(&encoder, &rows, 1);
  jpeg_finish_compress(&encoder);
  jpeg_destroy_compress(&encoder);
  std::vector<uint8_t> bytes(block, block + size);
  std::free(block);
  return bytes;
}

void ExpectColor(const std::vector<uint8_t>& file, int red, int green, int blue) {
  const TestImage image = Decode(file);
  ExpectPlainHeader(image);
  ASSERT_EQ(image.bit_count(), 24);
  for (const uint32_t color : Colors(image)) {
    ASSERT_NEAR(color >> 16, red, 2);
    ASSERT_NEAR(color >> 8 & 255, green, 2);
    ASSERT_NEAR(color & 255, blue, 2);
  }
}

TEST(JpegFile, FourInks) {
  // With Adobe's mark, 255 is no ink; without it, 0 is.
  ExpectColor(OneColor(JCS_CMYK, JCS_CMYK, {255, 128, 0, 255}), 255, 128, 0);
  ExpectColor(OneColor(JCS_CMYK, JCS_YCCK, {200, 100, 50, 128}), 100, 50, 25);
  ExpectColor(OneColor(JCS_CMYK, JCS_CMYK, {255, 127, 0, 127},
                       [](auto* encoder) { encoder->write_Adobe_marker = FALSE; }),
              0, 64, 128);
}

TEST(JpegFile, ProgressiveColorsAndDensity) {
  const auto file = OneColor(JCS_RGB, JCS_YCbCr, {200, 100, 50}, [](auto* encoder) {
    jpeg_simple_progression(encoder);
    encoder->density_unit = 2;
    encoder->X_density = 118;
    encoder->Y_density = 59;
  });
  ExpectColor(file, 200, 100, 50);
  const TestImage image = Decode(file);
  EXPECT_EQ(LoadU32(image.raw() + 24), 11800u);
  EXPECT_EQ(LoadU32(image.raw() + 28), 5900u);
  ExpectSafe(file);
  ExpectColor(OneColor(JCS_RGB, JCS_RGB, {9, 100, 250}), 9, 100, 250);
}

TEST(JpegFile, DamageIsRemarkedAndHugeClaimsAreRefused) {
  std::vector<uint8_t> file = OneColor(JCS_GRAYSCALE, JCS_GRAYSCALE, {77});
  std::vector<uint8_t> extra = file;
  extra.insert(extra.end() - 2, {1, 2, 3, 4, 5, 6, 7, 8});
  Strings remarks;
  EXPECT_EQ(Colors(Decode(extra, &remarks))[0], Rgb(77, 77, 77));
  EXPECT_EQ(remarks.size(), 1u);
  for (size_t i = 0; i + 8 < file.size(); ++i) {
    if (file[i] == 0xFF && file[i + 1] == 0xC0) file[i + 5] = file[i + 7] = 0x7F;
  }
  EXPECT_EQ(DecodeError(file), "the file is too short for 32531 x 32531 pixels");
}

}  // namespace
}  // namespace ombrilo::test
