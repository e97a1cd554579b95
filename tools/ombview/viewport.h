// What part of an image a view shows, and how large. Portable; it holds no image.
#pragma once

#include <optional>

namespace ombview {

struct Point {
  int x, y;
  bool operator==(const Point&) const = default;
};

// Right and bottom are exclusive.
struct Rect {
  int left, top, right, bottom;
  int width() const { return right - left; }
  int height() const { return bottom - top; }
  bool empty() const { return width() <= 0 || height() <= 0; }
  bool operator==(const Rect&) const = default;
};

class Viewport {
 public:
  // The size of the image. One of another size than before is shown whole.
  void SetImage(int width, int height);
  void SetArea(int width, int height);

  // Shows the whole image, not enlarged, also when the area changes.
  void Fit();
  // What is at a point of the area stays there.
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
  // The nearest corner of a pixel, for rectangles.
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
