#include "core/replacement.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <utility>

#include "core/bytes.h"

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace ombrilo {

namespace {

// Faulting in pages costs more than filling them, and with large pages there are few. The advice is
// for the whole large pages inside the block; it does nothing for pages that are there already.
void PreferLargePages([[maybe_unused]] uint8_t* block, [[maybe_unused]] size_t size) {
#if defined(MADV_HUGEPAGE)
  constexpr uintptr_t kPage = uintptr_t{2} << 20;
  if (block == nullptr || size < 2 * kPage) return;
  const uintptr_t start = reinterpret_cast<uintptr_t>(block);
  const uintptr_t first = (start + kPage - 1) & ~(kPage - 1);
  const uintptr_t end = (start + size) & ~(kPage - 1);
  madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

}  // namespace

NewBlock NewBlock::Zeroed(uint64_t size) {
  NewBlock block;
  if (size <= std::numeric_limits<int32_t>::max()) {
    block.size_ = static_cast<size_t>(size);
    block.bytes_ = NewZeroedBuffer<uint8_t>(block.size_);
    PreferLargePages(block.bytes(), block.size_);
  }
  return block;
}

NewBlock NewBlock::ZeroedAroundPixels(uint64_t size, size_t rows_offset, size_t rows,
                                      size_t pixel_bytes, size_t stride) {
  NewBlock block;
  if (size > std::numeric_limits<int32_t>::max()) return block;
  block.size_ = static_cast<size_t>(size);
  block.bytes_ = NewScratchBuffer<uint8_t>(block.size_);
  if (!block) return block;
  PreferLargePages(block.bytes(), block.size_);
  uint8_t* const first = block.bytes() + rows_offset;
  std::memset(block.bytes(), 0, rows_offset);
  if (pixel_bytes != stride) {
    for (size_t y = 0; y < rows; ++y) {
      std::memset(first + y * stride + pixel_bytes, 0, stride - pixel_bytes);
    }
  }
  std::memset(first + rows * stride, 0, block.size_ - rows_offset - rows * stride);
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

NewBlock NewBlock::Fresh(int32_t width, int32_t height, uint16_t bit_count, Rows rows) {
  uint8_t fields[kInfoHeaderSize] = {};
  StoreU32(fields, kInfoHeaderSize);
  StoreU32(fields + kInfoWidth, static_cast<uint32_t>(width));
  StoreU32(fields + kInfoHeight, static_cast<uint32_t>(height));
  StoreU16(fields + kInfoPlanes, 1);
  StoreU16(fields + kInfoBitCount, bit_count);
  const DibHeader header = DibHeader::Read(reinterpret_cast<const PackedDib*>(fields));
  const std::optional<size_t> extent = header.Extent();
  if (!extent) return {};
  NewBlock block = rows == Rows::kZeroed
                       ? Zeroed(*extent)
                       : ZeroedAroundPixels(*extent, static_cast<size_t>(header.rows_offset()),
                                            static_cast<size_t>(height),
                                            static_cast<size_t>(width) * bit_count / 8,
                                            static_cast<size_t>(StrideOf(width, bit_count)));
  if (!block) return block;
  std::memcpy(block.bytes(), fields, sizeof fields);
  const uint32_t colors = ColorsOfDepth(bit_count);
  for (uint32_t i = 0; i < colors; ++i) {
    const uint32_t level = i * (255 / (colors - 1));
    StoreU32(block.bytes() + kInfoHeaderSize + 4 * i, level * 0x010101);
  }
  return block;
}

NewBlock NewBlock::Resized(const DibView& source, int64_t width, int64_t height, Rows rows) {
  constexpr int64_t kLimit = std::numeric_limits<int32_t>::max();
  if (width < 0 || height < 0 || width > kLimit || height > kLimit) return {};
  if (width * source.bit_count() + 31 > kLimit) return {};
  const uint64_t stride = static_cast<uint64_t>(StrideOf(width, source.bit_count()));
  const uint64_t rows_size = stride * static_cast<uint64_t>(height);
  // A size field below the header's own length puts the table and rows over the header.
  const size_t header_and_table = std::max(source.prefix_size(), source.header().fields_size());
  const uint64_t size = std::max(source.prefix_size() + rows_size, uint64_t{header_and_table});
  NewBlock block =
      rows == Rows::kZeroed
          ? Zeroed(size)
          : ZeroedAroundPixels(size, source.prefix_size(), static_cast<size_t>(height),
                               static_cast<size_t>(width) * source.bit_count() / 8, stride);
  if (!block) return block;
  source.Read(0, block.bytes(), header_and_table);
  block.StoreSize(source.core(), width, height);
  return block;
}

void NewBlock::StoreSize(bool core, int64_t width, int64_t height) const {
  if (core) {
    StoreU16(bytes() + kCoreWidth, static_cast<uint16_t>(width));
    StoreU16(bytes() + kCoreHeight, static_cast<uint16_t>(height));
  } else {
    StoreU32(bytes() + kInfoWidth, static_cast<uint32_t>(width));
    StoreU32(bytes() + kInfoHeight, static_cast<uint32_t>(height));
  }
}

NewBlock NewBlock::WithDepth(const DibView& source, uint16_t bit_count, uint32_t entries,
                             uint32_t colors_used, uint16_t room, Rows rows) {
  return WithDepth(source, source.width(), source.pixel_rows(), bit_count, entries, colors_used,
                   room, rows);
}

NewBlock NewBlock::WithSizeAndDepth(const DibView& source, int32_t width, int32_t height,
                                    uint16_t bit_count) {
  NewBlock block = WithDepth(source, width, height, bit_count, ColorsOfDepth(bit_count), 0,
                             bit_count, Rows::kPixelsComeNext);
  if (block) block.StoreSize(source.core(), width, height);
  return block;
}

NewBlock NewBlock::WithDepth(const DibView& source, int32_t width, int32_t height,
                             uint16_t bit_count, uint32_t entries, uint32_t colors_used,
                             uint16_t room, Rows rows) {
  constexpr int64_t kLimit = std::numeric_limits<int32_t>::max();
  const DibHeader& header = source.header();
  if (height != 0 && int64_t{width} * bit_count + 31 > kLimit) return {};
  const size_t header_bytes = std::max<size_t>(header.header_size, header.fields_size());
  const uint64_t rows_offset = uint64_t{header.header_size} + entries * header.table_step();
  const size_t stride = static_cast<size_t>(StrideOf(width, room));
  const size_t row_count = static_cast<size_t>(height);
  const uint64_t size =
      std::max<uint64_t>(rows_offset + uint64_t{stride} * row_count, header_bytes);
  NewBlock block = rows == Rows::kZeroed
                       ? Zeroed(size)
                       : ZeroedAroundPixels(size, static_cast<size_t>(rows_offset), row_count,
                                            static_cast<size_t>(width) * bit_count / 8, stride);
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
  return WithDepth(source, bit_count, colors, bit_count == 8 ? 0 : colors, bit_count,
                   Rows::kPixelsComeNext);
}

bool NewBlock::Resize(uint64_t size) {
  if (size == 0) return false;
  // Zeroed memory that is never touched costs nothing; what a core header announces by accident can
  // be gigabytes.
  NewBlock resized = Zeroed(size);
  if (!resized) return false;
  std::memcpy(resized.bytes(), bytes(), std::min(size_, resized.size_));
  *this = std::move(resized);
  return true;
}

bool NewBlock::HoldsExtent() {
  const std::optional<size_t> extent = DibHeader::Read(packed()).Extent();
  return extent && (*extent <= size_ || Resize(*extent));
}

PackedDib* NewBlock::Release() {
  return bytes_ != nullptr && HoldsExtent() ? reinterpret_cast<PackedDib*>(bytes_.release())
                                            : nullptr;
}

bool NewBlock::Replace(PackedDib** image) {
  PackedDib* const block = Release();
  if (block == nullptr) return false;
  std::free(*image);
  *image = block;
  return true;
}

}  // namespace ombrilo
