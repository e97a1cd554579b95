#include "core/neighbourhood.h"

#include "core/pixels.h"

namespace ombrilo {

namespace {

constexpr size_t kAlignment = 64;

size_t Aligned(size_t bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; }

}  // namespace

Neighbourhood::Neighbourhood(const PixelRows& rows, const Dib* dib, const Reach& reach, int derived)
    : rows_(rows), max_step_(rows.bit_count == 8 && dib == nullptr ? 1 : 3), max_reach_(reach) {
  if (rows_.height == 0) rows_.width = 0;  // no memory for the rows of an image without any
  if (dib != nullptr && dib->indexed()) {
    dib_ = *dib;
    colors_.emplace();
    if (!*colors_) return;
  }
  const size_t slots = size_t(max_reach_.before) + 1 + size_t(max_reach_.after) + 1;
  const size_t left = Aligned(size_t(max_reach_.left) * max_step_);
  const size_t pitch =
      left + Aligned((size_t(rows_.width) + size_t(max_reach_.right)) * max_step_ + kAlignment);
  slot_size_ = pitch * (1 + size_t(derived));
  const size_t result = Aligned(size_t(rows_.width) * max_step_);
  const size_t indices = Aligned(size_t(rows_.width));
  const uint64_t size = uint64_t{slots} * slot_size_ + result + indices + kAlignment;
  if (size > SIZE_MAX / 2) return;
  memory_ = NewScratchBuffer<uint8_t>(static_cast<size_t>(size));
  collected_ = NewScratchBuffer<uint8_t*>(slots);
  if (!memory_ || !collected_) return;
  const size_t skew = reinterpret_cast<uintptr_t>(memory_.get()) % kAlignment;
  result_ = memory_.get() + (skew == 0 ? 0 : kAlignment - skew);
  indices_ = result_ + result;
  window_ = indices_ + indices + left;  // a slot's address is its first pixel's
  layout_.pitch = static_cast<ptrdiff_t>(pitch);
  ready_ = true;
}

WindowLayout Neighbourhood::Begin(const Reach& reach, const Border& border) {
  reach_ = reach;
  ring_ = reach.before + 1 + reach.after;
  if (colors_) colors_->Snapshot(*dib_, split_);
  coded_ = colors_ && !colors_->identity();
  const size_t step = coded_ ? colors_->step() : rows_.bit_count / 8u;
  const int64_t columns = int64_t{rows_.width} - border.band.left - border.band.right;
  layout_.step = static_cast<ptrdiff_t>(step);
  layout_.bytes = size_t(rows_.width) * step;
  layout_.first = columns < 1 ? 0 : size_t(border.band.left) * step;
  layout_.count = columns < 1 ? 0 : size_t(columns) * step;
  layout_.spare = Slot(max_reach_.before + 1 + max_reach_.after);
  return layout_;
}

uint8_t* Neighbourhood::NeutralRow(uint8_t value) {
  uint8_t* row = Slot(max_reach_.before + 1 + max_reach_.after);
  const size_t left = size_t(reach_.left) * size_t(layout_.step);
  const size_t right = size_t(reach_.right) * size_t(layout_.step);
  std::memset(row - left, value, left + layout_.bytes + right);
  return row;
}

uint8_t* Neighbourhood::Load(int32_t y, const Border& border) {
  uint8_t* row = Slot(y % ring_);
  if (coded_) {
    UnpackIndices(rows_.row(y), rows_.bit_count, size_t(rows_.width), indices_);
    colors_->Decode(indices_, size_t(rows_.width), row);
  } else {
    rows_.Read(y, layout_.bytes, row);
  }
  const size_t step = size_t(layout_.step);
  const size_t left = size_t(reach_.left) * step;
  const size_t right = size_t(reach_.right) * step;
  uint8_t* const end = row + layout_.bytes;
  if (border.kind == Border::kNearest) {
    for (size_t i = 1; i <= left; ++i) *(row - i) = *(row - i + step);
    for (size_t i = 0; i < right; ++i) end[i] = *(end + i - step);
  } else if (border.kind == Border::kSkip) {
    std::memset(row - left, border.neutral, left);
    std::memset(end, border.neutral, right);
  }
  return row;
}

void Neighbourhood::CollectRows(int32_t y, const Border& border) {
  for (int32_t k = 0; k < ring_; ++k) {
    const int64_t wanted = int64_t{y} - reach_.before + k;
    const auto there =
        static_cast<int32_t>(std::clamp<int64_t>(wanted, 0, int64_t{rows_.height} - 1));
    const bool missing = border.kind == Border::kSkip && there != wanted;
    collected_[k] = Slot(missing ? max_reach_.before + 1 + max_reach_.after : there % ring_);
  }
}

void Neighbourhood::ZeroRow(int32_t y) {
  std::memset(rows_.row(y), 0, rows_.Inside(y, rows_.stride));
}

// Results go straight into the image unless they have to be encoded or the row is not all there.
uint8_t* Neighbourhood::Target(int32_t y) {
  if (coded_) return result_;
  if (rows_.Inside(y, layout_.bytes) == layout_.bytes) return rows_.row(y);
  rows_.Read(y, layout_.bytes, result_);
  return result_;
}

void Neighbourhood::Finish(int32_t y, uint8_t* to, const Border& border) {
  const bool zero = border.kind == Border::kZero;
  if (!coded_) {
    if (zero) {
      const size_t end = layout_.first + layout_.count;
      std::memset(to, 0, layout_.first);
      std::memset(to + end, 0, rows_.Inside(y, rows_.stride) - end);
    }
    if (to == result_) rows_.Write(y, to, layout_.bytes);
    return;
  }
  const size_t width = size_t(rows_.width);
  if (zero) {
    ZeroRow(y);
    std::memset(indices_, 0, width);
  }
  const size_t first = layout_.first / size_t(layout_.step);
  colors_->Encode(to + layout_.first, layout_.count / size_t(layout_.step), indices_ + first);
  PackIndices(indices_, rows_.bit_count, width, rows_.row(y));
}

}  // namespace ombrilo
