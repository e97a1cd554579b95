#include "filters/convolver.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <numeric>
#include <utility>

namespace ombrilo {

namespace {

constexpr int64_t kExactFloats = int64_t{1} << 22;  // limit of numerators

int32_t WrappedSum(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

// n * multiplier >> 16 >> shift equals n / divisor for every n up to `largest`. The multiplier is
// 2^(16 + shift) / divisor rounded up; with e = multiplier * divisor - 2^(16 + shift), the error of
// the product is n * e / divisor, which stays below a step of 1 / divisor while n * e < 2^(16 +
// shift).
bool FindReciprocal(int64_t divisor, int64_t largest, simd::Convolution& plan) {
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

// The cost of a tap in rows of bytes, of one in rows of sums, and of having rows of sums at all.
constexpr int kByteCost = 3, kSumCost = 2, kProductCost = 12;

// Sorts the taps by weight, and describes them as runs.
size_t MakeRuns(Tap* taps, size_t count, simd::WeightRun* runs) {
  const auto size = [](const Tap& tap) {
    const auto weight = static_cast<uint32_t>(tap.weight);
    return tap.weight < 0 ? 0 - weight : weight;
  };
  std::sort(taps, taps + count, [&](const Tap& a, const Tap& b) {
    return std::pair(size(a), -(a.weight >= 0)) < std::pair(size(b), -(b.weight >= 0));
  });
  simd::WeightRun* run = runs;
  for (size_t i = 0; i < count; ++i) {
    const auto weight = static_cast<int32_t>(size(taps[i]));
    const bool negative = taps[i].weight < 0;
    if (i == 0 || run[-1].weight != weight ||
        (negative ? run[-1].minus : run[-1].plus) == simd::WeightRun::kMost) {
      *run++ = {weight, 0, 0};
    }
    ++(negative ? run[-1].minus : run[-1].plus);
  }
  return static_cast<size_t>(run - runs);
}

}  // namespace

Convolver::Convolver(Buffer<Tap> taps, size_t count, const Finishing& finishing)
    : taps_(std::move(taps)),
      count_(count),
      runs_(NewScratchBuffer<simd::WeightRun>(count)),
      rows_(NewScratchBuffer<const uint8_t*>(count)) {
  if (!*this) return;
  std::copy_n(finishing.color, 3, color_);
  Merge();
  ChooseFinish(finishing);
  if (!plan_.wide) Factor();
  run_count_ = MakeRuns(taps_.get(), count_, runs_.get());
  across_.run_count = MakeRuns(across_.taps, across_.count, across_.runs);
  down_.run_count = MakeRuns(down_.taps, down_.count, down_.runs);
  running_ = down_.run_count == 1 && static_cast<int64_t>(down_.count) == Rows() &&
             (down_.runs[0].plus == 0 || down_.runs[0].minus == 0);
  if (running_) {
    // One tap, of the totals.
    down_.runs[0].plus = down_.runs[0].plus != 0;
    down_.runs[0].minus = down_.runs[0].minus != 0;
  }
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
  // Fits 16 bits with sign, an offset of up to 255 + 255 included.
  const bool small =
      positive_ <= 126 && negative_ <= 126 && std::abs(int64_t{finishing.bias}) < 256;
  if (whole && small && (plan_.divisor == 0 || plan_.divisor == 1)) {
    plan_.finish = simd::kFinishClamp;
    return;
  }
  plan_.lowest = plan_.wide ? 0 : static_cast<int32_t>(255 * negative_);
  if (whole && finishing.bias == 0 && plan_.divisor > 1 && !plan_.wide) {
    const int64_t largest = std::min<int64_t>(255 * positive_, 256 * int64_t{plan_.divisor} - 1);
    plan_.highest = static_cast<uint16_t>(largest);
    plan_.finish = simd::kFinishReciprocal;
    if (FindReciprocal(plan_.divisor, largest, plan_)) return;
  }
  const int64_t sum = 255 * std::max(positive_, negative_);
  const int64_t divisor = std::abs(int64_t{plan_.divisor});
  if (!plan_.wide && plan_.divisor > 1 && sum <= INT16_MAX &&
      (sum / divisor + 255) * std::abs(int64_t{plan_.strength}) <= INT16_MAX &&
      std::abs(int64_t{plan_.bias}) < 1 << 14 && FindReciprocal(divisor, sum, plan_)) {
    plan_.finish = simd::kFinishI16;
    return;
  }
  bool exact = sum < kExactFloats && divisor < kExactFloats &&
               std::abs(int64_t{plan_.bias}) < int64_t{1} << 30;
  if (exact && !whole) {
    const int64_t quotient = sum / std::max<int64_t>(divisor, 1);
    exact = (quotient + 255) * std::abs(int64_t{plan_.strength}) < kExactFloats;
  }
  plan_.finish = exact ? simd::kFinishFloat : simd::kFinishExact;
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
        product.cost += product.across[x] != 0 ? kByteCost : 0;
      }
    }
    if (product.across[lead] == 0 || grid[y][lead] % product.across[lead] != 0) return false;
    product.down[y] = grid[y][lead] / product.across[lead];
    for (int x = 0; x < width; ++x) {
      if (product.down[y] * product.across[x] != grid[y][x]) return false;
    }
    product.cost += kSumCost;
  }
  return true;
}

// The most frequent weight everywhere; its cost includes the corrections.
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
  product.cost = width * kByteCost + height * kSumCost;
  for (int x = 0; x < width; ++x) product.across[x] = 1;
  for (int y = 0; y < height; ++y) product.down[y] = frequent;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) product.cost += grid[y][x] != frequent ? kByteCost : 0;
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
  if (product.cost + kProductCost >= kByteCost * static_cast<int>(count_)) return;

  for (int x = 0; x < w; ++x) {
    if (product.across[x] != 0) across_.taps[across_.count++] = {x0 + x, 0, product.across[x]};
  }
  for (int y = 0; y < h; ++y) {
    if (product.down[y] != 0) down_.taps[down_.count++] = {0, y0 + y, product.down[y]};
  }
  count_ = 0;  // the corrections, which are fewer, take the place of the taps
  for (int y = 0; y < h; ++y) {
    for (int x = 0; x < w; ++x) {
      const int32_t correction = grid[y][x] - product.down[y] * product.across[x];
      if (correction != 0) taps_[count_++] = {x0 + x, y0 + y, correction};
    }
  }
}

void Convolver::Begin(const WindowLayout& layout) {
  layout_ = layout;
  plan_.bytes = {rows_.get(), runs_.get(), run_count_};
  plan_.sums = {sums_, down_.runs, down_.run_count};
  plan_.offset = offset_;
  for (size_t i = 0; i < simd::kConvolutionOffsets; ++i) {
    // Three colors come round every three bytes; a single channel has one color.
    const uint8_t color = color_[layout.step == 3 ? 2 * i % 3 : 0];
    offset_[i] = static_cast<int16_t>(plan_.bias + color);
  }
  constexpr size_t kBlock = simd::kConvolutionBlock;
  const size_t sums = (layout.count + kBlock - 1) / kBlock * kBlock * 2;
  assert(across_.count == 0 || sums <= layout.derived_bytes);
  if (!running_) return;
  assert(sums <= layout.scratch_bytes);
  totals_ = layout.scratch;
  std::memset(totals_, 0, sums);
  prepared_ = 0;
}

void Convolver::Prepare(uint8_t* row) {
  if (across_.count == 0 || layout_.count == 0) return;
  const uint8_t* from[kMaxBox];
  for (size_t k = 0; k < across_.count; ++k) {
    from[k] = row + layout_.first + across_.taps[k].dx * layout_.step;
  }
  const simd::Taps taps = {from, across_.runs, across_.run_count};
  uint8_t* const sums = row + layout_.pitch;
  if (running_) {
    // A row takes the place of the one that leaves the window.
    const bool leaves = prepared_ == Rows();
    if (!leaves) ++prepared_;
    simd::Active().weigh_running(taps, layout_.count, leaves, sums, totals_);
  } else {
    simd::Active().weigh(taps, layout_.count, sums);
  }
}

void Convolver::Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
  for (size_t i = 0; i < count_; ++i) {
    rows_[i] = rows[reach_.before + taps_[i].dy] + first + taps_[i].dx * layout_.step;
  }
  const size_t at = 2 * (first - layout_.first);  // sums have 16 bits
  if (running_) sums_[0] = totals_ + at;
  for (size_t k = 0; !running_ && k < down_.count; ++k) {
    sums_[k] = rows[reach_.before + down_.taps[k].dy] + layout_.pitch + at;
  }
  plan_.own = rows[reach_.before] + first;
  simd::Active().convolve(plan_, count, to);
}

}  // namespace ombrilo
