// A file reader of the host: an image, or an error that says what is wrong with the file.
#include "files/files.h"

#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

// The bytes by which the format is recognised.
std::string Signature(const std::string& format, char first) {
  if (format == "bmp") return "BM";
  if (format == "png") return "\x89PNG\r\n\x1A\n";
  if (format == "jpeg") return "\xFF\xD8\xFF";
  return first == 'M' ? std::string("MM\0*", 4) : std::string("II*\0", 4);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string file(reinterpret_cast<const char*>(data), size);
  const std::string signature = Signature(OMBRILO_FUZZ_FORMAT, file.empty() ? '\0' : file[0]);
  file.replace(0, signature.size(), signature);

  static const std::filesystem::path path =
      std::filesystem::temp_directory_path() /
      ("ombrilo_fuzz_" OMBRILO_FUZZ_FORMAT "_" + std::to_string(getpid()));
  static const int registered = std::atexit([] { std::filesystem::remove(path); });
  (void)registered;
  std::ofstream(path, std::ios::binary) << file;
  try {
    omb::ReadImage(path, [](const std::string&) {});
  } catch (const omb::FileError&) {
  }
  return 0;
}
