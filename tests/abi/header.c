/* The public header alone, as C99 and, under the name header_cxx.cpp, as C++17. */
#include "ombrilo/ombrilo.h"

uint32_t use_header(PackedDib* dib);
uint32_t use_header(PackedDib* dib) {
  OmbRect rect = {0, 0, 1, 1};
  return omb_crop(&dib, &rect);
}
