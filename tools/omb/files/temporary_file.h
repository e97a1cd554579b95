// A file that is written beside its target and takes the target's place when it is complete.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "files/output.h"

namespace omb {

// Throws FileError: "cannot be written: no space left on device".
[[noreturn]] void CannotWrite(const std::error_code& why);

class TemporaryFile {
 public:
  // Creates a file with an unpredictable name in the target's directory. The target "-" is standard
  // output, which gets all bytes at once. Throws FileError.
  explicit TemporaryFile(const std::filesystem::path& target);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  // Removes the file unless it has become the target.
  ~TemporaryFile();

  Output& output() { return *output_; }

  // Brings the file to the disk and renames it to the target. Throws FileError when a byte did not
  // arrive or the target cannot be replaced.
  void Commit();

 private:
  void CopyToStandardOutput();

  std::filesystem::path target_;  // empty: standard output
  std::filesystem::path path_;
  std::optional<Output> output_;
  size_t listed_ = 0;  // where the signal handlers find it
};

// From now on a signal that ends the program removes temporary files first.
void RemoveTemporaryFilesOnSignals();

}  // namespace omb
