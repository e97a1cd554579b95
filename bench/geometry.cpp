// Scaling, turns and flips beside their peers.
#include <cmath>

#include "compare.h"
#include "inputs.h"

#ifdef OMBRILO_HAVE_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef OMBRILO_HAVE_LEPTONICA
#include <allheaders.h>
#endif

namespace ombrilo::bench {

namespace {

using Operation = std::function<void(PackedDib**)>;

struct Input {
  const char* name;
  const PackedDib* image;
};

#ifdef OMBRILO_HAVE_OPENCV

std::function<void()> OnMat(const PackedDib* source,
                            std::function<void(const cv::Mat&, cv::Mat&)> operation) {
  return [=, from = AsMat(const_cast<PackedDib*>(source))] {
    cv::Mat to;
    operation(from, to);
  };
}

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

void Add(const std::string& row, double pixels, const PackedDib* source, Operation ours,
         const std::string& peer_name = "", std::function<void()> peer = nullptr) {
  // Ours replaces its image, so that each call needs a fresh copy.
  auto image = std::make_shared<Image>();
  ComparePrepared(
      row, pixels, [=] { *image = Copy(source); },
      [=] {
        PackedDib* replaced = image->release();
        ours(&replaced);
        omb_freedib(replaced);
      },
      peer_name, std::move(peer));
}

#ifdef OMBRILO_HAVE_LEPTONICA

// The page as a Pix, and an operation whose result is thrown away.
std::function<void()> OnPix(std::function<Pix*(Pix*)> operation) {
  const Image page = Copy(Page1());
  const int width = static_cast<int>(omb_DIBWidth(page.get()));
  const int height = static_cast<int>(omb_DIBHeight(page.get()));
  std::shared_ptr<Pix> pix(pixCreate(width, height, 1), [](Pix* p) { pixDestroy(&p); });
  const uint8_t* rows = omb_FindDIBBits(page.get());
  const int stride = omb_BytesPerLine(page.get());
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if ((rows[y * stride + x / 8] >> (7 - x % 8) & 1) != 0) {
        pixSetPixel(pix.get(), static_cast<l_uint32>(x), static_cast<l_uint32>(y), 1);
      }
    }
  }
  return [=] {
    Pix* result = operation(pix.get());
    if (result != pix.get()) pixDestroy(&result);
  };
}

#endif

}  // namespace

void AddGeometryRows() {
  const Input inputs[] = {{"photo", Photo24()}, {"page 8", Page8()}};
  constexpr const char* kModes[] = {"", "point", "bilinear", "bicubic"};
  for (const Input& input : inputs) {
    const double pixels = Pixels(input.image);
    for (uint32_t mode = 1; mode <= 3; ++mode) {
      for (const double factor : {0.4, 1.5}) {
        const auto w = static_cast<uint32_t>(omb_DIBWidth(input.image) * factor);
        const auto h = static_cast<uint32_t>(omb_DIBHeight(input.image) * factor);
        const std::string row = std::string("scale ") + (factor < 1 ? "0.4 " : "1.5 ") +
                                kModes[mode] + ", " + input.name;
        const auto ours = [=](PackedDib** image) { omb_scale(image, w, h, mode); };
#ifdef OMBRILO_HAVE_OPENCV
        Add(row, pixels * factor * factor, input.image, ours, "OpenCV resize",
            OnMat(input.image, [=](const cv::Mat& from, cv::Mat& to) {
              cv::resize(from, to, cv::Size(static_cast<int>(w), static_cast<int>(h)), 0, 0,
                         static_cast<int>(mode) - 1);
            }));
#else
        Add(row, pixels * factor * factor, input.image, ours);
#endif
      }
      const std::string row = std::string("rotate 7 ") + kModes[mode] + ", " + input.name;
      const auto ours = [=](PackedDib** image) { omb_rotate(image, 7, mode); };
#ifdef OMBRILO_HAVE_OPENCV
      Add(row, pixels, input.image, ours, "OpenCV warpAffine",
          OnMat(input.image, [=](const cv::Mat& from, cv::Mat& to) {
            Warp(from, to, -7, static_cast<int>(mode) - 1);
          }));
#else
      Add(row, pixels, input.image, ours);
#endif
    }
    for (const int quarters : {1, 2}) {
      const std::string row = "rotate " + std::to_string(90 * quarters) + ", " + input.name;
      const auto ours = [=](PackedDib** image) {
        omb_rotate(image, static_cast<float>(90 * quarters), 1);
      };
#ifdef OMBRILO_HAVE_OPENCV
      Add(row, pixels, input.image, ours, "OpenCV rotate",
          OnMat(input.image,
                [=](const cv::Mat& from, cv::Mat& to) { cv::rotate(from, to, quarters - 1); }));
#else
      Add(row, pixels, input.image, ours);
#endif
    }
    for (const bool horizontal : {true, false}) {
      const std::string row = std::string(horizontal ? "fliphor, " : "flipvert, ") + input.name;
      auto image = std::make_shared<Image>(Copy(input.image));
      const auto flip = horizontal ? omb_fliphor : omb_flipvert;
      const auto ours = [=] { flip(image->get()); };
#ifdef OMBRILO_HAVE_OPENCV
      cv::Mat mat = AsMat(image->get());
      Compare(row, pixels, ours, "OpenCV flip", [=] { cv::flip(mat, mat, horizontal ? 1 : 0); });
#else
      Compare(row, pixels, ours);
#endif
    }
  }

  const double indexed = Pixels(Indexed8());
  Add("scale 0.4 bilinear, indexed", indexed * 0.16, Indexed8(),
      [](PackedDib** image) { omb_scale(image, 640, 500, 2); });
  Add("rotate 7 bicubic, indexed", indexed, Indexed8(),
      [](PackedDib** image) { omb_rotate(image, 7, 3); });

  const double page = Pixels(Page1());
  struct PageRow {
    const char* name;
    double work;
    Operation ours;
    const char* peer_name;
#ifdef OMBRILO_HAVE_LEPTONICA
    std::function<Pix*(Pix*)> peer;
#define OMBRILO_PIX(...) [](Pix* pix) -> Pix* { return __VA_ARGS__; }
#else
    std::nullptr_t peer;
#define OMBRILO_PIX(...) nullptr
#endif
  };
  const PageRow page_rows[] = {
      {"scale 0.4 point, page 1", page * 0.16,
       [](PackedDib** image) { omb_scale(image, 992, 1403, 1); }, "Leptonica pixScale",
       OMBRILO_PIX(pixScale(pix, 0.4f, 0.4f))},
      {"scale 1.5 point, page 1", page * 2.25,
       [](PackedDib** image) { omb_scale(image, 3720, 5262, 1); }, "Leptonica pixScale",
       OMBRILO_PIX(pixScale(pix, 1.5f, 1.5f))},
      {"rotate 7 point, page 1", page, [](PackedDib** image) { omb_rotate(image, 7, 1); },
       "Leptonica pixRotateBySampling",
       OMBRILO_PIX(pixRotateBySampling(pix, 1240, 1754, 0.12217f, L_BRING_IN_WHITE))},
      {"rotate 90, page 1", page, [](PackedDib** image) { omb_rotate(image, 90, 1); },
       "Leptonica pixRotate90", OMBRILO_PIX(pixRotate90(pix, 1))},
      {"rotate 180, page 1", page, [](PackedDib** image) { omb_rotate(image, 180, 1); },
       "Leptonica pixRotate180", OMBRILO_PIX(pixRotate180(nullptr, pix))},
  };
  for (const PageRow& row : page_rows) {
#ifdef OMBRILO_HAVE_LEPTONICA
    Add(row.name, row.work, Page1(), row.ours, row.peer_name, OnPix(row.peer));
#else
    Add(row.name, row.work, Page1(), row.ours);
#endif
  }
  for (const bool horizontal : {true, false}) {
    const char* row = horizontal ? "fliphor, page 1" : "flipvert, page 1";
    auto image = std::make_shared<Image>(Copy(Page1()));
    const auto flip = horizontal ? omb_fliphor : omb_flipvert;
    const auto ours = [=] { flip(image->get()); };
#ifdef OMBRILO_HAVE_LEPTONICA
    Compare(
        row, page, ours, horizontal ? "Leptonica pixFlipLR" : "Leptonica pixFlipTB",
        OnPix([=](Pix* pix) { return horizontal ? pixFlipLR(pix, pix) : pixFlipTB(pix, pix); }));
#else
    Compare(row, page, ours);
#endif
  }
#undef OMBRILO_PIX
  Add("scale 0.4 bilinear, page 1", page * 0.16, Page1(),
      [](PackedDib** image) { omb_scale(image, 992, 1403, 2); });
}

}  // namespace ombrilo::bench
