// An image in C++: it owns its memory, operations are members, what is refused is thrown.
#include <cstdio>
#include <ombrilo/ombrilo.hpp>

int main() try {
  ombrilo::Image image(3, 2, 24);
  image.invert().scale(6, 4, OMB_RESAMPLE_BILINEAR);
  const auto row = image.row(0);
  std::printf("%u x %u pixels, the first one %u %u %u\n", image.width(), image.height(), row[0],
              row[1], row[2]);
} catch (const ombrilo::Error& error) {
  std::printf("%s\n", error.what());
  return 1;
}
