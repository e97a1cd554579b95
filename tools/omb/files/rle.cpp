// A stream of byte pairs. A first byte above 0 is the length of a run, whose colors the second byte
// holds: one index (RLE8) or two that alternate (RLE4). A first byte of 0 is an escape:
//
//   0, 0        end of the row
//   0, 1        end of the image
//   0, 2, x, y  move right by x and up by y
//   0, n        n pixels as they are, filled up to a multiple of 2 bytes
#include "files/rle.h"

#include <algorithm>
#include <string>
#include <vector>

#include "core/pixels.h"

namespace omb {

using namespace ombrilo;

namespace {

class Decoder {
 public:
  Decoder(Bytes compressed, const Dib& dib)
      : in_(compressed), dib_(dib), indices_(static_cast<size_t>(dib.width())) {}

  void Run() {
    for (;;) {
      if (in_.empty() && Complete()) return FinishRow();
      const uint8_t count = Next();
      const uint8_t value = Next();
      if (count > 0) {
        PutRun(count, value);
      } else if (value == 0) {
        MoveTo(0, y_ + 1);
      } else if (value == 1) {
        return FinishRow();
      } else if (value == 2) {
        const uint8_t right = Next();
        MoveTo(x_ + right, y_ + Next());
      } else {
        PutLiterals(value);
      }
    }
  }

 private:
  // The end mark is missing from some files that have all their pixels.
  bool Complete() const {
    return y_ >= dib_.height() || (y_ == dib_.height() - 1 && x_ >= dib_.width());
  }

  uint8_t Next() {
    if (in_.empty()) {
      throw FileError("the file ends in row " + std::to_string(std::min(y_ + 1, dib_.height())) +
                      " of " + std::to_string(dib_.height()));
    }
    const uint8_t byte = in_.front();
    in_ = in_.subspan(1);
    return byte;
  }

  // The two indices of an RLE4 byte in turn, or the one of an RLE8 byte.
  uint8_t IndexIn(uint8_t byte, int i) const {
    if (dib_.bit_count() == 8) return byte;
    return i % 2 == 0 ? byte >> 4 : byte & 15;
  }

  void Put(uint8_t index) {
    if (y_ >= dib_.height()) throw FileError("the compressed pixels exceed the image's height");
    // Writers that fill rows up to whole bytes or words run over the edge.
    if (x_ < dib_.width()) indices_[static_cast<size_t>(x_++)] = index;
  }

  void PutRun(int count, uint8_t value) {
    for (int i = 0; i < count; ++i) Put(IndexIn(value, i));
  }

  void PutLiterals(int count) {
    const int per_byte = 8 / dib_.bit_count();
    const int bytes = (count + per_byte - 1) / per_byte;
    for (int i = 0; i < bytes; ++i) {
      const uint8_t byte = Next();
      for (int k = 0; k < per_byte && i * per_byte + k < count; ++k) Put(IndexIn(byte, k));
    }
    if (bytes % 2 != 0) Next();
  }

  void MoveTo(int32_t x, int32_t y) {
    if (y != y_) FinishRow();
    x_ = std::min(x, dib_.width());
    y_ = std::min(y, dib_.height());
  }

  void FinishRow() {
    if (y_ >= dib_.height()) return;
    PackIndices(indices_.data(), dib_.bit_count(), indices_.size(), dib_.row(y_));
    std::ranges::fill(indices_, uint8_t{0});
  }

  Bytes in_;
  const Dib& dib_;
  std::vector<uint8_t> indices_;  // of row y_
  int32_t x_ = 0;
  int32_t y_ = 0;  // counts from the bottom
};

}  // namespace

void DecodeRuns(Bytes compressed, const Dib& dib) { Decoder(compressed, dib).Run(); }

}  // namespace omb
