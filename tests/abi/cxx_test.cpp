// The C++ interface, compiled as C++17, 20 and 23.
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "ombrilo/ombrilo.hpp"

namespace ombrilo {
namespace {

const uint8_t kRgb[] = {10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120};

TEST(Image, PixelsComeInAndGoOut) {
  Image image = Image::FromPixels(OMB_PIXELS_RGB, 2, 2, kRgb, 6);
  EXPECT_EQ(image.width(), 2u);
  EXPECT_EQ(image.bits(), 24);
  EXPECT_EQ(image.row(0)[0], 30);  // blue of the top left pixel
  EXPECT_EQ(image.row(1).size(), 6u);
  for (uint8_t& byte : image.row(0)) byte = 1;
  uint8_t out[12];
  image.ToPixels(OMB_PIXELS_RGB, out, 6);
  EXPECT_EQ(out[0], 1);
  EXPECT_TRUE(std::equal(kRgb + 6, kRgb + 12, out + 6));
}

TEST(Image, OperationsChainAndThrow) {
  Image image = Image::FromPixels(OMB_PIXELS_RGB, 2, 2, kRgb, 6);
  image.gammacorrection(1).scale(2, 2).rotate(360).neuquant(24);  // nothing to do
  EXPECT_EQ(image.row(0)[0], 30);
  image.invert().scale(4, 4, OMB_RESAMPLE_POINT).extractcolor(OMB_CHANNEL_RED);
  EXPECT_EQ(image.bits(), 8);
  EXPECT_EQ(image.row(0)[0], 245);
  EXPECT_EQ(image.color(255).red, 255);
  EXPECT_THROW(image.dither(8), Error);
  EXPECT_THROW(image.crop({0, 0, 9, 9}), Error);
  EXPECT_THROW(image.row(4), Error);
  EXPECT_EQ(image.row(0)[0], 245);
  image.convolute(OMB_KERNAL_LOPASS_3X3).convolute(OMB_CONVOLUTE_BOX_3X3).sobel();
  image.morph(OMB_MORPH_OPEN, OMB_KERNAL_SQUARE_3X3).enhancepage(OMB_ENHANCE_MEDIAN, OMB_SIZE_3X3);
  image.setpalette(std::vector<Color>{{1, 2, 3}});
  EXPECT_EQ(image.color(0).blue, 3);
  EXPECT_EQ(image.gray().binary().bits(), 1);

  EXPECT_EQ(image.truecolor().bits(), 24);
  EXPECT_EQ(image.resize(8, 9).height(), 9u);

  Image moved = std::move(image);
  EXPECT_FALSE(image);  // NOLINT: what a move leaves is said
  EXPECT_EQ(moved.Clone().width(), 8u);
  EXPECT_THROW(image.sobel(), Error);
  EXPECT_THROW(image.brightnesscontrast(1, 1), Error);
  EXPECT_THROW(image.gray(), Error);
  EXPECT_THROW(image.truecolor(), Error);
  EXPECT_THROW(Image(0, 1, 8), Error);
  EXPECT_THROW(Image::FromPixels(OMB_PIXELS_RGB, 2, 2, kRgb, 5), Error);
}

TEST(Image, PointsAndColorsAreListsOrContainers) {
  Image image(256, 1, 8);
  image.setpalette({{1, 2, 3}, {4, 5, 6}});
  EXPECT_EQ(image.color(1).green, 5);
  EXPECT_TRUE(image.iscolorful());
  image.gray().curve({{0, 255}, {255, 0}}).segmentoperation(std::vector<OmbPoint>{{0, 7}});
  EXPECT_EQ(image.color(0).red, 7);
  EXPECT_FALSE(image.iscolorful());
  EXPECT_THROW(image.curve({{3, 0}, {3, 0}}), Error);
}

TEST(Image, PagesBecomeWhiteInBlocksAndAsAWhole) {
  std::vector<uint8_t> page(40 * 40, 100);
  for (size_t i = 0; i < page.size(); i += 7) page[i] = 10;
  const Image dim = Image::FromPixels(OMB_PIXELS_GRAY, 40, 40, page.data(), 40);
  for (const int32_t blocks : {int32_t{Image::kAutomatic}, int32_t{Image::kWhole}, 20}) {
    EXPECT_EQ(dim.Clone().whiten(blocks).row(0)[1], 255);
    EXPECT_EQ(dim.Clone().stretch(blocks).row(0)[1], 255);
    EXPECT_EQ(dim.Clone().equalize(blocks, 0).row(0)[1], 255);
    EXPECT_GT(dim.Clone().logarithm(blocks).row(0)[1], 100);
  }
  EXPECT_THROW(dim.Clone().whiten(5), Error);
  EXPECT_EQ(dim.Clone().morphologicalpage(OMB_PAGE_CLEAN).row(1)[1], 255);
}

}  // namespace
}  // namespace ombrilo
