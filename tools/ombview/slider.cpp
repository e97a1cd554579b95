#include "slider.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace ombview {

namespace {

constexpr int kFinePlaces = 1000;
// Of maximum to minimum; from there on positions are logarithmic.
constexpr double kLargeRatio = 20;

}  // namespace

std::optional<SliderScale> SliderScale::For(const omb::Parameter& parameter) {
  using Kind = omb::Parameter::Kind;
  const bool whole = parameter.kind == Kind::kWhole;
  if (!whole && parameter.kind != Kind::kReal) return {};
  const omb::Range range =
      parameter.usual.value_or(omb::Range{parameter.minimum, parameter.maximum});
  if (range.maximum == omb::kAnyWhole || range.maximum <= range.minimum) return {};
  const bool logarithmic =
      !whole && range.minimum > 0 && range.maximum / range.minimum >= kLargeRatio;
  const int places = whole ? static_cast<int>(range.maximum - range.minimum) : kFinePlaces;
  return SliderScale(range, whole, logarithmic, places);
}

std::string SliderScale::TextAt(int place) const {
  if (whole_) return std::to_string(static_cast<int>(range_.minimum) + place);
  const double share = static_cast<double>(place) / places_;
  const double value = logarithmic_
                           ? range_.minimum * std::pow(range_.maximum / range_.minimum, share)
                           : range_.minimum + share * (range_.maximum - range_.minimum);
  char text[40];
  const double step = logarithmic_ ? value / 100 : (range_.maximum - range_.minimum) / places_;
  const int digits = std::clamp(static_cast<int>(std::ceil(-std::log10(step))), 0, 6);
  std::snprintf(text, sizeof text, "%.*f", digits, value);
  return text;
}

int SliderScale::PlaceOf(double value) const {
  const double bounded = std::clamp(value, range_.minimum, range_.maximum);
  const double share =
      logarithmic_ ? std::log(bounded / range_.minimum) / std::log(range_.maximum / range_.minimum)
                   : (bounded - range_.minimum) / (range_.maximum - range_.minimum);
  return static_cast<int>(std::lround(share * places_));
}

}  // namespace ombview
