// Packed DIB to DIB section.
#include <algorithm>
#include <cstring>

#include "core/bytes.h"
#include "gdi/bridge.h"

namespace ombrilo {

namespace {

constexpr size_t kMaxColors = 256;

// Bytes of pixel data that are shown. Their row length includes the planes field.
size_t ShownBytes(const DibView& dib) {
  const int64_t planes = dib.ReadU16(kInfoPlanes);
  const int64_t stride = StrideOf(planes * dib.width(), dib.bit_count());
  const auto usual = static_cast<int64_t>(dib.stride());
  return static_cast<size_t>(std::min(stride, usual) * dib.height());
}

}  // namespace

gdi::Bitmap DibToSection(const PackedDib* image) {
  const auto dib = DibView::Open(image);
  if (!dib || dib->core() || dib->pixel_rows() == 0) return nullptr;

  // The header with a color table of full size, whatever the block holds of it.
  uint8_t info[kInfoHeaderSize + 4 * kMaxColors];
  dib->Read(0, info, sizeof info);
  if (LoadU32(info + kInfoClrUsed) > kMaxColors) StoreU32(info + kInfoClrUsed, 0);

  const gdi::Dc screen = gdi::GetDC(nullptr);
  void* bits = nullptr;
  const gdi::Bitmap section = gdi::CreateDIBSection(screen, info, gdi::kDibRgbColors, &bits);
  if (section == nullptr || bits == nullptr) {
    // A section without bits stays allocated on purpose.
    gdi::ReleaseDC(nullptr, screen);
    return nullptr;
  }
  const gdi::Dc memory = gdi::CreateCompatibleDC(screen);
  std::memcpy(bits, dib->rows(), ShownBytes(*dib));
  const gdi::Object previous = gdi::SelectObject(memory, section);
  if (dib->bit_count() < 9) {
    // All colors that the depth can have, whatever biClrUsed says.
    gdi::SetDIBColorTable(memory, 0, 1u << dib->bit_count(), info + kInfoHeaderSize);
  }
  gdi::SelectObject(memory, previous);
  gdi::DeleteDC(memory);
  gdi::ReleaseDC(nullptr, screen);
  gdi::GdiFlush();
  return section;
}

}  // namespace ombrilo
