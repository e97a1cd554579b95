// The 3x3 dilation and erosion of omb_dilate, omb_erode and the operations composed of them.
#pragma once

#include <initializer_list>
#include <optional>

#include "core/neighbourhood.h"

namespace ombrilo {

// Dilations and erosions of one image, with all the memory they need taken beforehand. Images that
// are neither indexed nor of 24 bits stay as they are.
class DilateErode {
 public:
  enum Op { kErode, kDilate };
  // What the last operation stores.
  enum Last {
    kResult,
    kSubtracted,  // pixels of the image - result, at least 0
    kAdded,       // result + pixels that the last operation started from, at most 255
  };

  // For runs of up to `most` operations.
  DilateErode(const Dib& dib, int most);
  explicit operator bool() const;

  // Runs one operation after the other. Unless PixelsAreValues(), pixels are indices, which cannot
  // be added: `last` is kResult then.
  void Run(std::initializer_list<Op> ops, Last last = kResult);
  bool PixelsAreValues() { return frame_ && !colors_ && frame_->PixelsAreValues(); }

 private:
  Dib dib_;
  std::optional<Neighbourhood> frame_;
  std::optional<IndexedColors> colors_;  // 1-bit images, whose frame walks bytes
};

}  // namespace ombrilo
