// The 3x3 dilation and erosion that omb_dilate and omb_erode are, and that the composites repeat.
#pragma once

#include <optional>

#include "core/neighbourhood.h"

namespace ombrilo {

// Dilations and erosions of one image, with all the memory they need taken beforehand. Images that
// are neither indexed nor of 24 bits stay as they are.
class DilateErode {
 public:
  explicit DilateErode(const Dib& dib);
  explicit operator bool() const;

  void Dilate() { Run(true); }
  void Erode() { Run(false); }

 private:
  void Run(bool dilate);

  Dib dib_;
  std::optional<Neighbourhood> frame_;
  std::optional<IndexedColors> colors_;  // 1-bit images, whose frame walks bytes
};

}  // namespace ombrilo
