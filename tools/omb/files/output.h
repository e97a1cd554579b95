// A file that is being written, which remembers what went wrong first.
#pragma once

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace omb {

class Output {
 public:
  explicit Output(std::FILE* stream) : stream_(stream) {}

  bool Write(const void* bytes, size_t size) {
    if (size == 0) return true;
    errno = 0;
    if (std::fwrite(bytes, 1, size, stream_) == size) return true;
    Failed();
    return false;
  }
  // Keeps errno, which later calls may overwrite.
  void Failed() {
    if (!error_) error_ = {errno != 0 ? errno : EIO, std::generic_category()};
  }

  std::FILE* stream() const { return stream_; }
  const std::error_code& error() const { return error_; }

 private:
  std::FILE* stream_;
  std::error_code error_;
};

}  // namespace omb
