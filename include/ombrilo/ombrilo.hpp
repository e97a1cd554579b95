/**
 * @file ombrilo.hpp
 * @brief Ombrilo for C++17 and later: images that own their memory, and operations as members.
 *
 * Members have the names of the C functions without omb_, and the C interface's documentation is
 * theirs, too. They throw ombrilo::Error where that refuses, with two differences: what leaves
 * nothing to do (the size, depth or gamma that an image has) is done, and running out of memory is
 * the same refusal as any other. An image that an operation refuses is unchanged.
 *
 * @code
 * ombrilo::Image image = ombrilo::Image::FromPixels(OMB_PIXELS_RGB, width, height, pixels, stride);
 * image.scale(800, 600).gray().binary(image.autothreshold());
 * image.ToPixels(OMB_PIXELS_GRAY, to, 800);
 * @endcode
 *
 * Everything is inline; link the C library. No member keeps state outside its image, so that
 * different images can be worked on by different threads.
 */
#ifndef OMBRILO_OMBRILO_HPP_
#define OMBRILO_OMBRILO_HPP_

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>

#include "ombrilo/ombrilo.h"

#if __has_include(<version>)
#include <version>
#endif
#if defined(__cpp_lib_span)
#include <span>
#endif

namespace ombrilo {

/** An operation that was refused; what() is its name. The image is as it was. */
class Error : public std::runtime_error {
 public:
  explicit Error(const char* operation)
      : std::runtime_error(std::string(operation) + ": refused") {}
};

#if defined(__cpp_lib_span)
template <class T>
using Span = std::span<T>;
#else
/** As much of std::span as rows need, before C++20. */
template <class T>
class Span {
 public:
  Span(T* data, size_t size) : data_(data), size_(size) {}
  T* data() const { return data_; }
  size_t size() const { return size_; }
  T* begin() const { return data_; }
  T* end() const { return data_ + size_; }
  T& operator[](size_t i) const { return data_[i]; }

 private:
  T* data_;
  size_t size_;
};
#endif

/** A color of the color table. */
struct Color {
  uint8_t red, green, blue;
};

/** An image that owns its block. Moves, and copies only by Clone(). Empty after a move. */
class Image {
 public:
  /** No image. */
  Image() = default;
  /** Takes over a block of malloc() or of the library. */
  explicit Image(PackedDib* dib) : dib_(dib) {}
  /** An image of pixels 0: omb_newdib(). */
  Image(int32_t width, int32_t height, uint16_t bits) : dib_(omb_newdib(width, height, bits)) {
    if (!dib_) throw Error("newdib");
  }

  /** An image of a host's pixels: omb_frompixels(). `background` is 0x00BBGGRR. */
  static Image FromPixels(OmbPixels format, int32_t width, int32_t height, const void* pixels,
                          intptr_t stride, uint32_t background = 0xFFFFFF) {
    Image image(omb_frompixels(format, width, height, pixels, stride, background));
    if (!image) throw Error("frompixels");
    return image;
  }
  /** The image's pixels in a host's array: omb_topixels(). */
  void ToPixels(OmbPixels format, void* pixels, intptr_t stride) const {
    Require(omb_topixels(get(), format, pixels, stride) != 0, "topixels");
  }

  explicit operator bool() const { return dib_ != nullptr; }
  PackedDib* get() const { return dib_.get(); }
  /** Hands the block over: the caller releases it with omb_freedib() or free(). */
  PackedDib* release() { return dib_.release(); }

  /** A copy of all columns and rows. 1, 4, 8 or 24 bits. */
  Image Clone() const { return Piece(0, 0, width(), height()); }
  /** A copy of a rectangle whose corner is counted from the top left: omb_cpydibrect(). */
  Image Piece(uint32_t x, uint32_t y, uint32_t w, uint32_t h) const {
    const uintptr_t copy = omb_cpydibrect(get(), static_cast<int32_t>(x), y, w, h);
    Require(copy != 0, "cpydibrect");
    return Image(reinterpret_cast<PackedDib*>(copy));
  }

  uint32_t width() const { return omb_DIBWidth(get()); }
  uint32_t height() const { return omb_DIBHeight(get()); }
  uint16_t bits() const { return omb_DIBBitCount(get()); }
  /** Bytes from a stored row to the next. */
  size_t stride() const { return (size_t{width()} * bits() + 31) / 32 * 4; }

  /** The bytes of row y, counted from the top of the picture, without padding. */
  Span<uint8_t> row(uint32_t y) { return {RowAt(y), RowBytes()}; }
  Span<const uint8_t> row(uint32_t y) const { return {RowAt(y), RowBytes()}; }

  /** Entries of the color table. */
  uint32_t colors() const { return omb_DIBNumColors(get()); }
  Color color(uint32_t index) const {
    Require(index < colors(), "color");
    const uint8_t* entry = omb_FindDIBBits(get()) - omb_PaletteSize(get()) +
                           size_t{omb_PaletteSize(get()) / colors()} * index;
    return {entry[2], entry[1], entry[0]};
  }
  bool iscolorful() const { return omb_iscolorful(get()) != 0; }
  bool can_gray() const { return omb_can_gray(get()) != 0; }
  bool can_filtersheet() const { return omb_can_filtersheet(get()) != 0; }
  bool can_pseudocolor() const { return omb_can_pseudocolor(get()) != 0; }
  bool can_balance() const { return omb_can_balance(get()) != 0; }
  int32_t autothreshold() const { return omb_autothreshold(get()); }

  /** @name Operations
   * Each gives the image itself, so that they can be chained. @{ */
  /** Colors from the first one on: a vector or the like, or {{0, 0, 0}, {255, 255, 255}}. */
  template <class Colors = std::initializer_list<Color>>
  Image& setpalette(const Colors& colors) {
    std::array<uint8_t, 4 * 256> table = {};
    uint32_t count = 0;
    for (const Color& c : colors) {
      Require(count < 256, "setpalette");
      const uint8_t entry[] = {c.blue, c.green, c.red, 0};
      std::memcpy(table.data() + 4 * count++, entry, 4);
    }
    return Done(omb_setpalette(get(), table.data(), count), "setpalette");
  }
  Image& setresolution(int32_t x, int32_t y) {
    return Done(omb_setresolution(get(), x, y), "setresolution");
  }

  Image& invert() { return Done(omb_invert(get()), "invert"); }
  Image& transformat() { return Replaced(omb_transformat, "transformat"); }
  /** To 24 bits, whatever the depth. */
  Image& truecolor() { return bits() == 16 || bits() == 32 ? transformat() : neuquant(24); }
  Image& crop(const OmbRect& rectangle) { return Replaced(omb_crop, "crop", &rectangle); }

  /** How often each value of a channel occurs; ::OMB_CHANNEL_GRAY turns the image gray. */
  std::array<int32_t, 256> histogram(OmbChannel channel) {
    std::array<int32_t, 256> counters = {};
    Done(omb_getchannelhistogram(get(), counters.data(), channel), "getchannelhistogram");
    return counters;
  }
  Image& brightnesscontrast(int32_t brightness, int32_t contrast) {
    Require(dib_ != nullptr, "brightnesscontrast");
    return Done(omb_brightnesscontrast(get(), brightness, contrast), "brightnesscontrast");
  }
  Image& gammacorrection(double gamma) {
    return std::fabs(gamma - 1) < 1e-8 ? *this
                                       : Done(omb_gammacorrection(get(), gamma), "gammacorrection");
  }
  Image& autolevel(double low = 0.005, double high = 0.995) {
    return Done(omb_autolevel(get(), low, high), "autolevel");
  }
  Image& autocontrast(double low = 0.005, double high = 0.995) {
    return Done(omb_autocontrast(get(), low, high), "autocontrast");
  }
  Image& gray() { return Replaced(omb_gray, "gray"); }
  /** `table`: blue, green, red and an ignored byte for each entry of the image's table. */
  Image& pseudocolor(const uint8_t* table) {
    return Done(omb_pseudocolor(get(), table), "pseudocolor");
  }
  Image& binary(int32_t threshold) { return Replaced(omb_binary, "binary", threshold); }
  /** By the threshold that autothreshold() proposes. */
  Image& binary() { return binary(autothreshold()); }
  Image& filtercolor(OmbChannel channel) {
    return Done(omb_filtercolor(get(), channel), "filtercolor");
  }
  Image& extractcolor(OmbChannel channel) {
    Require(channel >= OMB_CHANNEL_RED && channel <= OMB_CHANNEL_BLUE, "extractcolor");
    const bool pixels = bits() == 24;
    PackedDib* dib = release();
    const uint32_t result = omb_extractcolor(&dib, channel);
    dib_.reset(dib);
    // At 24 bits the depth tells.
    return Done(pixels ? bits() == 8 : result, "extractcolor");
  }
  Image& adjustghms(int32_t highlights, int32_t shadows1 = 0, int32_t shadows2 = 0) {
    Require(dib_ != nullptr, "adjustghms");
    omb_adjustghms(get(), highlights, shadows1, shadows2);  // 0 means nothing to do
    return *this;
  }
  /** `points`: a vector of OmbPoint or the like, or {{0, 0}, {64, 48}, {255, 255}}. */
  template <class Points = std::initializer_list<OmbPoint>>
  Image& curve(const Points& points, OmbChannel channel = OMB_CHANNEL_ALL) {
    const auto count = static_cast<uint32_t>(std::size(points));
    return Done(omb_curve(get(), std::data(points), count, channel), "curve");
  }
  /** `points` as for curve(). */
  template <class Points = std::initializer_list<OmbPoint>>
  Image& segmentoperation(const Points& points, OmbChannel channel = OMB_CHANNEL_ALL) {
    const auto count = static_cast<uint32_t>(std::size(points));
    return Done(omb_segmentoperation(get(), std::data(points), count, channel), "segmentoperation");
  }
  Image& x1x2_changed(int32_t x1, int32_t x2, OmbChannel channel = OMB_CHANNEL_ALL) {
    return Done(omb_x1x2_changed(get(), x1, x2, channel), "x1x2_changed");
  }
  Image& adjustcolor(OmbAdjustment mode, int32_t a, int32_t b, int32_t c) {
    return Done(omb_adjustcolor(get(), mode, a, b, c), "adjustcolor");
  }
  Image& balance(int32_t red, int32_t green, int32_t blue,
                 OmbBalanceRange range = OMB_BALANCE_MIDTONES, bool keepLight = true) {
    return Done(omb_balance(get(), red, green, blue, range, keepLight ? 1 : 0), "balance");
  }

  Image& scale(uint32_t width_in, uint32_t height_in, OmbResampling mode = OMB_RESAMPLE_BICUBIC) {
    if (width_in == width() && height_in == height()) return *this;
    return Replaced(omb_scale, "scale", width_in, height_in, mode);
  }
  Image& resize(uint32_t width_in, uint32_t height_in,
                OmbResizeFilter filter = OMB_RESIZE_LANCZOS) {
    return Replaced(omb_resize, "resize", width_in, height_in, filter);
  }
  Image& rotate(float degrees, OmbResampling mode = OMB_RESAMPLE_BICUBIC) {
    if (std::fabs(std::fmod(degrees, 360.0f)) < 0.01f) return *this;
    return Replaced(omb_rotate, "rotate", degrees, mode);
  }
  Image& fliphor() { return Done(omb_fliphor(get()), "fliphor"); }
  Image& flipvert() { return Done(omb_flipvert(get()), "flipvert"); }

  Image& convolute(OmbConvolution type) { return InPlace(omb_convolute, "convolute", type); }
  Image& convolute(const KERNAL& kernel, int32_t passes = 1, int32_t strength = 10) {
    return Done(omb_DoConvoluteDIB(get(), &kernel, passes, strength), "DoConvoluteDIB");
  }
  Image& convolute(OmbKernal kernel, int32_t passes = 1, int32_t strength = 10) {
    return convolute(*omb_getKERNAL(kernel), passes, strength);
  }
  /** `color` is 0x00BBGGRR. */
  Image& emboss(OmbEmboss direction, uint32_t color = 0x808080) {
    return Done(omb_emboss(get(), direction, color), "emboss");
  }
  Image& sobel() { return InPlace(omb_sobel, "sobel"); }
  Image& medianblur() { return InPlace(omb_medianblur, "medianblur"); }
  Image& diffuse(uint32_t area) { return Done(omb_diffuse(get(), area), "diffuse"); }
  Image& diffuse(uint32_t area, uint64_t seed) {
    return Done(omb_diffuse_seed(get(), area, seed), "diffuse");
  }
  Image& granulate(uint32_t width, uint32_t height) {
    return Done(omb_granulate(get(), width, height), "granulate");
  }

  Image& dilate() { return InPlace(omb_dilate, "dilate"); }
  Image& erode() { return InPlace(omb_erode, "erode"); }
  Image& mathopen() { return InPlace(omb_mathopen, "mathopen"); }
  Image& mathclose() { return InPlace(omb_mathclose, "mathclose"); }
  Image& denoise() { return InPlace(omb_denoise, "denoise"); }
  Image& pickedge() { return InPlace(omb_pickedge, "pickedge"); }
  Image& gradientize() { return InPlace(omb_gradientize, "gradientize"); }
  Image& opencompose() { return InPlace(omb_opencompose, "opencompose"); }
  Image& tophat() { return InPlace(omb_tophat, "tophat"); }
  Image& morph(OmbMorphology op, const KERNAL& element, int32_t iterations = 1) {
    return Done(omb_DoKernalMorphDIB(get(), bits(), op, &element, iterations), "DoKernalMorphDIB");
  }
  Image& morph(OmbMorphology op, OmbKernal element, int32_t iterations = 1) {
    return morph(op, *omb_getKERNAL(element), iterations);
  }

  /** The tones have members of their own. */
  Image& enhancepage(OmbEnhancement filter, OmbPageSize size = OMB_SIZE_5X5, int32_t passes = 1,
                     int32_t strength = 10, int32_t percentile = 50) {
    return Done(omb_EnhancePage(get(), size, passes, strength, 0, percentile, filter, 0, 0),
                "EnhancePage");
  }
  Image& edgepage(OmbEdge filter, OmbPageSize size = OMB_SIZE_3X3, int32_t passes = 1,
                  int32_t strength = 10) {
    return Done(omb_EdgePage(get(), size, passes, strength, filter), "EdgePage");
  }
  Image& morphologicalpage(OmbPageMorphology op, OmbPageSize size = OMB_SIZE_3X3,
                           OmbPageShape shape = OMB_SHAPE_SQUARE, int32_t iterations = 1) {
    return Done(omb_MorphologicalPage(get(), size, shape, iterations, op), "MorphologicalPage");
  }

  /** Blocks that suit pages, a twelfth of the width, and one curve for the whole image. */
  enum Blocks : int32_t { kAutomatic = -1, kWhole = 0 };
  /**
   * omb_EnhancePage() with a tone curve: the paper becomes white. `blocks` is their width and
   * height in pixels, or one of ::Blocks; `cut` counts in thousandths of the pixels.
   */
  Image& whiten(int32_t blocks = kAutomatic, int32_t cut = 5, int32_t percent = 100) {
    return Tone(OMB_TONE_WHITEN, blocks, cut, percent, "whiten");
  }
  /** As whiten(): the tones that occur are stretched to black and white. */
  Image& stretch(int32_t blocks = kAutomatic, int32_t cut = 5, int32_t percent = 100) {
    return Tone(OMB_TONE_STRETCH, blocks, cut, percent, "stretch");
  }
  /** As whiten(): the tones that occur most are spread. `limit` is that of the contrast in percent;
   * 0 for none. */
  Image& equalize(int32_t blocks = kAutomatic, int32_t limit = 300, int32_t percent = 100) {
    return Tone(OMB_TONE_EQUALIZE, blocks, limit, percent, "equalize");
  }
  /** As whiten(): shadows become lighter. */
  Image& logarithm(int32_t blocks = kAutomatic, int32_t percent = 100) {
    return Tone(OMB_TONE_LOGARITHM, blocks, 0, percent, "logarithm");
  }

  /** To a learned palette, or to 24 bits. A refusal may leave the 24-bit copy. */
  Image& neuquant(int32_t to_bits) {
    return bits() == to_bits ? *this : Replaced(omb_neuquant, "neuquant", to_bits);
  }
  Image& dither(int32_t to_bits) { return Replaced(omb_dither, "dither", to_bits); }
  /** @} */

 private:
  struct Free {
    void operator()(PackedDib* dib) const { omb_freedib(dib); }
  };

  static void Require(bool done, const char* operation) {
    if (!done) throw Error(operation);
  }
  template <class Status>
  Image& Done(Status status, const char* operation) {
    Require(status != 0, operation);
    return *this;
  }
  template <class... Values, class... Given>
  Image& InPlace(void (*function)(PackedDib*, Values...), const char* operation, Given... given) {
    Require(dib_ != nullptr, operation);
    function(get(), given...);
    return *this;
  }
  template <class Status, class... Values, class... Given>
  Image& Replaced(Status (*function)(PackedDib**, Values...), const char* operation,
                  Given... given) {
    PackedDib* dib = release();
    const Status status = function(&dib, given...);
    dib_.reset(dib);
    return Done(status, operation);
  }

  Image& Tone(OmbToneCurve curve, int32_t blocks, int32_t cut, int32_t percent, const char* name) {
    if (blocks < 0) {
      const uint32_t twelfth = width() / 12;
      blocks = twelfth < 16 ? 16 : twelfth > 32767 ? 32767 : static_cast<int32_t>(twelfth);
    }
    const OmbToneScope scope = blocks == kWhole ? OMB_SCOPE_IMAGE : OMB_SCOPE_BLOCKS;
    return Done(omb_EnhancePage(get(), OMB_SIZE_7X7, percent, cut, blocks, 0, OMB_ENHANCE_TONE,
                                scope, curve),
                name);
  }

  size_t RowBytes() const { return (size_t{width()} * bits() + 7) / 8; }
  uint8_t* RowAt(uint32_t y) const {
    Require(static_cast<int32_t>(height()) > 0 && y < height(), "row");
    return omb_FindDIBBits(get()) + stride() * (height() - 1 - y);
  }

  std::unique_ptr<PackedDib, Free> dib_;
};

}  // namespace ombrilo

#endif /* OMBRILO_OMBRILO_HPP_ */
