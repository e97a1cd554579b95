// What failing memory and hostile headers do to every export.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/packed_dib.h"
#include "support/every_export.h"
#include "support/failing_memory.h"
#include "trust/fuzz_library.h"

namespace ombrilo::test {
namespace {

TestImage SmallImage(int depth, bool core) {
  ImageBuilder builder(depth, 21, 13);
  if (core) builder.CoreHeader();
  if (depth <= 8) builder.Colors(VariedColors(1 << depth, 5));
  return builder.Pixels(Noise(1u << std::min(depth, 24), 7)).Build();
}

struct Outcome {
  uint64_t result, digest;
  std::vector<uint8_t> image;
  bool operator==(const Outcome&) const = default;
};

// With parameters by `seed` and the `failing`-th allocation failing, if there is one; `failed`
// tells.
Outcome Call(const Export& operation, TestImage& image, uint32_t seed, int failing, bool* failed) {
  const std::vector<uint8_t> bytes = RandomBytes(seed, 400);
  Draw draw(bytes, Draw::kMeant);
  Digest digest;
  MemoryWatch watch(failing);
  const uint64_t result = operation.call(image.ref(), draw, digest);
  watch.Stop();
  *failed = watch.failed();
  EXPECT_EQ(watch.still_held(), 0) << operation.name << ", allocation " << failing;
  return {result, digest.value(), image.Bytes()};
}

// Those that have no result, have nothing to refuse or need no image.
bool CannotRefuse(const char* operation) {
  const std::string names =
      "omb_version, omb_brightnesscontrast, omb_adjustghms, omb_autoclr, omb_newdib, omb_freedib, "
      "omb_frompixels, omb_newKERNAL, omb_cloneKERNAL, omb_zeroKERNAL, omb_destroyKERNAL, "
      "omb_getKERNAL, "
      "omb_convolute, omb_sobel, omb_medianblur, omb_dilate, omb_erode, omb_mathopen, "
      "omb_mathclose, omb_denoise, omb_pickedge, omb_gradientize, omb_opencompose, omb_tophat";
  return names.find(operation) != std::string::npos;
}

void FailEachAllocation(const Export& operation, const TestImage& image, uint32_t seed) {
  bool failed = true;
  TestImage done = image.Clone();
  const Outcome success = Call(operation, done, seed, 0, &failed);
  // Expanding to 24 bits is a step of its own, which may have been done.
  TestImage expanded = image.Clone();
  if (std::string(operation.name) == "omb_neuquant") omb_neuquant(expanded.ref(), 24);
  failed = true;
  for (int n = 1; failed; ++n) {
    TestImage copy = image.Clone();
    const Outcome outcome = Call(operation, copy, seed, n, &failed);
    if (!failed || outcome == success) continue;
    EXPECT_TRUE(outcome.image == image.Bytes() || outcome.image == expanded.Bytes())
        << operation.name << ", " << image.bit_count() << " bits, allocation " << n;
    EXPECT_TRUE(outcome.result == 0 || CannotRefuse(operation.name)) << operation.name;
  }
}

TEST(Safety, FailedAllocationsChangeNothingAndLeakNothing) {
  for (const int depth : {1, 4, 8, 16, 24, 32}) {
    for (const bool core : {false, true}) {
      const TestImage image = SmallImage(depth, core);
      for (const Export& operation : EveryExport()) {
        for (const uint32_t seed : {2, 5, 6, 7}) FailEachAllocation(operation, image, seed);
      }
    }
  }
}

TEST(Safety, NullImagesAreRefused) {
  const std::vector<uint8_t> bytes = RandomBytes(2, 400);
  for (const Export& operation : EveryExport()) {
    TestImage none;
    Draw draw(bytes, Draw::kMeant);
    Digest digest;
    const uint64_t result = operation.call(none.ref(), draw, digest);
    EXPECT_EQ(result != 0, CannotRefuse(operation.name)) << operation.name;
    EXPECT_EQ(none.get(), nullptr) << operation.name;
  }
  const OmbRect one = {0, 0, 0, 0};
  EXPECT_EQ(omb_transformat(nullptr) | omb_crop(nullptr, &one) | omb_scale(nullptr, 2, 2, 1), 0u);
  EXPECT_EQ(omb_gray(nullptr) | omb_extractcolor(nullptr, 1) | omb_binary(nullptr, 9), 0u);
  EXPECT_EQ(omb_rotate(nullptr, 30, 1) | omb_rotate(nullptr, 90, 1), 0u);
  EXPECT_EQ(omb_neuquant(nullptr, 8) | omb_dither(nullptr, 8), 0);
}

// The block is as long as its header announces, or longer.
void ExpectRoomForHeader(const TestImage& image, const char* operation) {
  const auto view = DibView::Open(image.get());
  ASSERT_TRUE(view) << operation;
  ASSERT_LE(view->extent(), AllocatedSize(image.get())) << operation;
}

// The sizes do not fit the fields of a core header.
TEST(Safety, WideImagesWithCoreHeadersHaveRoomForWhatTheyAnnounce) {
  for (const int depth : {1, 4, 8, 24}) {
    for (const auto& [width, height] :
         {std::pair{0x00400100, 0}, {0x00050009, 1}, {3, 0x00050009}}) {
      for (const uint32_t mode : {1, 2, 3}) {
        TestImage image = SmallImage(depth, true);
        EXPECT_EQ(omb_scale(image.ref(), static_cast<uint32_t>(width),
                            static_cast<uint32_t>(height), mode),
                  1u);
        ExpectRoomForHeader(image, "omb_scale");
      }
    }
  }
}

// Table and rows over the header: what a new block announces is up to the colors.
TEST(Safety, RowsOverTheHeaderHaveRoomForWhatItAnnounces) {
  int replaced = 0;
  for (const int depth : {1, 4, 8, 16, 24, 32}) {
    for (const uint32_t size_field : {0, 4, 5, 6, 8, 10}) {
      for (const Export& operation : EveryExport()) {
        TestImage image = SmallImage(depth, true);
        std::memcpy(image.raw(), &size_field, sizeof size_field);
        const PackedDib* const before = image.get();
        const std::vector<uint8_t> bytes = RandomBytes(size_field, 400);
        Draw draw(bytes, Draw::kMeant);
        Digest digest;
        operation.call(image.ref(), draw, digest);
        if (image.get() == before) continue;  // in place it is the caller's block
        ExpectRoomForHeader(image, operation.name);
        ++replaced;
      }
    }
  }
  EXPECT_GT(replaced, 100);
}

// Under the address sanitizer this finds what leaves a block, with the undefined-behaviour
// sanitizer what overflows.
TEST(Safety, HostileImagesAndParametersDoNoHarm) {
  for (const auto& file : std::filesystem::directory_iterator(OMBRILO_SEEDS "/library")) {
    std::ifstream stream(file.path(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), {}};
    FuzzLibrary({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
  }
  for (uint32_t seed = 0; seed < 6000; ++seed) FuzzLibrary(RandomBytes(seed * 77 + 1, 200));
}

}  // namespace
}  // namespace ombrilo::test
