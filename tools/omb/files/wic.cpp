// PNG, JPEG and TIFF through the codecs of Windows (the Windows Imaging Component). What the codecs
// do not tell, such as that a file ends early or has no resolution, container.h finds out.
#include <windows.h>
// After it.
#include <wincodec.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "files/codec.h"
#include "files/container.h"
#include "files/metadata.h"
#include "files/pixels_in.h"
#include "files/pixels_out.h"
#include "files/segments.h"
#include "files/wic_layout.h"
#include "text.h"

namespace omb {

using namespace ombrilo;

namespace {

// An owned COM object.
template <class Interface>
class Com {
 public:
  Com() = default;
  Com(const Com&) = delete;
  Com& operator=(const Com&) = delete;
  ~Com() {
    if (object_ != nullptr) object_->Release();
  }
  Interface** out() { return &object_; }
  Interface* get() const { return object_; }
  Interface* operator->() const { return object_; }

 private:
  Interface* object_ = nullptr;
};

// The codecs may be called on a thread only while it has one of these.
class Codecs {
 public:
  Codecs() : initialized_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
  Codecs(const Codecs&) = delete;
  Codecs& operator=(const Codecs&) = delete;
  ~Codecs() {
    if (initialized_) CoUninitialize();
  }

 private:
  bool initialized_;
};

std::string CodeText(HRESULT result) {
  char text[11];
  std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(result));
  return text;
}

void CheckRead(HRESULT result, const char* title) {
  if (SUCCEEDED(result)) return;
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  const std::string code = " (error " + CodeText(result) + ")";
  if (result == WINCODEC_ERR_UNSUPPORTEDPIXELFORMAT || result == WINCODEC_ERR_UNSUPPORTEDVERSION) {
    throw FileError(std::string("unsupported ") + title + " data" + code);
  }
  throw FileError(std::string("damaged ") + title + " data" + code);
}

void CheckWrite(HRESULT result) {
  if (SUCCEEDED(result)) return;
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  throw FileError("cannot be written: error " + CodeText(result) + " of the system's codec");
}

void MakeFactory(Com<IWICImagingFactory>& factory) {
  const HRESULT made =
      CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                       IID_IWICImagingFactory, reinterpret_cast<void**>(factory.out()));
  if (FAILED(made)) throw FileError("the system has no image codecs: error " + CodeText(made));
}

class Reader {
 public:
  Reader(Bytes file, size_t page, const GUID& container, const char* title) : title_(title) {
    MakeFactory(factory_);
    Check(factory_->CreateStream(stream_.out()));
    // The stream is only read from.
    Check(stream_->InitializeFromMemory(const_cast<uint8_t*>(file.data()),
                                        static_cast<DWORD>(file.size())));
    Check(factory_->CreateDecoder(container, nullptr, decoder_.out()));
    Check(decoder_->Initialize(stream_.get(), WICDecodeMetadataCacheOnDemand));
    Check(decoder_->GetFrame(static_cast<UINT>(page), frame_.out()));
    FindLayout();
  }

  // An ICC profile of the page; empty where there is none.
  std::vector<uint8_t> Profile() const {
    Com<IWICColorContext> context;
    IWICColorContext* contexts[1] = {};
    UINT count = 0, size = 0;
    WICColorContextType type = WICColorContextUninitialized;
    Check(factory_->CreateColorContext(context.out()));
    contexts[0] = context.get();
    if (FAILED(frame_->GetColorContexts(1, contexts, &count)) || count == 0) return {};
    if (FAILED(context->GetType(&type)) || type != WICColorContextProfile) return {};
    if (FAILED(context->GetProfileBytes(0, nullptr, &size))) return {};
    std::vector<uint8_t> profile(size);
    if (FAILED(context->GetProfileBytes(size, profile.data(), &size))) return {};
    return profile;
  }

  // The size and depth of what Read() gives, and whether it is gray.
  PageInfo Info(const Container& container) const {
    UINT width = 0, height = 0;
    Check(pixels_->GetSize(&width, &height));
    PageInfo info;
    info.width = width;
    info.height = height;
    info.bit_count = container.gray && layout_->bits == 24 ? uint16_t{8} : layout_->bits;
    info.stored = BitsText(layout_->stored_bits) + " in the system's codec";
    info.resolution = container.resolution;
    if (container.gray) info.gray = true;
    info.exif = !container.exif.empty() || container.exif_lost;
    TurnUpright(info, container.orientation);
    return info;
  }

  // With `gray`, colors from the codec become gray levels.
  Image Read(Resolution resolution, bool gray, const Remark& remark) {
    UINT width = 0, height = 0;
    Check(pixels_->GetSize(&width, &height));
    const bool to_gray = gray && layout_->bits == 24;
    const ImageSize size = {width, height, to_gray ? uint16_t{8} : layout_->bits};
    CheckCompressedSize(size);
    Image image = NewImage(size, resolution);
    const Dib dib = *Dib::Open(image.get());
    bool transparent = false;
    if (to_gray) {
      SetGrayRamp(dib, 256);
    } else if (layout_->grays != 0) {
      SetGrayRamp(dib, layout_->grays);
    } else if (dib.indexed()) {
      transparent = SetColors(dib);
    }
    const UINT stride = (width * layout_->stored_bits + 7) / 8;
    std::vector<uint8_t> row(stride), bgr(to_gray ? size_t{3} * width : 0);
    for (int32_t y = 0; y < dib.height(); ++y) {
      const WICRect rect = {0, y, static_cast<INT>(width), 1};
      Check(pixels_->CopyPixels(&rect, stride, stride, row.data()));
      uint8_t* const to = to_gray ? bgr.data() : RowFromTop(dib, y);
      transparent |= layout_->convert(row.data(), width, to);
      for (size_t x = 0; to_gray && x < width; ++x) RowFromTop(dib, y)[x] = bgr[3 * x];
      ReportRow(y, dib.height());
    }
    if (transparent) remark(kAlphaRemark);
    return image;
  }

 private:
  void Check(HRESULT result) const { CheckRead(result, title_); }

  void FindLayout() {
    GUID format;
    Check(frame_->GetPixelFormat(&format));
    layout_ = &LayoutFor(format);
    if (layout_->format != format) {
      Check(WICConvertBitmapSource(layout_->format, frame_.get(), pixels_.out()));
      return;
    }
    Check(frame_->QueryInterface(IID_IWICBitmapSource, reinterpret_cast<void**>(pixels_.out())));
  }

  // True when a color was transparent.
  bool SetColors(const Dib& dib) const {
    Com<IWICPalette> palette;
    WICColor colors[256];
    UINT count = 0;
    Check(factory_->CreatePalette(palette.out()));
    Check(frame_->CopyPalette(palette.get()));
    Check(palette->GetColors(256, colors, &count));
    bool transparent = false;
    for (uint32_t i = 0; i < std::min(count, ColorsOfDepth(dib.bit_count())); ++i) {
      const unsigned alpha = colors[i] >> 24;
      transparent = transparent || alpha != 255;
      SetColor(dib, i, OnWhite(colors[i] >> 16 & 255, alpha), OnWhite(colors[i] >> 8 & 255, alpha),
               OnWhite(colors[i] & 255, alpha));
    }
    return transparent;
  }

  const char* title_;
  Com<IWICImagingFactory> factory_;
  Com<IWICStream> stream_;
  Com<IWICBitmapDecoder> decoder_;
  Com<IWICBitmapFrameDecode> frame_;
  Com<IWICBitmapSource> pixels_;
  const WicLayout* layout_ = nullptr;
};

Image Read(Reading& reading, const Container& container, const GUID& format, const char* title) {
  const ImageSize size = {container.width, container.height, 24};
  CheckCompressedSize(size);
  if (container.least_size > static_cast<double>(reading.file.size())) {
    throw FileError("the file is too short for " + PixelsText(size));
  }
  if (!container.refusal.empty()) throw FileError(container.refusal);
  const Codecs codecs;
  Reader reader(reading.file, reading.page, format, title);
  reading.info = reader.Info(container);
  const bool found = !container.profile.empty();
  reading.metadata = {found ? container.profile : reader.Profile(), container.exif, container.jpeg};
  reading.info.profile = reading.metadata.profile.size();
  if (!reading.pixels) return nullptr;
  if (container.exif_lost) reading.remark(kExifRemark);
  Image image = reader.Read(container.resolution, container.gray, reading.remark);
  if (container.wide) reading.remark(kDepthRemark);
  return Upright(std::move(image), container.orientation);
}

// How an image is handed to an encoder.
struct Form {
  GUID format;
  bool palette;
  bool gray_row;  // rows are the gray levels of the table's colors
};

bool IsGray(const Form& form) {
  return !form.palette && form.format != GUID_WICPixelFormat24bppBGR;
}

Form FormOf(const Picture& picture) {
  if (!picture.indexed()) return {GUID_WICPixelFormat24bppBGR, false, false};
  const bool gray = picture.GrayRamp();
  switch (picture.bit_count()) {
    case 1:
      return {gray ? GUID_WICPixelFormatBlackWhite : GUID_WICPixelFormat1bppIndexed, !gray, false};
    case 4:
      return {gray ? GUID_WICPixelFormat4bppGray : GUID_WICPixelFormat4bppIndexed, !gray, false};
    default:
      return {gray ? GUID_WICPixelFormat8bppGray : GUID_WICPixelFormat8bppIndexed, !gray, false};
  }
}

Form JpegFormOf(const Picture& picture) {
  const bool gray = picture.AllGray();
  return {gray ? GUID_WICPixelFormat8bppGray : GUID_WICPixelFormat24bppBGR, false, gray};
}

void SetOption(IPropertyBag2* options, const wchar_t* name, VARIANT value) {
  PROPBAG2 option = {};
  option.pstrName = const_cast<wchar_t*>(name);
  CheckWrite(options->Write(1, &option, &value));
}

// The pages of one file, which is in memory until it is complete.
class Writer {
 public:
  Writer(const GUID& container, const Writing& writing) : writing_(writing) {
    MakeFactory(factory_);
    CheckWrite(CreateStreamOnHGlobal(nullptr, TRUE, stream_.out()));
    CheckWrite(factory_->CreateEncoder(container, nullptr, encoder_.out()));
    CheckWrite(encoder_->Initialize(stream_.get(), WICBitmapEncoderNoCache));
  }

  // `set_options` gets the page's IPropertyBag2.
  template <class SetOptions>
  void Add(const Picture& picture, Bytes profile, const Form& form, bool whole_dots,
           SetOptions set_options) {
    Com<IWICBitmapFrameEncode> frame;
    Com<IPropertyBag2> options;
    CheckWrite(encoder_->CreateNewFrame(frame.out(), options.out()));
    set_options(options.get());
    CheckWrite(frame->Initialize(options.get()));
    CheckWrite(
        frame->SetSize(static_cast<UINT>(picture.width()), static_cast<UINT>(picture.height())));
    const Resolution resolution = picture.resolution();
    double x = DotsPerInch(resolution.x), y = DotsPerInch(resolution.y);
    if (whole_dots) x = std::floor(x + 0.5), y = std::floor(y + 0.5);
    if (x > 0 && y > 0) CheckWrite(frame->SetResolution(x, y));
    SetProfile(frame.get(), profile);
    if (form.palette) SetPalette(frame.get(), picture);
    GUID format = form.format;
    CheckWrite(frame->SetPixelFormat(&format));
    if (format != form.format) {
      throw FileError("cannot be written: the system's codec does not take images of " +
                      std::to_string(picture.bit_count()) + " bits");
    }
    WriteRows(frame.get(), picture, form);
    CheckWrite(frame->Commit());
  }

  // `insertion` gives what the codec's file lacks.
  template <class Insert>
  void Save(Insert insertion) {
    CheckWrite(encoder_->Commit());
    HGLOBAL block = nullptr;
    STATSTG stat;
    CheckWrite(stream_->Stat(&stat, STATFLAG_NONAME));
    CheckWrite(GetHGlobalFromStream(stream_.get(), &block));
    const Bytes file(static_cast<const uint8_t*>(GlobalLock(block)),
                     static_cast<size_t>(stat.cbSize.QuadPart));
    // The caller finds out what did not reach the disk.
    if (file.data() != nullptr) {
      const Insertion more = insertion(file);
      writing_.out.Write(file.data(), more.at);
      writing_.out.Write(more.bytes.data(), more.bytes.size());
      writing_.out.Write(file.data() + more.at, file.size() - more.at);
    }
    GlobalUnlock(block);
  }

 private:
  void SetProfile(IWICBitmapFrameEncode* frame, Bytes profile) {
    if (profile.empty()) return;
    Com<IWICColorContext> context;
    CheckWrite(factory_->CreateColorContext(context.out()));
    IWICColorContext* contexts[1] = {context.get()};
    const auto size = static_cast<UINT>(profile.size());
    if (FAILED(context->InitializeFromMemory(profile.data(), size)) ||
        FAILED(frame->SetColorContexts(1, contexts))) {
      writing_.remark("its color profile is not kept: the system's codec does not take it");
    }
  }

  void SetPalette(IWICBitmapFrameEncode* frame, const Picture& picture) {
    WICColor colors[256];
    for (int i = 0; i < picture.colors(); ++i) {
      colors[i] = 0xFF000000 | static_cast<uint32_t>(picture.red(i)) << 16 |
                  static_cast<uint32_t>(picture.green(i)) << 8 | picture.blue(i);
    }
    Com<IWICPalette> palette;
    CheckWrite(factory_->CreatePalette(palette.out()));
    CheckWrite(palette->InitializeCustom(colors, static_cast<UINT>(picture.colors())));
    CheckWrite(frame->SetPalette(palette.get()));
  }

  static void WriteRows(IWICBitmapFrameEncode* frame, const Picture& picture, const Form& form) {
    const auto width = static_cast<size_t>(picture.width());
    const bool color = form.format == GUID_WICPixelFormat24bppBGR;
    const size_t size = color           ? 3 * width
                        : form.gray_row ? width
                                        : (width * picture.bit_count() + 7) / 8;
    std::vector<uint8_t> row(size);
    for (int32_t y = 0; y < picture.height(); ++y) {
      if (color) {
        picture.ColorRow(y, row.data());
      } else if (form.gray_row) {
        picture.GrayRow(y, row.data());
      } else {
        std::memcpy(row.data(), picture.row(y), size);
      }
      CheckWrite(
          frame->WritePixels(1, static_cast<UINT>(size), static_cast<UINT>(size), row.data()));
      ReportRow(y, picture.height());
    }
  }

  const Codecs codecs_;  // outlives what the codecs made
  Writing writing_;
  Com<IWICImagingFactory> factory_;
  Com<IStream> stream_;
  Com<IWICBitmapEncoder> encoder_;
};

constexpr auto kNoOptions = [](IPropertyBag2*) {};

uint8_t TiffCompression(const Picture& picture, const Form& form, const Metadata& metadata,
                        const Writing& writing) {
  const bool bilevel = form.format == GUID_WICPixelFormatBlackWhite;
  const auto& wanted = writing.options.compression;
  if (!wanted) {
    if (metadata.jpeg) {
      writing.remark("its JPEG compression is not kept: the system's codec does not write it");
    }
    return bilevel ? WICTiffCompressionCCITT4 : WICTiffCompressionLZW;
  }
  if (*wanted == "none") return WICTiffCompressionNone;
  if (*wanted == "lzw") return WICTiffCompressionLZW;
  if (*wanted == "deflate") return WICTiffCompressionZIP;
  if (*wanted == "g4" && bilevel) return WICTiffCompressionCCITT4;
  throw FileError(*wanted + " compression is not available from the system's codec for images of " +
                  std::to_string(picture.bit_count()) + " bits");
}

std::vector<uint8_t> ExifOf(const Picture& picture, const Metadata& metadata,
                            const Writing& writing) {
  return ExifFor(metadata, picture.width(), picture.height(), writing.remark);
}

class Pages : public TiffPages {
 public:
  explicit Pages(const Writing& writing)
      : writing_(writing), writer_(GUID_ContainerFormatTiff, writing) {}

  void Add(const PackedDib* dib, const Metadata& metadata) override {
    const Picture picture(dib);
    const Form form = FormOf(picture);
    if (!metadata.exif.empty()) writing_.remark(kExifRemark);
    VARIANT compression = {};
    compression.vt = VT_UI1;
    compression.bVal = TiffCompression(picture, form, metadata, writing_);
    const Bytes profile = ProfileFor(metadata, IsGray(form), writing_.remark);
    writer_.Add(picture, profile, form, false, [&](IPropertyBag2* options) {
      SetOption(options, L"TiffCompressionMethod", compression);
    });
  }

  void Finish() override {
    writer_.Save([](Bytes) { return Insertion(); });
  }

 private:
  Writing writing_;
  Writer writer_;
};

}  // namespace

Image ReadPng(Reading& reading) {
  return Read(reading, ReadPngContainer(reading.file), GUID_ContainerFormatPng, "PNG");
}

Image ReadJpeg(Reading& reading) {
  return Read(reading, ReadJpegContainer(reading.file), GUID_ContainerFormatJpeg, "JPEG");
}

Image ReadTiff(Reading& reading) {
  return Read(reading, ReadTiffContainer(reading.file, reading.page), GUID_ContainerFormatTiff,
              "TIFF");
}

void WritePng(const PackedDib* dib, const Metadata& metadata, const Writing& writing) {
  const Picture picture(dib);
  Writer writer(GUID_ContainerFormatPng, writing);
  if (writing.options.compression) {
    writing.remark("the compression of PNG is left to the system's codec");
  }
  const Form form = FormOf(picture);
  writer.Add(picture, ProfileFor(metadata, IsGray(form), writing.remark), form, false, kNoOptions);
  writer.Save([&](Bytes) { return PngChunk(ExifOf(picture, metadata, writing)); });
}

void WriteJpeg(const PackedDib* dib, const Metadata& metadata, const Writing& writing) {
  const Picture picture(dib);
  Writer writer(GUID_ContainerFormatJpeg, writing);
  VARIANT quality = {};
  quality.vt = VT_R4;
  quality.fltVal = static_cast<float>(writing.options.quality) / 100;
  const Form form = JpegFormOf(picture);
  const Bytes profile = ProfileFor(metadata, IsGray(form), writing.remark);
  writer.Add(picture, {}, form, true,
             [&](IPropertyBag2* options) { SetOption(options, L"ImageQuality", quality); });
  writer.Save(
      [&](Bytes file) { return JpegSegments(file, ExifOf(picture, metadata, writing), profile); });
}

std::unique_ptr<TiffPages> WriteTiff(const Writing& writing) {
  return std::make_unique<Pages>(writing);
}

}  // namespace omb
