// The time for a pixel from icons to posters: cost has to grow with the work, and what a call costs
// at least shows in tiny images. Whoever looks for it finds it in docs/sizes.svg.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <numeric>
#include <utility>

#include "core/packed_dib.h"
#include "rows/row_functions.h"
#include "run.h"

namespace ombrilo::bench {

namespace {

struct Operation {
  const char* name;
  void (*call)(PackedDib**);
};

uint32_t Times(const PackedDib* image, double factor, uint32_t (*side)(const PackedDib*)) {
  return static_cast<uint32_t>(side(image) * factor);
}

template <uint32_t mode>
void Scale(PackedDib** image, double factor) {
  omb_scale(image, Times(*image, factor, omb_DIBWidth), Times(*image, factor, omb_DIBHeight), mode);
}

constexpr OmbPoint kCurve[] = {{0, 0}, {64, 63}, {192, 193}, {255, 255}};

constexpr Operation kOperations[] = {
    {"invert", [](PackedDib** p) { omb_invert(*p); }},
    {"curve", [](PackedDib** p) { omb_curve(*p, kCurve, 4, 0); }},
    {"gray", [](PackedDib** p) { omb_gray(p); }},
    {"binary", [](PackedDib** p) { omb_binary(p, 128); }},
    {"auto threshold", [](PackedDib** p) { omb_autothreshold(*p); }},
    {"scale 0.5 bilinear", [](PackedDib** p) { Scale<OMB_RESAMPLE_BILINEAR>(p, 0.5); }},
    {"scale 1.5 bicubic", [](PackedDib** p) { Scale<OMB_RESAMPLE_BICUBIC>(p, 1.5); }},
    {"resize 0.4 lanczos",
     [](PackedDib** p) {
       omb_resize(p, Times(*p, 0.4, omb_DIBWidth), Times(*p, 0.4, omb_DIBHeight),
                  OMB_RESIZE_LANCZOS);
     }},
    {"rotate 7 bicubic", [](PackedDib** p) { omb_rotate(p, 7, OMB_RESAMPLE_BICUBIC); }},
    {"rotate 90", [](PackedDib** p) { omb_rotate(p, 90, OMB_RESAMPLE_POINT); }},
    {"convolute 1 (box 3x3)", [](PackedDib** p) { omb_convolute(*p, 1); }},
    {"medianblur", [](PackedDib** p) { omb_medianblur(*p); }},
    {"dilate", [](PackedDib** p) { omb_dilate(*p); }},
    {"edgepage sobel", [](PackedDib** p) { omb_EdgePage(*p, 0, 0, 0, 0); }},
    {"equalize", [](PackedDib** p) { omb_EnhancePage(*p, 2, 100, 0, 0, 0, 4, 0, 0); }},
    {"neuquant 8", [](PackedDib** p) { omb_neuquant(p, 8); }},
};

// Ten thousand icons; otherwise more than caches hold.
constexpr struct {
  const char* name;
  int width, height;
  size_t images;
} kSizes[] = {{"32 x 32", 32, 32, 10000},
              {"0.1 MP", 365, 274, 300},
              {"1 MP", 1155, 866, 30},
              {"12 MP", 4000, 3000, 3},
              {"100 MP", 11547, 8660, 1}};
constexpr size_t kSizeCount = std::size(kSizes), kOneMegapixel = 2, kHundred = 4;

// A part of the photograph, or more than all of it: it repeats. Each number gives another part.
Image PartOfPhoto(int number, int width, int height) {
  const DibView photo = *DibView::Open(Photo24());
  const int left = 32 * number % photo.width(), low = 32 * (32 * number / photo.width());
  Image part(omb_newdib(width, height, 24));
  const Dib dib = *Dib::Open(part.get());
  for (int y = 0; y < height; ++y) {
    const uint8_t* const from = photo.row((low + y) % photo.height());
    for (int x = 0, count; x < width; x += count) {
      const int column = (left + x) % photo.width();
      count = std::min(width - x, photo.width() - column);
      std::memcpy(dib.row(y) + 3 * x, from + 3 * column, static_cast<size_t>(3 * count));
    }
  }
  return part;
}

std::vector<Image> ImagesOfSize(size_t size) {
  std::vector<Image> images(kSizes[size].images);
  for (size_t i = 0; i < images.size(); ++i) {
    images[i] = PartOfPhoto(static_cast<int>(i), kSizes[size].width, kSizes[size].height);
  }
  return images;
}

// The least of several times for a pixel, in nanoseconds. Each time every image is a fresh copy.
double Least(const Operation& operation, const std::vector<Image>& images, double seconds) {
  double pixels = 0, least = HUGE_VAL;
  for (const Image& image : images) pixels += Pixels(image.get());
  const double end = ProcessorTime() + seconds * 1e9;
  for (int turn = 0; turn < 5 || ProcessorTime() < end; ++turn) {
    std::vector<PackedDib*> copies;
    for (const Image& image : images) copies.push_back(Copy(image.get()).release());
    const double start = ProcessorTime();
    for (PackedDib*& copy : copies) operation.call(&copy);
    least = std::min(least, ProcessorTime() - start);
    std::for_each(copies.begin(), copies.end(), omb_freedib);
  }
  return least / pixels;
}

struct Line {
  const char* name;
  double time[kSizeCount];
};

std::string Table(const std::vector<Line>& lines) {
  std::string text = Machine() + ", " + simd::Active().name +
                     ".\n\n![Nanoseconds per pixel at five sizes](sizes.svg)\n\n| ns per pixel |";
  for (const auto& size : kSizes) text += std::string(" ") + size.name + " |";
  text += " 100 MP / 1 MP | a call for 32 x 32 |\n|---|";
  for (size_t i = 0; i < kSizeCount + 2; ++i) text += "---:|";
  for (const Line& line : lines) {
    text += std::string("\n| ") + line.name + " |";
    for (const double time : line.time) text += Format(time < 10 ? " %.3f |" : " %.1f |", time);
    text += Format(" %.2f | %.2f µs |", line.time[kHundred] / line.time[kOneMegapixel],
                   line.time[0] * kSizes[0].width * kSizes[0].height / 1000);
  }
  return text + "\n";
}

// A curve for each operation; both scales are logarithmic.
std::string Chart(const std::vector<Line>& lines) {
  constexpr int kLeft = 50, kTop = 10, kDecade = 90, kHeight = 420, kEnd = 10;
  constexpr double kLeast = 0.05, kMost = 500;
  const auto x_of = [&](size_t size) {
    return kLeft + kDecade * std::log10(kSizes[size].width * kSizes[size].height / 1024.0);
  };
  const auto y_of = [&](double time) {
    return kTop + kHeight * std::log(kMost / time) / std::log(kMost / kLeast);
  };
  const double right = x_of(kSizeCount - 1);
  std::string text = Format(
      "<svg xmlns='http://www.w3.org/2000/svg' width='%.0f' height='%d' "
      "font-family='sans-serif' font-size='10'>\n"
      "<rect width='100%%' height='100%%' fill='white'/>\n",
      right + 150, kTop + kHeight + 30);
  for (const double time : {0.1, 1.0, 10.0, 100.0}) {
    text += Format(
        "<path d='M%d %.1fH%.1f' stroke='#ccc'/><text x='%d' y='%.1f' text-anchor='end'>%g "
        "ns</text>\n",
        kLeft, y_of(time), right, kLeft - 6, y_of(time) + 3, time);
  }
  for (size_t i = 0; i < kSizeCount; ++i) {
    text += Format(
        "<path d='M%.1f %dv%d' stroke='#eee'/><text x='%.1f' y='%d' "
        "text-anchor='middle'>%s</text>\n",
        x_of(i), kTop, kHeight, x_of(i), kTop + kHeight + 16, kSizes[i].name);
  }
  // Names stand beside the ends of their curves, from the top down, none over another.
  std::vector<size_t> order(lines.size());
  std::iota(order.begin(), order.end(), size_t{0});
  std::sort(order.begin(), order.end(),
            [&](size_t a, size_t b) { return lines[a].time[kHundred] > lines[b].time[kHundred]; });
  double free_from = 0;
  for (size_t rank = 0; rank < order.size(); ++rank) {
    const Line& line = lines[order[rank]];
    std::string path;
    for (size_t i = 0; i < kSizeCount; ++i) {
      path += Format("%s%.1f %.1f", i == 0 ? "M" : "L", x_of(i), y_of(line.time[i]));
    }
    const double end = y_of(line.time[kHundred]), at = std::max(end, free_from);
    const auto hue = static_cast<int>(rank * 360 * 5 / 16 % 360);
    text += Format(
        "<path d='%sL%.1f %.1f' fill='none' stroke='hsl(%d,60%%,40%%)'/>"
        "<text x='%.1f' y='%.1f' fill='hsl(%d,60%%,40%%)'>%s</text>\n",
        path.c_str(), right + kEnd, at, hue, right + kEnd + 3, at + 3, hue, line.name);
    free_from = at + 12;
  }
  return text + "</svg>\n";
}

}  // namespace

bool MeasureSizes(const std::vector<std::string>& words, double seconds) {
  std::vector<Line> lines;
  for (const Operation& operation : kOperations) {
    if (Chosen(operation.name, words)) lines.push_back({operation.name, {}});
  }
  for (size_t size = 0; size < kSizeCount; ++size) {
    const std::vector<Image> images = ImagesOfSize(size);
    auto line = lines.begin();
    for (const Operation& operation : kOperations) {
      if (!Chosen(operation.name, words)) continue;
      line->time[size] = Least(operation, images, seconds);
      std::printf("%-8s %-24s %9.4f ns per pixel\n", kSizes[size].name, operation.name,
                  line->time[size]);
      std::fflush(stdout);
      ++line;
    }
  }
  std::printf("\n%s", Table(lines).c_str());
  return !words.empty() || (ReplaceMeasured("sizes", Table(lines)) &&
                            std::ofstream("docs/sizes.svg") << Chart(lines));
}

}  // namespace ombrilo::bench
