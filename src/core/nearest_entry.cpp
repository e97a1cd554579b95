#include "core/nearest_entry.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace ombrilo {

void NearestEntry::Learn(const Palette& palette) {
  if (!state_) return;
  State& s = state_[0];
  std::memset(s.memo, 0, sizeof s.memo);
  std::memset(s.cells, 0, sizeof s.cells);
  s.pool_used = 0;
  s.count = palette.count;
  for (int i = 0; i < palette.count; ++i) {
    for (int c = 0; c < 3; ++c) s.channel[c][i] = palette.bgr[i][c];
  }
  // Color 0 is the one color that a zeroed memo slot would answer for: slot 0.
  s.memo[0] = Search(0, 0, 0);
}

uint8_t NearestEntry::Search(int blue, int green, int red) {
  State& s = state_[0];
  Cell& cell = s.cells[red / kCellWidth][green / kCellWidth][blue / kCellWidth];
  if (cell.count == 0) {
    const int low[3] = {blue & -kCellWidth, green & -kCellWidth, red & -kCellWidth};
    Gather(cell, low);
  }
  int best = std::numeric_limits<int>::max();
  uint8_t answer = 0;
  for (int k = cell.first; k < cell.first + cell.count; ++k) {
    const uint8_t i = s.pool[k];
    const int db = s.channel[0][i] - blue;
    const int dg = s.channel[1][i] - green;
    const int dr = s.channel[2][i] - red;
    const int distance = db * db + dg * dg + dr * dr;
    if (distance < best) {  // strictly: the lowest index wins a tie
      best = distance;
      answer = i;
    }
  }
  return answer;
}

void NearestEntry::Gather(Cell& cell, const int (&low)[3]) {
  State& s = state_[0];
  int32_t nearest[256] = {};   // squared distance from the cell's nearest point
  int32_t farthest[256] = {};  // and from its farthest
  for (int c = 0; c < 3; ++c) {
    const int high = low[c] + kCellWidth - 1;
    for (int i = 0; i < s.count; ++i) {
      const int below = low[c] - s.channel[c][i];
      const int above = s.channel[c][i] - high;
      const int outside = std::max({below, above, 0});
      const int across = std::max(below, above) + kCellWidth - 1;
      nearest[i] += outside * outside;
      farthest[i] += across * across;
    }
  }
  const int32_t limit = *std::min_element(farthest, farthest + s.count);
  if (s.pool_used + 256 > kPoolSize) {  // full: forget every cell
    std::memset(s.cells, 0, sizeof s.cells);
    s.pool_used = 0;
  }
  cell.first = static_cast<uint16_t>(s.pool_used);
  for (int i = 0; i < s.count; ++i) {
    if (nearest[i] <= limit) s.pool[s.pool_used++] = static_cast<uint8_t>(i);
  }
  cell.count = static_cast<uint16_t>(s.pool_used - cell.first);
}

}  // namespace ombrilo
