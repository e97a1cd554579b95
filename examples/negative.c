/* The negative of a small image. */
#include <ombrilo/ombrilo.h>
#include <stdio.h>

int main(void) {
  PackedDib* image = omb_newdib(3, 2, 24); /* 24-bit images start black */
  if (image == NULL || !omb_invert(image)) return 1;
  const uint8_t* rows = omb_FindDIBBits(image);
  printf("%u x %u pixels, the first one %u %u %u\n", (unsigned)omb_DIBWidth(image),
         (unsigned)omb_DIBHeight(image), rows[0], rows[1], rows[2]);
  omb_freedib(image);
  return 0;
}
