// Steps on neighbourhoods: the numbered filters, kernels, relief, edges, median.
#include "steps/kernels.h"
#include "steps/steps.h"

namespace omb {

namespace {

bool ConvoluteStep(Image& image, const Arguments& arguments) {
  omb_convolute(image.get(), arguments.Unsigned(0));
  return true;
}

bool KernelStep(Image& image, const Arguments& arguments) {
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

constexpr const char* kFamily = "Filters";

}  // namespace

std::span<const Step> FilterSteps() {
  static const Step steps[] = {
      {"convolute",
       kFamily,
       "Filter with a numbered kernel; the border turns black",
       {1, 4, 8, 24},
       {Whole("number",
              "1-4 smooth, 5-8 sharpen, 9-11 Laplacian, 12-19 gradient in eight directions, 20-27 "
              "difference to one neighbour, 28-35 compass, 36-39 lines",
              1, 39)},
       Always({"2", "5", "10"}),
       ConvoluteStep},
      {"kernel",
       kFamily,
       "Filter with a built-in kernel; the border stays",
       {8, 24},
       {Text("name", "what to filter with",
             "a kernel with weights such as 'unsharp 5x5', or its number ('omb list kernels' draws "
             "them)",
             IsWeighted),
        Whole("passes", "how often", 1, 1000).Preset("1"),
        Whole("strength", "tenths of the effect; above 10 it overshoots", 0, 1000).Preset("10")},
       Always({"unsharp 5x5", "lopass 7x7,3", "laplace 3x3"}),
       KernelStep,
       "neuquant=24",
       nullptr,
       kGrayAtEightBits},
      {"emboss",
       kFamily,
       "Relief on a ground of one color; the border turns black",
       {1, 4, 8, 24},
       {Whole("direction",
              "0-7 soft from eight sides, 8-15 fine, 16-23 strong, 24-27 row, column, diagonals", 0,
              27),
        Color("color", "of the ground").Preset("#808080")},
       Always({"3", "6,#c0a060"}),
       EmbossStep},
      {"sobel",
       kFamily,
       "Edges bright on black, strongest of four directions",
       {1, 4, 8, 24},
       {},
       {},
       SobelStep},
      {"medianblur",
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
