#define OMBRILO_ROWS_TABLE kAvx2
#define OMBRILO_ROWS_NAME "avx2"
#include "rows/row_functions.inc"
