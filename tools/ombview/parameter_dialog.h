// The dialog that asks for a step's arguments, made from the step's table of parameters.
#pragma once

#include <windows.h>

#include <functional>
#include <optional>

#include "document.h"
#include "histogram.h"
#include "steps/steps.h"

namespace ombview {

// The control of parameter i has the number kFirstParameter + i, its slider kFirstSlider + i.
inline constexpr int kFirstParameter = 100, kFirstSlider = 200;

struct DialogEvents {
  // What the person has entered so far; nothing while it cannot be understood.
  std::function<void(const std::optional<omb::Call>&)> changed;
  // Whether a message is a key that works while the dialog is open.
  std::function<bool(const MSG&)> takes_key;
};

// The step with what the person entered, beginning with `initial`; nothing when it was cancelled.
// Choices are shown by what they make of the image, tone curves over its histogram.
std::optional<omb::Call> AskForArguments(HWND owner, const omb::Step& step,
                                         const omb::Arguments& initial, const SharedImage& image,
                                         const std::vector<omb::Histogram>& histograms,
                                         const DialogEvents& events);

}  // namespace ombview
