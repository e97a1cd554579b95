// The library's built-in kernels for people: by name or number, and drawn.
#pragma once

#include <string>

#include "ombrilo/ombrilo.h"

namespace omb {

// A record by its name, whatever the case and however the blank in it is written ("unsharp 5x5",
// "Unsharp-5x5", "unsharp5x5"), or by its number. Null when there is none.
const KERNAL* FindKernel(const std::string& text);

// False for mere shapes.
bool HasWeights(const KERNAL& kernel);

// All records as they lie on the picture, as many side by side as fit the columns of the terminal.
std::string DrawKernels(int columns);

}  // namespace omb
