// libtiff's handle on a file in memory or on one that is being written. Errors are return values;
// their text goes to a handler of that file alone.
#pragma once

#include <tiffio.h>

#include <memory>

#include "files/codec.h"

namespace omb {

// libtiff allocates no more than this at once.
inline constexpr tmsize_t kMaxTiffAllocation = tmsize_t{1} << 30;

struct TiffErrors {
  char text[300] = "";  // the first one

  bool any() const { return text[0] != '\0'; }
  [[noreturn]] void Fail(const std::string& what) const;
};

struct CloseTiff {
  void operator()(TIFF* tiff) const { TIFFClose(tiff); }
};
using Tiff = std::unique_ptr<TIFF, CloseTiff>;

struct TiffMemory {
  Bytes bytes;
  uint64_t position = 0;
};

// Both must outlive the handle. Null, and a text in `errors`, if it is not a TIFF file.
Tiff OpenTiffMemory(TiffMemory& memory, TiffErrors& errors);
Tiff OpenTiffOutput(Output& output, TiffErrors& errors);

}  // namespace omb
