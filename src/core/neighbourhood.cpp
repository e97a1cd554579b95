#include "core/neighbourhood.h"

#include "rows/row_functions.h"

namespace ombrilo {

namespace {

constexpr size_t kAlignment = 64;

size_t Aligned(size_t bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; }

}  // namespace

Neighbourhood::Neighbourhood(const PixelRows& rows, const Dib* dib, const Reach& reach,
                             const FilterMemory& memory, int passes)
    : rows_(rows), max_step_(rows.bit_count == 8 && dib == nullptr ? 1 : 3), max_reach_(reach) {
  if (rows_.height == 0) rows_.width = 0;  // no memory for the rows of an image without any
  if (dib != nullptr && dib->indexed()) {
    dib_ = *dib;
    colors_.emplace(rows_.pixels(), !(TableHoldsPalette(*dib) && MakeDIBPalette(*dib)->AllGray()));
    if (!*colors_) return;
  }
  const size_t left = Aligned(size_t(max_reach_.left) * max_step_);
  const size_t pitch =
      left + Aligned((size_t(rows_.width) + size_t(max_reach_.right)) * max_step_ + kAlignment);
  const auto size_of = [&](const FilterMemory::Part& part) {
    return part.rows * pitch + Aligned(part.bytes);
  };
  slot_size_ = pitch + size_of(memory.derived);
  layout_.scratch_bytes = size_of(memory.scratch);
  const uint64_t slots = SlotsPerWindow() * uint64_t(passes);
  const size_t result = Aligned(size_t(rows_.width) * max_step_);
  const uint64_t size =
      slots * slot_size_ + layout_.scratch_bytes + result + kAlignment + simd::kReadAhead;
  if (size > SIZE_MAX / 2) return;
  memory_ = NewScratchBuffer<uint8_t>(static_cast<size_t>(size));
  pointers_ = NewScratchBuffer<uint8_t*>(static_cast<size_t>(slots));
  if (!memory_ || !pointers_) return;
  const size_t skew = reinterpret_cast<uintptr_t>(memory_.get()) % kAlignment;
  result_ = memory_.get() + (skew == 0 ? 0 : kAlignment - skew);
  layout_.scratch = result_ + result;
  slots_ = layout_.scratch + layout_.scratch_bytes + left;  // a slot's address is its first pixel's
  layout_.pitch = static_cast<ptrdiff_t>(pitch);
  layout_.derived_bytes = slot_size_ - pitch - (slot_size_ == pitch ? 0 : left);
  ready_ = true;
}

bool Neighbourhood::SplitChannels() {
  split_ = true;
  if (colors_) colors_.emplace(rows_.pixels());
  return !colors_ || *colors_;
}

bool Neighbourhood::PixelsAreValues() {
  if (!colors_) return true;
  colors_->Snapshot(*dib_, split_);
  return colors_->identity() && TableHoldsPalette(*dib_);
}

void Neighbourhood::BeginWalk(const Reach& band) {
  if (colors_) colors_->Snapshot(*dib_, split_);
  coded_ = colors_ && !colors_->identity();
  const size_t step = coded_ ? colors_->step() : rows_.bit_count / 8u;
  const int64_t columns = int64_t{rows_.width} - band.left - band.right;
  layout_.step = static_cast<ptrdiff_t>(step);
  layout_.bytes = size_t(rows_.width) * step;
  layout_.first = columns < 1 ? 0 : size_t(band.left) * step;
  layout_.count = columns < 1 ? 0 : size_t(columns) * step;
}

Neighbourhood::Window& Neighbourhood::BeginPass(int p, const Reach& reach, const Border& border) {
  // Pixels within a band have all neighbours; other borders fill in those that are missing.
  assert(border.kind == Border::kNearest || border.kind == Border::kSkip ||
         (reach.before <= border.band.before && reach.after <= border.band.after &&
          reach.left <= border.band.left && reach.right <= border.band.right));
  const size_t before = SlotsPerWindow() * size_t(p);
  windows_[p] = {.reach = reach,
                 .border = border,
                 .slots = slots_ + before * slot_size_,
                 .rows = pointers_.get() + before,
                 .ring = reach.before + 1 + reach.after,
                 .done = 0,
                 .taken = 0,
                 .next_slot = 0};
  return windows_[p];
}

uint8_t* Neighbourhood::NeutralRow(const Window& window) const {
  return window.slots + (SlotsPerWindow() - 1) * slot_size_;
}

void Neighbourhood::FillNeutralRow(const Window& window) const {
  uint8_t* row = NeutralRow(window);
  const size_t left = size_t(window.reach.left) * size_t(layout_.step);
  const size_t right = size_t(window.reach.right) * size_t(layout_.step);
  std::memset(row - left, window.border.neutral, left + layout_.bytes + right);
}

// The row of the image that is read next, or after it, far enough from what is read now to arrive
// in time. Null for images that the core's caches may hold. Larger ones lose 2 to 15 % where the
// last cache has them, and gain up to a half where they come from memory.
const uint8_t* Neighbourhood::RowAhead() const {
  const uint64_t size = uint64_t(rows_.stride) * uint64_t(rows_.height);
  if (coded_ || size < kCoreCached) return nullptr;
  const int64_t y = windows_[0].taken + static_cast<int64_t>(simd::kFetchedAhead / rows_.stride);
  if (y >= rows_.height) return nullptr;
  const auto row = static_cast<int32_t>(y);
  return rows_.Inside(row, layout_.bytes) == layout_.bytes ? rows_.row(row) : nullptr;
}

void Neighbourhood::Load(int32_t y, uint8_t* row) {
  if (coded_) {
    colors_->DecodeRow(rows_.row(y), 0, size_t(rows_.width), row);
  } else if (rows_.Inside(y, layout_.bytes) == layout_.bytes) {
    simd::Active().copy(rows_.row(y), layout_.bytes, row);
  } else {
    rows_.Read(y, layout_.bytes, row);
  }
}

// Turns a pass's result into what the next pass would read from the image.
void Neighbourhood::Settle(int32_t y, const uint8_t* result, uint8_t* row) {
  if (coded_) {
    colors_->Settle(result, size_t(rows_.width), row);
  } else {
    const size_t there = rows_.Inside(y, layout_.bytes);
    std::memset(row + there, 0, layout_.bytes - there);
  }
}

void Neighbourhood::AddMargins(const Window& window, uint8_t* row) const {
  const size_t step = size_t(layout_.step);
  const size_t left = size_t(window.reach.left) * step;
  const size_t right = size_t(window.reach.right) * step;
  uint8_t* const end = row + layout_.bytes;
  if (window.border.kind == Border::kNearest) {
    for (size_t i = 1; i <= left; ++i) *(row - i) = *(row - i + step);
    for (size_t i = 0; i < right; ++i) end[i] = *(end + i - step);
  } else if (window.border.kind == Border::kSkip) {
    std::memset(row - left, window.border.neutral, left);
    std::memset(end, window.border.neutral, right);
  }
}

// The rows missing before the image.
void Neighbourhood::FillMissing(const Window& window, uint8_t* first) const {
  const bool skip = window.border.kind == Border::kSkip;
  std::fill_n(window.rows, window.ring, skip ? NeutralRow(window) : first);
}

void Neighbourhood::AppendMissing(Window& window) {
  const bool skip = window.border.kind == Border::kSkip;
  Append(window, skip ? NeutralRow(window) : window.rows[window.ring - 1]);
}

void Neighbourhood::ZeroRow(int32_t y) {
  std::memset(rows_.row(y), 0, rows_.Inside(y, rows_.stride));
}

// Results go straight into the image unless they have to be encoded or part of the row lies outside
// the block.
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
  if (zero) ZeroRow(y);
  const size_t step = size_t(layout_.step);
  colors_->EncodeRow(to + layout_.first, layout_.first / step, layout_.count / step, rows_.row(y));
}

}  // namespace ombrilo
