// Scaling, turns and flips beside their peers.
#include <cmath>

#include "compare.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

namespace {

#ifdef OMBRILO_HAVE_OPENCV

// What warpAffine needs for a turn with the whole image kept.
void Warp(const cv::Mat& from, cv::Mat& to, double degrees, int mode) {
  cv::Mat turn = cv::getRotationMatrix2D(
      cv::Point2f(static_cast<float>(from.cols) / 2, static_cast<float>(from.rows) / 2), degrees,
      1);
  const double c = std::abs(turn.at<double>(0, 0)), s = std::abs(turn.at<double>(0, 1));
  const cv::Size size(static_cast<int>(from.cols * c + from.rows * s),
                      static_cast<int>(from.rows * c + from.cols * s));
  turn.at<double>(0, 2) += (size.width - from.cols) / 2.0;
  turn.at<double>(1, 2) += (size.height - from.rows) / 2.0;
  cv::warpAffine(from, to, turn, size, mode, cv::BORDER_CONSTANT, cv::Scalar::all(255));
}

#endif

using Operation = std::function<void(PackedDib**)>;

Operation Scale(const PackedDib* image, double factor, uint32_t mode) {
  const auto w = static_cast<uint32_t>(omb_DIBWidth(image) * factor);
  const auto h = static_cast<uint32_t>(omb_DIBHeight(image) * factor);
  return [=](PackedDib** p) { omb_scale(p, w, h, mode); };
}

Operation Resize(const PackedDib* image, double factor, uint32_t filter) {
  const auto w = static_cast<uint32_t>(omb_DIBWidth(image) * factor);
  const auto h = static_cast<uint32_t>(omb_DIBHeight(image) * factor);
  return [=](PackedDib** p) { omb_resize(p, w, h, filter); };
}

Operation Rotate(float degrees, uint32_t mode) {
  return [=](PackedDib** p) { omb_rotate(p, degrees, mode); };
}

// Reduced, OpenCV's filters other than INTER_AREA look at few source pixels.
void AddResizeRows(const std::string& name, const PackedDib* image) {
  const struct {
    const char* name;
    int reducing, enlarging;
  } filters[] = {{"box", 3, 3}, {"triangle", 3, 1}, {"cubic", 3, 2}, {"lanczos", 4, 4}};
  for (uint32_t filter = 1; filter <= 4; ++filter) {
    const auto& [filter_name, reducing, enlarging] = filters[filter - 1];
    for (const double factor : {0.4, 1.5}) {
      constexpr const char* kModes[] = {"", "INTER_LINEAR", "INTER_CUBIC", "INTER_AREA",
                                        "INTER_LANCZOS4"};
      const int mode = factor < 1 ? reducing : enlarging;
      Replacing(
          (factor < 1 ? "resize 0.4 " : "resize 1.5 ") + std::string(filter_name) + ", " + name,
          image, Resize(image, factor, filter),
          WITH_OPENCV(OntoMat("resize " + std::string(kModes[mode]), image,
                              [=](const cv::Mat& from, cv::Mat& to) {
                                cv::resize(from, to, {}, factor, factor, mode);
                              })));
    }
  }
}

}  // namespace

void AddGeometryRows() {
  constexpr const char* kModes[] = {"", " point, ", " bilinear, ", " bicubic, "};
  for (const auto& [name, image] : {std::pair{"photo", Photo24()}, {"page 8", Page8()}}) {
    for (uint32_t mode = 1; mode <= 3; ++mode) {
      [[maybe_unused]] const int cv_mode = static_cast<int>(mode) - 1;
      for (const auto& [scale, factor] :
           {std::pair{"scale 0.4", 0.4}, {"scale 0.5", 0.5}, {"scale 1.5", 1.5}}) {
        Replacing(scale + std::string(kModes[mode]) + name, image, Scale(image, factor, mode),
                  WITH_OPENCV(OntoMat("resize", image,
                                      [=, factor = factor](const cv::Mat& from, cv::Mat& to) {
                                        cv::resize(from, to, {}, factor, factor, cv_mode);
                                      })));
      }
      Replacing("rotate 7" + std::string(kModes[mode]) + name, image, Rotate(7, mode),
                WITH_OPENCV(OntoMat("warpAffine", image, [=](const cv::Mat& from, cv::Mat& to) {
                  Warp(from, to, -7, cv_mode);
                })));
    }
    AddResizeRows(name, image);
    for (const int degrees : {90, 180}) {
      Replacing("rotate " + std::to_string(degrees) + ", " + name, image,
                Rotate(static_cast<float>(degrees), 1),
                WITH_OPENCV(OntoMat("rotate", image,
                                    [=](const cv::Mat& from, cv::Mat& to) {
                                      cv::rotate(from, to,
                                                 degrees == 90 ? cv::ROTATE_90_COUNTERCLOCKWISE
                                                               : cv::ROTATE_180);
                                    })),
                Agreement());
    }
    InPlace(std::string("fliphor, ") + name, image, omb_fliphor,
            WITH_OPENCV(InMat("flip", image, [](cv::Mat& m) { cv::flip(m, m, 1); })), Agreement());
    InPlace(std::string("flipvert, ") + name, image, omb_flipvert,
            WITH_OPENCV(InMat("flip", image, [](cv::Mat& m) { cv::flip(m, m, 0); })), Agreement());
  }

#define OMBRILO_PIX(name, ...) \
  WITH_LEPTONICA(OnPix(name, Page1(), [](PIX* pix) -> PIX* { return __VA_ARGS__; }))
  const PackedDib* page = Page1();
  Replacing("scale 0.4 point, page 1", page, Scale(page, 0.4, 1),
            OMBRILO_PIX("pixScaleBySampling", pixScaleBySampling(pix, 0.4f, 0.4f)));
  Replacing("scale 1.5 point, page 1", page, Scale(page, 1.5, 1),
            OMBRILO_PIX("pixScaleBySampling", pixScaleBySampling(pix, 1.5f, 1.5f)));
  Replacing("scale 0.4 bilinear, page 1", page, Scale(page, 0.4, 2),
            OMBRILO_PIX("pixScaleToGray", pixScaleToGray(pix, 0.4f)));
  Replacing("resize 0.4 box, page 1", page, Resize(page, 0.4, 1),
            OMBRILO_PIX("pixScaleToGray", pixScaleToGray(pix, 0.4f)));
  Replacing("rotate 7 point, page 1", page, Rotate(7, 1),
            OMBRILO_PIX("pixRotateBySampling",
                        pixRotateBySampling(pix, 1240, 1754, 0.12217f, L_BRING_IN_WHITE)));
  Replacing("rotate 90, page 1", page, Rotate(90, 1),
            OMBRILO_PIX("pixRotate90", pixRotate90(pix, -1)), Agreement());
  Replacing("rotate 180, page 1", page, Rotate(180, 1),
            OMBRILO_PIX("pixRotate180", pixRotate180(pix, pix)), Agreement());
  InPlace("fliphor, page 1", page, omb_fliphor, OMBRILO_PIX("pixFlipLR", pixFlipLR(pix, pix)),
          Agreement());
  InPlace("flipvert, page 1", page, omb_flipvert, OMBRILO_PIX("pixFlipTB", pixFlipTB(pix, pix)),
          Agreement());
#undef OMBRILO_PIX

  // Colors are computed, then mapped to the table's nearest. The peer looks for these in a part of
  // color space at a time.
  Replacing("scale 0.4 bilinear, indexed", Indexed8(), Scale(Indexed8(), 0.4, 2),
            WITH_LEPTONICA(OnIndexedPix("pixScale", Indexed8(),
                                        [](PIX* colors) { return pixScale(colors, 0.4f, 0.4f); })));
  Replacing("rotate 7 bicubic, indexed", Indexed8(), Rotate(7, 3),
            WITH_LEPTONICA(OnIndexedPix("pixRotateAMColor", Indexed8(), [](PIX* colors) {
              return pixRotateAMColor(colors, 0.12217f, 0xFFFFFF00);
            })));
}

}  // namespace ombrilo::bench
