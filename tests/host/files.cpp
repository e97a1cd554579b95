#include "host/files.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>

#include "core/bytes.h"

namespace ombrilo::test {

namespace fs = std::filesystem;

namespace {

omb::Remark Collect(Strings* remarks) {
  if (remarks == nullptr) return {};
  return [=](const std::string& text) { remarks->push_back(text); };
}

}  // namespace

TestImage Decode(const std::vector<uint8_t>& file, Strings* remarks, omb::Metadata* metadata) {
  const auto exact = std::make_unique<uint8_t[]>(file.size());
  std::ranges::copy(file, exact.get());
  return TestImage(
      omb::DecodeImage({exact.get(), file.size()}, Collect(remarks), metadata).release());
}

std::vector<uint8_t> EncodePages(omb::Format format, const std::vector<Page>& pages,
                                 Strings* remarks) {
  const Directory directory;
  omb::ImageWriter writer(directory / "image", format, {}, Collect(remarks));
  for (const auto& [dib, metadata] : pages) writer.Add(dib, *metadata);
  writer.Commit();
  return Load(directory / "image");
}

std::string DecodeError(const std::vector<uint8_t>& file) {
  try {
    Decode(file);
    return "";
  } catch (const omb::FileError& error) {
    return error.what();
  }
}

std::vector<uint8_t> Encode(omb::Format format, const PackedDib* dib) {
  const Directory directory;
  omb::WriteImage(directory / "image", format, dib);
  return Load(directory / "image");
}

void ExpectPlainHeader(const TestImage& image) {
  const uint8_t* fields = image.raw();
  EXPECT_EQ(LoadU32(fields), 40u);
  EXPECT_GT(static_cast<int32_t>(LoadU32(fields + 8)), 0);
  EXPECT_EQ(LoadU16(fields + 12), 1u);
  EXPECT_EQ(LoadU32(fields + 20), 0u);
  const bool masks = LoadU32(fields + 16) != 0;
  EXPECT_EQ(LoadU32(fields + 16), masks ? 3u : 0u);
  EXPECT_EQ(LoadU32(fields + 32), masks ? 3u : 0u);
}

void ExpectSafe(const std::vector<uint8_t>& file, size_t dispensable) {
  for (size_t size = 0; size < file.size(); ++size) {
    const std::string error = DecodeError({file.begin(), file.begin() + static_cast<long>(size)});
    if (size + dispensable < file.size()) {
      EXPECT_NE(error, "") << size << " of " << file.size() << " bytes";
    }
  }
  std::vector<uint8_t> damaged = file;
  for (size_t i = 0; i < file.size(); ++i) {
    for (const int change : {0x01, 0x80, 0xFF}) {
      damaged[i] = static_cast<uint8_t>(file[i] ^ change);
      const std::string error = DecodeError(damaged);
      EXPECT_EQ(error.find('\n'), std::string::npos) << error;
    }
    damaged[i] = file[i];
  }
}

Directory::Directory() {
  path_ = fs::temp_directory_path() / ("omb_files_" + std::to_string(std::random_device()()));
  fs::create_directory(path_);
}

Directory::~Directory() {
  std::error_code error;
  fs::remove_all(path_, error);
}

size_t Directory::Count() const {
  return static_cast<size_t>(std::distance(fs::directory_iterator(path_), {}));
}

std::vector<uint8_t> Load(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void Save(const fs::path& path, const std::vector<uint8_t>& bytes) {
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

}  // namespace ombrilo::test
