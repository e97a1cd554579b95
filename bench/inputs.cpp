#include "inputs.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/packed_dib.h"

namespace ombrilo::bench {

namespace {

uint32_t Noise(uint32_t x, uint32_t y) {
  uint32_t h = x * 0x9E3779B1u ^ y * 0x85EBCA77u;
  h = (h ^ h >> 15) * 0x2C1B3C6Du;
  return h ^ h >> 13;
}

// A channel of a made-up photograph: shading, large shapes with edges, fine texture and grain.
uint8_t Scene(int x, int y, int channel) {
  const double u = x / 400.0, v = y / 400.0;
  double value = 120 + 60 * std::sin(u + 0.7 * channel) * std::cos(0.8 * v - 0.3 * channel);
  if (std::fmod(u * u + v * v, 9.0) < 3.0) value += 45 - 20 * channel;
  value += 12 * std::sin(x * 0.35) * std::sin(y * 0.27);
  value += static_cast<double>(
               Noise(static_cast<uint32_t>(x), static_cast<uint32_t>(3 * y + channel)) % 15) -
           7;
  return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

// Lines of marks the size of letters, with gray edges.
uint8_t Ink(int x, int y) {
  const int line = y % 60, cell = x % 34;
  const bool margin = x < 250 || x > 2230 || y < 300 || y > 3200;
  if (margin || line > 38 ||
      Noise(static_cast<uint32_t>(x / 34), static_cast<uint32_t>(y / 60)) % 6 == 0)
    return 250;
  const uint32_t shape = Noise(static_cast<uint32_t>(x / 34 + 1000), static_cast<uint32_t>(y / 60));
  const int dx = cell - 16, dy = line - 19;
  const bool ring = shape % 3 != 0 && std::abs(dx * dx + dy * dy - 180) < 60;
  const bool stem = shape % 2 == 0 && std::abs(dx + 8) < 3;
  const bool bar = shape % 5 < 2 && std::abs(dy) < 3 && std::abs(dx) < 12;
  return ring || stem || bar ? 20 : 250;
}

PackedDib* New(int width, int height, uint16_t bits) { return omb_newdib(width, height, bits); }

}  // namespace

Image Copy(const PackedDib* dib) {
  const size_t size = DibView::Open(dib)->extent();
  void* block = std::malloc(size);
  std::memcpy(block, dib, size);
  return Image(static_cast<PackedDib*>(block));
}

const PackedDib* Photo24() {
  static const Image image = [] {
    Image made(New(4000, 3000, 24));
    const Dib dib = *Dib::Open(made.get());
    for (int y = 0; y < dib.height(); ++y) {
      for (int x = 0; x < dib.width(); ++x) {
        for (int c = 0; c < 3; ++c) dib.row(y)[3 * x + c] = Scene(x, y, c);
      }
    }
    return made;
  }();
  return image.get();
}

const PackedDib* Page8() {
  static const Image image = [] {
    Image made(New(2480, 3508, 8));
    const Dib dib = *Dib::Open(made.get());
    for (int y = 0; y < dib.height(); ++y) {
      for (int x = 0; x < dib.width(); ++x) {
        dib.row(y)[x] = static_cast<uint8_t>(
            Ink(x, y) - Noise(static_cast<uint32_t>(x), static_cast<uint32_t>(y)) % 12);
      }
    }
    return made;
  }();
  return image.get();
}

const PackedDib* Page1() {
  static const Image image = [] {
    Image made(New(2480, 3508, 1));
    const Dib dib = *Dib::Open(made.get());
    for (int y = 0; y < dib.height(); ++y) {
      for (int x = 0; x < dib.width(); ++x) {
        if (Ink(x, y) > 128) dib.row(y)[x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
      }
    }
    return made;
  }();
  return image.get();
}

const PackedDib* Indexed8() {
  static const Image image = [] {
    Image made(New(1600, 1250, 8));
    const Dib dib = *Dib::Open(made.get());
    for (uint32_t i = 0; i < 256; ++i) {
      const uint32_t color = Noise(i, 77);
      std::memcpy(dib.block() + kInfoHeaderSize + 4 * i, &color, 3);
    }
    for (int y = 0; y < dib.height(); ++y) {
      for (int x = 0; x < dib.width(); ++x) dib.row(y)[x] = Scene(2 * x, 2 * y, 0);
    }
    return made;
  }();
  return image.get();
}

double Pixels(const PackedDib* dib) {
  return static_cast<double>(omb_DIBWidth(dib)) * omb_DIBHeight(dib);
}

#ifdef OMBRILO_HAVE_OPENCV
cv::Mat AsMat(PackedDib* image) {
  const Dib dib = *Dib::Open(image);
  return cv::Mat(dib.height(), dib.width(), CV_8UC(dib.bit_count() / 8), dib.rows(), dib.stride());
}
#endif

#ifdef OMBRILO_HAVE_LEPTONICA
std::shared_ptr<PIX> AsPix(const PackedDib* image) {
  const DibView dib = *DibView::Open(image);
  const int bits = dib.bit_count();
  std::shared_ptr<PIX> pix(pixCreate(dib.width(), dib.height(), bits == 24 ? 32 : bits),
                           [](PIX* made) { pixDestroy(&made); });
  for (int y = 0; y < dib.height(); ++y) {
    const uint8_t* row = dib.row(y);
    l_uint32* to = pixGetData(pix.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(pix.get());
    for (int x = 0; x < dib.width(); ++x) {
      if (bits == 24) {
        composeRGBPixel(row[3 * x + 2], row[3 * x + 1], row[3 * x], to + x);
      } else if (bits == 8) {
        SET_DATA_BYTE(to, x, row[x]);
      } else if ((row[x / 8] >> (7 - x % 8) & 1) != 0) {
        SET_DATA_BIT(to, x);
      }
    }
  }
  return pix;
}
#endif

}  // namespace ombrilo::bench
