// TIFF through libtiff: the common kinds row by row with their depth, all others by its RGBA
// reader. Errors come as return values, their text by a handler of the one open file.
#include <tiffio.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <vector>

#include "core/buffer.h"
#include "files/codec.h"
#include "files/pixels_in.h"
#include "files/pixels_out.h"

namespace omb {

using namespace ombrilo;

namespace {

constexpr double kInch = 0.0254;  // meters
constexpr tmsize_t kMaxAllocation = tmsize_t{1} << 30;

struct Errors {
  char text[300] = "";  // the first one

  [[noreturn]] void Fail(const char* what) const {
    throw FileError(text[0] == '\0' ? what : std::string(what) + ": " + text);
  }
};

int OnError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
  auto* errors = static_cast<Errors*>(user);
  if (errors->text[0] == '\0') {
    char text[sizeof errors->text];
    std::vsnprintf(text, sizeof text, format, arguments);
    // Some texts begin with the name of the file, which has none here.
    std::strcpy(errors->text, std::strncmp(text, ": ", 2) == 0 ? text + 2 : text);
  }
  return 1;
}

int OnWarning(TIFF*, void*, const char*, const char*, va_list) { return 1; }

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

// What libtiff does to a file in memory or to a stream.
struct Access {
  TIFFReadWriteProc read, write;
  TIFFSeekProc seek;
  TIFFSizeProc size;
};

Tiff OpenTiff(const char* mode, thandle_t handle, const Access& access, Errors& errors) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
      TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxAllocation);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, &errors);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnWarning, nullptr);
  const TIFFCloseProc close = [](thandle_t) { return 0; };
  return Tiff(TIFFClientOpenExt("", mode, handle, access.read, access.write, access.seek, close,
                                access.size, nullptr, nullptr, options.get()));
}

struct MemoryFile {
  Bytes bytes;
  uint64_t position = 0;
};

const Access kMemoryAccess = {
    .read = [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
      auto* file = static_cast<MemoryFile*>(handle);
      const uint64_t size = file->bytes.size();
      const uint64_t rest = size - std::min(file->position, size);
      const uint64_t taken = std::min(rest, static_cast<uint64_t>(std::max<tmsize_t>(count, 0)));
      if (taken != 0) std::memcpy(to, file->bytes.data() + file->position, taken);
      file->position += taken;
      return static_cast<tmsize_t>(taken);
    },
    .write = [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
    .seek = [](thandle_t handle, toff_t offset, int whence) -> toff_t {
      auto* file = static_cast<MemoryFile*>(handle);
      const uint64_t base = whence == SEEK_CUR   ? file->position
                            : whence == SEEK_END ? file->bytes.size()
                                                 : 0;
      return file->position = base + offset;
    },
    .size = [](thandle_t handle) -> toff_t {
      return static_cast<MemoryFile*>(handle)->bytes.size();
    },
};

const Access kStreamAccess = {
    .read = [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
      return static_cast<tmsize_t>(
          std::fread(to, 1, static_cast<size_t>(count), static_cast<std::FILE*>(handle)));
    },
    .write = [](thandle_t handle, void* from, tmsize_t count) -> tmsize_t {
      return static_cast<tmsize_t>(
          std::fwrite(from, 1, static_cast<size_t>(count), static_cast<std::FILE*>(handle)));
    },
    .seek = [](thandle_t handle, toff_t offset, int whence) -> toff_t {
      auto* stream = static_cast<std::FILE*>(handle);
      if (fseeko(stream, static_cast<off_t>(offset), whence) != 0) return static_cast<toff_t>(-1);
      return static_cast<toff_t>(ftello(stream));
    },
    .size = [](thandle_t handle) -> toff_t {
      auto* stream = static_cast<std::FILE*>(handle);
      const off_t position = ftello(stream);
      fseeko(stream, 0, SEEK_END);
      const off_t size = ftello(stream);
      fseeko(stream, position, SEEK_SET);
      return static_cast<toff_t>(size);
    },
};

struct Directory {
  uint32_t width = 0, height = 0;
  uint16_t bits = 1, samples = 1, photometric = 0, planar = 1, orientation = 1, sample_format = 1;
  uint16_t compression = 1;
  uint32_t tile_width = 0, tile_height = 0;  // 0 where rows come in strips
  Resolution resolution;
};

uint16_t ShortField(TIFF* tiff, uint32_t tag, uint16_t otherwise) {
  uint16_t value = otherwise;
  return TIFFGetFieldDefaulted(tiff, tag, &value) != 0 ? value : otherwise;
}

Resolution ReadResolution(TIFF* tiff) {
  float x = 0, y = 0;
  if (TIFFGetField(tiff, TIFFTAG_XRESOLUTION, &x) == 0) x = 0;
  if (TIFFGetField(tiff, TIFFTAG_YRESOLUTION, &y) == 0) y = 0;
  const uint16_t unit = ShortField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) return {};
  const double length = unit == RESUNIT_INCH ? kInch : 0.01;
  return {DotsPerMeter(x, length), DotsPerMeter(y, length)};
}

Directory ReadDirectory(TIFF* tiff) {
  Directory d;
  TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &d.width);
  TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &d.height);
  d.bits = ShortField(tiff, TIFFTAG_BITSPERSAMPLE, 1);
  d.samples = ShortField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
  d.photometric = ShortField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISWHITE);
  d.planar = ShortField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  d.orientation = ShortField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  d.sample_format = ShortField(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  d.compression = ShortField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
  if (TIFFIsTiled(tiff) != 0) {
    TIFFGetField(tiff, TIFFTAG_TILEWIDTH, &d.tile_width);
    TIFFGetField(tiff, TIFFTAG_TILELENGTH, &d.tile_height);
  }
  d.resolution = ReadResolution(tiff);
  return d;
}

// Brings pixels as libtiff gives them to those of an image.
using Convert = void (*)(const uint8_t* from, size_t pixels, uint8_t* to);

template <int kBits>
void CopyBits(const uint8_t* from, size_t pixels, uint8_t* to) {
  std::memcpy(to, from, (pixels * kBits + 7) / 8);
}

unsigned WideSample(const uint8_t* samples, size_t i) {
  uint16_t sample;
  std::memcpy(&sample, samples + 2 * i, sizeof sample);
  return sample;
}

void ReduceGray(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t x = 0; x < pixels; ++x) to[x] = ReduceSample(WideSample(from, x));
}

void SwapColors(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t i = 0; i < 3 * pixels; i += 3) {
    to[i] = from[i + 2];
    to[i + 1] = from[i + 1];
    to[i + 2] = from[i];
  }
}

void ReduceColors(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t i = 0; i < 3 * pixels; i += 3) {
    for (size_t c = 0; c < 3; ++c) to[i + c] = ReduceSample(WideSample(from, i + 2 - c));
  }
}

struct Kind {
  uint16_t bit_count;
  Convert convert;
};

// The images whose rows are read as they stand.
std::optional<Kind> DirectKind(const Directory& d) {
  const bool integers =
      d.sample_format == SAMPLEFORMAT_UINT || d.sample_format == SAMPLEFORMAT_VOID;
  if (d.orientation != ORIENTATION_TOPLEFT || !integers || d.tile_width % 8 != 0) return {};
  const bool gray =
      d.photometric == PHOTOMETRIC_MINISWHITE || d.photometric == PHOTOMETRIC_MINISBLACK;
  if (d.samples == 1 && (gray || d.photometric == PHOTOMETRIC_PALETTE)) {
    if (d.bits == 1) return Kind{1, CopyBits<1>};
    if (d.bits == 2) return Kind{4, ExpandTwoBits};
    if (d.bits == 4) return Kind{4, CopyBits<4>};
    if (d.bits == 8) return Kind{8, CopyBits<8>};
    if (d.bits == 16 && gray) return Kind{8, ReduceGray};
  }
  if (d.samples == 3 && d.planar == PLANARCONFIG_CONTIG && d.photometric == PHOTOMETRIC_RGB) {
    if (d.bits == 8) return Kind{24, SwapColors};
    if (d.bits == 16) return Kind{24, ReduceColors};
  }
  return {};
}

void SetColors(TIFF* tiff, const Directory& d, const Dib& dib, const Errors& errors) {
  const uint32_t count = 1u << std::min<uint16_t>(d.bits, 8);
  if (d.photometric != PHOTOMETRIC_PALETTE) {
    SetGrayRamp(dib, count, d.photometric == PHOTOMETRIC_MINISWHITE);
    return;
  }
  uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue) == 0) {
    errors.Fail("the color table is missing");
  }
  // Old writers stored 8 bits where 16 belong.
  uint16_t highest = 0;
  for (uint32_t i = 0; i < count; ++i) highest = std::max({highest, red[i], green[i], blue[i]});
  const int shift = highest > 255 ? 8 : 0;
  for (uint32_t i = 0; i < count; ++i) {
    SetColor(dib, i, static_cast<uint8_t>(red[i] >> shift), static_cast<uint8_t>(green[i] >> shift),
             static_cast<uint8_t>(blue[i] >> shift));
  }
}

[[noreturn]] void FailInRow(const Errors& errors, int32_t y, const Dib& dib) {
  const std::string where =
      "damaged TIFF data in row " + std::to_string(y + 1) + " of " + std::to_string(dib.height());
  errors.Fail(where.c_str());
}

void ReadStrips(TIFF* tiff, Convert convert, const Dib& dib, const Errors& errors) {
  std::vector<uint8_t> row(static_cast<size_t>(std::max<tmsize_t>(TIFFScanlineSize(tiff), 0)));
  for (int32_t y = 0; y < dib.height(); ++y) {
    // Some decoders report an error and go on.
    const bool read = TIFFReadScanline(tiff, row.data(), static_cast<uint32_t>(y), 0) == 1;
    if (!read || errors.text[0] != '\0') FailInRow(errors, y, dib);
    convert(row.data(), static_cast<size_t>(dib.width()), RowFromTop(dib, y));
  }
}

void ReadTiles(TIFF* tiff, const Directory& d, Convert convert, const Dib& dib,
               const Errors& errors) {
  const tmsize_t tile_size = TIFFTileSize(tiff);
  const tmsize_t row_size = TIFFTileRowSize(tiff);
  if (tile_size <= 0 || row_size <= 0 || tile_size > kMaxAllocation) {
    errors.Fail("the tiles are too large");
  }
  std::vector<uint8_t> tile(static_cast<size_t>(tile_size));
  for (uint32_t top = 0; top < d.height; top += std::min(d.tile_height, d.height - top)) {
    for (uint32_t left = 0; left < d.width; left += std::min(d.tile_width, d.width - left)) {
      const bool read = TIFFReadTile(tiff, tile.data(), left, top, 0, 0) >= 0;
      if (!read || errors.text[0] != '\0') FailInRow(errors, static_cast<int32_t>(top), dib);
      const uint32_t rows = std::min(d.tile_height, d.height - top);
      for (uint32_t r = 0; r < rows; ++r) {
        convert(
            tile.data() + r * static_cast<size_t>(row_size), std::min(d.tile_width, d.width - left),
            RowFromTop(dib, static_cast<int32_t>(top + r)) + size_t{left} * dib.bit_count() / 8);
      }
    }
  }
}

Image ReadDirect(TIFF* tiff, const Directory& d, const Kind& kind, const Errors& errors) {
  const ImageSize size = {d.width, d.height, kind.bit_count};
  CheckCompressedSize(size);
  const uint64_t row_bits = uint64_t{d.width} * d.bits * d.samples;
  if (d.tile_width == 0 && static_cast<uint64_t>(TIFFScanlineSize(tiff)) < (row_bits + 7) / 8) {
    errors.Fail("its rows are shorter than its width");
  }
  Image image = NewImage(size, d.resolution);
  const Dib dib = *Dib::Open(image.get());
  if (dib.indexed()) SetColors(tiff, d, dib, errors);
  if (d.tile_width != 0) {
    ReadTiles(tiff, d, kind.convert, dib, errors);
  } else {
    ReadStrips(tiff, kind.convert, dib, errors);
  }
  return image;
}

struct EndImage {
  void operator()(TIFFRGBAImage* image) const { TIFFRGBAImageEnd(image); }
};

// Where a stored pixel stands in the picture, by the orientation's number. From 5 on, stored rows
// are columns.
struct Turn {
  bool swapped, right, bottom;
  explicit Turn(uint16_t orientation)
      : swapped(orientation >= 5 && orientation <= 8),
        right(orientation == 2 || orientation == 3 || orientation == 6 || orientation == 7),
        bottom(orientation == 3 || orientation == 4 || orientation == 7 || orientation == 8) {}
};

// How many bytes one byte of compressed data can become.
uint64_t MostInflated(int compression) {
  switch (compression) {
    case COMPRESSION_NONE:
      return 1;
    case COMPRESSION_PACKBITS:
      return 64;
    case COMPRESSION_LZW:
      return 4096;
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
      return 1032;
    default:
      return std::numeric_limits<uint32_t>::max();
  }
}

// By libtiff's own conversion of everything that it knows. Alpha comes multiplied into the colors.
Image ReadByRgba(TIFF* tiff, const Directory& d, const Errors& errors, const Remark& remark) {
  const Turn turn(d.orientation);
  ImageSize size = {d.width, d.height, 24};
  CheckSize(size);
  // The raster takes four bytes for each pixel, and a blank fax can claim any number of them.
  if (int64_t{d.width} * d.height > kMaxAllocation / 4) {
    throw FileError("TIFF files of this kind are read up to " + std::to_string(kMaxAllocation / 4) +
                    " pixels; this one has " + PixelsText(size));
  }
  Resolution resolution = d.resolution;
  if (turn.swapped) {
    std::swap(size.width, size.height);
    std::swap(resolution.x, resolution.y);
  }
  char why[1024] = "";
  TIFFRGBAImage reader = {};
  if (TIFFRGBAImageOK(tiff, why) == 0 || TIFFRGBAImageBegin(&reader, tiff, 1, why) == 0) {
    if (errors.text[0] == '\0') throw FileError(std::string("unsupported TIFF data: ") + why);
    errors.Fail("unsupported TIFF data");
  }
  const std::unique_ptr<TIFFRGBAImage, EndImage> end(&reader);
  reader.orientation = reader.req_orientation = ORIENTATION_TOPLEFT;

  // Zeroed memory is not touched before pixels arrive in it.
  const auto raster = NewZeroedBuffer<uint32_t>(size_t{d.width} * d.height);
  if (!raster) throw std::bad_alloc();
  if (TIFFRGBAImageGet(&reader, raster.get(), d.width, d.height) == 0 || errors.text[0] != '\0') {
    errors.Fail("damaged TIFF data");
  }
  Image image = NewImage(size, resolution);
  const Dib dib = *Dib::Open(image.get());
  bool transparent = false;
  for (int32_t y = 0; y < dib.height(); ++y) {
    uint8_t* to = RowFromTop(dib, y);
    for (int32_t x = 0; x < dib.width(); ++x, to += 3) {
      const int32_t across = turn.right ? dib.width() - 1 - x : x;
      const int32_t down = turn.bottom ? dib.height() - 1 - y : y;
      const auto row = static_cast<size_t>(turn.swapped ? across : down);
      const auto column = static_cast<size_t>(turn.swapped ? down : across);
      const uint32_t pixel = raster[row * d.width + column];
      const uint32_t white = 255 - TIFFGetA(pixel);
      transparent = transparent || white != 0;
      to[0] = static_cast<uint8_t>(std::min<uint32_t>(TIFFGetB(pixel) + white, 255));
      to[1] = static_cast<uint8_t>(std::min<uint32_t>(TIFFGetG(pixel) + white, 255));
      to[2] = static_cast<uint8_t>(std::min<uint32_t>(TIFFGetR(pixel) + white, 255));
    }
  }
  if (transparent) remark(kAlphaRemark);
  return image;
}

enum class Photometric { kMinIsBlack, kMinIsWhite, kPalette, kRgb };

Photometric PhotometricOf(const Picture& picture) {
  if (!picture.indexed()) return Photometric::kRgb;
  if (picture.GrayRamp()) return Photometric::kMinIsBlack;
  return picture.bit_count() == 1 && picture.GrayRamp(true) ? Photometric::kMinIsWhite
                                                            : Photometric::kPalette;
}

void SetFields(TIFF* tiff, const Picture& picture, Photometric kind) {
  static constexpr int kValues[] = {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE,
                                    PHOTOMETRIC_PALETTE, PHOTOMETRIC_RGB};
  const bool color = kind == Photometric::kRgb;
  const int bits = color ? 8 : picture.bit_count();
  const bool bilevel = bits == 1 && kind != Photometric::kPalette;
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(picture.width()));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(picture.height()));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, bits);
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, color ? 3 : 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kValues[static_cast<int>(kind)]);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, bilevel ? COMPRESSION_CCITTFAX4 : COMPRESSION_LZW);
  if (bits == 8 && kind != Photometric::kPalette) {
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  }
  // Every strip of a fax starts again from a white row, so one is best.
  const auto all_rows = static_cast<uint32_t>(picture.height());
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, bilevel ? all_rows : TIFFDefaultStripSize(tiff, 0));
  if (kind == Photometric::kPalette) {
    uint16_t colors[3][256];
    for (int i = 0; i < picture.colors(); ++i) {
      colors[0][i] = static_cast<uint16_t>(picture.red(i) * 257);
      colors[1][i] = static_cast<uint16_t>(picture.green(i) * 257);
      colors[2][i] = static_cast<uint16_t>(picture.blue(i) * 257);
    }
    TIFFSetField(tiff, TIFFTAG_COLORMAP, colors[0], colors[1], colors[2]);
  }
  const Resolution resolution = picture.resolution();
  if (resolution.x > 0 && resolution.y > 0) {
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, resolution.x * kInch);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, resolution.y * kInch);
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  }
}

bool WriteRows(TIFF* tiff, const Picture& picture) {
  const auto pixels = static_cast<size_t>(picture.width());
  const size_t row_size = (pixels * picture.bit_count() + 7) / 8;
  std::vector<uint8_t> row(row_size);  // which the predictor changes
  for (int32_t y = 0; y < picture.height(); ++y) {
    if (picture.indexed()) {
      std::memcpy(row.data(), picture.row(y), row_size);
    } else {
      SwapColors(picture.row(y), pixels, row.data());
    }
    if (TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y), 0) != 1) return false;
  }
  return true;
}

}  // namespace

Image ReadTiff(Bytes file, const Remark& remark) {
  Errors errors;
  MemoryFile memory{file};
  const Tiff tiff = OpenTiff("rm", &memory, kMemoryAccess, errors);
  if (!tiff) errors.Fail("damaged TIFF data");
  const Directory directory = ReadDirectory(tiff.get());
  if (errors.text[0] != '\0') errors.Fail("damaged TIFF data");
  // Each pixel has a sample of its own at least.
  const uint64_t pixels = uint64_t{directory.width} * directory.height;
  if (pixels * directory.bits / 8 / MostInflated(directory.compression) > file.size()) {
    throw FileError("the file is too short for " +
                    PixelsText({directory.width, directory.height, directory.bits}));
  }
  const bool more_pages = TIFFLastDirectory(tiff.get()) == 0;
  const std::optional<Kind> kind = DirectKind(directory);
  Image image = kind ? ReadDirect(tiff.get(), directory, *kind, errors)
                     : ReadByRgba(tiff.get(), directory, errors, remark);
  if (more_pages) remark("it has several pages; the first one is read");
  return image;
}

void WriteTiff(const PackedDib* dib, std::FILE* file) {
  const Picture picture(dib);
  Errors errors;
  Tiff tiff = OpenTiff("w", file, kStreamAccess, errors);
  if (!tiff) errors.Fail("cannot be written");
  SetFields(tiff.get(), picture, PhotometricOf(picture));
  const bool written = WriteRows(tiff.get(), picture);
  tiff.reset();  // writes the directory
  if (!written || errors.text[0] != '\0') errors.Fail("cannot be written");
}

}  // namespace omb
