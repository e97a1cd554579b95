// What the tests of image files share.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "files/codec.h"
#include "support/image.h"

namespace ombrilo::test {

using Strings = std::vector<std::string>;

// Decodes from a block that ends where the file ends. Remarks are collected where somebody asks.
TestImage Decode(const std::vector<uint8_t>& file, Strings* remarks = nullptr,
                 omb::Metadata* metadata = nullptr);
// What decoding complains about; empty when it does not.
std::string DecodeError(const std::vector<uint8_t>& file);

// The file that writing an image gives.
std::vector<uint8_t> Encode(omb::Format format, const PackedDib* dib);

using Page = std::pair<const PackedDib*, const omb::Metadata*>;
std::vector<uint8_t> EncodePages(omb::Format format, const std::vector<Page>& pages,
                                 Strings* remarks = nullptr);

// Header fields that every image that was read has: 40 bytes, 1 plane, bottom-up, no stale fields.
void ExpectPlainHeader(const TestImage& image);

// Every file that a damage to `file` can give is refused or read, never more: cut at each byte, and
// each byte changed. Cuts inside the last `dispensable` bytes may leave a complete image.
void ExpectSafe(const std::vector<uint8_t>& file, size_t dispensable = 0);

// A directory of its own, removed with everything in it.
class Directory {
 public:
  Directory();
  ~Directory();
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }
  size_t Count() const;

 private:
  std::filesystem::path path_;
};

std::vector<uint8_t> Load(const std::filesystem::path& path);
void Save(const std::filesystem::path& path, const std::vector<uint8_t>& bytes);

}  // namespace ombrilo::test
