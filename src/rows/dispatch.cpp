// The choice of instruction set.
#include <atomic>

#include "rows/row_functions.h"

namespace ombrilo::simd {

extern const RowFunctions kPlain, kSimd128, kAvx2, kAvx512;

namespace {

// Every thread that finds it null stores the same value, so a race is harmless.
std::atomic<const RowFunctions*> active{nullptr};

const RowFunctions* Widest() {
  const RowFunctions* const* level = Supported();
  while (level[1] != nullptr) ++level;
  return *level;
}

}  // namespace

const RowFunctions* const* Supported() {
#if defined(__x86_64__) || defined(__i386__)
  static constexpr const RowFunctions* kUpTo[][5] = {{&kPlain},
                                                     {&kPlain, &kSimd128},
                                                     {&kPlain, &kSimd128, &kAvx2},
                                                     {&kPlain, &kSimd128, &kAvx2, &kAvx512}};
  if (!__builtin_cpu_supports("sse4.1")) return kUpTo[0];
  // These checks include the operating system, which has to save the wide registers.
  if (!__builtin_cpu_supports("avx2")) return kUpTo[1];
  const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                      __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512dq") &&
                      __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vnni");
  return kUpTo[avx512 ? 3 : 2];
#elif defined(__aarch64__) || defined(__wasm_simd128__)
  static constexpr const RowFunctions* kBoth[] = {&kPlain, &kSimd128, nullptr};
  return kBoth;
#else
  static constexpr const RowFunctions* kPlainOnly[] = {&kPlain, nullptr};
  return kPlainOnly;
#endif
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
