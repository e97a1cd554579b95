// A table of 256 levels. Where they lie on a line that arithmetic on 16 bits gives exactly, most
// processors compute them in less than half of the time of a look-up.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rows/row_functions.h"

namespace ombrilo {

// Levels below `low` become `base`, those from there on rise by numerator / denominator a level, up
// to 255.
struct LevelLine {
  int low, base, numerator, denominator;
};

class LevelTable {
 public:
  // Takes the line where it gives all levels of the table, otherwise the table, which has to stay
  // in memory.
  LevelTable(const uint8_t (&table)[256], const LevelLine& line);

  void Apply(uint8_t* levels, size_t count) const;

 private:
  const uint8_t* table_;
  bool is_line_ = false;
  simd::Stretch stretch_ = {};
};

}  // namespace ombrilo
