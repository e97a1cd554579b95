// Paths beyond the 260 characters that Windows takes by default.
#pragma once

#include <filesystem>

namespace omb {

// The same file by a name that the system takes, however long it is. Not for people to read.
std::filesystem::path LongPath(const std::filesystem::path& path);

}  // namespace omb
