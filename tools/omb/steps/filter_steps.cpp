// Steps on neighbourhoods: the numbered filters, kernels, relief, edges, median.
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
  };
  return steps;
}

}  // namespace omb
