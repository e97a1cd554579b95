// The formats behind ReadImage and WriteImage: files in memory to images, images to open files.
#pragma once

#include <cstdint>
#include <cstdio>
#include <span>

#include "files/files.h"

namespace omb {

using Bytes = std::span<const uint8_t>;

// Reads a whole file that is in memory, whatever its format. Throws FileError.
Image DecodeImage(Bytes file, const Remark& remark);

// The readers get files of their own format and a remark that can be called. All throw FileError.
Image ReadBmp(Bytes file, const Remark& remark);
Image ReadPng(Bytes file, const Remark& remark);
Image ReadJpeg(Bytes file, const Remark& remark);
Image ReadTiff(Bytes file, const Remark& remark);

// The writers leave it to the caller to find out whether the last bytes reached the disk.
void WriteBmp(const PackedDib* dib, std::FILE* file);
void WritePng(const PackedDib* dib, std::FILE* file);
void WriteJpeg(const PackedDib* dib, std::FILE* file);
void WriteTiff(const PackedDib* dib, std::FILE* file);

// For readers and writers, for each row that is done: tells the thread's watch now and then.
void ReportRow(int64_t row, int64_t rows);

}  // namespace omb
