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
#include "rows/row_functions.h"

namespace ombrilo {

class PaletteNetwork {
 public:
  // A network of 2^bits neurons; `bits` is 1, 2, 4 or 8. Takes all its memory at once: about 300
  // KiB, and false when there is none.
  explicit PaletteNetwork(int bits);
  explicit operator bool() const { return state_ != nullptr; }

  // Learns the palette of a 24-bit image. Its rows are taken as one stream of bytes, padding
  // included.
  void Learn(const DibView& image);

  // Writes the learned palette, in the order of the neurons, as a color table with `step` bytes per
  // entry. The end of the table, where rows start.
  uint8_t* WriteTable(uint8_t* table, size_t step) const;

  // The entry for a color: least sum of absolute differences; among equals the one that the search
  // along the green-sorted index meets first.
  uint8_t Find(uint8_t blue, uint8_t green, uint8_t red) {
    const uint32_t color = static_cast<uint32_t>(blue | green << 8 | red << 16);
    uint32_t& memo = state_[0].memo[(color * 0x9E3779B1u) >> (32 - kMemoBits)];
    if (memo >> 8 != color) memo = color << 8 | Search(blue, green, red);
    return static_cast<uint8_t>(memo);
  }

 private:
  static constexpr int kMemoBits = 16;

  struct Entry {
    int32_t blue, green, red;
    int32_t index;  // into the palette
  };
  struct State {
    rows::Neurons neurons;
    uint8_t bgr[256][3];
    Entry sorted[256];              // by green
    int32_t start[256];             // where the search for a green value starts
    uint32_t memo[1 << kMemoBits];  // color and answer; zeroed slots hold color 0
  };

  void LearnCycles(const uint8_t* picture, size_t length);
  void TakeColors();
  void BuildIndex();
  uint8_t Search(int32_t blue, int32_t green, int32_t red) const;

  uint32_t colors_;
  Buffer<State> state_;
};

}  // namespace ombrilo
