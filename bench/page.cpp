// Page filters beside OpenCV and Leptonica.
//
// OpenCV's median rows compute out of place into a matrix that exists. Leptonica's rank filter
// makes its result each time, and works on a piece of the photo that it gets through in a second.
#include <string>

#include "compare.h"
#include "inputs.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

namespace {

enum Mode { kMedian = 7, kRank = 8 };

const PackedDib* Piece() {
  static const Image image(
      reinterpret_cast<PackedDib*>(omb_cpydibrect(Photo24(), 500, 500, 1000, 1000)));
  return image.get();
}

void AddRow(const std::string& name, const PackedDib* image, int32_t (*ours)(PackedDib*, int size),
            int size, const std::string& peer_name, std::function<void()> peer) {
  auto mine = std::make_shared<Image>(Copy(image));
  Compare(
      name, Pixels(image), [=] { ours(mine->get(), size); }, peer_name, std::move(peer));
}

int32_t Median(PackedDib* dib, int size) {
  return omb_EnhancePage(dib, size, 1, 0, 0, 0, kMedian, 0, 0);
}

int32_t Rank(PackedDib* dib, int size) {
  return omb_EnhancePage(dib, size, 1, 0, 0, 25, kRank, 0, 0);
}

int32_t Edges(PackedDib* dib, int mode) { return omb_EdgePage(dib, 0, 0, 0, mode); }

#ifdef OMBRILO_HAVE_OPENCV

// Roots of sums of squares of both gradients; Roberts' are differences along the diagonals.
std::function<void()> Magnitude(const PackedDib* image, bool sobel) {
  const cv::Mat from = AsMat(const_cast<PackedDib*>(image));
  const cv::Mat rising = (cv::Mat_<float>(2, 2) << 0, -1, 1, 0);
  const cv::Mat falling = (cv::Mat_<float>(2, 2) << -1, 0, 0, 1);
  cv::Mat x, y, magnitude, to;
  return [=]() mutable {
    if (sobel) {
      cv::Sobel(from, x, CV_32F, 1, 0);
      cv::Sobel(from, y, CV_32F, 0, 1);
    } else {
      cv::filter2D(from, x, CV_32F, rising);
      cv::filter2D(from, y, CV_32F, falling);
    }
    cv::magnitude(x, y, magnitude);
    magnitude.convertTo(to, CV_8U);
  };
}

#endif

// Squares, and what each mode is in OpenCV. To clean, the background is divided out.
void AddMorphologyRows(const std::string& input, const PackedDib* image) {
  constexpr std::pair<int, const char*> kModes[] = {
      {2, "open"}, {4, "gradient"}, {5, "light"}, {7, "clean"}};
  for (const auto& [mode, name] : kModes) {
    for (const int size : {0, 2}) {
      [[maybe_unused]] const int side = 3 + 2 * size;
      const auto ours = [=, mode = mode](PackedDib* dib) {
        omb_MorphologicalPage(dib, size, 0, 1, mode);
      };
      Peer peer;
#ifdef OMBRILO_HAVE_OPENCV
      const cv::Mat square = cv::getStructuringElement(cv::MORPH_RECT, {side, side});
      const int operation = mode == 2   ? cv::MORPH_OPEN
                            : mode == 4 ? cv::MORPH_GRADIENT
                            : mode == 5 ? cv::MORPH_TOPHAT
                                        : cv::MORPH_CLOSE;
      const std::string call = mode == 7 ? "morphologyEx, max, divide" : "morphologyEx";
      peer = OntoMat(call, image, [=, mode = mode](const cv::Mat& from, cv::Mat& to) {
        cv::morphologyEx(from, to, operation, square);
        if (mode != 7) return;
        cv::max(to, 64, to);
        cv::divide(from, to, to, 255);
      });
#endif
      const std::string row = std::string("morphologicalpage ") + name + " " +
                              std::to_string(side) + "x" + std::to_string(side) + ", " + input;
      // Results are made of an image that they replace: only a fresh one is the same work.
      OnFreshCopies(row, image, ours, peer);
    }
  }
}

// Curve 0 equalizes, 2 whitens; blocks of a twelfth of the width.
void AddToneRows(const std::string& input, const PackedDib* image) {
  const int block = static_cast<int>(omb_DIBWidth(image)) / 12;
  const auto tone = [=](int scope, int curve, int strength) {
    return
        [=](PackedDib* dib) { omb_EnhancePage(dib, 2, 100, strength, block, 0, 4, scope, curve); };
  };
  Peer whole, adaptive, normalized;
  if (omb_DIBBitCount(image) == 8) {
    whole = WITH_OPENCV(OntoMat("equalizeHist", image, [](const cv::Mat& from, cv::Mat& to) {
      cv::equalizeHist(from, to);
    }));
#ifdef OMBRILO_HAVE_OPENCV
    const int columns = 12, rows = static_cast<int>(omb_DIBHeight(image)) / block;
    const cv::Ptr<cv::CLAHE> clahe = cv::createCLAHE(3, {columns, rows});
    adaptive =
        OntoMat("CLAHE", image, [=](const cv::Mat& from, cv::Mat& to) { clahe->apply(from, to); });
#endif
  }
  normalized = WITH_LEPTONICA(OnPix("pixBackgroundNormSimple", image, [](PIX* pix) -> PIX* {
    return pixBackgroundNormSimple(pix, nullptr, nullptr);
  }));
  OnFreshCopies("equalize, " + input, image, tone(0, 0, 0), whole);
  OnFreshCopies("equalize by blocks, " + input, image, tone(1, 0, 300), adaptive);
  OnFreshCopies("whiten by blocks, " + input, image, tone(1, 2, 5), normalized);
}

}  // namespace

void AddPageRows() {
  for (const auto& [input, image] : {std::pair{"photo", Photo24()}, {"page 8", Page8()}}) {
    AddMorphologyRows(input, image);
    AddToneRows(input, image);
  }
  for (const auto& [input, image] : {std::pair{"photo", Photo24()}, {"page", Page8()}}) {
    for (int size = 0; size <= 2; ++size) {
      const int n = 3 + 2 * size;
      const std::string square = std::to_string(n) + "x" + std::to_string(n) + ", ";
      std::function<void()> peer;
#ifdef OMBRILO_HAVE_OPENCV
      const cv::Mat from = AsMat(const_cast<PackedDib*>(image));
      peer = [=, to = from.clone()]() mutable { cv::medianBlur(from, to, n); };
#endif
      AddRow("enhancepage median " + square + input, image, Median, size, "OpenCV medianBlur",
             std::move(peer));

      const PackedDib* small = image == Photo24() ? Piece() : image;
      peer = nullptr;
#ifdef OMBRILO_HAVE_LEPTONICA
      peer = [=, pix = AsPix(small)] {
        PIX* ranked = pixRankFilter(pix.get(), n, n, 0.25f);
        pixDestroy(&ranked);
      };
#endif
      AddRow("enhancepage rank 25% " + square + input, small, Rank, size, "Leptonica pixRankFilter",
             std::move(peer));
    }
    for (const bool sobel : {true, false}) {
      std::function<void()> peer;
#ifdef OMBRILO_HAVE_OPENCV
      peer = Magnitude(image, sobel);
#endif
      AddRow(std::string("edgepage ") + (sobel ? "sobel, " : "roberts, ") + input, image, Edges,
             sobel ? 0 : 1, sobel ? "OpenCV Sobel, magnitude" : "OpenCV filter2D, magnitude",
             std::move(peer));
    }
  }
}

}  // namespace ombrilo::bench
