#include "files/files.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <limits>
#include <new>
#include <string_view>
#include <system_error>
#include <vector>

#include "core/bytes.h"
#include "files/codec.h"
#include "files/long_path.h"
#include "files/temporary_file.h"

namespace omb {

namespace fs = std::filesystem;

namespace {

struct Codec {
  Format format;
  const char* title;
  std::vector<std::string> names;  // the first is the usual extension
  std::vector<std::string_view> signatures;
  Image (*read)(Bytes, const Remark&);
  void (*write)(const PackedDib*, std::FILE*);
};

const std::array<Codec, 4>& Codecs() {
  using namespace std::string_view_literals;
  static const std::array<Codec, 4> codecs = {{
      {Format::kBmp, "BMP", {"bmp", "dib"}, {"BM"sv}, ReadBmp, WriteBmp},
      {Format::kPng, "PNG", {"png"}, {"\x89PNG\r\n\x1a\n"sv}, ReadPng, WritePng},
      {Format::kJpeg,
       "JPEG",
       {"jpg", "jpeg", "jpe", "jfif"},
       {"\xFF\xD8\xFF"sv},
       ReadJpeg,
       WriteJpeg},
      {Format::kTiff,
       "TIFF",
       {"tif", "tiff"},
       {"II*\0"sv, "MM\0*"sv, "II+\0"sv, "MM\0+"sv},
       ReadTiff,
       WriteTiff},
  }};
  return codecs;
}

const Codec& CodecOf(Format format) { return *std::ranges::find(Codecs(), format, &Codec::format); }

// By a file's first bytes, not by its name. Throws FileError.
const Codec& CodecOf(Bytes file) {
  if (file.empty()) throw FileError("the file is empty");
  for (const Codec& codec : Codecs()) {
    for (const std::string_view signature : codec.signatures) {
      if (file.size() >= signature.size() &&
          std::memcmp(file.data(), signature.data(), signature.size()) == 0) {
        return codec;
      }
    }
  }
  throw FileError("it is not a BMP, PNG, JPEG or TIFF file");
}

// Letters of other alphabets name no format, so ASCII will do.
std::string Lower(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

const Codec* FindName(const std::string& name) {
  const std::string lower = Lower(name);
  for (const Codec& codec : Codecs()) {
    if (std::ranges::find(codec.names, lower) != codec.names.end()) return &codec;
  }
  return nullptr;
}

std::ifstream Open(const fs::path& name) {
  const fs::path path = LongPath(name);
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::exists(status)) throw FileError("the file does not exist");
  if (fs::is_directory(status)) throw FileError("it is a directory");
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  if (!stream) {
    throw FileError("cannot be opened: " +
                    std::error_code(errno, std::generic_category()).message());
  }
  return stream;
}

// The file, which may be a pipe: its size is known when it has ended.
std::vector<uint8_t> ReadBytes(const fs::path& path) {
  // An uncompressed image of the largest size fits, with everything that stands before it.
  constexpr size_t kLimit = size_t{std::numeric_limits<int32_t>::max()} + (1 << 20);
  std::ifstream stream = Open(path);
  std::error_code error;
  std::vector<uint8_t> bytes;
  const auto expected = fs::file_size(LongPath(path), error);
  if (!error) {
    if (expected > kLimit) throw FileError("the file is too large");
    bytes.reserve(static_cast<size_t>(expected) + 1);
  }
  size_t size = 0;
  while (stream) {
    if (size > kLimit) throw FileError("the file is too large");
    bytes.resize(std::max<size_t>({bytes.capacity(), size + size / 2, 1 << 16}));
    stream.read(reinterpret_cast<char*>(bytes.data() + size),
                static_cast<std::streamsize>(bytes.size() - size));
    size += static_cast<size_t>(stream.gcount());
  }
  if (stream.bad()) throw FileError("the file cannot be read to its end");
  bytes.resize(size);
  return bytes;
}

}  // namespace

Format FormatOfName(const std::string& name) {
  if (const Codec* codec = FindName(name)) return codec->format;
  throw FileError("\"" + name + "\" is none of the formats bmp, png, jpeg and tiff");
}

Format FormatOfPath(const fs::path& path) {
  const auto extension = path.extension().u8string();
  if (extension.size() < 2) throw FileError("the name has no extension that says its format");
  return FormatOfName(std::string(extension.begin() + 1, extension.end()));
}

const char* ExtensionOf(Format format) { return CodecOf(format).names.front().c_str(); }

std::string KindOfFile(const fs::path& path) {
  uint8_t head[18] = {};
  std::ifstream stream = Open(path);
  stream.read(reinterpret_cast<char*>(head), sizeof head);
  const Codec& codec = CodecOf(Bytes(head, static_cast<size_t>(stream.gcount())));
  if (codec.format != Format::kBmp) return codec.title;
  const uint32_t size = ombrilo::LoadU32(head + 14);
  const char* kind = size == 12    ? "a core"
                     : size == 108 ? "a version 4"
                     : size == 124 ? "a version 5"
                                   : "an information";
  return std::string(codec.title) + " with " + kind + " header of " + std::to_string(size) +
         " bytes";
}

Image DecodeImage(Bytes file, const Remark& remark) try {
  const Remark heard = remark ? remark : [](const std::string&) {};
  return CodecOf(file).read(file, heard);
} catch (const std::bad_alloc&) {
  throw FileError("there is not enough memory to read it");
}

Image ReadImage(const fs::path& path, const Remark& remark) try {
  if (path == "-") throw FileError("standard input is not read; name a file");
  return DecodeImage(ReadBytes(path), remark);
} catch (const std::bad_alloc&) {
  throw FileError("there is not enough memory to read it");
}

void WriteImage(const fs::path& path, Format format, const PackedDib* dib) try {
  if (path == "-") throw FileError("standard output is not written to; name a file");
  TemporaryFile file(path);
  CodecOf(format).write(dib, file.stream());
  file.Commit();
} catch (const std::bad_alloc&) {
  throw FileError("there is not enough memory to write it");
}

}  // namespace omb
