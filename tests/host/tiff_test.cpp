// TIFF files of kinds that the host does not write, against the samples that they were made from.
#include <tiffio.h>

#include "core/bytes.h"
#include "host/files.h"

namespace ombrilo::test {
namespace {

struct TiffFile {
  int photometric;
  int bits;
  int samples;
  int compression = COMPRESSION_NONE;
  bool tiled = false;
  bool planar = false;
  int orientation = 1;
  int alpha = -1;     // the kind of the last sample when it is not a color
  int map_scale = 0;  // color table: 257, or 1 for old writers
  int sample_format = 1;
  const char* mode = "w";
  int pages = 1;

  static constexpr int kWidth = 37, kHeight = 21;

  uint32_t Sample(int x, int y, int c) const { return Noise(1u << bits, 6)(4 * x + c, y); }
  uint32_t Sample8(int x, int y, int c) const {
    return static_cast<uint32_t>(Sample(x, y, c) * 255.0 / ((1u << bits) - 1) + 0.5);
  }
  std::vector<uint8_t> Bytes() const;
};

std::vector<uint32_t> MapColors(int bits) { return VariedColors(1 << bits, 4); }

// `count` pixels from column `left`; the samples of one plane, or all of them.
std::vector<uint8_t> PackRow(const TiffFile& file, int left, int count, int y, int plane) {
  const int first = plane < 0 ? 0 : plane, last = plane < 0 ? file.samples : plane + 1;
  std::vector<uint8_t> row(static_cast<size_t>((count * (last - first) * file.bits + 7) / 8));
  int bit = 0;
  for (int x = left; x < left + count; ++x) {
    for (int c = first; c < last; ++c, bit += file.bits) {
      if (x >= file.kWidth || y >= file.kHeight) continue;
      const uint32_t sample = file.Sample(x, y, c);
      const auto at = static_cast<size_t>(bit / 8);
      if (file.bits == 16) {
        const auto native = static_cast<uint16_t>(sample);
        std::copy_n(reinterpret_cast<const uint8_t*>(&native), 2, &row[at]);
      } else {
        row[at] |= static_cast<uint8_t>(sample << (8 - file.bits - bit % 8));
      }
    }
  }
  return row;
}

void WriteTiles(TIFF* tiff, const TiffFile& file) {
  constexpr int kTile = 16;
  TIFFSetField(tiff, TIFFTAG_TILEWIDTH, kTile);
  TIFFSetField(tiff, TIFFTAG_TILELENGTH, kTile);
  for (int top = 0; top < file.kHeight; top += kTile) {
    for (int left = 0; left < file.kWidth; left += kTile) {
      std::vector<uint8_t> tile;
      for (int y = top; y < top + kTile; ++y) {
        const auto row = PackRow(file, left, kTile, y, -1);
        tile.insert(tile.end(), row.begin(), row.end());
      }
      TIFFWriteTile(tiff, tile.data(), static_cast<uint32_t>(left), static_cast<uint32_t>(top), 0,
                    0);
    }
  }
}

std::vector<uint8_t> TiffFile::Bytes() const {
  const Directory directory;
  const std::filesystem::path path = directory / "x.tif";
  TIFF* tiff = TIFFOpen(path.c_str(), mode);
  for (int page = 0; page < pages; ++page) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, kWidth);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, kHeight);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, samples);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, planar ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
    TIFFSetField(tiff, TIFFTAG_ORIENTATION, orientation);
    TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, sample_format);
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, 118.11);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, 59.06);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    const auto kind = static_cast<uint16_t>(alpha);
    if (alpha >= 0) TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, 1, &kind);
    if (map_scale != 0) {
      std::vector<uint16_t> map[3];
      for (const uint32_t color : MapColors(bits)) {
        for (int c = 0; c < 3; ++c) {
          map[c].push_back(static_cast<uint16_t>((color >> (16 - 8 * c) & 255) *
                                                 static_cast<uint32_t>(map_scale)));
        }
      }
      TIFFSetField(tiff, TIFFTAG_COLORMAP, map[0].data(), map[1].data(), map[2].data());
    }
    if (tiled) {
      WriteTiles(tiff, *this);
    } else {
      TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 8);
      for (int plane = 0; plane < (planar ? samples : 1); ++plane) {
        for (int y = 0; y < kHeight; ++y) {
          auto row = PackRow(*this, 0, kWidth, y, planar ? plane : -1);
          TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y),
                            static_cast<uint16_t>(plane));
        }
      }
    }
    TIFFWriteDirectory(tiff);
  }
  TIFFClose(tiff);
  return Load(path);
}

// The color of a stored pixel; `tolerance` for conversions that libtiff makes.
void ExpectPixel(const TiffFile& file, int x, int y, uint32_t color, int tolerance) {
  const uint32_t first = file.Sample(x, y, 0);
  for (int c = 0; c < 3; ++c) {
    uint32_t expected = file.Sample8(x, y, file.samples < 3 ? 0 : c);
    if (file.photometric == PHOTOMETRIC_PALETTE) {
      expected = MapColors(file.bits)[first] >> (16 - 8 * c) & 255;
    }
    if (file.photometric == PHOTOMETRIC_MINISWHITE) expected = 255 - expected;
    if (file.alpha == EXTRASAMPLE_UNASSALPHA) {
      const uint32_t alpha = file.Sample8(x, y, file.samples - 1);
      expected = (expected * alpha + 255 * (255 - alpha) + 127) / 255;
    }
    ASSERT_NEAR(color >> (16 - 8 * c) & 255, expected, tolerance) << x << ", " << y;
  }
}

TEST(TiffFile, EveryKind) {
  std::vector<TiffFile> files;
  for (const int bits : {1, 2, 4, 8, 16}) {
    for (const int photometric : {PHOTOMETRIC_MINISWHITE, PHOTOMETRIC_MINISBLACK}) {
      files.push_back({photometric, bits, 1});
      files.push_back({photometric, bits, 1, COMPRESSION_LZW, true});
      files.back().mode = "wb";  // the other byte order
    }
    if (bits == 16) continue;
    files.push_back({PHOTOMETRIC_PALETTE, bits, 1, COMPRESSION_PACKBITS});
    files.back().map_scale = bits == 4 ? 1 : 257;
    files.push_back(files.back());
    files.back().tiled = true;
    files.back().pages = 3;
  }
  files.push_back({PHOTOMETRIC_MINISWHITE, 1, 1, COMPRESSION_CCITTFAX3});
  for (const int bits : {8, 16}) {
    files.push_back({PHOTOMETRIC_RGB, bits, 3, COMPRESSION_ADOBE_DEFLATE});
    files.push_back({PHOTOMETRIC_RGB, bits, 3, COMPRESSION_LZW, true});
    files.push_back({PHOTOMETRIC_RGB, bits, 3, COMPRESSION_LZW, false, true});
    files.push_back({PHOTOMETRIC_RGB, bits, 4});
    files.back().alpha = EXTRASAMPLE_UNASSALPHA;
  }
  for (const TiffFile& file : files) {
    SCOPED_TRACE(testing::Message()
                 << "photometric " << file.photometric << ", " << file.samples << " x " << file.bits
                 << " bits, tiled " << file.tiled << ", planar " << file.planar);
    Strings remarks;
    const TestImage image = Decode(file.Bytes(), &remarks);
    ExpectPlainHeader(image);
    ASSERT_EQ(image.bit_count(), file.samples > 1 ? 24
                                 : file.bits == 2 ? 4
                                                  : std::min(file.bits, 8));
    EXPECT_EQ(LoadU32(image.raw() + 24), 11811u);
    EXPECT_EQ(LoadU32(image.raw() + 28), 5906u);
    EXPECT_EQ(remarks.size(), file.alpha >= 0 || file.pages > 1 ? 1u : 0u);
    const std::vector<uint32_t> colors = Colors(image);
    const bool converted = file.planar || file.alpha >= 0;
    for (int i = 0; i < file.kWidth * file.kHeight; ++i) {
      ExpectPixel(file, i % file.kWidth, i / file.kWidth, colors[static_cast<size_t>(i)],
                  converted ? 2 : 0);
    }
  }
}

TEST(TiffFile, EveryOrientation) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    TiffFile file{PHOTOMETRIC_RGB, 8, 3};
    file.orientation = orientation;
    SCOPED_TRACE(orientation);
    const TestImage image = Decode(file.Bytes());
    const bool swapped = orientation > 4;
    ASSERT_EQ(image.width(), swapped ? file.kHeight : file.kWidth);
    EXPECT_EQ(LoadU32(image.raw() + 24), swapped ? 5906u : 11811u);
    // Where the first stored row begins, and where it goes.
    const int right = image.width() - 1, bottom = image.height() - 1;
    const int corners[8][4] = {{0, 0, 1, 0},           {right, 0, -1, 0}, {right, bottom, -1, 0},
                               {0, bottom, 1, 0},      {0, 0, 0, 1},      {right, 0, 0, 1},
                               {right, bottom, 0, -1}, {0, bottom, 0, -1}};
    const int* corner = corners[orientation - 1];
    for (int i = 0; i < file.kWidth; ++i) {
      ExpectPixel(file, i, 0, image.Pixel(corner[0] + i * corner[2], corner[1] + i * corner[3]), 0);
    }
  }
}

TEST(TiffFile, DamagedFilesAreRefusedOrRead) {
  ExpectSafe(TiffFile{PHOTOMETRIC_MINISWHITE, 1, 1, COMPRESSION_CCITTFAX4, true}.Bytes(), 4);
  ExpectSafe(TiffFile{PHOTOMETRIC_RGB, 8, 3, COMPRESSION_LZW, false, true}.Bytes(), 4);
  TiffFile floats{PHOTOMETRIC_MINISBLACK, 16, 1};
  floats.sample_format = SAMPLEFORMAT_IEEEFP;
  EXPECT_EQ(DecodeError(floats.Bytes()).substr(0, 23), "unsupported TIFF data: ");
}

}  // namespace
}  // namespace ombrilo::test
