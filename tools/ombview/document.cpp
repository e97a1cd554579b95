#include "document.h"

#include <cstring>
#include <new>
#include <utility>

#include "core/packed_dib.h"
#include "files/codec.h"

namespace ombview {

namespace {

size_t SizeOf(const PackedDib* dib) {
  const auto view = ombrilo::DibView::Open(dib);
  return view ? view->extent() : 0;
}

}  // namespace

void Document::Open(omb::Image image, omb::Metadata metadata, const std::filesystem::path& file) {
  auto shared = std::make_shared<const omb::Metadata>(std::move(metadata));
  Push({std::move(image), std::move(shared), "Opening", file, true});
}

void Document::Put(omb::Image image, std::string action) {
  Push({std::move(image), std::make_shared<const omb::Metadata>(), std::move(action), {}, false});
}

void Document::Change(omb::Image image, std::string action) {
  Push({std::move(image), metadata(), std::move(action), file(), false});
}

void Document::MarkSaved(const std::filesystem::path& file) {
  State& state = states_[current_ - 1];
  state.file = file;
  state.saved = true;
}

bool Document::Undo() {
  if (undo() == nullptr) return false;
  --current_;
  return true;
}

bool Document::Redo() {
  if (redo() == nullptr) return false;
  ++current_;
  return true;
}

const std::string* Document::redo() const {
  return current_ < states_.size() ? &states_[current_].action : nullptr;
}

void Document::Push(State state) {
  states_.erase(states_.begin() + static_cast<std::ptrdiff_t>(current_), states_.end());
  states_.push_back(std::move(state));
  // The newest two stay in any case: the last action can always be undone.
  size_t bytes = 0;
  size_t kept = 0;
  for (; kept < states_.size(); ++kept) {
    bytes += SizeOf(states_[states_.size() - 1 - kept].image.get());
    if (bytes > history_bytes_ && kept >= 2) break;
  }
  states_.erase(states_.begin(), states_.end() - static_cast<std::ptrdiff_t>(kept));
  current_ = states_.size();
}

omb::Image After(const PackedDib* image, const omb::Call& call) {
  omb::Image result = CopyOf(image);
  omb::RunCall(call, result);
  return result;
}

omb::Image CopyOf(const PackedDib* dib) {
  const size_t size = SizeOf(dib);
  omb::Image copy(static_cast<PackedDib*>(std::malloc(size)));
  if (!copy) throw std::bad_alloc();
  std::memcpy(copy.get(), dib, size);
  return copy;
}

omb::Image ImageOfBytes(std::span<const uint8_t> bytes, const omb::Remark& remark) {
  const omb::Remark heard = remark ? remark : [](const std::string&) {};
  omb::Reading reading = {bytes, heard};
  return omb::ReadPackedDib(reading);
}

}  // namespace ombview
