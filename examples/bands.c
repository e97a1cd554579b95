/* One large image on several threads, without a copy: bands [THREADS]

   Rows lie back to back, so a band of rows is an image when there is a header in front of it. That
   goes where the end of the row before is, which belongs to another band: bands 0, 2, 4, ... are
   worked on first, then the others, and what was under the headers is put back in between. */
#include <ombrilo/ombrilo.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kHeader = 40, kMost = 16 };

typedef struct {
  PackedDib* image; /* the header, with the band's rows after it */
  uint8_t covered[kHeader];
  pthread_t thread;
  int started;
} Band;

/* Any operation on colors one by one. */
static void* Work(void* band) {
  static const OmbPoint points[] = {{0, 0}, {64, 40}, {192, 220}, {255, 255}};
  omb_curve(((Band*)band)->image, points, 4, OMB_CHANNEL_ALL);
  return NULL;
}

/* For 24 bits, no color table, rows of 40 bytes or more, and at least two of them for a thread. */
static void WorkInBands(PackedDib* image, int threads) {
  uint8_t* const rows = omb_FindDIBBits(image);
  const int64_t height = omb_DIBHeight(image), row = omb_BytesPerLine(image);
  uint8_t header[kHeader];
  int round, i;
  memcpy(header, image, kHeader);
  for (round = 0; round < 2; ++round) {
    Band bands[kMost];
    for (i = 0; i < threads; ++i) {
      const int64_t first = height * (2 * i + round) / (2 * threads);
      const int32_t count = (int32_t)(height * (2 * i + round + 1) / (2 * threads) - first);
      uint8_t* const at = rows + first * row - kHeader;
      memcpy(bands[i].covered, at, kHeader);
      memcpy(at, header, kHeader);
      memcpy(at + 8, &count, 4); /* biHeight */
      bands[i].image = (PackedDib*)at;
    }
    for (i = 0; i < threads; ++i) {
      bands[i].started = pthread_create(&bands[i].thread, NULL, Work, &bands[i]) == 0;
      if (!bands[i].started) Work(&bands[i]);
    }
    for (i = 0; i < threads; ++i) {
      if (bands[i].started) pthread_join(bands[i].thread, NULL);
      memcpy(bands[i].image, bands[i].covered, kHeader);
    }
  }
}

int main(int argc, char** argv) {
  const int wanted = argc > 1 ? atoi(argv[1]) : 2;
  const int threads = wanted < 1 ? 1 : wanted > kMost ? kMost : wanted;
  PackedDib* const whole = omb_newdib(4001, 3001, 24);
  PackedDib* const split = omb_newdib(4001, 3001, 24);
  size_t size, i;
  int same;
  Band all;
  if (whole == NULL || split == NULL) return 1;
  size = (size_t)omb_BytesPerLine(whole) * omb_DIBHeight(whole);
  for (i = 0; i < size; ++i) omb_FindDIBBits(whole)[i] = (uint8_t)(i * i >> 7);
  memcpy(split, whole, kHeader + size);

  all.image = whole;
  Work(&all);
  WorkInBands(split, threads);
  same = memcmp(whole, split, kHeader + size) == 0;
  printf("%d threads: %s bytes\n", threads, same ? "the same" : "other");
  omb_freedib(whole);
  omb_freedib(split);
  return same ? 0 : 1;
}
