#include "clipboard.h"

#include <cstring>

#include "core/packed_dib.h"
#include "document.h"

namespace ombview {

namespace {

class OpenedClipboard {
 public:
  explicit OpenedClipboard(HWND owner) : opened_(OpenClipboard(owner) != 0) {}
  ~OpenedClipboard() {
    if (opened_) CloseClipboard();
  }
  OpenedClipboard(const OpenedClipboard&) = delete;
  OpenedClipboard& operator=(const OpenedClipboard&) = delete;
  explicit operator bool() const { return opened_; }

 private:
  bool opened_;
};

// The bytes of a block on the clipboard, as long as it is open.
class LockedBytes {
 public:
  explicit LockedBytes(HGLOBAL block) : block_(block), bytes_(GlobalLock(block)) {}
  ~LockedBytes() { GlobalUnlock(block_); }
  LockedBytes(const LockedBytes&) = delete;
  LockedBytes& operator=(const LockedBytes&) = delete;
  std::span<const uint8_t> get() const {
    return {static_cast<const uint8_t*>(bytes_), bytes_ == nullptr ? 0 : GlobalSize(block_)};
  }

 private:
  HGLOBAL block_;
  const void* bytes_;
};

HGLOBAL GlobalCopyOf(const ombrilo::DibView& dib) {
  const HGLOBAL copy = GlobalAlloc(GMEM_MOVEABLE, dib.extent());
  if (copy == nullptr) return nullptr;
  std::memcpy(GlobalLock(copy), dib.block(), dib.extent());
  GlobalUnlock(copy);
  return copy;
}

}  // namespace

bool ClipboardHasImage() { return IsClipboardFormatAvailable(CF_DIB) != 0; }

bool CopyToClipboard(HWND owner, const PackedDib* image) {
  const auto dib = ombrilo::DibView::Open(image);
  const OpenedClipboard clipboard(owner);
  if (!dib || !clipboard) return false;
  const HGLOBAL copy = GlobalCopyOf(*dib);
  if (copy == nullptr) return false;
  EmptyClipboard();
  if (SetClipboardData(CF_DIB, copy) != nullptr) return true;  // the clipboard owns it now
  GlobalFree(copy);
  return false;
}

std::vector<uint8_t> BytesOfClipboard(HWND owner) {
  const OpenedClipboard clipboard(owner);
  const HGLOBAL block = clipboard ? GetClipboardData(CF_DIB) : nullptr;
  if (block == nullptr) return {};
  const LockedBytes locked(block);
  return {locked.get().begin(), locked.get().end()};
}

}  // namespace ombview
