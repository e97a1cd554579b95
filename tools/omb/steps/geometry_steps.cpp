// Steps on geometry: scale, rotate, flip.
#include <algorithm>
#include <charconv>
#include <cmath>

#include "errors.h"
#include "steps/steps.h"

namespace omb {

namespace {

constexpr double kLargestSide = 1e6, kLargestPercentage = 1e5;
constexpr uint32_t kLargestResized = 32767;

// A size as it is written: 800x600, 800x, x600 or 50%. What is not given is 0.
struct Size {
  uint32_t width = 0, height = 0;
  double percent = 0;
};

std::optional<uint32_t> Side(std::string_view text) {
  if (text.empty()) return 0;
  uint32_t side = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
  if (error != std::errc() || end != text.data() + text.size()) return {};
  if (side < 1 || side > kLargestSide) return {};
  return side;
}

std::optional<Size> ParseSize(std::string_view text) {
  Size size;
  if (text.ends_with('%')) {
    const char* last = text.data() + text.size() - 1;
    const auto [end, error] = std::from_chars(text.data(), last, size.percent);
    if (error != std::errc() || end != last) return {};
    if (!(size.percent > 0 && size.percent <= kLargestPercentage)) return {};
    return size;
  }
  const size_t x = text.find_first_of("xX");
  if (x == std::string_view::npos || text.size() == 1) return {};
  const auto width = Side(text.substr(0, x)), height = Side(text.substr(x + 1));
  if (!width || !height) return {};
  return Size{*width, *height};
}

bool IsSize(const std::string& text) { return ParseSize(text).has_value(); }

uint32_t Scaled(uint32_t side, double factor) {
  return static_cast<uint32_t>(std::clamp(std::round(side * factor), 1.0, 4e9));
}

// The size in pixels for an image: a missing side keeps the proportions.
Size PixelsOf(Size size, uint32_t width, uint32_t height) {
  if (size.percent > 0) {
    return {Scaled(width, size.percent / 100), Scaled(height, size.percent / 100)};
  }
  if (size.width == 0) size.width = Scaled(width, 1.0 * size.height / height);
  if (size.height == 0) size.height = Scaled(height, 1.0 * size.width / width);
  return size;
}

[[noreturn]] void ThrowTooLarge(Size size) {
  throw StepError("there is no memory for " + std::to_string(size.width) + " x " +
                  std::to_string(size.height) + " pixels, or they would take 2 GiB or more");
}

void Resize(Image& image, const Size& size, uint32_t filter) {
  if (size.width > kLargestResized || size.height > kLargestResized) {
    throw StepError("the new image would be larger than 32,767 pixels; try scale");
  }
  const bool done = Replace(
      image, [&](PackedDib** dib) { return omb_resize(dib, size.width, size.height, filter); });
  if (!done) ThrowTooLarge(size);
}

Size NewSizeOf(const PackedDib* dib, const std::string& text) {
  return PixelsOf(ParseSize(text).value(), omb_DIBWidth(dib), omb_DIBHeight(dib));
}

constexpr uint32_t kArea = 4;  // a mode of the host, beside those of OmbResampling

bool ScaleStep(Image& image, const Arguments& arguments) {
  const Size size = NewSizeOf(image.get(), arguments.Text(0));
  // The library refuses the size that an image has; to a person it is simply reached.
  if (size.width == omb_DIBWidth(image.get()) && size.height == omb_DIBHeight(image.get())) {
    return true;
  }
  if (arguments.Unsigned(1) == kArea) {
    Resize(image, size, OMB_RESIZE_BOX);
    return true;
  }
  const bool done = Replace(image, [&](PackedDib** dib) {
    return omb_scale(dib, size.width, size.height, arguments.Unsigned(1));
  });
  if (!done) ThrowTooLarge(size);
  return true;
}

bool ResizeStep(Image& image, const Arguments& arguments) {
  Resize(image, NewSizeOf(image.get(), arguments.Text(0)), arguments.Unsigned(1));
  return true;
}

bool RotateStep(Image& image, const Arguments& arguments) {
  const auto degrees = static_cast<float>(arguments.Real(0));
  // The library refuses full turns; to a person they are done.
  if (std::fabs(std::fmod(degrees, 360.0f)) < 0.01) return true;
  const bool done = Replace(
      image, [&](PackedDib** dib) { return omb_rotate(dib, degrees, arguments.Unsigned(1)); });
  if (done) return true;
  throw StepError("there is no memory for the turned image, or it would take 2 GiB or more");
}

bool FliphorStep(Image& image, const Arguments&) { return omb_fliphor(image.get()) != 0; }

bool FlipvertStep(Image& image, const Arguments&) { return omb_flipvert(image.get()) != 0; }

Parameter NewSize() {
  return Text("size", "of the new image", "a size such as 800x600, 800x, x600 or 50%", IsSize);
}

std::vector<Name> ResamplingNames() {
  return {{"point", OMB_RESAMPLE_POINT},
          {"bilinear", OMB_RESAMPLE_BILINEAR},
          {"bicubic", OMB_RESAMPLE_BICUBIC}};
}

std::vector<Name> ScalingNames() {
  std::vector<Name> names = ResamplingNames();
  names.push_back({"area", kArea});
  return names;
}

Parameter Mode() {
  return Choice("mode", "where the new pixels come from: one old pixel, 2 x 2 or 4 x 4",
                ResamplingNames())
      .Preset("bicubic");
}

constexpr const char* kFamily = "&Geometry";

}  // namespace

std::span<const Step> GeometrySteps() {
  static const Step steps[] = {
      {"scale",
       "Sc&ale",
       kFamily,
       "Bring to another size",
       {1, 4, 8, 24},
       {NewSize(),
        Choice(
            "mode",
            "where the new pixels come from: one old pixel, 2 x 2, 4 x 4, or all that they cover",
            ScalingNames())
            .Preset("bicubic")},
       Always({"40%,bicubic"}),
       ScaleStep,
       nullptr,
       nullptr,
       "The first three are exact to an old contract: when they shrink, thin lines and small print "
       "are lost. Shrink by area, or by the step resize, which has more filters."},
      {"resize",
       "Resi&ze",
       kFamily,
       "Bring to another size by a filter: no jagged edges, no moire",
       {1, 4, 8, 24},
       {NewSize(),
        Choice("filter", "box averages, the next two are smooth, lanczos is the sharpest",
               {{"box", OMB_RESIZE_BOX},
                {"triangle", OMB_RESIZE_TRIANGLE},
                {"cubic", OMB_RESIZE_CUBIC},
                {"lanczos", OMB_RESIZE_LANCZOS}})
            .Preset("lanczos")},
       Always({"20%"}),
       ResizeStep,
       nullptr,
       nullptr,
       "Indexed images become gray ones of 8 bits or colored ones of 24."},
      {"rotate",
       "&Rotate",
       kFamily,
       "Turn clockwise; new corners are white or the last color",
       {1, 4, 8, 24},
       {Real("degrees", "clockwise; below 0 the other way", -360, 360).Usual(-180, 180), Mode()},
       Always({"30,bilinear"}),
       RotateStep},
      {"fliphor",
       "Mirror &left to right",
       kFamily,
       "Mirror left to right",
       {1, 4, 8, 24},
       {},
       {},
       FliphorStep},
      {"flipvert",
       "Mirror &top to bottom",
       kFamily,
       "Mirror top to bottom",
       {1, 4, 8, 16, 24, 32},
       {},
       {},
       FlipvertStep},
  };
  return steps;
}

}  // namespace omb
