// What part of an image a view shows, and how large. It knows no windows and no image.
#pragma once

#include <optional>

namespace ombview {

struct Point {
  int x, y;
  bool operator==(const Point&) const = default;
};

// From left and top up to, and without, right and bottom.
struct Rect {
  int left, top, right, bottom;
  int width() const { return right - left; }
  int height() const { return bottom - top; }
  bool empty() const { return width() <= 0 || height() <= 0; }
  bool operator==(const Rect&) const = default;
};

class Viewport {
 public:
  // An image of this size is shown, from now on whole if its size is another one.
  void SetImage(int width, int height);
  void SetArea(int width, int height);

  // Whole, not enlarged, and so whatever becomes of the area.
  void Fit();
  // The place of the image that lies at a point of the area stays there.
  void ZoomTo(double zoom, Point at);
  // To the next usual zoom, inwards or outwards.
  void Step(bool in, Point at);
  void PanBy(int dx, int dy);
  void PanTo(Point place) { origin_ = place, Clamp(); }

  bool fit() const { return fit_; }
  double zoom() const { return zoom_; }
  Point area() const { return {area_width_, area_height_}; }
  Point center() const { return {area_width_ / 2, area_height_ / 2}; }
  // The size of the whole image at this zoom, and where it begins in the area.
  Point scaled() const;
  Point begin() const;
  // How far the area has been moved over the image, in pixels of the screen.
  Point origin() const { return origin_; }

  // The pixel at a point of the area; none beside the image.
  std::optional<Point> PixelAt(Point at) const;
  // The nearest place between pixels, for the corner of a rectangle.
  Point CornerAt(Point at) const;
  // Where a rectangle of pixels lies in the area.
  Rect OnScreen(const Rect& pixels) const;
  // The part of the scaled image that can be seen, and the pixels in it.
  Rect VisibleScaled() const;
  Rect VisiblePixels() const;

  bool operator==(const Viewport&) const = default;

 private:
  void Clamp();
  double FitZoom() const;

  int image_width_ = 0, image_height_ = 0;
  int area_width_ = 1, area_height_ = 1;
  bool fit_ = true;
  double zoom_ = 1;
  Point origin_ = {0, 0};
};

}  // namespace ombview
