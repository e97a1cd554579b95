// Steps for pages: smoothing, sharpening, rank order, edges, morphology, tone.
#include <algorithm>

#include "steps/limits.h"
#include "steps/steps.h"

namespace omb {

namespace {

// The library counts sizes from 0, which is 3x3 except for one filter.
int32_t SizeNumber(int32_t filter, int32_t side) {
  return (side - (filter == OMB_ENHANCE_HIGAUSS ? 5 : 3)) / 2;
}

const char* EnhanceConflict(const Arguments& arguments) {
  const int32_t filter = arguments.Integer(0), side = arguments.Integer(1);
  if (filter == OMB_ENHANCE_HIGAUSS && side == 3) return "higauss comes in 5x5, 7x7 and 9x9";
  if (filter != OMB_ENHANCE_HIGAUSS && side == 9) return "only higauss comes in 9x9";
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
  if (filter != OMB_EDGE_SOBEL && filter != OMB_EDGE_ROBERTS) CheckRows(image.get());
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
  constexpr bool kCuts = kCurve != OMB_TONE_LOGARITHM;
  CheckLevels(image.get());
  int32_t block = arguments.Integer(0);
  if (block == kAutomatic) {  // suits pages: a twelfth of the width
    block = std::clamp(static_cast<int32_t>(omb_DIBWidth(image.get()) / 12), 16, 32767);
  }
  return omb_EnhancePage(image.get(), 2, arguments.Integer(kCuts ? 2 : 1),
                         kCuts ? arguments.Integer(1) : 0, block, 0, OMB_ENHANCE_TONE,
                         block == kWhole ? OMB_SCOPE_IMAGE : OMB_SCOPE_BLOCKS, kCurve) != 0;
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
               {{"lopass", OMB_ENHANCE_LOPASS},
                {"gauss", OMB_ENHANCE_GAUSS},
                {"hipass", OMB_ENHANCE_HIPASS},
                {"higauss", OMB_ENHANCE_HIGAUSS},
                {"unsharp", OMB_ENHANCE_UNSHARP},
                {"median", OMB_ENHANCE_MEDIAN},
                {"rank", OMB_ENHANCE_RANK}}),
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
               {{"sobel", OMB_EDGE_SOBEL},
                {"roberts", OMB_EDGE_ROBERTS},
                {"sculpt", OMB_EDGE_SCULPT},
                {"laplace", OMB_EDGE_LAPLACE},
                {"horizontal", OMB_EDGE_HORIZONTAL},
                {"vertical", OMB_EDGE_VERTICAL}}),
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
               {{"erode", OMB_PAGE_ERODE},
                {"dilate", OMB_PAGE_DILATE},
                {"open", OMB_PAGE_OPEN},
                {"close", OMB_PAGE_CLOSE},
                {"gradient", OMB_PAGE_GRADIENT},
                {"light", OMB_PAGE_LIGHT},
                {"dark", OMB_PAGE_DARK},
                {"clean", OMB_PAGE_CLEAN}}),
        Choice("size", "of the shape",
               {{"3", OMB_SIZE_3X3}, {"5", OMB_SIZE_5X5}, {"7", OMB_SIZE_7X7}})
            .Preset("3"),
        Choice("shape", "of the neighbourhood",
               {{"square", OMB_SHAPE_SQUARE},
                {"circle", OMB_SHAPE_CIRCLE},
                {"row", OMB_SHAPE_ROW},
                {"column", OMB_SHAPE_COLUMN}})
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
       ToneStep<OMB_TONE_WHITEN>,
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
       ToneStep<OMB_TONE_STRETCH>,
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
       ToneStep<OMB_TONE_EQUALIZE>,
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
       ToneStep<OMB_TONE_LOGARITHM>,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
  };
  return steps;
}

}  // namespace omb
