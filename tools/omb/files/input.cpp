#include "files/input.h"

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <limits>
#include <system_error>

#include "files/codec.h"
#include "files/long_path.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace omb {

namespace fs = std::filesystem;

namespace {

// An uncompressed image of the largest size fits, with everything that comes before it.
constexpr size_t kLimit = size_t{std::numeric_limits<int32_t>::max()} + (1 << 20);

constexpr size_t kPiece = size_t{4} << 20;  // read at once

std::istream& StandardInput() {
#ifdef _WIN32
  _setmode(_fileno(stdin), _O_BINARY);
#endif
  return std::cin;
}

}  // namespace

Input::Input(const fs::path& name) : stream_(name == "-" ? StandardInput() : file_) {
  if (name == "-") return;
  const fs::path path = LongPath(name);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) throw FileError("the file does not exist");
  if (fs::is_directory(status)) throw FileError("it is a directory");
  errno = 0;
  file_.open(path, std::ios::binary);
  if (!file_) {
    throw FileError("cannot be opened: " +
                    std::error_code(errno, std::generic_category()).message());
  }
  const auto size = fs::file_size(path, error);
  if (error) return;
  if (size > kLimit) throw FileError("the file is too large");
  expected_ = static_cast<size_t>(size);
}

void Input::ReadTo(size_t wanted) {
  while (!ended_ && size_ < wanted) {
    // In steps if the size is unknown, so that memory grows with what arrives.
    size_t room = std::max({bytes_.size(), size_ + size_ / 2, size_t{1} << 16});
    if (expected_ != 0) room = expected_ + 1;
    room = std::min(room, wanted);
    if (bytes_.size() < room) bytes_.resize(room);
    const size_t piece = std::min(bytes_.size() - size_, kPiece);
    stream_.read(reinterpret_cast<char*>(bytes_.data() + size_),
                 static_cast<std::streamsize>(piece));
    ReportWait();
    size_ += static_cast<size_t>(stream_.gcount());
    if (stream_.bad()) throw FileError("the file cannot be read to its end");
    ended_ = !stream_;
    // A result may replace the file, which not every system allows while it is open.
    if (ended_ && file_.is_open()) file_.close();
    expected_ = size_ > expected_ ? 0 : expected_;
  }
}

void Input::ReadAll() {
  ReadTo(kLimit + 1);
  if (size_ > kLimit) throw FileError("the file is too large");
}

}  // namespace omb
