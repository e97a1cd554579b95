// Tone and color beside the calls that a user would write instead. Peers without an agreement do
// work of the same kind; their results are others.
#include "compare.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

namespace {

#ifdef OMBRILO_HAVE_OPENCV

cv::Mat Histogram(const cv::Mat& image, int channel) {
  cv::Mat histogram;
  const int size = 256;
  const float range[] = {0, 256};
  const float* ranges = range;
  cv::calcHist(&image, 1, &channel, cv::Mat(), histogram, 1, &size, &ranges);
  return histogram;
}

// The histogram of every channel, then a table for all or for each.
void CountAndMap(cv::Mat& m, int table_type) {
  for (int c = 0; c < m.channels(); ++c) Histogram(m, c);
  cv::LUT(m, cv::Mat(1, 256, table_type, cv::Scalar(1, 2, 3)), m);
}

void ToGray(const cv::Mat& from, cv::Mat& to) { cv::cvtColor(from, to, cv::COLOR_BGR2GRAY); }

#endif

#define OMBRILO_IN_MAT(name, ...) \
  WITH_OPENCV(InMat(name, Photo24(), [gray = cv::Mat()](cv::Mat& m) mutable { __VA_ARGS__; }))

}  // namespace

void AddToneRows() {
  const PackedDib* photo = Photo24();
  InPlace(
      "brightness, photo", photo, [](PackedDib* p) { omb_brightnesscontrast(p, 1, 0); },
      OMBRILO_IN_MAT("add", cv::add(m, cv::Scalar::all(1), m)), Agreement());
  InPlace(
      "contrast, photo", photo, [](PackedDib* p) { omb_brightnesscontrast(p, 0, 2); },
      OMBRILO_IN_MAT("convertScaleAbs", cv::convertScaleAbs(m, m, 1.02, 2)));
  InPlace(
      "gamma, photo", photo, [](PackedDib* p) { omb_gammacorrection(p, 1.01); },
      OMBRILO_IN_MAT("LUT", cv::LUT(m, cv::Mat(1, 256, CV_8U, cv::Scalar(1)), m)));
  InPlace(
      "filter red, photo", photo, [](PackedDib* p) { omb_filtercolor(p, 1); },
      OMBRILO_IN_MAT("bitwise_and", cv::bitwise_and(m, cv::Scalar(255, 255, 0), m)), Agreement());
  InPlace(
      "lights, photo", photo, [](PackedDib* p) { omb_adjustghms(p, 1, -1, 0); },
      OMBRILO_IN_MAT("cvtColor, 2 x add", ToGray(m, gray);
                     cv::add(m, cv::Scalar(2, 1, 1), m, gray > 170);
                     cv::add(m, cv::Scalar(-2, -1, -1), m, gray < 85)));
  InPlace(
      "auto levels, photo", photo, [](PackedDib* p) { omb_autolevel(p, 0, 1); },
      OMBRILO_IN_MAT("3 x calcHist, LUT", CountAndMap(m, CV_8UC3)));
  InPlace(
      "auto contrast, photo", photo, [](PackedDib* p) { omb_autocontrast(p, 0, 1); },
      OMBRILO_IN_MAT("3 x calcHist, LUT", CountAndMap(m, CV_8UC1)));
  static constexpr OmbPoint kPoints[] = {{0, 0}, {64, 63}, {192, 193}, {255, 255}};
  InPlace(
      "curve, photo", photo, [](PackedDib* p) { omb_curve(p, kPoints, 4, 0); },
      OMBRILO_IN_MAT("LUT", cv::LUT(m, cv::Mat(1, 256, CV_8U, cv::Scalar(1)), m)));
  InPlace(
      "curve red, photo", photo, [](PackedDib* p) { omb_curve(p, kPoints, 4, 1); },
      OMBRILO_IN_MAT("LUT", cv::LUT(m, cv::Mat(1, 256, CV_8UC3, cv::Scalar(1, 2, 3)), m)));
  InPlace(
      "x1x2, photo", photo, [](PackedDib* p) { omb_x1x2_changed(p, 1, 254, 0); },
      OMBRILO_IN_MAT("LUT", cv::LUT(m, cv::Mat(1, 256, CV_8U, cv::Scalar(1)), m)));
  InPlace(
      "color gains, photo", photo, [](PackedDib* p) { omb_adjustcolor(p, 2, 1, 0, -1); },
      OMBRILO_IN_MAT("multiply", cv::multiply(m, cv::Scalar(0.99, 1, 1.01), m)));
  InPlace(
      "HSL, photo", photo, [](PackedDib* p) { omb_adjustcolor(p, 4, 10, 5, -1); },
      OMBRILO_IN_MAT("2 x cvtColor, add", cv::cvtColor(m, gray, cv::COLOR_BGR2HLS);
                     cv::add(gray, cv::Scalar(5, -1, 5), gray);
                     cv::cvtColor(gray, m, cv::COLOR_HLS2BGR)));
  InPlace(
      "HSI, photo", photo, [](PackedDib* p) { omb_adjustcolor(p, 3, 10, 5, -1); },
      OMBRILO_IN_MAT("2 x cvtColor, add", cv::cvtColor(m, gray, cv::COLOR_BGR2HSV);
                     cv::add(gray, cv::Scalar(5, 5, -1), gray);
                     cv::cvtColor(gray, m, cv::COLOR_HSV2BGR)));
  InPlace(
      "balance, photo", photo, [](PackedDib* p) { omb_balance(p, 9, -9, 5, 1, 0); },
      OMBRILO_IN_MAT("LUT", cv::LUT(m, cv::Mat(1, 256, CV_8UC3, cv::Scalar(1, 2, 3)), m)));
  InPlace(
      "balance keeping light, photo", photo, [](PackedDib* p) { omb_balance(p, 9, -9, 5, 1, 1); },
      OMBRILO_IN_MAT("3 x cvtColor, LUT, mixChannels", cv::cvtColor(m, gray, cv::COLOR_BGR2GRAY);
                     cv::LUT(m, cv::Mat(1, 256, CV_8UC3, cv::Scalar(1, 2, 3)), m);
                     cv::cvtColor(m, m, cv::COLOR_BGR2YCrCb); cv::mixChannels(gray, m, {0, 0});
                     cv::cvtColor(m, m, cv::COLOR_YCrCb2BGR)));
  for (const int channel : {1, 4}) {
    const auto ours = [=](PackedDib* p) {
      int32_t counters[256];
      omb_getchannelhistogram(p, counters, channel);
    };
    if (channel == 1) {
      Reading("histogram red, photo", photo, ours, OMBRILO_IN_MAT("calcHist", Histogram(m, 2)));
    } else {
      InPlace("histogram gray, photo", photo, ours,
              OMBRILO_IN_MAT("2 x cvtColor, calcHist", ToGray(m, gray); Histogram(gray, 0);
                             cv::cvtColor(gray, m, cv::COLOR_GRAY2BGR)));
    }
  }
  Reading(
      "auto threshold, photo", photo, [](PackedDib* p) { omb_autothreshold(p); },
      OMBRILO_IN_MAT("cvtColor, calcHist", ToGray(m, gray); Histogram(gray, 0)));
  Replacing("gray, photo", photo, omb_gray, WITH_OPENCV(OntoMat("cvtColor", photo, ToGray)),
            Agreement{0, 2});
  Replacing(
      "binary, photo", photo, [](PackedDib** p) { omb_binary(p, 128); },
      WITH_OPENCV(OntoMat("cvtColor, threshold", photo, [](const cv::Mat& m, cv::Mat& to) {
        ToGray(m, to);
        cv::threshold(to, to, 128, 255, cv::THRESH_BINARY);
      })));
  Replacing(
      "binary, page 8", Page8(), [](PackedDib** p) { omb_binary(p, 128); },
      WITH_LEPTONICA(OnPix("pixThresholdToBinary", Page8(),
                           [](PIX* pix) { return pixThresholdToBinary(pix, 128); })));
  Replacing(
      "extract red, photo", photo, [](PackedDib** p) { omb_extractcolor(p, 1); },
      WITH_OPENCV(OntoMat("extractChannel", photo,
                          [](const cv::Mat& m, cv::Mat& to) { cv::extractChannel(m, to, 2); })),
      Agreement());
  InPlace(
      "auto contrast, indexed", Indexed8(), [](PackedDib* p) { omb_autocontrast(p, 0.01, 0.99); },
      WITH_OPENCV(InMat("calcHist, LUT", Indexed8(), [](cv::Mat& m) { CountAndMap(m, CV_8UC1); })));
}

}  // namespace ombrilo::bench
