#include "trust/fuzz_library.h"

#include "core/packed_dib.h"
#include "rows/row_functions.h"
#include "support/every_export.h"

namespace ombrilo::test {

namespace {

// Images that grew from call to call would only take time, and so would reading gigabytes.
bool IsSmall(const PackedDib* dib) {
  const auto view = DibView::Open(dib);
  return !view || (view->extent() < 1 << 20 && int64_t{view->width()} * view->height() < 1 << 20);
}

}  // namespace

void FuzzLibrary(std::span<const uint8_t> bytes) {
  Draw draw(bytes, Draw::kAny);
  const simd::RowFunctions* const* level = simd::Supported();
  for (int wider = draw.Byte() % 4; wider > 0 && level[1] != nullptr; --wider) ++level;
  simd::Use(*level);
  // The operations come before the image, whose bytes may take all that is left.
  const uint8_t choices[] = {draw.Byte(), draw.Byte(), draw.Byte()};
  TestImage image = HostileImage(draw);
  for (const uint8_t choice : choices) {
    if (image.get() == nullptr || !IsSmall(image.get())) break;
    const bool overlaps = OverlapsItself(image.get());
    const PackedDib* const before = image.get();
    Digest digest;
    EveryExport()[choice % EveryExport().size()].call(image.ref(), draw, digest);
    // Rows over a header that change in place make it announce anything.
    if (overlaps && image.get() == before) break;
    // A block is never smaller than its header says, so its last byte can be read.
    if (const auto result = DibView::Open(image.get())) {
      digest.Add(result->block() + result->extent() - 1, 1);
    }
  }
  simd::Use(nullptr);
}

}  // namespace ombrilo::test
