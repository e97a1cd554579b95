// Image files: what the host reads and writes.
//
// Files come from anywhere. Every size in them is checked against the file and against sane limits
// before memory is taken, and what is wrong with one is said in one line.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "image.h"

namespace omb {

// What is wrong with a file, in a few words that follow the file's name: "the color table of 300
// entries does not fit 8 bits".
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Receives remarks on a file that could be read: "transparency is composed on white".
using Remark = std::function<void(const std::string&)>;

// Receives the share of a file that has been read or written, from 0 to 1: of BMP files, on Windows
// of all. What it throws ends the work, and then no file is changed.
using Watch = std::function<void(double share)>;

// Watches what this thread reads and writes for as long as it lives.
class Watching {
 public:
  explicit Watching(Watch watch);
  ~Watching();
  Watching(const Watching&) = delete;
  Watching& operator=(const Watching&) = delete;
};

enum class Format { kBmp, kPng, kJpeg, kTiff };

// The format that a file name's extension or a word such as "png" names. Throws FileError.
Format FormatOfPath(const std::filesystem::path& path);
Format FormatOfName(const std::string& name);
const char* ExtensionOf(Format format);  // "png"
const char* TitleOf(Format format);      // "PNG"

// Dots per meter; 0 if unknown.
struct Resolution {
  int32_t x = 0;
  int32_t y = 0;
};

// What a file holds besides pixels; it is passed on to results that can hold it.
struct Metadata {
  std::vector<uint8_t> profile;  // an ICC profile
  std::vector<uint8_t> exif;     // as a JPEG file has it, "Exif" and two zeros first
  bool jpeg = false;             // a page of a TIFF file whose pixels were JPEG data
};

// What a page's header says: enough for people who ask what a file is.
struct PageInfo {
  int64_t width = 0, height = 0;  // upright
  uint16_t bit_count = 0;         // as it is read
  std::string stored;             // "16 bits of gray with alpha"
  Resolution resolution;
  std::optional<bool> gray;  // whether all colors are; none if only the pixels tell
  size_t profile = 0;        // bytes of an ICC profile
  bool exif = false;
};

// An open file of images; "-" is standard input. The format is recognised by the first bytes, not
// by the name. Everything throws FileError.
class ImageFile {
 public:
  explicit ImageFile(const std::filesystem::path& path);
  ~ImageFile();

  Format format() const;
  std::string kind() const;  // for people: "PNG", "BMP with a core header of 12 bytes"
  size_t pages();            // 1, except of TIFF files
  // Pages count from 0. As far as possible without reading the file to its end.
  PageInfo Info(size_t page);
  // The result has a 40-byte header, bottom-up rows, a color table of the depth's full size and,
  // where the file says it, the resolution. Images of 16 and 32 bits come from BMP files alone;
  // where their layout is not the usual one, they have biCompression 3 and the three masks as the
  // color table.
  Image Read(size_t page, const Remark& remark, Metadata* metadata = nullptr);

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

// The first page, with a remark where there are more.
Image ReadImage(const std::filesystem::path& path, const Remark& remark,
                Metadata* metadata = nullptr);

struct WriteOptions {
  int quality = 92;                        // of JPEG data, 1 to 100
  std::optional<std::string> compression;  // of TIFF by name, of PNG from 0 to 9
};
// Throws FileError where the format has no such compression.
void CheckOptions(Format format, const WriteOptions& options);

// Writes images to a temporary file beside `path` and renames it: the target is either complete or
// as it was. "-" is standard output. Everything throws FileError.
class ImageWriter {
 public:
  ImageWriter(const std::filesystem::path& path, Format format, const WriteOptions& options,
              const Remark& remark);
  ~ImageWriter();

  // The next page. Formats other than TIFF hold one.
  void Add(const PackedDib* dib, const Metadata& metadata);
  void Commit();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

// Writes one image.
void WriteImage(const std::filesystem::path& path, Format format, const PackedDib* dib,
                const Metadata& metadata = {}, const Remark& remark = {});

}  // namespace omb
