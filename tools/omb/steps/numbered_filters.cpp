#include "steps/numbered_filters.h"

namespace omb {

std::vector<Name> NumberedFilterNames() {
  return {{"smooth-3x3", 1},
          {"smooth-5x5", 2},
          {"gauss-3x3", 3},
          {"gauss-5x5", 4},
          {"sharpen", 5},
          {"sharpen-soft", 6},
          {"sharpen-strong", 7},
          {"sharpen-wide", 8},
          {"laplace-4", 9},
          {"laplace-8", 10},
          {"laplace-diagonal", 11},
          {"gradient-left", 12},
          {"gradient-down", 13},
          {"gradient-right", 14},
          {"gradient-up", 15},
          {"gradient-up-left", 16},
          {"gradient-down-left", 17},
          {"gradient-up-right", 18},
          {"gradient-down-right", 19},
          {"difference-right", 20},
          {"difference-up", 21},
          {"difference-left", 22},
          {"difference-down", 23},
          {"difference-down-right", 24},
          {"difference-up-right", 25},
          {"difference-down-left", 26},
          {"difference-up-left", 27},
          {"compass-left", 28},
          {"compass-down", 29},
          {"compass-right", 30},
          {"compass-up", 31},
          {"compass-up-left", 32},
          {"compass-down-left", 33},
          {"compass-up-right", 34},
          {"compass-down-right", 35},
          {"lines-across", 36},
          {"lines-upright", 37},
          {"lines-rising", 38},
          {"lines-falling", 39}};
}

std::vector<Name> ReliefNames() {
  return {{"soft-right", 0},       {"soft-up", 1},           {"soft-left", 2},
          {"soft-down", 3},        {"soft-down-right", 4},   {"soft-up-right", 5},
          {"soft-down-left", 6},   {"soft-up-left", 7},      {"fine-right", 8},
          {"fine-up", 9},          {"fine-left", 10},        {"fine-down", 11},
          {"fine-down-right", 12}, {"fine-up-right", 13},    {"fine-down-left", 14},
          {"fine-up-left", 15},    {"strong-right", 16},     {"strong-up", 17},
          {"strong-left", 18},     {"strong-down", 19},      {"strong-down-right", 20},
          {"strong-up-right", 21}, {"strong-down-left", 22}, {"strong-up-left", 23},
          {"lines-across", 24},    {"lines-upright", 25},    {"lines-rising", 26},
          {"lines-falling", 27}};
}

}  // namespace omb
