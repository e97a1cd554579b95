#include "files/temporary_file.h"

#include <random>

#include "files/files.h"
#include "files/long_path.h"
#include "files/open_files.h"

namespace omb {

namespace fs = std::filesystem;

namespace {

constexpr int kMostLinks = 40;

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

// Where a link leads, even if nothing is there yet: its target is replaced, not the link.
fs::path Followed(fs::path target) {
  std::error_code error;
  for (int i = 0; i < kMostLinks && fs::is_symlink(target, error); ++i) {
    const fs::path next = fs::read_symlink(target, error);
    if (error) break;
    target = next.is_absolute() ? next : target.parent_path() / next;
  }
  return target;
}

}  // namespace

void CannotWrite(const std::error_code& why) {
  throw FileError("cannot be written: " + why.message());
}

TemporaryFile::TemporaryFile(const fs::path& target) {
  fs::perms permissions = fs::perms::unknown;
  if (target == "-") {
    path_ = fs::temp_directory_path() / UnpredictableName();
  } else {
    target_ = Followed(LongPath(target));
    std::error_code error;
    const fs::file_status status = fs::status(target_, error);
    // Renaming over a device would remove it for everybody.
    if (fs::exists(status) && !fs::is_regular_file(status)) {
      throw FileError("cannot be written: it is not a regular file");
    }
    if (fs::exists(status)) permissions = status.permissions();
    path_ = target_.parent_path() / UnpredictableName();
  }
  std::FILE* const stream = OpenNew(path_);
  if (stream == nullptr) CannotWrite({errno, std::generic_category()});
  output_.emplace(stream);
  listed_ = ListOpenFile(path_, stream);
  if (target_.empty()) return;
  SetPermissions(stream, permissions);
}

TemporaryFile::~TemporaryFile() {
  if (output_) std::fclose(output_->stream());
  std::error_code error;
  if (!path_.empty()) fs::remove(path_, error);
  UnlistOpenFile(listed_);
}

void TemporaryFile::Commit() {
  errno = 0;
  if (std::fflush(output_->stream()) != 0 || std::ferror(output_->stream()) != 0) {
    output_->Failed();
  }
  if (!output_->error() && target_.empty()) return CopyToStandardOutput();
  // A rename may reach the disk before the bytes do.
  if (!output_->error() && !Synchronize(output_->stream())) output_->Failed();
  if (std::fclose(output_->stream()) != 0) output_->Failed();
  const std::error_code failure = output_->error();
  output_.reset();
  if (failure) CannotWrite(failure);
  std::error_code error;
  fs::rename(path_, target_, error);
  if (error) CannotWrite(error);
  path_.clear();
}

void TemporaryFile::CopyToStandardOutput() {
  Output standard(BinaryStandardOutput());
  std::rewind(output_->stream());
  char bytes[1 << 16];
  while (const size_t count = std::fread(bytes, 1, sizeof bytes, output_->stream())) {
    if (!standard.Write(bytes, count)) CannotWrite(standard.error());
  }
  if (std::ferror(output_->stream()) != 0) standard.Failed();
  if (std::fflush(standard.stream()) != 0) standard.Failed();
  if (standard.error()) CannotWrite(standard.error());
}

}  // namespace omb
