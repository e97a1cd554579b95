// JPEG through libjpeg-turbo.
//
// The library reports errors by a call that must not return. Run() is the only place where the jump
// out of it lands: nothing with a destructor may live in the functions that it is given.
#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

// The headers need <cstdio>'s names before them.
#include <jerror.h>
#include <jpeglib.h>

#include "files/codec.h"
#include "files/metadata.h"
#include "files/pixels_in.h"
#include "files/pixels_out.h"

namespace omb {

using namespace ombrilo;

namespace {

// Each scan of a progressive file costs a pass over the whole image; honest files have a dozen.
constexpr int kMaxScans = 200;
constexpr long kMaxMemory = std::numeric_limits<int32_t>::max();

constexpr int kExifMarker = JPEG_APP0 + 1, kProfileMarker = JPEG_APP0 + 2;

struct Errors {
  jpeg_error_mgr manager;
  std::jmp_buf escape;
  char text[JMSG_LENGTH_MAX] = "";
  char warning[JMSG_LENGTH_MAX] = "";  // the first one
  bool ended = false;
};

Errors& ErrorsOf(j_common_ptr codec) { return *reinterpret_cast<Errors*>(codec->err); }

void OnError(j_common_ptr codec) {
  Errors& errors = ErrorsOf(codec);
  codec->err->format_message(codec, errors.text);
  std::longjmp(errors.escape, 1);
}

void OnMessage(j_common_ptr codec, int level) {
  if (level >= 0) return;
  Errors& errors = ErrorsOf(codec);
  if (codec->err->msg_code == JWRN_JPEG_EOF) {
    errors.ended = true;
    OnError(codec);
  }
  if (errors.warning[0] == '\0') codec->err->format_message(codec, errors.warning);
}

void OnProgress(j_common_ptr codec) {
  auto* decoder = reinterpret_cast<j_decompress_ptr>(codec);
  if (decoder->input_scan_number <= kMaxScans) return;
  Errors& errors = ErrorsOf(codec);
  std::snprintf(errors.text, sizeof errors.text, "more than %d scans", kMaxScans);
  std::longjmp(errors.escape, 1);
}

void Prepare(Errors& errors) {
  jpeg_std_error(&errors.manager);
  errors.manager.error_exit = OnError;
  errors.manager.emit_message = OnMessage;
}

// False when the library has reported an error.
template <class Work>
[[gnu::noinline]] bool Run(Errors& errors, Work& work) {
  if (setjmp(errors.escape) != 0) return false;
  work();
  return true;
}

// Inks over white paper. Adobe's programs store what each ink leaves of the light instead.
void InksToBgr(const uint8_t* cmyk, size_t pixels, bool inverted, uint8_t* bgr) {
  for (size_t x = 0; x < pixels; ++x, cmyk += 4, bgr += 3) {
    for (int c = 0; c < 3; ++c) {
      const unsigned light = inverted ? cmyk[c] : 255u - cmyk[c];
      const unsigned gray = inverted ? cmyk[3] : 255u - cmyk[3];
      bgr[2 - c] = ThroughInks(light, gray);
    }
  }
}

class Reader {
 public:
  Reader() {
    Prepare(errors_);
    decoder_.err = &errors_.manager;
  }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;
  ~Reader() {
    jpeg_destroy_decompress(&decoder_);
    std::free(profile_);
  }

  void ReadHeader(Bytes file) {
    auto read = [&] {
      jpeg_create_decompress(&decoder_);
      decoder_.mem->max_memory_to_use = kMaxMemory;
      progress_.progress_monitor = OnProgress;
      decoder_.progress = &progress_;
      jpeg_mem_src(&decoder_, file.data(), static_cast<unsigned long>(file.size()));
      jpeg_save_markers(&decoder_, kExifMarker, 0xFFFF);
      jpeg_save_markers(&decoder_, kProfileMarker, 0xFFFF);
      jpeg_read_header(&decoder_, TRUE);
      unsigned size = 0;
      if (jpeg_read_icc_profile(&decoder_, &profile_, &size)) profile_size_ = size;
    };
    if (!Run(errors_, read)) Fail();
  }

  // What the file holds besides the pixels.
  Metadata metadata() const {
    Metadata metadata;
    if (profile_ != nullptr) metadata.profile.assign(profile_, profile_ + profile_size_);
    for (const auto* marker = decoder_.marker_list; marker != nullptr; marker = marker->next) {
      const std::string_view data(reinterpret_cast<const char*>(marker->data), marker->data_length);
      if (marker->marker != kExifMarker || !data.starts_with(kExifMark)) continue;
      metadata.exif.assign(data.begin(), data.end());
      break;
    }
    return metadata;
  }

  bool gray() const { return decoder_.num_components == 1; }
  bool inks() const { return decoder_.num_components == 4; }
  bool huffman() const { return decoder_.arith_code == FALSE; }
  int components() const { return decoder_.num_components; }
  ImageSize size() const {
    return {decoder_.image_width, decoder_.image_height, static_cast<uint16_t>(gray() ? 8 : 24)};
  }
  Resolution resolution() const {
    // JFIF's numbers of units are one less than TIFF's.
    return ResolutionIn(decoder_.density_unit + 1u, decoder_.X_density, decoder_.Y_density);
  }

  void ReadRows(const Dib& dib) {
    std::vector<uint8_t> cmyk(inks() ? 4 * static_cast<size_t>(dib.width()) : 0);
    auto read = [&] {
      decoder_.out_color_space = gray() ? JCS_GRAYSCALE : inks() ? JCS_CMYK : JCS_EXT_BGR;
      jpeg_start_decompress(&decoder_);
      while (decoder_.output_scanline < decoder_.output_height) {
        uint8_t* const target = RowFromTop(dib, static_cast<int32_t>(decoder_.output_scanline));
        JSAMPROW row = inks() ? cmyk.data() : target;
        jpeg_read_scanlines(&decoder_, &row, 1);
        if (inks()) {
          InksToBgr(cmyk.data(), static_cast<size_t>(dib.width()),
                    decoder_.saw_Adobe_marker != FALSE, target);
        }
      }
      jpeg_finish_decompress(&decoder_);
    };
    if (!Run(errors_, read)) Fail();
  }

  std::string warning() const { return errors_.warning; }

 private:
  [[noreturn]] void Fail() const {
    if (errors_.ended) throw FileError("the file ends early");
    throw FileError(std::string("damaged JPEG data: ") + errors_.text);
  }

  Errors errors_;
  jpeg_progress_mgr progress_ = {};
  jpeg_decompress_struct decoder_ = {};
  JOCTET* profile_ = nullptr;
  size_t profile_size_ = 0;
};

// Passes what the encoder produces to an Output.
struct Destination {
  jpeg_destination_mgr manager;
  Output* out;
  JOCTET buffer[1 << 16];
};

Destination& DestinationOf(j_compress_ptr encoder) {
  return *reinterpret_cast<Destination*>(encoder->dest);
}

void StartBuffer(j_compress_ptr encoder) {
  Destination& to = DestinationOf(encoder);
  to.manager.next_output_byte = to.buffer;
  to.manager.free_in_buffer = sizeof to.buffer;
}

boolean EmptyBuffer(j_compress_ptr encoder) {
  Destination& to = DestinationOf(encoder);
  if (!to.out->Write(to.buffer, sizeof to.buffer)) ERREXIT(encoder, JERR_FILE_WRITE);
  StartBuffer(encoder);
  return TRUE;
}

void EndBuffer(j_compress_ptr encoder) {
  Destination& to = DestinationOf(encoder);
  const size_t rest = sizeof to.buffer - to.manager.free_in_buffer;
  if (!to.out->Write(to.buffer, rest)) ERREXIT(encoder, JERR_FILE_WRITE);
}

class Writer {
 public:
  Writer() {
    Prepare(errors_);
    encoder_.err = &errors_.manager;
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;
  ~Writer() { jpeg_destroy_compress(&encoder_); }

  void Write(const Picture& picture, const Metadata& metadata, const Writing& writing) {
    const bool gray = picture.AllGray();
    const Bytes profile = ProfileFor(metadata, gray, writing.remark);
    const std::vector<uint8_t> exif =
        ExifFor(metadata, picture.width(), picture.height(), writing.remark);
    const auto to = std::make_unique<Destination>();
    to->manager.init_destination = StartBuffer;
    to->manager.empty_output_buffer = EmptyBuffer;
    to->manager.term_destination = EndBuffer;
    to->out = &writing.out;
    const auto width = static_cast<size_t>(picture.width());
    std::vector<uint8_t> samples((gray ? 1 : 3) * width);
    auto write = [&] {
      jpeg_create_compress(&encoder_);
      encoder_.dest = &to->manager;
      encoder_.image_width = static_cast<JDIMENSION>(picture.width());
      encoder_.image_height = static_cast<JDIMENSION>(picture.height());
      encoder_.input_components = gray ? 1 : 3;
      encoder_.in_color_space = gray ? JCS_GRAYSCALE : JCS_EXT_BGR;
      jpeg_set_defaults(&encoder_);
      jpeg_set_quality(&encoder_, writing.options.quality, TRUE);
      SetDensity(picture.resolution());
      jpeg_start_compress(&encoder_, TRUE);
      if (!exif.empty()) {
        jpeg_write_marker(&encoder_, kExifMarker, exif.data(), static_cast<unsigned>(exif.size()));
      }
      if (!profile.empty()) {
        jpeg_write_icc_profile(&encoder_, profile.data(), static_cast<unsigned>(profile.size()));
      }
      for (int32_t y = 0; y < picture.height(); ++y) {
        if (gray) {
          picture.GrayRow(y, samples.data());
        } else {
          picture.ColorRow(y, samples.data());
        }
        JSAMPROW row = samples.data();
        jpeg_write_scanlines(&encoder_, &row, 1);
      }
      jpeg_finish_compress(&encoder_);
    };
    if (!Run(errors_, write)) throw FileError(std::string("cannot be written: ") + errors_.text);
  }

 private:
  // Whole dots per inch, which is what people set.
  void SetDensity(Resolution resolution) {
    const double x = DotsPerInch(resolution.x) + 0.5;
    const double y = DotsPerInch(resolution.y) + 0.5;
    if (x < 1 || y < 1 || x >= 65536 || y >= 65536) return;
    encoder_.density_unit = 1;
    encoder_.X_density = static_cast<UINT16>(x);
    encoder_.Y_density = static_cast<UINT16>(y);
  }

  Errors errors_;
  jpeg_compress_struct encoder_ = {};
};

}  // namespace

Image ReadJpeg(Reading& reading) {
  Reader reader;
  reader.ReadHeader(reading.file);
  if (reader.components() == 2 || reader.components() > 4) {
    throw FileError("JPEG files of " + std::to_string(reader.components()) +
                    " components are not supported");
  }
  const ImageSize size = reader.size();
  reading.metadata = reader.metadata();
  const ExifFacts facts = ReadExif(reading.metadata.exif);
  const Resolution own = reader.resolution();
  const Resolution resolution = own.x > 0 && own.y > 0 ? own : facts.resolution;
  reading.info = {size.width,
                  size.height,
                  size.bit_count,
                  reader.gray()   ? "gray"
                  : reader.inks() ? "four inks"
                                  : "color",
                  resolution,
                  reader.gray() ? std::optional(true) : std::nullopt,
                  reading.metadata.profile.size(),
                  !reading.metadata.exif.empty()};
  TurnUpright(reading.info, facts.orientation);
  if (!reading.pixels) return nullptr;
  CheckCompressedSize(size);
  if (reader.huffman() && size.width * size.height / kMostSamplesPerJpegByte >
                              static_cast<int64_t>(reading.file.size())) {
    throw FileError("the file is too short for " + PixelsText(size));
  }
  Image image = NewImage(size, resolution);
  const Dib dib = *Dib::Open(image.get());
  if (dib.indexed()) SetGrayRamp(dib, 256);
  reader.ReadRows(dib);
  if (!reader.warning().empty()) reading.remark("damaged JPEG data: " + reader.warning());
  return Upright(std::move(image), facts.orientation);
}

void WriteJpeg(const PackedDib* dib, const Metadata& metadata, const Writing& writing) {
  const Picture picture(dib);
  Writer writer;
  writer.Write(picture, metadata, writing);
}

}  // namespace omb
