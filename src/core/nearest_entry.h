// Nearest palette entry: least squared distance over red, green and blue, the lowest index on a
// tie. This is the answer of Windows' GetNearestPaletteIndex.
//
// The search is exact and lazy. Color space is cut into cells of 16 x 16 x 16 colors. The first
// color that falls into a cell gathers the cell's candidates: the entries that are the nearest one
// of some color in the cell. An entry whose distance from the cell's nearest point exceeds the
// distance of another entry from its farthest point cannot be one (the pruning of S. W. Thomas,
// "Efficient Inverse Color Map Computation", Graphics Gems II, 1991, on boxes). Before the cells
// comes a memo of recent answers.
#pragma once

#include <cstdint>

#include "core/buffer.h"
#include "core/palette.h"

namespace ombrilo {

class NearestEntry {
 public:
  // Takes all its memory at once: about 100 KiB, and false when there is none. Create it before the
  // first change to an image.
  explicit NearestEntry(const Palette& palette) : NearestEntry() { Learn(palette); }
  // The same memory for a palette that is learned later, or again.
  NearestEntry() : state_(NewZeroedBuffer<State>(1)) {}
  explicit operator bool() const { return state_ != nullptr; }

  void Learn(const Palette& palette);

  uint8_t Find(uint8_t blue, uint8_t green, uint8_t red) {
    const uint32_t color = static_cast<uint32_t>(blue | green << 8 | red << 16);
    uint32_t& memo = state_[0].memo[(color * 0x9E3779B1u) >> (32 - kMemoBits)];
    if (memo >> 8 != color) memo = color << 8 | Search(blue, green, red);
    return static_cast<uint8_t>(memo);
  }

 private:
  static constexpr int kMemoBits = 12;
  static constexpr int kCellWidth = 16;
  static constexpr uint32_t kPoolSize = 1 << 16;

  struct Cell {
    uint16_t first;  // position of the first candidate in the pool
    uint16_t count;  // 0: not gathered yet
  };
  struct State {
    int32_t count;                  // palette entries
    int32_t channel[3][256];        // their blue, green and red
    uint32_t memo[1 << kMemoBits];  // color and answer; zeroed slots hold color 0
    Cell cells[16][16][16];         // by red, green, blue
    uint32_t pool_used;
    uint8_t pool[kPoolSize];  // candidates in ascending order, cell after cell
  };

  uint8_t Search(int blue, int green, int red);
  void Gather(Cell& cell, const int (&low)[3]);

  Buffer<State> state_;
};

}  // namespace ombrilo
