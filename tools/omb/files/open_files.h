// What temporary files need from the system: creation for the owner alone, flushing to the disk,
// and removal when a signal ends the program.
#pragma once

#include <cstdio>
#include <filesystem>

namespace omb {

// Opens a new file for writing and reading back. Null when it exists or cannot be made.
std::FILE* OpenNew(const std::filesystem::path& path);
// Who may read, write and run it; `unknown` gives what new files usually get.
void SetPermissions(std::FILE* file, std::filesystem::perms permissions);
// False when bytes have not reached the disk.
bool Synchronize(std::FILE* file);
std::FILE* BinaryStandardOutput();

// Files in the list are removed by the handlers. The result is for UnlistOpenFile().
size_t ListOpenFile(const std::filesystem::path& path, std::FILE* file);
void UnlistOpenFile(size_t place);

}  // namespace omb
