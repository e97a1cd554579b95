#include "filters/convolver.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace ombrilo {

namespace {

constexpr int64_t kExactFloats = int64_t{1} << 24;

int32_t WrappedSum(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

// n * multiplier >> 16 >> shift equals n / divisor for every n up to `largest`. The multiplier is
// 2^(16 + shift) / divisor rounded up; with e = multiplier * divisor - 2^(16 + shift), the error of
// the product is n * e / divisor, which stays below a step of 1 / divisor while n * e < 2^(16 +
// shift).
bool FindReciprocal(int64_t divisor, int64_t largest, rows::Convolution& plan) {
  for (int shift = 15; shift >= 0; --shift) {
    const int64_t one = int64_t{1} << (16 + shift);
    const int64_t multiplier = (one + divisor - 1) / divisor;
    if (multiplier > UINT16_MAX) continue;
    if (largest * (multiplier * divisor - one) >= one) continue;
    plan.multiplier = static_cast<uint16_t>(multiplier);
    plan.shift = static_cast<uint16_t>(shift);
    return true;
  }
  return false;
}

}  // namespace

Convolver::Convolver(Buffer<Tap> taps, size_t count, const Finishing& finishing)
    : taps_(std::move(taps)),
      count_(count),
      weights_(NewScratchBuffer<int32_t>(count)),
      rows_(NewScratchBuffer<const uint8_t*>(count)) {
  if (!*this) return;
  std::copy_n(finishing.color, 3, color_);
  Merge();
  ChooseFinish(finishing);
  if (plan_.wide) {
    Group();
  } else {
    Factor();
  }
  for (size_t i = 0; i < count_; ++i) weights_[i] = taps_[i].weight;
}

void Convolver::Merge() {
  const auto place = [](const Tap& tap) { return std::pair(tap.dy, tap.dx); };
  std::sort(taps_.get(), taps_.get() + count_,
            [&](const Tap& a, const Tap& b) { return place(a) < place(b); });
  size_t kept = 0;
  for (size_t i = 0; i < count_;) {
    Tap tap = taps_[i];
    for (++i; i < count_ && place(taps_[i]) == place(tap); ++i) {
      tap.weight = WrappedSum(tap.weight, taps_[i].weight);
    }
    if (tap.weight != 0) taps_[kept++] = tap;
  }
  count_ = kept;
  for (size_t i = 0; i < count_; ++i) {
    const Tap& tap = taps_[i];
    reach_.before = std::max(reach_.before, -tap.dy);
    reach_.after = std::max(reach_.after, tap.dy);
    reach_.left = std::max(reach_.left, -tap.dx);
    reach_.right = std::max(reach_.right, tap.dx);
    int64_t& sum = tap.weight < 0 ? negative_ : positive_;
    sum = std::min(sum + std::abs(int64_t{tap.weight}), int64_t{1} << 40);
  }
}

void Convolver::ChooseFinish(const Finishing& finishing) {
  plan_.divisor = finishing.divisor;
  plan_.strength = finishing.strength;
  plan_.bias = finishing.bias;
  plan_.wide = (positive_ + negative_) * 255 > UINT16_MAX;
  const bool whole = finishing.strength == 10;
  if (whole && finishing.bias == 0 && plan_.divisor < 0 && !plan_.wide) {
    for (size_t i = 0; i < count_; ++i) taps_[i].weight = -taps_[i].weight;
    plan_.divisor = -plan_.divisor;
    std::swap(positive_, negative_);
  }
  plan_.lowest = plan_.wide ? 0 : static_cast<int32_t>(255 * negative_);
  // Within 16 bits with sign, an offset of up to 255 + 255 included.
  const bool small =
      positive_ <= 126 && negative_ <= 126 && std::abs(int64_t{finishing.bias}) < 256;
  if (whole && small && (plan_.divisor == 0 || plan_.divisor == 1)) {
    plan_.finish = rows::kFinishClamp;
    return;
  }
  if (whole && finishing.bias == 0 && plan_.divisor > 1 && !plan_.wide) {
    const int64_t largest = std::min<int64_t>(255 * positive_, 256 * int64_t{plan_.divisor} - 1);
    plan_.highest = static_cast<uint16_t>(largest);
    plan_.finish = rows::kFinishReciprocal;
    if (FindReciprocal(plan_.divisor, largest, plan_)) return;
  }
  const int64_t sum = 255 * std::max(positive_, negative_);
  const int64_t divisor = std::abs(int64_t{plan_.divisor});
  bool exact = sum < kExactFloats && divisor < kExactFloats &&
               std::abs(int64_t{plan_.bias}) < int64_t{1} << 30;
  if (exact && !whole) {
    const int64_t quotient = sum / std::max<int64_t>(divisor, 1);
    exact = (quotient + 255) * std::abs(int64_t{plan_.strength}) < kExactFloats;
  }
  plan_.finish = exact ? rows::kFinishFloat : rows::kFinishExact;
}

// A column times a row, if the grid is one.
bool Convolver::FindProduct(const int32_t (&grid)[kMaxBox][kMaxBox], int width, int height,
                            Product& product) const {
  product = {};
  product.cost = 0;
  for (int y = 0; y < height; ++y) {
    int32_t divisor = 0;
    int lead = -1;
    for (int x = 0; x < width; ++x) {
      divisor = std::gcd(divisor, grid[y][x]);
      if (lead < 0 && grid[y][x] != 0) lead = x;
    }
    if (divisor == 0) continue;
    if (product.cost == 0) {
      for (int x = 0; x < width; ++x) {
        product.across[x] = grid[y][x] / divisor;
        product.cost += product.across[x] != 0;
      }
    }
    if (product.across[lead] == 0 || grid[y][lead] % product.across[lead] != 0) return false;
    product.down[y] = grid[y][lead] / product.across[lead];
    for (int x = 0; x < width; ++x) {
      if (product.down[y] * product.across[x] != grid[y][x]) return false;
    }
    ++product.cost;
  }
  return true;
}

// The most frequent weight everywhere; the corrections count as its cost.
Convolver::Product Convolver::FrequentWeight(const int32_t (&grid)[kMaxBox][kMaxBox], int width,
                                             int height) const {
  Product product = {};
  int most = 0;
  int32_t frequent = 0;
  for (size_t i = 0; i < count_; ++i) {
    int equal = 0;
    for (size_t k = 0; k < count_; ++k) equal += taps_[k].weight == taps_[i].weight;
    if (equal > most) most = equal, frequent = taps_[i].weight;
  }
  product.cost = width + height;
  for (int x = 0; x < width; ++x) product.across[x] = 1;
  for (int y = 0; y < height; ++y) product.down[y] = frequent;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) product.cost += grid[y][x] != frequent;
  }
  return product;
}

void Convolver::Factor() {
  if (count_ == 0) return;
  const auto [left, right] = std::minmax_element(
      taps_.get(), taps_.get() + count_, [](const Tap& a, const Tap& b) { return a.dx < b.dx; });
  const int32_t x0 = left->dx, y0 = taps_[0].dy;
  const int64_t width = int64_t{right->dx} - x0 + 1,
                height = int64_t{taps_[count_ - 1].dy} - y0 + 1;
  if (width > kMaxBox || height > kMaxBox) return;
  int32_t grid[kMaxBox][kMaxBox] = {};
  for (size_t i = 0; i < count_; ++i) grid[taps_[i].dy - y0][taps_[i].dx - x0] = taps_[i].weight;

  const int w = static_cast<int>(width), h = static_cast<int>(height);
  Product product;
  if (!FindProduct(grid, w, h, product)) product = FrequentWeight(grid, w, h);
  // Sums of 16 bits are read and written at twice the width: a saving of a few taps is none.
  if (static_cast<size_t>(product.cost) + 2 >= count_) return;

  for (int x = 0; x < w; ++x) {
    if (product.across[x] == 0) continue;
    across_dx_[across_count_] = x0 + x;
    across_[across_count_++] = product.across[x];
  }
  for (int y = 0; y < h; ++y) {
    if (product.down[y] == 0) continue;
    down_dy_[down_count_] = y0 + y;
    down_[down_count_++] = product.down[y];
  }
  count_ = 0;  // the corrections, which are fewer, take the place of the taps
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const int32_t correction = grid[y][x] - product.down[y] * product.across[x];
      if (correction != 0) taps_[count_++] = {x0 + x, y0 + y, correction};
    }
  }
}

// Taps in their order, as many to a group as keep its sums within 16 bits with sign.
void Convolver::Group() {
  constexpr int64_t kMost = INT16_MAX / 255;
  int64_t positive = 0, negative = 0;
  size_t groups = 0;
  for (size_t i = 0; i < count_; ++i) {
    const int64_t weight = taps_[i].weight;
    if (std::abs(weight) > kMost) return;
    positive += std::max<int64_t>(weight, 0);
    negative += std::max<int64_t>(-weight, 0);
    if (positive > kMost || negative > kMost) {
      if (groups + 1 == kMaxGroups) return;
      group_ends_[groups++] = i;
      positive = std::max<int64_t>(weight, 0);
      negative = std::max<int64_t>(-weight, 0);
    }
  }
  group_ends_[groups++] = count_;
  plan_.group_count = groups;
}

void Convolver::Begin(const WindowLayout& layout) {
  layout_ = layout;
  for (size_t i = 0; i < rows::kConvolutionBlock; ++i) {
    // Three colors come round every three bytes; a single channel has one color.
    const uint8_t color = color_[layout.step == 3 ? i % 3 : 0];
    offset_[i] = static_cast<int16_t>(plan_.finish == rows::kFinishClamp ? plan_.bias + color : 0);
  }
}

void Convolver::Prepare(uint8_t* row) {
  if (across_count_ == 0 || layout_.count == 0) return;
  const uint8_t* from[kMaxBox];
  for (size_t k = 0; k < across_count_; ++k) {
    from[k] = row + layout_.first + across_dx_[k] * layout_.step;
  }
  auto* sums = reinterpret_cast<uint16_t*>(row + layout_.pitch) + layout_.first;
  rows::Active().weigh(from, across_, across_count_, layout_.count, sums);
}

void Convolver::Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
  for (size_t i = 0; i < count_; ++i) {
    rows_[i] = rows[reach_.before + taps_[i].dy] + first + taps_[i].dx * layout_.step;
  }
  const uint16_t* sums[kMaxBox];
  for (size_t k = 0; k < down_count_; ++k) {
    const uint8_t* row = rows[reach_.before + down_dy_[k]] + layout_.pitch;
    sums[k] = reinterpret_cast<const uint16_t*>(row) + first;
  }
  rows::Convolution plan = plan_;
  plan.from = rows_.get();
  plan.weights = weights_.get();
  plan.count = count_;
  plan.sums = sums;
  plan.sum_weights = down_;
  plan.sum_count = down_count_;
  plan.group_ends = group_ends_;
  plan.offset = offset_;
  rows::Active().convolve(plan, count, to);
}

}  // namespace ombrilo
