// PNG through libpng.
//
// libpng reports errors by a jump. Run() is the only place where one lands: nothing with a
// destructor may live in the functions that it is given, and nothing may throw in callbacks.
#include <png.h>

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <new>

#include "files/codec.h"
#include "files/metadata.h"
#include "files/pixels_in.h"
#include "files/pixels_out.h"
#include "text.h"

namespace omb {

using namespace ombrilo;

namespace {

constexpr char kEnded[] = "the file ends early";

struct Errors {
  char text[200] = "";
};

[[noreturn]] void OnError(png_structp png, png_const_charp text) {
  auto* errors = static_cast<Errors*>(png_get_error_ptr(png));
  std::snprintf(errors->text, sizeof errors->text, "%s", text);
  png_longjmp(png, 1);
}

void OnWarning(png_structp, png_const_charp) {}

// False when libpng has reported an error.
template <class Work>
[[gnu::noinline]] bool Run(png_structp png, Work& work) {
  if (setjmp(png_jmpbuf(png)) != 0) return false;
  work();
  return true;
}

struct Input {
  Bytes rest;
};

void OnRead(png_structp png, png_bytep to, size_t count) {
  auto* input = static_cast<Input*>(png_get_io_ptr(png));
  if (input->rest.size() < count) png_error(png, kEnded);
  std::memcpy(to, input->rest.data(), count);
  input->rest = input->rest.subspan(count);
}

// What libpng's own transformations cannot do to a row.
struct RowWork {
  bool transparent = false;  // a pixel was
};

// 2 bits become 4, and gray or color samples with alpha are composed on white.
void OnRow(png_structp png, png_row_infop row, png_bytep data) {
  if (row->bit_depth == 2) return ExpandTwoBits(data, row->width, data);
  auto* work = static_cast<RowWork*>(png_get_user_transform_ptr(png));
  const unsigned samples = row->channels - 1u;
  const png_byte* from = data;
  png_byte* to = data;
  for (png_uint_32 x = 0; x < row->width; ++x, from += samples + 1, to += samples) {
    const unsigned alpha = from[samples];
    work->transparent = work->transparent || alpha != 255;
    for (unsigned i = 0; i < samples; ++i) to[i] = OnWhite(from[i], alpha);
  }
}

struct Header {
  png_uint_32 width, height;
  int bit_depth, color_type;
  size_t row_bytes;
  Resolution resolution;
  png_colorp colors;
  int color_count;
  png_bytep alphas;
  int alpha_count;
  png_color_16p key;  // the color that is transparent; null when there is none
  bool transparency;
  png_bytep profile;
  png_uint_32 profile_size;
  png_bytep exif;
  png_uint_32 exif_size;

  bool palette() const { return color_type == PNG_COLOR_TYPE_PALETTE; }
  bool gray() const { return color_type == PNG_COLOR_TYPE_GRAY; }
  bool color() const { return (color_type & PNG_COLOR_MASK_COLOR) != 0 && !palette(); }
  // A transparent gray of at most 8 bits needs no alpha: it is an entry of the table.
  bool key_to_alpha() const { return transparency && (color() || (gray() && bit_depth == 16)); }
  bool alpha() const { return (color_type & PNG_COLOR_MASK_ALPHA) != 0 || key_to_alpha(); }
  uint16_t target_bits() const {
    if (color()) return 24;
    return static_cast<uint16_t>(bit_depth == 2 ? 4 : std::min(bit_depth, 8));
  }
};

// Chunks that are not needed. Each can claim to be any size, or reach it when it is inflated.
constexpr png_byte kUnused[] = "bKGD\0hIST\0iTXt\0oFFs\0pCAL\0sCAL\0sPLT\0tEXt\0tIME\0zTXt";
constexpr int kUnusedCount = sizeof kUnused / 5;
// The limit of a color profile when it is inflated.
constexpr png_alloc_size_t kLargestChunk = 4 << 20;

class Reader {
 public:
  explicit Reader(Bytes file) : input_{file} {
    png_ = png_create_read_struct(PNG_LIBPNG_VER_STRING, &errors_, OnError, OnWarning);
    if (png_ == nullptr) throw std::bad_alloc();
    auto prepare = [&] {
      info_ = png_create_info_struct(png_);
      if (info_ == nullptr) png_error(png_, "out of memory");
      png_set_read_fn(png_, &input_, OnRead);
      png_set_keep_unknown_chunks(png_, PNG_HANDLE_CHUNK_NEVER, kUnused, kUnusedCount);
      png_set_chunk_malloc_max(png_, std::max(kLargestChunk, png_alloc_size_t{file.size()}));
    };
    // A constructor that throws runs no destructor.
    if (!Run(png_, prepare)) {
      png_destroy_read_struct(&png_, &info_, nullptr);
      Fail();
    }
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() { png_destroy_read_struct(&png_, &info_, nullptr); }

  Header ReadHeader() {
    Header header = {};
    auto read = [&] {
      png_read_info(png_, info_);
      png_get_IHDR(png_, info_, &header.width, &header.height, &header.bit_depth,
                   &header.color_type, nullptr, nullptr, nullptr);
      header.row_bytes = png_get_rowbytes(png_, info_);
      png_uint_32 x = 0, y = 0;
      int unit = PNG_RESOLUTION_UNKNOWN;
      png_get_pHYs(png_, info_, &x, &y, &unit);
      if (unit == PNG_RESOLUTION_METER) {
        header.resolution = {DotsPerMeter(x, 1), DotsPerMeter(y, 1)};
      }
      png_get_PLTE(png_, info_, &header.colors, &header.color_count);
      header.transparency =
          png_get_tRNS(png_, info_, &header.alphas, &header.alpha_count, &header.key) != 0;
      png_charp name = nullptr;
      int compression = 0;
      png_get_iCCP(png_, info_, &name, &compression, &header.profile, &header.profile_size);
      png_get_eXIf_1(png_, info_, &header.exif_size, &header.exif);
    };
    if (!Run(png_, read)) Fail();
    return header;
  }

  // True when a pixel was transparent.
  bool ReadRows(const Header& header, const Dib& dib) {
    RowWork row_work;
    auto read = [&] {
      if (header.bit_depth == 16) png_set_scale_16(png_);
      if (header.key_to_alpha()) png_set_tRNS_to_alpha(png_);
      if (header.color()) png_set_bgr(png_);
      if (header.bit_depth == 2 || header.alpha()) {
        png_set_read_user_transform_fn(png_, OnRow);
        png_set_user_transform_info(png_, &row_work, header.bit_depth == 2 ? 4 : 8,
                                    header.color() ? 3 : 1);
      }
      const int passes = png_set_interlace_handling(png_);
      png_read_update_info(png_, info_);
      if (png_get_rowbytes(png_, info_) > dib.stride()) png_error(png_, "unexpected row length");
      for (int pass = 0; pass < passes; ++pass) {
        for (int32_t y = 0; y < dib.height(); ++y) {
          png_read_row(png_, RowFromTop(dib, y), nullptr);
        }
      }
      png_read_end(png_, nullptr);
    };
    if (!Run(png_, read)) Fail();
    return row_work.transparent;
  }

 private:
  [[noreturn]] void Fail() const {
    if (std::strcmp(errors_.text, kEnded) == 0) throw FileError(kEnded);
    throw FileError(std::string("damaged PNG data: ") + errors_.text);
  }

  Input input_;
  Errors errors_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

// True when a color was transparent.
bool SetColors(const Header& header, const Dib& dib) {
  if (!header.palette()) {
    const uint32_t count = 1u << std::min(header.bit_depth, 8);
    SetGrayRamp(dib, count);
    const bool keyed = header.transparency && header.bit_depth <= 8 && header.gray();
    if (keyed && header.key->gray < count) SetColor(dib, header.key->gray, 255, 255, 255);
    return keyed;
  }
  bool transparent = false;
  const int count = std::min(header.color_count, 1 << header.bit_depth);
  for (int i = 0; i < count; ++i) {
    const png_color& color = header.colors[i];
    const unsigned alpha = i < header.alpha_count ? header.alphas[i] : 255u;
    transparent = transparent || alpha != 255;
    SetColor(dib, static_cast<uint32_t>(i), OnWhite(color.red, alpha), OnWhite(color.green, alpha),
             OnWhite(color.blue, alpha));
  }
  return transparent;
}

std::string StoredOf(const Header& h) {
  const std::string bits = BitsText(h.bit_depth);
  if (h.palette()) return bits + " of a palette" + (h.transparency ? " with alpha" : "");
  return bits + (h.color() ? " each of red, green, blue" : " of gray") +
         (h.alpha() || h.transparency ? " with alpha" : "");
}

std::optional<bool> IsGray(const Header& header) {
  if (!header.palette()) return header.color() ? std::nullopt : std::optional(true);
  const auto gray = [](const png_color& c) { return c.red == c.green && c.green == c.blue; };
  return std::all_of(header.colors, header.colors + header.color_count, gray);
}

// Returns the orientation.
int ReadMetadata(const Header& header, Reading& reading) {
  if (header.profile_size > 0) {
    reading.metadata.profile.assign(header.profile, header.profile + header.profile_size);
  }
  int orientation = 1;
  if (header.exif_size > 0) {
    std::vector<uint8_t>& exif = reading.metadata.exif;
    exif = ExifBlock({header.exif, header.exif_size});
    orientation = ReadExif(exif).orientation;
  }
  reading.info = {header.width,      header.height,  header.target_bits(), StoredOf(header),
                  header.resolution, IsGray(header), header.profile_size,  header.exif_size > 0};
  TurnUpright(reading.info, orientation);
  return orientation;
}

void OnWrite(png_structp png, png_bytep bytes, size_t count) {
  if (!static_cast<Output*>(png_get_io_ptr(png))->Write(bytes, count))
    png_error(png, "not written");
}

void OnFlush(png_structp) {}

class Writer {
 public:
  explicit Writer(const Writing& writing) : writing_(writing) {
    png_ = png_create_write_struct(PNG_LIBPNG_VER_STRING, &errors_, OnError, OnWarning);
    if (png_ == nullptr) throw std::bad_alloc();
    auto prepare = [&] {
      info_ = png_create_info_struct(png_);
      if (info_ == nullptr) png_error(png_, "out of memory");
      png_set_write_fn(png_, &writing_.out, OnWrite, OnFlush);
    };
    if (!Run(png_, prepare)) {
      png_destroy_write_struct(&png_, &info_);
      Fail();
    }
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { png_destroy_write_struct(&png_, &info_); }

  void Write(const Picture& picture, const Metadata& metadata) {
    const bool gray = picture.indexed() && picture.GrayRamp();
    const Bytes profile = ProfileFor(metadata, gray, writing_.remark);
    std::vector<uint8_t> exif =
        ExifFor(metadata, picture.width(), picture.height(), writing_.remark);
    const auto& level = writing_.options.compression;
    const int compression = level ? level->front() - '0' : -1;
    auto write = [&] {
      const int color_type = gray                ? PNG_COLOR_TYPE_GRAY
                             : picture.indexed() ? PNG_COLOR_TYPE_PALETTE
                                                 : PNG_COLOR_TYPE_RGB;
      png_set_user_limits(png_, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
      if (compression >= 0) png_set_compression_level(png_, compression);
      png_set_IHDR(png_, info_, static_cast<png_uint_32>(picture.width()),
                   static_cast<png_uint_32>(picture.height()),
                   picture.indexed() ? picture.bit_count() : 8, color_type, PNG_INTERLACE_NONE,
                   PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
      if (color_type == PNG_COLOR_TYPE_PALETTE) {
        png_color colors[256];
        for (int i = 0; i < picture.colors(); ++i) {
          colors[i] = {picture.red(i), picture.green(i), picture.blue(i)};
        }
        png_set_PLTE(png_, info_, colors, picture.colors());
      }
      const Resolution resolution = picture.resolution();
      if (resolution.x > 0 && resolution.y > 0) {
        png_set_pHYs(png_, info_, static_cast<png_uint_32>(resolution.x),
                     static_cast<png_uint_32>(resolution.y), PNG_RESOLUTION_METER);
      }
      if (!profile.empty()) {
        png_set_iCCP(png_, info_, "ICC", PNG_COMPRESSION_TYPE_BASE, profile.data(),
                     static_cast<png_uint_32>(profile.size()));
      }
      if (!exif.empty()) {
        png_set_eXIf_1(png_, info_, static_cast<png_uint_32>(exif.size() - kExifMark.size()),
                       exif.data() + kExifMark.size());
      }
      png_write_info(png_, info_);
      if (color_type == PNG_COLOR_TYPE_RGB) png_set_bgr(png_);
      for (int32_t y = 0; y < picture.height(); ++y) png_write_row(png_, picture.row(y));
      png_write_end(png_, nullptr);
    };
    if (!Run(png_, write)) Fail();
  }

 private:
  [[noreturn]] void Fail() const {
    throw FileError(std::string("cannot be written: ") + errors_.text);
  }

  Writing writing_;
  Errors errors_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
};

}  // namespace

Image ReadPng(Reading& reading) {
  Reader reader(reading.file);
  const Header header = reader.ReadHeader();
  const int orientation = ReadMetadata(header, reading);
  if (!reading.pixels) return nullptr;
  const ImageSize size = {header.width, header.height, header.target_bits()};
  CheckCompressedSize(size);
  if (header.row_bytes * header.height / kMostInflated > reading.file.size()) {
    throw FileError("the file is too short for " + PixelsText(size));
  }
  Image image = NewImage(size, header.resolution);
  const Dib dib = *Dib::Open(image.get());
  const bool transparent_color = dib.indexed() && SetColors(header, dib);
  const bool transparent_pixel = reader.ReadRows(header, dib);
  if (transparent_color || transparent_pixel) reading.remark(kAlphaRemark);
  if (header.bit_depth == 16) reading.remark(kDepthRemark);
  return Upright(std::move(image), orientation);
}

void WritePng(const PackedDib* dib, const Metadata& metadata, const Writing& writing) {
  const Picture picture(dib);
  Writer(writing).Write(picture, metadata);
}

}  // namespace omb
