// TIFF files of kinds that the host does not write, against what their samples mean. What Windows'
// codecs make of them is their own matter.
#include <tiffio.h>

#include "host/files.h"

namespace ombrilo::test {
namespace {

struct TiffFile {
  uint16_t width = 1, height = 1, bits = 8, samples = 1, photometric = 1;
  std::vector<uint8_t> data;
  int16_t alpha = -1;  // the first extra sample's kind; below 0: there is none
  uint16_t compression = 1, orientation = 1, planar = 1, format = 1;
  std::vector<uint16_t> colors = {};
  uint16_t tile = 0;  // the side of the one tile

  std::vector<uint8_t> Bytes() const {
    const Directory directory;
    const auto path = directory / "image";
    TIFF* tiff = TIFFOpen(path.c_str(), "w");
    const std::pair<uint32_t, int> fields[] = {
        {TIFFTAG_IMAGEWIDTH, width},
        {TIFFTAG_IMAGELENGTH, height},
        {TIFFTAG_BITSPERSAMPLE, bits},
        {TIFFTAG_SAMPLESPERPIXEL, samples},
        {TIFFTAG_COMPRESSION, compression},
        {TIFFTAG_PHOTOMETRIC, photometric},
        {TIFFTAG_ORIENTATION, orientation},
        {TIFFTAG_PLANARCONFIG, planar},
        {TIFFTAG_SAMPLEFORMAT, format},
        {tile == 0 ? TIFFTAG_ROWSPERSTRIP : TIFFTAG_TILEWIDTH, tile == 0 ? height : tile}};
    for (const auto& [tag, value] : fields) TIFFSetField(tiff, tag, value);
    if (tile != 0) TIFFSetField(tiff, TIFFTAG_TILELENGTH, tile);
    if (alpha >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &alpha);
    if (!colors.empty())
      TIFFSetField(tiff, TIFFTAG_COLORMAP, &colors[0], &colors[256], &colors[512]);
    std::vector<uint8_t> pixels = data;
    const uint32_t parts = planar == 2 ? samples : 1;
    const size_t size = data.size() / parts;
    for (uint32_t i = 0; i < parts; ++i) {
      const auto write = tile == 0 ? TIFFWriteRawStrip : TIFFWriteRawTile;
      write(tiff, i, &pixels[i * size], static_cast<tmsize_t>(size));
    }
    TIFFClose(tiff);
    return Load(path);
  }
};

constexpr char kAlpha[] = "transparency is composed on white";
constexpr char kDepth[] = "16 bits per channel are reduced to 8";
constexpr char kLeftOut[] = "a channel of no stated meaning is left out";

TEST(TiffFile, SamplesBecomeColorsOverWhite) {
  std::vector<uint16_t> colors(768);
  for (size_t c = 0; c < 3; ++c) colors[256 * c + 5] = static_cast<uint16_t>((c + 1) * 0x1010);
  const struct {
    TiffFile file;
    uint32_t color;
    Strings remarks;
  } cases[] = {
      {{.samples = 2, .data = {100, 128}, .alpha = 2}, 0xB1B1B1, {kAlpha}},
      {{.samples = 2, .data = {50, 128}, .alpha = 1}, 0xB1B1B1, {kAlpha}},
      {{.samples = 2, .photometric = 0, .data = {155, 128}, .alpha = 2}, 0xB1B1B1, {kAlpha}},
      {{.samples = 2, .data = {100, 128}, .alpha = 0}, 0x646464, {kLeftOut}},
      {{.bits = 16, .samples = 2, .data = {0, 100, 0x80, 0x80}, .alpha = 2},
       0xB1B1B1,
       {kAlpha, kDepth}},
      {{.samples = 4, .photometric = 2, .data = {100, 0, 255, 128}, .alpha = 2},
       0xB17FFF,
       {kAlpha}},
      {{.samples = 4, .photometric = 2, .data = {50, 0, 128, 128}, .alpha = 1, .planar = 2},
       0xB17FFF,
       {kAlpha}},
      {{.samples = 2, .photometric = 3, .data = {5, 255}, .alpha = 2, .colors = colors},
       0x102030,
       {}},
      {{.samples = 2, .photometric = 3, .data = {5, 0}, .alpha = 2, .colors = colors},
       0xFFFFFF,
       {kAlpha}},
      {{.samples = 5, .photometric = 5, .data = {0, 255, 0, 0, 128}, .alpha = 2},
       0xFF7FFF,
       {kAlpha}},
      {{.bits = 16, .samples = 4, .photometric = 5, .data = {0, 0, 255, 255, 0, 0, 0, 0}},
       0xFF00FF,
       {kDepth}},
      {{.samples = 3, .photometric = 2, .data = {1, 2, 3}, .planar = 2}, 0x010203, {}},
      // White and a middle gray of Lab have no cast.
      {{.samples = 3, .photometric = 8, .data = {255, 0, 0}}, 0xFFFFFF, {}},
      {{.samples = 3, .photometric = 8, .data = {137, 0, 0}}, 0x808080, {}},
  };
  for (const auto& c : cases) {
    Strings remarks;
    const TestImage image = Decode(c.file.Bytes(), &remarks);
    SCOPED_TRACE(testing::PrintToString(c.file.data));
    EXPECT_EQ(remarks, c.remarks);
    for (const int shift : {0, 8, 16}) {
      const int tolerance = c.file.photometric == 8 ? 1 : 0;
      EXPECT_NEAR(image.Colors()[0] >> shift & 255, c.color >> shift & 255, tolerance) << shift;
    }
  }
}

// What is where in a turned page is for the samples to say.
TEST(TiffFile, TurnedPagesKeepTheirDepth) {
  for (uint16_t orientation = 1; orientation <= 8; ++orientation) {
    const TiffFile file{.width = 10,
                        .height = 3,
                        .bits = 1,
                        .data = {0x40, 0, 0, 0, 0, 0},
                        .orientation = orientation};
    const TestImage image = Decode(file.Bytes());
    EXPECT_EQ(image.bit_count(), 1);
    EXPECT_EQ(image.width(), orientation < 5 ? 10 : 3);
  }
}

TEST(TiffFile, WhatWouldBeWrongOrHugeIsRefused) {
  const struct {
    TiffFile file;
    std::string error;
  } cases[] = {
      {{.data = {1}, .format = 2}, "signed samples are not supported"},
      {{.bits = 32, .data = {0, 0, 0, 0}, .format = 3},
       "samples of floating point are not supported"},
      {{.samples = 3, .photometric = 5, .data = {1, 2, 3}},
       "other inks than cyan, magenta, yellow and black are not supported"},
      {{.width = 16000, .height = 16000, .data = std::vector<uint8_t>(99), .compression = 7},
       "the file is too short for 16000 x 16000 pixels"},
      {{.width = 1000,
        .height = 1000,
        .samples = 20000,
        .data = std::vector<uint8_t>(999),
        .compression = 5},
       "the file is too short for 1000 x 1000 pixels"},
      {{.width = 100, .height = 100, .data = std::vector<uint8_t>(10000), .tile = 30000},
       "its tiles are far larger than the image"},
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeError(c.file.Bytes()), c.error);
}

}  // namespace
}  // namespace ombrilo::test
