// Neighbourhood filters and morphology beside OpenCV and, on the one-bit page, Leptonica.
//
// Peers that compute out of place get a destination that exists; borders are left to each side's
// own rule.
#include "compare.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

namespace {

using Ours = void (*)(PackedDib*);

#ifdef OMBRILO_HAVE_OPENCV

using OnMats = void (*)(const cv::Mat& from, cv::Mat& to);

struct Row {
  const char* name;
  Ours ours;
  const char* peer_name;
  OnMats peer;
  std::optional<Agreement> agreement = {};
  bool deep = false;  // 24 bits only
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

template <int kOp>
void Square3(const cv::Mat& from, cv::Mat& to) {
  cv::morphologyEx(from, to, kOp, Square());
}

// The square starts at the pixel; a dilation's ends there.
void Dilate(const cv::Mat& from, cv::Mat& to) { cv::dilate(from, to, Square(), {2, 2}); }
void Erode(const cv::Mat& from, cv::Mat& to) { cv::erode(from, to, Square(), {0, 0}); }

// OpenCV rounds sums where the library truncates them.
constexpr Agreement kRounded = {4, 1};

const Row kRows[] = {
    {"convolute 1 (box 3x3)", [](PackedDib* d) { omb_convolute(d, 1); }, "blur", Blur<3>, kRounded},
    {"convolute 2 (box 5x5)", [](PackedDib* d) { omb_convolute(d, 2); }, "blur", Blur<5>, kRounded},
    {"convolute 4 (5x5)", [](PackedDib* d) { omb_convolute(d, 4); }, "filter2D",
     [](const cv::Mat& from, cv::Mat& to) {
       static const cv::Mat weights = (cv::Mat_<float>(5, 5) << 1, 1, 1, 1, 1, 1, 4, 4, 4, 1, 1, 4,
                                       12, 4, 1, 1, 4, 4, 4, 1, 1, 1, 1, 1, 1) /
                                      60;
       cv::filter2D(from, to, -1, weights);
     },
     kRounded},
    {"convolute 7 (sharpen 3x3)", [](PackedDib* d) { omb_convolute(d, 7); }, "filter2D",
     Filter2D<6>},
    {"kernel lopass 7x7", Convolute<20>, "blur", Blur<7>, kRounded},
    {"kernel unsharp 5x5", Convolute<36>, "filter2D", Filter2D<36>, kRounded},
    {"kernel higauss 9x9", Convolute<11>, "filter2D", Filter2D<11>, kRounded},
    {"kernel unsharp 5x5, strength 5",
     [](PackedDib* d) { omb_DoConvoluteDIB(d, omb_getKERNAL(36), 1, 5); }, "filter2D, addWeighted",
     [](const cv::Mat& from, cv::Mat& to) {
       Filter2D<36>(from, to);
       cv::addWeighted(from, 0.5, to, 0.5, 0, to);
     }},
    {"emboss", [](PackedDib* d) { omb_emboss(d, 1, 0x808080); }, "filter2D + 128",
     [](const cv::Mat& from, cv::Mat& to) {
       static const cv::Mat weights = (cv::Mat_<float>(3, 3) << 1, 2, 1, 0, 0, 0, -1, -2, -1);
       cv::filter2D(from, to, -1, weights, {-1, -1}, 128);
     }},
    {"sobel", omb_sobel, "Sobel x, y and max", SobelMagnitude},
    {"medianblur", omb_medianblur, "medianBlur 3",
     [](const cv::Mat& from, cv::Mat& to) { cv::medianBlur(from, to, 3); }},
    {"dilate", omb_dilate, "dilate", Dilate, Agreement()},
    {"gradientize", omb_gradientize, "dilate", Dilate, Agreement()},
    {"erode", omb_erode, "erode", Erode, Agreement()},
    {"mathopen", omb_mathopen, "morphologyEx", Square3<cv::MORPH_OPEN>, Agreement{4}},
    {"mathclose", omb_mathclose, "morphologyEx", Square3<cv::MORPH_CLOSE>, Agreement{4}},
    {"denoise", omb_denoise, "2 x morphologyEx",
     [](const cv::Mat& from, cv::Mat& to) {
       Square3<cv::MORPH_OPEN>(from, to);
       Square3<cv::MORPH_CLOSE>(to, to);
     },
     Agreement{6}},
    {"pickedge", omb_pickedge, "erode, subtract",
     [](const cv::Mat& from, cv::Mat& to) {
       Erode(from, to);
       cv::subtract(from, to, to);
     },
     Agreement()},
    {"opencompose", omb_opencompose, "erode, dilate, add",
     [](const cv::Mat& from, cv::Mat& to) {
       static cv::Mat eroded;
       Erode(from, eroded);
       Dilate(eroded, to);
       cv::add(eroded, to, to);
     },
     Agreement{4}, true},
    {"tophat", omb_tophat, "morphologyEx", Square3<cv::MORPH_TOPHAT>, Agreement{4}, true},
    {"morph dilate, Square 7x7", Morph<31, 1>, "morphologyEx", MorphologyEx<31, cv::MORPH_DILATE>,
     Agreement{4}},
    {"morph dilate, Circle 11x11", Morph<3, 1>, "morphologyEx", MorphologyEx<3, cv::MORPH_DILATE>,
     Agreement{6}},
    {"morph close, Circle 5x5", Morph<1, 3>, "morphologyEx", MorphologyEx<1, cv::MORPH_CLOSE>,
     Agreement{5}},
};

#endif

}  // namespace

void AddNeighbourhoodRows() {
#ifdef OMBRILO_HAVE_OPENCV
  for (const auto& [input, image] : {std::pair{"photo", Photo24()}, {"page 8", Page8()}}) {
    for (const Row& row : kRows) {
      if (row.deep && image != Photo24()) continue;
      InPlace(std::string(row.name) + ", " + input, image, row.ours,
              OntoMat(row.peer_name, image, row.peer), row.agreement);
    }
  }
#endif

  for (const auto& [input, image] : {std::pair{"photo", Photo24()}, {"page 8", Page8()}}) {
    for (const auto& block : {std::pair{20, 4}, {4, 4}, {2, 2}}) {
      const int width = block.first, height = block.second;  // for Clang 14's lambdas
      InPlace(
          "granulate " + std::to_string(width) + "x" + std::to_string(height) + ", " + input, image,
          [=](PackedDib* p) { omb_granulate(p, uint32_t(width), uint32_t(height)); },
          WITH_OPENCV(OntoMat("2 x resize", image,
                              [=, means = cv::Mat()](const cv::Mat& from, cv::Mat& to) mutable {
                                const cv::Size size(from.cols / width, from.rows / height);
                                cv::resize(from, means, size, 0, 0, cv::INTER_AREA);
                                cv::resize(means, to, from.size(), 0, 0, cv::INTER_NEAREST);
                              })),
          Agreement{0, 1});
    }
    InPlace(
        std::string("diffuse 25, ") + input, image,
        [](PackedDib* p) { omb_diffuse_seed(p, 25, 1); },
        WITH_OPENCV(OntoMat(
            "randu, add, remap", image,
            [=, places = cv::Mat(), moves = cv::Mat()](const cv::Mat& from, cv::Mat& to) mutable {
              if (places.empty()) {
                places.create(from.size(), CV_16SC2);
                for (int y = 0; y < from.rows; ++y) {
                  for (int x = 0; x < from.cols; ++x) {
                    places.at<cv::Vec2s>(y, x) = {short(x), short(y)};
                  }
                }
                moves.create(from.size(), CV_16SC2);
              }
              cv::randu(moves, -2, 3);
              cv::add(moves, places, moves);
              cv::remap(from, to, moves, cv::Mat(), cv::INTER_NEAREST, cv::BORDER_REPLICATE);
            })));
  }

#define OMBRILO_PIX(name, ...) \
  WITH_LEPTONICA(OnPix(name, Page1(), [](PIX* pix) -> PIX* { return __VA_ARGS__; }))
  const PackedDib* page = Page1();
  InPlace("dilate, page 1", page, omb_dilate,
          OMBRILO_PIX("pixDilateBrick", pixDilateBrick(nullptr, pix, 3, 3)));
  InPlace("erode, page 1", page, omb_erode,
          OMBRILO_PIX("pixErodeBrick", pixErodeBrick(nullptr, pix, 3, 3)));
  InPlace("mathopen, page 1", page, omb_mathopen,
          OMBRILO_PIX("pixOpenBrick", pixOpenBrick(nullptr, pix, 3, 3)), Agreement{3});
  InPlace("mathclose, page 1", page, omb_mathclose,
          OMBRILO_PIX("pixCloseBrick", pixCloseBrick(nullptr, pix, 3, 3)), Agreement{3});
  InPlace("denoise, page 1", page, omb_denoise,
          OMBRILO_PIX("pixOpenBrick, pixCloseBrick",
                      [](PIX* opened) {
                        return pixCloseBrick(opened, opened, 3, 3);
                      }(pixOpenBrick(nullptr, pix, 3, 3))),
          Agreement{5});
  InPlace("pickedge, page 1", page, omb_pickedge,
          OMBRILO_PIX("pixErodeBrick, pixXor", [](PIX* original, PIX* eroded) {
            return pixXor(eroded, eroded, original);
          }(pix, pixErodeBrick(nullptr, pix, 3, 3))));
#undef OMBRILO_PIX

  // Results are searched for in the table, so that colors have to be new ones each time.
  const auto indexed = [](const char* name, Ours ours, Peer peer) {
    Replacing(
        std::string(name) + ", indexed", Indexed8(), [=](PackedDib** p) { ours(*p); }, peer);
  };
  indexed("dilate", omb_dilate,
          WITH_LEPTONICA(OnIndexedPix("pixColorMorph", Indexed8(), [](PIX* colors) {
            return pixColorMorph(colors, L_MORPH_DILATE, 3, 3);
          })));
  indexed(
      "convolute 1 (box 3x3)", [](PackedDib* d) { omb_convolute(d, 1); },
      WITH_LEPTONICA(OnIndexedPix("pixBlockconv", Indexed8(),
                                  [](PIX* colors) { return pixBlockconv(colors, 1, 1); })));
  indexed("sobel", omb_sobel, {});
}

}  // namespace ombrilo::bench
