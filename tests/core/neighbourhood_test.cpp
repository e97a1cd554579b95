// What the frame of neighbourhoods does to large images alone; operations have tests of their own.
#include "core/neighbourhood.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

#include "support/image.h"
#include "support/kernals.h"

namespace ombrilo::test {
namespace {

// Rows of what a core's caches do not hold are computed in pieces. The image repeats itself along
// its rows, at a distance that no piece is a multiple of, and so do its results; their ends are
// those of a narrow image.
TEST(Neighbourhood, LargeImagesRepeatWhatSmallOnesAre) {
  constexpr size_t kPeriod = 1009, kWidth = 20 * kPeriod + 333, kHeight = 40, kEdge = 40;
  constexpr size_t kNarrow = kPeriod + 333;
  static_assert(3 * kWidth * kHeight >= kCoreCached);
  const std::pair<const char*, void (*)(PackedDib*)> operations[] = {
      {"dilate", omb_dilate},
      {"open", omb_mathopen},
      {"pick edge", omb_pickedge},
      {"median", omb_medianblur},
      {"sobel", omb_sobel},
      {"box 5x5", [](PackedDib* p) { omb_convolute(p, 2); }},
      {"sharpen", [](PackedDib* p) { omb_convolute(p, 7); }},
      {"low pass 7x7", [](PackedDib* p) { omb_DoConvoluteDIB(p, omb_getKERNAL(2), 1, 10); }},
      {"high pass 9x9", [](PackedDib* p) { omb_DoConvoluteDIB(p, omb_getKERNAL(8), 1, 5); }},
      {"circle", [](PackedDib* p) { omb_DoKernalMorphDIB(p, 24, 1, omb_getKERNAL(40), 1); }},
      {"edge", [](PackedDib* p) { omb_EdgePage(p, 0, 0, 0, 0); }},
      {"clean", [](PackedDib* p) { omb_MorphologicalPage(p, 2, 0, 1, OMB_PAGE_CLEAN); }},
      {"rank 3x3",
       [](PackedDib* p) { omb_EnhancePage(p, 0, 1, 0, 0, 25, OMB_ENHANCE_RANK, 0, 0); }},
      {"rank 5x5",
       [](PackedDib* p) { omb_EnhancePage(p, 1, 1, 0, 0, 25, OMB_ENHANCE_RANK, 0, 0); }},
  };
  const TestImage narrow = ImageBuilder(24, int{kNarrow}, int{kHeight})
                               .Pixels([noise = Noise(1 << 24, 9)](int x, int y) {
                                 return noise(x % static_cast<int>(kPeriod), y);
                               })
                               .Build();
  const DibView narrow_rows = *DibView::Open(narrow.get());
  const TestImage wide(omb_newdib(int{kWidth}, int{kHeight}, 24));
  const Dib wide_rows = *Dib::Open(wide.get());
  for (int y = 0; y < int{kHeight}; ++y) {
    uint8_t* const row = wide_rows.row(y);
    std::memcpy(row, narrow_rows.row(y), 3 * kPeriod);
    for (size_t i = 3 * kPeriod; i < 3 * kWidth; ++i) row[i] = row[i - 3 * kPeriod];
  }
  for (const auto& [name, operation] : operations) {
    const TestImage small = narrow.Clone(), large = wide.Clone();
    operation(small.get());
    operation(large.get());
    const DibView small_rows = *DibView::Open(small.get()), rows = *DibView::Open(large.get());
    for (int y = 0; y < int{kHeight}; ++y) {
      const uint8_t *own = small_rows.row(y), *row = rows.row(y);
      const auto differ = [&](size_t at, size_t small_at, size_t pixels) {
        return std::memcmp(row + 3 * at, own + 3 * small_at, 3 * pixels) != 0;
      };
      ASSERT_FALSE(differ(0, 0, kNarrow - kEdge)) << name << ' ' << y;
      ASSERT_FALSE(differ(kWidth - kNarrow + kEdge, kEdge, kNarrow - kEdge)) << name << ' ' << y;
      ASSERT_EQ(std::memcmp(row + 3 * kEdge, row + 3 * (kEdge + kPeriod),
                            3 * (kWidth - kPeriod - 2 * kEdge)),
                0)
          << name << ' ' << y;
    }
  }
}

}  // namespace
}  // namespace ombrilo::test
