// Every kind of BMP file against what its bytes were made from.
#include "core/bytes.h"
#include "host/files.h"

namespace ombrilo::test {
namespace {

constexpr uint32_t kTestXPels = 11811;
constexpr uint32_t kTestYPels = 2835;

// Made byte by byte, apart from the host's own writer.
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

std::vector<uint8_t> BmpFile::Bytes() const {
  std::vector<uint8_t> bytes = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const auto put = [&](auto value, int count) {
    for (int i = 0; i < count; ++i) bytes.push_back(static_cast<uint8_t>(value >> 8 * i));
  };
  const bool core = header_size == 12;
  put(header_size, 4);
  put(width, core ? 2 : 4);
  put(top_down ? -height : height, core ? 2 : 4);
  put(1, 2);
  put(bits, 2);
  if (!core) {
    put(compression, 4);
    put(0x12345678, 4);  // biSizeImage, which nobody believes
    put(kTestXPels, 4);
    put(kTestYPels, 4);
    put(colors_used, 4);
    put(0, 4);
    for (const uint32_t mask : masks) put(mask, 4);
    if (bytes.size() < 14 + header_size || header_size < 40) bytes.resize(14 + header_size, 0);
  }
  for (const uint32_t color : colors) put(color, core ? 3 : 4);
  bytes.resize(bytes.size() + gap, 0xEE);
  const auto at = static_cast<uint32_t>(pixels_at < 0 ? bytes.size() : pixels_at);
  for (size_t i = 0; i < 4; ++i) bytes[10 + i] = static_cast<uint8_t>(at >> 8 * i);
  bytes.insert(bytes.end(), data.begin(), data.end());
  if (!data.empty()) return bytes;
  ImageBuilder rows(bits, width, height);
  rows.Colors({}).Pixels([&](int x, int y) { return pixel(x, top_down ? height - 1 - y : y); });
  const TestImage packed = rows.Build();
  const uint8_t* begin = packed.raw() + 40;
  bytes.insert(bytes.end(), begin, begin + omb_BytesPerLine(packed.get()) * height);
  return bytes;
}

uint32_t ColorCount(int bits) { return bits <= 8 ? 1u << bits : 0; }

uint32_t PixelLimit(int bits) { return bits == 32 ? 0x1000000 : 1u << bits; }

// The image's color table, with black after the given colors.
void ExpectColors(const TestImage& image, std::vector<uint32_t> colors) {
  colors.resize(ColorCount(image.bit_count()), 0);
  for (size_t i = 0; i < colors.size(); ++i) {
    EXPECT_EQ(image.Color(static_cast<int>(i)), colors[i]) << "color " << i;
  }
}

TEST(BmpFile, EveryDepthWithEveryHeader) {
  for (const uint32_t header : {12, 16, 40, 52, 56, 64, 108, 124}) {
    for (const int bits : {1, 2, 4, 8, 16, 24, 32}) {
      for (const int variety : {0, 1, 2, 3}) {
        SCOPED_TRACE(testing::Message() << header << " bytes, " << bits << " bits, " << variety);
        BmpFile file{.bits = bits, .width = 11, .height = 5, .header_size = header};
        file.top_down = header != 12 && variety % 2 == 1;
        file.gap = variety < 2 ? 0 : 7;
        file.colors = VariedColors(static_cast<int>(ColorCount(bits)), header);
        file.pixel = Noise(PixelLimit(bits), 1);
        const bool sized = header == 12 || header == 16;
        std::vector<uint32_t> colors = file.colors;
        if (bits == 2) colors.resize(16);
        const TestImage expected = ImageBuilder(bits == 2 ? 4 : bits, 11, 5)
                                       .Colors(colors)
                                       .Pixels(file.pixel)
                                       .Field(24, sized ? 0 : kTestXPels)
                                       .Field(28, sized ? 0 : kTestYPels)
                                       .Build();
        const std::vector<uint8_t> bytes = file.Bytes();
        EXPECT_EQ(Decode(bytes).Bytes(), expected.Bytes());
        // As on the clipboard.
        if (file.gap > 0) continue;
        EXPECT_EQ(Decode({bytes.begin() + 14, bytes.end()}).Bytes(), expected.Bytes());
      }
    }
  }
}

TEST(BmpFile, ColorTablesOfOtherSizes) {
  const std::vector<uint32_t> colors = {0x102030, 0x405060, 0x708090};
  // Announced by the header, and told only by where the pixels begin.
  for (const uint32_t header : {12, 40, 108}) {
    for (const uint32_t used : {0, 3}) {
      for (const int bits : {4, 8}) {
        const BmpFile file{.bits = bits,
                           .header_size = header,
                           .colors = colors,
                           .colors_used = used,
                           .pixel = [](int, int) { return 9u; }};
        const TestImage image = Decode(file.Bytes());
        ExpectPlainHeader(image);
        ExpectColors(image, colors);
        EXPECT_EQ(image.Pixel(0, 0), 9u);
      }
    }
  }
  // More than the depth has use for.
  const BmpFile large{.bits = 8, .colors = VariedColors(300, 2), .colors_used = 300};
  ExpectColors(Decode(large.Bytes()), {large.colors.begin(), large.colors.begin() + 256});
  // No offset at all, and a table that only advises at 24 bits.
  BmpFile file{.bits = 8, .colors = colors, .colors_used = 3, .pixels_at = 0};
  file.pixel = [](int, int) { return 2u; };
  EXPECT_EQ(Decode(file.Bytes()).Colors(), std::vector<uint32_t>{0x708090});
  file.bits = 24;
  file.pixels_at = -1;
  EXPECT_EQ(Decode(file.Bytes()).Colors(), std::vector<uint32_t>{2});
}

struct Runs {
  int bits;
  int width;
  std::vector<uint8_t> data;
  std::vector<std::string> rows;  // as hexadecimal digits
};

TEST(BmpFile, RunLengthCompression) {
  const Runs cases[] = {
      // Runs, alternating nibbles, ends of rows, the end of the image.
      {8, 5, {3, 7, 2, 1, 0, 0, 5, 2, 0, 0, 0, 1}, {"22222", "77711"}},
      {4, 5, {3, 0x7A, 2, 0x1B, 0, 0, 5, 0x29, 0, 0, 0, 1}, {"29292", "7a71b"}},
      // Literals with and without the byte that fills them up.
      {8, 5, {0, 5, 1, 2, 3, 4, 5, 0, 0, 0, 0, 4, 9, 8, 7, 6, 1, 5, 0, 1}, {"98765", "12345"}},
      {4,
       5,
       {0, 5, 0x12, 0x34, 0x50, 0, 0, 0, 0, 3, 0x98, 0x70, 2, 0x65, 0, 1},
       {"98765", "12345"}},
      {4, 7, {0, 7, 0x12, 0x34, 0x56, 0x70, 0, 1}, {"0000000", "1234567"}},
      // Moves inside a row, to another row and back to no pixel at all; skipped pixels are 0.
      {8, 5, {1, 9, 0, 2, 2, 0, 1, 8, 0, 2, 0, 1, 1, 7, 0, 1}, {"00007", "90080"}},
      {4, 5, {0, 2, 1, 2, 3, 0x45, 0, 1}, {"04540", "00000", "00000"}},
      // Early ends of row and image; a missing end of image after the last pixel.
      {8, 3, {1, 5, 0, 0, 0, 1}, {"000", "500"}},
      {8, 3, {0, 1}, {"000", "000"}},
      {8, 3, {3, 1, 0, 0, 3, 2}, {"222", "111"}},
      {8, 3, {3, 1, 0, 0, 3, 2, 0, 0}, {"222", "111"}},
      // Pixels over the right edge are dropped.
      {8, 3, {9, 1, 0, 0, 0, 4, 2, 3, 4, 5, 0, 1}, {"234", "111"}},
      {4, 3, {4, 0x12, 0, 2, 200, 0, 1, 0x77, 0, 1}, {"121"}},
  };
  for (const Runs& runs : cases) {
    const BmpFile file{.bits = runs.bits,
                       .width = runs.width,
                       .height = static_cast<int>(runs.rows.size()),
                       .compression = runs.bits == 8 ? 1u : 2u,
                       .colors = VariedColors(1 << runs.bits, 3),
                       .gap = 3,
                       .data = runs.data};
    SCOPED_TRACE(testing::PrintToString(runs.data));
    const TestImage image = Decode(file.Bytes());
    ExpectPlainHeader(image);
    EXPECT_EQ(image.Rows(), runs.rows);
    ExpectColors(image, file.colors);
    // An end mark, and moves after the last pixel.
    ExpectSafe(file.Bytes(), 8);
  }
}

// The bits of a mask, gathered one by one and scaled to 0 … 255.
uint32_t Scaled(uint32_t pixel, uint32_t mask) {
  double value = 0, maximum = 0;
  for (int bit = 31; bit >= 0; --bit) {
    if ((mask >> bit & 1) == 0) continue;
    value = 2 * value + (pixel >> bit & 1);
    maximum = 2 * maximum + 1;
  }
  return maximum == 0 ? 0 : static_cast<uint32_t>(value * 255 / maximum + 0.5);
}

// Masks that the library can work with are kept, others become 24 bits; alpha is composed on white.
TEST(BmpFile, ColorMasks) {
  struct Case {
    uint32_t header, compression;
    int bits;
    std::vector<uint32_t> masks;
    bool kept = true;
  };
  std::vector<Case> cases = {
      {40, 3, 32, {0x3FF00000, 0x000FFC00, 0x000003FF}, false},  // 10 bits each
      {40, 3, 32, {0x00F0F000, 0x00000F0F, 0xF0000000}, false},  // in pieces
      {40, 3, 32, {0x00FFFF00, 0x0000FFFF, 0x00000000}, false},  // overlapping, and none
      {40, 3, 32, {0xFFFFFFFF, 0x00000001, 0x80000000}, false},
      {56, 3, 32, {0xFF0000, 0xFF00, 0xFF, 0xFF000000}},
      {124, 3, 32, {0xFF, 0xFF00, 0xFF0000, 0xFF000000}},
      {40, 6, 32, {0xFF0000, 0xFF00, 0xFF, 0x7F000000}},
      {108, 3, 16, {0x0F00, 0x00F0, 0x000F, 0xF000}},
      {108, 3, 16, {0x7C00, 0x03E0, 0x001F, 0x8000}}};
  for (const uint32_t header : {40, 52, 108, 124}) {
    cases.push_back({header, 3, 16, {0xF800, 0x07E0, 0x001F}});
    cases.push_back({header, 3, 16, {0x001F, 0x03E0, 0x7C00}});
    cases.push_back({header, 3, 16, {0x7C00, 0x03E0, 0x001F}});  // the usual layout
    cases.push_back({header, 3, 32, {0xFF000000, 0xFF0000, 0xFF00}});
    cases.push_back({header, 3, 32, {0x7F, 0x0, 0x3F00}});
    cases.push_back({header, 3, 32, {0xFF0000, 0xFF00, 0xFF}});
  }
  for (const Case& c : cases) {
    const uint32_t alpha = c.masks.size() == 4 ? c.masks[3] : 0;
    for (const char* kind : {"opaque", "forgotten", "meant"}) {
      SCOPED_TRACE(testing::Message() << c.header << ' ' << c.bits << ' ' << c.masks[0] << kind);
      const BmpFile file{
          .bits = c.bits,
          .width = 20,
          .height = 3,
          .header_size = c.header,
          .top_down = alpha == 0,
          .compression = c.compression,
          .masks = c.masks,
          .pixel = [&](int x, int y) {
            const uint32_t pixel = Noise(c.bits == 32 ? 0xFFFFFFFF : 0x10000, 3)(x, y);
            return *kind == 'o' ? pixel | alpha : *kind == 'f' ? pixel & ~alpha : pixel;
          }};
      Strings remarks;
      const TestImage image = Decode(file.Bytes(), &remarks);
      ExpectPlainHeader(image);
      EXPECT_EQ(LoadU32(image.raw() + 24), kTestXPels);
      const bool composed = alpha != 0 && *kind == 'm';
      EXPECT_EQ(remarks, composed ? Strings{"transparency is composed on white"} : Strings{});
      ASSERT_EQ(image.bit_count(), c.kept && !composed ? c.bits : 24);
      if (image.bit_count() != 24) {
        const bool usual = c.bits == 16 ? c.masks[0] == 0x7C00 : c.masks[0] == 0xFF0000;
        EXPECT_EQ(LoadU32(image.raw() + 16), usual ? 0u : 3u);
        for (size_t i = 0; i < 3 && !usual; ++i) {
          EXPECT_EQ(LoadU32(image.raw() + 40 + 4 * i), c.masks[i]);
        }
        for (int x = 0; x < 20; ++x) EXPECT_EQ(image.Pixel(x, 1), file.pixel(x, 1));
        // What is written comes back the same.
        EXPECT_EQ(Decode(Encode(omb::Format::kBmp, image.get())).Bytes(), image.Bytes());
        continue;
      }
      for (int x = 0; x < 20; ++x) {
        const uint32_t pixel = file.pixel(x, 1);
        const double cover = composed ? Scaled(pixel, alpha) / 255.0 : 1;
        for (size_t i = 0; i < 3; ++i) {
          const double expected = Scaled(pixel, c.masks[i]) * cover + 255 * (1 - cover);
          EXPECT_NEAR(image.Pixel(x, 1) >> (16 - 8 * i) & 255, expected, 0.501);
        }
      }
    }
  }
}

TEST(BmpFile, WhatIsWrongIsSaidInOneLine) {
  const std::vector<uint32_t> gray = GrayRamp(256);
  const struct {
    BmpFile file;
    std::string error;
  } cases[] = {
      {{.bits = 8, .colors = gray, .pixels_at = 54},
       "the pixels begin where the color table belongs"},
      {{.bits = 24, .width = 5, .height = 20, .data = std::vector<uint8_t>(16 * 6 + 3)},
       "the file ends in row 7 of 20"},
      {{.bits = 8, .width = 2, .height = 3, .compression = 1, .colors = gray, .data = {2, 1, 0, 0}},
       "the file ends in row 2 of 3"},
      {{.bits = 8, .compression = 1, .colors = gray, .data = {1, 1, 0, 0, 1, 1, 0, 1}},
       "the compressed pixels exceed the image's height"},
      {{.bits = 8, .top_down = true, .compression = 1, .colors = gray},
       "a compressed image cannot be stored top-down"},
      {{.bits = 3}, "images of 3 bits per pixel are not supported"},
      {{.bits = 8, .compression = 2}, "compression method 2 at 8 bits is not supported"},
      {{.bits = 24, .compression = 4}, "compression method 4 at 24 bits is not supported"},
      {{.bits = 16, .header_size = 64, .compression = 3},
       "compression method 3 at 16 bits is not supported"},
      {{.header_size = 41}, "a header of 41 bytes is not supported"},
      {{.width = 0}, "the image has no pixels"},
      {{.width = -4, .data = {1}}, "the image has no pixels"},
      {{.height = 0}, "the image has no pixels"},
      {{.pixels_at = 53}, "the pixels begin inside the header"},
      {{.bits = 16, .compression = 3, .masks = {0, 0, 0}}, "the color masks are empty"},
      {{.width = 2'000'000, .data = {1}}, "an image of 2000000 x 1 pixels at 24 bits is too large"},
      {{.bits = 8, .width = 900'000, .height = 900'000, .compression = 1, .data = {0, 1}},
       "an image of 900000 x 900000 pixels at 8 bits is too large"},
      {{.bits = 8, .width = 40'000, .height = 40'000, .compression = 1, .data = {0, 1}},
       "an image of 40000 x 40000 pixels at 8 bits is too large"},
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeError(c.file.Bytes()), c.error);
  EXPECT_EQ(DecodeError({}), "the file is empty");
  EXPECT_EQ(DecodeError({'B', 'M', 0}), "the file ends inside the header");
  EXPECT_EQ(DecodeError({'P', '6', ' ', '1'}), "it is not a BMP, PNG, JPEG or TIFF file");
}

TEST(BmpFile, DamagedFilesAreRefusedOrRead) {
  for (const uint32_t header : {12, 40, 124}) {
    for (const int bits : {1, 4, 8, 16, 24, 32}) {
      // Rows that end with a pixel: a file may lack its last row's padding.
      BmpFile file{.bits = bits, .width = 32 / bits + (bits == 24 ? 3 : 0), .height = 3};
      file.header_size = header;
      file.colors = VariedColors(static_cast<int>(bits == 8 ? 5 : ColorCount(bits)), 1);
      file.colors_used = static_cast<uint32_t>(file.colors.size());
      file.pixel = Noise(PixelLimit(bits), 1);
      if (header != 12 && bits == 32) {
        file.compression = 3;
        file.masks = {0x3FF00000, 0xFFC00, 0x3FF, 0xC0000000};
      }
      SCOPED_TRACE(testing::Message() << header << " bytes, " << bits << " bits");
      ExpectSafe(file.Bytes());
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
