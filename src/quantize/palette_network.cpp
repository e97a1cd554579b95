#include "quantize/palette_network.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "core/pixels.h"

namespace ombrilo {

namespace {

using simd::Neurons;

constexpr int32_t kSamplingFactor = 10;
constexpr int32_t kCycles = 100;
constexpr int32_t kFirstAlpha = 1024;
constexpr int32_t kAlphaDecrease = 30 + (kSamplingFactor - 1) / 3;
constexpr int32_t kRadiusDecrease = 30;
constexpr int kRadiusShift = 6;
constexpr int32_t kRadiusPower = 256;

constexpr size_t kSamples = 64;  // at a time, while those after them are fetched

// The step between samples is a prime number of pixels: the first that does not divide the
// picture's length, or else the last one.
size_t StepFor(size_t length) {
  for (const size_t prime : {499, 491, 487}) {
    if (length % prime != 0) return 3 * prime;
  }
  return 3 * 503;
}

// Gives one sample after the other. Row padding counts as color bytes, so that samples can straddle
// row ends, and channels change places with each round if the length is no multiple of 3.
class Sampler {
 public:
  Sampler(const uint8_t* picture, size_t length)
      : picture_(picture), length_(length), step_(StepFor(length)) {}

  void Next(uint8_t* bgr) {
    const size_t later = position_ + kSamples * step_;
    if (later < length_) __builtin_prefetch(picture_ + later);
    for (size_t c = 0; c < 3; ++c) {  // what lies past the picture counts as 0
      bgr[c] = position_ + c < length_ ? picture_[position_ + c] : uint8_t{0};
    }
    position_ += step_;
    while (position_ >= length_) position_ -= length_;
  }

 private:
  const uint8_t* picture_;
  size_t length_;
  size_t step_;
  size_t position_ = 0;  // below the length
};

// Sets the rates of the winner and its neighbours on both sides, which get fewer with time. A
// winner's own share alpha / 1024 is the same fraction.
void SetRates(int32_t alpha, int32_t radius, Neurons& neurons) {
  const int32_t reach = radius >> kRadiusShift;
  const auto set = [&](int32_t distance, int32_t rate) {
    neurons.upper_rate[Neurons::kMargin + distance] = static_cast<uint16_t>(rate >> 6);
    neurons.lower_rate[Neurons::kMargin + distance] = static_cast<uint16_t>(rate & 63);
  };
  set(0, alpha * kRadiusPower);
  const int32_t end = std::max(reach, static_cast<int32_t>(neurons.reach) + 1);
  for (int32_t i = 1; i < end; ++i) {
    const int32_t rate =
        i < reach ? alpha * ((reach * reach - i * i) * kRadiusPower / (reach * reach)) : 0;
    set(-i, rate);
    set(i, rate);
  }
  neurons.reach = static_cast<size_t>(std::max(reach - 1, 0));
}

}  // namespace

PaletteNetwork::PaletteNetwork(int bits, uint64_t pixels)
    : colors_(1u << bits), memory_(sizeof(State)), sorted_(pixels) {
  if (memory_) std::memset(state_, 0, sizeof *state_);
}

void PaletteNetwork::Learn(const DibView& image) {
  Neurons& neurons = state_[0].neurons;
  neurons.count = colors_;
  for (uint32_t i = 0; i < colors_; ++i) {
    for (auto& channel : neurons.channel) {
      channel[i] = static_cast<uint16_t>((i << 12) / colors_);
    }
    neurons.wins[i] = static_cast<uint16_t>(65536 / colors_ - 1);
  }
  LearnCycles(image.rows(), image.stride() * static_cast<size_t>(image.pixel_rows()));
  TakeColors();
  BuildIndex();
}

void PaletteNetwork::LearnCycles(const uint8_t* picture, size_t length) {
  uint8_t run[3 * kSamples];
  Neurons& neurons = state_[0].neurons;
  const auto samples = static_cast<int32_t>(length / (3 * kSamplingFactor));
  const int32_t cycle = std::max(1, samples / kCycles);
  int32_t alpha = kFirstAlpha;
  int32_t radius = static_cast<int32_t>(colors_ >> 3) << kRadiusShift;
  Sampler sampler(picture, length);
  for (int32_t done = 0; done < samples; done += cycle) {
    SetRates(alpha, radius, neurons);
    const int32_t end = std::min(cycle, samples - done);
    for (int32_t first = 0; first < end; first += int32_t{kSamples}) {
      const int32_t count = std::min(int32_t{kSamples}, end - first);
      for (int32_t i = 0; i < count; ++i) sampler.Next(run + 3 * i);
      simd::Active().learn(run, static_cast<size_t>(count), neurons);
    }
    alpha -= alpha / kAlphaDecrease;
    radius -= radius / kRadiusDecrease;
  }
}

void PaletteNetwork::TakeColors() {
  State& s = state_[0];
  for (uint32_t i = 0; i < colors_; ++i) {
    for (int c = 0; c < 3; ++c) {
      const int32_t value = (s.neurons.channel[c][i] + 8) >> 4;
      s.bgr[i][c] = static_cast<uint8_t>(std::min(value, 255));
    }
    sorted_.SetEntry(i, s.bgr[i]);
  }
}

uint8_t* PaletteNetwork::WriteTable(uint8_t* table, size_t step) const {
  for (uint32_t i = 0; i < colors_; ++i, table += step) std::memcpy(table, state_[0].bgr[i], 3);
  return table;
}

// The selection sort is not stable, and the order of equal greens decides ties later.
void PaletteNetwork::BuildIndex() {
  State& s = state_[0];
  const auto count = static_cast<int32_t>(colors_);
  uint32_t* const sorted = sorted_.lists().pool;
  uint8_t* const start = sorted_.lists().start;
  uint8_t greens[256];
  for (int32_t i = 0; i < count; ++i) greens[i] = static_cast<uint8_t>(sorted[i] >> 8);
  int32_t previous = 0, first = 0, green = 0;
  for (int32_t i = 0; i < count; ++i) {
    // The first of the least greens that are left; these never get less.
    void* found;
    while ((found = std::memchr(greens + i, green, static_cast<size_t>(count - i))) == nullptr) {
      ++green;
    }
    auto* const least = static_cast<uint8_t*>(found);
    std::swap(sorted[i], sorted[least - greens]);
    std::swap(greens[i], *least);
    if (green != previous) {
      start[previous] = static_cast<uint8_t>((first + i) >> 1);
      for (int32_t g = previous + 1; g < green; ++g) start[g] = static_cast<uint8_t>(i);
      previous = green;
      first = i;
    }
  }
  start[previous] = static_cast<uint8_t>((first + count - 1) >> 1);
  for (int32_t g = previous + 1; g < 256; ++g) start[g] = static_cast<uint8_t>(count - 1);
  // The sort moved indices along with colors; numbers take their place.
  for (uint32_t i = 0; i < colors_; ++i) {
    s.index_of[i] = static_cast<uint8_t>(sorted[i] >> 24);
    sorted[i] = (sorted[i] & 0xFFFFFF) | i << 24;
  }
  sorted_.Begin(colors_);
}

void PaletteNetwork::Diffuse(const uint32_t* seen, const uint8_t* rows, size_t stride, size_t width,
                             size_t count, uint32_t* before, uint8_t* indices) {
  State& s = state_[0];
  uint32_t seen_of[256];
  for (uint32_t i = 0; i < colors_; ++i) seen_of[i] = seen[s.index_of[i]];
  simd::Active().diffuse(sorted_.lists(), {seen_of, rows, stride, width, count, before, indices});
  simd::Active().apply_table(indices, count * width, s.index_of);
}

}  // namespace ombrilo
