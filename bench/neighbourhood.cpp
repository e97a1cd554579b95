// Neighbourhood filters and morphology beside OpenCV and, on the one-bit page, Leptonica.
//
// Peers that compute out of place get a destination that exists; borders are left to each side's
// own rule.
#include <cstring>
#include <string>

#include "compare.h"
#include "core/packed_dib.h"
#include "inputs.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

namespace {

using Ours = void (*)(PackedDib*);

#ifdef OMBRILO_HAVE_OPENCV

using Peer = void (*)(const cv::Mat& from, cv::Mat& to);

struct Row {
  const char* name;
  Ours ours;
  const char* peer_name;
  Peer peer;
};

template <int kIndex>
cv::Mat MatOf() {
  const KERNAL& kernal = *omb_getKERNAL(kIndex);
  cv::Mat weights = cv::Mat::zeros(kernal.height, kernal.width, CV_32F);
  for (int i = 0; i < kernal.count; ++i) {
    weights.at<float>(kernal.anchorY - kernal.offsets[2 * i + 1],
                      kernal.anchorX + kernal.offsets[2 * i]) += float(kernal.weights[i]);
  }
  const double sum = cv::sum(weights)[0];
  return sum == 0 ? weights : cv::Mat(weights / sum);
}

template <int kIndex>
cv::Mat ElementOf() {
  const KERNAL& kernal = *omb_getKERNAL(kIndex);
  cv::Mat element = cv::Mat::zeros(kernal.height, kernal.width, CV_8U);
  for (int i = 0; i < kernal.count; ++i) {
    element.at<uint8_t>(kernal.anchorY - kernal.offsets[2 * i + 1],
                        kernal.anchorX + kernal.offsets[2 * i]) = 1;
  }
  return element;
}

template <int kIndex>
void Convolute(PackedDib* dib) {
  omb_DoConvoluteDIB(dib, omb_getKERNAL(kIndex), 1, 10);
}

template <int kIndex>
void Filter2D(const cv::Mat& from, cv::Mat& to) {
  static const cv::Mat weights = MatOf<kIndex>();
  cv::filter2D(from, to, -1, weights);
}

template <int kIndex, int kOp>
void Morph(PackedDib* dib) {
  omb_DoKernalMorphDIB(dib, omb_DIBBitCount(dib), kOp, omb_getKERNAL(kIndex), 1);
}

template <int kIndex, int kOp>
void MorphologyEx(const cv::Mat& from, cv::Mat& to) {
  static const cv::Mat element = ElementOf<kIndex>();
  cv::morphologyEx(from, to, kOp, element);
}

template <int kSize>
void Blur(const cv::Mat& from, cv::Mat& to) {
  cv::blur(from, to, {kSize, kSize});
}

void SobelMagnitude(const cv::Mat& from, cv::Mat& to) {
  static cv::Mat scratch[4][2];
  cv::Mat &x = scratch[from.channels()][0], &y = scratch[from.channels()][1];
  cv::Sobel(from, x, CV_16S, 1, 0);
  cv::Sobel(from, y, CV_16S, 0, 1);
  cv::convertScaleAbs(x, x);
  cv::convertScaleAbs(y, y);
  cv::max(x, y, to);
}

const cv::Mat& Square() {
  static const cv::Mat square = cv::Mat::ones(3, 3, CV_8U);
  return square;
}

const Row kRows[] = {
    {"convolute 1 (box 3x3)", [](PackedDib* d) { omb_convolute(d, 1); }, "OpenCV blur", Blur<3>},
    {"convolute 2 (box 5x5)", [](PackedDib* d) { omb_convolute(d, 2); }, "OpenCV blur", Blur<5>},
    {"convolute 4 (5x5)", [](PackedDib* d) { omb_convolute(d, 4); }, "OpenCV filter2D",
     [](const cv::Mat& from, cv::Mat& to) {
       static const cv::Mat weights = (cv::Mat_<float>(5, 5) << 1, 1, 1, 1, 1, 1, 4, 4, 4, 1, 1, 4,
                                       12, 4, 1, 1, 4, 4, 4, 1, 1, 1, 1, 1, 1) /
                                      60;
       cv::filter2D(from, to, -1, weights);
     }},
    {"convolute 7 (sharpen 3x3)", [](PackedDib* d) { omb_convolute(d, 7); }, "OpenCV filter2D",
     Filter2D<6>},
    {"kernel lopass 7x7", Convolute<20>, "OpenCV blur", Blur<7>},
    {"kernel unsharp 5x5", Convolute<36>, "OpenCV filter2D", Filter2D<36>},
    {"kernel higauss 9x9", Convolute<11>, "OpenCV filter2D", Filter2D<11>},
    {"kernel unsharp 5x5, strength 5",
     [](PackedDib* d) { omb_DoConvoluteDIB(d, omb_getKERNAL(36), 1, 5); },
     "OpenCV filter2D, addWeighted",
     [](const cv::Mat& from, cv::Mat& to) {
       Filter2D<36>(from, to);
       cv::addWeighted(from, 0.5, to, 0.5, 0, to);
     }},
    {"emboss", [](PackedDib* d) { omb_emboss(d, 1, 0x808080); }, "OpenCV filter2D + 128",
     [](const cv::Mat& from, cv::Mat& to) {
       static const cv::Mat weights = (cv::Mat_<float>(3, 3) << 1, 2, 1, 0, 0, 0, -1, -2, -1);
       cv::filter2D(from, to, -1, weights, {-1, -1}, 128);
     }},
    {"sobel", omb_sobel, "OpenCV Sobel x, y and max", SobelMagnitude},
    {"medianblur", omb_medianblur, "OpenCV medianBlur 3",
     [](const cv::Mat& from, cv::Mat& to) { cv::medianBlur(from, to, 3); }},
    {"dilate", omb_dilate, "OpenCV dilate",
     [](const cv::Mat& from, cv::Mat& to) { cv::dilate(from, to, Square()); }},
    {"erode", omb_erode, "OpenCV erode",
     [](const cv::Mat& from, cv::Mat& to) { cv::erode(from, to, Square()); }},
    {"mathopen", omb_mathopen, "OpenCV morphologyEx open",
     [](const cv::Mat& from, cv::Mat& to) {
       cv::morphologyEx(from, to, cv::MORPH_OPEN, Square());
     }},
    {"pickedge", omb_pickedge, "OpenCV erode, subtract",
     [](const cv::Mat& from, cv::Mat& to) {
       cv::erode(from, to, Square());
       cv::subtract(from, to, to);
     }},
    {"tophat", omb_tophat, "OpenCV morphologyEx tophat",
     [](const cv::Mat& from, cv::Mat& to) {
       cv::morphologyEx(from, to, cv::MORPH_TOPHAT, Square());
     }},
    {"morph dilate, Square 7x7", Morph<31, 1>, "OpenCV morphologyEx",
     MorphologyEx<31, cv::MORPH_DILATE>},
    {"morph dilate, Circle 11x11", Morph<3, 1>, "OpenCV morphologyEx",
     MorphologyEx<3, cv::MORPH_DILATE>},
    {"morph close, Circle 5x5", Morph<1, 3>, "OpenCV morphologyEx",
     MorphologyEx<1, cv::MORPH_CLOSE>},
};

#endif

}  // namespace

void AddNeighbourhoodRows() {
#ifdef OMBRILO_HAVE_OPENCV
  for (const auto& [input, image] : {std::pair{"photo", Photo24()}, {"page", Page8()}}) {
    for (const Row& row : kRows) {
      // 24 bits only.
      if (row.ours == omb_tophat && image != Photo24()) continue;
      auto mine = std::make_shared<Image>(Copy(image));
      const cv::Mat from = AsMat(const_cast<PackedDib*>(image));
      cv::Mat to = from.clone();
      const Ours ours = row.ours;
      const Peer peer = row.peer;
      Compare(
          std::string(row.name) + ", " + input, Pixels(image), [=] { ours(mine->get()); },
          row.peer_name, [=]() mutable { peer(from, to); });
    }
  }
#endif
  const auto page = [](const char* name, Ours ours, auto peer) {
    auto mine = std::make_shared<Image>(Copy(Page1()));
    const auto call = [=] { ours(mine->get()); };
#ifdef OMBRILO_HAVE_LEPTONICA
    const auto from = AsPix(Page1()), to = AsPix(Page1());
    Compare(std::string(name) + ", 1-bit page", Pixels(Page1()), call, "Leptonica brick 3x3",
            [=] { peer(to.get(), from.get()); });
#else
    (void)peer;
    Compare(std::string(name) + ", 1-bit page", Pixels(Page1()), call);
#endif
  };
#ifdef OMBRILO_HAVE_LEPTONICA
  page("dilate", omb_dilate, [](PIX* to, PIX* from) { pixDilateBrick(to, from, 3, 3); });
  page("mathopen", omb_mathopen, [](PIX* to, PIX* from) { pixOpenBrick(to, from, 3, 3); });
  page("denoise", omb_denoise, [](PIX* to, PIX* from) {
    pixOpenBrick(to, from, 3, 3);
    pixCloseBrick(to, to, 3, 3);
  });
#else
  page("dilate", omb_dilate, nullptr);
  page("mathopen", omb_mathopen, nullptr);
  page("denoise", omb_denoise, nullptr);
#endif
  for (const auto& [name, ours] :
       {std::pair<const char*, Ours>{"sobel", omb_sobel}, {"dilate", omb_dilate}}) {
    auto mine = std::make_shared<Image>(Copy(Indexed8()));
    // Results are searched for in the palette: the colors have to be new ones each time.
    Compare(std::string(name) + ", colored 8-bit", Pixels(Indexed8()), [=, call = ours] {
      const DibView source = *DibView::Open(Indexed8());
      std::memcpy(mine->get(), source.block(), source.extent());
      call(mine->get());
    });
  }
}

}  // namespace ombrilo::bench
