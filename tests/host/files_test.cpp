// Files of every format written and read again, and what happens to files when writing fails.
#include "files/files.h"

#include <cstdio>

#include "core/bytes.h"
#include "host/files.h"

namespace ombrilo::test {
namespace {

namespace fs = std::filesystem;
using omb::Format;

#ifdef _WIN32
constexpr bool kOnWindows = true;
#else
constexpr bool kOnWindows = false;
#endif

constexpr Format kAll[] = {Format::kBmp, Format::kPng, Format::kJpeg, Format::kTiff};

std::vector<uint32_t> Reversed(std::vector<uint32_t> colors) {
  return {colors.rbegin(), colors.rend()};
}

// An image with noise for pixels and a resolution.
ImageBuilder Noisy(int bits, int width, int height, const std::vector<uint32_t>& colors) {
  ImageBuilder builder(bits, width, height);
  builder.Colors(colors).Pixels(Noise(bits <= 8 ? 1u << bits : 0x1000000, 4));
  return builder;
}

void ExpectResolution(const TestImage& image, uint32_t x, uint32_t y) {
  EXPECT_EQ(LoadU32(image.raw() + 24), x);
  EXPECT_EQ(LoadU32(image.raw() + 28), y);
}

TEST(Files, WithoutLossDepthColorsAndResolutionComeBack) {
  for (const Format format : {Format::kBmp, Format::kPng, Format::kTiff}) {
    for (const int bits : {1, 4, 8, 24}) {
      const int count = bits <= 8 ? 1 << bits : 0;
      for (const auto& colors :
           {GrayRamp(count), Reversed(GrayRamp(count)), VariedColors(count, 7)}) {
        for (const int width : {1, 13, 64}) {
          SCOPED_TRACE(testing::Message() << omb::ExtensionOf(format) << ", " << bits << " bits, "
                                          << width << " wide");
          const TestImage image =
              Noisy(bits, width, 9, colors).Field(24, 11811).Field(28, 5906).Build();
          const TestImage again = Decode(Encode(format, image.get()));
          ExpectPlainHeader(again);
          ASSERT_EQ(again.bit_count(), bits);
          EXPECT_EQ(again.Pixels(), image.Pixels());
          ExpectResolution(again, 11811, 5906);
          for (int i = 0; i < count; ++i) EXPECT_EQ(again.Color(i), image.Color(i));
        }
      }
    }
  }
}

TEST(Files, CoreHeadersAndShortColorTables) {
  for (const Format format : {Format::kBmp, Format::kPng, Format::kTiff}) {
    for (const int bits : {1, 4, 8, 24}) {
      const TestImage core = Noisy(bits, 7, 3, VariedColors(bits <= 8 ? 1 << bits : 0, 5))
                                 .CoreHeader(bits == 4 ? 20 : 12)
                                 .Build();
      const TestImage again = Decode(Encode(format, core.get()));
      ExpectPlainHeader(again);
      EXPECT_EQ(again.Colors(), core.Colors());
    }
    // Colors past the table are the bytes that follow: here the first row's.
    const TestImage short_table = ImageBuilder(8, 4, 1)
                                      .Colors({0x010203})
                                      .Pixels([](int x, int) { return static_cast<uint32_t>(x); })
                                      .Build();
    EXPECT_EQ(Decode(Encode(format, short_table.get())).Colors(),
              (std::vector<uint32_t>{0x010203, 0x020100, 0, 0}));
  }
}

TEST(Files, SixteenAndThirtyTwoBits) {
  for (const int bits : {16, 32}) {
    const TestImage image =
        Noisy(bits, 9, 4, {}).Pixels(Noise(bits == 16 ? 65536 : 0x1000000, 5)).Build();
    EXPECT_EQ(Decode(Encode(Format::kBmp, image.get())).Pixels(), image.Pixels());
    TestImage expected = image.Clone();
    ASSERT_EQ(omb_transformat(expected.ref()), 1u);
    for (const Format format : {Format::kPng, Format::kTiff}) {
      const TestImage again = Decode(Encode(format, image.get()));
      EXPECT_EQ(again.bit_count(), 24);
      EXPECT_EQ(again.Pixels(), expected.Pixels());
    }
  }
}

TEST(Files, JpegKeepsGrayGrayAndColorsNear) {
  const auto build = [](int bits, const std::vector<uint32_t>& colors) {
    ImageBuilder builder(bits, 40, 30);
    builder.Colors(colors).Field(24, 11811).Field(28, 5906).Pixels([=](int x, int y) {
      return bits == 24 ? Rgb(4 * x, 200 - 3 * y, 100) : static_cast<uint32_t>(x * 3 + y) / 10;
    });
    return builder.Build();
  };
  const TestImage images[] = {build(8, Reversed(GrayRamp(256))), build(24, {}),
                              build(4, std::vector<uint32_t>(16, 0x804020))};
  for (const TestImage& image : images) {
    const TestImage again = Decode(Encode(Format::kJpeg, image.get()));
    ExpectPlainHeader(again);
    ExpectResolution(again, 11811, 5906);
    EXPECT_EQ(again.bit_count(), image.bit_count() == 8 ? 8 : 24);
    const std::vector<uint32_t> before = image.Colors(), after = again.Colors();
    for (size_t i = 0; i < before.size(); ++i) {
      for (const int shift : {0, 8, 16}) {
        ASSERT_NEAR(before[i] >> shift & 255, after[i] >> shift & 255, 12) << i;
      }
    }
  }
}

TEST(Files, DamagedFilesAreRefusedOrRead) {
  for (const Format format : {Format::kPng, Format::kJpeg, Format::kTiff}) {
    for (const int bits : {1, 8, 24}) {
      SCOPED_TRACE(testing::Message() << omb::ExtensionOf(format) << ", " << bits << " bits");
      const TestImage image = Noisy(bits, 9, 7, GrayRamp(bits <= 8 ? 1 << bits : 0)).Build();
      // A TIFF ends with the place of the next page.
      ExpectSafe(Encode(format, image.get()), format == Format::kTiff ? 4 : 0);
    }
  }
}

// The system's codecs on Windows do not read all that the others do.
std::vector<fs::path> Samples() {
  std::vector<fs::path> paths;
  for (const auto& entry : fs::recursive_directory_iterator(OMBRILO_SAMPLES)) {
    const fs::path folder = entry.path().parent_path().filename();
    if (!entry.is_regular_file() || entry.path().extension() == ".bmp") continue;
    if (folder == "refused" || (kOnWindows && folder == "not_on_windows")) continue;
    paths.push_back(entry.path());
  }
  return paths;
}

// What a file of a kind that the host does not write holds stands beside it as a BMP file.
void ExpectSample(const fs::path& path) {
  const std::string stem = path.stem().string();
  const std::string extension = path.extension().string().substr(1);
  SCOPED_TRACE(path.filename().string());
  Strings remarks;
  const TestImage image = Decode(Load(path), &remarks);
  const TestImage expected = Decode(Load(path.parent_path() / (stem + "_" + extension + ".bmp")));
  ExpectPlainHeader(image);
  EXPECT_EQ(remarks.size(), stem.ends_with("_remark") ? 1u : 0u);
  ASSERT_EQ(image.bit_count(), expected.bit_count());
  ASSERT_EQ(image.width(), expected.width());
  ASSERT_EQ(image.height(), expected.height());
  ExpectResolution(image, LoadU32(expected.raw() + 24), LoadU32(expected.raw() + 28));
  const std::vector<uint32_t> colors = image.Colors(), wanted = expected.Colors();
  const bool exact = extension == "png" || (extension == "tif" && !kOnWindows);
  for (size_t i = 0; i < colors.size(); ++i) {
    for (const int shift : {0, 8, 16}) {
      ASSERT_NEAR(colors[i] >> shift & 255, wanted[i] >> shift & 255, exact ? 0 : 2) << i;
    }
  }
}

TEST(Files, EveryCodecReadsTheSamplesAlike) {
  const std::vector<fs::path> samples = Samples();
  EXPECT_GT(samples.size(), 40u);
  for (const fs::path& path : samples) EXPECT_NO_THROW(ExpectSample(path)) << path;
}

TEST(Files, NamesSayFormats) {
  const std::pair<fs::path, Format> names[] = {{"a.b/scan.BMP", Format::kBmp},
                                               {"x.dib", Format::kBmp},
                                               {u8"Größe.Png", Format::kPng},
                                               {"x.jpeg", Format::kJpeg},
                                               {"x.tif", Format::kTiff}};
  for (const auto& [path, format] : names) EXPECT_EQ(omb::FormatOfPath(path), format) << path;
  for (const Format format : kAll) {
    EXPECT_EQ(omb::FormatOfName(omb::ExtensionOf(format)), format);
  }
  for (const char* name : {"x", "x.", ".png", "x.gif", "png"}) {
    EXPECT_THROW(omb::FormatOfPath(name), omb::FileError) << name;
  }
}

TEST(Files, TheContentsAndNotTheNameSayWhatIsRead) {
  const Directory directory;
  const fs::path path = directory / fs::path(u8"Bild ä.png");
  const TestImage image = Noisy(8, 5, 4, GrayRamp(256)).Build();
  omb::WriteImage(path, Format::kBmp, image.get());
  const TestImage again(omb::ReadImage(path, nullptr).release());
  EXPECT_EQ(again.Pixels(), image.Pixels());
  EXPECT_THROW(omb::ReadImage(directory / "missing.bmp", nullptr), omb::FileError);
  EXPECT_THROW(omb::ReadImage(directory / "", nullptr), omb::FileError);
}

TEST(Files, AFailureLeavesTheOldFileAndNothingElse) {
  const Directory directory;
  const fs::path path = directory / "old.bmp";
  const std::vector<uint8_t> old = {1, 2, 3};
  Save(path, old);
  for (const Format format : kAll) {
    // No pixels, no known depth, no header that can be honoured.
    for (const auto& [bits, height] : {std::pair{8, 0}, {2, 3}, {24, 0x7FFFFFFF}}) {
      const TestImage image =
          ImageBuilder(bits, 4, 3).Colors({}).Field(8, static_cast<uint32_t>(height)).Build();
      EXPECT_THROW(omb::WriteImage(path, format, image.get()), omb::FileError);
      EXPECT_THROW(omb::WriteImage(directory / "new.bmp", format, image.get()), omb::FileError);
    }
    EXPECT_THROW(omb::WriteImage(path, format, nullptr), omb::FileError);
  }
  EXPECT_EQ(Load(path), old);
  EXPECT_EQ(directory.Count(), 1u);

  const TestImage image = Noisy(24, 5, 4, {}).Build();
  EXPECT_THROW(omb::WriteImage(directory / "missing" / "x.bmp", Format::kBmp, image.get()),
               omb::FileError);
  fs::create_directory(directory / "folder");
  EXPECT_THROW(omb::WriteImage(directory / "folder", Format::kBmp, image.get()), omb::FileError);
  EXPECT_EQ(directory.Count(), 2u);
  omb::WriteImage(path, Format::kBmp, image.get());
  EXPECT_EQ(Decode(Load(path)).Pixels(), image.Pixels());
  EXPECT_EQ(directory.Count(), 2u);
}

#ifndef _WIN32
TEST(Files, DamagedSamplesAreRefusedOrRead) {
  for (const fs::path& path : Samples()) {
    const std::vector<uint8_t> file = Load(path);
    if (file.size() > 550) continue;
    SCOPED_TRACE(path.filename().string());
    // What stands behind the pixels of a TIFF may be missing.
    ExpectSafe(file, path.extension() == ".tif" ? file.size() : 0);
  }
}

TEST(Files, WhatCannotBeReadIsToldInOneLine) {
  const std::pair<const char*, std::string> cases[] = {
      {"huge.png", "the file is too short for 8205 x 8202 pixels"},
      {"huge.jpg", "the file is too short for 32531 x 32531 pixels"},
      {"floats.tif", "unsupported TIFF data: "}};
  for (const auto& [name, error] : cases) {
    const fs::path path = fs::path(OMBRILO_SAMPLES) / "refused" / name;
    EXPECT_EQ(DecodeError(Load(path)).substr(0, error.size()), error) << name;
  }
}

TEST(Files, LinksAndPermissionsStay) {
  const Directory directory;
  const TestImage image = Noisy(24, 5, 4, {}).Build();
  Save(directory / "target.bmp", {1});
  fs::permissions(directory / "target.bmp", fs::perms::owner_read | fs::perms::owner_write);
  fs::create_symlink("target.bmp", directory / "link.bmp");
  omb::WriteImage(directory / "link.bmp", Format::kBmp, image.get());
  EXPECT_TRUE(fs::is_symlink(directory / "link.bmp"));
  EXPECT_EQ(Decode(Load(directory / "target.bmp")).Pixels(), image.Pixels());
  EXPECT_EQ(fs::status(directory / "target.bmp").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST(Files, AFullDiskIsNoticed) {
  std::FILE* full = std::fopen("/dev/full", "w+b");
  if (full == nullptr) GTEST_SKIP() << "this system has no full device";
  const TestImage image = Noisy(24, 300, 200, {}).Build();
  EXPECT_THROW(omb::WritePng(image.get(), full), omb::FileError);
  EXPECT_THROW(omb::WriteJpeg(image.get(), full), omb::FileError);
  std::fclose(full);
  // A device is not to be replaced by an image.
  EXPECT_THROW(omb::WriteImage("/dev/full", Format::kBmp, image.get()), omb::FileError);
  EXPECT_TRUE(fs::is_character_file("/dev/full"));
}
#endif

// Fuzzing starts from these files and adds those that ever failed.
TEST(Files, SeedsOfTheFuzzersAreReadOrRefused) {
  int read = 0;
  for (const auto& file : std::filesystem::recursive_directory_iterator(OMBRILO_SEEDS)) {
    if (file.is_directory() || file.path().parent_path().filename() == "library") continue;
    try {
      omb::ReadImage(file.path(), [](const std::string&) {});
      ++read;
    } catch (const omb::FileError&) {
    }
  }
  EXPECT_GT(read, 11);
}

}  // namespace
}  // namespace ombrilo::test
