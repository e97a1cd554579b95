// A file that is written beside its target and takes the target's place when it is complete.
#pragma once

#include <cstdio>
#include <filesystem>

namespace omb {

class TemporaryFile {
 public:
  // Creates a file with an unpredictable name in the target's directory. Throws FileError.
  explicit TemporaryFile(const std::filesystem::path& target);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  // Removes the file unless it has become the target.
  ~TemporaryFile();

  std::FILE* stream() const { return stream_; }

  // Closes the file and renames it to the target. Throws FileError when a byte did not reach the
  // disk or the target cannot be replaced.
  void Commit();

 private:
  std::filesystem::path target_;
  std::filesystem::path path_;
  std::FILE* stream_ = nullptr;
};

}  // namespace omb
