// The dialog that asks for a step's arguments, made from the step's table of parameters.
#pragma once

#include <windows.h>

#include <optional>

#include "steps/steps.h"

namespace ombview {

// The control of parameter i has the number kFirstParameter + i.
inline constexpr int kFirstParameter = 100;

// The step with what the person entered, beginning with `initial`; nothing when it was cancelled.
std::optional<omb::Call> AskForArguments(HWND owner, const omb::Step& step,
                                         const omb::Arguments& initial);

}  // namespace ombview
