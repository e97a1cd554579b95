// What the readers share: new images within the limits, their color tables, and pixels that images
// of the library cannot hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/packed_dib.h"
#include "files/files.h"

namespace omb {

inline constexpr double kInch = 0.0254;  // meters

// From a number of dots on a length; 0 when it makes no sense.
int32_t DotsPerMeter(double dots, double meters);
inline double DotsPerInch(int32_t per_meter) { return per_meter * kInch; }

// A resolution in dots per unit, by the unit's number in TIFF and EXIF: 2 an inch, 3 a centimeter.
// Other units give none.
Resolution ResolutionIn(uint32_t unit, double x, double y);

// No byte of a deflate stream becomes more bytes than this.
inline constexpr uint32_t kMostInflated = 1032;
// A Huffman-coded block of 8 x 8 samples takes a bit at least.
inline constexpr int64_t kMostSamplesPerJpegByte = 8 * 64;

// Masks of the red, green and blue bits in a pixel of 16 or 32 bits.
struct Masks {
  uint32_t red, green, blue;
  bool operator==(const Masks&) const = default;
};
// Those of files that have none.
constexpr Masks UsualMasks(uint16_t bit_count) {
  return bit_count == 32 ? Masks{0xFF0000, 0xFF00, 0xFF} : Masks{0x7C00, 0x03E0, 0x001F};
}

struct ImageSize {
  int64_t width;
  int64_t height;
  uint16_t bit_count;
};

// "30 x 20 pixels"
std::string PixelsText(const ImageSize& size);

// Throws FileError unless the host takes images of this size.
void CheckSize(const ImageSize& size);
// The same for files whose pixels are compressed, where a few bytes can claim to be any size.
void CheckCompressedSize(const ImageSize& size);

// An image with a 40-byte header, black colors and pixels 0. `masks`, when not null, go where the
// library looks for them. Throws FileError.
Image NewImage(const ImageSize& size, Resolution resolution, const Masks* masks = nullptr);

// The row `y` rows below the top of the picture.
inline uint8_t* RowFromTop(const ombrilo::Dib& dib, int32_t y) {
  return dib.row(dib.height() - 1 - y);
}

void SetColor(const ombrilo::Dib& dib, uint32_t index, uint8_t red, uint8_t green, uint8_t blue);
// The first `count` entries become a ramp from black to white, or from white to black.
void SetGrayRamp(const ombrilo::Dib& dib, uint32_t count, bool white_first = false);

// Turns a picture upright that is stored in one of TIFF's orientations. Throws FileError.
Image Upright(Image image, int orientation);
// The same for what a header says. From orientation 5 on, stored rows are columns.
void TurnUpright(PageInfo& info, int orientation);

// Rows of 2 bits per pixel become rows of 4. `to` may be `from`.
void ExpandTwoBits(const uint8_t* from, size_t pixels, uint8_t* to);

inline constexpr char kAlphaRemark[] = "transparency is composed on white";
inline constexpr char kDepthRemark[] = "16 bits per channel are reduced to 8";

// A sample of a color that covers white by alpha / 255.
inline uint8_t OnWhite(unsigned sample, unsigned alpha) {
  return static_cast<uint8_t>((sample * alpha + 255 * (255 - alpha) + 127) / 255);
}

// A sample of a color seen through two inks: what each lets through, out of 255.
inline uint8_t ThroughInks(unsigned light, unsigned gray) {
  return static_cast<uint8_t>((light * gray + 127) / 255);
}

// Rounds a sample of 16 bits to 8.
inline uint8_t ReduceSample(unsigned sample) {
  return static_cast<uint8_t>((sample * 255 + 32767) / 65535);
}

}  // namespace omb
