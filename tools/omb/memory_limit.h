// A limit on the memory of the whole program, enforced by the system.
#pragma once

#include <cstdint>
#include <string>

namespace omb {

// "500M" or "2G" as a number of bytes. Throws UsageError.
uint64_t ParseMemory(const std::string& text);

// From now on, allocations beyond it fail. Throws std::runtime_error if the system has no such
// limit.
void LimitMemory(uint64_t bytes);

}  // namespace omb
