// Steps for pages: smoothing, sharpening, rank order, edges, morphology, tone.
#include <algorithm>

#include "steps/limits.h"
#include "steps/steps.h"

namespace omb {

namespace {

// The library's numbers for its modes.
enum Enhancement { kLopass, kHipass, kGauss, kHigauss, kTone, kUnsharp, kMedian = 7, kRank = 8 };
enum ToneCurve { kEqualize, kStretch, kWhiten, kLogarithm };
enum ToneScope { kImage, kBlocks };
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

bool MorphologicalpageStep(Image& image, const Arguments& arguments) {
  CheckLevels(image.get());
  return omb_MorphologicalPage(image.get(), arguments.Integer(1), arguments.Integer(2),
                               arguments.Integer(3), arguments.Integer(0)) != 0;
}

constexpr int kAutomatic = -1, kWhole = 0;

// Arguments: the blocks, what is cut off (not for logarithms), and percent.
template <int32_t kCurve>
bool ToneStep(Image& image, const Arguments& arguments) {
  constexpr bool kCuts = kCurve != kLogarithm;
  CheckLevels(image.get());
  int32_t block = arguments.Integer(0);
  if (block == kAutomatic) {  // suits pages: a twelfth of the width
    block = std::clamp(static_cast<int32_t>(omb_DIBWidth(image.get()) / 12), 16, 32767);
  }
  return omb_EnhancePage(image.get(), 2, arguments.Integer(kCuts ? 2 : 1),
                         kCuts ? arguments.Integer(1) : 0, block, 0, kTone,
                         block == kWhole ? kImage : kBlocks, kCurve) != 0;
}

Parameter Blocks() {
  return Whole("blocks",
               "width and height of the blocks in pixels; auto takes a twelfth of the width, image "
               "one curve for all",
               16, 32767)
      .Named({{"auto", kAutomatic}, {"image", kWhole}})
      .Usual(50, 500)
      .Preset("auto");
}

Parameter Cut() {
  return Whole("cut", "thousandths of the darkest and the lightest pixels that do not count", 0,
               1000)
      .Usual(0, 50)
      .Preset("5");
}

Parameter Percent() { return Whole("percent", "of the effect", 1, 100).Preset("100"); }

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
      {"morphologicalpage",
       "&Morphology of pages",
       kFamily,
       "Grow, shrink or take away ink and specks by their width, or clean the background",
       {8, 24},
       {Choice("operation",
               "what to do: light and dark give what is thin, clean makes uneven paper white",
               {{"erode", 0},
                {"dilate", 1},
                {"open", 2},
                {"close", 3},
                {"gradient", 4},
                {"light", 5},
                {"dark", 6},
                {"clean", 7}}),
        Choice("size", "of the shape", {{"3", 0}, {"5", 1}, {"7", 2}}).Preset("3"),
        Choice("shape", "of the neighbourhood",
               {{"square", 0}, {"circle", 1}, {"row", 2}, {"column", 3}})
            .Preset("square"),
        Whole("iterations", "how often; to clean, wider than strokes are", 1, 1000)
            .Usual(1, 20)
            .Preset("1")},
       Always({"clean,7,square,6", "dark,7,circle", "gradient"}),
       MorphologicalpageStep,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
      {"whiten",
       "&Whiten paper",
       kFamily,
       "Make the paper white, in uneven light too",
       {8, 24},
       {Blocks(), Cut(), Percent()},
       Always({"auto", "image"}),
       ToneStep<kWhiten>,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
      {"stretch",
       "S&tretch tones",
       kFamily,
       "Stretch the tones to black and white, block by block",
       {8, 24},
       {Blocks(), Cut(), Percent()},
       Always({"auto"}),
       ToneStep<kStretch>,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
      {"equalize",
       "E&qualize",
       kFamily,
       "Spread the tones that occur most, block by block",
       {8, 24},
       {Blocks(),
        Whole("limit", "of the contrast, in percent; 0 for none", 0, 25600)
            .Usual(100, 1000)
            .Preset("300"),
        Percent()},
       Always({"auto", "image,0"}),
       ToneStep<kEqualize>,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
      {"logarithm",
       "&Lighten shadows",
       kFamily,
       "Lighten shadows by a logarithm, block by block",
       {8, 24},
       {Blocks(), Percent()},
       Always({"auto"}),
       ToneStep<kLogarithm>,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
  };
  return steps;
}

}  // namespace omb
