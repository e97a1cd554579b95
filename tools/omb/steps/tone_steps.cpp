// Steps on tone and color: levels, gray, thresholds, channels.
#include "errors.h"
#include "steps/color_ramps.h"
#include "steps/otsu.h"
#include "steps/steps.h"

namespace omb {

namespace {

bool BrightnesscontrastStep(Image& image, const Arguments& arguments) {
  return omb_brightnesscontrast(image.get(), arguments.Integer(0), arguments.Integer(1)) != 0;
}

bool GammacorrectionStep(Image& image, const Arguments& arguments) {
  // The library's 0 means that a gamma of 1 has nothing to do; every other one is done.
  omb_gammacorrection(image.get(), arguments.Real(0));
  return true;
}

bool AutolevelStep(Image& image, const Arguments& arguments) {
  return omb_autolevel(image.get(), arguments.Real(0), arguments.Real(1)) != 0;
}

bool AutocontrastStep(Image& image, const Arguments& arguments) {
  if (omb_autocontrast(image.get(), arguments.Real(0), arguments.Real(1)) != 0) return true;
  throw StepError("the low and the high level are the same, or memory ran out");
}

bool GrayStep(Image& image, const Arguments&) { return Replace(image, omb_gray); }

// Each entry of the image's table gets the ramp's color for its own gray level, so that images with
// white first, or with levels in any other order, come out right.
bool PseudocolorStep(Image& image, const Arguments& arguments) {
  const PackedDib* dib = image.get();
  if (omb_can_pseudocolor(dib) == 0) throw StepError("the image is colorful; try gray first");
  const uint8_t* entry = omb_FindDIBBits(dib) - omb_PaletteSize(dib);
  const uint32_t count = omb_DIBNumColors(dib);
  std::vector<uint8_t> table;
  for (uint32_t i = 0; i < count; ++i, entry += omb_PaletteSize(dib) / count) {
    const uint32_t color = RampColor(arguments.Integer(0), entry[0]);
    for (const int shift : {0, 8, 16, 24}) table.push_back(static_cast<uint8_t>(color >> shift));
  }
  return omb_pseudocolor(image.get(), table.data()) != 0;
}

constexpr int kMedian = -1, kOtsu = -2;

int32_t ThresholdOf(const PackedDib* dib, int32_t given) {
  if (given == kMedian) return omb_autothreshold(dib);
  if (given != kOtsu) return given;
  // Above 128 the library takes the threshold itself for light.
  const int32_t dark = OtsuThreshold(dib);
  return dark < 128 ? dark : dark + 1;
}

bool BinaryStep(Image& image, const Arguments& arguments) {
  const int32_t threshold = ThresholdOf(image.get(), arguments.Integer(0));
  return Replace(image, [=](PackedDib** dib) { return omb_binary(dib, threshold); });
}

bool FiltercolorStep(Image& image, const Arguments& arguments) {
  return omb_filtercolor(image.get(), arguments.Unsigned(0)) != 0;
}

bool ExtractcolorStep(Image& image, const Arguments& arguments) {
  const bool true_color = omb_DIBBitCount(image.get()) == 24;
  const bool reported =
      Replace(image, [&](PackedDib** dib) { return omb_extractcolor(dib, arguments.Unsigned(0)); });
  // At 24 bits the library reports 0 also when it is done: the depth tells.
  return true_color ? omb_DIBBitCount(image.get()) == 8 : reported;
}

bool AdjustghmsStep(Image& image, const Arguments& arguments) {
  // The library's 0 means that amounts of 0 have nothing to do.
  omb_adjustghms(image.get(), arguments.Integer(0), arguments.Integer(1), arguments.Integer(2));
  return true;
}

Parameter Channel() {
  return Choice("channel", "which channel", {{"red", 1}, {"green", 2}, {"blue", 3}});
}

std::vector<Parameter> Fractions() {
  return {Real("low", "fraction to cut off at the dark end", 0, 1).Preset("0.005"),
          Real("high", "fraction below the light end", 0, 1).Preset("0.995")};
}

constexpr const char* kFamily = "&Color";

}  // namespace

std::span<const Step> ToneSteps() {
  static const Step steps[] = {
      {"brightnesscontrast",
       "&Brightness and contrast",
       kFamily,
       "Make lighter or darker, then raise or lower the contrast",
       {1, 4, 8, 24},
       {Whole("brightness", "added to each channel", -255, 255),
        Whole("contrast", "below 0 flatter, above 0 steeper, from 128 on a hard threshold", -127,
              255)},
       Always({"20,40"}),
       BrightnesscontrastStep},
      {"gammacorrection",
       "&Gamma",
       kFamily,
       "Darken (gamma above 1) or lighten (below 1) the middle tones",
       {1, 4, 8, 24},
       {Real("gamma", "exponent", 0.01, 100).Usual(0.2, 5)},
       Always({"1.8"}),
       GammacorrectionStep},
      {"autolevel",
       "Automatic &levels",
       kFamily,
       "Stretch each channel over the whole range",
       {1, 4, 8, 24},
       Fractions(),
       {},
       AutolevelStep},
      {"autocontrast",
       "&Automatic contrast",
       kFamily,
       "Stretch all channels alike over the whole range",
       {1, 4, 8, 24},
       Fractions(),
       {},
       AutocontrastStep},
      {"gray", "G&ray", kFamily, "Turn gray; 24 bits become 8", {1, 4, 8, 24}, {}, {}, GrayStep},
      {"pseudocolor",
       "&False colors",
       kFamily,
       "Show the levels of a gray image as colors",
       {1, 4, 8},
       {Choice("ramp", "colors from black to white", RampNames())},
       Always({"fire"}),
       PseudocolorStep,
       "gray"},
      {"binary",
       "Black and &white",
       kFamily,
       "Turn black and white, 1 bit",
       {1, 4, 8, 24},
       {Whole("threshold",
              "gray level between black and white; otsu parts dark from light best, median makes "
              "half of the pixels black",
              0, 255)
            .Named({{"otsu", kOtsu}, {"median", kMedian}})
            .Preset("otsu")},
       Always({"otsu"}),
       BinaryStep},
      {"filtercolor",
       "&Take a channel away",
       kFamily,
       "Take one channel away",
       {1, 4, 8, 24},
       {Channel()},
       Always({"red"}),
       FiltercolorStep},
      {"extractcolor",
       "&Keep one channel",
       kFamily,
       "Keep one channel; 24 bits become 8",
       {1, 4, 8, 24},
       {Channel()},
       Always({"green"}),
       ExtractcolorStep},
      {"adjustghms",
       "&Highlights and shadows",
       kFamily,
       "Adjust the very light and the very dark colors",
       {1, 4, 8, 24},
       {Whole("highlights", "added to very light colors", -255, 255),
        Whole("shadows1", "added to very dark colors", -255, 255).Preset("0"),
        Whole("shadows2", "added to what is very dark then", -255, 255).Preset("0")},
       Always({"-20,30,15"}),
       AdjustghmsStep},
  };
  return steps;
}

}  // namespace omb
