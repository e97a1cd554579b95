// omb_binary: black and white by comparing gray values with a threshold.
//
// A pixel's gray value g = 0.59 green + 0.3 red + 0.11 blue is computed in double precision,
// rounded to single precision and compared with the threshold t. In whole numbers that is a
// comparison of s = 59 green + 30 red + 11 blue with 100 t: when s = 100 t, g's error of some 1e-14
// vanishes in the rounding to single precision and g equals t; otherwise g is at least 0.01 away
// from t. All 2^24 colors have been tried.
#include <algorithm>

#include "core/color_table.h"
#include "core/colors_in_place.h"
#include "core/pixels.h"
#include "core/replacement.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// The smallest weighted sum (59 green + 30 red + 11 blue) that is white. A gray value equal to the
// threshold is white from `first_white_tie` on.
uint32_t WhiteLimit(int32_t threshold, int32_t first_white_tie) {
  const int32_t t = std::clamp(threshold, -1, 256);
  return static_cast<uint32_t>(std::max(0, 100 * t + (t < first_white_tie ? 1 : 0)));
}

// The tie at exactly 128 differs by depth on purpose.
constexpr int32_t kFirstWhiteTie1Bit = 128;
constexpr int32_t kFirstWhiteTie = 129;

// white[i]: whether color i becomes white; at most 256 colors.
void Decide(const uint8_t* bgr, size_t colors, uint32_t limit, uint8_t* white) {
  uint8_t bits[32] = {};
  simd::Active().threshold(bgr, colors, limit, bits);
  UnpackIndices(bits, 1, colors, white);
}

// A 1-bit image keeps its pixels, and its table becomes black and white. All announced entries are
// changed in the caller's block; then the bytes after the header are copied, as many as a full
// table and the rows have, even if the table is shorter or longer.
void Convert1Bit(const Dib& source, uint32_t limit, const Dib& binary) {
  ChangeTableColors(source, [&](uint8_t* bgr, size_t colors) {
    uint8_t white[256];
    Decide(bgr, colors, limit, white);
    for (size_t i = 0; i < colors; ++i) white[i] = white[i] != 0 ? 255 : 0;
    simd::Active().spread(white, colors, bgr);
  });
  const size_t header_size = source.header().header_size;
  const size_t count =
      2 * source.header().table_step() + source.stride() * static_cast<size_t>(source.pixel_rows());
  source.Read(header_size, binary.block() + header_size, count);
}

void ConvertIndexed(const DibView& source, uint32_t limit, const Dib& binary) {
  const uint32_t entries = ColorsOfDepth(source.bit_count());
  uint8_t colors[256][3], white[256] = {};
  ReadColorsAtByte40(source, entries, colors[0]);
  Decide(colors[0], entries, limit, white);
  for (int32_t y = 0; y < source.pixel_rows(); ++y) {
    uint8_t* to = binary.row(y);
    ForEachIndexRun(source.row(y), source.bit_count(), static_cast<size_t>(source.width()),
                    [&](size_t first, uint8_t* indices, size_t count) {
                      simd::Active().apply_table(indices, count, white);
                      PackIndices(indices, 1, count, to + first / 8);
                    });
  }
}

void ConvertTrueColor(const DibView& source, uint32_t limit, const Dib& binary) {
  const auto threshold = simd::Active().threshold;
  ConvertRows(source, binary, [=](const uint8_t* from, size_t pixels, uint8_t* to) {
    threshold(from, pixels, limit, to);
  });
}

void WriteBlackAndWhite(const Dib& binary) {
  constexpr uint8_t kColors[2][3] = {{0, 0, 0}, {255, 255, 255}};
  WriteColors(binary, 0, 2, kColors[0]);
}

}  // namespace

}  // namespace ombrilo

uint32_t omb_binary(PackedDib** image, int32_t threshold) {
  using namespace ombrilo;
  const auto source = Dib::Open(image == nullptr ? nullptr : *image);
  if (!source || !(source->indexed() || source->bit_count() == 24)) return 0;
  NewBlock block = NewBlock::Indexed(*source, 1);
  if (!block) return 0;
  const Dib binary = block.dib();
  const bool one_bit = source->bit_count() == 1;
  const uint32_t limit = WhiteLimit(threshold, one_bit ? kFirstWhiteTie1Bit : kFirstWhiteTie);
  if (one_bit) {
    Convert1Bit(*source, limit, binary);
  } else {
    if (source->indexed()) {
      ConvertIndexed(*source, limit, binary);
    } else {
      ConvertTrueColor(*source, limit, binary);
    }
    WriteBlackAndWhite(binary);
  }
  return block.Replace(image);
}
