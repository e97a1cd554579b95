// Stands where the compressed formats have no codec.
#include "files/codec.h"

namespace omb {

namespace {

[[noreturn]] void Missing(const char* format) {
  throw FileError(std::string(format) + " files are not supported by this build");
}

}  // namespace

Image ReadPng(Bytes, const Remark&) { Missing("PNG"); }
Image ReadJpeg(Bytes, const Remark&) { Missing("JPEG"); }
Image ReadTiff(Bytes, const Remark&) { Missing("TIFF"); }
void WritePng(const PackedDib*, std::FILE*) { Missing("PNG"); }
void WriteJpeg(const PackedDib*, std::FILE*) { Missing("JPEG"); }
void WriteTiff(const PackedDib*, std::FILE*) { Missing("TIFF"); }

}  // namespace omb
