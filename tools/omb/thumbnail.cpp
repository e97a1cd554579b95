#include "thumbnail.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include "files/pixels_out.h"

namespace omb {

namespace {

// The source pixels under one pixel of the result: [first, last], the two at the ends in part.
struct Span {
  int first, last;
  float first_share, last_share;  // of the pixel `last` only when it differs from `first`
};

std::vector<Span> SpansOf(int from, int to) {
  std::vector<Span> spans;
  for (int i = 0; i < to; ++i) {
    const double begin = double(i) * from / to;
    const double end = double(i + 1) * from / to;
    const int first = std::min(static_cast<int>(begin), from - 1);
    const int last = std::clamp(static_cast<int>(std::ceil(end)) - 1, first, from - 1);
    const double first_share = std::min(first + 1.0, end) - begin;
    spans.push_back({first, last, float(first_share), float(end - last)});
  }
  return spans;
}

// One source row, summed under each span: three sums for each pixel of the result.
void SumRow(const uint8_t* bgr, const std::vector<Span>& spans, float* sums) {
  for (const Span& span : spans) {
    uint32_t whole[3] = {};
    for (int x = span.first + 1; x < span.last; ++x) {
      for (int c = 0; c < 3; ++c) whole[c] += bgr[3 * x + c];
    }
    for (int c = 0; c < 3; ++c) {
      float sum = float(whole[c]) + span.first_share * bgr[3 * span.first + c];
      if (span.last > span.first) sum += span.last_share * bgr[3 * span.last + c];
      *sums++ = sum;
    }
  }
}

std::vector<uint8_t> Reduce(const Picture& picture, int width, int height) {
  const std::vector<Span> columns = SpansOf(picture.width(), width);
  const std::vector<Span> rows = SpansOf(picture.height(), height);
  const float share =
      float(width) / float(picture.width()) * float(height) / float(picture.height());
  const size_t values = 3 * columns.size();
  std::vector<uint8_t> bgr(size_t{3} * static_cast<size_t>(picture.width()));
  std::vector<float> row_sums(values), sums(values);
  std::vector<uint8_t> result;
  int summed = -1;  // the source row that row_sums holds
  for (const Span& span : rows) {
    std::fill(sums.begin(), sums.end(), 0.f);
    for (int y = span.first; y <= span.last; ++y) {
      if (y != summed) {
        picture.ColorRow(y, bgr.data());
        SumRow(bgr.data(), columns, row_sums.data());
        summed = y;
      }
      const float weight = y == span.first  ? span.first_share
                           : y == span.last ? span.last_share
                                            : 1;
      for (size_t i = 0; i < values; ++i) sums[i] += weight * row_sums[i];
    }
    for (const float sum : sums) result.push_back(uint8_t(std::min(sum * share + 0.5f, 255.f)));
  }
  return result;
}

bool IsGray(const std::vector<uint8_t>& bgr) {
  for (size_t i = 0; i < bgr.size(); i += 3) {
    if (bgr[i] != bgr[i + 1] || bgr[i] != bgr[i + 2]) return false;
  }
  return true;
}

Image ImageOf(const std::vector<uint8_t>& bgr, int width, int height) {
  const bool gray = IsGray(bgr);
  Image image(omb_newdib(width, height, gray ? 8 : 24));
  if (!image) throw std::bad_alloc();
  const auto stride = static_cast<size_t>(omb_BytesPerLine(image.get()));
  const auto pixels = static_cast<size_t>(width);
  for (int y = 0; y < height; ++y) {
    const uint8_t* from = bgr.data() + 3 * pixels * static_cast<size_t>(y);
    uint8_t* to = omb_FindDIBBits(image.get()) + stride * static_cast<size_t>(height - 1 - y);
    if (!gray) {
      std::memcpy(to, from, 3 * pixels);
    } else {
      for (size_t x = 0; x < pixels; ++x) to[x] = from[3 * x];
    }
  }
  return image;
}

}  // namespace

Image Thumbnail(const PackedDib* dib, int box_width, int box_height) {
  const Picture picture(dib);
  const double reduction =
      std::max({1.0, double(picture.width()) / box_width, double(picture.height()) / box_height});
  const int width = std::max(1, int(std::lround(picture.width() / reduction)));
  const int height = std::max(1, int(std::lround(picture.height() / reduction)));
  return ImageOf(Reduce(picture, width, height), width, height);
}

}  // namespace omb
