// The fixed kernels of omb_convolute and omb_emboss, by number.
//
// The first row of a grid is for the row stored before the current one, which is the row below it
// in the picture.
#pragma once

#include "core/weight_grid.h"

namespace ombrilo {

struct NumberedKernel {
  int half;  // 1: 3x3, 2: 5x5
  int32_t weights[25];

  consteval explicit NumberedKernel(const char* grid) : half(0), weights() {
    int i = 0;
    half = ParseGrid(grid, [&](GridEntry entry) { weights[i++] = entry.weight; }).width / 2;
  }
};

inline constexpr uint32_t kNumberedKernels = 39;
inline constexpr uint32_t kFirstEmbossKernel = 12;

// Entry n - 1 is kernel n.
// clang-format off
inline constexpr NumberedKernel kNumberedKernel[kNumberedKernels] = {
    // smooth
    /*  1 */ NumberedKernel("1 1 1 / 1 1 1 / 1 1 1"),
    /*  2 */ NumberedKernel("1 1 1 1 1 /"
                            "1 1 1 1 1 /"
                            "1 1 1 1 1 /"
                            "1 1 1 1 1 /"
                            "1 1 1 1 1"),
    /*  3 */ NumberedKernel("1 2 1 / 2 4 2 / 1 2 1"),
    /*  4 */ NumberedKernel(" 1  1  1  1  1 /"
                            " 1  4  4  4  1 /"
                            " 1  4 12  4  1 /"
                            " 1  4  4  4  1 /"
                            " 1  1  1  1  1"),
    // sharpen; 8 turns local detail around: its sum is -7
    /*  5 */ NumberedKernel("-1 -2 -1 / -2 19 -2 / -1 -2 -1"),
    /*  6 */ NumberedKernel(" 0 -1  0 / -1  5 -1 /  0 -1  0"),
    /*  7 */ NumberedKernel("-1 -1 -1 / -1  9 -1 / -1 -1 -1"),
    /*  8 */ NumberedKernel(" 0 -1 -1 -1  0 /"
                            "-1  2 -4  2 -1 /"
                            "-1 -4 13 -4 -1 /"
                            "-1  2 -4  2 -1 /"
                            " 0 -1 -1 -1  0"),
    // Laplacian
    /*  9 */ NumberedKernel(" 0 -1  0 / -1  4 -1 /  0 -1  0"),
    /* 10 */ NumberedKernel("-1 -1 -1 / -1  8 -1 / -1 -1 -1"),
    /* 11 */ NumberedKernel(" 1 -2  1 / -2  4 -2 /  1 -2  1"),
    // Sobel gradient, eight rotations
    /* 12 */ NumberedKernel(" 1  0 -1 /  2  0 -2 /  1  0 -1"),
    /* 13 */ NumberedKernel(" 1  2  1 /  0  0  0 / -1 -2 -1"),
    /* 14 */ NumberedKernel("-1  0  1 / -2  0  2 / -1  0  1"),
    /* 15 */ NumberedKernel("-1 -2 -1 /  0  0  0 /  1  2  1"),
    /* 16 */ NumberedKernel(" 0 -1 -2 /  1  0 -1 /  2  1  0"),
    /* 17 */ NumberedKernel(" 2  1  0 /  1  0 -1 /  0 -1 -2"),
    /* 18 */ NumberedKernel("-2 -1  0 / -1  0  1 /  0  1  2"),
    /* 19 */ NumberedKernel(" 0  1  2 / -1  0  1 / -2 -1  0"),
    // centre minus one neighbour
    /* 20 */ NumberedKernel(" 0  0  0 /  0  1 -1 /  0  0  0"),
    /* 21 */ NumberedKernel(" 0  0  0 /  0  1  0 /  0 -1  0"),
    /* 22 */ NumberedKernel(" 0  0  0 / -1  1  0 /  0  0  0"),
    /* 23 */ NumberedKernel(" 0 -1  0 /  0  1  0 /  0  0  0"),
    /* 24 */ NumberedKernel(" 0  0 -1 /  0  1  0 /  0  0  0"),
    /* 25 */ NumberedKernel(" 0  0  0 /  0  1  0 /  0  0 -1"),
    /* 26 */ NumberedKernel("-1  0  0 /  0  1  0 /  0  0  0"),
    /* 27 */ NumberedKernel(" 0  0  0 /  0  1  0 / -1  0  0"),
    // compass, eight rotations
    /* 28 */ NumberedKernel(" 1  1 -1 /  1 -2 -1 /  1  1 -1"),
    /* 29 */ NumberedKernel(" 1  1  1 /  1 -2  1 / -1 -1 -1"),
    /* 30 */ NumberedKernel("-1  1  1 / -1 -2  1 / -1  1  1"),
    /* 31 */ NumberedKernel("-1 -1 -1 /  1 -2  1 /  1  1  1"),
    /* 32 */ NumberedKernel(" 1 -1 -1 /  1 -2 -1 /  1  1  1"),
    /* 33 */ NumberedKernel(" 1  1  1 /  1 -2 -1 /  1 -1 -1"),
    /* 34 */ NumberedKernel("-1 -1  1 / -1 -2  1 /  1  1  1"),
    /* 35 */ NumberedKernel(" 1  1  1 / -1 -2  1 / -1 -1  1"),
    // lines: row, column, diagonals
    /* 36 */ NumberedKernel("-1 -1 -1 /  2  2  2 / -1 -1 -1"),
    /* 37 */ NumberedKernel("-1  2 -1 / -1  2 -1 / -1  2 -1"),
    /* 38 */ NumberedKernel(" 2 -1 -1 / -1  2 -1 / -1 -1  2"),
    /* 39 */ NumberedKernel("-1 -1  2 / -1  2 -1 /  2 -1 -1"),
};
// clang-format on

}  // namespace ombrilo
