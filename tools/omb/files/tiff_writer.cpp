// TIFF files written by libtiff, a directory for each page.
#include <cstring>
#include <vector>

#include "files/metadata.h"
#include "files/pixels_out.h"
#include "files/tiff_handle.h"

namespace omb {

using namespace ombrilo;

namespace {

enum class Photometric { kMinIsBlack, kMinIsWhite, kPalette, kRgb };

Photometric PhotometricOf(const Picture& picture) {
  if (!picture.indexed()) return Photometric::kRgb;
  if (picture.GrayRamp()) return Photometric::kMinIsBlack;
  return picture.bit_count() == 1 && picture.GrayRamp(true) ? Photometric::kMinIsWhite
                                                            : Photometric::kPalette;
}

// JPEG data hold gray levels and colors alone.
bool FitsJpeg(const Picture& picture, Photometric kind) {
  return kind == Photometric::kRgb ||
         (kind == Photometric::kMinIsBlack && picture.bit_count() == 8);
}

bool IsBilevel(const Picture& picture, Photometric kind) {
  return picture.bit_count() == 1 && kind != Photometric::kPalette;
}

int CompressionOf(const Picture& picture, Photometric kind, const Metadata& metadata,
                  const Writing& writing) {
  const bool bilevel = IsBilevel(picture, kind);
  const auto& wanted = writing.options.compression;
  if (!wanted) {
    if (metadata.jpeg && FitsJpeg(picture, kind)) return COMPRESSION_JPEG;
    if (metadata.jpeg)
      writing.remark("its JPEG compression is not kept: the pixels are no longer colors");
    return bilevel ? COMPRESSION_CCITTFAX4 : COMPRESSION_LZW;
  }
  static constexpr int kNumbers[] = {COMPRESSION_NONE, COMPRESSION_PACKBITS,
                                     COMPRESSION_LZW,  COMPRESSION_ADOBE_DEFLATE,
                                     COMPRESSION_JPEG, COMPRESSION_CCITTFAX4};
  size_t i = 0;
  while (*wanted != kTiffCompressions[i]) ++i;
  const int number = kNumbers[i];
  if (number == COMPRESSION_CCITTFAX4 && !bilevel) {
    throw FileError("g4 compression is for black and white alone; try binary first");
  }
  if (number == COMPRESSION_JPEG && !FitsJpeg(picture, kind)) {
    throw FileError("jpeg compression is for 8-bit gray and 24-bit images");
  }
  return number;
}

void SetPalette(TIFF* tiff, const Picture& picture) {
  uint16_t colors[3][256];
  for (int i = 0; i < picture.colors(); ++i) {
    colors[0][i] = static_cast<uint16_t>(picture.red(i) * 257);
    colors[1][i] = static_cast<uint16_t>(picture.green(i) * 257);
    colors[2][i] = static_cast<uint16_t>(picture.blue(i) * 257);
  }
  TIFFSetField(tiff, TIFFTAG_COLORMAP, colors[0], colors[1], colors[2]);
}

void SetCompression(TIFF* tiff, int compression, const Picture& picture, Photometric kind,
                    const WriteOptions& options) {
  TIFFSetField(tiff, TIFFTAG_COMPRESSION, compression);
  const bool predictable =
      compression == COMPRESSION_LZW || compression == COMPRESSION_ADOBE_DEFLATE;
  if (predictable && picture.bit_count() >= 8 && kind != Photometric::kPalette) {
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
  }
  if (compression == COMPRESSION_JPEG) {
    TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, options.quality);
    if (kind == Photometric::kRgb) {
      TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_YCBCR);
      TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    }
  }
  // Every strip of a fax starts again from a white row, so one is best.
  const bool fax = compression == COMPRESSION_CCITTFAX4;
  TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
               fax ? static_cast<uint32_t>(picture.height()) : TIFFDefaultStripSize(tiff, 0));
}

void SetFields(TIFF* tiff, const Picture& picture, Photometric kind) {
  static constexpr int kValues[] = {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE,
                                    PHOTOMETRIC_PALETTE, PHOTOMETRIC_RGB};
  const bool color = kind == Photometric::kRgb;
  TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, static_cast<uint32_t>(picture.width()));
  TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, static_cast<uint32_t>(picture.height()));
  TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, color ? 8 : picture.bit_count());
  TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, color ? 3 : 1);
  TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, kValues[static_cast<int>(kind)]);
  TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
  TIFFSetField(tiff, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
  if (kind == Photometric::kPalette) SetPalette(tiff, picture);
  const Resolution resolution = picture.resolution();
  if (resolution.x > 0 && resolution.y > 0) {
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION, DotsPerInch(resolution.x));
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION, DotsPerInch(resolution.y));
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
  }
}

bool WriteRows(TIFF* tiff, const Picture& picture) {
  const auto pixels = static_cast<size_t>(picture.width());
  const size_t row_size = (pixels * picture.bit_count() + 7) / 8;
  std::vector<uint8_t> row(row_size);  // which the predictor changes
  for (int32_t y = 0; y < picture.height(); ++y) {
    std::memcpy(row.data(), picture.row(y), row_size);
    for (size_t i = 0; !picture.indexed() && i < row_size; i += 3) std::swap(row[i], row[i + 2]);
    if (TIFFWriteScanline(tiff, row.data(), static_cast<uint32_t>(y), 0) != 1) return false;
  }
  return true;
}

class Pages : public TiffPages {
 public:
  explicit Pages(const Writing& writing) : writing_(writing) {
    tiff_ = OpenTiffOutput(writing_.out, errors_);
    if (!tiff_) errors_.Fail("cannot be written");
  }

  void Add(const PackedDib* dib, const Metadata& metadata) override {
    const Picture picture(dib);
    const Photometric kind = PhotometricOf(picture);
    const Bytes profile =
        ProfileFor(metadata, kind == Photometric::kMinIsBlack || kind == Photometric::kMinIsWhite,
                   writing_.remark);
    if (!metadata.exif.empty()) writing_.remark(kExifRemark);
    SetFields(tiff_.get(), picture, kind);
    SetCompression(tiff_.get(), CompressionOf(picture, kind, metadata, writing_), picture, kind,
                   writing_.options);
    if (!profile.empty()) {
      TIFFSetField(tiff_.get(), TIFFTAG_ICCPROFILE, static_cast<uint32_t>(profile.size()),
                   profile.data());
    }
    const bool written = WriteRows(tiff_.get(), picture);
    if (!written || TIFFWriteDirectory(tiff_.get()) != 1 || errors_.any()) {
      errors_.Fail("cannot be written");
    }
  }

  void Finish() override {
    tiff_.reset();
    if (errors_.any()) errors_.Fail("cannot be written");
  }

 private:
  Writing writing_;
  TiffErrors errors_;
  Tiff tiff_;
};

}  // namespace

std::unique_ptr<TiffPages> WriteTiff(const Writing& writing) {
  return std::make_unique<Pages>(writing);
}

}  // namespace omb
