// Tables of checksums that every build must reproduce: every export at every depth, whatever the
// compiler, its options, the system and the instruction set.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <map>
#include <numeric>
#include <sstream>

#include "rows/row_functions.h"
#include "support/every_export.h"

namespace ombrilo::test {
namespace {

using Images = std::vector<TestImage>;
using Strings = std::vector<std::string>;

constexpr int kDepths[] = {1, 4, 8, 16, 24, 32};

Images UsualImages(int depth) {
  Images images;
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
      builder.Pixels(width == 70 ? slope : Noise(values, static_cast<uint32_t>(width)));
      images.push_back(builder.Build());
    }
  }
  return images;
}

// Headers that say what no usual file says: other header sizes, tables that are too short, too long
// or missing, plane counts, color masks, and sizes beyond 16 bits.
Images OddImages(int depth) {
  Images images;
  const auto bits = static_cast<uint32_t>(depth) << 16;
  const auto builder = [&](int width, int height, int colors) {
    ImageBuilder image(depth, width, height);
    image.Pixels(Noise(depth == 32 ? 0xFFFFFFFF : 1u << depth, 6)).Filler(0xA5);
    return image.Colors(VariedColors(colors, 4));
  };
  const int full = depth <= 8 ? 1 << depth : 0;
  for (const uint32_t size_field : {40, 41, 64}) {
    images.push_back(builder(21, 9, full).CoreHeader(size_field).Build());
  }
  for (const int colors : {1, 3, 300}) images.push_back(builder(23, 7, colors).Build());
  images.push_back(builder(22, 8, 0).Field(32, 65536).Build());  // no entry in the end
  for (const uint32_t planes : {0, 2}) {
    images.push_back(builder(19, 10, full).Field(12, bits | planes).Build());
  }
  images.push_back(builder(20, 8, full).CoreHeader().Field(12, 0x00080001).Build());
  for (const uint32_t field : {4, 8}) {  // a width and a height below 0
    images.push_back(builder(9, 0, 3).Field(field, 0xFFFFFFFD).Build());
  }
  for (const uint32_t blue : {0x1F, 0xFF00}) {
    ImageBuilder image = builder(18, 7, blue == 0x1F || depth <= 8 ? 3 : 0);
    images.push_back(image.Field(16, 3).Field(40, 0xF800).Field(44, 0x7E0).Field(48, blue).Build());
  }
  for (const auto& [width, height] : {std::pair{65535, 1}, {65536 + 9, 3}}) {
    if (depth == 8) images.push_back(builder(width, height, 0).Colors(GrayRamp(256)).Build());
  }
  return images;
}

// `seeds` draw the parameters.
std::string Checksum(const Export& operation, const Images& images,
                     const std::vector<uint32_t>& seeds) {
  Digest digest;
  for (const TestImage& image : images) {
    for (const uint32_t seed : seeds) {
      TestImage copy = image.Clone();
      const auto bytes = RandomBytes(seed, 400);
      Draw draw(bytes, Draw::kMeant);
      digest.Add(operation.call(copy.ref(), draw, digest));
      digest.AddImage(copy.get());
    }
  }
  std::ostringstream text;
  text << std::hex << std::setfill('0') << std::setw(8) << static_cast<uint32_t>(digest.value());
  return text.str();
}

// A line for every export: checksums at all depths, and the name.
Strings Table(Images (*images)(int depth), const std::vector<uint32_t>& seeds) {
  std::map<std::string, std::string> checksums;
  for (const int depth : kDepths) {
    const Images all = images(depth);
    for (const Export& operation : EveryExport()) {
      checksums[operation.name] += Checksum(operation, all, seeds) + ' ';
    }
  }
  Strings lines;
  for (const auto& [name, numbers] : checksums) lines.push_back(numbers + name);
  return lines;
}

// With OMBRILO_WRITE_CHECKSUMS, which is a table's name, that is written.
void Check(const std::string& name, Images (*images)(int depth),
           const std::vector<uint32_t>& seeds) {
  const std::string path = OMBRILO_TRUST "/" + name + ".txt";
  if (const char* written = std::getenv("OMBRILO_WRITE_CHECKSUMS")) {
    if (name != written) return;
    std::ofstream file(path);
    for (const std::string& line : Table(images, seeds)) file << line << '\n';
    return;
  }
  Strings expected;
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) expected.push_back(line);
  for (const simd::RowFunctions* const* level = simd::Supported(); *level != nullptr; ++level) {
    simd::Use(*level);
    const Strings lines = Table(images, seeds);
    ASSERT_EQ(lines.size(), expected.size()) << path;
    for (size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i], expected[i]) << "row functions " << (*level)->name;
    }
  }
  simd::Use(nullptr);
}

TEST(Sameness, EveryBuildAndInstructionSetReproducesTheTable) {
  Check("checksums", UsualImages, {1, 2, 3, 4});
}

TEST(Sameness, AlsoOfImagesWithOddHeaders) {
  constexpr uint32_t kApart = 0xC2B2AE35;  // so that all parameters differ from call to call
  Check("odd_checksums", OddImages,
        {kApart, 2 * kApart, 3 * kApart, 4 * kApart, 5 * kApart, 6 * kApart});
}

// All small widths, and those around where row functions turn to other code: a stretch, a table.
TEST(Sameness, EveryWidthGivesTheSameAtEveryInstructionSet) {
  std::vector<int> widths(132);
  std::iota(widths.begin(), widths.end(), 1);
  widths.insert(widths.end(), {191, 192, 193, 255, 256, 257, 383, 384, 385, 511, 513, 767, 769,
                               1023, 1024, 1025, 2000, 2001});
  for (const int width : widths) {
    for (const int depth : kDepths) {
      Images images;
      ImageBuilder builder(depth, width, width < 600 ? 4 : 1);
      if (depth <= 8)
        builder.Colors(width % 2 == 0 ? GrayRamp(1 << depth) : VariedColors(1 << depth, 3));
      images.push_back(builder.Pixels(Noise(depth == 32 ? ~0u : 1u << depth, 6)).Build());
      for (const Export& operation : EveryExport()) {
        std::string plain;
        for (auto level = simd::Supported(); *level != nullptr; ++level) {
          simd::Use(*level);
          const std::string checksum = Checksum(operation, images, {static_cast<uint32_t>(width)});
          if (plain.empty()) plain = checksum;
          ASSERT_EQ(checksum, plain) << operation.name << ", " << depth << " bits, width " << width
                                     << ", " << (*level)->name;
        }
      }
    }
  }
  simd::Use(nullptr);
}

}  // namespace
}  // namespace ombrilo::test
