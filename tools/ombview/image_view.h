// The part of the window that shows the image. It computes nothing: what is to be seen comes as
// bitmaps that somebody else makes.
#pragma once

#include <functional>
#include <optional>

#include "viewport.h"
#include "window.h"

namespace ombview {

// A bitmap with its place in the view, made for what a viewport showed.
struct Rendering {
  GdiObject<HBITMAP> bitmap;
  Point begin = {0, 0};
  Viewport viewport;
  bool fixed = false;  // it does not move with the image
};

class ImageView : public Window {
 public:
  struct Events {
    std::function<void()> moved;                        // another part, another zoom
    std::function<void(std::optional<Point>)> pointed;  // at a pixel, or beside the image
    std::function<void()> selected;                     // another rectangle, or none
  };

  ImageView(HWND parent, Events events);

  // An image of another size is fitted into the window. An empty size means no image.
  void SetImageSize(Point size);
  void Show(Rendering rendering);
  // Instead of the image: why it cannot be shown.
  void Complain(const std::wstring& complaint);

  const Viewport& viewport() const { return viewport_; }
  void Fit();
  void Zoom(double zoom);  // in the middle
  void Step(bool in);

  // Whether dragging with the left button draws a rectangle; it moves the image otherwise.
  void SetSelecting(bool selecting);
  bool selecting() const { return selecting_; }
  const std::optional<Rect>& selection() const { return selection_; }
  void Select(std::optional<Rect> pixels);

 private:
  void Paint(Painting& painting) override;
  LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
  void PaintSelection(HDC dc);
  void Moved();
  void Scroll(int bar, int request);
  void OnWheel(UINT message, WPARAM wparam, LPARAM lparam);
  void OnPress(Point at, bool selects);
  void OnDrag(Point at);
  void PointAt(Point at);

  Events events_;
  Viewport viewport_;
  bool has_image_ = false;
  bool pointed_ = false;  // the pointer is over the view
  Rendering rendering_;
  std::wstring complaint_;

  bool selecting_ = false;
  std::optional<Rect> selection_;
  enum class Drag { kNone, kPan, kSelect } drag_ = Drag::kNone;
  Point last_ = {0, 0};    // where a drag has come to
  Point corner_ = {0, 0};  // the pixel corner where a rectangle began
};

}  // namespace ombview
