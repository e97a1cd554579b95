// One round of fuzzing: a few exports, with any parameters, on a block with any header.
#pragma once

#include <cstdint>
#include <span>

namespace ombrilo::test {

void FuzzLibrary(std::span<const uint8_t> bytes);

}  // namespace ombrilo::test
