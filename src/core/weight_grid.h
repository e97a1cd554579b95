// Grids of weights written as text, parsed by the compiler:
//
//   "-1 -2 -1 / . . . / 1 2 1"
//
// A line break or a slash ends a row. A dot is a position outside the grid's set, an "o" one inside
// it that carries no weight (0).
#pragma once

#include <cstddef>
#include <cstdint>

namespace ombrilo {

struct GridEntry {
  int row, column;
  int32_t weight;
};

struct GridSize {
  int width, height, count;
};

// Calls `entry(GridEntry)` for every position of the set, row by row.
template <class Entry>
constexpr GridSize ParseGrid(const char* text, Entry&& entry) {
  GridSize size = {0, 0, 0};
  int column = 0;
  for (const char* p = text;;) {
    if (*p == '\n' || *p == '/' || *p == '\0') {
      if (column != 0) {
        size.width = column;
        ++size.height;
      }
      column = 0;
      if (*p++ == '\0') return size;
    } else if (*p == ' ') {
      ++p;
    } else if (*p == '.') {
      ++p;
      ++column;
    } else {
      const bool negative = *p == '-';
      if (negative || *p == 'o') ++p;
      int32_t weight = 0;
      for (; *p >= '0' && *p <= '9'; ++p) weight = 10 * weight + (*p - '0');
      entry(GridEntry{size.height, column++, negative ? -weight : weight});
      ++size.count;
    }
  }
}

// Text as a template argument.
template <size_t kSize>
struct GridText {
  char text[kSize];
  constexpr GridText(const char (&literal)[kSize]) {
    for (size_t i = 0; i < kSize; ++i) text[i] = literal[i];
  }
};

}  // namespace ombrilo
