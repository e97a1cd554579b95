// Row functions: bytes in, bytes out. They know nothing of images, allocate nothing and never touch
// a byte outside the counts they are given.
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

namespace ombrilo::rows {

struct RowFunctions {
  const char* name;

  // bytes[i] = 255 - bytes[i]
  void (*invert)(uint8_t* bytes, size_t count);
  // bytes[i] = table[bytes[i]]; the table has 256 entries
  void (*apply_table)(uint8_t* bytes, size_t count, const uint8_t* table);

  // One byte per pixel out of packed pixels, and back. Packing uses the low bit or nibble of each
  // index and keeps the bits behind the last pixel of a partly filled byte.
  void (*unpack1)(const uint8_t* row, size_t pixels, uint8_t* indices);
  void (*unpack4)(const uint8_t* row, size_t pixels, uint8_t* indices);
  void (*pack1)(const uint8_t* indices, size_t pixels, uint8_t* row);
  void (*pack4)(const uint8_t* indices, size_t pixels, uint8_t* row);

  // to[i] = the 8 bits that start `shift` (1 to 7) bits behind the first bit of from[i]. Reads
  // count + 1 bytes unless count is 0.
  void (*shift_bits)(const uint8_t* from, size_t shift, size_t count, uint8_t* to);

  // Four-byte pixels to three-byte ones; the fourth byte is dropped.
  void (*drop_fourth_byte)(const uint8_t* from, size_t pixels, uint8_t* to);

  // Exchanges two runs of bytes.
  void (*swap_bytes)(uint8_t* a, uint8_t* b, size_t count);
  // Bytes, and three-byte pixels, in reverse order; `to` is another place than `from`.
  void (*mirror8)(const uint8_t* from, size_t count, uint8_t* to);
  void (*mirror24)(const uint8_t* from, size_t pixels, uint8_t* to);

  // FindPixels() of core/pixels.h.
  void (*find_pixels)(const int32_t* columns, int32_t move, const int32_t* rows, int32_t stride,
                      int bit_count, size_t count, int32_t* offsets, uint8_t* shifts);

  // Resampling works on colors in words whose lower three bytes are blue, green and red, or on
  // words of four neighbouring gray levels, the leftmost lowest.
  //
  // words[i] = the four bytes at offset[i] + move; those from base + bytes on are 0. `bytes` is 4
  // at least and the offsets lie below it.
  void (*fetch_words)(const uint8_t* base, int32_t bytes, const int32_t* offset, int32_t move,
                      size_t count, uint32_t* words);
  // colors[i] = table[base[offset[i] + move] >> shift[i] & mask], with offsets as above; the mask
  // reaches no bit beyond the byte.
  void (*fetch_indexed)(const uint8_t* base, int32_t bytes, const int32_t* offset,
                        const uint8_t* shift, int32_t move, uint32_t mask, const uint32_t* table,
                        size_t count, uint32_t* colors);
  // bytes[i] = the low byte of words[i]
  void (*low_bytes)(const uint32_t* words, size_t count, uint8_t* bytes);
  // packed[i] = words[0][i] | words[1][i] << 8 | words[2][i] << 16 | words[3][i] << 24
  void (*pack_bytes)(const uint32_t* const words[4], size_t count, uint32_t* packed);
  // Each channel: (1-dy)(1-dx) taps[0] + (1-dy)dx taps[1] + (1-dx)dy taps[2] + dx dy taps[3],
  // summed in this order, limited to 0..255 and truncated. With one_dy, dy[0] serves all.
  void (*bilinear)(const uint32_t* const taps[4], const float* dx, const float* dy, bool one_dy,
                   size_t count, uint32_t* colors);
  // The same of the lower two bytes of two words.
  void (*bilinear_gray)(const uint32_t* lower, const uint32_t* upper, const float* dx,
                        const float* dy, bool one_dy, size_t count, uint32_t* levels);
  // The cubic weights of four neighbours at the distances 1+d, d, 1-d, 2-d. With a = |distance|:
  // 1 - 2a^2 + a^3 below 1, 4 - 8a + 5a^2 - a^3 below 2, 0 beyond.
  void (*cubic_weights)(const float* fraction, size_t count, float* const weights[4]);
  // sums[c * plane + i] = the four taps' channels c times their weights, summed in order.
  void (*cubic_across)(const uint32_t* const taps[4], const float* const weights[4], size_t count,
                       size_t plane, float* sums);
  // sums[i] = four bytes of words[i], at the places bytes[], times their weights.
  void (*cubic_across_gray)(const uint32_t* words, const int bytes[4],
                            const float* const weights[4], size_t count, float* sums);
  // Each channel: the four sums times their weights, summed in order, limited to 0..255, truncated.
  // With one_weight, weights[..][0] serve all.
  void (*cubic_down)(const float* const sums[4], const float* const weights[4], bool one_weight,
                     size_t count, size_t plane, uint32_t* colors);
  // The same of one channel.
  void (*cubic_down_gray)(const float* const sums[4], const float* const weights[4],
                          bool one_weight, size_t count, uint32_t* levels);
  // positions[i] = (first + i) * step + origin + center
  void (*line_positions)(int32_t first, float step, float origin, float center, size_t count,
                         float* positions);
  // Truncated positions, these limited to low..high, and the fractions. Positions fit an int32_t.
  void (*split_positions)(const float* positions, size_t count, int32_t low, int32_t high,
                          int32_t* whole, int32_t* inner, float* fraction);
};

// The table in use.
const RowFunctions& Active();

// The tables this processor can run, plain code first; null behind the last.
const RowFunctions* const* Supported();

// For tests and benchmarks: makes one of Supported() the active table; null goes back to the
// widest.
void Use(const RowFunctions* functions);

}  // namespace ombrilo::rows
