// Steps for pages: smoothing, sharpening, rank order, edges.
#include "steps/limits.h"
#include "steps/steps.h"

namespace omb {

namespace {

// The library's numbers for its modes.
enum Enhancement { kLopass, kHipass, kGauss, kHigauss, kUnsharp = 5, kMedian = 7, kRank = 8 };
enum Edge { kSobel, kRoberts, kSculpt, kLaplace, kHorizontal = 5, kVertical = 6 };

// The library counts sizes from 0, which is 3x3 except for one filter.
int32_t SizeNumber(int32_t filter, int32_t side) {
  return (side - (filter == kHigauss ? 5 : 3)) / 2;
}

const char* EnhanceConflict(const Arguments& arguments) {
  const int32_t filter = arguments.Integer(0), side = arguments.Integer(1);
  if (filter == kHigauss && side == 3) return "higauss comes in 5x5, 7x7 and 9x9";
  if (filter != kHigauss && side == 9) return "only higauss comes in 9x9";
  return nullptr;
}

bool EnhancepageStep(Image& image, const Arguments& arguments) {
  const int32_t filter = arguments.Integer(0);
  CheckLevels(image.get());
  CheckRows(image.get());
  return omb_EnhancePage(image.get(), SizeNumber(filter, arguments.Integer(1)),
                         arguments.Integer(2), arguments.Integer(3), 0, arguments.Integer(4),
                         filter, 0, 0) != 0;
}

bool EdgepageStep(Image& image, const Arguments& arguments) {
  const int32_t filter = arguments.Integer(0);
  CheckLevels(image.get());
  if (filter != kSobel && filter != kRoberts) CheckRows(image.get());
  return omb_EdgePage(image.get(), SizeNumber(filter, arguments.Integer(1)), arguments.Integer(2),
                      arguments.Integer(3), filter) != 0;
}

Parameter Passes() { return Whole("passes", "how often", 1, 1000).Usual(1, 10).Preset("1"); }

Parameter Strength(const char* help) {
  return Whole("strength", help, 0, 1000).Usual(0, 30).Preset("10");
}

constexpr const char* kFamily = "&Pages";

}  // namespace

std::span<const Step> PageSteps() {
  static const Step steps[] = {
      {"enhancepage",
       "&Smooth, sharpen, rank",
       kFamily,
       "Smooth, sharpen, or take the median or another rank",
       {8, 24},
       {Choice("filter", "smooth by lopass and gauss, sharpen by the next three, clean by rank",
               {{"lopass", kLopass},
                {"gauss", kGauss},
                {"hipass", kHipass},
                {"higauss", kHigauss},
                {"unsharp", kUnsharp},
                {"median", kMedian},
                {"rank", kRank}}),
        Choice("size", "of the neighbourhood; 9x9 of higauss, which has no 3x3",
               {{"3x3", 3}, {"5x5", 5}, {"7x7", 7}, {"9x9", 9}})
            .Preset("5x5"),
        Passes(), Strength("tenths of the effect, except of median and rank"),
        Whole("percentile", "of rank: 0 the darkest pixel, 100 the lightest", 0, 100).Preset("50")},
       Always({"median,5x5", "rank,3x3,percentile=0", "higauss,7x7", "gauss,7x7,2"}),
       EnhancepageStep,
       "truecolor",
       EnhanceConflict,
       kGrayAtEightBits},
      {"edgepage",
       "&Edges",
       kFamily,
       "Find edges",
       {8, 24},
       {Choice("filter", "what to find them with",
               {{"sobel", kSobel},
                {"roberts", kRoberts},
                {"sculpt", kSculpt},
                {"laplace", kLaplace},
                {"horizontal", kHorizontal},
                {"vertical", kVertical}}),
        Choice("size", "of laplace, horizontal and vertical", {{"3x3", 3}, {"5x5", 5}, {"7x7", 7}})
            .Preset("3x3"),
        Passes(), Strength("tenths of the effect, except of sobel and roberts")},
       Always({"sobel", "roberts", "sculpt", "vertical,5x5"}),
       EdgepageStep,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
  };
  return steps;
}

}  // namespace omb
