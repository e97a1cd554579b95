#include "files/files.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "core/bytes.h"
#include "files/codec.h"
#include "files/input.h"
#include "files/temporary_file.h"
#include "text.h"

namespace omb {

namespace fs = std::filesystem;

namespace {

struct Codec {
  Format format;
  const char* title;
  std::vector<std::string> names;  // the first is the usual extension
  std::vector<std::string_view> signatures;
  Image (*read)(Reading&);
  void (*write)(const PackedDib*, const Metadata&, const Writing&);  // null: pages
};

const std::array<Codec, 5>& Codecs() {
  using namespace std::string_view_literals;
  static const std::array<Codec, 5> codecs = {{
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
       nullptr},
      // Last: it has no signature.
      {Format::kBmp, "packed DIB", {}, {}, ReadPackedDib, WriteBmp},
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
  if (IsPackedDib(file)) return Codecs().back();
  throw FileError("it is not a BMP, PNG, JPEG or TIFF file");
}

const Codec* FindName(const std::string& name) {
  const std::string lower = Lowercase(name);
  for (const Codec& codec : Codecs()) {
    if (std::ranges::find(codec.names, lower) != codec.names.end()) return &codec;
  }
  return nullptr;
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

const char* TitleOf(Format format) { return CodecOf(format).title; }

namespace {

// Enough for the header at the beginning of a file, profiles and the like included.
constexpr size_t kHeadSize = 1 << 20;
constexpr size_t kSignatureSize = 32;

void Ignore(const std::string&) {}

const Remark& Heard(const Remark& remark) {
  static const Remark ignore = Ignore;
  return remark ? remark : ignore;
}

// Says what the memory was for when it runs out.
template <class Work>
auto WithMemory(const char* purpose, Work work) try {
  return work();
} catch (const std::bad_alloc&) {
  throw FileError(std::string("there is not enough memory to ") + purpose + " it");
}

Image Decode(const Codec& codec, Reading& reading) {
  return WithMemory("read", [&] { return codec.read(reading); });
}

size_t CountPages(const Codec& codec, Bytes file) {
  return codec.format == Format::kTiff ? CountTiffPages(file) : 1;
}

}  // namespace

struct ImageFile::Parts {
  Input input;
  const Codec* codec = nullptr;

  // Tries what may need no more than the head of the file.
  template <class Work>
  auto WithHead(Work work) {
    return WithMemory("read", [&] {
      input.ReadTo(kHeadSize);
      if (!input.ended()) {
        try {
          return work(input.bytes());
        } catch (const FileError&) {
        }
      }
      input.ReadAll();
      return work(input.bytes());
    });
  }
};

// The signature comes first: a file that is not an image is not read.
ImageFile::ImageFile(const fs::path& path) : parts_(new Parts{Input(path)}) {
  parts_->input.ReadTo(kSignatureSize);
  parts_->codec = &CodecOf(parts_->input.bytes());
}

ImageFile::~ImageFile() = default;

Format ImageFile::format() const { return parts_->codec->format; }

std::string ImageFile::kind() const {
  const Codec& codec = *parts_->codec;
  if (codec.format != Format::kBmp) return codec.title;
  const bool packed = codec.signatures.empty();
  parts_->input.ReadTo(kSignatureSize);
  const uint32_t size = ombrilo::LoadU32(parts_->input.bytes().data() + (packed ? 0 : 14));
  const char* kind = size == 12    ? "a core"
                     : size == 108 ? "a version 4"
                     : size == 124 ? "a version 5"
                                   : "an information";
  return std::string(codec.title) + " with " + kind + " header of " + std::to_string(size) +
         " bytes";
}

size_t ImageFile::pages() {
  return parts_->WithHead([&](Bytes bytes) { return CountPages(*parts_->codec, bytes); });
}

PageInfo ImageFile::Info(size_t page) {
  return parts_->WithHead([&](Bytes bytes) {
    Reading reading = {bytes, Heard({}), page, false};
    parts_->codec->read(reading);
    return std::move(reading.info);
  });
}

Image ImageFile::Read(size_t page, const Remark& remark, Metadata* metadata) {
  WithMemory("read", [&] { parts_->input.ReadAll(); });
  Reading reading = {parts_->input.bytes(), Heard(remark), page};
  Image image = Decode(*parts_->codec, reading);
  if (metadata != nullptr) *metadata = std::move(reading.metadata);
  return image;
}

Image DecodeImage(Bytes file, const Remark& remark, Metadata* metadata) {
  const Codec& codec = CodecOf(file);
  Reading reading = {file, Heard(remark)};
  Image image = Decode(codec, reading);
  if (CountPages(codec, file) > 1) reading.remark("it has several pages; the first one is read");
  if (metadata != nullptr) *metadata = std::move(reading.metadata);
  return image;
}

Image ReadImage(const fs::path& path, const Remark& remark, Metadata* metadata) {
  ImageFile file(path);
  Image image = file.Read(0, remark, metadata);
  if (file.pages() > 1) Heard(remark)("it has several pages; the first one is read");
  return image;
}

struct ImageWriter::Parts {
  const Codec& codec;
  WriteOptions options;
  Remark remark;
  TemporaryFile file;
  std::unique_ptr<TiffPages> pages;

  Writing writing() { return {file.output(), options, remark}; }

  // The system's message, of a full disk for example, says more than the codecs'.
  template <class Work>
  void Try(Work work) try {
    WithMemory("write", work);
  } catch (const FileError&) {
    if (file.output().error()) CannotWrite(file.output().error());
    throw;
  }
};

ImageWriter::ImageWriter(const fs::path& path, Format format, const WriteOptions& options,
                         const Remark& remark)
    : parts_(new Parts{CodecOf(format), options, Heard(remark), TemporaryFile(path), nullptr}) {}

ImageWriter::~ImageWriter() = default;

void ImageWriter::Add(const PackedDib* dib, const Metadata& metadata) {
  Parts& parts = *parts_;
  parts.Try([&] {
    if (parts.codec.write != nullptr) return parts.codec.write(dib, metadata, parts.writing());
    if (!parts.pages) parts.pages = WriteTiff(parts.writing());
    parts.pages->Add(dib, metadata);
  });
}

void ImageWriter::Commit() {
  Parts& parts = *parts_;
  parts.Try([&] {
    if (parts.pages) parts.pages->Finish();
    parts.pages.reset();
    parts.file.Commit();
  });
}

void WriteImage(const fs::path& path, Format format, const PackedDib* dib, const Metadata& metadata,
                const Remark& remark) {
  ImageWriter writer(path, format, {}, remark);
  writer.Add(dib, metadata);
  writer.Commit();
}

void CheckOptions(Format format, const WriteOptions& options) {
  if (!options.compression) return;
  const std::string& name = *options.compression;
  if (format == Format::kPng) {
    if (name.size() == 1 && name[0] >= '0' && name[0] <= '9') return;
    throw FileError("the compression of PNG is a number from 0 to 9");
  }
  if (format != Format::kTiff) {
    throw FileError(std::string("there is no choice of compression in ") + TitleOf(format));
  }
  for (const char* known : kTiffCompressions) {
    if (name == known) return;
  }
  throw FileError("the compression of TIFF is none, packbits, lzw, deflate, jpeg or g4");
}

}  // namespace omb
