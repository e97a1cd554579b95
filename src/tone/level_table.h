// A table of 256 levels. Where looking bytes up takes many instructions, levels on a line that
// arithmetic on 16 bits gives exactly are computed, in half of the time or less.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rows/row_functions.h"

namespace ombrilo {

// Levels below `low` become `base`, those from there on rise by numerator / denominator a level, up
// to 255. The numerator is at most 255.
struct LevelLine {
  int low, base, numerator, denominator;
};

class LevelTable {
 public:
  // The line is taken where it gives all levels of the table. The table has to stay in memory.
  LevelTable(const uint8_t (&table)[256], const LevelLine& line);

  void Apply(uint8_t* levels, size_t count) const;

 private:
  const uint8_t* table_;
  bool is_line_ = false;
  simd::FixedPointLine fixed_ = {};
};

}  // namespace ombrilo
