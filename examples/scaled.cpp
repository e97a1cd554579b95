// An image of the library in C++: owned, changed in place, replaced.
#include <ombrilo/ombrilo.h>

#include <cstdio>
#include <memory>

struct FreeDib {
  void operator()(PackedDib* dib) const { omb_freedib(dib); }
};
using Image = std::unique_ptr<PackedDib, FreeDib>;

bool Scale(Image& image, uint32_t width, uint32_t height) {
  PackedDib* block = image.release();
  const bool done = omb_scale(&block, width, height, OMB_RESAMPLE_BILINEAR) != 0;
  image.reset(block);  // the new block; the old one if it was not done
  return done;
}

int main() {
  Image image(omb_newdib(3, 2, 24));
  if (!image || !omb_invert(image.get()) || !Scale(image, 6, 4)) return 1;
  const uint8_t* rows = omb_FindDIBBits(image.get());
  std::printf("%u x %u pixels, the first one %u %u %u\n", omb_DIBWidth(image.get()),
              omb_DIBHeight(image.get()), rows[0], rows[1], rows[2]);
}
