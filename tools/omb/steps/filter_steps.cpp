// Steps on neighbourhoods: the numbered filters, kernels, relief, edges, median.
#include "errors.h"
#include "steps/kernels.h"
#include "steps/limits.h"
#include "steps/numbered_filters.h"
#include "steps/steps.h"

namespace omb {

namespace {

bool ConvoluteStep(Image& image, const Arguments& arguments) {
  omb_convolute(image.get(), arguments.Unsigned(0));
  return true;
}

bool KernelStep(Image& image, const Arguments& arguments) {
  CheckLevels(image.get());
  CheckRows(image.get());
  return omb_DoConvoluteDIB(image.get(), FindKernel(arguments.Text(0)), arguments.Integer(1),
                            arguments.Integer(2)) != 0;
}

bool EmbossStep(Image& image, const Arguments& arguments) {
  return omb_emboss(image.get(), arguments.Unsigned(0), arguments.Color(1)) != 0;
}

bool SobelStep(Image& image, const Arguments&) {
  omb_sobel(image.get());
  return true;
}

bool MedianblurStep(Image& image, const Arguments&) {
  omb_medianblur(image.get());
  return true;
}

constexpr int kClock = -1, kSquare = 0;

bool DiffuseStep(Image& image, const Arguments& arguments) {
  const uint64_t width = omb_DIBWidth(image.get()), area = arguments.Unsigned(0);
  if (area > width * width) throw StepError("the area is larger than the square of the width");
  const int32_t seed = arguments.Integer(1);
  if (seed == kClock) return omb_diffuse(image.get(), arguments.Unsigned(0)) != 0;
  return omb_diffuse_seed(image.get(), arguments.Unsigned(0), static_cast<uint64_t>(seed)) != 0;
}

bool GranulateStep(Image& image, const Arguments& arguments) {
  const uint32_t width = arguments.Unsigned(0), height = arguments.Unsigned(1);
  return omb_granulate(image.get(), width, height == kSquare ? width : height) != 0;
}

bool IsWeighted(const std::string& text) {
  const KERNAL* kernel = FindKernel(text);
  return kernel != nullptr && HasWeights(*kernel);
}

constexpr const char* kFamily = "Fi&lters";

}  // namespace

std::span<const Step> FilterSteps() {
  static const Step steps[] = {
      {"convolute",
       "&Filter by name",
       kFamily,
       "Filter with one of 39 fixed kernels; the border turns black",
       {1, 4, 8, 24},
       {Whole("filter", "by name or number", 1, 39).Named(NumberedFilterNames())},
       Always({"smooth-5x5", "sharpen-strong", "laplace-8"}),
       ConvoluteStep},
      {"kernel",
       "&Kernel",
       kFamily,
       "Filter with a built-in kernel; the border stays",
       {8, 24},
       {Text("name", "what to filter with",
             "a kernel with weights such as 'unsharp 5x5', or its number ('omb list kernels' draws "
             "them)",
             IsWeighted),
        Whole("passes", "how often", 1, 1000).Usual(1, 10).Preset("1"),
        Whole("strength", "tenths of the effect; above 10 it overshoots", 0, 1000)
            .Usual(0, 30)
            .Preset("10")},
       Always({"unsharp 5x5", "lopass 7x7,3", "laplace 3x3"}),
       KernelStep,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
      {"emboss",
       "&Relief",
       kFamily,
       "Relief on a ground of one color; the border turns black",
       {1, 4, 8, 24},
       {Whole("light", "where it comes from, by name or number", 0, 27).Named(ReliefNames()),
        Color("color", "of the ground").Preset("#808080")},
       Always({"soft-up-left", "strong-up,#c0a060"}),
       EmbossStep},
      {"sobel",
       "Sobel &edges",
       kFamily,
       "Edges bright on black, strongest of four directions",
       {1, 4, 8, 24},
       {},
       {},
       SobelStep},
      {"medianblur",
       "&Median of a cross",
       kFamily,
       "Median of a cross of nine pixels; a border of 3 turns black",
       {1, 4, 8, 24},
       {},
       {},
       MedianblurStep},
      {"diffuse",
       "Frosted &glass",
       kFamily,
       "Each pixel becomes a random one of those around it",
       {1, 4, 8, 24},
       {Whole("area", "pixels to choose from: 9 is 3x3, 25 is 5x5", 2).Preset("25"),
        Whole("seed", "the same number gives the same picture", 0)
            .Named({{"clock", kClock}})
            .Preset("clock")},
       Always({"49,1"}),
       DiffuseStep},
      {"granulate",
       "M&osaic",
       kFamily,
       "Each block of pixels becomes its mean color",
       {1, 4, 8, 24},
       {Whole("width", "columns of a block", 1).Preset("16"),
        Whole("height", "rows of a block", 1).Named({{"square", kSquare}}).Preset("square")},
       Always({"12", "40,4"}),
       GranulateStep},
  };
  return steps;
}

}  // namespace omb
