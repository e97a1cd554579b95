// PNG, JPEG and TIFF through the codecs of Windows (the Windows Imaging Component). What the codecs
// leave open, such as files that end early and what is no resolution, container.h finds out.
#include <windows.h>
// After it.
#include <wincodec.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "core/bytes.h"
#include "files/codec.h"
#include "files/container.h"
#include "files/pixels_in.h"
#include "files/pixels_out.h"

namespace omb {

using namespace ombrilo;

namespace {

constexpr double kInch = 0.0254;  // meters
constexpr float kQuality = 0.92f;

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

// Every call of the codecs stands between construction and destruction, on any thread.
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

// Brings pixels as a codec gives them to those of an image; true when one was transparent.
using Convert = bool (*)(const uint8_t* from, size_t pixels, uint8_t* to);

template <size_t kBits>
bool CopyBits(const uint8_t* from, size_t pixels, uint8_t* to) {
  std::memcpy(to, from, (pixels * kBits + 7) / 8);
  return false;
}

bool ExpandPairs(const uint8_t* from, size_t pixels, uint8_t* to) {
  ExpandTwoBits(from, pixels, to);
  return false;
}

// Samples of 8 or 16 bits in the order of `kRed`, `kGreen`, `kBlue` among `kSamples`, the last of
// which is alpha where there are more than three.
template <size_t kSamples, size_t kBytes, size_t kRed>
bool Colors(const uint8_t* from, size_t pixels, uint8_t* to) {
  bool transparent = false;
  const auto sample = [&](size_t i) -> unsigned {
    return kBytes == 1 ? from[i] : ReduceSample(LoadU16(from + 2 * i));
  };
  for (size_t x = 0; x < pixels; ++x, from += kSamples * kBytes, to += 3) {
    const unsigned alpha = kSamples > 3 ? sample(kSamples - 1) : 255;
    transparent = transparent || alpha != 255;
    to[0] = OnWhite(sample(2 - kRed), alpha);
    to[1] = OnWhite(sample(1), alpha);
    to[2] = OnWhite(sample(kRed), alpha);
  }
  return transparent;
}

bool ReduceGray(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t x = 0; x < pixels; ++x) to[x] = ReduceSample(LoadU16(from + 2 * x));
  return false;
}

// The codecs make 0 no ink, whatever the file says.
bool Inks(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t x = 0; x < pixels; ++x, from += 4, to += 3) {
    for (size_t c = 0; c < 3; ++c) {
      to[2 - c] = static_cast<uint8_t>(((255u - from[c]) * (255u - from[3]) + 127) / 255);
    }
  }
  return false;
}

struct Layout {
  const GUID& format;
  uint16_t stored_bits;
  uint16_t bits;
  Convert convert;
  uint32_t grays;  // in the color table; 0 where the file has one, or the pixels are colors
};

const Layout kLayouts[] = {
    {GUID_WICPixelFormatBlackWhite, 1, 1, CopyBits<1>, 2},
    {GUID_WICPixelFormat1bppIndexed, 1, 1, CopyBits<1>, 0},
    {GUID_WICPixelFormat2bppGray, 2, 4, ExpandPairs, 4},
    {GUID_WICPixelFormat2bppIndexed, 2, 4, ExpandPairs, 0},
    {GUID_WICPixelFormat4bppGray, 4, 4, CopyBits<4>, 16},
    {GUID_WICPixelFormat4bppIndexed, 4, 4, CopyBits<4>, 0},
    {GUID_WICPixelFormat8bppGray, 8, 8, CopyBits<8>, 256},
    {GUID_WICPixelFormat8bppIndexed, 8, 8, CopyBits<8>, 0},
    {GUID_WICPixelFormat16bppGray, 16, 8, ReduceGray, 256},
    {GUID_WICPixelFormat24bppBGR, 24, 24, CopyBits<24>, 0},
    {GUID_WICPixelFormat24bppRGB, 24, 24, Colors<3, 1, 0>, 0},
    {GUID_WICPixelFormat48bppRGB, 48, 24, Colors<3, 2, 0>, 0},
    {GUID_WICPixelFormat64bppRGBA, 64, 24, Colors<4, 2, 0>, 0},
    {GUID_WICPixelFormat32bppCMYK, 32, 24, Inks, 0},
    // Last: what all others are converted to.
    {GUID_WICPixelFormat32bppBGRA, 32, 24, Colors<4, 1, 2>, 0},
};

class Reader {
 public:
  Reader(Bytes file, const GUID& container, const char* title) : title_(title) {
    MakeFactory(factory_);
    Check(factory_->CreateStream(stream_.out()));
    // The stream is only read from.
    Check(stream_->InitializeFromMemory(const_cast<uint8_t*>(file.data()),
                                        static_cast<DWORD>(file.size())));
    Check(factory_->CreateDecoder(container, nullptr, decoder_.out()));
    Check(decoder_->Initialize(stream_.get(), WICDecodeMetadataCacheOnDemand));
    Check(decoder_->GetFrame(0, frame_.out()));
    FindLayout();
  }

  bool several_frames() const {
    UINT count = 0;
    return SUCCEEDED(decoder_->GetFrameCount(&count)) && count > 1;
  }

  // `gray` makes an image of gray levels where colors are not stored.
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
    for (const Layout& layout : kLayouts) {
      layout_ = &layout;
      if (layout.format == format) {
        Check(
            frame_->QueryInterface(IID_IWICBitmapSource, reinterpret_cast<void**>(pixels_.out())));
        return;
      }
    }
    Check(WICConvertBitmapSource(layout_->format, frame_.get(), pixels_.out()));
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
  const Layout* layout_ = nullptr;
};

// Turns a picture that is stored as TIFF's orientation says. From 5 on, stored rows are columns.
Image Upright(Image image, int orientation) {
  PackedDib* dib = image.release();
  bool done = true;
  if (orientation >= 5 && orientation <= 8) {
    done = omb_rotate(&dib, orientation <= 6 ? 90.0f : 270.0f, 1) != 0;
    auto* fields = reinterpret_cast<uint8_t*>(dib);
    const uint32_t x = LoadU32(fields + kInfoXPelsPerMeter);
    StoreU32(fields + kInfoXPelsPerMeter, LoadU32(fields + kInfoYPelsPerMeter));
    StoreU32(fields + kInfoYPelsPerMeter, x);
  }
  const bool mirrored =
      orientation == 2 || orientation == 3 || orientation == 5 || orientation == 7;
  if (done && mirrored) done = omb_fliphor(dib) != 0;
  if (done && (orientation == 3 || orientation == 4)) done = omb_flipvert(dib) != 0;
  image.reset(dib);
  if (!done) throw std::bad_alloc();
  return image;
}

Image Read(Bytes file, const Container& container, const GUID& format, const char* title,
           const Remark& remark) {
  const ImageSize size = {container.width, container.height, 24};
  CheckCompressedSize(size);
  if (container.least_size > static_cast<double>(file.size())) {
    throw FileError("the file is too short for " + PixelsText(size));
  }
  const Codecs codecs;
  Reader reader(file, format, title);
  Image image = reader.Read(container.resolution, container.gray, remark);
  if (reader.several_frames()) remark("it has several pages; the first one is read");
  return Upright(std::move(image), container.orientation);
}

// How an image is handed to an encoder.
struct Form {
  GUID format;
  bool palette;
  bool gray_row;  // rows are gray levels that stand for the colors of the table
};

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

class Writer {
 public:
  explicit Writer(const GUID& container) {
    MakeFactory(factory_);
    CheckWrite(CreateStreamOnHGlobal(nullptr, TRUE, stream_.out()));
    CheckWrite(factory_->CreateEncoder(container, nullptr, encoder_.out()));
    CheckWrite(encoder_->Initialize(stream_.get(), WICBitmapEncoderNoCache));
    CheckWrite(encoder_->CreateNewFrame(frame_.out(), options_.out()));
  }

  IPropertyBag2* options() const { return options_.get(); }

  void Write(const Picture& picture, const Form& form, bool whole_dots) {
    CheckWrite(frame_->Initialize(options_.get()));
    CheckWrite(
        frame_->SetSize(static_cast<UINT>(picture.width()), static_cast<UINT>(picture.height())));
    const Resolution resolution = picture.resolution();
    double x = resolution.x * kInch, y = resolution.y * kInch;
    if (whole_dots) x = std::floor(x + 0.5), y = std::floor(y + 0.5);
    if (x > 0 && y > 0) CheckWrite(frame_->SetResolution(x, y));
    if (form.palette) SetPalette(picture);
    GUID format = form.format;
    CheckWrite(frame_->SetPixelFormat(&format));
    if (format != form.format) {
      throw FileError("cannot be written: the system's codec does not take images of " +
                      std::to_string(picture.bit_count()) + " bits");
    }
    WriteRows(picture, form);
    CheckWrite(frame_->Commit());
    CheckWrite(encoder_->Commit());
  }

  void Save(std::FILE* file) const {
    HGLOBAL block = nullptr;
    STATSTG stat;
    CheckWrite(stream_->Stat(&stat, STATFLAG_NONAME));
    CheckWrite(GetHGlobalFromStream(stream_.get(), &block));
    const void* bytes = GlobalLock(block);
    // What did not reach the disk is found out by the caller.
    if (bytes != nullptr) std::fwrite(bytes, 1, static_cast<size_t>(stat.cbSize.QuadPart), file);
    GlobalUnlock(block);
  }

 private:
  void SetPalette(const Picture& picture) {
    WICColor colors[256];
    for (int i = 0; i < picture.colors(); ++i) {
      colors[i] = 0xFF000000 | static_cast<uint32_t>(picture.red(i)) << 16 |
                  static_cast<uint32_t>(picture.green(i)) << 8 | picture.blue(i);
    }
    Com<IWICPalette> palette;
    CheckWrite(factory_->CreatePalette(palette.out()));
    CheckWrite(palette->InitializeCustom(colors, static_cast<UINT>(picture.colors())));
    CheckWrite(frame_->SetPalette(palette.get()));
  }

  void WriteRows(const Picture& picture, const Form& form) {
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
          frame_->WritePixels(1, static_cast<UINT>(size), static_cast<UINT>(size), row.data()));
      ReportRow(y, picture.height());
    }
  }

  Com<IWICImagingFactory> factory_;
  Com<IStream> stream_;
  Com<IWICBitmapEncoder> encoder_;
  Com<IPropertyBag2> options_;
  Com<IWICBitmapFrameEncode> frame_;
};

}  // namespace

Image ReadPng(Bytes file, const Remark& remark) {
  return Read(file, ReadPngContainer(file), GUID_ContainerFormatPng, "PNG", remark);
}

Image ReadJpeg(Bytes file, const Remark& remark) {
  return Read(file, ReadJpegContainer(file), GUID_ContainerFormatJpeg, "JPEG", remark);
}

Image ReadTiff(Bytes file, const Remark& remark) {
  return Read(file, ReadTiffContainer(file), GUID_ContainerFormatTiff, "TIFF", remark);
}

void WritePng(const PackedDib* dib, std::FILE* file) {
  const Picture picture(dib);
  const Codecs codecs;
  Writer writer(GUID_ContainerFormatPng);
  writer.Write(picture, FormOf(picture), false);
  writer.Save(file);
}

void WriteJpeg(const PackedDib* dib, std::FILE* file) {
  const Picture picture(dib);
  const Codecs codecs;
  Writer writer(GUID_ContainerFormatJpeg);
  VARIANT quality = {};
  quality.vt = VT_R4;
  quality.fltVal = kQuality;
  SetOption(writer.options(), L"ImageQuality", quality);
  writer.Write(picture, JpegFormOf(picture), true);
  writer.Save(file);
}

void WriteTiff(const PackedDib* dib, std::FILE* file) {
  const Picture picture(dib);
  const Codecs codecs;
  Writer writer(GUID_ContainerFormatTiff);
  const Form form = FormOf(picture);
  VARIANT compression = {};
  compression.vt = VT_UI1;
  compression.bVal = form.format == GUID_WICPixelFormatBlackWhite ? WICTiffCompressionCCITT4
                                                                  : WICTiffCompressionLZW;
  SetOption(writer.options(), L"TiffCompressionMethod", compression);
  writer.Write(picture, form, false);
  writer.Save(file);
}

}  // namespace omb
