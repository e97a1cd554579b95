// A bound on the memory of the whole program, kept by the system.
#pragma once

#include <cstdint>
#include <string>

namespace omb {

// "500M" or "2G" as a number of bytes. Throws UsageError.
uint64_t ParseMemory(const std::string& text);

// Memory beyond it cannot be had from now on. Throws std::runtime_error where there is no such
// bound.
void LimitMemory(uint64_t bytes);

}  // namespace omb
