// TIFF files of kinds that the host does not write, made byte by byte, against what their samples
// mean. What Windows' codecs make of them is their own matter.
#include "host/files.h"

namespace ombrilo::test {
namespace {

struct TiffFile {
  uint16_t width = 1, height = 1, bits = 8, samples = 1, photometric = 1;
  std::vector<uint8_t> data;
  int alpha = -1;  // the first extra sample's kind; below 0: there is none
  uint16_t compression = 1, orientation = 1, planar = 1, format = 1;
  std::vector<uint16_t> colors = {};
  uint16_t tile = 0;  // the side of the one tile

  std::vector<uint8_t> Bytes() const {
    std::vector<uint8_t> file;
    const auto put = [&](uint32_t value, int count) {
      for (int i = 0; i < count; ++i) file.push_back(static_cast<uint8_t>(value >> 8 * i));
    };
    put(0x002A4949, 4);  // "II", 42
    put(0, 4);
    const size_t data_at = file.size();
    file.insert(file.end(), data.begin(), data.end());
    const auto list_at = static_cast<uint32_t>(file.size());
    // Depths, formats, places and sizes of planes, where they are several.
    for (int i = 0; i < samples; ++i) put(bits, 2);
    const auto formats_at = static_cast<uint32_t>(file.size());
    for (int i = 0; i < samples; ++i) put(format, 2);
    const uint32_t planes = planar == 2 ? samples : 1;
    const auto part = static_cast<uint32_t>(data.size()) / planes;
    const auto places_at = static_cast<uint32_t>(file.size());
    for (uint32_t i = 0; i < planes; ++i) put(static_cast<uint32_t>(data_at) + i * part, 4);
    const auto sizes_at = static_cast<uint32_t>(file.size());
    for (uint32_t i = 0; i < planes; ++i) put(part, 4);
    const auto colors_at = static_cast<uint32_t>(file.size());
    for (const uint16_t color : colors) put(color, 2);
    const auto directory_at = static_cast<uint32_t>(file.size());
    for (size_t i = 0; i < 4; ++i) file[4 + i] = static_cast<uint8_t>(directory_at >> 8 * i);

    uint16_t count = 0;
    put(0, 2);
    const auto entry = [&](uint16_t tag, uint16_t type, uint32_t n, uint32_t value) {
      put(tag, 2);
      put(type, 2);
      put(n, 4);
      put(value, 4);
      ++count;
    };
    const auto shorts = [&](uint16_t tag, uint16_t value, uint32_t at) {
      entry(tag, 3, samples, samples == 1 ? value : samples == 2 ? value * 0x10001u : at);
    };
    entry(256, 3, 1, width);
    entry(257, 3, 1, height);
    shorts(258, bits, list_at);
    entry(259, 3, 1, compression);
    entry(262, 3, 1, photometric);
    if (tile == 0) entry(273, 4, planes, planes == 1 ? static_cast<uint32_t>(data_at) : places_at);
    entry(274, 3, 1, orientation);
    entry(277, 3, 1, samples);
    if (tile == 0) entry(278, 3, 1, height);
    if (tile == 0) entry(279, 4, planes, planes == 1 ? part : sizes_at);
    entry(284, 3, 1, planar);
    if (!colors.empty()) entry(320, 3, static_cast<uint32_t>(colors.size()), colors_at);
    if (tile != 0) {
      entry(322, 3, 1, tile);
      entry(323, 3, 1, tile);
      entry(324, 4, 1, static_cast<uint32_t>(data_at));
      entry(325, 4, 1, part);
    }
    if (alpha >= 0) entry(338, 3, 1, static_cast<uint32_t>(alpha));
    shorts(339, format, formats_at);
    put(0, 4);
    file[directory_at] = static_cast<uint8_t>(count);
    return file;
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

TEST(TiffFile, TurnedPagesKeepTheirDepth) {
  // A pixel in the second column of the first of three rows.
  const std::vector<std::string> upright[] = {{".#........", "..........", ".........."},
                                              {"........#.", "..........", ".........."},
                                              {"..........", "..........", "........#."},
                                              {"..........", "..........", ".#........"}};
  for (uint16_t orientation = 1; orientation <= 8; ++orientation) {
    const TiffFile file{.width = 10,
                        .height = 3,
                        .bits = 1,
                        .data = {0x40, 0, 0, 0, 0, 0},
                        .orientation = orientation};
    const TestImage image = Decode(file.Bytes());
    EXPECT_EQ(image.bit_count(), 1);
    EXPECT_EQ(image.width(), orientation < 5 ? 10 : 3);
    if (orientation < 5) {
      EXPECT_EQ(image.Rows(), upright[orientation - 1]);
    }
    // A turn to the right and one to the left.
    if (orientation == 6 || orientation == 8) {
      EXPECT_EQ(image.Rows()[orientation == 6 ? 1 : 8], orientation == 6 ? "..#" : "#..");
    }
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
      {{.width = 100, .height = 100, .data = std::vector<uint8_t>(10000), .tile = 30000},
       "its tiles are far larger than the image"},
  };
  for (const auto& c : cases) EXPECT_EQ(DecodeError(c.file.Bytes()), c.error);
}

}  // namespace
}  // namespace ombrilo::test
