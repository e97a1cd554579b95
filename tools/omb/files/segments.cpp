#include "files/segments.h"

#include <algorithm>
#include <initializer_list>

#include "files/metadata.h"

namespace omb {

namespace {

void AppendU32(std::vector<uint8_t>& bytes, size_t value) {
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<uint8_t>(value >> shift));
}

// The checksum of PNG's chunks.
uint32_t Crc32(Bytes bytes) {
  uint32_t crc = ~0u;
  for (const uint8_t byte : bytes) {
    crc ^= byte;
    for (int i = 0; i < 8; ++i) crc = crc >> 1 ^ (0xEDB88320 & (0 - (crc & 1)));
  }
  return ~crc;
}

}  // namespace

Insertion JpegSegments(Bytes file, Bytes exif, Bytes profile) {
  constexpr size_t kMostInPiece = 65533 - kProfilePieceAt;
  // After JFIF's segment, which has to be the first one.
  const bool jfif = file.size() > 6 && file[2] == 0xFF && file[3] == 0xE0;
  Insertion insertion = {jfif ? size_t{4} + file[4] * size_t{256} + file[5] : 2};
  const auto add = [&](uint8_t marker, std::initializer_list<Bytes> parts) {
    size_t size = 2;
    for (const Bytes part : parts) size += part.size();
    std::vector<uint8_t>& bytes = insertion.bytes;
    bytes.insert(bytes.end(), {0xFF, marker, uint8_t(size >> 8), uint8_t(size)});
    for (const Bytes part : parts) bytes.insert(bytes.end(), part.begin(), part.end());
  };
  if (!exif.empty()) add(0xE1, {exif});
  const size_t pieces = (profile.size() + kMostInPiece - 1) / kMostInPiece;
  for (size_t i = 0; i < pieces; ++i) {
    uint8_t head[kProfilePieceAt] = {};
    std::ranges::copy(kProfileMark, head);
    head[kProfileMark.size()] = static_cast<uint8_t>(i + 1);
    head[kProfileMark.size() + 1] = static_cast<uint8_t>(pieces);
    const Bytes rest = profile.subspan(i * kMostInPiece);
    add(0xE2, {head, rest.first(std::min(rest.size(), kMostInPiece))});
  }
  return insertion;
}

Insertion PngChunk(Bytes exif) {
  if (exif.empty()) return {};
  constexpr std::string_view kType = "eXIf";
  constexpr size_t kHeaderEnd = 33;  // of the signature and the first chunk
  const Bytes data = exif.subspan(kExifMark.size());
  Insertion insertion = {kHeaderEnd};
  std::vector<uint8_t>& bytes = insertion.bytes;
  AppendU32(bytes, data.size());
  bytes.insert(bytes.end(), kType.begin(), kType.end());
  bytes.insert(bytes.end(), data.begin(), data.end());
  AppendU32(bytes, Crc32(Bytes(bytes).subspan(4)));
  return insertion;
}

}  // namespace omb
