// A palette learned from an image by a self-organising network: A. H. Dekker, "Kohonen neural
// networks for optimal colour quantization", Network: Computation in Neural Systems 5 (1994).
//
// Neurons in a row, one per palette entry, start along the gray diagonal. Each sampled color is won
// by one of them, in a contest that handicaps frequent winners; the winner and, less so, its
// neighbours move towards the color. Rates and the neighbourhood's radius fall from cycle to cycle.
// All arithmetic is in integers.
//
// An instance belongs to one call, so that calls on several threads do not meet.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/buffer.h"
#include "core/packed_dib.h"
#include "core/palette_search.h"
#include "rows/row_functions.h"

namespace ombrilo {

class PaletteNetwork {
 public:
  // A network of 2^bits neurons, for an image of so many pixels; `bits` is 1, 2, 4 or 8. Takes all
  // its memory at once, up to 5.2 MiB. False when there is none.
  PaletteNetwork(int bits, uint64_t pixels);
  explicit operator bool() const { return memory_ && sorted_; }

  // Learns the palette of a 24-bit image. Its rows are taken as one stream of bytes, padding
  // included.
  void Learn(const DibView& image);

  // Writes the learned palette, in the order of the neurons, as a color table with `step` bytes per
  // entry. Returns the end of the table, where rows start.
  uint8_t* WriteTable(uint8_t* table, size_t step) const;

  // The entries for colors of `step` (3 or 4) bytes: least sum of absolute differences; among
  // equals the one that the search along the green-sorted index meets first.
  void Find(const uint8_t* colors, size_t step, size_t count, uint8_t* indices) {
    simd::Active().find_by_sums(sorted_.lists(), colors, step, count, indices);
    simd::Active().apply_table(indices, count, state_[0].index_of);
  }

  // Error diffusion (`diffuse` of rows/row_functions.h) with errors relative to seen[index].
  void Diffuse(const uint32_t* seen, const uint8_t* rows, size_t stride, size_t width, size_t count,
               uint32_t* before, uint8_t* indices);

 private:
  struct State {
    simd::Neurons neurons;
    uint8_t bgr[256][3];
    uint8_t index_of[256];  // into the palette, of the numbers of sorted_
  };

  void LearnCycles(const uint8_t* picture, size_t length);
  void TakeColors();
  void BuildIndex();

  uint32_t colors_;
  AlignedScratch memory_;
  State* state_ = reinterpret_cast<State*>(memory_.get());
  PaletteSearch<simd::SumsLists> sorted_;  // by green
};

}  // namespace ombrilo
