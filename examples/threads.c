/* Thumbnails of sixteen photographs, one image to a thread: the library starts no threads, and its
   calls need no locks as long as no two of them share an image. threads [COUNT] */
#include <ombrilo/ombrilo.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { kImages = 16, kMost = 16 };

static PackedDib* images[kImages];
static int next, failures;
static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;

/* Takes images until there are none left. */
static void* Work(void* unused) {
  for (;;) {
    int i;
    pthread_mutex_lock(&lock);
    i = next++;
    pthread_mutex_unlock(&lock);
    if (i >= kImages) return unused;

    images[i] = omb_newdib(4000, 3000, 24); /* a program would read a file */
    if (images[i] != NULL) memset(omb_FindDIBBits(images[i]), 16 * i, 4000 * 3 * 3000);
    if (!omb_resize(&images[i], 400, 300, OMB_RESIZE_LANCZOS)) {
      pthread_mutex_lock(&lock);
      ++failures;
      pthread_mutex_unlock(&lock);
    }
  }
}

int main(int argc, char** argv) {
  const int wanted = argc > 1 ? atoi(argv[1]) : 2;
  pthread_t threads[kMost];
  int i, started = 0;

  while (started < wanted && started < kMost &&
         pthread_create(&threads[started], NULL, Work, NULL) == 0) {
    ++started;
  }
  if (started == 0) Work(NULL);
  for (i = 0; i < started; ++i) pthread_join(threads[i], NULL);

  if (failures > 0) return 1;
  printf("%d thumbnails, the last one's first pixel %u\n", (int)kImages,
         omb_FindDIBBits(images[kImages - 1])[0]);
  for (i = 0; i < kImages; ++i) omb_freedib(images[i]);
  return 0;
}
