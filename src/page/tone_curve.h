// The tone curves of omb_EnhancePage(): from a histogram of levels to a new level for each.
#pragma once

#include <cstdint>

namespace ombrilo {

// How often each level occurs, and all of them together.
struct LevelCounts {
  uint64_t count[256];
  uint64_t all;

  void Clear() { *this = {}; }
  void Add(const LevelCounts& other);
};

// The darkest and the lightest level that count, and the level of the paper.
struct ToneLevels {
  int16_t low, high, paper;
};

// `low` and `high` cut off these thousandths of the levels; if that leaves none, they are 256 and
// -1. `paper` is the level, from the mean on, with the most levels up to `reach` away from it.
ToneLevels MeasureTone(const LevelCounts& levels, int32_t thousandths, int32_t reach);

// Equalises; with a limit above 0, no level counts more than this percentage of the mean.
void EqualiseCurve(const LevelCounts& levels, int32_t limit, uint8_t* curve);
// Stretches low..high over all levels.
void StretchCurve(int32_t low, int32_t high, uint8_t* curve);
// Makes paper white, with ink from `low` on.
void WhitenCurve(int32_t low, int32_t paper, uint8_t* curve);
// Logarithms of the levels, scaled so that paper would be 255.
void LogarithmCurve(int32_t paper, uint8_t* curve);

// Takes a curve only part of the way, by 1 to 100 percent.
void BlendCurve(int32_t percent, uint8_t* curve);

}  // namespace ombrilo
