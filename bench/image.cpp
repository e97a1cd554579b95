// Whole-image operations beside their peers.
#include "compare.h"
#include "inputs.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace ombrilo::bench {

void AddImageRows() {
  const double pixels = Pixels(Photo24());
  {
    auto image = std::make_shared<Image>(Copy(Photo24()));
    const auto ours = [=] { omb_invert(image->get()); };
#ifdef OMBRILO_HAVE_OPENCV
    cv::Mat mat = AsMat(image->get());
    Compare("invert, photo", pixels, ours, "OpenCV bitwise_not",
            [=] { cv::bitwise_not(mat, mat); });
#else
    Compare("invert, photo", pixels, ours);
#endif
  }
  {
    const OmbRect rect = {101, 103, 3900, 2900};
    const double piece = 3800.0 * 2798.0;
    const auto ours = [=] {
      const uintptr_t cut = omb_cpydibrect(Photo24(), rect.left, rect.top, 3800, 2798);
      omb_freedib(reinterpret_cast<PackedDib*>(cut));
    };
#ifdef OMBRILO_HAVE_OPENCV
    const cv::Mat mat = AsMat(const_cast<PackedDib*>(Photo24()));
    Compare("cpydibrect, photo", piece, ours, "OpenCV Mat(Rect).clone",
            [=] { const cv::Mat cut = mat(cv::Rect(101, 99, 3800, 2798)).clone(); });
#else
    Compare("cpydibrect, photo", piece, ours);
#endif
  }
}

}  // namespace ombrilo::bench
