// The formats behind ImageFile and ImageWriter: files in memory to images, images to open files.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "files/files.h"
#include "files/output.h"

namespace omb {

using Bytes = std::span<const uint8_t>;

// What a reader is given, and what it finds besides the image.
struct Reading {
  Bytes file;
  const Remark& remark;
  size_t page = 0;
  bool pixels = true;  // false: only `info` is wanted, and the reader returns no image
  PageInfo info = {};
  Metadata metadata = {};
};

// Reads the first page of a file in memory, whatever its format. Throws FileError.
Image DecodeImage(Bytes file, const Remark& remark, Metadata* metadata = nullptr);

// The readers get files of their own format and a remark that can be called. All throw FileError.
Image ReadBmp(Reading& reading);
Image ReadPackedDib(Reading& reading);
Image ReadPng(Reading& reading);
Image ReadJpeg(Reading& reading);
Image ReadTiff(Reading& reading);
size_t CountTiffPages(Bytes file);

// Whether bytes that no format begins with are a header of a packed DIB.
bool IsPackedDib(Bytes file);

struct Writing {
  Output& out;
  const WriteOptions& options;
  const Remark& remark;
};

// The writers leave it to the caller to find out whether the last bytes reached the disk.
void WriteBmp(const PackedDib* dib, const Metadata& metadata, const Writing& writing);
void WritePng(const PackedDib* dib, const Metadata& metadata, const Writing& writing);
void WriteJpeg(const PackedDib* dib, const Metadata& metadata, const Writing& writing);

// The names of TIFF compressions in WriteOptions::compression.
inline constexpr const char* kTiffCompressions[] = {"none",    "packbits", "lzw",
                                                    "deflate", "jpeg",     "g4"};

class TiffPages {
 public:
  virtual ~TiffPages() = default;
  virtual void Add(const PackedDib* dib, const Metadata& metadata) = 0;
  virtual void Finish() = 0;
};
std::unique_ptr<TiffPages> WriteTiff(const Writing& writing);

// Readers and writers call it after each row; it informs the thread's watch now and then.
void ReportRow(int64_t row, int64_t rows);
// Between pieces of what comes before the first row.
void ReportWait();

}  // namespace omb
