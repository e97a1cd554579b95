#include "files/tiff_samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/bytes.h"
#include "files/pixels_in.h"
#include "text.h"

namespace omb {

using namespace ombrilo;

namespace {

constexpr uint16_t kLab = PHOTOMETRIC_CIELAB;

unsigned WideSample(const uint8_t* samples, size_t i) {
  uint16_t sample;
  std::memcpy(&sample, samples + 2 * i, sizeof sample);
  return sample;
}

// Whether a pixel is one sample that the image can hold as it is.
bool IsPlain(const TiffDirectory& d) { return d.samples == 1 && (d.gray() || d.bits <= 8); }

void SwapColors(const uint8_t* from, size_t pixels, uint8_t* to) {
  for (size_t i = 0; i < 3 * pixels; i += 3) {
    to[i] = from[i + 2];
    to[i + 1] = from[i + 1];
    to[i + 2] = from[i];
  }
}

// The curve of sRGB, for light from 0 to 1.
double Encoded(double light) {
  return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
}

// Lab colors, which are relative to the light of prints (D50), as sRGB: CIE 15, with the matrix of
// B. Lindbloom for white that stays white.
void LabToRgb(const uint8_t* lab, uint8_t* rgb) {
  constexpr double kWhite[3] = {0.96422, 1, 0.82521};
  constexpr double kMatrix[3][3] = {{3.1338561, -1.6168667, -0.4906146},
                                    {-0.9787684, 1.9161415, 0.0334540},
                                    {0.0719453, -0.2289914, 1.4052427}};
  const double y = (lab[0] * 100.0 / 255 + 16) / 116;
  const double roots[3] = {y + static_cast<int8_t>(lab[1]) / 500.0, y,
                           y - static_cast<int8_t>(lab[2]) / 200.0};
  double xyz[3];
  for (size_t i = 0; i < 3; ++i) {
    const double f = roots[i];
    xyz[i] = kWhite[i] * (f > 6.0 / 29 ? f * f * f : (f - 16.0 / 116) * 3 * 36 / 841);
  }
  for (size_t i = 0; i < 3; ++i) {
    const double light = kMatrix[i][0] * xyz[0] + kMatrix[i][1] * xyz[1] + kMatrix[i][2] * xyz[2];
    rgb[i] = static_cast<uint8_t>(std::clamp(Encoded(light), 0.0, 1.0) * 255 + 0.5);
  }
}

}  // namespace

size_t TiffDirectory::color_samples() const {
  if (gray() || photometric == PHOTOMETRIC_PALETTE) return 1;
  if (photometric == PHOTOMETRIC_RGB) return 3;
  if (photometric == kLab) return 3;
  return photometric == PHOTOMETRIC_SEPARATED ? 4 : 0;
}

void CheckKind(const TiffDirectory& d) {
  if (d.sample_format == SAMPLEFORMAT_INT && d.photometric != kLab) {
    throw FileError("signed samples are not supported");
  }
  if (d.sample_format == SAMPLEFORMAT_IEEEFP) {
    throw FileError("samples of floating point are not supported");
  }
  if (d.sample_format == SAMPLEFORMAT_COMPLEXINT || d.sample_format == SAMPLEFORMAT_COMPLEXIEEEFP) {
    throw FileError("complex samples are not supported");
  }
  if (d.photometric == PHOTOMETRIC_SEPARATED && d.samples < 4) {
    throw FileError("other inks than cyan, magenta, yellow and black are not supported");
  }
}

std::string StoredOf(const TiffDirectory& d) {
  std::string stored = BitsText(d.bits);
  stored += d.gray()                                 ? " of gray"
            : d.photometric == PHOTOMETRIC_PALETTE   ? " of a palette"
            : d.photometric == PHOTOMETRIC_RGB       ? " each of red, green, blue"
            : d.photometric == PHOTOMETRIC_SEPARATED ? " each of four inks"
            : d.photometric == PHOTOMETRIC_YCBCR     ? " of luminance and color differences"
            : d.photometric == kLab                  ? " each of Lab"
                                                     : " of some kind";
  if (d.alpha != TiffAlpha::kNone) stored += " with alpha";
  const char* name = nullptr;
  if (const TIFFCodec* codec = TIFFFindCODEC(d.compression)) name = codec->name;
  if (d.compression != COMPRESSION_NONE && name != nullptr) stored += std::string(", ") + name;
  return stored;
}

TiffPalette ReadPalette(TIFF* tiff, const TiffDirectory& d, const TiffErrors& errors) {
  uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
  if (TIFFGetField(tiff, TIFFTAG_COLORMAP, &red, &green, &blue) == 0) {
    errors.Fail("the color table is missing");
  }
  // Old writers stored 8 bits where 16 belong.
  const uint32_t count = 1u << std::min<uint16_t>(d.bits, 8);
  uint16_t highest = 0;
  for (uint32_t i = 0; i < count; ++i) highest = std::max({highest, red[i], green[i], blue[i]});
  const int shift = highest > 255 ? 8 : 0;
  TiffPalette palette = {};
  for (uint32_t i = 0; i < count; ++i) {
    palette[i] = {static_cast<uint8_t>(red[i] >> shift), static_cast<uint8_t>(green[i] >> shift),
                  static_cast<uint8_t>(blue[i] >> shift)};
  }
  return palette;
}

bool TiffSamples::Takes(const TiffDirectory& d) {
  const size_t colors = d.color_samples();
  if (colors == 0 || d.samples < colors) return false;
  if (d.tile_width % 8 != 0) return false;
  if (d.samples == 1 && d.bits <= 8) return (d.bits & (d.bits - 1)) == 0;
  if (d.photometric == PHOTOMETRIC_PALETTE) return d.bits == 8;
  return d.bits == 8 || d.bits == 16;
}

uint16_t TiffSamples::DepthOf(const TiffDirectory& d) {
  if (IsPlain(d)) return d.bits == 2 ? 4 : std::min<uint16_t>(d.bits, 8);
  // Gray over white is gray.
  return d.gray() ? 8 : 24;
}

TiffSamples::TiffSamples(TIFF* tiff, const TiffDirectory& directory, const TiffErrors& errors)
    : directory_(directory),
      used_(directory.color_samples() + (directory.alpha == TiffAlpha::kNone ? 0 : 1)) {
  const bool palette = directory.photometric == PHOTOMETRIC_PALETTE && !IsPlain(directory);
  if (palette) palette_ = ReadPalette(tiff, directory, errors);
  used_ = std::min<size_t>(used_, directory.samples);
}

bool TiffSamples::left_out() const { return directory_.samples > used_; }

void TiffSamples::ToPixels(const uint8_t* const* planes, size_t pixels, uint8_t* to) {
  const TiffDirectory& d = directory_;
  if (d.samples == 1 && d.bits == 2) return ExpandTwoBits(planes[0], pixels, to);
  if (d.samples == 1 && d.bits <= 8) {
    std::memcpy(to, planes[0], (pixels * d.bits + 7) / 8);
    return;
  }
  if (d.samples == 3 && d.bits == 8 && !d.planar && d.photometric == PHOTOMETRIC_RGB) {
    return SwapColors(planes[0], pixels, to);
  }
  Gather(planes, pixels);
  Compose(pixels, to);
}

void TiffSamples::Gather(const uint8_t* const* planes, size_t pixels) {
  // The color differences of Lab are signed.
  const auto from_zero = [&](size_t s) {
    return directory_.photometric != kLab || s == 0 || s > 2;
  };
  samples_.resize(used_ * pixels);
  for (size_t s = 0; s < used_; ++s) {
    const uint8_t* from = directory_.planar ? planes[s] : planes[0];
    const size_t step = directory_.planar ? 1 : directory_.samples;
    const size_t first = directory_.planar ? 0 : s;
    for (size_t x = 0; x < pixels; ++x) {
      const size_t i = first + x * step;
      const unsigned wide = directory_.bits == 8 ? 0 : WideSample(from, i);
      samples_[x * used_ + s] = directory_.bits == 8 ? from[i]
                                : from_zero(s)       ? ReduceSample(wide)
                                                     : static_cast<uint8_t>(wide >> 8);
    }
  }
}

void TiffSamples::Compose(size_t pixels, uint8_t* to) {
  const TiffDirectory& d = directory_;
  const size_t colors = d.color_samples(), channels = d.gray() ? 1 : 3;
  const uint8_t* from = samples_.data();
  for (size_t x = 0; x < pixels; ++x, from += used_, to += channels) {
    uint8_t color[3] = {from[0], from[1 % used_], from[2 % used_]};
    if (d.photometric == PHOTOMETRIC_PALETTE) {
      std::ranges::copy(palette_[from[0]], color);
    } else if (d.photometric == kLab) {
      LabToRgb(from, color);
    } else if (colors == 4) {
      for (size_t c = 0; c < 3; ++c) {
        color[c] = ThroughInks(255u - from[c], 255u - from[3]);
      }
    }
    const unsigned alpha = used_ > colors ? from[colors] : 255;
    transparent_ = transparent_ || alpha != 255;
    for (size_t c = 0; c < channels; ++c) {
      unsigned value = color[channels - 1 - c];
      // The white background is sample 0 if 0 is white.
      if (d.photometric == PHOTOMETRIC_MINISWHITE) value = 255 - value;
      value = d.alpha == TiffAlpha::kMultiplied && colors != 4 ? std::min(value + 255 - alpha, 255u)
                                                               : OnWhite(value, alpha);
      if (d.photometric == PHOTOMETRIC_MINISWHITE) value = 255 - value;
      to[c] = static_cast<uint8_t>(value);
    }
  }
}

}  // namespace omb
