// omb_newdib and omb_freedib: images for hosts without a malloc() of the library's runtime.
#include <cstdlib>

#include "core/packed_dib.h"
#include "core/replacement.h"

namespace ombrilo {

namespace {

bool IsKnownDepth(uint16_t bit_count) {
  return IsIndexed(bit_count) || bit_count == 16 || bit_count == 24 || bit_count == 32;
}

}  // namespace

}  // namespace ombrilo

PackedDib* omb_newdib(int32_t width, int32_t height, uint16_t bitCount) {
  using namespace ombrilo;
  if (width < 1 || height < 1 || !IsKnownDepth(bitCount)) return nullptr;
  return NewBlock::Fresh(width, height, bitCount, NewBlock::Rows::kZeroed).Release();
}

void omb_freedib(PackedDib* dib) { std::free(dib); }
