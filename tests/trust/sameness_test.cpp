// One table of checksums that every build must reproduce: every export at every depth, whatever the
// compiler, its options, the system and the instruction set.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <map>
#include <sstream>

#include "rows/row_functions.h"
#include "support/every_export.h"

namespace ombrilo::test {
namespace {

constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};

// The parameters of one call.
std::array<uint8_t, 400> Parameters(uint32_t seed) {
  std::array<uint8_t, 400> bytes;
  for (uint8_t& byte : bytes)
    byte = static_cast<uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
  return bytes;
}

std::vector<TestImage> Images(int depth) {
  std::vector<TestImage> images;
  const uint32_t values = depth == 32 ? 0xFFFFFFFF : 1u << depth;
  const auto slope = [depth](int x, int y) {
    const int level = 3 * x + 2 * y;
    if (depth <= 8) return static_cast<uint32_t>(level & ((1 << depth) - 1));
    return depth == 16 ? static_cast<uint32_t>(level * 33 & 0x7FFF)
                       : Rgb(level, 255 - level, 2 * x);
  };
  for (const bool core : {false, true}) {
    for (const auto& [width, height] :
         {std::pair{37, 23}, {70, 9}, {8, 8}, {1, 1}, {7, 0}, {7, -2}}) {
      if (core && height < 0) continue;  // cannot be stored
      ImageBuilder builder(depth, width, height);
      if (core) builder.CoreHeader();
      if (depth <= 8)
        builder.Colors(height == 9 ? GrayRamp(1 << depth) : VariedColors(1 << depth, 3));
      if (width == 70) {
        builder.Pixels(slope);
      } else {
        builder.Pixels(Noise(values, static_cast<uint32_t>(width)));
      }
      images.push_back(builder.Build());
    }
  }
  return images;
}

std::string Checksum(const Export& operation, const std::vector<TestImage>& images) {
  Digest digest;
  for (const TestImage& image : images) {
    for (uint32_t seed = 1; seed <= 4; ++seed) {
      TestImage copy = image.Clone();
      const auto bytes = Parameters(seed);
      Draw draw(bytes, Draw::kMeant);
      digest.Add(operation.call(copy.ref(), draw, digest));
      digest.AddImage(copy.get());
    }
  }
  std::ostringstream text;
  text << std::hex << std::setfill('0') << std::setw(8) << static_cast<uint32_t>(digest.value());
  return text.str();
}

std::map<std::string, std::vector<std::string>> Table() {
  std::map<std::string, std::vector<std::string>> table;
  for (const int depth : kDepths) {
    const std::vector<TestImage> images = Images(depth);
    for (const Export& operation : EveryExport()) {
      table[operation.name].push_back(Checksum(operation, images));
    }
  }
  return table;
}

TEST(Sameness, EveryBuildAndInstructionSetReproducesTheTable) {
  if (const char* path = std::getenv("OMBRILO_WRITE_CHECKSUMS")) {
    std::ofstream file(path);
    for (const auto& [name, checksums] : Table()) {
      for (const std::string& checksum : checksums) file << checksum << ' ';
      file << name << '\n';
    }
    return;
  }
  std::map<std::string, std::vector<std::string>> expected;
  std::ifstream file(OMBRILO_CHECKSUMS);
  ASSERT_TRUE(file.is_open());
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::vector<std::string> checksums(std::size(kDepths));
    for (std::string& checksum : checksums) words >> checksum;
    std::string name;
    std::getline(words >> std::ws, name);
    expected[name] = checksums;
  }
  for (const rows::RowFunctions* const* level = rows::Supported(); *level != nullptr; ++level) {
    rows::Use(*level);
    const auto table = Table();
    EXPECT_EQ(table.size(), expected.size());
    for (const auto& [name, checksums] : table) {
      EXPECT_EQ(checksums, expected[name]) << name << ", row functions " << (*level)->name;
    }
  }
  rows::Use(nullptr);
}

}  // namespace
}  // namespace ombrilo::test
