// Tone and color on the 24-bit photo beside the OpenCV calls that a user would write instead.
//
// Operations that replace the image free their source, so their rows start from a copy on both
// sides; the rows named "... rows" leave out the copy and the new block.
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "compare.h"
#include "core/packed_dib.h"
#include "inputs.h"
#include "rows/row_functions.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

namespace {

struct Peer {
  std::string name;
  std::function<void()> call;
};

#ifdef OMBRILO_HAVE_OPENCV

cv::Mat Photo() { return AsMat(const_cast<PackedDib*>(Photo24())); }

cv::Mat Histogram(const cv::Mat& image, int channel) {
  cv::Mat histogram;
  const int size = 256;
  const float range[] = {0, 256};
  const float* ranges = range;
  cv::calcHist(&image, 1, &channel, cv::Mat(), histogram, 1, &size, &ranges);
  return histogram;
}

// The peer of a row, working on a matrix of its own.
Peer PeerOf(const std::string& row) {
  static const std::map<std::string, std::pair<const char*, void (*)(cv::Mat&)>> kInPlace = {
      {"brightness", {"add", [](cv::Mat& m) { cv::add(m, cv::Scalar::all(1), m); }}},
      {"contrast", {"convertScaleAbs", [](cv::Mat& m) { cv::convertScaleAbs(m, m, 1.02, 2); }}},
      {"gamma",
       {"LUT",
        [](cv::Mat& m) {
          cv::Mat table(1, 256, CV_8U);
          for (int i = 0; i < 256; ++i) table.at<uint8_t>(i) = static_cast<uint8_t>(255 - i);
          cv::LUT(m, table, m);
        }}},
      {"filter red",
       {"bitwise_and", [](cv::Mat& m) { cv::bitwise_and(m, cv::Scalar(255, 255, 0), m); }}},
      {"lights",
       {"cvtColor, 2 x add",
        [](cv::Mat& m) {
          cv::Mat gray;
          cv::cvtColor(m, gray, cv::COLOR_BGR2GRAY);
          cv::add(m, cv::Scalar(2, 1, 1), m, gray > 170);
          cv::add(m, cv::Scalar(-2, -1, -1), m, gray < 85);
        }}},
      {"auto levels",
       {"3 x calcHist, LUT",
        [](cv::Mat& m) {
          for (int c = 0; c < 3; ++c) Histogram(m, c);
          cv::Mat table(1, 256, CV_8UC3, cv::Scalar(1, 2, 3));
          cv::LUT(m, table, m);
        }}},
      {"auto contrast",
       {"3 x calcHist, LUT",
        [](cv::Mat& m) {
          for (int c = 0; c < 3; ++c) Histogram(m, c);
          cv::Mat table(1, 256, CV_8U, cv::Scalar(1));
          cv::LUT(m, table, m);
        }}},
      {"histogram red", {"calcHist", [](cv::Mat& m) { Histogram(m, 2); }}},
      {"histogram gray",
       {"2 x cvtColor, calcHist",
        [](cv::Mat& m) {
          cv::Mat gray;
          cv::cvtColor(m, gray, cv::COLOR_BGR2GRAY);
          Histogram(gray, 0);
          cv::cvtColor(gray, m, cv::COLOR_GRAY2BGR);
        }}},
      {"auto threshold",
       {"cvtColor, calcHist",
        [](cv::Mat& m) {
          cv::Mat gray;
          cv::cvtColor(m, gray, cv::COLOR_BGR2GRAY);
          Histogram(gray, 0);
        }}},
  };
  static const std::map<std::string, std::pair<const char*, void (*)(const cv::Mat&, cv::Mat&)>>
      kInto = {
          {"gray",
           {"cvtColor",
            [](const cv::Mat& m, cv::Mat& to) { cv::cvtColor(m, to, cv::COLOR_BGR2GRAY); }}},
          {"binary",
           {"cvtColor, threshold",
            [](const cv::Mat& m, cv::Mat& to) {
              cv::cvtColor(m, to, cv::COLOR_BGR2GRAY);
              cv::threshold(to, to, 128, 255, cv::THRESH_BINARY);
            }}},
          {"extract red",
           {"extractChannel", [](const cv::Mat& m, cv::Mat& to) { cv::extractChannel(m, to, 2); }}},
      };
  if (const auto in_place = kInPlace.find(row); in_place != kInPlace.end()) {
    const auto& [name, call] = in_place->second;
    cv::Mat mat = Photo().clone();
    return {std::string("OpenCV ") + name, [call = call, mat]() mutable { call(mat); }};
  }
  const bool rows = row.ends_with(" rows");
  const auto into = kInto.find(rows ? row.substr(0, row.size() - 5) : row);
  if (into == kInto.end()) return {};
  const auto& [name, call] = into->second;
  if (rows) {
    return {std::string("OpenCV ") + name,
            [call = call, mat = Photo(), to = cv::Mat()]() mutable { call(mat, to); }};
  }
  return {std::string("OpenCV clone, ") + name, [call = call] {
            cv::Mat to;
            call(Photo().clone(), to);
          }};
}

#else

Peer PeerOf(const std::string&) { return {}; }

#endif

void Add(const std::string& row, const std::function<void()>& ours) {
  const Peer peer = PeerOf(row);
  Compare(row + ", photo", Pixels(Photo24()), ours, peer.name, peer.call);
}

void InPlace(const std::string& row, void (*call)(PackedDib*)) {
  const auto image = std::make_shared<Image>(Copy(Photo24()));
  Add(row, [=] { call(image->get()); });
}

void Replacing(const std::string& row, void (*call)(PackedDib**)) {
  Add(row, [=] {
    PackedDib* image = Copy(Photo24()).release();
    call(&image);
    omb_freedib(image);
  });
}

// `call` gets a source row, its width and a row of an 8-bit image.
void Rows(const std::string& row, void (*call)(const uint8_t*, size_t, uint8_t*)) {
  const DibView photo = *DibView::Open(Photo24());
  const auto target = std::make_shared<Image>(omb_newdib(photo.width(), photo.height(), 8));
  Add(row + " rows", [=, to = *Dib::Open(target->get())] {
    for (int32_t y = 0; y < to.height(); ++y) {
      call(photo.row(y), static_cast<size_t>(photo.width()), target ? to.row(y) : nullptr);
    }
  });
}

}  // namespace

void AddToneRows() {
  InPlace("brightness", [](PackedDib* p) { omb_brightnesscontrast(p, 1, 0); });
  InPlace("contrast", [](PackedDib* p) { omb_brightnesscontrast(p, 0, 2); });
  InPlace("gamma", [](PackedDib* p) { omb_gammacorrection(p, 1.01); });
  InPlace("filter red", [](PackedDib* p) { omb_filtercolor(p, 1); });
  InPlace("lights", [](PackedDib* p) { omb_adjustghms(p, 1, -1, 0); });
  InPlace("auto levels", [](PackedDib* p) { omb_autolevel(p, 0, 1); });
  InPlace("auto contrast", [](PackedDib* p) { omb_autocontrast(p, 0, 1); });
  InPlace("histogram red", [](PackedDib* p) {
    int32_t counters[256];
    omb_getchannelhistogram(p, counters, 1);
  });
  InPlace("histogram gray", [](PackedDib* p) {
    int32_t counters[256];
    omb_getchannelhistogram(p, counters, 4);
  });
  InPlace("auto threshold", [](PackedDib* p) { omb_autothreshold(p); });
  Replacing("gray", [](PackedDib** p) { omb_gray(p); });
  Replacing("binary", [](PackedDib** p) { omb_binary(p, 128); });
  Replacing("extract red", [](PackedDib** p) { omb_extractcolor(p, 1); });
  Rows("gray", [](const uint8_t* from, size_t pixels, uint8_t* to) {
    rows::Active().gray_percent(from, pixels, to);
  });
  Rows("binary", [](const uint8_t* from, size_t pixels, uint8_t* to) {
    rows::Active().threshold(from, pixels, 12801, to);
  });
  Rows("extract red", [](const uint8_t* from, size_t pixels, uint8_t* to) {
    rows::Active().extract_channel(from, pixels, 2, to);
  });
  const auto indexed = std::make_shared<Image>(Copy(Indexed8()));
  Compare("auto contrast, indexed", Pixels(Indexed8()),
          [=] { omb_autocontrast(indexed->get(), 0.01, 0.99); });
}

}  // namespace ombrilo::bench
