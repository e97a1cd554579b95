// The built-in KERNAL records, by the index under which omb_getKERNAL hands them out.
//
// Each grid shows the record as it lies on the picture: the first line is the highest dy (the row
// stored last, which is the upper one on screen), columns run from the lowest dx. The anchor is the
// middle, rounded down. Grids of "o" are structuring elements; all of them share one array of zeros
// as their weights.
#include "core/weight_grid.h"
#include "morphology/kernal.h"

// The grids keep their form.
// clang-format off

namespace ombrilo {

namespace {

template <int kCount>
struct Entries {
  int32_t offsets[2 * kCount];
  int32_t weights[kCount];
};

template <GridText kGrid>
constexpr GridSize kSize = ParseGrid(kGrid.text, [](GridEntry) {});

template <GridText kGrid>
constexpr auto kEntries = [] {
  Entries<kSize<kGrid>.count> entries = {};
  int i = 0;
  ParseGrid(kGrid.text, [&](GridEntry entry) {
    entries.offsets[2 * i] = entry.column - (kSize<kGrid>.width - 1) / 2;
    entries.offsets[2 * i + 1] = (kSize<kGrid>.height - 1) / 2 - entry.row;
    entries.weights[i++] = entry.weight;
  });
  return entries;
}();

constexpr int32_t kZeros[97] = {};

// The record's arrays are not const in the interface; nothing ever writes through these.
constexpr KERNAL Record(const GridSize& size, int32_t bias, const char* name,
                        const int32_t* offsets, const int32_t* weights) {
  return {size.width, size.height, (size.width - 1) / 2, (size.height - 1) / 2, size.count, bias,
          const_cast<int32_t*>(offsets), const_cast<char*>(name), const_cast<int32_t*>(weights)};
}

template <GridText kGrid>
constexpr KERNAL Element(const char* name) {
  static_assert(kSize<kGrid>.count <= 97);
  return Record(kSize<kGrid>, 0, name, kEntries<kGrid>.offsets, kZeros);
}

template <GridText kGrid>
constexpr KERNAL Kernel(const char* name, int32_t bias = 0) {
  return Record(kSize<kGrid>, bias, name, kEntries<kGrid>.offsets, kEntries<kGrid>.weights);
}

// "higauss 7x7" is a list, irregular on purpose: the row dy = -2 is empty, (-2, 0) and (2, 0) are
// missing, and the last four entries repeat positions.
constexpr int32_t kHigauss7Offsets[] = {
                 -1,  3,   0,  3,   1,  3,
        -2,  2,  -1,  2,            1,  2,   2,  2,
-3,  1, -2,  1,  -1,  1,   0,  1,   1,  1,   2,  1,   3,  1,
-3,  0,          -1,  0,   0,  0,   1,  0,            3,  0,
-3, -1, -2, -1,  -1, -1,   0, -1,   1, -1,   2, -1,   3, -1,
                 -1, -3,   0, -3,   1, -3,
 0,  0, -1, -1, -1, -1, -1, -1,
};
constexpr int32_t kHigauss7Weights[] = {
                 -1,       -1,      -1,
        -1,      -1,                -1,      -1,
-1,     -1,       2,        4,       2,      -1,      -1,
-1,               4,       10,       4,               -1,
-1,     -1,       2,        4,       2,      -1,      -1,
                 -1,       -1,      -1,
-1,     -1,      -1,       -1,
};
constexpr GridSize kHigauss7Size = {7, 7, 33};
static_assert(sizeof kHigauss7Offsets == 2 * 33 * sizeof(int32_t));
static_assert(sizeof kHigauss7Weights == 33 * sizeof(int32_t));

}  // namespace

constinit const KERNAL kKernals[kKernalCount] = {
// 0
Element<R"(
  o o o
  o o o
  o o o
)">("Circle 3x3"),
// 1
Element<R"(
  . o o o .
  o o o o o
  o o o o o
  o o o o o
  . o o o .
)">("Circle 5x5"),
// 2
Element<R"(
  . . o o o . .
  . o o o o o .
  o o o o o o o
  o o o o o o o
  o o o o o o o
  . o o o o o .
  . . o o o . .
)">("Circle 7x7"),
// 3
Element<R"(
  . . . o o o o o . . .
  . . o o o o o o o . .
  . o o o o o o o o o .
  o o o o o o o o o o o
  o o o o o o o o o o o
  o o o o o o o o o o o
  o o o o o o o o o o o
  o o o o o o o o o o o
  . o o o o o o o o o .
  . . o o o o o o o . .
  . . . o o o o o . . .
)">("Circle 11x11"),
// 4
Element<R"(
  o
  o
  o
)">("Colomn 1x3"),
// 5
Element<R"(
  . o .
  o o o
  . o .
)">("Cross 3x3"),
// 6
Kernel<R"(
  -1 -1 -1
  -1  9 -1
  -1 -1 -1
)">("hipass 3x3"),
// 7
Kernel<R"(
   . -1 -1 -1  .
  -1 -1 -1 -1 -1
  -1 -1 21 -1 -1
  -1 -1 -1 -1 -1
   . -1 -1 -1  .
)">("hipass 5x5"),
// 8
Kernel<R"(
   .  . -1 -1 -1  .  .
   . -1 -1 -1 -1 -1  .
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 37 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
   . -1 -1 -1 -1 -1  .
   .  . -1 -1 -1  .  .
)">("hipass 7x7"),
// 9
Kernel<R"(
   . -1 -1 -1  .
  -1  .  2  . -1
  -1  2  5  2 -1
  -1  .  2  . -1
   . -1 -1 -1  .
)">("higauss 5x5"),
// 10
Record(kHigauss7Size, 0, "higauss 7x7", kHigauss7Offsets, kHigauss7Weights),
// 11
Kernel<R"(
  -1  . -1 -3 -4 -3 -1  . -1
   . -2 -7 -8 -7 -8 -7 -2  .
  -1 -7 -5  3  7  3 -5 -7 -1
  -3 -8  3 19 27 19  3 -8 -3
  -4 -7  7 27 42 27  7 -7 -4
  -3 -8  3 19 27 19  3 -8 -3
  -1 -7 -5  3  7  3 -5 -7 -1
   . -2 -7 -8 -7 -8 -7 -2  .
  -1  . -1 -3 -4 -3 -1  . -1
)">("higauss 9x9"),
// 12
Kernel<R"(
  -1 -2 -1
   .  .  .
   1  2  1
)">("horzedge 3x3"),
// 13
Kernel<R"(
  -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1
   .  .  .  .  .
   1  1  1  1  1
   1  1  1  1  1
)">("horzedge 5x5"),
// 14
Kernel<R"(
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
   .  .  .  .  .  .  .
   1  1  1  1  1  1  1
   1  1  1  1  1  1  1
   1  1  1  1  1  1  1
)">("horzedge 7x7"),
// 15
Kernel<R"(
  -1 -1 -1
  -1  8 -1
  -1 -1 -1
)">("laplace 3x3"),
// 16
Kernel<R"(
   . -1 -1 -1  .
  -1  .  1  . -1
  -1  1  8  1 -1
  -1  .  1  . -1
   . -1 -1 -1  .
)">("laplace 5x5"),
// 17
Kernel<R"(
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 48 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
)">("laplace 7x7"),
// 18
Kernel<R"(
  1 1 1
  1 . 1
  1 1 1
)">("lopass 3x3"),
// 19
Kernel<R"(
  1 1 1 1 1
  1 1 1 1 1
  1 1 1 1 1
  1 1 1 1 1
  1 1 1 1 1
)">("lopass 5x5"),
// 20
Kernel<R"(
  1 1 1 1 1 1 1
  1 1 1 1 1 1 1
  1 1 1 1 1 1 1
  1 1 1 1 1 1 1
  1 1 1 1 1 1 1
  1 1 1 1 1 1 1
  1 1 1 1 1 1 1
)">("lopass 7x7"),
// 21
Element<R"(
  o o o
  o . o
  o o o
)">("Ring 3x3"),
// 22
Element<R"(
  . o o o .
  o o . o o
  o . . . o
  o o . o o
  . o o o .
)">("Ring 5x5"),
// 23
Element<R"(
  . . o o o . .
  . o o o o o .
  o o . . . o o
  o o . . . o o
  o o . . . o o
  . o o o o o .
  . . o o o . .
)">("Ring 7x7"),
// 24
Element<R"(
  o o o
)">("Row 3x1"),
// 25
Element<R"(
  o o o o o
)">("Row 5x1"),
// 26
Element<R"(
  o o o o o o o
)">("Row 7x1"),
// 27
Kernel<R"(
  -1  .  .
   .  .  .
   .  .  1
)">("sculpt ", 128),
// 28
Element<R"(
  o o
  o o
)">("Square 2x2"),
// 29
Element<R"(
  o o o
  o o o
  o o o
)">("Square 3x3"),
// 30
Element<R"(
  o o o o o
  o o o o o
  o o o o o
  o o o o o
  o o o o o
)">("Square 5x5"),
// 31
Element<R"(
  o o o o o o o
  o o o o o o o
  o o o o o o o
  o o o o o o o
  o o o o o o o
  o o o o o o o
  o o o o o o o
)">("Square 7x7"),
// 32
Kernel<R"(
  -1 -1 -1
  -1  8 -1
  -1 -1 -1
)">("tophat 3x3"),
// 33
Kernel<R"(
   . -1 -1 -1  .
  -1 -1  3 -1 -1
  -1  3  4  3 -1
  -1 -1  3 -1 -1
   . -1 -1 -1  .
)">("tophat 5x5"),
// 34
Kernel<R"(
   .  . -1 -1 -1  .  .
   . -1 -1 -1 -1 -1  .
  -1 -1  3  3  3 -1 -1
  -1 -1  3  4  3 -1 -1
  -1 -1  3  3  3 -1 -1
   . -1 -1 -1 -1 -1  .
   .  . -1 -1 -1  .  .
)">("tophat 7x7"),
// 35
Kernel<R"(
  -1 -1 -1
  -1 17 -1
  -1 -1 -1
)">("unsharp 3x3"),
// 36
Kernel<R"(
  -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1
  -1 -1 49 -1 -1
  -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1
)">("unsharp 5x5"),
// 37
Kernel<R"(
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 97 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
  -1 -1 -1 -1 -1 -1 -1
)">("unsharp 7x7"),
// 38
Kernel<R"(
  1 1 1
  1 . 1
  1 1 1
)">("variance 3x3"),
// 39
Kernel<R"(
  -1  .  1
  -2  .  2
  -1  .  1
)">("vertedge 3x3"),
// 40
Kernel<R"(
  -1 -1  .  1  1
  -1 -1  .  1  1
  -1 -1  .  1  1
  -1 -1  .  1  1
  -1 -1  .  1  1
)">("vertedge 5x5"),
// 41
Kernel<R"(
  -1 -1 -1  .  1  1  1
  -1 -1 -1  .  1  1  1
  -1 -1 -1  .  1  1  1
  -1 -1 -1  .  1  1  1
  -1 -1 -1  .  1  1  1
  -1 -1 -1  .  1  1  1
  -1 -1 -1  .  1  1  1
)">("vertedge 7x7"),
// 42
Kernel<R"(
   1  1  1
   1 -8  1
   1  1  1
)">("well 3x3"),
// 43
Kernel<R"(
   .  1  1  1  .
   1  1 -3  1  1
   1 -3 -4 -3  1
   1  1 -3  1  1
   .  1  1  1  .
)">("well 5x5"),
// 44
Kernel<R"(
   .  .  1  1  1  .  .
   .  1  1  1  1  1  .
   1  1 -3 -3 -3  1  1
   1  1 -3 -4 -3  1  1
   1  1 -3 -3 -3  1  1
   .  1  1  1  1  1  .
   .  .  1  1  1  .  .
)">("well 7x7"),
};

constinit const KERNAL kGauss3x3 = Kernel<R"(
  1 2 1
  2 4 2
  1 2 1
)">("gauss 3x3");

constinit const KERNAL kGauss5x5 = Kernel<R"(
  1 1 2 1 1
  1 2 4 2 1
  2 4 8 4 2
  1 2 4 2 1
  1 1 2 1 1
)">("gauss 5x5");

constinit const KERNAL kGauss7x7 = Kernel<R"(
   1  1  2  2  2  1  1
   1  2  2  4  2  2  1
   2  2  4  8  4  2  2
   2  4  8 16  8  4  2
   2  2  4  8  4  2  2
   1  2  2  4  2  2  1
   1  1  2  2  2  1  1
)">("gauss 7x7");

}  // namespace ombrilo
