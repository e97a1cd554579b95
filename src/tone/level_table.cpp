#include "tone/level_table.h"

#include <cstring>
#include <numeric>

namespace ombrilo {

LevelTable::LevelTable(const uint8_t (&table)[256], const LevelLine& line) : table_(table) {
  if (line.low < 0 || line.numerator < 0 || line.denominator < 1) return;
  // A ratio rounded up keeps whole levels from falling below themselves, and so does a fraction
  // added to one rounded down. One of them is exact for each pair of levels that can be stretched.
  for (int fraction = 0; fraction <= 1 && !is_line_; ++fraction) {
    const auto multiplier = [&](int shift) {
      return ((line.numerator << (8 + shift)) + (fraction == 0 ? line.denominator - 1 : 0)) /
             line.denominator;
    };
    int shift = 8;  // the multiplier's bits after the point, less 8; as many as there is room for
    while (multiplier(shift) > 65535) --shift;
    fixed_ = {static_cast<uint8_t>(line.low), static_cast<uint8_t>(line.base),
              static_cast<uint16_t>(fraction), static_cast<uint16_t>(multiplier(shift)), shift};
    uint8_t levels[256];
    std::iota(levels, levels + 256, uint8_t{0});
    simd::Active().stretch(levels, 256, fixed_, table);
    is_line_ = std::memcmp(levels, table, sizeof levels) == 0;
  }
}

void LevelTable::Apply(uint8_t* levels, size_t count) const {
  const simd::RowFunctions& rows = simd::Active();
  is_line_ ? rows.stretch(levels, count, fixed_, table_) : rows.apply_table(levels, count, table_);
}

}  // namespace ombrilo
