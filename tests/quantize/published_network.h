// The palette network as it was published, step by step and in its own terms, for comparison.
#pragma once

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <utility>
#include <vector>

namespace ombrilo::test {

class PublishedNetwork {
 public:
  using Neuron = std::array<int, 4>;  // blue, green, red and, in the end, the position

  PublishedNetwork(const uint8_t* picture, int length, int bits) : netsize(1 << bits) {
    for (int i = 0; i < netsize; ++i) {
      const int level = (i << 12) / netsize;
      network.push_back({level, level, level, 0});
    }
    freq.assign(network.size(), 65536 / netsize);
    bias.assign(network.size(), 0);
    Learn(picture, length);
    for (int i = 0; i < netsize; ++i) {
      for (int c = 0; c < 3; ++c) network[i][c] = std::min((network[i][c] + 8) >> 4, 255);
      network[i][3] = i;
    }
    colors = network;
    BuildIndex();
  }

  // From its start, the search goes up and down by turns. As published, a side ends where green
  // alone is too far; that changes no answer.
  int Search(int b, int g, int r) const {
    int bestd = 1000, best = -1;
    for (int turn = 0; turn < 2 * netsize; ++turn) {
      const int i = netindex[g] + (turn % 2 == 0 ? turn / 2 : -1 - turn / 2);
      if (i < 0 || i >= netsize) continue;
      const Neuron& p = network[i];
      const int dist = std::abs(p[1] - g) + std::abs(p[0] - b) + std::abs(p[2] - r);
      if (dist < bestd) {
        bestd = dist;
        best = p[3];
      }
    }
    return best;
  }

  std::vector<Neuron> colors;  // before the index was built

 private:
  int Contest(const int (&bgr)[3]) {
    int bestd = INT_MAX, bestbiasd = INT_MAX, bestpos = -1, bestbiaspos = -1;
    for (int i = 0; i < netsize; ++i) {
      int dist = 0;
      for (int c = 0; c < 3; ++c) dist += std::abs(network[i][c] - bgr[c]);
      if (dist < bestd) {
        bestd = dist;
        bestpos = i;
      }
      const int biasdist = dist - (bias[i] >> (16 - 4));
      if (biasdist < bestbiasd) {
        bestbiasd = biasdist;
        bestbiaspos = i;
      }
      const int betafreq = freq[i] >> 10;
      freq[i] -= betafreq;
      bias[i] += betafreq << 10;
    }
    freq[bestpos] += 65536 >> 10;
    bias[bestpos] -= 65536;
    return bestbiaspos;
  }

  void Learn(const uint8_t* picture, int length) {
    const int samplepixels = length / (3 * 10), delta = std::max(1, samplepixels / 100);
    int step = 499;
    if (length % 499 == 0) step = length % 491 != 0 ? 491 : length % 487 != 0 ? 487 : 503;
    int alpha = 1024, radius = (netsize >> 3) * 64;
    for (int i = 0, at = 0; i < samplepixels;) {
      int bgr[3];
      for (int c = 0; c < 3; ++c) bgr[c] = at + c < length ? picture[at + c] << 4 : 0;
      const int winner = Contest(bgr), rad = radius >> 6 <= 1 ? 0 : radius >> 6;
      const auto move = [&](int j, int rate, int unit) {
        if (j < 0 || j >= netsize) return;
        for (int c = 0; c < 3; ++c) network[j][c] -= rate * (network[j][c] - bgr[c]) / unit;
      };
      move(winner, alpha, 1 << 10);
      for (int q = 1; q < rad; ++q) {
        const int radpower = alpha * ((rad * rad - q * q) * 256 / (rad * rad));
        move(winner + q, radpower, 1 << 18);
        move(winner - q, radpower, 1 << 18);
      }
      for (at += 3 * step; at >= length;) at -= length;
      if (++i % delta == 0) {
        alpha -= alpha / 33;
        radius -= radius / 30;
      }
    }
  }

  void BuildIndex() {
    int previouscol = 0, startpos = 0;
    for (int i = 0; i < netsize; ++i) {
      // The first of the least greens, in a sort that is not stable.
      std::swap(network[i],
                *std::min_element(network.begin() + i, network.end(),
                                  [](const Neuron& a, const Neuron& b) { return a[1] < b[1]; }));
      const int smallval = network[i][1];
      if (smallval == previouscol) continue;
      netindex[previouscol] = (startpos + i) >> 1;
      for (int j = previouscol + 1; j < smallval; ++j) netindex[j] = i;
      previouscol = smallval;
      startpos = i;
    }
    netindex[previouscol] = (startpos + netsize - 1) >> 1;
    for (int j = previouscol + 1; j < 256; ++j) netindex[j] = netsize - 1;
  }

  int netsize;
  std::vector<Neuron> network;
  std::vector<int> freq, bias;
  int netindex[256];
};

}  // namespace ombrilo::test
