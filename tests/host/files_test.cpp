// Files of every format written and read again, and what happens to files when writing fails.
#include "files/files.h"

#include <algorithm>
#include <cstdio>
#include <span>

#include "core/bytes.h"
#include "files/metadata.h"
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
    // Each channel over the whole range: white stays white.
    const auto widened = [&image, bits](int x, int y) {
      const uint32_t pixel = image.Pixel(x, y);
      if (bits == 32) return pixel;
      const auto channel = [pixel](int shift) { return ((pixel >> shift & 31) * 510 + 31) / 62; };
      return channel(10) << 16 | channel(5) << 8 | channel(0);
    };
    const TestImage expected = ImageBuilder(24, 9, 4).Pixels(widened).Build();
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

// What a file of a kind that the host does not write should give is a BMP file next to it.
void ExpectSample(const fs::path& path) {
  const std::string stem = path.stem().string();
  const std::string extension = path.extension().string().substr(1);
  SCOPED_TRACE(path.filename().string());
  Strings remarks;
  const TestImage image = Decode(Load(path), &remarks);
  const TestImage expected = Decode(Load(path.parent_path() / (stem + "_" + extension + ".bmp")));
  ExpectPlainHeader(image);
  const bool wide = stem.find("16") != std::string::npos;
  EXPECT_EQ(remarks.size(), (stem.ends_with("_remark") ? 1u : 0u) + (wide ? 1u : 0u));
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

// A JPEG file that also says how the camera was held, and its resolution there alone.
std::vector<uint8_t> Photograph(const TestImage& image, uint8_t orientation) {
  std::vector<uint8_t> exif = {
      0xFF, 0xE1, 0, 86, 'E', 'x', 'i', 'f', 0, 0, 'I', 'I', 42, 0, 8, 0, 0, 0, 4, 0,
      // Orientation, resolutions, their unit.
      0x12, 1, 3, 0, 1, 0, 0, 0, orientation, 0, 0, 0, 0x1A, 1, 5, 0, 1, 0, 0, 0, 62, 0, 0, 0, 0x1B,
      1, 5, 0, 1, 0, 0, 0, 70, 0, 0, 0, 0x28, 1, 3, 0, 1, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0x2C, 1,
      0, 0, 1, 0, 0, 0, 150, 0, 0, 0, 1, 0, 0, 0};
  std::vector<uint8_t> file = Encode(Format::kJpeg, image.get());
  file[13] = 0;  // the unit in JFIF's segment, which is the first one
  file.insert(file.begin() + 20, exif.begin(), exif.end());
  return file;
}

TEST(Files, PhotographsStandUpright) {
  constexpr int kWidth = 40, kHeight = 24;
  // Dark at the left and at the top, so that every turn and mirroring shows.
  const TestImage stored = ImageBuilder(24, kWidth, kHeight)
                               .Pixels([](int x, int y) { return Rgb(6 * x, 10 * y, 0); })
                               .Build();
  for (uint8_t orientation = 1; orientation <= 8; ++orientation) {
    SCOPED_TRACE(testing::Message() << "orientation " << int{orientation});
    omb::Metadata metadata;
    Strings remarks;
    const TestImage image = Decode(Photograph(stored, orientation), &remarks, &metadata);
    const bool turned = orientation > 4;
    ASSERT_EQ(image.width(), turned ? kHeight : kWidth);
    EXPECT_EQ(remarks, Strings{});
    turned ? ExpectResolution(image, 5906, 11811) : ExpectResolution(image, 11811, 5906);
    const bool right = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool bottom =
        orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    for (const auto& [x, y] : {std::pair{2, 3}, {30, 15}}) {
      const int column = right ? kWidth - 1 - x : x, row = bottom ? kHeight - 1 - y : y;
      // The place in the picture of the stored pixel (column, row).
      const int across = turned ? (bottom ? kHeight - 1 - row : row) : x;
      const int down = turned ? (right ? kWidth - 1 - column : column) : y;
      const uint32_t color = image.Pixel(across, down);
      EXPECT_NEAR(color >> 16 & 255, 6.0 * column, 12);
      EXPECT_NEAR(color >> 8 & 255, 10.0 * row, 12);
    }
    // What is written says that it is upright.
    for (const Format format : {Format::kJpeg, Format::kPng}) {
      omb::Metadata again;
      const TestImage copy =
          Decode(EncodePages(format, {{image.get(), &metadata}}), nullptr, &again);
      EXPECT_EQ(copy.width(), image.width());
      EXPECT_EQ(again.exif.size(), metadata.exif.size());
    }
  }
}

TEST(Files, ExifDataAreThoseOfTheResult) {
  for (const bool big_endian : {false, true}) {
    std::vector<uint8_t> exif(omb::kExifMark.begin(), omb::kExifMark.end());
    const auto number = [&](uint32_t value, int bytes) {
      for (int i = 0; i < bytes; ++i) {
        exif.push_back(static_cast<uint8_t>(value >> 8 * (big_endian ? bytes - 1 - i : i)));
      }
    };
    const auto entry = [&](uint32_t tag, bool is_short, uint32_t value) {
      number(tag, 2), number(is_short ? 3 : 4, 2), number(1, 4);
      number(value, is_short ? 2 : 4), number(0, is_short ? 2 : 0);
    };
    number(big_endian ? 0x4D4D : 0x4949, 2);
    number(42, 2), number(8, 4);
    // Orientation and further data, whose directory is at 38; a thumbnail, whose one is at 68.
    number(2, 2), entry(0x112, true, 6), entry(0x8769, false, 38), number(68, 4);
    number(2, 2), entry(0xA002, false, 4000), entry(0xA003, true, 3000), number(0, 4);
    number(3, 2), entry(0x103, true, 6), entry(0x201, false, 110), entry(0x202, false, 4);
    number(0, 4);
    number(0xFFD8, 2), number(0xFFD9, 2);
    ASSERT_EQ(omb::ReadExif(exif).orientation, 6);

    const std::vector<uint8_t> renewed = omb::RenewedExif(exif, 600, 800);
    EXPECT_EQ(omb::ReadExif(renewed).orientation, 1);
    EXPECT_EQ(std::search(renewed.begin(), renewed.end(), exif.end() - 4, exif.end()),
              renewed.end());
    const size_t width = omb::kExifMark.size() + 38 + 2 + 8, height = width + 12;
    const auto at = [&](size_t place) {
      return big_endian ? renewed[place] << 8 | renewed[place + 1]
                        : renewed[place] | renewed[place + 1] << 8;
    };
    EXPECT_EQ(at(width + (big_endian ? 2 : 0)), 600);
    EXPECT_EQ(at(height), 800);
  }
}

// An ICC profile of one tag, long enough for libpng.
std::vector<uint8_t> Profile(const std::string& space) {
  std::vector<uint8_t> profile(644);
  for (size_t i = 144; i < profile.size(); ++i) profile[i] = static_cast<uint8_t>(i * i * 7 >> 3);
  const auto put = [&](size_t at, const std::string& text) {
    std::copy(text.begin(), text.end(), profile.begin() + static_cast<long>(at));
  };
  profile[2] = 2;
  profile[3] = 132;
  profile[8] = 2;
  put(12, "mntr");
  put(16, space);
  put(20, "XYZ ");
  put(36, "acsp");
  put(128, std::string("\0\0\0\1cprt\0\0\0\x90\0\0\1\xF4", 16));
  put(68, std::string("\0\0\xF6\xD6\0\1\0\0\0\0\xD3\x2D", 12));
  return profile;
}

TEST(Files, ColorProfilesAreKeptWhereTheyFit) {
  for (const Format format : kAll) {
    for (const int bits : {8, 24}) {
      for (const char* space : {"RGB ", "GRAY", "CMYK"}) {
        SCOPED_TRACE(testing::Message() << omb::ExtensionOf(format) << bits << space);
        const TestImage image = Noisy(bits, 9, 7, GrayRamp(bits == 8 ? 256 : 0)).Build();
        omb::Metadata metadata;
        metadata.profile = Profile(space);
        Strings remarks;
        const auto file = EncodePages(format, {{image.get(), &metadata}}, &remarks);
        const bool fits = std::string(space) == (bits == 8 ? "GRAY" : "RGB ");
        omb::Metadata again;
        Decode(file, nullptr, &again);
        // The system's codecs may not take it, and say so.
        if (kOnWindows && fits && !remarks.empty()) continue;
        EXPECT_EQ(again.profile, fits ? metadata.profile : std::vector<uint8_t>());
        EXPECT_EQ(remarks.size(), fits ? 0u : 1u);
      }
    }
  }
}

TEST(Files, PagesAreKept) {
  const Directory directory;
  std::vector<TestImage> images;
  images.push_back(Noisy(1, 30, 20, GrayRamp(2)).Build());
  images.push_back(Noisy(24, 17, 5, {}).Build());
  images.push_back(Noisy(8, 9, 33, VariedColors(256, 2)).Build());
  const omb::Metadata none;
  Save(directory / "pages",
       EncodePages(Format::kTiff,
                   {{images[0].get(), &none}, {images[1].get(), &none}, {images[2].get(), &none}}));
  omb::ImageFile file(directory / "pages");
  ASSERT_EQ(file.pages(), 3u);
  for (size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(file.Info(i).width, images[i].width());
    EXPECT_EQ(TestImage(file.Read(i, {}).release()).Colors(), images[i].Colors());
  }
  EXPECT_THROW(file.Read(3, {}), omb::FileError);
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
// A watch hears how far a reader and a writer are, and stops them. The codecs of other systems than
// Windows tell nothing.
TEST(Files, AreWatchedAndStopped) {
  const TestImage image = Noisy(24, 40, 300, {}).Build();
  struct Stop {};
  for (const Format format : std::span(kAll).first(kOnWindows ? 4 : 1)) {
    const Directory directory;
    const fs::path file = directory / "old";
    omb::WriteImage(file, format, image.get());
    const std::vector<uint8_t> old = Load(file);
    const auto write = [&] { omb::WriteImage(file, format, image.get()); };
    const auto read = [&] { omb::ReadImage(file, {}); };
    for (const std::function<void()>& work : {std::function<void()>(write), {read}}) {
      double last = 0;
      {
        const omb::Watching watching([&](double share) {
          EXPECT_GE(share, last);
          last = share;
        });
        work();
      }
      EXPECT_EQ(last, 1) << omb::TitleOf(format);
      const omb::Watching watching([](double share) {
        if (share > 0.3) throw Stop();
      });
      EXPECT_THROW(work(), Stop) << omb::TitleOf(format);
      EXPECT_EQ(Load(file), old);
      EXPECT_EQ(directory.Count(), 1u);
    }
  }
}

TEST(Files, DamagedSamplesAreRefusedOrRead) {
  for (const fs::path& path : Samples()) {
    const std::vector<uint8_t> file = Load(path);
    if (file.size() > 550) continue;
    SCOPED_TRACE(path.filename().string());
    // What follows the pixels of a TIFF may be missing.
    ExpectSafe(file, path.extension() == ".tif" ? file.size() : 0);
  }
}

TEST(Files, WhatCannotBeReadIsToldInOneLine) {
  const std::pair<const char*, std::string> cases[] = {
      {"huge.png", "the file is too short for 8205 x 8202 pixels"},
      {"huge.jpg", "the file is too short for 32531 x 32531 pixels"},
      {"floats.tif", "samples of floating point are not supported"}};
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
  // What a program may do is no matter of an image; a link may lead to what is not there yet.
  fs::permissions(directory / "target.bmp", fs::perms::owner_all | fs::perms::set_uid);
  omb::WriteImage(directory / "target.bmp", Format::kBmp, image.get());
  EXPECT_EQ(fs::status(directory / "target.bmp").permissions(), fs::perms::owner_all);
  fs::remove(directory / "target.bmp");
  omb::WriteImage(directory / "link.bmp", Format::kBmp, image.get());
  EXPECT_TRUE(fs::is_symlink(directory / "link.bmp"));
  EXPECT_TRUE(fs::exists(directory / "target.bmp"));
}

TEST(Files, AFullDiskIsNoticed) {
  std::FILE* full = std::fopen("/dev/full", "w+b");
  if (full == nullptr) GTEST_SKIP() << "this system has no full device";
  const TestImage image = Noisy(24, 300, 200, {}).Build();
  const omb::WriteOptions options;
  const omb::Remark ignore = [](const std::string&) {};
  omb::Output output(full);
  std::setvbuf(full, nullptr, _IONBF, 0);
  EXPECT_THROW(omb::WritePng(image.get(), {}, {output, options, ignore}), omb::FileError);
  EXPECT_THROW(omb::WriteJpeg(image.get(), {}, {output, options, ignore}), omb::FileError);
  EXPECT_EQ(output.error(), std::errc::no_space_on_device);
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
