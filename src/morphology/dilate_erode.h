// The 3x3 dilation and erosion that omb_dilate and omb_erode are, and that the composites repeat.
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
  // What the last operation leaves of its result.
  enum Last {
    kResult,
    kSubtracted,  // pixels of the image - result, 0 at least
    kAdded,       // result + pixels that the last operation started from, 255 at most
  };

  // For runs of up to `most` operations.
  DilateErode(const Dib& dib, int most);
  explicit operator bool() const;

  // One operation after the other. Pixels of other images than PixelsAreValues() ones are indices,
  // which do not add up: for these there is kResult alone.
  void Run(std::initializer_list<Op> ops, Last last = kResult);
  bool PixelsAreValues() { return frame_ && !colors_ && frame_->PixelsAreValues(); }

 private:
  Dib dib_;
  std::optional<Neighbourhood> frame_;
  std::optional<IndexedColors> colors_;  // 1-bit images, whose frame walks bytes
};

}  // namespace ombrilo
