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

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "core/buffer.h"
#include "core/packed_dib.h"
#include "rows/row_functions.h"

namespace ombrilo {

class PaletteNetwork {
 public:
  // A network of 2^bits neurons; `bits` is 1, 2, 4 or 8. Takes all its memory at once: 2 MiB, and
  // false when there is none.
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
    State& s = state_[0];
    const Cell& cell = s.cells[red / kCellWidth][green / kCellWidth][blue / kCellWidth];
    if (cell.count == 0) return FindSlowly(blue, green, red);
    // The search goes up and down from its start by turns: 0, 1, 2 ... is the order of positions.
    const int32_t start = s.start[green];
    uint32_t best = ~0u;
    const auto compare = [&](int k) {
      const Entry& e = s.sorted[cell.position[k]];
      const int32_t up = cell.position[k] - start;
      const auto order = static_cast<uint32_t>(up * 2 ^ up >> 31);
      const auto distance = static_cast<uint32_t>(
          std::abs(e.blue - blue) + std::abs(e.green - green) + std::abs(e.red - red));
      best = std::min(best, distance << 9 | order);
    };
    for (int k = 0; k < kUsual; ++k) compare(k);
    if (cell.count > kUsual) {
      for (int k = kUsual; k < kMost; ++k) compare(k);
    }
    const auto order = static_cast<int32_t>(best & 511);
    return s.sorted[start + (order >> 1 ^ -(order & 1))].index;
  }

 private:
  // Color space is cut into cells. The positions, in the green-sorted index, of all entries that
  // are the answer for some color in a cell are gathered when it has been asked for a few times.
  static constexpr int kCellWidth = 4;
  static constexpr int kUsual = 3, kMost = 6;
  static constexpr int kPatience = 3;  // searches before that
  static constexpr uint8_t kCrowded = 255;
  static constexpr int kMemoBits = 12;

  struct Entry {
    uint8_t blue, green, red;
    uint8_t index;  // into the palette
  };
  struct Cell {
    uint8_t count;            // 0: not gathered
    uint8_t asked;            // how often so far; kCrowded: more than kMost entries, never gathered
    uint8_t position[kMost];  // the first one repeated behind the last
  };
  struct State {
    rows::Neurons neurons;
    uint8_t bgr[256][3];
    Entry sorted[256];              // by green
    int32_t start[256];             // where the search for a green value starts
    Cell cells[64][64][64];         // by red, green, blue
    uint32_t memo[1 << kMemoBits];  // color and answer; zeroed slots hold color 0
  };

  void LearnCycles(const uint8_t* picture, size_t length);
  void TakeColors();
  void BuildIndex();
  uint8_t FindSlowly(uint8_t blue, uint8_t green, uint8_t red);
  void Gather(Cell& cell, const int32_t (&low)[3]) const;
  uint8_t Search(int32_t blue, int32_t green, int32_t red) const;

  uint32_t colors_;
  Buffer<State> state_;
};

}  // namespace ombrilo
