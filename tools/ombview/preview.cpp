#include "preview.h"

#include <algorithm>
#include <cstdint>
#include <sstream>
#include <string_view>
#include <utility>

#include "document.h"
#include "errors.h"

namespace ombview {

namespace {

constexpr int64_t kQuick = 4'000'000;  // pixels that are filtered while a slider moves
constexpr int kMargin = 16;            // pixels around what is seen, which filters read

// Arguments other than 0 that change nothing.
constexpr std::pair<std::string_view, const char*> kIdle[] = {
    {"points", "0:0/255:255"}, {"black", "0"}, {"white", "255"}};

int64_t PixelsOf(const Rect& rect) { return int64_t{rect.width()} * rect.height(); }

Rect WholeOf(const PackedDib* image) {
  return {0, 0, static_cast<int>(omb_DIBWidth(image)), static_cast<int>(omb_DIBHeight(image))};
}

bool SameSize(const PackedDib* a, const PackedDib* b) { return WholeOf(a) == WholeOf(b); }

// An image that takes the place of a rectangle of pixels.
Seen SeePiece(const PackedDib* piece, const Rect& pixels, const Viewport& viewport) {
  const Rect place = viewport.OnScreen(pixels);
  Viewport own;
  own.SetImage(pixels.width(), pixels.height());
  own.SetArea(place.width(), place.height());
  own.ZoomTo(viewport.zoom(), {0, 0});
  return {Render(piece, own), {place.left, place.top}};
}

// An image of another size than the one that the view shows, as large as fits into it.
Seen SeeOther(const PackedDib* image, const Viewport& viewport) {
  Viewport own;
  own.SetArea(viewport.area().x, viewport.area().y);
  const Rect whole = WholeOf(image);
  own.SetImage(whole.right, whole.bottom);
  return {Render(image, own), own.begin(), true};
}

// Whether pixels come from far away, or arguments are places in the image.
bool MovesPixels(const omb::Step& step) {
  return step.Family() == "Geometry" || step.Family() == "Image";
}

}  // namespace

Seen See(const PackedDib* image, const Viewport& viewport) {
  const Point begin = viewport.begin();
  return {Render(image, viewport), {std::max(0, begin.x), std::max(0, begin.y)}};
}

Seen SeeBefore(const PackedDib* image, const Viewport& viewport) {
  const Rect whole = WholeOf(image);
  Viewport same = viewport;
  same.SetImage(whole.right, whole.bottom);
  return same == viewport ? See(image, viewport) : SeeOther(image, viewport);
}

Seen SeeAfter(const PackedDib* image, const omb::Call& call, const Viewport& viewport) {
  const Rect whole = WholeOf(image);
  if (PixelsOf(whole) <= kQuick || MovesPixels(*call.step)) {
    const omb::Image after = After(image, call);
    return SameSize(after.get(), image) ? See(after.get(), viewport)
                                        : SeeOther(after.get(), viewport);
  }
  Rect seen = viewport.VisiblePixels();
  seen = {std::max(seen.left - kMargin, 0), std::max(seen.top - kMargin, 0),
          std::min(seen.right + kMargin, whole.right),
          std::min(seen.bottom + kMargin, whole.bottom)};
  omb::Image piece;
  if (PixelsOf(seen) > kQuick) {
    // Shown reduced: the step runs on the reduced picture.
    Seen picture = See(image, viewport);
    if (!call.step->TakesDepth(omb_DIBBitCount(picture.image.get()))) return picture;
    omb::RunCall(call, picture.image);
    return picture;
  }
  piece = PieceOf(image, seen);
  if (!piece) throw std::bad_alloc();
  const omb::Image after = After(piece.get(), call);
  return SameSize(after.get(), piece.get()) ? SeePiece(after.get(), seen, viewport)
                                            : SeeOther(after.get(), viewport);
}

omb::Arguments FirstArguments(const omb::Step& step, const PackedDib* image) {
  std::istringstream example(step.ExampleCalls(image)[0]);
  std::string ignored;
  std::getline(example, ignored, '=');
  std::string text = step.name;
  for (size_t i = 0; i < step.parameters.size(); ++i) {
    const omb::Parameter& parameter = step.parameters[i];
    using Kind = omb::Parameter::Kind;
    const bool number = parameter.kind == Kind::kWhole || parameter.kind == Kind::kReal;
    std::string value;
    std::getline(example, value, ',');
    if (parameter.preset) value = *parameter.preset;
    if (number && parameter.minimum < 0 && parameter.Parse("0")) value = "0";
    for (const auto& [name, idle] : kIdle) {
      if (name == parameter.name) value = idle;
    }
    text += (i == 0 ? "=" : ",") + value;
  }
  try {
    return omb::ParseCall(text).arguments;
  } catch (const omb::UsageError&) {  // what is right one by one may not go together
    return omb::ParseCall(step.ExampleCalls(image)[0]).arguments;
  }
}

}  // namespace ombview
