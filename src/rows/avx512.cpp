#define OMBRILO_ROWS_TABLE kAvx512
#define OMBRILO_ROWS_NAME "avx512"
#include "rows/row_functions.inc"
