// Maps a parameter's values to the positions of a slider. Portable.
#pragma once

#include <optional>
#include <string>

#include "steps/parameter.h"

namespace ombview {

class SliderScale {
 public:
  // None for parameters without a range that a slider could offer.
  static std::optional<SliderScale> For(const omb::Parameter& parameter);

  int places() const { return places_; }  // from 0 to this
  std::string TextAt(int place) const;
  int PlaceOf(double value) const;

 private:
  SliderScale(omb::Range range, bool whole, bool logarithmic, int places)
      : range_(range), whole_(whole), logarithmic_(logarithmic), places_(places) {}

  omb::Range range_;
  bool whole_, logarithmic_;
  int places_;
};

}  // namespace ombview
