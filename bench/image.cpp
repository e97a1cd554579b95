// Whole-image operations beside their peers.
#include <cstring>

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

}  // namespace

void AddImageRows() {
  InPlace("invert, photo", Photo24(), omb_invert,
          WITH_OPENCV(InMat("bitwise_not", Photo24(), [](cv::Mat& m) { cv::bitwise_not(m, m); })),
          Agreement());
  // A piece of the rows that stand last.
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
