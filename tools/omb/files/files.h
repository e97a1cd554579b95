// Image files: what the host reads and writes.
//
// Files come from anywhere. Every size in them is checked against the file and against sane limits
// before memory is taken, and what is wrong with one is said in one line.
#pragma once

#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>

#include "image.h"

namespace omb {

// What is wrong with a file, in a few words that follow the file's name: "the color table of 300
// entries does not fit 8 bits".
struct FileError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// Hears remarks on a file that could be read: "transparency is composed on white".
using Remark = std::function<void(const std::string&)>;

// Hears which share of a file is read or written, from 0 to 1. What it throws ends the work, and no
// file is changed then.
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

// What kind of file it is, for people: "PNG", "BMP with a core header of 12 bytes". Throws
// FileError.
std::string KindOfFile(const std::filesystem::path& path);

// Reads an image; the format is recognised by the file's first bytes, not by its name. The result
// has a 40-byte header, bottom-up rows, a color table of the depth's full size and, where the file
// says it, the resolution. Images of 16 and 32 bits come from BMP files alone; where their layout
// is not the usual one, they have biCompression 3 and the three masks as the color table. Throws
// FileError.
Image ReadImage(const std::filesystem::path& path, const Remark& remark);

// Writes an image to a temporary file beside `path` and renames it: the target is either complete
// or as it was. Throws FileError.
void WriteImage(const std::filesystem::path& path, Format format, const PackedDib* dib);

}  // namespace omb
