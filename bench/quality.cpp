// How close palettes come: the mean squared error of quantization to 256 colors, beside other
// quantizers, for photographs given as arguments. Prints the tables of docs/quality.md.
#include <leptonica/allheaders.h>

#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/packed_dib.h"
#include "ombrilo/ombrilo.h"

#ifdef OMBRILO_HAVE_FREEIMAGE
#include <FreeImage.h>
#endif

namespace ombrilo::bench {

namespace {

using OwnedPix = std::shared_ptr<PIX>;

OwnedPix Own(PIX* pix) {
  return OwnedPix(pix, [](PIX* owned) { pixDestroy(&owned); });
}

// Rows from the top, packed B,G,R.
struct Picture {
  int width, height;
  std::vector<uint8_t> bgr;

  uint8_t* At(int x, int y) { return &bgr[3 * (static_cast<size_t>(y) * width + x)]; }
  const uint8_t* At(int x, int y) const { return const_cast<Picture*>(this)->At(x, y); }
};

Picture FromPix(const OwnedPix& pix) {
  const OwnedPix colors = Own(pixConvertTo32(pix.get()));
  Picture made{pixGetWidth(colors.get()), pixGetHeight(colors.get()), {}};
  made.bgr.resize(size_t{3} * made.width * made.height);
  for (int y = 0; y < made.height; ++y) {
    const l_uint32* row =
        pixGetData(colors.get()) + static_cast<ptrdiff_t>(y) * pixGetWpl(colors.get());
    for (int x = 0; x < made.width; ++x) {
      l_int32 red, green, blue;
      extractRGBValues(row[x], &red, &green, &blue);
      uint8_t* to = made.At(x, y);
      to[0] = static_cast<uint8_t>(blue);
      to[1] = static_cast<uint8_t>(green);
      to[2] = static_cast<uint8_t>(red);
    }
  }
  return made;
}

Picture Ours(const Picture& original, int32_t (*quantize)(PackedDib**, int32_t)) {
  PackedDib* image = omb_newdib(original.width, original.height, 24);
  const Dib dib = *Dib::Open(image);
  for (int y = 0; y < original.height; ++y) {
    std::memcpy(dib.row(original.height - 1 - y), original.At(0, y), size_t{3} * original.width);
  }
  quantize(&image, 8);
  const DibView quantized = *DibView::Open(image);
  const uint8_t* table = quantized.block() + kInfoHeaderSize;
  Picture made = original;
  for (int y = 0; y < made.height; ++y) {
    const uint8_t* row = quantized.row(made.height - 1 - y);
    for (int x = 0; x < made.width; ++x) std::memcpy(made.At(x, y), table + 4 * row[x], 3);
  }
  omb_freedib(image);
  return made;
}

#ifdef OMBRILO_HAVE_FREEIMAGE
Picture FreeImageNeural(const Picture& original) {
  const auto from = FreeImage_ConvertFromRawBits(
      const_cast<BYTE*>(original.At(0, 0)), original.width, original.height, 3 * original.width, 24,
      0xFF0000, 0xFF00, 0xFF, TRUE);
  const auto quantized = FreeImage_ColorQuantizeEx(from, FIQ_NNQUANT);
  Picture made = original;
  const RGBQUAD* table = FreeImage_GetPalette(quantized);
  for (int y = 0; y < made.height; ++y) {
    const BYTE* row = FreeImage_GetScanLine(quantized, made.height - 1 - y);
    for (int x = 0; x < made.width; ++x) std::memcpy(made.At(x, y), &table[row[x]], 3);
  }
  FreeImage_Unload(quantized);
  FreeImage_Unload(from);
  return made;
}
#endif

// Of the averages of `size` x `size` pixels, per channel.
double MeanSquaredError(const Picture& a, const Picture& b, int size) {
  double sum = 0;
  const int columns = a.width / size, rows = a.height / size;
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      for (int c = 0; c < 3; ++c) {
        int difference = 0;
        for (int k = 0; k < size * size; ++k) {
          const int u = size * x + k % size, v = size * y + k / size;
          difference += a.At(u, v)[c] - b.At(u, v)[c];
        }
        const double mean = static_cast<double>(difference) / (size * size);
        sum += mean * mean;
      }
    }
  }
  return sum / (3.0 * columns * rows);
}

struct Quantizer {
  const char* name;
  std::function<Picture(const OwnedPix& pix, const Picture& picture)> run;
};

const Quantizer kQuantizers[] = {
    {"`omb_neuquant`",
     [](const OwnedPix&, const Picture& from) { return Ours(from, omb_neuquant); }},
#ifdef OMBRILO_HAVE_FREEIMAGE
    {"FreeImage NNQUANT",
     [](const OwnedPix&, const Picture& from) { return FreeImageNeural(from); }},
#endif
    {"Leptonica median cut",
     [](const OwnedPix& from, const Picture&) {
       return FromPix(Own(pixMedianCutQuant(from.get(), 0)));
     }},
    {"`omb_dither`", [](const OwnedPix&, const Picture& from) { return Ours(from, omb_dither); }},
    {"Leptonica median cut, dithered",
     [](const OwnedPix& from, const Picture&) {
       return FromPix(Own(pixMedianCutQuant(from.get(), 1)));
     }},
    {"Leptonica octree, dithered",
     [](const OwnedPix& from, const Picture&) {
       return FromPix(Own(pixOctreeColorQuant(from.get(), 240, 1)));
     }},
};

}  // namespace

}  // namespace ombrilo::bench

int main(int argc, char** argv) {
  using namespace ombrilo::bench;
  constexpr size_t kCount = std::size(kQuantizers);
  std::vector<std::string> pixels(kCount), averages(kCount);
  std::string names = "|  |", rule = "|---|";
  for (int i = 1; i < argc; ++i) {
    const OwnedPix read = Own(pixRead(argv[i]));
    if (!read) {
      std::fprintf(stderr, "%s: not an image that can be read\n", argv[i]);
      return 1;
    }
    const OwnedPix pix = Own(pixConvertTo32(read.get()));
    const Picture original = FromPix(pix);
    const std::string path = argv[i], name = path.substr(path.find_last_of('/') + 1);
    names += " " + name + ", " + std::to_string(original.width) + " x " +
             std::to_string(original.height) + " |";
    rule += "---:|";
    for (size_t k = 0; k < kCount; ++k) {
      const Picture quantized = kQuantizers[k].run(pix, original);
      for (const auto& [table, size] : {std::pair{&pixels, 1}, {&averages, 4}}) {
        char cell[32];
        std::snprintf(cell, sizeof cell, " %.2f |", MeanSquaredError(original, quantized, size));
        (*table)[k] += cell;
      }
    }
  }
  for (const auto& [title, table] :
       {std::pair{"Pixels", &pixels}, {"Averages of 4 x 4 pixels", &averages}}) {
    std::printf("%s:\n\n%s\n%s\n", title, names.c_str(), rule.c_str());
    for (size_t k = 0; k < kCount; ++k) {
      std::printf("| %s |%s\n", kQuantizers[k].name, (*table)[k].c_str());
    }
    std::printf("\n");
  }
  return 0;
}
