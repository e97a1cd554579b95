#include "files/container.h"

#include <algorithm>

#include "files/metadata.h"
#include "files/segments.h"

namespace omb {

namespace {

// Numbers at offsets, in either byte order.
class Numbers {
 public:
  Numbers(Bytes bytes, bool big_endian) : bytes_(bytes), big_endian_(big_endian) {}

  uint32_t U8(size_t at) const { return Number(at, 1); }
  uint32_t U16(size_t at) const { return Number(at, 2); }
  uint32_t U32(size_t at) const { return Number(at, 4); }
  // Whether `count` bytes from `at` are there.
  bool Has(uint64_t at, uint64_t count) const {
    return at <= bytes_.size() && count <= bytes_.size() - at;
  }
  // Writes where Number() would read.
  void Store(std::span<uint8_t> bytes, size_t at, size_t count, uint32_t value) const {
    if (!Has(at, count)) throw FileError("the file ends early");
    for (size_t i = 0; i < count; ++i, value >>= 8) {
      bytes[at + (big_endian_ ? count - 1 - i : i)] = static_cast<uint8_t>(value);
    }
  }

 private:
  uint32_t Number(size_t at, size_t count) const {
    if (!Has(at, count)) throw FileError("the file ends early");
    uint32_t value = 0;
    for (size_t i = 0; i < count; ++i) {
      value = value << 8 | bytes_[at + (big_endian_ ? i : count - 1 - i)];
    }
    return value;
  }

  Bytes bytes_;
  bool big_endian_;
};

// A TIFF directory's entries of short and long numbers and fractions.
class TiffDirectory {
 public:
  explicit TiffDirectory(Bytes file) : numbers_(file, file[0] == 'M') {
    if (numbers_.U16(2) != 42) throw FileError("TIFF files of 64-bit offsets are not supported");
    Open(numbers_.U32(4));
  }

  // Another directory of the same file.
  TiffDirectory At(size_t at) const {
    TiffDirectory other = *this;
    other.Open(at);
    return other;
  }

  // Goes to the next page's directory; false when there is none.
  bool Next() {
    const uint32_t next = numbers_.U32(next_at());
    if (next != 0) Open(next);
    return next != 0;
  }

  // The place of the next directory is missing from some EXIF blocks.
  bool SaysNext() const { return numbers_.Has(next_at(), 4); }

  uint32_t Value(uint32_t tag, uint32_t otherwise) const {
    const Entry entry = Find(tag);
    return entry.count == 0 ? otherwise : entry.Value(0, numbers_);
  }

  double Fraction(uint32_t tag) const {
    const Entry entry = Find(tag);
    if (entry.type != 5 || entry.count == 0) return 0;
    const size_t at = entry.Place(8, numbers_);
    const double below = numbers_.U32(at + 4);
    return below == 0 ? 0 : numbers_.U32(at) / below;
  }

  // Visits offset and size of each strip, tile or thumbnail; all must lie in the file.
  template <class Visit>
  void VisitPlaces(uint32_t places_tag, uint32_t sizes_tag, Visit visit) const {
    const Entry places = Find(places_tag), sizes = Find(sizes_tag);
    for (uint32_t i = 0; i < std::min(places.count, sizes.count); ++i) {
      const uint32_t place = places.Value(i, numbers_), size = sizes.Value(i, numbers_);
      if (!numbers_.Has(place, size)) throw FileError("the file ends early");
      visit(place, size);
    }
  }
  void CheckPlaces(uint32_t places_tag, uint32_t sizes_tag) const {
    VisitPlaces(places_tag, sizes_tag, [](uint32_t, uint32_t) {});
  }

  // Changes a number where there is one. `bytes` are those that the directory was opened on.
  void Set(std::span<uint8_t> bytes, uint32_t tag, uint32_t value) const {
    const Entry entry = Find(tag);
    if (entry.count != 1 || (entry.type != 3 && entry.type != 4)) return;
    numbers_.Store(bytes, entry.value_at, entry.type == 3 ? 2 : 4, value);
  }
  // Makes the directory the last one.
  void CutOff(std::span<uint8_t> bytes) const { numbers_.Store(bytes, next_at(), 4, 0); }

 private:
  void Open(size_t at) {
    first_ = at;
    count_ = numbers_.U16(first_);
    if (!numbers_.Has(first_ + 2, 12 * count_)) throw FileError("the file ends early");
  }
  size_t next_at() const { return first_ + 2 + 12 * count_; }

  struct Entry {
    uint32_t type = 0, count = 0;
    size_t value_at = 0;
    // Values are in the entry itself if they fit.
    size_t Place(size_t size, const Numbers& numbers) const {
      return count * uint64_t{size} <= 4 ? value_at : numbers.U32(value_at);
    }
    uint32_t Value(uint32_t index, const Numbers& numbers) const {
      const size_t size = type == 3 ? 2 : 4;
      const size_t at = Place(size, numbers) + size * index;
      return size == 2 ? numbers.U16(at) : numbers.U32(at);
    }
  };

  // A count of 0 if the tag is missing.
  Entry Find(uint32_t tag) const {
    for (size_t i = 0; i < count_; ++i) {
      const size_t at = first_ + 2 + 12 * i;
      if (numbers_.U16(at) == tag) return Entry{numbers_.U16(at + 2), numbers_.U32(at + 4), at + 8};
    }
    return {};
  }

  Numbers numbers_;
  size_t first_ = 0;
  size_t count_ = 0;
};

constexpr uint32_t kWidthTag = 256, kHeightTag = 257, kBitsTag = 258, kCompressionTag = 259,
                   kPhotometricTag = 262, kStripsTag = 273, kOrientationTag = 274,
                   kSamplesTag = 277, kStripSizesTag = 279, kXResolutionTag = 282,
                   kYResolutionTag = 283, kUnitTag = 296, kTilesTag = 324, kTileSizesTag = 325,
                   kSampleFormatTag = 339, kThumbnailTag = 513, kThumbnailSizeTag = 514,
                   kExifTag = 34665, kExifWidthTag = 40962, kExifHeightTag = 40963;

constexpr size_t kMostPages = 65535;

Resolution ResolutionOf(const TiffDirectory& directory) {
  const uint32_t unit = directory.Value(kUnitTag, 2);
  return ResolutionIn(unit, directory.Fraction(kXResolutionTag),
                      directory.Fraction(kYResolutionTag));
}

// What the codecs would show in wrong colors.
std::string RefusalOf(const TiffDirectory& directory) {
  if (directory.Value(kSampleFormatTag, 1) == 2) return "signed samples are not supported";
  if (directory.Value(kPhotometricTag, 0) == 8) return "Lab colors are not supported on Windows";
  const bool gray = directory.Value(kPhotometricTag, 0) <= 1;
  if (gray && directory.Value(kSamplesTag, 1) > 1) {
    return "gray with alpha is not supported on Windows";
  }
  return {};
}

}  // namespace

ExifFacts ReadExif(Bytes exif) try {
  if (exif.size() <= kExifMark.size()) return {};
  const TiffDirectory directory(exif.subspan(kExifMark.size()));
  const uint32_t orientation = directory.Value(kOrientationTag, 1);
  return {orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 1,
          ResolutionOf(directory)};
} catch (const FileError&) {
  return {};
}

std::vector<uint8_t> RenewedExif(Bytes exif, int32_t width, int32_t height) try {
  if (exif.size() <= kExifMark.size()) return {};
  std::vector<uint8_t> block(exif.begin(), exif.end());
  const std::span bytes = std::span(block).subspan(kExifMark.size());
  const TiffDirectory directory(bytes);
  directory.Set(bytes, kOrientationTag, 1);
  if (const uint32_t at = directory.Value(kExifTag, 0); at != 0) {
    const TiffDirectory details = directory.At(at);
    details.Set(bytes, kExifWidthTag, static_cast<uint32_t>(width));
    details.Set(bytes, kExifHeightTag, static_cast<uint32_t>(height));
  }
  TiffDirectory thumbnail = directory;
  if (directory.SaysNext() && thumbnail.Next()) {
    const auto clear = [&](uint32_t at, uint32_t size) {
      std::ranges::fill(bytes.subspan(at, size), uint8_t{0});
    };
    thumbnail.VisitPlaces(kThumbnailTag, kThumbnailSizeTag, clear);
    thumbnail.VisitPlaces(kStripsTag, kStripSizesTag, clear);
    directory.CutOff(bytes);
  }
  return block;
} catch (const FileError&) {
  return {};
}

size_t CountTiffPages(Bytes file) {
  TiffDirectory directory(file);
  size_t pages = 1;
  while (pages < kMostPages && directory.Next()) ++pages;
  return pages;
}

Container ReadPngContainer(Bytes file) {
  const Numbers numbers(file, true);
  Container c;
  for (size_t at = 8;; at += 12 + numbers.U32(at)) {
    const size_t size = numbers.U32(at), body = at + 8;
    numbers.U32(body + size);  // the checksum is there
    const uint32_t type = numbers.U32(at + 4);
    if (at == 8) {
      c.width = numbers.U32(body);
      c.height = numbers.U32(body + 4);
      const uint32_t depth = numbers.U8(body + 8), kind = numbers.U8(body + 9);
      const int64_t channels = (kind & 2) != 0 && kind != 3 ? 3 : 1;
      c.wide = depth == 16;
      const int64_t bits = (channels + (kind >> 2 & 1)) * depth;
      c.gray = (kind & 3) == 0;
      c.least_size = static_cast<double>(bits * c.width) / 8 * c.height / kMostInflated;
    }
    if (type == 0x70485973 && size >= 9 && numbers.U8(body + 8) == 1) {  // pHYs, in meters
      c.resolution = {DotsPerMeter(numbers.U32(body), 1), DotsPerMeter(numbers.U32(body + 4), 1)};
    }
    if (type == 0x65584966) {  // eXIf
      c.exif = ExifBlock(file.subspan(body, size));
      c.orientation = ReadExif(c.exif).orientation;
    }
    if (type == 0x49454E44) return c;  // IEND
  }
}

Container ReadJpegContainer(Bytes file) {
  const Numbers numbers(file, true);
  Container c;
  std::vector<Bytes> profile;  // its pieces, whose numbers begin at 1
  for (size_t at = 2;;) {
    while (numbers.U8(at) == 0xFF && numbers.U8(at + 1) == 0xFF) ++at;
    const uint32_t marker = numbers.U16(at), size = numbers.U16(at + 2);
    const size_t body = at + 4;
    if (marker < 0xFFC0 || size < 2) throw FileError("damaged JPEG data");
    const bool frame = marker <= 0xFFCF && marker != 0xFFC4 && marker != 0xFFC8 && marker != 0xFFCC;
    if (frame) {
      c.height = numbers.U16(body + 1);
      c.width = numbers.U16(body + 3);
      c.gray = numbers.U8(body + 5) == 1;
      c.least_size = static_cast<double>(c.width * c.height) / double{kMostSamplesPerJpegByte};
    }
    if (marker == 0xFFE0 && size >= 14 && numbers.U32(body) == 0x4A464946) {  // JFIF
      // JFIF's numbers of units are one less than TIFF's.
      c.resolution =
          ResolutionIn(numbers.U8(body + 7) + 1, numbers.U16(body + 8), numbers.U16(body + 10));
    }
    const Bytes data = numbers.Has(body, size - 2) ? file.subspan(body, size - 2) : Bytes();
    if (marker == 0xFFE1 && c.exif.empty() && data.size() > kExifMark.size() &&
        std::equal(kExifMark.begin(), kExifMark.end(), data.begin())) {
      c.exif.assign(data.begin(), data.end());
      const ExifFacts facts = ReadExif(c.exif);
      c.orientation = facts.orientation;
      // What JFIF said comes first.
      if (c.resolution.x == 0) c.resolution = facts.resolution;
    }
    if (marker == 0xFFE2 && data.size() > kProfilePieceAt &&
        std::equal(kProfileMark.begin(), kProfileMark.end(), data.begin())) {
      const size_t index = data[kProfileMark.size()];
      profile.resize(data[kProfileMark.size() + 1]);
      if (index >= 1 && index <= profile.size()) profile[index - 1] = data.subspan(kProfilePieceAt);
    }
    at += 2 + size;
    if (marker == 0xFFDA) {  // scans, up to the end of the image
      static constexpr uint8_t kEnd[] = {0xFF, 0xD9};
      numbers.U8(at);
      if (std::search(file.begin() + static_cast<std::ptrdiff_t>(at), file.end(), kEnd, kEnd + 2) ==
          file.end()) {
        throw FileError("the file ends early");
      }
      if (c.width == 0) throw FileError("damaged JPEG data");
      if (std::ranges::none_of(profile, &Bytes::empty)) {
        for (const Bytes piece : profile) {
          c.profile.insert(c.profile.end(), piece.begin(), piece.end());
        }
      }
      return c;
    }
  }
}

Container ReadTiffContainer(Bytes file, size_t page) {
  TiffDirectory directory(file);
  for (size_t i = 0; i < page; ++i) {
    if (!directory.Next()) throw FileError("there is no page " + std::to_string(page + 1));
  }
  Container c;
  c.width = directory.Value(kWidthTag, 0);
  c.height = directory.Value(kHeightTag, 0);
  c.gray = directory.Value(kPhotometricTag, 0) <= 1 && directory.Value(kSamplesTag, 1) == 1;
  c.orientation = static_cast<int>(directory.Value(kOrientationTag, 1));
  c.resolution = ResolutionOf(directory);
  c.refusal = RefusalOf(directory);
  c.wide = directory.Value(kBitsTag, 1) == 16;
  const uint32_t compression = directory.Value(kCompressionTag, 1);
  c.jpeg = compression == 7;
  c.exif_lost = directory.Value(kExifTag, 0) != 0;
  if (compression == 1) {
    c.least_size = static_cast<double>(c.width) * directory.Value(kBitsTag, 1) / 8 * c.height;
  }
  directory.CheckPlaces(kStripsTag, kStripSizesTag);
  directory.CheckPlaces(kTilesTag, kTileSizesTag);
  return c;
}

}  // namespace omb
