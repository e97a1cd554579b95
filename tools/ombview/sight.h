// What is to be seen of images: rendered, previewed and measured off the thread of the windows, and
// shown when it is there. The newest request replaces those that have not begun.
#pragma once

#include <functional>
#include <optional>

#include "document.h"
#include "histogram_pane.h"
#include "image_view.h"
#include "preview.h"
#include "steps/steps.h"
#include "worker.h"

namespace ombview {

class Sight {
 public:
  // `wake` is called on the worker's thread when there is something for RunFollowups().
  Sight(ImageView& view, HistogramPane& histogram, std::function<void()> wake)
      : view_(view), histogram_(histogram), worker_(std::move(wake)) {}

  // The image as the view stands; with `step`, what that would make of it.
  void Show(const SharedImage& image, const std::optional<omb::Call>& step = {});
  // The image as it was before, in its place.
  void ShowBefore(const SharedImage& before);
  // Its histograms, computed once for each image; null shows none.
  void Measure(const SharedImage& image);

  void RunFollowups() { worker_.RunFollowups(); }
  bool HasFollowups() const { return worker_.busy(); }

 private:
  enum Slot { kImage, kCounts };
  using Look = std::function<Seen(const Viewport&)>;
  void Start(Look look);

  ImageView& view_;
  HistogramPane& histogram_;
  SharedImage measured_;
  Worker worker_;  // the last member: its work ends before what it uses
};

}  // namespace ombview
