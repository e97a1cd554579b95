/* A host's pixels become a gray thumbnail: red, green and blue come in, the top row first. */
#include <ombrilo/ombrilo.h>
#include <stdio.h>
#include <string.h>

static uint8_t photo[600][800][3], thumbnail[150][200];

int main(void) {
  PackedDib* image;
  memset(photo, 255, sizeof photo); /* a photograph of snow */

  image = omb_frompixels(OMB_PIXELS_RGB, 800, 600, photo, sizeof photo[0], 0);
  if (!omb_gray(&image) || !omb_resize(&image, 200, 150, OMB_RESIZE_LANCZOS)) return 1;
  if (!omb_topixels(image, OMB_PIXELS_GRAY, thumbnail, sizeof thumbnail[0])) return 1;
  omb_freedib(image);

  printf("200 x 150 pixels, the first one %u %u %u\n", thumbnail[0][0], thumbnail[0][1],
         thumbnail[0][2]);
  return 0;
}
