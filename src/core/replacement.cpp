#include "core/replacement.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>

#include "core/bytes.h"

namespace ombrilo {

NewBlock NewBlock::Zeroed(uint64_t size) {
  NewBlock block;
  if (size <= std::numeric_limits<int32_t>::max()) {
    block.size_ = static_cast<size_t>(size);
    block.bytes_ = NewZeroedBuffer<uint8_t>(block.size_);
  }
  return block;
}

NewBlock NewBlock::WithHeader(const uint8_t* fields) {
  const DibHeader header = DibHeader::Read(reinterpret_cast<const PackedDib*>(fields));
  const std::optional<size_t> extent = header.Extent();
  if (!extent) return {};
  NewBlock block = Zeroed(*extent);
  if (block) std::memcpy(block.bytes(), fields, header.fields_size());
  return block;
}

NewBlock NewBlock::Resized(const DibView& source, int64_t width, int64_t height) {
  constexpr int64_t kLimit = std::numeric_limits<int32_t>::max();
  if (width < 0 || height < 0 || width > kLimit || height > kLimit) return {};
  if (width * source.bit_count() + 31 > kLimit) return {};
  const uint64_t rows_size =
      static_cast<uint64_t>(StrideOf(width, source.bit_count())) * static_cast<uint64_t>(height);
  // A size field below the header's own length puts the table and rows over the header.
  const size_t header_and_table = std::max(source.prefix_size(), source.header().fields_size());
  NewBlock block = Zeroed(std::max(source.prefix_size() + rows_size, uint64_t{header_and_table}));
  if (!block) return block;
  source.Read(0, block.bytes(), header_and_table);
  if (source.core()) {
    StoreU16(block.bytes() + kCoreWidth, static_cast<uint16_t>(width));
    StoreU16(block.bytes() + kCoreHeight, static_cast<uint16_t>(height));
  } else {
    StoreU32(block.bytes() + kInfoWidth, static_cast<uint32_t>(width));
    StoreU32(block.bytes() + kInfoHeight, static_cast<uint32_t>(height));
  }
  return block;
}

NewBlock NewBlock::WithDepth(const DibView& source, uint16_t bit_count, uint32_t entries,
                             uint32_t colors_used, uint16_t room) {
  const DibHeader& header = source.header();
  const size_t header_bytes = std::max<size_t>(header.header_size, header.fields_size());
  const uint64_t size = uint64_t{header.header_size} + entries * header.table_step() +
                        static_cast<uint64_t>(StrideOf(source.width(), room)) *
                            static_cast<uint64_t>(source.pixel_rows());
  NewBlock block = Zeroed(std::max<uint64_t>(size, header_bytes));
  if (!block) return block;
  source.Read(0, block.bytes(), header_bytes);
  if (source.core()) {
    StoreU16(block.bytes() + kCoreBitCount, bit_count);
  } else {
    StoreU16(block.bytes() + kInfoBitCount, bit_count);
    StoreU32(block.bytes() + kInfoClrUsed, colors_used);
    StoreU32(block.bytes() + kInfoClrImportant, 0);
  }
  return block;
}

NewBlock NewBlock::Indexed(const DibView& source, uint16_t bit_count) {
  const uint32_t colors = ColorsOfDepth(bit_count);
  // 8 bits imply their number of colors; for 1 bit it is stated.
  return WithDepth(source, bit_count, colors, bit_count == 8 ? 0 : colors);
}

bool NewBlock::Resize(uint64_t size) {
  if (size == 0 || size > std::numeric_limits<int32_t>::max()) return false;
  void* moved = std::realloc(bytes_.get(), static_cast<size_t>(size));
  if (moved == nullptr) return false;
  (void)bytes_.release();
  bytes_.reset(static_cast<uint8_t*>(moved));
  if (size > size_) std::memset(bytes_.get() + size_, 0, static_cast<size_t>(size) - size_);
  size_ = static_cast<size_t>(size);
  return true;
}

void NewBlock::Replace(PackedDib** image) {
  std::free(*image);
  *image = Release();
}

}  // namespace ombrilo
