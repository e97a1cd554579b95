// The seven header queries. They answer what the fields say, however unlikely; only
// omb_BytesPerLine reads beyond the 12 bytes of a core header, and stays inside the block.
#include <algorithm>
#include <cstring>

#include "core/bytes.h"
#include "core/packed_dib.h"

using ombrilo::DibHeader;
using ombrilo::LoadU16;
using ombrilo::LoadU32;

uint32_t omb_DIBWidth(const PackedDib* dib) {
  return dib == nullptr ? 0 : static_cast<uint32_t>(DibHeader::Read(dib).width);
}

uint32_t omb_DIBHeight(const PackedDib* dib) {
  return dib == nullptr ? 0 : static_cast<uint32_t>(DibHeader::Read(dib).height);
}

uint16_t omb_DIBBitCount(const PackedDib* dib) {
  return dib == nullptr ? uint16_t{0} : DibHeader::Read(dib).bit_count;
}

uint32_t omb_DIBNumColors(const PackedDib* dib) {
  return dib == nullptr ? 0 : DibHeader::Read(dib).color_count;
}

uint16_t omb_PaletteSize(const PackedDib* dib) {
  return dib == nullptr ? uint16_t{0} : DibHeader::Read(dib).table_size();
}

uint8_t* omb_FindDIBBits(const PackedDib* dib) {
  if (dib == nullptr) return nullptr;
  // Computed as a number, because the size field may lead beyond any block.
  const uint64_t address = reinterpret_cast<uintptr_t>(dib) + DibHeader::Read(dib).rows_offset();
  return reinterpret_cast<uint8_t*>(static_cast<uintptr_t>(address));
}

int32_t omb_BytesPerLine(const PackedDib* dib) {
  if (dib == nullptr) return 0;
  // At the information header's positions on purpose, even for a core header. Fields past the end
  // of its block are 0.
  const DibHeader header = DibHeader::Read(dib);
  uint8_t fields[16] = {};
  std::memcpy(fields, dib, std::min(sizeof fields, header.Extent().value_or(header.fields_size())));
  return ombrilo::StrideWithPlanes(LoadU32(fields + ombrilo::kInfoWidth),
                                   LoadU16(fields + ombrilo::kInfoPlanes),
                                   LoadU16(fields + ombrilo::kInfoBitCount));
}
