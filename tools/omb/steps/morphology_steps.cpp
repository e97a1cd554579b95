// Steps on shapes: dilation, erosion and what is made of them.
#include "steps/kernels.h"
#include "steps/limits.h"
#include "steps/steps.h"

namespace omb {

namespace {

template <auto kOperation>
bool InPlace(Image& image, const Arguments&) {
  kOperation(image.get());
  return true;
}

template <auto kOperation>
bool InPlaceWithSides(Image& image, const Arguments&) {
  CheckSides(image.get());
  kOperation(image.get());
  return true;
}

bool MorphStep(Image& image, const Arguments& arguments) {
  CheckLevels(image.get());
  CheckRows(image.get());
  return omb_DoKernalMorphDIB(image.get(), omb_DIBBitCount(image.get()), arguments.Integer(0),
                              FindKernel(arguments.Text(1)), arguments.Integer(2)) != 0;
}

bool IsKernel(const std::string& text) { return FindKernel(text) != nullptr; }

constexpr const char* kFamily = "&Morphology";

Step Simple(const char* name, const char* title, const char* summary,
            bool (*run)(Image&, const Arguments&)) {
  return {name, title, kFamily, summary, {1, 4, 8, 24}, {}, {}, run};
}

Step TrueColorOnly(const char* name, const char* title, const char* summary,
                   bool (*run)(Image&, const Arguments&)) {
  return {name, title, kFamily, summary, {24}, {}, {}, run, "truecolor"};
}

}  // namespace

std::span<const Step> MorphologySteps() {
  static const Step steps[] = {
      Simple("dilate", "&Dilate", "Grow what is light: the maximum of 3 x 3 pixels",
             InPlace<omb_dilate>),
      Simple("erode", "&Erode", "Grow what is dark: the minimum of 3 x 3 pixels",
             InPlace<omb_erode>),
      Simple("mathopen", "&Open", "Opening: remove light detail smaller than 3 x 3",
             InPlace<omb_mathopen>),
      Simple("mathclose", "&Close", "Closing: remove dark detail smaller than 3 x 3",
             InPlace<omb_mathclose>),
      Simple("denoise", "Remove &specks", "Opening, then closing: remove specks of both kinds",
             InPlace<omb_denoise>),
      Simple("pickedge", "&Inner edges", "Inner edges: the image minus its erosion",
             InPlaceWithSides<omb_pickedge>),
      Simple("gradientize", "&Gradient dilation", "The dilation, by another name",
             InPlace<omb_gradientize>),
      TrueColorOnly("opencompose", "Open and &lighten",
                    "The opening plus the erosion: lighter and softer",
                    InPlaceWithSides<omb_opencompose>),
      TrueColorOnly("tophat", "&Top hat", "Light detail smaller than 3 x 3, on black",
                    InPlaceWithSides<omb_tophat>),
      {"morph",
       "Any s&hape",
       kFamily,
       "Erosion, dilation, opening or closing with any shape",
       {8, 24},
       {Choice("operation", "what to do",
               {{"erode", OMB_MORPH_ERODE},
                {"dilate", OMB_MORPH_DILATE},
                {"open", OMB_MORPH_OPEN},
                {"close", OMB_MORPH_CLOSE}}),
        Text("shape", "of the neighbourhood",
             "a shape such as 'Circle 5x5', or its number ('omb list kernels' draws them)",
             IsKernel),
        Whole("iterations", "how often", 1, 1000).Usual(1, 10).Preset("1")},
       Always({"close,Circle 5x5", "erode,Row 7x1", "open,Circle 3x3,2"}),
       MorphStep,
       "truecolor",
       nullptr,
       kGrayAtEightBits},
  };
  return steps;
}

}  // namespace omb
