#if defined(__x86_64__) || defined(__i386__)
#if !defined(__AVX512VBMI__) || !defined(__AVX512VNNI__) || !defined(__AVX512DQ__)
#error "This file is compiled with flags of its own: see src/CMakeLists.txt."
#endif
#define OMBRILO_ROWS_TABLE kAvx512
#define OMBRILO_ROWS_NAME "avx512"
#define OMBRILO_ROWS_SHUFFLES
#include "rows/row_functions.inc"
#endif
