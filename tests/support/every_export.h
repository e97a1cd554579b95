// Every export as one call on an image with drawn parameters: what fuzzing, failing memory, threads
// and the comparison of builds have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "support/image.h"

namespace ombrilo::test {

// Parameters drawn from bytes, one after the other; 0 after the last byte.
class Draw {
 public:
  enum Values {
    kMeant,  // inside the range that a function is meant for
    kAny,    // now and then far outside of it
  };
  Draw(std::span<const uint8_t> bytes, Values values) : bytes_(bytes), values_(values) {}

  uint8_t Byte();
  bool empty() const { return bytes_.empty(); }
  int32_t Whole(int32_t low, int32_t high);
  double Real(double low, double high);

 private:
  std::span<const uint8_t> bytes_;
  Values values_;
};

// Bytes to draw from, the same for the same seed.
std::vector<uint8_t> RandomBytes(uint32_t seed, size_t count);

// A checksum (Fowler, Noll and Vo's FNV-1a).
class Digest {
 public:
  void Add(const void* bytes, size_t count);
  void Add(uint64_t number) {  // lowest byte first, whatever the host's order
    for (int shift = 0; shift < 64; shift += 8) {
      const auto byte = static_cast<uint8_t>(number >> shift);
      Add(&byte, 1);
    }
  }
  // Every byte of the block's extent; for null, a number of its own.
  void AddImage(const PackedDib* dib);
  uint64_t value() const { return value_; }

 private:
  uint64_t value_ = 0xCBF29CE484222325u;
};

struct Export {
  const char* name;
  // Returns the function's result, 1 for a function without one and for an address that is not
  // null; what such an address holds goes into the digest and is released.
  uint64_t (*call)(PackedDib** image, Draw& draw, Digest& digest);
};

std::span<const Export> EveryExport();

// A block whose header says anything, as long as what it announces is no larger than 64 KiB; the
// block ends exactly where that ends. Null for larger ones.
TestImage HostileImage(Draw& draw);

// Whether the header's own size field puts table or rows over the header: colors that are written
// there make it say anything.
bool OverlapsItself(const PackedDib* dib);

}  // namespace ombrilo::test
