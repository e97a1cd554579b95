#include "files/temporary_file.h"

#include <cerrno>
#include <random>
#include <system_error>

#include "files/files.h"
#include "files/long_path.h"

namespace omb {

namespace fs = std::filesystem;

namespace {

[[noreturn]] void CannotWrite(const std::error_code& why) {
  throw FileError("cannot be written: " + why.message());
}

std::error_code LastError() { return {errno, std::generic_category()}; }

// Opens a new file for writing and reading back.
std::FILE* OpenNew(const fs::path& path) {
#ifdef _WIN32
  // This C runtime has no mode for new files only; the name is one that nobody else uses.
  return _wfopen(path.c_str(), L"w+b");
#else
  return std::fopen(path.c_str(), "w+bx");
#endif
}

std::string UnpredictableName() {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::random_device random;
  std::string name = ".omb-";
  for (int i = 0; i < 4; ++i) {
    unsigned bits = random();
    for (int k = 0; k < 4; ++k, bits >>= 4) name += kDigits[bits & 15];
  }
  return name + ".tmp";
}

// Where a link leads, so that the file behind it is replaced and not the link.
fs::path Followed(const fs::path& target) {
  std::error_code error;
  if (!fs::is_symlink(target, error)) return target;
  const fs::path followed = fs::weakly_canonical(target, error);
  return error ? target : followed;
}

}  // namespace

TemporaryFile::TemporaryFile(const fs::path& target) : target_(Followed(LongPath(target))) {
  std::error_code error;
  const fs::file_status status = fs::status(target_, error);
  // Renaming over a device would take it away from everybody.
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    throw FileError("cannot be written: it is not a regular file");
  }
  path_ = target_.parent_path() / UnpredictableName();
  stream_ = OpenNew(path_);
  if (stream_ == nullptr) CannotWrite(LastError());
  if (fs::exists(status)) fs::permissions(path_, status.permissions(), error);
}

TemporaryFile::~TemporaryFile() {
  if (stream_ != nullptr) std::fclose(stream_);
  std::error_code error;
  if (!path_.empty()) fs::remove(path_, error);
}

void TemporaryFile::Commit() {
  errno = 0;
  const bool failed = std::fflush(stream_) != 0 || std::ferror(stream_) != 0;
  std::error_code error = LastError();
  const bool not_closed = std::fclose(stream_) != 0;
  stream_ = nullptr;
  if (not_closed && !failed) error = LastError();
  if (failed || not_closed) CannotWrite(error ? error : std::make_error_code(std::errc::io_error));
  fs::rename(path_, target_, error);
  if (error) CannotWrite(error);
  path_.clear();
}

}  // namespace omb
