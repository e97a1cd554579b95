#include "files/metadata.h"

#include <algorithm>

namespace omb {

std::vector<uint8_t> ExifBlock(Bytes data) {
  std::vector<uint8_t> block(kExifMark.size() + data.size());
  std::ranges::copy(data, std::ranges::copy(kExifMark, block.begin()).out);
  return block;
}

Bytes ProfileFor(const Metadata& metadata, bool gray, const Remark& remark) {
  constexpr size_t kSpaceAt = 16;  // in the profile's header, which has 128 bytes
  const std::vector<uint8_t>& profile = metadata.profile;
  if (profile.empty()) return {};
  if (profile.size() >= 128) {
    const std::string_view space(reinterpret_cast<const char*>(profile.data()) + kSpaceAt, 4);
    if (space == (gray ? "GRAY" : "RGB ")) return profile;
  }
  remark(gray ? "its color profile is not kept: the result is gray"
              : "its color profile is not kept: it is not one for red, green and blue");
  return {};
}

std::vector<uint8_t> ExifFor(const Metadata& metadata, int32_t width, int32_t height,
                             const Remark& remark) {
  if (metadata.exif.empty()) return {};
  std::vector<uint8_t> exif = RenewedExif(metadata.exif, width, height);
  if (!exif.empty() && exif.size() <= kMostExif) return exif;
  remark(kExifRemark);
  return {};
}

}  // namespace omb
