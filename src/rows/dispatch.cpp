// The choice of instruction set.
#include <atomic>

#include "rows/row_functions.h"

namespace ombrilo::simd {

extern const RowFunctions kPlain;
#ifdef OMBRILO_ROWS_X86
extern const RowFunctions kAvx2;
extern const RowFunctions kAvx512;
#endif

namespace {

// Set once to the same value by whoever comes first, so a race is harmless.
std::atomic<const RowFunctions*> active{nullptr};

const RowFunctions* Widest() {
  const RowFunctions* const* level = Supported();
  while (level[1] != nullptr) ++level;
  return *level;
}

}  // namespace

const RowFunctions* const* Supported() {
#ifdef OMBRILO_ROWS_X86
  static constexpr const RowFunctions* kAll[] = {&kPlain, &kAvx2, &kAvx512, nullptr};
  static constexpr const RowFunctions* kUpToAvx2[] = {&kPlain, &kAvx2, nullptr};
  // These checks include the operating system's: it has to save the wide registers.
  if (__builtin_cpu_supports("avx2")) {
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vbmi");
    return avx512 ? kAll : kUpToAvx2;
  }
#endif
  static constexpr const RowFunctions* kPlainOnly[] = {&kPlain, nullptr};
  return kPlainOnly;
}

const RowFunctions& Active() {
  const RowFunctions* functions = active.load(std::memory_order_relaxed);
  if (functions == nullptr) {
    functions = Widest();
    active.store(functions, std::memory_order_relaxed);
  }
  return *functions;
}

void Use(const RowFunctions* functions) { active.store(functions, std::memory_order_relaxed); }

}  // namespace ombrilo::simd
