// Counts allocations and makes them fail.
//
// The test program is linked with malloc, calloc, realloc and free of the static library redirected
// to this file's functions, so the library needs no hook of its own.
#pragma once

#include <cstddef>

namespace ombrilo::test {

// The bytes that a block from malloc has room for.
size_t AllocatedSize(void* block);

// Counts the blocks that the calls between construction and Stop() allocate and release; the
// `failing`-th allocation gives null (1 is the first, 0 none). One at a time, on one thread.
class MemoryWatch {
 public:
  explicit MemoryWatch(int failing);
  ~MemoryWatch() { Stop(); }
  void Stop();
  bool failed() const { return failed_; }
  int still_held() const { return held_; }
  // The most bytes that were held at any time.
  size_t peak_bytes() const { return peak_; }

 private:
  bool failed_ = false;
  int held_ = 0;
  size_t peak_ = 0;
  bool stopped_ = false;
};

}  // namespace ombrilo::test
