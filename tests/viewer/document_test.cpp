// The viewer's document: what it holds after each deed, and the way back.
#include "ombview/document.h"

#include <gtest/gtest.h>

#include <cstring>

#include "errors.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

using ombview::Document;

omb::Image Ramp(int bits, int size = 20) {
  const TestImage image = ImageBuilder(bits, size, size)
                              .Colors(GrayRamp(bits <= 8 ? 1 << bits : 0))
                              .Pixels(Noise(1u << bits, 3))
                              .Build();
  return ombview::CopyOf(image.get());
}

TestImage Shown(const Document& document) {
  return TestImage(ombview::CopyOf(document.image().get()).release());
}

void Apply(Document& document, const char* step) {
  document.Change(ombview::After(document.image().get(), omb::ParseCall(step)), step);
}

// "undo/redo" as the menus say it.
std::string Ways(const Document& document) {
  const auto text = [](const std::string* deed) { return deed == nullptr ? "-" : *deed; };
  return text(document.undo()) + "/" + text(document.redo());
}

TEST(Document, GoesBackAndForth) {
  Document document;
  EXPECT_EQ(document.image(), nullptr);
  EXPECT_FALSE(document.changed() || document.Undo() || document.Redo());
  document.Put(Ramp(24), "paste");
  EXPECT_EQ(Ways(document), "-/-");
  std::vector<std::vector<uint8_t>> images = {Shown(document).Bytes()};
  for (const char* step : {"invert", "gray", "scale=50%"}) {
    Apply(document, step);
    images.push_back(Shown(document).Bytes());
    EXPECT_NE(images.back(), images[images.size() - 2]) << step;
  }
  EXPECT_EQ(Ways(document), "scale=50%/-");
  // A step that does not go leaves everything as it was.
  EXPECT_THROW(Apply(document, "tophat"), omb::StepError);
  EXPECT_EQ(Ways(document), "scale=50%/-");
  for (size_t i = 3; i-- > 0;) {
    EXPECT_TRUE(document.Undo());
    EXPECT_EQ(Shown(document).Bytes(), images[i]);
  }
  EXPECT_FALSE(document.Undo());
  EXPECT_TRUE(document.Redo());
  EXPECT_EQ(Shown(document).Bytes(), images[1]);
  EXPECT_EQ(Ways(document), "invert/gray");
  // What is done now takes the place of what was undone.
  Apply(document, "fliphor");
  EXPECT_EQ(Ways(document), "fliphor/-");
}

TEST(Document, ForgetsTheOldestImagesFirst) {
  Document document(3 * 1300);  // three images of 20 x 20 pixels and 24 bits
  for (int i = 0; i < 6; ++i) document.Put(Ramp(24), std::to_string(i));
  EXPECT_TRUE(document.Undo() && document.Undo());
  EXPECT_FALSE(document.Undo());
  // However large: the last deed can be undone.
  document.Put(Ramp(24, 100), "large");
  EXPECT_EQ(Ways(document), "large/-");
  EXPECT_TRUE(document.Undo());
}

TEST(Document, KnowsWhatIsInWhichFile) {
  Document document;
  document.Put(Ramp(24), "paste");
  EXPECT_TRUE(document.changed());
  EXPECT_EQ(document.before(), nullptr);
  document.MarkSaved("a.bmp");
  EXPECT_FALSE(document.changed());
  const ombview::SharedImage first = document.image();
  Apply(document, "invert");
  EXPECT_TRUE(document.changed());
  EXPECT_EQ(document.before(), first);
  EXPECT_EQ(document.file(), "a.bmp");
  document.MarkSaved("b.bmp");
  document.Undo();
  EXPECT_EQ(document.file(), "a.bmp");
  EXPECT_FALSE(document.changed());
  document.Open(Ramp(8), "c.bmp");
  EXPECT_EQ(document.file(), "c.bmp");
  EXPECT_FALSE(document.changed());
  EXPECT_EQ(Ways(document), "Opening/-");
}

TEST(Document, TakesPackedDibsOfEveryKind) {
  const auto pixels = [](int x, int y) { return Rgb(50 * x, 30 * y, 7); };
  const auto read = [](const std::vector<uint8_t>& bytes) {
    return TestImage(ombview::ImageOfBytes(bytes, {}).release());
  };
  const TestImage image = ImageBuilder(24, 5, 4).Pixels(pixels).Build();
  EXPECT_EQ(read(image.Bytes()).Bytes(), image.Bytes());
  const TestImage core = ImageBuilder(24, 5, 4).CoreHeader().Pixels(pixels).Build();
  EXPECT_EQ(read(core.Bytes()).Pixels(), image.Pixels());
  const TestImage mirrored =
      ImageBuilder(24, 5, 4).Pixels([=](int x, int y) { return pixels(x, 3 - y); }).Build();
  std::vector<uint8_t> top_down = mirrored.Bytes();
  const int32_t height = -4;
  std::memcpy(top_down.data() + 8, &height, sizeof height);
  EXPECT_EQ(read(top_down).Pixels(), image.Pixels());
  const TestImage few = ImageBuilder(8, 5, 4).Colors({1, 2, 3}).Pixels(Noise(3, 1)).Build();
  EXPECT_EQ(read(few.Bytes()).Colors(), few.Colors());
  std::vector<uint8_t> cut = image.Bytes();
  for (const size_t size : {cut.size() - 9, size_t{40}, size_t{3}, size_t{0}}) {
    cut.resize(size);
    EXPECT_THROW(read(cut), omb::FileError) << size;
  }
}

}  // namespace
}  // namespace ombrilo::test
