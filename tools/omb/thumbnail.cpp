#include "thumbnail.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "files/pixels_out.h"

namespace omb {

Image Thumbnail(const PackedDib* dib, int box_width, int box_height) {
  const ombrilo::DibView view = ViewToWrite(dib);
  const double reduction =
      std::max({1.0, double(view.width()) / box_width, double(view.height()) / box_height});
  const auto reduced = [=](int size) {
    return static_cast<uint32_t>(std::max(1L, std::lround(size / reduction)));
  };
  PackedDib* copy = CopyOf(view).release();
  const bool done =
      omb_transformat(&copy) != 0 &&
      omb_resize(&copy, reduced(view.width()), reduced(view.height()), OMB_RESIZE_LANCZOS) != 0;
  Image thumbnail(copy);
  if (!done) throw std::bad_alloc();
  return thumbnail;
}

}  // namespace omb
