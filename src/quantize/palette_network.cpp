#include "quantize/palette_network.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace ombrilo {

namespace {

using rows::Neurons;

constexpr int32_t kSamplingFactor = 10;
constexpr int32_t kCycles = 100;
constexpr int32_t kFirstAlpha = 1024;
constexpr int32_t kAlphaDecrease = 30 + (kSamplingFactor - 1) / 3;
constexpr int32_t kRadiusDecrease = 30;
constexpr int kRadiusShift = 6;
constexpr int32_t kRadiusPower = 256;

// Steps of a prime number of pixels through the picture: the first whose prime does not divide the
// picture's length; the last stands for the rest.
size_t StepFor(size_t length) {
  for (const size_t prime : {499, 491, 487}) {
    if (length % prime != 0) return 3 * prime;
  }
  return 3 * 503;
}

// Positions of samples, one after the other. Rows' padding counts as color bytes, so that samples
// lie across row ends, and colors change places in each round whose length is no multiple of 3.
class Sampler {
 public:
  Sampler(const uint8_t* picture, size_t length)
      : picture_(picture), length_(length), step_(StepFor(length)) {}

  void Next(uint8_t* bgr) {
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

// The share of its distance from a sample by which a neuron moves, out of 2^18, for the winner and
// its neighbours on both sides. A winner's own share alpha / 1024 is the same fraction.
void SetRates(int32_t alpha, int32_t radius, Neurons& neurons) {
  const int32_t reach = radius >> kRadiusShift;
  std::memset(neurons.rate, 0, sizeof neurons.rate);
  neurons.rate[Neurons::kMargin] = alpha * kRadiusPower;
  for (int32_t i = 1; i < reach; ++i) {
    const int32_t rate = alpha * ((reach * reach - i * i) * kRadiusPower / (reach * reach));
    neurons.rate[Neurons::kMargin - i] = neurons.rate[Neurons::kMargin + i] = rate;
  }
  neurons.reach = static_cast<size_t>(std::max(reach - 1, 0));
}

}  // namespace

PaletteNetwork::PaletteNetwork(int bits) : colors_(1u << bits), state_(NewZeroedBuffer<State>(1)) {}

void PaletteNetwork::Learn(const DibView& image) {
  Neurons& neurons = state_[0].neurons;
  neurons.count = colors_;
  for (uint32_t i = 0; i < colors_; ++i) {
    for (auto& channel : neurons.channel) {
      channel[Neurons::kMargin + i] = static_cast<int16_t>((i << 12) / colors_);
    }
    neurons.wins[i] = static_cast<uint16_t>(65536 / colors_ - 1);
  }
  LearnCycles(image.rows(), image.stride() * static_cast<size_t>(image.pixel_rows()));
  TakeColors();
  BuildIndex();
}

void PaletteNetwork::LearnCycles(const uint8_t* picture, size_t length) {
  constexpr int32_t kRun = 1024;
  uint8_t run[3 * kRun];
  Neurons& neurons = state_[0].neurons;
  const auto samples = static_cast<int32_t>(length / (3 * kSamplingFactor));
  const int32_t cycle = std::max(1, samples / kCycles);
  int32_t alpha = kFirstAlpha;
  int32_t radius = static_cast<int32_t>(colors_ >> 3) << kRadiusShift;
  Sampler sampler(picture, length);
  for (int32_t done = 0; done < samples; done += cycle) {
    SetRates(alpha, radius, neurons);
    const int32_t end = std::min(cycle, samples - done);
    for (int32_t first = 0; first < end; first += kRun) {
      const int32_t count = std::min(kRun, end - first);
      for (int32_t i = 0; i < count; ++i) sampler.Next(run + 3 * i);
      rows::Active().learn(run, static_cast<size_t>(count), neurons);
    }
    alpha -= alpha / kAlphaDecrease;
    radius -= radius / kRadiusDecrease;
  }
}

void PaletteNetwork::TakeColors() {
  State& s = state_[0];
  for (uint32_t i = 0; i < colors_; ++i) {
    for (int c = 0; c < 3; ++c) {
      const int32_t value = (s.neurons.channel[c][Neurons::kMargin + i] + 8) >> 4;
      s.bgr[i][c] = static_cast<uint8_t>(std::min(value, 255));
    }
    s.sorted[i] = {s.bgr[i][0], s.bgr[i][1], s.bgr[i][2], static_cast<uint8_t>(i)};
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
  int32_t previous = 0, first = 0;
  for (int32_t i = 0; i < count; ++i) {
    int32_t least = i;
    for (int32_t j = i + 1; j < count; ++j) {
      if (s.sorted[j].green < s.sorted[least].green) least = j;
    }
    std::swap(s.sorted[i], s.sorted[least]);
    const int32_t green = s.sorted[i].green;
    if (green != previous) {
      s.start[previous] = (first + i) >> 1;
      for (int32_t g = previous + 1; g < green; ++g) s.start[g] = i;
      previous = green;
      first = i;
    }
  }
  s.start[previous] = (first + count - 1) >> 1;
  for (int32_t g = previous + 1; g < 256; ++g) s.start[g] = count - 1;
  // Color 0 is the one color that a zeroed memo slot would answer for: slot 0.
  s.memo[0] = Search(0, 0, 0);
}

uint8_t PaletteNetwork::FindSlowly(uint8_t blue, uint8_t green, uint8_t red) {
  State& s = state_[0];
  Cell& cell = s.cells[red / kCellWidth][green / kCellWidth][blue / kCellWidth];
  if (cell.asked != kCrowded && ++cell.asked > kPatience) {
    Gather(cell, {blue & -kCellWidth, green & -kCellWidth, red & -kCellWidth});
    if (cell.count != 0) return Find(blue, green, red);
  }
  const uint32_t color = static_cast<uint32_t>(blue | green << 8 | red << 16);
  uint32_t& memo = s.memo[(color * 0x9E3779B1u) >> (32 - kMemoBits)];
  if (memo >> 8 != color) memo = color << 8 | Search(blue, green, red);
  return static_cast<uint8_t>(memo);
}

// An entry that is farther than another one from every color of the cell cannot be an answer. The
// other one is that nearest to the cell's middle. In each channel, the difference between both
// distances is the greatest at one of the cell's ends.
void PaletteNetwork::Gather(Cell& cell, const int32_t (&low)[3]) const {
  const State& s = state_[0];
  const auto channel = [](const Entry& e, int c) {
    return int32_t{c == 0 ? e.blue : c == 1 ? e.green : e.red};
  };
  const Entry* other = nullptr;
  int32_t least = INT32_MAX;
  for (uint32_t i = 0; i < colors_; ++i) {
    int32_t distance = 0;
    for (int c = 0; c < 3; ++c) {
      distance += std::abs(2 * channel(s.sorted[i], c) - (2 * low[c] + kCellWidth - 1));
    }
    if (distance < least) {
      least = distance;
      other = &s.sorted[i];
    }
  }
  int count = 0;
  for (uint32_t i = 0; i < colors_; ++i) {
    int32_t lead = 0;
    for (int c = 0; c < 3; ++c) {
      const int32_t high = low[c] + kCellWidth - 1;
      const int32_t mine = channel(s.sorted[i], c), others = channel(*other, c);
      lead += std::max(std::abs(others - low[c]) - std::abs(mine - low[c]),
                       std::abs(others - high) - std::abs(mine - high));
    }
    if (lead < 0) continue;
    if (count == kMost) {
      cell.asked = kCrowded;
      return;
    }
    cell.position[count++] = static_cast<uint8_t>(i);
  }
  std::fill(cell.position + count, cell.position + kMost, cell.position[0]);
  cell.count = static_cast<uint8_t>(count);
}

uint8_t PaletteNetwork::Search(int32_t blue, int32_t green, int32_t red) const {
  const State& s = state_[0];
  const auto count = static_cast<int32_t>(colors_);
  int32_t best = 1000, answer = 0;
  const auto compare = [&](const Entry& entry) {
    const int32_t distance =
        std::abs(entry.green - green) + std::abs(entry.blue - blue) + std::abs(entry.red - red);
    if (distance < best) {
      best = distance;
      answer = entry.index;
    }
  };
  int32_t up = s.start[green], down = up - 1;
  while (up < count || down >= 0) {
    if (up < count) {
      const Entry& entry = s.sorted[up++];
      if (entry.green - green >= best) {
        up = count;
      } else {
        compare(entry);
      }
    }
    if (down >= 0) {
      const Entry& entry = s.sorted[down--];
      if (green - entry.green >= best) {
        down = -1;
      } else {
        compare(entry);
      }
    }
  }
  return static_cast<uint8_t>(answer);
}

}  // namespace ombrilo
