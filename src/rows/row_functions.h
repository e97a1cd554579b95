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

  // bytes[i] + amount, limited to 0..255; the amount is -255 to 255.
  void (*add_saturated)(uint8_t* bytes, size_t count, int amount);

  // Three-byte pixels: blue, green, red. Channel 0 is blue.
  // Each channel through its own table: 3 x 256 entries, blue, green, red.
  void (*apply_channel_tables)(uint8_t* bgr, size_t pixels, const uint8_t* tables);
  void (*clear_channel)(uint8_t* bgr, size_t pixels, size_t channel);
  void (*extract_channel)(const uint8_t* bgr, size_t pixels, size_t channel, uint8_t* to);
  // All three channels = gray[i].
  void (*spread)(const uint8_t* gray, size_t pixels, uint8_t* bgr);
  // (11 blue + 59 green + 30 red) / 100, truncated.
  void (*gray_percent)(const uint8_t* bgr, size_t pixels, uint8_t* gray);
  // 0.3 red + 0.59 green + 0.11 blue in double precision, from left to right, truncated. Not the
  // same as gray_percent: the sum of inexact products can fall just below a whole number.
  void (*gray_double)(const uint8_t* bgr, size_t pixels, uint8_t* gray);
  // Bit of pixel i = 11 blue + 59 green + 30 red >= limit, the first pixel in the top bit; the
  // limit is 0 to 65,535. Bits behind the last pixel keep their values.
  void (*threshold)(const uint8_t* bgr, size_t pixels, uint32_t limit, uint8_t* bits);
  // Three steps, each skipped when its amount (-255 to 255) is 0: highlights (channel sum above
  // 510), shadows (sum below 255), shadows again. A chosen color gets green and red + amount and
  // blue = new green + amount, limited to 0..255.
  void (*adjust_lights)(uint8_t* bgr, size_t pixels, int highlights, int shadows1, int shadows2);

  // Counts byte values at bytes[0], bytes[step], ...; a value's count is the sum over the eight
  // sets.
  void (*count_bytes)(const uint8_t* bytes, size_t step, size_t count, uint32_t (*sets)[256]);
};

// The table in use.
const RowFunctions& Active();

// The tables this processor can run, plain code first; null behind the last.
const RowFunctions* const* Supported();

// For tests and benchmarks: makes one of Supported() the active table; null goes back to the
// widest.
void Use(const RowFunctions* functions);

}  // namespace ombrilo::rows
