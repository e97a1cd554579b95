// 128 bits: SSE4.1 on x86, NEON on AArch64, and WebAssembly where it is compiled with -msimd128.
#if defined(__SSE4_1__)
#define OMBRILO_ROWS_NAME "sse4.1"
#elif defined(__aarch64__)
#define OMBRILO_ROWS_NAME "neon"
#elif defined(__wasm_simd128__)
#define OMBRILO_ROWS_NAME "simd128"
#elif defined(__x86_64__) || defined(__i386__)
#error "This file is compiled with -msse4.1."
#endif

#if defined(OMBRILO_ROWS_NAME)
#define OMBRILO_ROWS_TABLE kSimd128
#define OMBRILO_ROWS_SHUFFLES
#include "rows/row_functions.inc"
#endif
