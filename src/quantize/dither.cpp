// omb_dither: colors mapped to a learned palette, errors spread over neighbouring pixels.
//
// Errors go to the right and to the row stored before, which already holds palette colors: two rows
// of work are enough. A row is mapped to indices when the row behind it is done.
//
// The error's shares 3/8 and 1/4 are defined in floating point: the share in double precision, cut
// to single, added to the neighbour's value in single, truncated toward 0. Errors are whole numbers
// up to 255 and values stay below 2^12, so nothing is ever rounded, and whole eighths give the
// same.
#include <algorithm>
#include <cstring>
#include <utility>

#include "core/pixels.h"
#include "core/replacement.h"
#include "quantize/palette_network.h"

namespace ombrilo {

namespace {

class Ditherer {
 public:
  // Takes the memory for rows of `width` pixels; false when there is none.
  explicit Ditherer(size_t width)
      : width_(width),
        rows_(NewScratchBuffer<Value>(2 * width)),
        indices_(NewScratchBuffer<uint8_t>(width)) {}
  explicit operator bool() const { return rows_ && indices_; }

  // Maps the stored rows in their order. `colors` are the palette's as errors see it; done(y,
  // indices) is called for each row.
  template <class Done>
  void Run(const DibView& source, PaletteNetwork& network, const uint8_t (*colors)[3],
           Done&& done) {
    current_ = rows_.get();
    before_ = current_ + width_;
    for (int32_t y = 0; y < source.pixel_rows(); ++y) {
      std::swap(before_, current_);
      const uint8_t* bgr = source.row(y);
      for (size_t x = 0; x < width_; ++x, bgr += 3) current_[x] = {{bgr[0], bgr[1], bgr[2]}};
      Diffuse(network, colors, y > 0);
      if (y > 0) done(y - 1, Map(network, before_));
    }
    if (source.pixel_rows() > 0) done(source.pixel_rows() - 1, Map(network, current_));
  }

 private:
  struct Value {
    int32_t bgr[3];
  };

  static uint8_t Find(PaletteNetwork& network, Value& value) {
    for (int32_t& v : value.bgr) v = std::clamp(v, 0, 255);
    return network.Find(static_cast<uint8_t>(value.bgr[0]), static_cast<uint8_t>(value.bgr[1]),
                        static_cast<uint8_t>(value.bgr[2]));
  }

  void Diffuse(PaletteNetwork& network, const uint8_t (*colors)[3], bool share_before) {
    for (size_t x = 0; x < width_; ++x) {
      Value& value = current_[x];
      const uint8_t* color = colors[Find(network, value)];
      // The last pixel of a row gets no share from its left neighbour. That is the contract.
      const bool share_right = x + 2 < width_;
      for (int c = 0; c < 3; ++c) {
        const int32_t error = value.bgr[c] - color[c];
        value.bgr[c] = color[c];
        if (share_right) Add(3 * error, current_[x + 1].bgr[c]);
        if (share_before) Add(3 * error, before_[x].bgr[c]);
        if (share_right && share_before) Add(2 * error, before_[x + 1].bgr[c]);
      }
    }
  }

  static void Add(int32_t eighths, int32_t& value) { value = (8 * value + eighths) / 8; }

  const uint8_t* Map(PaletteNetwork& network, Value* row) {
    for (size_t x = 0; x < width_; ++x) indices_[x] = Find(network, row[x]);
    return indices_.get();
  }

  size_t width_;
  Buffer<Value> rows_;
  Buffer<uint8_t> indices_;
  Value* current_ = nullptr;
  Value* before_ = nullptr;  // the row stored before
};

}  // namespace

}  // namespace ombrilo

int32_t omb_dither(PackedDib** image, int32_t bits) {
  using namespace ombrilo;
  const auto source = DibView::Open(image == nullptr ? nullptr : *image);
  if (!source || source->bit_count() != 24) return 0;
  if (bits != 1 && bits != 2 && bits != 4 && bits != 8) return 0;

  // Indices of 1 and 2 bits are written as nibbles, at the row length of the requested depth, so
  // that rows overlap. That is the contract, and the block has room for it.
  const uint16_t packing = bits == 8 ? 8 : 4;
  const auto depth = static_cast<uint16_t>(bits);
  const uint32_t colors = 1u << bits;
  NewBlock block = NewBlock::WithDepth(*source, depth, colors, 0, packing);
  if (!block) return 0;
  PaletteNetwork network(bits);
  Ditherer ditherer(source->pixel_rows() == 0 ? 0 : static_cast<size_t>(source->width()));
  if (!network || !ditherer) return 0;

  network.Learn(*source);
  // Not by the block's own header, which announces no table at 2 bits.
  const DibHeader& header = source->header();
  uint8_t* const table = block.bytes() + header.header_size;
  uint8_t* const rows = network.WriteTable(table, header.table_step());
  const auto stride = static_cast<size_t>(StrideOf(source->width(), depth));

  // Errors are taken to the colors at byte 40, where the table of an information header stands,
  // after any header. That is the contract.
  uint8_t seen[256][3] = {};
  for (size_t i = 0; i < colors; ++i) {
    for (size_t c = 0; c < 3; ++c) {
      const size_t at = kInfoHeaderSize + 4 * i + c;
      if (at < block.size()) seen[i][c] = block.bytes()[at];
    }
  }
  ditherer.Run(*source, network, seen, [&](int32_t y, const uint8_t* indices) {
    PackIndices(indices, packing, static_cast<size_t>(source->width()),
                rows + static_cast<size_t>(y) * stride);
  });
  block.Replace(image);
  return 1;
}
