#include "quantize/published_network.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

namespace ombrilo::test {

PublishedNetwork::PublishedNetwork(const uint8_t* picture, int length, int bits)
    : netsize_(1 << bits), radpower_(32), netindex_(256) {
  for (int i = 0; i < netsize_; ++i) {
    const int level = (i << 12) / netsize_;
    network_.push_back({level, level, level, 0});
    bias_.push_back(0);
    freq_.push_back(65536 / netsize_);
  }
  Learn(picture, length);
  for (int i = 0; i < netsize_; ++i) {
    for (int c = 0; c < 3; ++c) network_[i][c] = std::min((network_[i][c] + 8) >> 4, 255);
    network_[i][3] = i;
  }
  colors_ = network_;
  BuildIndex();
}

int PublishedNetwork::Contest(int b, int g, int r) {
  int bestd = INT_MAX, bestbiasd = INT_MAX, bestpos = -1, bestbiaspos = -1;
  for (int i = 0; i < netsize_; ++i) {
    const std::vector<int>& n = network_[i];
    const int dist = std::abs(n[0] - b) + std::abs(n[1] - g) + std::abs(n[2] - r);
    if (dist < bestd) {
      bestd = dist;
      bestpos = i;
    }
    const int biasdist = dist - (bias_[i] >> (16 - 4));
    if (biasdist < bestbiasd) {
      bestbiasd = biasdist;
      bestbiaspos = i;
    }
    const int betafreq = freq_[i] >> 10;
    freq_[i] -= betafreq;
    bias_[i] += betafreq << 10;
  }
  freq_[bestpos] += 65536 >> 10;
  bias_[bestpos] -= 65536;
  return bestbiaspos;
}

void PublishedNetwork::AlterSingle(int alpha, int i, const int (&bgr)[3]) {
  for (int c = 0; c < 3; ++c) network_[i][c] -= alpha * (network_[i][c] - bgr[c]) / 1024;
}

void PublishedNetwork::AlterNeighbours(int rad, int i, const int (&bgr)[3]) {
  const int lo = std::max(i - rad, -1), hi = std::min(i + rad, netsize_);
  int j = i + 1, k = i - 1, q = 0;
  while (j < hi || k > lo) {
    const int a = radpower_[++q];
    if (j < hi) {
      for (int c = 0; c < 3; ++c) network_[j][c] -= a * (network_[j][c] - bgr[c]) / (1 << 18);
      ++j;
    }
    if (k > lo) {
      for (int c = 0; c < 3; ++c) network_[k][c] -= a * (network_[k][c] - bgr[c]) / (1 << 18);
      --k;
    }
  }
}

void PublishedNetwork::Learn(const uint8_t* picture, int length) {
  const int samplepixels = length / (3 * 10);
  const int delta = std::max(1, samplepixels / 100);
  int alpha = 1024, radius = (netsize_ >> 3) * 64, rad = 0;
  const auto set_rates = [&] {
    rad = radius >> 6;
    if (rad <= 1) rad = 0;
    for (int i = 0; i < rad; ++i) {
      radpower_[i] = alpha * (((rad * rad - i * i) * 256) / (rad * rad));
    }
  };
  set_rates();
  const int step = 3 * (length % 499 != 0   ? 499
                        : length % 491 != 0 ? 491
                        : length % 487      ? 487
                                            : 503);
  const auto byte = [&](int at) { return at < length ? picture[at] : 0; };
  int p = 0;
  for (int i = 0; i < samplepixels;) {
    const int bgr[3] = {byte(p) << 4, byte(p + 1) << 4, byte(p + 2) << 4};
    const int j = Contest(bgr[0], bgr[1], bgr[2]);
    AlterSingle(alpha, j, bgr);
    if (rad != 0) AlterNeighbours(rad, j, bgr);
    p += step;
    while (p >= length) p -= length;
    if (++i % delta == 0) {
      alpha -= alpha / 33;
      radius -= radius / 30;
      set_rates();
    }
  }
}

void PublishedNetwork::BuildIndex() {
  int previouscol = 0, startpos = 0;
  for (int i = 0; i < netsize_; ++i) {
    int smallpos = i, smallval = network_[i][1];
    for (int j = i + 1; j < netsize_; ++j) {
      if (network_[j][1] < smallval) {
        smallpos = j;
        smallval = network_[j][1];
      }
    }
    if (i != smallpos) std::swap(network_[i], network_[smallpos]);
    if (smallval != previouscol) {
      netindex_[previouscol] = (startpos + i) >> 1;
      for (int j = previouscol + 1; j < smallval; ++j) netindex_[j] = i;
      previouscol = smallval;
      startpos = i;
    }
  }
  netindex_[previouscol] = (startpos + netsize_ - 1) >> 1;
  for (int j = previouscol + 1; j < 256; ++j) netindex_[j] = netsize_ - 1;
}

int PublishedNetwork::Search(int b, int g, int r) const {
  int bestd = 1000, best = -1;
  int i = netindex_[g], j = i - 1;
  while (i < netsize_ || j >= 0) {
    if (i < netsize_) {
      const std::vector<int>& p = network_[i];
      int dist = p[1] - g;
      if (dist >= bestd) {
        i = netsize_;
      } else {
        ++i;
        dist = std::abs(dist) + std::abs(p[0] - b);
        if (dist < bestd) {
          dist += std::abs(p[2] - r);
          if (dist < bestd) {
            bestd = dist;
            best = p[3];
          }
        }
      }
    }
    if (j >= 0) {
      const std::vector<int>& p = network_[j];
      int dist = g - p[1];
      if (dist >= bestd) {
        j = -1;
      } else {
        --j;
        dist = std::abs(dist) + std::abs(p[0] - b);
        if (dist < bestd) {
          dist += std::abs(p[2] - r);
          if (dist < bestd) {
            bestd = dist;
            best = p[3];
          }
        }
      }
    }
  }
  return best;
}

}  // namespace ombrilo::test
