#include "header.c"
