#include "support/failing_memory.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace {

struct State {
  bool watching = false;
  int countdown = 0;  // the allocation that fails, counted down; 0 when none will
  bool failed = false;
  int held = 0;
  long long bytes = 0, peak = 0;
};

// Not thread_local: on Windows that allocates by itself on first use.
State state;

bool Refuse() {
  if (!state.watching) return false;
  if (state.countdown == 0 || --state.countdown != 0) return false;
  state.failed = true;
  return true;
}

}  // namespace

size_t ombrilo::test::AllocatedSize(void* block) {
#if defined(_WIN32)
  return _msize(block);
#else
  return malloc_usable_size(block);
#endif
}

namespace {

using ombrilo::test::AllocatedSize;

void Weigh(long long bytes) {
  state.bytes += bytes;
  state.peak = std::max(state.peak, state.bytes);
}

void* Counted(void* block) {
  if (state.watching && block != nullptr) {
    ++state.held;
    Weigh(static_cast<long long>(AllocatedSize(block)));
  }
  return block;
}

}  // namespace

extern "C" {

void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
void __real_free(void* block);

// Fresh memory holds anything, so that results which depend on it differ from what is expected.
void* __wrap_malloc(size_t size) {
  void* block = Refuse() ? nullptr : Counted(__real_malloc(size));
  if (block != nullptr) std::memset(block, 0xB5, std::min<size_t>(size, 1 << 20));
  return block;
}

void* __wrap_calloc(size_t count, size_t size) {
  return Refuse() ? nullptr : Counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, size_t size) {
  if (Refuse()) return nullptr;
  const long long before = block == nullptr ? 0 : static_cast<long long>(AllocatedSize(block));
  void* grown = __real_realloc(block, size);
  if (block == nullptr) return Counted(grown);
  if (state.watching && grown != nullptr)
    Weigh(static_cast<long long>(AllocatedSize(grown)) - before);
  return grown;
}

void __wrap_free(void* block) {
  if (state.watching && block != nullptr) {
    --state.held;
    Weigh(-static_cast<long long>(AllocatedSize(block)));
  }
  __real_free(block);
}

}  // extern "C"

// The tests' own containers are not the library: where the C++ runtime is linked statically, they
// would come through the functions above.
void* operator new(size_t size) {
  if (void* block = __real_malloc(size == 0 ? 1 : size)) return block;
  std::abort();
}
void operator delete(void* block) noexcept { __real_free(block); }
void operator delete(void* block, size_t) noexcept { __real_free(block); }

namespace ombrilo::test {

MemoryWatch::MemoryWatch(int failing) { state = {.watching = true, .countdown = failing}; }

void MemoryWatch::Stop() {
  if (stopped_) return;
  stopped_ = true;
  state.watching = false;
  failed_ = state.failed;
  held_ = state.held;
  peak_ = static_cast<size_t>(state.peak);
}

}  // namespace ombrilo::test
