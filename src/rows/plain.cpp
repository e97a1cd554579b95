#define OMBRILO_ROWS_TABLE kPlain
#define OMBRILO_ROWS_NAME "plain"
#include "rows/row_functions.inc"
