// TIFF files read by libtiff: rows of samples, which tiff_samples.h turns into pixels. The few
// kinds whose samples cannot be used as colors directly go through libtiff's RGBA reader.
#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "core/buffer.h"
#include "files/metadata.h"
#include "files/pixels_in.h"
#include "files/tiff_handle.h"
#include "files/tiff_samples.h"

namespace omb {

using namespace ombrilo;

namespace {

// A tile of usual size may be larger than its image.
constexpr uint64_t kUsualTile = 16 << 20;

uint16_t ShortField(TIFF* tiff, uint32_t tag, uint16_t otherwise) {
  uint16_t value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : otherwise;
}

Resolution ReadResolution(TIFF* tiff) {
  float x = 0, y = 0;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) == 0) x = 0;
  if (TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) == 0) y = 0;
  const uint16_t unit = ShortField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  return ResolutionIn(unit, x, y);
}

TiffAlpha ReadAlpha(TIFF* tiff) {
  uint16_t count = 0;
  uint16_t* kinds = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) == 0 || count == 0) {
    return TiffAlpha::kNone;
  }
  if (kinds[0] == EXTRASAMPLE_ASSOCALPHA) return TiffAlpha::kMultiplied;
  return kinds[0] == EXTRASAMPLE_UNASSALPHA ? TiffAlpha::kPlain : TiffAlpha::kNone;
}

TiffDirectory ReadDirectory(TIFF* tiff) {
  TiffDirectory d;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &d.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &d.height);
  d.bits = ShortField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  d.samples = ShortField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  d.photometric = ShortField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  d.planar = d.samples > 1 &&
             ShortField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE;
  d.orientation = ShortField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  d.sample_format = ShortField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  d.compression = ShortField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  d.alpha = ReadAlpha(tiff);
  if (d.photometric == PHOTOMETRIC_YCBCR && d.compression == COMPRESSION_JPEG) {
    TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    d.photometric = PHOTOMETRIC_RGB;
  }
  if (TIFFIsTiled(tiff) != 0) {
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &d.tile_width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &d.tile_height);
  }
  d.resolution = ReadResolution(tiff);
  return d;
}

// How many bits one bit of compressed data can become.
double MostInflated(const TiffDirectory& d) {
  switch (d.compression) {
    case COMPRESSION_NONE:
      return 1;
    case COMPRESSION_PACKBITS:
      return 64;
    case COMPRESSION_LZW:
      return 4096;
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
      return kMostInflated;
    case COMPRESSION_JPEG:
    case COMPRESSION_OJPEG:
      return kMostSamplesPerJpegByte;
    case COMPRESSION_CCITTRLE:
    case COMPRESSION_CCITTRLEW:
    case COMPRESSION_CCITTFAX3:
    case COMPRESSION_CCITTFAX4:
      return d.width;  // a row takes a bit at least
    default:
      return 1 << 16;
  }
}

void CheckFileHolds(const TiffDirectory& d, size_t file_size) {
  // Where channels can be subsampled, each pixel has at least one sample.
  const bool subsampled = d.photometric == PHOTOMETRIC_YCBCR || d.compression == COMPRESSION_JPEG ||
                          d.compression == COMPRESSION_OJPEG;
  const double samples = 1.0 * d.width * d.height * (subsampled ? 1 : d.samples);
  if (samples * d.bits / 8 / MostInflated(d) > static_cast<double>(file_size)) {
    throw FileError("the file is too short for " + PixelsText({d.width, d.height, d.bits}));
  }
}

void SetColors(TIFF* tiff, const TiffDirectory& d, const Dib& dib, const TiffErrors& errors) {
  const uint32_t count = 1u << std::min<uint16_t>(d.bits, 8);
  if (d.photometric != PHOTOMETRIC_PALETTE) {
    SetGrayRamp(dib, count, d.photometric == PHOTOMETRIC_MINISWHITE);
    return;
  }
  const TiffPalette palette = ReadPalette(tiff, d, errors);
  for (uint32_t i = 0; i < count; ++i) {
    SetColor(dib, i, palette[i][0], palette[i][1], palette[i][2]);
  }
}

[[noreturn]] void FailInRow(const TiffErrors& errors, uint32_t y, const TiffDirectory& d) {
  errors.Fail("damaged TIFF data in row " + std::to_string(y + 1) + " of " +
              std::to_string(d.height));
}

// Calls `use(plane pointers, x, y, pixels)` for each run of pixels that the file stores.
template <class Use>
void ReadBlocks(TIFF* tiff, const TiffDirectory& d, const TiffErrors& errors, Use use) {
  const size_t planes = d.planar ? d.samples : 1;
  const bool tiled = d.tile_width != 0, by_rows = !tiled && !d.planar;
  const tmsize_t size = tiled     ? TIFFTileSize(tiff)
                        : by_rows ? TIFFScanlineSize(tiff)
                                  : TIFFStripSize(tiff);
  const auto row_size = static_cast<size_t>(
      std::max<tmsize_t>(tiled ? TIFFTileRowSize(tiff) : TIFFScanlineSize(tiff), 0));
  const uint32_t block_width = tiled ? d.tile_width : d.width;
  uint32_t block_height = tiled ? d.tile_height : 1;
  if (!tiled && !by_rows) TIFFGetFieldDefaulted(tiff, TIFFTAG_ROWSPERSTRIP, &block_height);
  block_height = std::min(block_height, tiled ? block_height : d.height);
  const uint64_t row_bits = uint64_t{block_width} * d.bits * (d.planar ? 1 : d.samples);
  if (size <= 0 || block_height == 0 || row_size < (row_bits + 7) / 8) {
    errors.Fail("its rows are shorter than its width");
  }
  const uint64_t image_size = uint64_t{d.width} * d.bits * d.samples / 8 * d.height;
  if (static_cast<uint64_t>(size) > std::max(kUsualTile, 2 * image_size)) {
    errors.Fail("its tiles are far larger than the image");
  }
  std::vector<uint8_t> block(planes * static_cast<size_t>(size));
  std::vector<const uint8_t*> rows(planes);
  for (uint32_t top = 0; top < d.height; top += std::min(block_height, d.height - top)) {
    for (uint32_t left = 0; left < d.width; left += std::min(block_width, d.width - left)) {
      for (size_t p = 0; p < planes; ++p) {
        uint8_t* to = block.data() + p * static_cast<size_t>(size);
        const auto plane = static_cast<uint16_t>(p);
        const bool read =
            tiled     ? TIFFReadTile(tiff, to, left, top, 0, plane) >= 0
            : by_rows ? TIFFReadScanline(tiff, to, top, 0) == 1
                      : TIFFReadEncodedStrip(tiff, TIFFComputeStrip(tiff, top, plane), to, -1) >= 0;
        // Some decoders report an error and go on.
        if (!read || errors.any()) FailInRow(errors, top, d);
      }
      for (uint32_t r = 0; r < std::min(block_height, d.height - top); ++r) {
        for (size_t p = 0; p < planes; ++p) {
          rows[p] = block.data() + p * static_cast<size_t>(size) + r * row_size;
        }
        use(rows.data(), left, top + r, std::min(block_width, d.width - left));
      }
    }
  }
}

Image ReadBySamples(TIFF* tiff, const TiffDirectory& d, const TiffErrors& errors,
                    const Remark& remark) {
  TiffSamples samples(tiff, d, errors);
  const ImageSize size = {d.width, d.height, samples.bit_count()};
  CheckCompressedSize(size);
  Image image = NewImage(size, d.resolution);
  const Dib dib = *Dib::Open(image.get());
  if (dib.indexed()) SetColors(tiff, d, dib, errors);
  ReadBlocks(tiff, d, errors,
             [&](const uint8_t* const* planes, uint32_t x, uint32_t y, uint32_t pixels) {
               uint8_t* to = RowFromTop(dib, static_cast<int32_t>(y));
               samples.ToPixels(planes, pixels, to + size_t{x} * dib.bit_count() / 8);
             });
  if (samples.transparent()) remark(kAlphaRemark);
  if (samples.left_out()) remark("a channel of no stated meaning is left out");
  if (d.bits == 16) remark(kDepthRemark);
  return image;
}

struct EndImage {
  void operator()(TIFFRGBAImage* image) const { TIFFRGBAImageEnd(image); }
};

// By libtiff's own conversion, for kinds without alpha.
Image ReadByRgba(TIFF* tiff, const TiffDirectory& d, const TiffErrors& errors) {
  const ImageSize size = {d.width, d.height, 24};
  CheckCompressedSize(size);
  // The raster takes four bytes for each pixel.
  if (int64_t{d.width} * d.height > kMaxTiffAllocation / 4) {
    throw FileError("TIFF files of this kind are read up to " +
                    std::to_string(kMaxTiffAllocation / 4) + " pixels; this one has " +
                    PixelsText(size));
  }
  char why[1024] = "";
  TIFFRGBAImage reader = {};
  if (TIFFRGBAImageOK(tiff, why) == 0 || TIFFRGBAImageBegin(&reader, tiff, 1, why) == 0) {
    if (!errors.any()) throw FileError(std::string("unsupported TIFF data: ") + why);
    errors.Fail("unsupported TIFF data");
  }
  const std::unique_ptr<TIFFRGBAImage, EndImage> end(&reader);
  reader.orientation = reader.req_orientation = ORIENTATION_TOPLEFT;

  // Zeroed memory is not touched before pixels arrive in it.
  const auto raster = NewZeroedBuffer<uint32_t>(size_t{d.width} * d.height);
  if (!raster) throw std::bad_alloc();
  if (TIFFRGBAImageGet(&reader, raster.get(), d.width, d.height) == 0 || errors.any()) {
    errors.Fail("damaged TIFF data");
  }
  Image image = NewImage(size, d.resolution);
  const Dib dib = *Dib::Open(image.get());
  const uint32_t* from = raster.get();
  for (int32_t y = 0; y < dib.height(); ++y) {
    uint8_t* to = RowFromTop(dib, y);
    for (int32_t x = 0; x < dib.width(); ++x, ++from, to += 3) {
      to[0] = static_cast<uint8_t>(TIFFGetB(*from));
      to[1] = static_cast<uint8_t>(TIFFGetG(*from));
      to[2] = static_cast<uint8_t>(TIFFGetR(*from));
    }
  }
  return image;
}

void ReadMetadata(TIFF* tiff, const TiffDirectory& d, Metadata& metadata) {
  uint32_t size = 0;
  void* profile = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &size, &profile) != 0 && profile != nullptr) {
    const auto* bytes = static_cast<const uint8_t*>(profile);
    metadata.profile.assign(bytes, bytes + size);
  }
  metadata.jpeg = d.compression == COMPRESSION_JPEG;
}

std::optional<bool> IsGray(TIFF* tiff, const TiffDirectory& d, const TiffErrors& errors) {
  if (d.gray()) return true;
  if (d.photometric != PHOTOMETRIC_PALETTE || d.bits > 8) return {};
  const TiffPalette palette = ReadPalette(tiff, d, errors);
  return std::all_of(palette.begin(), palette.begin() + (1 << d.bits),
                     [](const auto& c) { return c[0] == c[1] && c[1] == c[2]; });
}

PageInfo InfoOf(TIFF* tiff, const TiffDirectory& d, const TiffErrors& errors) {
  PageInfo info = {d.width, d.height, 24, StoredOf(d), d.resolution, IsGray(tiff, d, errors)};
  if (TiffSamples::Takes(d)) info.bit_count = TiffSamples::DepthOf(d);
  uint64_t exif = 0;
  info.exif = TIFFGetField(tiff, TIFFTAG_EXIFIFD, &exif) != 0;
  TurnUpright(info, d.orientation);
  return info;
}

}  // namespace

size_t CountTiffPages(Bytes file) {
  TiffErrors errors;
  TiffMemory memory{file};
  const Tiff tiff = OpenTiffMemory(memory, errors);
  if (!tiff) errors.Fail("damaged TIFF data");
  const size_t pages = TIFFNumberOfDirectories(tiff.get());
  if (pages == 0 || errors.any()) errors.Fail("damaged TIFF data");
  return pages;
}

Image ReadTiff(Reading& reading) {
  TiffErrors errors;
  TiffMemory memory{reading.file};
  const Tiff tiff = OpenTiffMemory(memory, errors);
  if (!tiff) errors.Fail("damaged TIFF data");
  if (reading.page > 0 && TIFFSetDirectory(tiff.get(), static_cast<tdir_t>(reading.page)) != 1) {
    errors.Fail("page " + std::to_string(reading.page + 1) + " is damaged");
  }
  const TiffDirectory directory = ReadDirectory(tiff.get());
  if (errors.any()) errors.Fail("damaged TIFF data");
  CheckKind(directory);
  reading.info = InfoOf(tiff.get(), directory, errors);
  ReadMetadata(tiff.get(), directory, reading.metadata);
  reading.info.profile = reading.metadata.profile.size();
  if (!reading.pixels) return nullptr;
  if (reading.info.exif) reading.remark(kExifRemark);
  CheckFileHolds(directory, reading.file.size());
  Image image = TiffSamples::Takes(directory)
                    ? ReadBySamples(tiff.get(), directory, errors, reading.remark)
                    : ReadByRgba(tiff.get(), directory, errors);
  return Upright(std::move(image), directory.orientation);
}

}  // namespace omb
