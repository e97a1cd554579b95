// A file that is being read, which may be a pipe: its size is known when it has ended.
#pragma once

#include <filesystem>
#include <fstream>
#include <istream>
#include <vector>

#include "files/codec.h"

namespace omb {

class Input {
 public:
  // "-" is standard input. Throws FileError.
  explicit Input(const std::filesystem::path& path);

  // Reads on until `size` bytes are there or the file ends. Throws FileError.
  void ReadTo(size_t size);
  // Reads everything; files larger than any image needs are refused.
  void ReadAll();
  bool ended() const { return ended_; }
  Bytes bytes() const { return {bytes_.data(), size_}; }

 private:
  std::ifstream file_;
  std::istream& stream_;
  size_t expected_ = 0;  // 0 if unknown
  std::vector<uint8_t> bytes_;
  size_t size_ = 0;
  bool ended_ = false;
};

}  // namespace omb
