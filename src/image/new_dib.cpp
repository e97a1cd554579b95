// omb_newdib and omb_freedib: images for hosts without a malloc() of the library's runtime.
#include <cstdlib>

#include "core/bytes.h"
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
  const uint32_t colors = ColorsOfDepth(bitCount);

  uint8_t fields[kInfoHeaderSize] = {};
  StoreU32(fields, kInfoHeaderSize);
  StoreU32(fields + kInfoWidth, static_cast<uint32_t>(width));
  StoreU32(fields + kInfoHeight, static_cast<uint32_t>(height));
  StoreU16(fields + kInfoPlanes, 1);
  StoreU16(fields + kInfoBitCount, bitCount);
  NewBlock block = NewBlock::WithHeader(fields);
  if (!block) return nullptr;
  for (uint32_t i = 0; i < colors; ++i) {
    uint8_t* entry = block.bytes() + kInfoHeaderSize + 4 * i;
    entry[0] = entry[1] = entry[2] = static_cast<uint8_t>(i * 255 / (colors - 1));
  }
  return block.Release();
}

void omb_freedib(PackedDib* dib) { std::free(dib); }
