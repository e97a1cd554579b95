// Row functions: bytes in, bytes out. They know nothing of images, allocate nothing and touch only
// the bytes that their counts cover, unless it says otherwise below.
//
// One source (row_functions.inc) is compiled once per instruction set. Each copy fills one table,
// and the first use picks the widest one that the processor and the operating system support.
// Every table gives the same bytes; tests run all of them against each other.
//
// This header is included by files compiled for newer processors. It must stay free of inline
// functions, which the linker could keep in a form that older processors cannot run.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "rows/row_data.h"

// What a build needs to give the same bytes as all others.
#if __FLT_EVAL_METHOD__ != 0
#error "Floating point has to be computed as written: on 32-bit x86 with -msse2 -mfpmath=sse."
#endif
#if __BYTE_ORDER__ != __ORDER_LITTLE_ENDIAN__
#error \
    "Pixels are read as numbers whose lowest byte comes first: big-endian processors are not supported."
#endif

namespace ombrilo::simd {

struct RowFunctions {
  const char* name;

  // bytes[i] = 255 - bytes[i]
  void (*invert)(uint8_t* bytes, size_t count);
  // bytes[i] = table[bytes[i]]; the table has 256 entries
  void (*apply_table)(uint8_t* bytes, size_t count, const uint8_t* table);

  // bytes[i] = min(base + ((256 * max(bytes[i] - low, 0) + fraction) * multiplier >> 16 >> shift),
  // 255), or table[bytes[i]] where that is faster; the caller sees to it that they are the same.
  // The fraction is below 256.
  void (*stretch)(uint8_t* bytes, size_t count, const struct FixedPointLine& line,
                  const uint8_t* table);

  // Copies bytes, whole cache lines of `to` past the caches, and fetches as many from `next`, which
  // may be `from`. finish_stream comes before anybody else may read the copied ones.
  void (*stream)(const uint8_t* from, size_t count, uint8_t* to, const uint8_t* next);
  void (*finish_stream)();

  // Packed pixels to one byte per pixel, and back. Packing uses the low bit or nibble of each index
  // and keeps the bits after the last pixel of a partly filled byte.
  void (*unpack1)(const uint8_t* row, size_t pixels, uint8_t* indices);
  void (*unpack4)(const uint8_t* row, size_t pixels, uint8_t* indices);
  void (*pack1)(const uint8_t* indices, size_t pixels, uint8_t* row);
  void (*pack4)(const uint8_t* indices, size_t pixels, uint8_t* row);

  // to[i] = the 8 bits that start `shift` (1 to 7) bits after the first bit of from[i]. Reads count
  // + 1 bytes unless count is 0. May be in place.
  void (*shift_bits)(const uint8_t* from, size_t shift, size_t count, uint8_t* to);

  // to[i] = from[i]. Does not take the processor's string moves, which start slowly.
  void (*copy)(const uint8_t* from, size_t count, uint8_t* to);
  // to[i] = the largest (least) of from[0][i], from[1][i], ...; at least one row, none of them
  // `to`.
  void (*max_of)(const uint8_t* const* from, size_t rows, size_t count, uint8_t* to);
  void (*min_of)(const uint8_t* const* from, size_t rows, size_t count, uint8_t* to);
  // to[i] = the largest (least) of a rectangle of bytes, which lie at from[k][i - left + c * step].
  // Rows are readable from `left`, rounded up to a multiple of 64, before them. The count is not 0.
  void (*rectangle_max)(const uint8_t* const* from, const struct Rectangle& rectangle, size_t count,
                        uint8_t* to);
  void (*rectangle_min)(const uint8_t* const* from, const struct Rectangle& rectangle, size_t count,
                        uint8_t* to);
  // to[i] = the largest (least) of the bytes in rectangles, which lie at from[k][i - left + c *
  // step]. Rows are readable as above.
  void (*nest_max)(const uint8_t* const* from, const struct RectangleNest& nest, size_t count,
                   uint8_t* to);
  void (*nest_min)(const uint8_t* const* from, const struct RectangleNest& nest, size_t count,
                   uint8_t* to);
  // to[i] = from[i] where that is not `value`
  void (*copy_unless)(const uint8_t* from, uint8_t value, size_t count, uint8_t* to);
  // to[i] = the median of a cross: rows[k][i] for k = 0, 1, 3, 4 and rows[2][i + k * step] for k =
  // -2 to 2.
  void (*median_of_cross)(const uint8_t* const* rows, ptrdiff_t step, size_t count, uint8_t* to);
  // A third of the largest of the four directional differences around each byte of the middle of
  // three rows; neighbours are `step` bytes apart.
  void (*sobel)(const uint8_t* const* rows, ptrdiff_t step, size_t count, uint8_t* to);
  // Weighted sums modulo 2^16, in an order that only `convolve` knows: 2 x count bytes, the count
  // rounded up to a multiple of kConvolutionBlock.
  void (*weigh)(const struct Taps& taps, size_t count, uint8_t* sums);
  // The same, and adds them to `totals`; with `replace`, subtracts what `sums` held before.
  void (*weigh_running)(const struct Taps& taps, size_t count, bool replace, uint8_t* sums,
                        uint8_t* totals);
  // One row of a convolution.
  void (*convolve)(const struct Convolution& convolution, size_t count, uint8_t* to);

  // to[i] = min(from[i] + to[i], 255); max(to[i] - from[i], 0); max(from[i] - to[i], 0);
  // to[i] - from[i] modulo 256
  void (*add_saturated)(const uint8_t* from, size_t count, uint8_t* to);
  void (*subtract_saturated)(const uint8_t* from, size_t count, uint8_t* to);
  void (*subtract_from)(const uint8_t* from, size_t count, uint8_t* to);
  void (*subtract_wrapped)(const uint8_t* from, size_t count, uint8_t* to);
  // to[i] = (255 to[i] + b / 2) / b with b = max(from[i], 64), which must not be less than to[i].
  void (*divide_by_light)(const uint8_t* from, size_t count, uint8_t* to);

  // One-bit pixels, eight to a byte: each bit becomes that of outcome[0], [1] or [2] if none, all
  // or some of the 3x3 pixels in three rows that end at it (start at it) are 1. Reads one byte
  // before (after) each row as well.
  void (*square_bits_left)(const uint8_t* const* rows, const uint8_t* outcome, size_t count,
                           uint8_t* to);
  void (*square_bits_right)(const uint8_t* const* rows, const uint8_t* outcome, size_t count,
                            uint8_t* to);

  // One-bit pixels: to's bits become those of outcome[0] to [3] where the bits of `to` and `other`
  // are 0 and 0, 0 and 1, 1 and 0, 1 and 1.
  void (*map_bit_pairs)(const uint8_t* other, const uint8_t* outcome, size_t count, uint8_t* to);

  // bgr[3 * i ...] = the three bytes of entry indices[i] of a table of 256. A byte after it is
  // readable.
  void (*expand_colors)(const uint8_t* indices, size_t pixels, const uint8_t* table, uint8_t* bgr);

  // Pixels of `bytes` (2 or 4) bytes to three-byte pixels.
  void (*pick_channels)(const uint8_t* from, size_t bytes, size_t pixels,
                        const struct ChannelBits* bgr, uint8_t* to);
  // Four-byte pixels to three-byte pixels; the fourth byte is dropped. Not in place.
  void (*drop_fourth_byte)(const uint8_t* from, size_t pixels, uint8_t* to);
  // The same with the fourth byte as alpha over a background of blue, green, red:
  // (color * alpha + background * (255 - alpha) + 127) / 255. With `swap`, red comes first.
  void (*blend_over)(const uint8_t* from, size_t pixels, bool swap, const uint8_t* background,
                     uint8_t* to);
  // Three-byte pixels: swaps the first and the third byte. Not in place.
  void (*swap_red_blue)(const uint8_t* from, size_t pixels, uint8_t* to);
  // Three-byte pixels to four-byte pixels, the fourth byte 255; `swap` as above.
  void (*add_alpha)(const uint8_t* from, size_t pixels, bool swap, uint8_t* to);

  // bytes[i] += amount, limited to 0..255; the amount is -255 to 255.
  void (*add_amount)(uint8_t* bytes, size_t count, int amount);

  // Three-byte pixels: blue, green, red. Channel 0 is blue.
  // Each channel through its own table: 3 x 256 entries, blue, green, red.
  void (*apply_channel_tables)(uint8_t* bgr, size_t pixels, const uint8_t* tables);
  void (*clear_channel)(uint8_t* bgr, size_t pixels, size_t channel);
  void (*extract_channel)(const uint8_t* bgr, size_t pixels, size_t channel, uint8_t* to);
  // All three channels = gray[i]; with a fourth byte of 255.
  void (*spread)(const uint8_t* gray, size_t pixels, uint8_t* bgr);
  void (*spread_opaque)(const uint8_t* gray, size_t pixels, uint8_t* to);
  // (11 blue + 59 green + 30 red) / 100, truncated.
  void (*gray_percent)(const uint8_t* bgr, size_t pixels, uint8_t* gray);
  // 0.3 red + 0.59 green + 0.11 blue in double precision, from left to right, truncated. Not the
  // same as gray_percent: the sum of inexact products can fall just below a whole number.
  void (*gray_double)(const uint8_t* bgr, size_t pixels, uint8_t* gray);
  // Bit of pixel i = 11 blue + 59 green + 30 red >= limit, the first pixel in the top bit; the
  // limit is 0 to 65,535. Bits after the last pixel keep their values.
  void (*threshold)(const uint8_t* bgr, size_t pixels, uint32_t limit, uint8_t* bits);
  // (299 red + 587 green + 114 blue + 500) / 1000, truncated.
  void (*luminance)(const uint8_t* bgr, size_t pixels, uint8_t* luminance);
  // Moves the channels of each color alike, to the luminance y = luminance[i]. Where that takes the
  // least channel n below 0, each v becomes y + (v - y) * y / (y - n), truncated toward 0; where it
  // takes the greatest x above 255, y + (v - y) * (255 - y) / (x - y).
  void (*give_luminance)(uint8_t* bgr, size_t pixels, const uint8_t* luminance);
  // Hue turned by degrees, saturation and light changed by percent; see omb_adjustcolor().
  void (*change_hsi)(uint8_t* bgr, size_t pixels, int degrees, int saturation, int intensity);
  void (*change_hsl)(uint8_t* bgr, size_t pixels, int degrees, int saturation, int lightness);
  // Three steps, each skipped when its amount (-255 to 255) is 0: highlights (channel sum above
  // 510), shadows (sum below 255), shadows again. A chosen color gets green and red + amount and
  // blue = new green + amount, limited to 0..255.
  void (*adjust_lights)(uint8_t* bgr, size_t pixels, int highlights, int shadows1, int shadows2);

  // Counts the values of bytes[0], bytes[step], ... in eight sets of counters; the histogram is
  // their sum.
  void (*count_bytes)(const uint8_t* bytes, size_t step, size_t count, uint32_t (*sets)[kCounters]);
  // Adds the levels of more pixels, from a blue one on.
  void (*count_below)(const uint8_t* bgr, size_t bytes, struct LevelsBelow& counts);

  // to[i] = the rank-th (0: the least) of the `size` x `size` square around i, of 3, 5 or 7.
  // rows[k] is row k of the square, in the column of i = 0, and neighbours are `step` (1 or 3)
  // bytes apart. The count is not 0.
  void (*rank_of_squares)(const uint8_t* const* rows, size_t size, ptrdiff_t step, size_t rank,
                          size_t count, uint8_t* to);
  // Gradient magnitudes sqrt(x^2 + y^2), truncated. Sobel: of three rows, around the middle one,
  // limited to 255. Roberts: differences across the diagonals of a pixel, its right neighbour and
  // the two before them, modulo 256. Neighbours are `step` bytes apart.
  void (*sobel_magnitude)(const uint8_t* const* rows, ptrdiff_t step, size_t count, uint8_t* to);
  void (*roberts_magnitude)(const uint8_t* before, const uint8_t* own, ptrdiff_t step, size_t count,
                            uint8_t* to);

  // Blends the tone curves of two rows of blocks, 256 levels each: first * (256 - weight) + second
  // * weight. A block has 256 pairs, in an order of the instruction set's own: for each level, its
  // result and that of the next block; the last one is its own neighbour. There is at least one.
  void (*blend_curves)(const uint8_t* first, const uint8_t* second, int weight, size_t blocks,
                       uint32_t* pairs);
  // levels[i] = (lower * (256 - weights[i]) + upper * weights[i] + 32768) >> 16, with the two of a
  // block's pair for levels[i]
  void (*map_between_curves)(uint8_t* levels, size_t count, const uint8_t* weights,
                             const uint32_t* pairs);

  // Trains a palette network with one color after the other.
  void (*learn)(const uint8_t* bgr, size_t samples, struct Neurons& neurons);

  // The numbers of the entries nearest to colors of `step` (3 or 4) bytes, blue, green, red first.
  // By squares: least sum of squared differences, the lowest number on a tie.
  void (*find_by_squares)(struct SquaresLists& palette, const uint8_t* colors, size_t step,
                          size_t count, uint8_t* numbers);
  // Least sum of absolute differences; on a tie the first in the order start, start - 1, start + 1,
  // start - 2 ... of the color's green.
  void (*find_by_sums)(struct SumsLists& palette, const uint8_t* colors, size_t step, size_t count,
                       uint8_t* numbers);
  // Error diffusion through rows of three-byte colors.
  void (*diffuse)(struct SumsLists& palette, const struct Diffusion& diffusion);

  // Sums of 1 to kMostSummedRows rows; with `add`, they are added to what `sums` held before.
  void (*sum_rows)(const uint8_t* const* rows, size_t row_count, size_t count, bool add,
                   uint16_t* sums);
  // The rounded means of blocks, from the sums of their columns: blocks of `width` pixels of `step`
  // (1 or 3) sums, each of `height` rows. A block has at most kSmallBlock pixels. Up to
  // kBlocksRoom bytes after the sums are read.
  void (*average_blocks)(const uint16_t* columns, size_t step, size_t blocks, size_t width,
                         size_t height, uint8_t* to);
  // Adds the `step` (1 or 3) sums of each pixel to `sums`; at most kMostColumns pixels.
  void (*add_columns)(const uint16_t* columns, size_t step, size_t pixels, uint64_t* sums);
  // `pixels` pixels of `step` (1 or 3) bytes, `block` of each color. Reads and writes up to
  // kBlocksRoom bytes more.
  void (*repeat_colors)(const uint8_t* colors, size_t step, size_t pixels, size_t block,
                        uint8_t* to);
  // offset[i] = the offset in the ring of the pixel that replaces pixel i.
  void (*scatter)(const struct Scatter& scatter, size_t count, int32_t* offset);

  // Swaps two runs of bytes.
  void (*swap_bytes)(uint8_t* a, uint8_t* b, size_t count);
  // Reverses the order of pixels of 1, 4, 8 or 24 bits. `count` is the bytes of whole pixels. Not
  // in place.
  void (*mirror)(const uint8_t* from, size_t count, int bit_count, uint8_t* to);
  // Swaps two runs of such pixels and reverses both.
  void (*swap_mirrored)(uint8_t* a, uint8_t* b, size_t count, int bit_count);
  // Columns become rows, of pixels of 1, 4, 8 or 24 bits. Bits of a new row's last byte after the
  // last pixel become 0.
  void (*transpose)(const struct Transposition& t, int bit_count, size_t columns, size_t rows);

  // Resampling works on runs of pixels. Up to kRunPadding values after those of a run may be read
  // and, except for bytes of pixels, written.
  //
  // offset[i] = the offset of pixel (columns[i], rows[i]), both limited to the area; the padding
  // repeats the last one. The count is not 0. Returns whether no pixel had to be limited.
  bool (*find_places)(const struct SampledArea& area, const int32_t* columns, const int32_t* rows,
                      size_t count, int32_t* offset);
  // Copies the pixels themselves.
  void (*pick)(const struct PixelPlaces& places, size_t count, uint8_t* to);
  // Plans the same for pixels of `channels` bytes at ascending offsets from the beginning of any
  // row, of which `row_bytes` are readable. Returns false, and there is no plan, where shuffles
  // would not be faster. pick_planned picks what is in bytes [first, end) of `to`, the first being
  // a multiple of 64, and so the last unless it is the count.
  bool (*plan_picks)(const int32_t* offset, size_t channels, size_t row_bytes,
                     struct PickPlan& plan);
  void (*pick_planned)(const uint8_t* row, const struct PickPlan& plan, size_t first, size_t end,
                       uint8_t* to);
  // Blends each pixel and its right neighbour with the two at the same offsets from `upper`, where
  // as many bytes are readable: for each channel (1-dy)(1-dx) lower + (1-dy)dx lower right +
  // (1-dx)dy upper + dx dy upper right, summed in this order, limited to 0..255 and truncated.
  void (*bilinear)(const struct PixelPlaces& lower, const uint8_t* upper, const float* dx,
                   const float* dy, size_t count, uint8_t* to);
  // The same in two steps, for rows that are blended more than once. spread_colors stores the
  // three channels of pixels of one row and then those of their right neighbours as planes of
  // floats, blend_colors blends the planes of two rows. Planes are `plane` floats apart.
  void (*spread_colors)(const struct PixelPlaces& places, size_t plane, size_t count, float* to);
  void (*blend_colors)(const float* lower, const float* upper, const float* dx, float dy,
                       size_t plane, size_t count, uint8_t* to);
  // The same of levels, which were picked before, and of fractions (0 to below 1) in the order that
  // levels get. Up to kSpreadPadding values after those given are read and, except for results,
  // written.
  void (*spread_fractions)(const float* fraction, size_t count, float* to);
  void (*spread_levels)(const uint8_t* levels, size_t count, float* to);
  void (*blend_levels)(const float* lower, const float* upper, const float* dx, float dy,
                       size_t plane, size_t count, uint8_t* to);
  // The cubic weights of four neighbours at the distances 1+d, d, 1-d, 2-d, where -1 < d <= 1. With
  // a = |distance|: 1 - 2a^2 + a^3 below 1, 4 - 8a + 5a^2 - a^3 below 2, 0 beyond.
  void (*cubic_weights)(const float* fraction, size_t count, float* const weights[4]);
  // sums[c * plane + i] = channel c of four pixels times their weights, summed in order. Pixel k is
  // columns[k] (0 to 3) pixels to the right of place i.
  void (*cubic_across)(const struct PixelPlaces& places, const int columns[4],
                       const float* const weights[4], size_t plane, size_t count, float* sums);
  // For each channel, four of these sums times their weights, summed in order, limited to 0..255
  // and truncated. With one_row, weights[..][0] apply to all pixels.
  void (*cubic_down)(const float* const sums[4], const float* const weights[4], int channels,
                     bool one_row, size_t plane, size_t count, uint8_t* to);
  // Both for one pixel and any neighbours. At each of them 4 bytes are readable if it has 3.
  void (*cubic_pixel)(const struct CubicNeighbours& neighbours, const float* across,
                      const float* down, int channels, uint8_t* to);
  // The positions (first + i) * step + origin + center, which fit an int32_t, truncated, and the
  // fractions that this cuts off.
  void (*turned_positions)(const struct TurnedAxis& axis, int32_t first, size_t count,
                           int32_t* whole, float* fraction);

  // Resizing. values[i] = filter((first + i - center + 0.5) * shrink), for the filters of
  // OmbResizeFilter in their order. Up to kFilterPadding more values are written.
  void (*resize_filter[4])(double first, double center, double shrink, size_t count,
                           double* values);
  // Weights come in pairs; with an odd number of taps, the last one is 0. to[i] = (2^21 +
  // the sum of rows[k][i] times weight k) >> 22, limited to 0..255. `to` is none of the rows.
  void (*weigh_rows)(const uint8_t* const* rows, const struct TapPair* pairs, size_t taps,
                     size_t count, uint8_t* to);
  // Rows resized across at a time: 32, or kMostTapRows where a vector has that many bytes.
  size_t tap_rows;
  // The same across, for `count` new pixels of tap_rows rows. A column is tap_rows bytes, one of
  // each row; a pixel has `channels` columns. `columns` begins with those of source pixel `first`.
  void (*weigh_columns)(const uint8_t* columns, size_t first, const struct ColumnTaps* taps,
                        const struct TapPair* pairs, size_t channels, size_t count, uint8_t* to);
  // Turns the bytes first .. first + count - 1 of tap_rows rows into columns, and columns into
  // these bytes of `row_count` rows, at most tap_rows; of one byte at least.
  void (*rows_to_columns)(const uint8_t* const* rows, size_t first, size_t count, uint8_t* columns);
  void (*columns_to_rows)(const uint8_t* columns, size_t first, size_t count, size_t row_count,
                          uint8_t* const* rows);
};

// The table in use.
const RowFunctions& Active();

// The tables that this processor can run, plain code first; null after the last.
const RowFunctions* const* Supported();

// For tests and benchmarks: makes one of Supported() the active table; null goes back to the
// widest.
void Use(const RowFunctions* functions);

}  // namespace ombrilo::simd
