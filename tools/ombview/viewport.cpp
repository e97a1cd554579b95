#include "viewport.h"

#include <algorithm>
#include <cmath>

namespace ombview {

namespace {

constexpr double kZooms[] = {.1, .15, .2, .25, 1 / 3., .5, 2 / 3., 1,  1.5,
                             2,  3,   4,  6,   8,      12, 16,     24, 32};
constexpr double kLeast = .1, kMost = 32;

int Scaled(int side, double zoom) {
  return static_cast<int>(std::clamp<long long>(std::llround(side * zoom), 1, 1LL << 30));
}

int Whole(double value) { return static_cast<int>(std::floor(value)); }

}  // namespace

void Viewport::SetImage(int width, int height) {
  const bool same = width == image_width_ && height == image_height_;
  image_width_ = width;
  image_height_ = height;
  if (!same || fit_) Fit();
}

void Viewport::SetArea(int width, int height) {
  // What was in the middle stays there.
  const Point middle = center();
  area_width_ = std::max(width, 1);
  area_height_ = std::max(height, 1);
  origin_.x += middle.x - center().x;
  origin_.y += middle.y - center().y;
  if (fit_) return Fit();
  Clamp();
}

double Viewport::FitZoom() const {
  if (image_width_ == 0 || image_height_ == 0) return 1;
  return std::min({1.0, static_cast<double>(area_width_) / image_width_,
                   static_cast<double>(area_height_) / image_height_});
}

void Viewport::Fit() {
  fit_ = true;
  zoom_ = FitZoom();
  origin_ = {0, 0};
}

void Viewport::ZoomTo(double zoom, Point at) {
  const double x = (at.x - begin().x) / zoom_, y = (at.y - begin().y) / zoom_;
  fit_ = false;
  zoom_ = std::clamp(zoom, std::min(kLeast, FitZoom()), kMost);
  origin_ = {static_cast<int>(std::lround(x * zoom_)) - at.x,
             static_cast<int>(std::lround(y * zoom_)) - at.y};
  Clamp();
}

void Viewport::Step(bool in, Point at) {
  constexpr double kSame = 1.001;
  double next = in ? kMost : std::min(kLeast, FitZoom());
  if (in) {
    for (const double zoom : kZooms) {
      if (zoom > zoom_ * kSame) next = std::min(next, zoom);
    }
  } else {
    for (const double zoom : kZooms) {
      if (zoom < zoom_ / kSame) next = std::max(next, zoom);
    }
  }
  ZoomTo(next, at);
}

void Viewport::PanBy(int dx, int dy) {
  origin_ = {origin_.x - dx, origin_.y - dy};
  Clamp();
}

void Viewport::Clamp() {
  const Point size = scaled();
  origin_.x = std::clamp(origin_.x, 0, std::max(0, size.x - area_width_));
  origin_.y = std::clamp(origin_.y, 0, std::max(0, size.y - area_height_));
}

Point Viewport::scaled() const {
  return {Scaled(image_width_, zoom_), Scaled(image_height_, zoom_)};
}

Point Viewport::begin() const {
  const Point size = scaled();
  return {size.x < area_width_ ? (area_width_ - size.x) / 2 : -origin_.x,
          size.y < area_height_ ? (area_height_ - size.y) / 2 : -origin_.y};
}

std::optional<Point> Viewport::PixelAt(Point at) const {
  const Point pixel = {Whole((at.x - begin().x) / zoom_), Whole((at.y - begin().y) / zoom_)};
  if (pixel.x < 0 || pixel.y < 0 || pixel.x >= image_width_ || pixel.y >= image_height_) return {};
  return pixel;
}

Point Viewport::CornerAt(Point at) const {
  return {std::clamp(Whole((at.x - begin().x) / zoom_ + .5), 0, image_width_),
          std::clamp(Whole((at.y - begin().y) / zoom_ + .5), 0, image_height_)};
}

Rect Viewport::OnScreen(const Rect& pixels) const {
  const auto x = [this](int column) { return begin().x + Whole(column * zoom_ + .5); };
  const auto y = [this](int row) { return begin().y + Whole(row * zoom_ + .5); };
  return {x(pixels.left), y(pixels.top), x(pixels.right), y(pixels.bottom)};
}

Rect Viewport::VisibleScaled() const {
  const Point size = scaled(), at = begin();
  return {std::max(0, -at.x), std::max(0, -at.y), std::min(size.x, area_width_ - at.x),
          std::min(size.y, area_height_ - at.y)};
}

Rect Viewport::VisiblePixels() const {
  const Rect seen = VisibleScaled();
  const Point size = scaled();
  // By the ratio of whole sizes, which differs from the zoom by rounding.
  const auto first = [](int place, int from, int to) {
    return static_cast<int>(static_cast<long long>(place) * from / to);
  };
  const auto end = [](int place, int from, int to) {
    return static_cast<int>((static_cast<long long>(place) * from + to - 1) / to);
  };
  return {first(seen.left, image_width_, size.x), first(seen.top, image_height_, size.y),
          std::min(image_width_, end(seen.right, image_width_, size.x)),
          std::min(image_height_, end(seen.bottom, image_height_, size.y))};
}

}  // namespace ombview
