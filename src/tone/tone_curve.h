// Tone curves: an output level for each input level, applied to one channel or to all.
#pragma once

#include <cstdint>

#include "ombrilo/ombrilo.h"

namespace ombrilo {

// Whether the points make a curve: 1 to 256 of them, levels from 0 to 255, ascending input levels.
bool AreCurvePoints(const OmbPoint* points, uint32_t count);

// Fills a curve: the levels at and between two neighbouring points from `between(i, v)` for the
// points i and i + 1, those before the first and after the last point from that point.
template <class Between>
void FillCurve(const OmbPoint* points, uint32_t count, uint8_t* curve, Between&& between) {
  uint32_t i = 0;
  for (int32_t v = 0; v < 256; ++v) {
    while (i + 1 < count && points[i + 1].x <= v) ++i;
    const bool inside = i + 1 < count && points[i].x < v;
    curve[v] = inside ? between(i, v) : static_cast<uint8_t>(points[i].y);
  }
}

// Channel 0 is all of them, 1 red, 2 green, 3 blue; the table at 1, 4 and 8 bits, the pixels at 24.
// A table that is all gray stays so: there every channel counts as 0. Returns what the exported
// functions return: 0 for null, other depths and other channels.
uint32_t ApplyCurve(PackedDib* image, const uint8_t (&curve)[256], uint32_t channel);

}  // namespace ombrilo
