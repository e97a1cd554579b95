// The part of the window that shows the image: whole, or pixel by pixel with scroll bars.
#pragma once

#include "image.h"
#include "window.h"

namespace ombview {

class ImageView : public Window {
 public:
  explicit ImageView(HWND parent);

  // The image, which stays the caller's, has changed. Null for none.
  void Show(const PackedDib* image);
  // Whether the image is reduced to fit the window.
  void SetFit(bool fit);
  bool fit() const { return fit_; }

 private:
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void Prepare();
  void Paint();
  void Arrange();
  void ScrollTo(int bar, int position);
  void Scroll(int bar, int request);

  const PackedDib* image_ = nullptr;
  bool fit_ = true;
  GdiObject<HBITMAP> section_;  // what is shown; made when it is needed
};

}  // namespace ombview
