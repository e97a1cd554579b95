// KERNAL records for tests.
#pragma once

#include <vector>

#include "ombrilo/ombrilo.h"

namespace ombrilo::test {

struct Entry {
  int32_t dx, dy, weight = 0;
};

// An owned record.
class Kernal {
 public:
  Kernal(int32_t width, int32_t height, int32_t anchor_x, int32_t anchor_y, int32_t bias,
         const std::vector<Entry>& entries)
      : record_(omb_newKERNAL(width, height, anchor_x, anchor_y,
                              static_cast<int32_t>(entries.size()), bias, "test")) {
    for (size_t i = 0; i < entries.size(); ++i) {
      record_->offsets[2 * i] = entries[i].dx;
      record_->offsets[2 * i + 1] = entries[i].dy;
      record_->weights[i] = entries[i].weight;
    }
  }
  Kernal(const Kernal&) = delete;
  ~Kernal() { omb_destroyKERNAL(record_); }

  const KERNAL* get() const { return record_; }

 private:
  KERNAL* record_;
};

}  // namespace ombrilo::test
