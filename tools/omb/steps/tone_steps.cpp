// Steps on tone and color: levels, gray, thresholds, channels.
#include <sstream>

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
  // Above 128 the library counts the threshold itself as light.
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
  // At 24 bits the library returns 0 even when it is done: the depth tells.
  return true_color ? omb_DIBBitCount(image.get()) == 8 : reported;
}

bool AdjustghmsStep(Image& image, const Arguments& arguments) {
  // The library's 0 means that amounts of 0 have nothing to do.
  omb_adjustghms(image.get(), arguments.Integer(0), arguments.Integer(1), arguments.Integer(2));
  return true;
}

Parameter Channel() {
  return Choice(
      "channel", "which channel",
      {{"red", OMB_CHANNEL_RED}, {"green", OMB_CHANNEL_GREEN}, {"blue", OMB_CHANNEL_BLUE}});
}

std::vector<Parameter> Fractions() {
  return {Real("low", "fraction to cut off at the dark end", 0, 1).Preset("0.005"),
          Real("high", "fraction below the light end", 0, 1).Preset("0.995")};
}

// "0:0/64:48/255:255"; empty when that is no list of points.
std::vector<OmbPoint> PointsOf(const std::string& text) {
  std::vector<OmbPoint> points;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, '/');) {
    const size_t colon = part.find(':');
    if (colon == std::string::npos) return {};
    const Parameter level = Whole("", "", 0, 255);
    const auto x = level.Parse(part.substr(0, colon)), y = level.Parse(part.substr(colon + 1));
    if (!x || !y) return {};
    points.push_back({static_cast<int32_t>(x->number), static_cast<int32_t>(y->number)});
    if (points.size() > 1 && points.end()[-2].x >= points.back().x) return {};
  }
  return points;
}

// A step with points and a channel.
template <auto kOperation>
bool CurveStep(Image& image, const Arguments& arguments) {
  const std::vector<OmbPoint> points = PointsOf(arguments.Text(0));
  return kOperation(image.get(), points.data(), static_cast<uint32_t>(points.size()),
                    arguments.Unsigned(1)) != 0;
}

bool X1x2ChangedStep(Image& image, const Arguments& arguments) {
  return omb_x1x2_changed(image.get(), arguments.Integer(0), arguments.Integer(1),
                          arguments.Unsigned(2)) != 0;
}

template <uint32_t kMode>
bool AdjustcolorStep(Image& image, const Arguments& arguments) {
  return omb_adjustcolor(image.get(), kMode, arguments.Integer(0), arguments.Integer(1),
                         arguments.Integer(2)) != 0;
}

bool BalanceStep(Image& image, const Arguments& arguments) {
  return omb_balance(image.get(), arguments.Integer(0), arguments.Integer(1), arguments.Integer(2),
                     arguments.Unsigned(3), arguments.Unsigned(4)) != 0;
}

Parameter Points() {
  return Text("points", "input levels with their output levels",
              "levels from 0 to 255 such as 0:0/64:48/255:255, from dark to light",
              [](const std::string& text) { return !PointsOf(text).empty(); });
}

Parameter AllOrChannel() {
  return Choice("channel", "which channel",
                {{"all", OMB_CHANNEL_ALL},
                 {"red", OMB_CHANNEL_RED},
                 {"green", OMB_CHANNEL_GREEN},
                 {"blue", OMB_CHANNEL_BLUE}})
      .Preset("all");
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
      {"curve",
       "Tone &curve",
       kFamily,
       "Send levels through a smooth curve",
       {1, 4, 8, 24},
       {Points(), AllOrChannel()},
       Always({"0:0/64:40/192:215/255:255", "0:30/128:140/255:230,blue"}),
       CurveStep<omb_curve>},
      {"segmentoperation",
       "Tone curve of &straight lines",
       kFamily,
       "Send levels through straight lines from point to point",
       {1, 4, 8, 24},
       {Points(), AllOrChannel()},
       Always({"0:0/85:0/170:255/255:255", "0:255/128:0/255:255"}),
       CurveStep<omb_segmentoperation>},
      {"x1x2_changed",
       "&Input levels",
       kFamily,
       "Choose the levels that become black and white",
       {1, 4, 8, 24},
       {Whole("black", "the level that becomes black", 0, 255),
        Whole("white", "the level that becomes white; below the other one a negative", 0, 255),
        AllOrChannel()},
       Always({"40,200"}),
       X1x2ChangedStep},
      {"coloroffset",
       "Add t&o channels",
       kFamily,
       "Add to red, green and blue",
       {1, 4, 8, 24},
       {Whole("red", "added to red", -255, 255), Whole("green", "added to green", -255, 255),
        Whole("blue", "added to blue", -255, 255)},
       Always({"30,0,-30"}),
       AdjustcolorStep<OMB_ADJUST_OFFSETS>},
      {"colorgain",
       "&Multiply channels",
       kFamily,
       "Raise or lower red, green and blue by percent",
       {1, 4, 8, 24},
       {Whole("red", "percent of red", -100, 900), Whole("green", "percent of green", -100, 900),
        Whole("blue", "percent of blue", -100, 900)},
       Always({"15,0,-15"}),
       AdjustcolorStep<OMB_ADJUST_GAINS>},
      {"hsl",
       "H&ue, saturation, lightness",
       kFamily,
       "Turn hues, raise or lower saturation and lightness",
       {1, 4, 8, 24},
       {Whole("hue", "degrees to turn by: 120 makes red green", -360, 360),
        Whole("saturation", "percent; -100 is gray", -100, 100).Preset("0"),
        Whole("lightness", "percent; -100 is black, 100 white", -100, 100).Preset("0")},
       Always({"0,40,0", "120"}),
       AdjustcolorStep<OMB_ADJUST_HSL>},
      {"hsi",
       "Hue, saturation, int&ensity",
       kFamily,
       "Turn hues, raise or lower saturation and intensity; the mean of the channels stays",
       {1, 4, 8, 24},
       {Whole("hue", "degrees to turn by: 120 makes red green", -360, 360),
        Whole("saturation", "percent; -100 is gray", -100, 100).Preset("0"),
        Whole("intensity", "percent; -100 is black, 100 white", -100, 100).Preset("0")},
       Always({"0,40,0", "120"}),
       AdjustcolorStep<OMB_ADJUST_HSI>},
      {"balance",
       "Color bala&nce",
       kFamily,
       "Move colors toward red, green and blue or their opposites",
       {8, 24},
       {Whole("red", "from cyan (-100) to red", -100, 100),
        Whole("green", "from magenta (-100) to green", -100, 100),
        Whole("blue", "from yellow (-100) to blue", -100, 100),
        Choice("levels", "which levels",
               {{"shadows", OMB_BALANCE_SHADOWS},
                {"midtones", OMB_BALANCE_MIDTONES},
                {"highlights", OMB_BALANCE_HIGHLIGHTS},
                {"all", OMB_BALANCE_ALL}})
            .Preset("midtones"),
        Choice("light", "whether each color keeps its luminance", {{"keep", 1}, {"change", 0}})
            .Preset("keep")},
       Always({"40,0,-40", "-30,0,30,shadows"}),
       BalanceStep,
       "neuquant=24",
       nullptr,
       "At 8 bits each pixel gets the nearest color of the table, so that a gray image stays gray. "
       "Bring it to 24 bits with neuquant=24 first."},
  };
  return steps;
}

}  // namespace omb
