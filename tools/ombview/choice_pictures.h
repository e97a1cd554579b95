// Choices by picture: what each would make of a piece of the image. Portable.
#pragma once

#include <string>
#include <vector>

#include "image.h"
#include "steps/steps.h"

namespace ombview {

inline constexpr size_t kFewestPictures = 6;  // choices that deserve pictures
inline constexpr int kPictureSide = 64;       // on a usual screen

// What can be chosen rather than typed: the names of values, and kernels where one is wanted.
std::vector<std::string> ChoicesOf(const omb::Parameter& parameter);

// What the step makes of the middle of the image when parameter `i` is `choice`: a square of 24
// bits, white where the step does not run. Throws std::bad_alloc.
omb::Image PictureOfChoice(const omb::Step& step, const omb::Arguments& arguments, size_t i,
                           const std::string& choice, const PackedDib* image, int side);

}  // namespace ombview
