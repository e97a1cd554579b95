// What a step would make of an image, as far as it can be seen; quick enough for a slider.
#pragma once

#include "rendering.h"
#include "steps/steps.h"

namespace ombview {

// A picture with its place in the view.
struct Seen {
  omb::Image image;
  Point begin = {0, 0};
  bool fixed = false;  // it does not move with the image: it is one of another size
};

Seen See(const PackedDib* image, const Viewport& viewport);
// The image before an action, where the view shows the one after it.
Seen SeeBefore(const PackedDib* image, const Viewport& viewport);

// On an image of up to some millions of pixels the step runs as it will run. On a larger one it
// runs on the visible part, reduced where that is shown reduced; steps that move pixels around run
// on the whole image. Throws StepError and std::bad_alloc.
Seen SeeAfter(const PackedDib* image, const omb::Call& call, const Viewport& viewport);

// The arguments that a dialog begins with: those that change nothing where they exist, else what is
// taken when they are left out, else those of the step's example.
omb::Arguments FirstArguments(const omb::Step& step, const PackedDib* image);

}  // namespace ombview
