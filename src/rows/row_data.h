// What row functions work with beside bytes: the plans, tables and counters that they are given.
//
// Like row_functions.h, this header must stay free of inline functions.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace ombrilo::simd {

// How a row of weighted sums becomes a row of bytes; see `convolve`. Divisions truncate toward 0.
enum ConvolutionFinish {
  kFinishClamp,       // sum + offset
  kFinishReciprocal,  // sum / divisor, by multiplication
  kFinishI16,         // sum / divisor, blended, + bias, in 16 bits with sign
  kFinishFloat,       // the same in single precision, where that is exact enough
  kFinishExact,       // the same in wrapping 32-bit integers
};

// Rows to be summed with weights, grouped by weight. A run takes the next `plus` rows, which are
// added, and the `minus` rows after them, which are subtracted; the weight multiplies the result.
struct WeightRun {
  enum { kMost = 128 };  // limit of `plus` and of `minus`
  int32_t weight;
  uint32_t plus, minus;
};
struct Taps {
  const uint8_t* const* from;  // each row starts at its own first neighbour
  const struct WeightRun* runs;
  size_t run_count;
};

// A row of bytes made of weighted sums of rows. Sums wrap at 32 bits, or at 16 where they fit.
struct Convolution {
  struct Taps bytes;
  struct Taps sums;  // rows that `weigh` made; for 16-bit sums only

  bool wide;  // 32-bit sums
  enum ConvolutionFinish finish;
  const int16_t* offset;       // kFinishClamp: kConvolutionOffsets of them, for bytes 0, 2, 4, ...
  int32_t lowest;              // 16-bit sums, other finishes: -(the least sum), added to all
  uint16_t highest;            // kFinishReciprocal: quotients of larger sums exceed 255
  uint16_t multiplier, shift;  // also kFinishI16: n * multiplier >> 16 >> shift = n / divisor
  int32_t divisor;             // 0: no division
  int32_t strength;            // tenths of the result to blend with `own`; 10: no blending
  int32_t bias;
  const uint8_t* own;  // the row before the convolution
};

enum {
  kConvolutionOffsets = 34,  // a vector of them, from any of the three channels on
  kConvolutionBlock = 128,   // a multiple of the bytes computed at a time
};

// Source rows of convolutions, Sobel edges, gradient magnitudes, rectangles, medians of crosses and
// ranks of squares must be readable this many bytes on from any of their bytes.
enum { kReadAhead = kConvolutionBlock };

// A palette network while it learns. A rate is the share of its distance from a sample by which a
// neuron moves, out of 2^18, by its distance from the winner, at kMargin; the lower 6 bits are
// apart. Starts at a cache line; wins and rates that no neuron has are 0.
struct Neurons {
  enum { kMost = 256, kMargin = 96 };
  uint16_t channel[3][kMost];  // blue, green, red times 16
  uint16_t wins[kMost];        // frequency of each neuron's wins, less 1
  uint16_t upper_rate[2 * kMargin], lower_rate[2 * kMargin];
  size_t count;  // at most kMost
  size_t reach;  // neurons on each side that have a rate
};

// A palette to be searched, with what searches have found out so far: for cells of color space, the
// entries that may be nearest to some color in the cell.
//
// An entry is a u32: blue, green, red and, in the top byte, its number. The smallest cells hold up
// to four entries themselves; other entries fill the rest. Lists of wider cells and longer ones are
// in the pool, which begins with the palette itself. Such a list is a u32: its place in the pool
// times 512, plus its length; 0 while it is not known. A small cell with a longer list holds that
// and 0, 0, 0; the last of four entries is never 0.
struct PaletteLists {
  // The memory of a search, in lists, cells and entries.
  struct Size {
    uint32_t wider, cells, pool;
  };
  // Where few colors are to be searched, the lists of cells 16 wide answer: no others are made. The
  // longer they are, the sooner it takes less time to make cells for a few entries.
  // Their pool takes those of a vector's colors, and hundreds of close colors, before it is full.
  // Both together stay below 128 KiB, from where on malloc() may get memory from the system and
  // give it back each time.
  enum { kFewColors = 1 << 12 };
  static constexpr Size kForFew = {64 + 512 + 4096, 0, 16384};
  // Otherwise wider cells are 64 wide, 32 wide and so on, and the smallest ones 8 or 4. Noise of
  // all colors would fill smaller pools again and again.
  static constexpr Size kForWide = {4672, 32768, 1 << 16};
  static constexpr Size kForNarrow = {37440, 262144, 1 << 18};
  uint32_t count;  // entries of the palette, at least 2
  uint32_t used;   // entries in the pool, the palette's included
  uint32_t room;   // for entries in the pool
  uint32_t* pool;
  uint32_t* wider;       // at first 0
  uint32_t (*cells)[4];  // at first 0; null for few colors
};
struct SquaresLists : PaletteLists {
  // From so many colors on, cells are 4 wide at first, otherwise 8. Noise would fill far more of
  // them: if they can be filled no more, searches go on in those that are 8 wide.
  enum { kManyColors = 1250000, kMostSpare = 1 << 15 };
  bool narrow;    // cells are 4 wide
  int64_t spare;  // grows with each color, up to kMostSpare; each cell that is filled takes 32
};
struct SumsLists : PaletteLists {
  enum { kManyColors = 0 };  // cells are always 4 wide
  // By green, where the search order starts; see find_by_sums. May be read as u32.
  uint8_t start[256 + 3];
};

// Error diffusion through rows of three-byte colors that are `stride` bytes apart, a multiple of 4.
// A color becomes seen[number], where the number is found by sums. Of the error, 3/8 go to the
// right neighbour, 3/8 to the pixel in the same column of the row before and 2/8 to the right
// neighbour of that; the last pixel of a row gets nothing from its left. The row before, which then
// has all its shares, is searched once more: that gives its numbers.
struct Diffusion {
  const uint32_t* seen;
  const uint8_t* rows;
  size_t stride, width, count;
  uint32_t* before;  // colors of the row before the first, as u32; then those of the last row
  uint8_t* numbers;  // numbers[k * width ...] of the row before row k
};

enum { kCacheLine = 64 };

// How far beyond what is read memory is asked for, where it is: two pages.
enum { kFetchedAhead = 8192 };

// Mosaics.
enum {
  kMostSummedRows = 4,  // at a time
  kSmallBlock = 256,    // pixels
  kMostColumns = 1 << 16,
  kBlocksRoom = 16,
};

// The counters of one set of a histogram: 256, and some room so that those of different sets are
// not a multiple of 4 KiB apart, where they would wait for each other.
enum { kCounters = 272 };

// How many levels of three-byte pixels are less than bounds. bound[c], bound[c + 3], ... are the
// least bound of channel c; few[k][i] + many[k][i], for i = c, c + 3, ..., add up to how many of
// its levels are less than that bound + k, which is at most 255. With the same bound everywhere the
// bytes may be of one channel. Counts start at 0.
enum { kBounds = 4, kBoundLanes = 192 };
struct LevelsBelow {
  uint8_t bound[kBoundLanes];
  uint8_t few[kBounds][kBoundLanes];  // of the last bytes: kBoundLanes times `periods`
  uint32_t many[kBounds][kBoundLanes];
  size_t periods;
};

// Random neighbours of the pixels from (x, y) on; see omb_diffuse_seed(). They are taken from
// copies of rows: row y is at y % ring.
struct Scatter {
  uint64_t seed;
  // `before` of the `side` columns and rows, which are 2 or more, come before a pixel's own.
  uint32_t area, side, before;
  uint32_t width, height, ring;
  uint32_t channels, pitch;
  uint32_t x, y;
};

// Where a pixel's bits hold a channel: the low 8 bits of (pixel & mask) >> down << up. The mask's
// lowest `down` bits are 0.
struct ChannelBits {
  uint32_t mask;
  int down, up;  // 0 to 31
};

// A rectangle of bytes around a result: `left` is how many bytes before it the first column is, at
// most (columns - 1) * step, which is kRectangleReach at most.
struct Rectangle {
  size_t rows, columns, step, left;
};
enum { kRectangleReach = 512 };

// Several of them that overlap, from the widest on. Each has all rows of the one before and
// `rows` more; its columns are among those of the one before. Columns are `step` bytes apart and
// counted from the first one of the widest, which is `left` bytes before the result.
struct RectangleNest {
  enum { kMost = 8, kMostColumns = 16 };  // columns that the widest has more than the narrowest
  struct Part {
    size_t rows, first, columns;
  };
  size_t step, left, count;  // 2 to kMost parts
  const struct Part* parts;
};

// Weights of two neighbouring taps of a resized pixel, in units of 2^-kTapBits, as two i16 each: in
// `low` the lower kTapLowBits bits of both, in `high` the remaining ones with the sign. The lower
// half of each u32 is the first tap's.
struct TapPair {
  uint32_t low, high;
};
// The taps of one new pixel of a row.
struct ColumnTaps {
  uint32_t first, count;  // source pixels
  size_t first_pair;
};
enum {
  kFilterPadding = 7,  // of values of a filter
  kTapBits = 22,
  kTapLowBits = 15,
  kMostTapRows = 64,
};

enum { kRunPadding = 16 };     // the most pixels that are resampled at a time
enum { kSpreadPadding = 64 };  // the most levels that are spread at a time

// Where the pixels of a run are: pixel i starts at base[offset[i]].
struct PixelPlaces {
  const uint8_t* base;
  int32_t bytes;  // readable from the base on
  const int32_t* offset;
  int channels;  // bytes of a pixel: 1 or 3
  bool one_row;  // offsets ascend, and all pixels share the first vertical distance or weights
};

// How to pick the same bytes of many rows by shuffles.
struct PickPlan {
  enum { kMostWindows = 4, kRoom = 5 };
  size_t count;    // bytes to pick
  size_t windows;  // parts of the row that a shuffle reaches, for each vector of the result
  uint8_t* picks;  // aligned to 64; there is room for kRoom bytes for each one to pick, the count
                   // rounded up to a multiple of 64
};

// The pixels that can be sampled; rows are `pitch` bytes apart.
struct SampledArea {
  int32_t column_low, column_high, row_low, row_high;
  int32_t first_column, first_row;  // of the pixel at offset 0
  int32_t channels, pitch;
};

// The 16 pixels that a bicubic one is made of: those of a row are at rows[j] + offset[j][k].
struct CubicNeighbours {
  const uint8_t* rows[4];
  const int32_t* offset[4];
};

// Column c of `from` becomes row c of `to`. A step leads from a row to the next, in bytes; it may
// be negative.
struct Transposition {
  const uint8_t* from;
  ptrdiff_t from_step;
  uint8_t* to;
  ptrdiff_t to_step;
};

// A source coordinate along a row of a turned image.
struct TurnedAxis {
  float step, origin, center;
};

// Levels on a line; `stretch` has the formula.
struct FixedPointLine {
  uint8_t low, base;
  uint16_t fraction, multiplier;
  int shift;
};

}  // namespace ombrilo::simd
