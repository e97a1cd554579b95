// A file reader of the host: an image, or an error that says what is wrong with the file.
#include "files/files.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// The bytes by which the format is recognised.
std::string Signature(const std::string& format, uint8_t first) {
  if (format == "bmp") return "BM";
  if (format == "png") return "\x89PNG\r\n\x1A\n";
  if (format == "jpeg") return "\xFF\xD8\xFF";
  return first == 'M' ? std::string("MM\0*", 4) : std::string("II*\0", 4);
}

}  // namespace

extern "C" size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t max_size);

// Every input is a file of the format, so that what is found can be kept as one.
extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t max_size, unsigned) {
  size = LLVMFuzzerMutate(data, size, max_size);
  const std::string signature = Signature(OMBRILO_FUZZ_FORMAT, size == 0 ? uint8_t{0} : data[0]);
  if (signature.size() > max_size) return size;
  std::copy(signature.begin(), signature.end(), data);
  return std::max(size, signature.size());
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::filesystem::path path =
      std::filesystem::temp_directory_path() /
      ("ombrilo_fuzz_" OMBRILO_FUZZ_FORMAT "_" + std::to_string(getpid()));
  static const int registered = std::atexit([] { std::filesystem::remove(path); });
  (void)registered;
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  try {
    omb::ReadImage(path, [](const std::string&) {});
  } catch (const omb::FileError&) {
  }
  return 0;
}
