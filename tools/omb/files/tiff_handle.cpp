#include "files/tiff_handle.h"

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <new>

namespace omb {

namespace {

struct Text {
  char text[sizeof(TiffErrors::text)];
  Text(const char* format, va_list arguments) {
    std::vsnprintf(text, sizeof text, format, arguments);
  }
};

void Keep(TiffErrors* errors, const char* text) {
  if (errors->any()) return;
  // Some texts begin with the name of the file, which is empty here.
  std::strcpy(errors->text, std::strncmp(text, ": ", 2) == 0 ? text + 2 : text);
}

int OnError(TIFF*, void* user, const char*, const char* format, va_list arguments) {
  Keep(static_cast<TiffErrors*>(user), Text(format, arguments).text);
  return 1;
}

// The JPEG decoder makes up pixels that a file lacks, and only warns.
int OnWarning(TIFF*, void* user, const char* module, const char* format, va_list arguments) {
  if (module == nullptr || std::strcmp(module, "JPEGLib") != 0) return 1;
  const Text warning(format, arguments);
  if (std::strstr(warning.text, "end of") == nullptr) return 1;
  Keep(static_cast<TiffErrors*>(user), warning.text);
  return 1;
}

// What libtiff does to a file in memory or to a stream.
struct Access {
  TIFFReadWriteProc read, write;
  TIFFSeekProc seek;
  TIFFSizeProc size;
};

Tiff OpenTiff(const char* mode, thandle_t handle, const Access& access, TiffErrors& errors) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
      TIFFOpenOptionsAlloc(), TIFFOpenOptionsFree);
  if (!options) throw std::bad_alloc();
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxTiffAllocation);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), OnError, &errors);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), OnWarning, &errors);
  const TIFFCloseProc close = [](thandle_t) { return 0; };
  return Tiff(TIFFClientOpenExt("", mode, handle, access.read, access.write, access.seek, close,
                                access.size, nullptr, nullptr, options.get()));
}

const Access kMemoryAccess = {
    .read = [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
      auto* file = static_cast<TiffMemory*>(handle);
      const uint64_t size = file->bytes.size();
      const uint64_t rest = size - std::min(file->position, size);
      const uint64_t taken = std::min(rest, static_cast<uint64_t>(std::max<tmsize_t>(count, 0)));
      if (taken != 0) std::memcpy(to, file->bytes.data() + file->position, taken);
      file->position += taken;
      return static_cast<tmsize_t>(taken);
    },
    .write = [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
    .seek = [](thandle_t handle, toff_t offset, int whence) -> toff_t {
      auto* file = static_cast<TiffMemory*>(handle);
      const uint64_t base = whence == SEEK_CUR   ? file->position
                            : whence == SEEK_END ? file->bytes.size()
                                                 : 0;
      return file->position = base + offset;
    },
    .size = [](thandle_t handle) -> toff_t {
      return static_cast<TiffMemory*>(handle)->bytes.size();
    },
};

std::FILE* StreamOf(thandle_t handle) { return static_cast<Output*>(handle)->stream(); }

const Access kOutputAccess = {
    .read = [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
      return static_cast<tmsize_t>(std::fread(to, 1, static_cast<size_t>(count), StreamOf(handle)));
    },
    .write = [](thandle_t handle, void* from, tmsize_t count) -> tmsize_t {
      const bool written = static_cast<Output*>(handle)->Write(from, static_cast<size_t>(count));
      return written ? count : 0;
    },
    .seek = [](thandle_t handle, toff_t offset, int whence) -> toff_t {
      std::FILE* stream = StreamOf(handle);
      errno = 0;
      if (fseeko(stream, static_cast<off_t>(offset), whence) != 0) {
        static_cast<Output*>(handle)->Failed();  // bytes were waiting to be written
        return static_cast<toff_t>(-1);
      }
      return static_cast<toff_t>(ftello(stream));
    },
    .size = [](thandle_t handle) -> toff_t {
      std::FILE* stream = StreamOf(handle);
      const off_t position = ftello(stream);
      fseeko(stream, 0, SEEK_END);
      const off_t size = ftello(stream);
      fseeko(stream, position, SEEK_SET);
      return static_cast<toff_t>(size);
    },
};

}  // namespace

void TiffErrors::Fail(const std::string& what) const {
  throw FileError(any() ? what + ": " + text : what);
}

Tiff OpenTiffMemory(TiffMemory& memory, TiffErrors& errors) {
  return OpenTiff("rm", &memory, kMemoryAccess, errors);
}

Tiff OpenTiffOutput(Output& output, TiffErrors& errors) {
  return OpenTiff("w", &output, kOutputAccess, errors);
}

}  // namespace omb
