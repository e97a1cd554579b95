#include "core/packed_dib.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "core/bytes.h"

namespace ombrilo {

DibHeader DibHeader::Read(const PackedDib* dib) {
  const auto* p = reinterpret_cast<const uint8_t*>(dib);
  DibHeader h;
  h.header_size = LoadU32(p);
  h.core = h.header_size != kInfoHeaderSize;
  if (h.core) {
    h.width = LoadU16(p + kCoreWidth);
    h.height = LoadU16(p + kCoreHeight);
    h.bit_count = LoadU16(p + kCoreBitCount);
    h.color_count = ColorsOfDepth(h.bit_count);
  } else {
    h.width = static_cast<int32_t>(LoadU32(p + kInfoWidth));
    h.height = static_cast<int32_t>(LoadU32(p + kInfoHeight));
    h.bit_count = LoadU16(p + kInfoBitCount);
    const uint32_t used = LoadU32(p + kInfoClrUsed);
    h.color_count = used != 0 ? used : ColorsOfDepth(h.bit_count);
  }
  return h;
}

std::optional<size_t> DibHeader::Extent() const {
  constexpr int64_t kLimit = std::numeric_limits<int32_t>::max();
  int64_t extent = static_cast<int64_t>(rows_offset());
  if (width > 0 && height > 0) {
    if (int64_t{width} * bit_count + 31 > kLimit) return std::nullopt;
    extent += StrideOf(width, bit_count) * height;
  }
  if (extent > kLimit) return std::nullopt;
  return std::max(static_cast<size_t>(extent), fields_size());
}

DibView::DibView(const PackedDib* dib, const DibHeader& header, size_t extent)
    : header_(header), extent_(extent), block_(reinterpret_cast<const uint8_t*>(dib)) {}

std::optional<DibView> DibView::Open(const PackedDib* dib) {
  if (dib == nullptr) return std::nullopt;
  const DibHeader header = DibHeader::Read(dib);
  const std::optional<size_t> extent = header.Extent();
  if (!extent) return std::nullopt;
  return DibView(dib, header, *extent);
}

void DibView::Read(size_t offset, void* to, size_t count) const {
  const size_t inside = offset < extent_ ? std::min(count, extent_ - offset) : 0;
  if (inside != 0) std::memcpy(to, block_ + offset, inside);
  if (inside != count) std::memset(static_cast<uint8_t*>(to) + inside, 0, count - inside);
}

uint16_t DibView::ReadU16(size_t offset) const {
  uint8_t bytes[2];
  Read(offset, bytes, sizeof bytes);
  return LoadU16(bytes);
}

uint32_t DibView::ReadU32(size_t offset) const {
  uint8_t bytes[4];
  Read(offset, bytes, sizeof bytes);
  return LoadU32(bytes);
}

std::optional<Dib> Dib::Open(PackedDib* dib) {
  if (dib == nullptr) return std::nullopt;
  const DibHeader header = DibHeader::Read(dib);
  const std::optional<size_t> extent = header.Extent();
  if (!extent) return std::nullopt;
  return Dib(dib, header, *extent);
}

void Dib::Write(size_t offset, const void* from, size_t count) const {
  if (offset >= extent()) return;
  const size_t inside = std::min(count, extent() - offset);
  if (inside != 0) std::memcpy(block() + offset, from, inside);
}

}  // namespace ombrilo
