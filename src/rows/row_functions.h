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
};

// The table in use.
const RowFunctions& Active();

// The tables this processor can run, plain code first; null behind the last.
const RowFunctions* const* Supported();

// For tests and benchmarks: makes one of Supported() the active table; null goes back to the
// widest.
void Use(const RowFunctions* functions);

}  // namespace ombrilo::rows
