// Whole-image operations beside their peers.
#include <cstring>
#include <functional>
#include <memory>
#include <vector>

#include "compare.h"
#include "core/packed_dib.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

namespace {

// The size of the photo at 16 or 32 bits, with varied bytes.
const PackedDib* HighColor(uint16_t bits) {
  Image made(omb_newdib(4000, 3000 * bits / 24 + 1, 24));
  const int32_t height = 3000;
  uint8_t* const fields = reinterpret_cast<uint8_t*>(made.get());
  std::memcpy(fields + kInfoHeight, &height, 4);
  std::memcpy(fields + kInfoBitCount, &bits, 2);
  const Dib dib = *Dib::Open(made.get());
  const DibView photo = *DibView::Open(Photo24());
  for (int y = 0; y < height; ++y) std::memcpy(dib.row(y), photo.row(y), 2 * 4000);
  return made.release();  // for the whole run
}

// The photo as a host has it; in the layout that it has already, without a format.
constexpr int kWidth = 4000, kHeight = 3000;
uint8_t* HostPixels(uint32_t format) {
  static std::vector<uint8_t> pixels(size_t{4} * kWidth * kHeight);
  if (format != 0) {
    omb_topixels(Photo24(), format, pixels.data(), kWidth * static_cast<int>(format / 8));
  }
  return pixels.data();
}

// What hosts would write instead: a conversion into new memory.
#ifdef OMBRILO_HAVE_OPENCV
std::function<void()> NewMat(const cv::Mat& pixels, int code) {
  return [=] {
    cv::Mat converted;
    cv::cvtColor(pixels, converted, code);
  };
}
#endif

void AddHostPixels() {
  const double pixels = double{kWidth} * kHeight;
  const auto from = [](uint32_t format) {
    return [=] {
      const intptr_t stride = kWidth * static_cast<int>(format / 8);
      omb_freedib(omb_frompixels(format, kWidth, kHeight, HostPixels(0), stride, 0xFFFFFF));
    };
  };
  const auto to = [](uint32_t format, const PackedDib* image) {
    return [=] {
      // New memory here, too.
      const size_t stride = size_t{format / 8} * omb_DIBWidth(image);
      const std::unique_ptr<uint8_t[]> array(new uint8_t[stride * omb_DIBHeight(image)]);
      omb_topixels(image, format, array.get(), static_cast<intptr_t>(stride));
    };
  };
  HostPixels(OMB_PIXELS_RGBA);
#ifdef OMBRILO_HAVE_OPENCV
  static const Image photo = Copy(Photo24()), page = Copy(Page8());
  const auto mat = [&](int type, int code) {
    return NewMat(cv::Mat(kHeight, kWidth, type, HostPixels(0)), code);
  };
  Compare("frompixels RGB, photo", pixels, from(OMB_PIXELS_RGB), "cvtColor into a new Mat",
          mat(CV_8UC3, cv::COLOR_RGB2BGR));
  Compare("frompixels RGBA, photo", pixels, from(OMB_PIXELS_RGBA),
          "cvtColor into a new Mat, alpha dropped", mat(CV_8UC4, cv::COLOR_RGBA2BGR));
  Compare("topixels RGB, photo", pixels, to(OMB_PIXELS_RGB, Photo24()), "cvtColor into a new Mat",
          NewMat(AsMat(photo.get()), cv::COLOR_BGR2RGB));
  Compare("topixels RGBA, photo", pixels, to(OMB_PIXELS_RGBA, Photo24()), "cvtColor into a new Mat",
          NewMat(AsMat(photo.get()), cv::COLOR_BGR2RGBA));
  Compare("topixels gray, photo", pixels, to(OMB_PIXELS_GRAY, Photo24()), "cvtColor into a new Mat",
          NewMat(AsMat(photo.get()), cv::COLOR_BGR2GRAY));
  Compare("topixels RGBA, page 8", Pixels(Page8()), to(OMB_PIXELS_RGBA, Page8()),
          "cvtColor into a new Mat", NewMat(AsMat(page.get()), cv::COLOR_GRAY2RGBA));
#else
  for (const uint32_t format : {OMB_PIXELS_RGB, OMB_PIXELS_RGBA}) {
    Compare("frompixels, photo", pixels, from(format));
    Compare("topixels, photo", pixels, to(format, Photo24()));
  }
#endif
}

}  // namespace

void AddImageRows() {
  AddHostPixels();
  InPlace("invert, photo", Photo24(), omb_invert,
          WITH_OPENCV(InMat("bitwise_not", Photo24(), [](cv::Mat& m) { cv::bitwise_not(m, m); })),
          Agreement());
  // A piece of the rows that are stored last.
  Replacing(
      "crop, photo", Photo24(),
      [](PackedDib** image) {
        const OmbRect rectangle = {101, 0, 3900, 2797};
        omb_crop(image, &rectangle);
      },
      WITH_OPENCV(OntoMat("Mat(Rect).copyTo", Photo24(),
                          [](const cv::Mat& from, cv::Mat& to) {
                            from(cv::Rect(101, 202, 3800, 2798)).copyTo(to);
                          })),
      Agreement());
  Replacing(
      "crop, page 1", Page1(),
      [](PackedDib** image) {
        const OmbRect rectangle = {101, 0, 2400, 2999};
        omb_crop(image, &rectangle);
      },
      WITH_LEPTONICA(OnPix("pixClipRectangle", Page1(),
                           [](PIX* pix) {
                             BOX* box = boxCreate(101, 508, 2300, 3000);
                             PIX* cut = pixClipRectangle(pix, box, nullptr);
                             boxDestroy(&box);
                             return cut;
                           })),
      Agreement());
  for (const uint16_t bits : {16, 32}) {
    const PackedDib* image = HighColor(bits);
    Replacing("transformat " + std::to_string(bits) + ", photo", image, omb_transformat,
              WITH_OPENCV(OntoMat(
                  "cvtColor", image,
                  [=](const cv::Mat& from, cv::Mat& to) {
                    cv::cvtColor(from, to, bits == 16 ? cv::COLOR_BGR5552BGR : cv::COLOR_BGRA2BGR);
                  })),
              Agreement());
  }
}

}  // namespace ombrilo::bench
