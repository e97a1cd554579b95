// What the viewer does apart from its windows: its document, zooming, rendering, previews, sliders,
// the worker.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <future>

#include "errors.h"
#include "ombview/choice_pictures.h"
#include "ombview/document.h"
#include "ombview/preview.h"
#include "ombview/print_layout.h"
#include "ombview/recent_files.h"
#include "ombview/slider.h"
#include "ombview/tone_curve.h"
#include "ombview/worker.h"
#include "support/image.h"

namespace ombrilo::test {
namespace {

using ombview::Document;
using ombview::Point;
using ombview::Rect;
using ombview::Viewport;

omb::Image Noisy(int bits, int size = 20) {
  return ombview::CopyOf(ImageBuilder(bits, size, size).Pixels(Noise(1u << bits, 3)).Build().get());
}

TestImage Shown(const Document& document) {
  return TestImage(ombview::CopyOf(document.image().get()).release());
}

void Apply(Document& document, const char* step) {
  document.Change(ombview::After(document.image().get(), omb::ParseCall(step)), step);
}

// "undo/redo" as the menus say it.
std::string Ways(const Document& document) {
  const auto text = [](const std::string* action) { return action == nullptr ? "-" : *action; };
  return text(document.undo()) + "/" + text(document.redo());
}

TEST(Document, GoesBackAndForth) {
  Document document;
  EXPECT_EQ(document.image(), nullptr);
  EXPECT_FALSE(document.changed() || document.Undo() || document.Redo());
  document.Put(Noisy(24), "paste");
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
  EXPECT_TRUE(document.Undo());
  EXPECT_EQ(Shown(document).Bytes(), images[1]);
}

TEST(Document, ForgetsTheOldestImagesFirst) {
  Document document(3 * 1300);  // three images of 20 x 20 pixels and 24 bits
  for (int i = 0; i < 6; ++i) document.Put(Noisy(24), std::to_string(i));
  EXPECT_TRUE(document.Undo() && document.Undo());
  EXPECT_FALSE(document.Undo());
  // However large: the last action can be undone.
  document.Put(Noisy(24, 100), "large");
  EXPECT_EQ(Ways(document), "large/-");
  EXPECT_TRUE(document.Undo());
}

TEST(Document, KnowsWhatIsInWhichFile) {
  Document document;
  document.Put(Noisy(24), "paste");
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
  document.Open(Noisy(8), {}, "c.bmp");
  EXPECT_EQ(document.file(), "c.bmp");
  EXPECT_FALSE(document.changed());
  EXPECT_EQ(Ways(document), "Opening/-");
}

// As the reader of BMP files does, whose tests know all kinds.
TEST(Document, KeepsWhatItsFileHoldsBesidesPixels) {
  const std::vector<uint8_t> profile = {1, 2}, exif = {3, 4, 5};
  const auto keeps = [&](const Document& document) {
    return document.metadata()->profile == profile && document.metadata()->exif == exif;
  };
  Document document;
  document.Open(Noisy(24), {profile, exif}, "a.jpg");
  Apply(document, "scale=50%");
  EXPECT_TRUE(keeps(document));
  // Pixels from elsewhere have nothing of it.
  document.Put(Noisy(24), "paste");
  EXPECT_TRUE(document.metadata()->profile.empty() && document.metadata()->exif.empty());
  document.Undo();
  EXPECT_TRUE(keeps(document));
}

TEST(Document, TakesPackedDibs) {
  const TestImage image = ImageBuilder(8, 5, 4).Colors({1, 2, 3}).Pixels(Noise(3, 1)).Build();
  std::vector<uint8_t> bytes = image.Bytes();
  const auto read = [&] { return TestImage(ombview::ImageOfBytes(bytes, {}).release()); };
  EXPECT_EQ(read().Colors(), image.Colors());
  for (const size_t size : {bytes.size() - 9, size_t{40}, size_t{3}, size_t{0}}) {
    bytes.resize(size);
    EXPECT_THROW(read(), omb::FileError) << size;
  }
}

Viewport ViewportOf(int width, int height, int area_width, int area_height) {
  Viewport viewport;
  viewport.SetArea(area_width, area_height);
  viewport.SetImage(width, height);
  return viewport;
}

TEST(Viewports, FitAndFollowTheWindow) {
  Viewport viewport = ViewportOf(1000, 500, 500, 400);
  EXPECT_EQ(viewport.zoom(), 0.5);
  EXPECT_EQ(viewport.begin(), (Point{0, 75}));
  viewport.SetArea(2000, 2000);  // never enlarged
  EXPECT_EQ(viewport.zoom(), 1);
  EXPECT_EQ(viewport.begin(), (Point{500, 750}));
  EXPECT_EQ(viewport.PixelAt({500, 750}), (Point{0, 0}));
  EXPECT_EQ(viewport.PixelAt({499, 750}), std::nullopt);
  EXPECT_EQ(viewport.PixelAt({1500, 800}), std::nullopt);
}

TEST(Viewports, ZoomAroundThePointer) {
  Viewport viewport = ViewportOf(3000, 2000, 300, 200);
  const Point at = {210, 60};
  const Point pixel = *viewport.PixelAt(at);
  for (int i = 0; i < 40; ++i) viewport.Step(true, at);
  EXPECT_EQ(viewport.zoom(), 32);
  const Point there = *viewport.PixelAt(at);
  EXPECT_LE(std::abs(there.x - pixel.x) + std::abs(there.y - pixel.y), 10);  // one of the fit's
  viewport.Step(false, at);
  EXPECT_EQ(viewport.PixelAt(at), there);
  for (int i = 0; i < 40; ++i) viewport.Step(false, at);
  EXPECT_EQ(viewport.zoom(), 0.1);
  viewport.ZoomTo(1, {0, 0});
  viewport.PanBy(-100000, 50);
  EXPECT_EQ(viewport.origin(), (Point{2700, 0}));
  EXPECT_EQ(viewport.VisiblePixels(), (Rect{2700, 0, 3000, 200}));
  // An image of the same size stays where it is; another one is fitted.
  viewport.SetImage(3000, 2000);
  EXPECT_EQ(viewport.origin(), (Point{2700, 0}));
  viewport.SetImage(3000, 2001);
  EXPECT_TRUE(viewport.fit());
}

TestImage Colorful(int width, int height) {
  return ImageBuilder(24, width, height)
      .Pixels([](int x, int y) { return Rgb(x * 7, y * 5, x * y); })
      .Build();
}

TEST(Renderings, EnlargePixelsToSquares) {
  for (const int bits : {1, 4, 8, 24, 32}) {
    const TestImage image = ImageBuilder(bits, 40, 30)
                                .Colors(VariedColors(bits > 8 ? 0 : 1 << bits, 3))
                                .Pixels(Noise(bits > 8 ? 1u << 24 : 1u << bits, 9))
                                .Build();
    Viewport viewport = ViewportOf(40, 30, 64, 48);
    viewport.ZoomTo(3, {0, 0});
    viewport.PanTo({5, 7});
    const TestImage shown(ombview::Render(image.get(), viewport).release());
    ASSERT_EQ(shown.width(), 64);
    ASSERT_EQ(shown.height(), 48);
    const std::vector<uint32_t> colors = image.Colors();
    for (const Point at : {Point{0, 0}, {1, 1}, {63, 0}, {0, 47}, {40, 31}}) {
      const auto from = static_cast<size_t>((at.y + 7) / 3 * 40 + (at.x + 5) / 3);
      EXPECT_EQ(shown.Pixel(at.x, at.y), colors[from]) << bits;
    }
  }
}

TEST(Renderings, ReducedPartsAgreeWithTheWhole) {
  const TestImage image = Colorful(400, 200);
  Viewport viewport = ViewportOf(400, 200, 200, 100);
  const TestImage whole(ombview::Render(image.get(), viewport).release());
  viewport.SetArea(80, 60);
  viewport.ZoomTo(0.5, {0, 0});
  viewport.PanTo({100, 30});
  const TestImage part(ombview::Render(image.get(), viewport).release());
  ASSERT_EQ(part.width(), 80);
  for (const Point at : {Point{0, 0}, {79, 59}, {40, 20}}) {
    EXPECT_EQ(part.Pixel(at.x, at.y), whole.Pixel(at.x + 100, at.y + 30));
  }
}

// Images so large that they are reduced in several strips.
TEST(Renderings, AreReducedInStrips) {
  for (const int bits : {1, 8, 16, 24}) {
    const TestImage image = ImageBuilder(bits, 1600, 1400)
                                .Colors(GrayRamp(bits > 8 ? 0 : 1 << bits))
                                .Pixels([](int x, int y) { return unsigned(x * y) >> 6; })
                                .Build();
    TestImage whole(ombview::CopyOf(image.get()).release());
    if (bits == 16) {
      ASSERT_EQ(omb_transformat(whole.ref()), 1u);
    }
    ASSERT_EQ(omb_resize(whole.ref(), 400, 350, OMB_RESIZE_BOX), 1u);
    const TestImage shown(ombview::Render(image.get(), ViewportOf(1600, 1400, 400, 350)).release());
    EXPECT_EQ(shown.Colors(), whole.Colors()) << bits;
  }
  const TestImage slope = ImageBuilder(24, 1500, 1333)
                              .Pixels([](int, int y) { return Rgb(y / 6, y / 6, y / 6); })
                              .Build();
  const TestImage shown(ombview::Render(slope.get(), ViewportOf(1500, 1333, 999, 777)).release());
  for (int y = 0; y < shown.height(); ++y) {
    EXPECT_NEAR(shown.Pixel(5, y) & 255, (y + .5) * 1333 / shown.height() / 6, 1.1) << y;
  }
}

TEST(Pages, HoldAnImageInTheirMiddle) {
  struct Case {
    ombview::Paper paper;
    ombview::Point image;
    ombview::Rect place;
  };
  const ombview::Paper a4 = {{4960, 7016}, {96, 98, 4864, 6914}, {600, 600}};
  const Case cases[] = {
      {a4, {1000, 1000}, {240, 1268, 4720, 5748}},  // margins on both sides
      {a4, {100, 1000}, {2153, 240, 2807, 6776}},   // above and below
      {a4, {1, 100000}, {2479, 240, 2480, 6776}},   // one dot at least
      // What the printer does not reach below is left free above.
      {{{1000, 500}, {0, 0, 1000, 400}, {100, 100}}, {30, 10}, {50, 100, 950, 400}},
      {{{1000, 500}, {0, 0, 1000, 500}, {100, 50}}, {10, 10}, {40, 20, 960, 480}},
  };
  for (const Case& c : cases) {
    const ombview::Rect place = ombview::PlaceOn(c.paper, c.image.x, c.image.y);
    EXPECT_EQ(place, c.place) << place.left << " " << place.top << " " << place.right << " "
                              << place.bottom;
  }
}

TEST(Renderings, TellWhatAPixelHolds) {
  const TestImage indexed =
      ImageBuilder(4, 3, 2)
          .Colors(VariedColors(16, 1))
          .Pixels([](int x, int y) { return static_cast<uint32_t>(3 * y + x); })
          .Build();
  char expected[40];
  std::snprintf(expected, sizeof expected, "#%06x (color 5)", indexed.Color(5));
  EXPECT_EQ(ombview::ValueAt(indexed.get(), {2, 1}), expected);
  EXPECT_EQ(ombview::ValueAt(Colorful(4, 4).get(), {2, 3}), "#0e0f06 (14, 15, 6)");
  const TestImage words =
      ImageBuilder(16, 2, 1).Pixels([](int x, int) { return x + 0x7FFEu; }).Build();
  EXPECT_EQ(ombview::ValueAt(words.get(), {1, 0}), "0x7fff");
}

// What the preview shows of a large image is what the step will show there.
TEST(Previews, AgreeWithTheStep) {
  const TestImage image = Colorful(2600, 1700);
  Viewport viewport = ViewportOf(2600, 1700, 90, 70);
  for (const double zoom : {1.0, 4.0}) {
    viewport.ZoomTo(zoom, {45, 35});
    for (const char* step : {"convolute=sharpen", "invert", "fliphor", "gray"}) {
      const omb::Call call = omb::ParseCall(step);
      const omb::Image after = ombview::After(image.get(), call);
      const TestImage expected(ombview::Render(after.get(), viewport).release());
      const ombview::Seen seen = ombview::SeeAfter(image.get(), call, viewport);
      const TestImage shown(ombview::CopyOf(seen.image.get()).release());
      for (const Point at : {Point{0, 0}, {89, 69}, {31, 44}}) {
        EXPECT_EQ(shown.Pixel(at.x - seen.begin.x, at.y - seen.begin.y), expected.Pixel(at.x, at.y))
            << step << " at zoom " << zoom;
      }
    }
  }
  // A result of another size is shown whole.
  const auto turned = ombview::SeeAfter(image.get(), omb::ParseCall("rotate=90"), viewport);
  EXPECT_TRUE(turned.fixed);
  EXPECT_EQ(omb_DIBHeight(turned.image.get()), 70u);
}

TEST(Previews, BeginWithArgumentsThatAStepTakes) {
  const TestImage image = Colorful(60, 50);
  for (const omb::Step* step : omb::AllSteps()) {
    if (!step->TakesDepth(24)) continue;
    const omb::Call call = {step, ombview::FirstArguments(*step, image.get())};
    EXPECT_NO_THROW(ombview::After(image.get(), call)) << step->name;
    for (size_t i = 0; i < step->parameters.size(); ++i) {
      const auto choices = ombview::ChoicesOf(step->parameters[i]);
      if (choices.empty()) continue;
      const TestImage picture(
          ombview::PictureOfChoice(*step, call.arguments, i, choices.back(), image.get(), 32)
              .release());
      EXPECT_EQ(picture.width() * 100 + picture.height(), 3232) << step->name;
    }
  }
  for (const char* step : {"brightnesscontrast", "x1x2_changed", "curve"}) {
    const omb::Call idle = {omb::FindStep(step),
                            ombview::FirstArguments(omb::StepNamed(step), image.get())};
    const omb::Image same = ombview::After(image.get(), idle);
    EXPECT_EQ(TestImage(ombview::CopyOf(same.get()).release()).Bytes(), image.Bytes()) << step;
  }
}

TEST(Sliders, GoWhereTheValueIs) {
  for (const omb::Step* step : omb::AllSteps()) {
    for (const omb::Parameter& parameter : step->parameters) {
      const auto scale = ombview::SliderScale::For(parameter);
      if (!scale) continue;
      for (const int place : {0, scale->places() / 3, scale->places()}) {
        const auto value = parameter.Parse(scale->TextAt(place));
        ASSERT_TRUE(value) << step->name << " " << parameter.name << " " << scale->TextAt(place);
        EXPECT_NEAR(scale->PlaceOf(value->number), place, 2) << step->name << parameter.name;
      }
    }
  }
  const auto gamma = ombview::SliderScale::For(omb::Real("g", "", 0.1, 10));
  EXPECT_EQ(gamma->TextAt(500), "1.00");
  EXPECT_FALSE(ombview::SliderScale::For(omb::Whole("x", "", 0)));
}

TEST(ToneCurves, KeepTheirPointsInOrder) {
  using ombview::CurvePoint;
  using ombview::CurvePoints;
  for (const char* wrong :
       {"", "0:0", "0:0/", "5:0/5:9", "9:0/3:4", "0:0/256:1", "0:0/x", "0,0/1,1"}) {
    EXPECT_FALSE(CurvePoints::Parse(wrong)) << wrong;
  }
  CurvePoints curve = *CurvePoints::Parse("0:0/100:80/255:255");
  EXPECT_EQ(curve.Put({180, 300}), 2u);
  EXPECT_EQ(curve.Text(), "0:0/100:80/180:255/255:255");
  EXPECT_EQ(curve.Near({104, 75}, 9), 1u);
  EXPECT_EQ(curve.Near({120, 80}, 9), std::nullopt);
  curve.Move(1, {250, -4});  // no further than its neighbour
  EXPECT_EQ(curve.Text(), "0:0/179:0/180:255/255:255");
  curve.Move(0, {-9, 17});
  curve.Remove(1);
  curve.Remove(1);
  curve.Remove(1);  // two stay
  EXPECT_EQ(curve.Text(), "0:17/255:255");
  const auto negative = ombview::CurveOf(omb::ParseCall("invert"));
  EXPECT_EQ(negative[0] * 1000 + negative[200], 255055);
}

TEST(RecentFiles, KeepTheNewestOnceEach) {
  ombview::RecentFiles recent;
  for (int i = 0; i < 12; ++i) recent.Add(std::to_string(i) + ".png");
  recent.Add("7.png");
  ASSERT_EQ(recent.files().size(), ombview::RecentFiles::kMost);
  EXPECT_EQ(recent.files()[0].filename(), "7.png");
  EXPECT_EQ(recent.files()[1].filename(), "11.png");
  EXPECT_EQ(recent.files()[8].filename(), "3.png");
}

TEST(Workers, DoTheNewestOfASlotAndStopWhatIsCancelled) {
  std::promise<void> begun, go;
  std::string log;
  std::atomic<int> wakes = 0;
  ombview::Worker worker([&] { ++wakes; });
  const auto write = [&](const char* text) {
    return [&log, text](ombview::Progress&) { return [&log, text] { log += text; }; };
  };
  worker.Start(1, [&](ombview::Progress&) {
    begun.set_value();
    go.get_future().wait();
    return [&log] { log += "outdated "; };
  });
  begun.get_future().wait();
  worker.Start(1, write("replaced "));
  worker.Start(1, write("newest "));
  worker.Start(0, write("first "));
  const auto progress = worker.Start(2, [&](ombview::Progress& own) -> ombview::Worker::Followup {
    try {
      own.Report(0.5);
    } catch (const ombview::Cancelled&) {
      return [&log] { log += "stopped "; };
    }
    return {};
  });
  progress->Cancel();
  EXPECT_TRUE(worker.busy());
  go.set_value();
  while (wakes < 4) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  worker.RunFollowups();
  EXPECT_EQ(log, "first newest stopped ");
  EXPECT_FALSE(worker.busy());
}

}  // namespace
}  // namespace ombrilo::test
