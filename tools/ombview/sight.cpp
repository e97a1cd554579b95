#include "sight.h"

#include <new>
#include <stdexcept>

#include "errors.h"
#include "wide.h"

namespace ombview {

namespace {

// A bitmap that a view can draw. Throws std::bad_alloc.
Rendering RenderingOf(const Seen& seen, const Viewport& viewport) {
  GdiObject<HBITMAP> bitmap(omb_DIBToDIBSection(seen.image.get()));
  if (!bitmap) throw std::bad_alloc();
  return {std::move(bitmap), seen.begin, viewport, seen.fixed};
}

}  // namespace

void Sight::Start(Look look) {
  worker_.Start(kImage, [this, look, viewport = view_.viewport()](Progress&) -> Worker::Followup {
    std::wstring complaint;
    try {
      const auto rendering = std::make_shared<Rendering>(RenderingOf(look(viewport), viewport));
      return [this, rendering] { view_.Show(std::move(*rendering)); };
    } catch (const std::bad_alloc&) {
      complaint = L"This image cannot be shown: it is too large for the memory";
    } catch (const std::exception& error) {
      complaint = L"This image cannot be shown: " + Wide(error.what());
    }
    return [this, complaint] { view_.Complain(complaint); };
  });
}

void Sight::Show(const SharedImage& image, const std::optional<omb::Call>& step) {
  if (!image) return worker_.Drop(kImage);
  Start([image, step](const Viewport& viewport) {
    try {
      if (step) return SeeAfter(image.get(), *step, viewport);
    } catch (const omb::StepError&) {  // which is told when the step is to be done
    }
    return See(image.get(), viewport);
  });
}

void Sight::ShowBefore(const SharedImage& before) {
  Start([before](const Viewport& viewport) { return SeeBefore(before.get(), viewport); });
}

void Sight::Measure(const SharedImage& image) {
  if (image == measured_) return;
  measured_ = image;
  if (!image) {
    worker_.Drop(kCounts);
    return histogram_.Show({});
  }
  worker_.Start(kCounts, [this, image](Progress&) -> Worker::Followup {
    try {
      return [this, histograms = HistogramsOf(image.get())] { histogram_.Show(histograms); };
    } catch (const std::exception& error) {
      return [this, text = Wide(error.what())] { histogram_.Complain(text); };
    }
  });
}

}  // namespace ombview
