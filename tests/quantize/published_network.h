// The palette network as it was published, step by step and in its own terms, for comparison.
#pragma once

#include <cstdint>
#include <vector>

namespace ombrilo::test {

class PublishedNetwork {
 public:
  PublishedNetwork(const uint8_t* picture, int length, int bits);

  // Blue, green, red of each entry, before the index was built.
  const std::vector<std::vector<int>>& colors() const { return colors_; }
  int Search(int b, int g, int r) const;

 private:
  int Contest(int b, int g, int r);
  void AlterSingle(int alpha, int i, const int (&bgr)[3]);
  void AlterNeighbours(int rad, int i, const int (&bgr)[3]);
  void Learn(const uint8_t* picture, int length);
  void BuildIndex();

  int netsize_;
  std::vector<std::vector<int>> network_;  // b, g, r and the position
  std::vector<int> bias_, freq_, radpower_, netindex_;
  std::vector<std::vector<int>> colors_;
};

}  // namespace ombrilo::test
