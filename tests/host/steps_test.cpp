// Arguments of steps, the tables of all steps, and the pictures that show them.
#include "steps/steps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "errors.h"
#include "steps/kernels.h"
#include "support/image.h"
#include "text.h"
#include "thumbnail.h"

namespace omb {
namespace {

using namespace ombrilo::test;

Image Taken(TestImage image) { return Image(std::exchange(*image.ref(), nullptr)); }

TEST(Parameters, TakeWhatTheyDescribeAndNothingElse) {
  const auto whole = [] { return Whole("n", "", -5, 255).Named({{"auto", -1}}); };
  const struct {
    Parameter parameter;
    std::map<std::string, double> accepted;
    std::vector<std::string> refused;
  } cases[] = {
      {whole(),
       {{"0", 0}, {"255", 255}, {"+7", 7}, {"-5", -5}, {"Auto", -1}},
       {"256", "-6", "1.5", "1e2", "3 ", " 3", "+-3", "0x10", "99999999999999999999"}},
      {Whole("n", "", 0), {{"2147483647", 2147483647}}, {"2147483648"}},
      {Real("x", "", 0.5, 10), {{"2.25", 2.25}, {"1e1", 10}}, {"nan", "inf", "0.49", "2,5"}},
      {Choice("c", "", {{"red", 1}, {"blue", 3}}), {{"RED", 1}, {"blue", 3}}, {"1", "re"}},
      {Color("c", ""),
       {{"#0102fe", 0xFE0201}, {"#FFFFFF", 0xFFFFFF}},
       {"0102fe", "#12345", "#12345g", "#-12345"}},
  };
  for (const auto& c : cases) {
    for (const auto& [text, number] : c.accepted) {
      EXPECT_EQ(c.parameter.Parse(text).value_or(Value{"refused", -99}).number, number) << text;
    }
    for (const std::string& text : c.refused) EXPECT_FALSE(c.parameter.Parse(text)) << text;
  }
  const Parameter text =
      Text("t", "", "a percentage", [](const std::string& s) { return s.back() == '%'; });
  EXPECT_EQ(text.Parse("50 %")->text, "50 %");
  EXPECT_FALSE(text.Parse("50"));
  EXPECT_FALSE(text.Parse(""));
  EXPECT_EQ(whole().Form(), "a whole number from -5 to 255, or auto");
}

TEST(Calls, NameWhatIsWrongAndShowTheUsage) {
  const std::pair<const char*, const char*> cases[] = {
      {"nonsense", "there is no step 'nonsense'"},
      {"open=1", "there is no step 'open'; there is mathopen, opencompose"},
      {"Gamacorection", "there is no step 'Gamacorection'; there is gammacorrection"},
      {"threshold=50", "there is no step 'threshold'; that is binary here"},
      {"gr", "there is no step 'gr'; there is gray, granulate, gradientize"},
      {"invert=1", "invert: takes no arguments"},
      {"binary=level=3", "binary: there is no parameter 'level'"},
      {"scale=50%,size=40%", "scale: 'size' is given twice"},
      {"crop=1,2,3", "crop: 'bottom' is missing"},
      {"crop=1,,3,4", "crop: 'top' is missing"},
      {"curve=0:0/9:255/9:0",
       "curve: 'points' must be levels from 0 to 255 such as 0:0/64:48/255:255, from dark to "
       "light, "
       "not '0:0/9:255/9:0'"},
      {"crop=1,2,3,4,5", "crop: takes no more than 4 arguments"},
      {"crop=x,2,3,4", "crop: 'left' must be a whole number from 0 up, not 'x'"},
      {"crop=2,0,1,4",
       "crop: the rectangle is empty: right and bottom are the last column and row "
       "kept"},
      {"enhancepage=higauss,3x3", "enhancepage: higauss comes in 5x5, 7x7 and 9x9"},
      {"kernel=Circle 5x5",
       "kernel: 'name' must be a kernel with weights such as 'unsharp 5x5', "
       "or its number ('omb list kernels' draws them), not 'Circle 5x5'"},
  };
  for (const auto& [text, message] : cases) {
    try {
      ParseCall(text);
      ADD_FAILURE() << text << " was accepted";
    } catch (const UsageError& error) {
      EXPECT_STREQ(error.what(), message);
      EXPECT_NE(error.usage(), "");
    }
  }
  // A shell took arguments with blanks apart.
  EXPECT_EQ(ParseCalls({"kernel=unsharp", "5x5,2", "invert"}).size(), 2u);
  EXPECT_THROW(ParseCalls({"crop=0,0,1,1", "inver"}), UsageError);
  EXPECT_EQ(FindStep("crop")->Usage(), "crop=left,top,right,bottom");
  const Step optional = {
      "s", "",   "",
      "",  {24}, {Whole("a", "", 0), Whole("b", "", 0).Preset("2"), Whole("c", "", 0).Preset("2")},
      {},  {}};
  EXPECT_EQ(optional.Usage(), "s=a[,b,c]");
}

Image Example(int bits) {
  return Taken(ImageBuilder(bits, 64, 48).Pixels(Noise(1u << std::min(bits, 24), 7)).Build());
}

TEST(Tables, ExamplesRunAtEveryDepthTheyPromise) {
  std::set<std::string> names;
  for (const Step* step : AllSteps()) {
    EXPECT_TRUE(names.insert(step->name).second) << step->name << " stands in two tables";
    for (const Parameter& parameter : step->parameters) {
      EXPECT_TRUE(!parameter.preset || parameter.Parse(*parameter.preset)) << parameter.name;
    }
    for (const int bits : {1, 4, 8, 16, 24, 32}) {
      for (const std::string& text : step->ExampleCalls(Example(bits).get())) {
        SCOPED_TRACE(testing::Message() << text << " at " << bits << " bits");
        Image image = Example(bits);
        const Call call = ParseCall(text);
        // 16 and 32 bits are brought to 24.
        if (step->TakesDepth(bits) || (bits >= 16 && step->TakesDepth(24))) {
          EXPECT_NO_THROW(RunCall(call, image));
          continue;
        }
        EXPECT_THROW(RunCall(call, image), StepError);
        EXPECT_EQ(omb_DIBBitCount(image.get()), bits);
        if (step->before == nullptr) continue;
        // The hint helps.
        RunCall(ParseCall(step->before), image);
        EXPECT_NO_THROW(RunCall(call, image));
      }
    }
  }
}

// Why a step does not go; empty when it does.
std::string FailureOf(const char* step, Image image) {
  try {
    RunCall(ParseCall(step), image);
  } catch (const StepError& error) {
    return error.what();
  }
  return "";
}

// What the library would refuse or spoil is reported before it is called.
TEST(Limits, AreExplained) {
  const struct {
    int bits, width;
    const char* step;
    const char* reason;  // a part of it; empty: the step goes
  } cases[] = {
      {24, 21845, "kernel=unsharp 3x3", "try gray first"},
      {24, 21845, "edgepage=sobel", ""},
      {8, 65533, "enhancepage=median", "65532"},
      {8, 65536, "morph=open,Circle 3x3", "65535"},
      {1, 65536, "pickedge", "65535"},
      {1, 65535, "pickedge", ""},
  };
  for (const auto& c : cases) {
    const std::string reason = FailureOf(c.step, Taken(ImageBuilder(c.bits, c.width, 8).Build()));
    EXPECT_EQ(reason.empty(), *c.reason == 0) << c.step;
    EXPECT_NE(reason.find(c.reason), std::string::npos) << reason;
  }
}

// An operation that nobody can reach from the command line is one that was forgotten here.
TEST(Tables, EveryExportIsAStepOrNoneOnPurpose) {
  const std::map<std::string, std::string> renamed = {
      {"DoConvoluteDIB", "kernel"},
      {"DoKernalMorphDIB", "morph"},
      {"EnhancePage", "enhancepage whiten stretch equalize logarithm"},
      {"adjustcolor", "coloroffset colorgain hsi hsl"}};
  std::istringstream none(
      "newdib freedib DIBWidth DIBHeight DIBBitCount DIBNumColors PaletteSize "
      "FindDIBBits BytesPerLine frompixels topixels setpalette setresolution CreateDIBPalette "
      "iscolorful can_gray can_filtersheet "
      "can_pseudocolor can_balance autoclr getchannelhistogram autothreshold newKERNAL "
      "cloneKERNAL zeroKERNAL destroyKERNAL getKERNAL bmtodib DIBToDIBSection "
      "CopyWindowToDIB version bestfit diffuse_seed");
  const std::set<std::string> no_steps(std::istream_iterator<std::string>(none), {});
  std::ifstream exports(OMBRILO_EXPORTS);
  size_t operations = 0;
  for (std::string word; exports >> word;) {
    if (!word.starts_with("omb_")) continue;
    std::string name = word.substr(4);
    if (no_steps.contains(name)) continue;
    for (std::istringstream steps(renamed.contains(name) ? renamed.at(name) : name); steps >> name;
         ++operations) {
      EXPECT_NE(FindStep(Lowercase(name)), nullptr) << word;
    }
  }
  const std::set<std::string> of_the_host = {"truecolor"};
  EXPECT_EQ(operations + of_the_host.size(), AllSteps().size());
}

TEST(Calls, BytesThatAreNoGrayLevelsAreNotFiltered) {
  const struct {
    std::vector<uint32_t> colors;
    const char* cure;
  } cases[] = {{VariedColors(256, 3), "try truecolor first"},
               {std::vector<uint32_t>(256, 0x808080), "try truecolor, then gray"}};
  for (const auto& [colors, cure] : cases) {
    for (const char* step : {"kernel=20", "enhancepage=median", "edgepage=sobel", "morph=open,1",
                             "morphologicalpage=clean", "whiten"}) {
      const auto image = ImageBuilder(8, 20, 20).Colors(colors);
      EXPECT_NE(FailureOf(step, Taken(image.Build())).find(cure), std::string::npos) << step;
    }
  }
}

// Noise on paper and ink: the threshold separates these two, wherever they lie.
TEST(Calls, OtsuPartsPaperFromInk) {
  for (const int shift : {0, 90, 160}) {
    for (const int bits : {8, 24}) {
      const auto pixel = [=](int x, int y) {
        const uint32_t noise = Noise(20, 3)(x, y);
        const uint32_t gray = noise + static_cast<uint32_t>(shift + (x % 8 == 3 ? 0 : 70));
        return bits == 8 ? gray : gray * 0x10101;
      };
      ImageBuilder builder(bits, 64, 48);
      Image image = Taken(builder.Pixels(pixel).Build());
      RunCall(ParseCall("binary"), image);
      const TestImage result(image.release());
      for (int x = 0; x < 64; ++x) {
        EXPECT_EQ(result.Pixel(x, 7), x % 8 == 3 ? 0u : 1u) << shift << ", " << x;
      }
    }
  }
}

// A menu offers each step under a title of its own, by a letter of its own.
TEST(Tables, TitlesAreWordsWithALetterOfTheirOwn) {
  std::set<std::string> titles, letters, families;
  const auto letter = [](const std::string& words) {
    const size_t mark = words.find('&');
    const bool letter = mark != std::string::npos && mark + 1 < words.size() &&
                        std::isalnum(static_cast<unsigned char>(words[mark + 1])) != 0;
    EXPECT_TRUE(letter && words.rfind('&') == mark) << words << ": one & before a letter";
    return letter ? Lowercase(words.substr(mark + 1, 1)) : "";
  };
  for (const Step* step : AllSteps()) {
    const std::string title = step->Title();
    EXPECT_TRUE(titles.insert(Lowercase(title)).second) << title << " is a title twice";
    EXPECT_TRUE(std::isupper(static_cast<unsigned char>(title[0]))) << title;
    EXPECT_FALSE(std::ispunct(static_cast<unsigned char>(title.back()))) << title;
    EXPECT_TRUE(letters.insert(step->family + letter(step->title)).second)
        << step->title << ": the letter is another one's in its menu";
    families.insert(step->family);
  }
  // File, Edit, View and Help are beside them.
  letters = {"f", "e", "v", "h"};
  for (const std::string& family : families) {
    EXPECT_TRUE(letters.insert(letter(family)).second) << family;
  }
}

std::vector<uint8_t> BytesOf(const PackedDib* dib) {
  const auto* rows = omb_FindDIBBits(dib);
  return {rows, rows + omb_DIBHeight(dib) * static_cast<size_t>(omb_BytesPerLine(dib))};
}

// Names for numbers, and arguments in the right places.
TEST(Tables, ArgumentsReachTheLibrary) {
  const auto kernal = [](uint32_t i) { return omb_getKERNAL(i); };
  const struct {
    const char* step;
    std::function<void(PackedDib*)> expected;
  } cases[] = {
      {"brightnesscontrast=20,40", [](auto* dib) { omb_brightnesscontrast(dib, 20, 40); }},
      {"brightnesscontrast=contrast=40,brightness=20",
       [](auto* dib) { omb_brightnesscontrast(dib, 20, 40); }},
      {"autolevel=.1,.8", [](auto* dib) { omb_autolevel(dib, .1, .8); }},
      {"filtercolor=green", [](auto* dib) { omb_filtercolor(dib, 2); }},
      {"adjustghms=50,-20,9", [](auto* dib) { omb_adjustghms(dib, 50, -20, 9); }},
      {"curve=0:0/64:48/255:250,green",
       [](auto* dib) {
         constexpr OmbPoint kPoints[] = {{0, 0}, {64, 48}, {255, 250}};
         omb_curve(dib, kPoints, 3, OMB_CHANNEL_GREEN);
       }},
      {"segmentoperation=9:255/200:3",
       [](auto* dib) {
         constexpr OmbPoint kPoints[] = {{9, 255}, {200, 3}};
         omb_segmentoperation(dib, kPoints, 2, OMB_CHANNEL_ALL);
       }},
      {"x1x2_changed=20,10,blue", [](auto* dib) { omb_x1x2_changed(dib, 20, 10, 3); }},
      {"coloroffset=1,2,3", [](auto* dib) { omb_adjustcolor(dib, 1, 1, 2, 3); }},
      {"colorgain=900,-4,5", [](auto* dib) { omb_adjustcolor(dib, 2, 900, -4, 5); }},
      {"hsi=7,8", [](auto* dib) { omb_adjustcolor(dib, 3, 7, 8, 0); }},
      {"hsl=9,-10,11", [](auto* dib) { omb_adjustcolor(dib, 4, 9, -10, 11); }},
      {"balance=50,-40,9", [](auto* dib) { omb_balance(dib, 50, -40, 9, 1, 1); }},
      {"balance=5,4,9,highlights,change", [](auto* dib) { omb_balance(dib, 5, 4, 9, 2, 0); }},
      {"convolute=8", [](auto* dib) { omb_convolute(dib, 8); }},
      {"convolute=Difference-Up", [](auto* dib) { omb_convolute(dib, 21); }},
      {"emboss=strong-down,#102030", [](auto* dib) { omb_emboss(dib, 19, 0x302010); }},
      {"kernel=unsharp-5X5", [&](auto* dib) { omb_DoConvoluteDIB(dib, kernal(36), 1, 10); }},
      {"kernel=Sculpt,2,7", [&](auto* dib) { omb_DoConvoluteDIB(dib, kernal(27), 2, 7); }},
      {"kernel=20,3", [&](auto* dib) { omb_DoConvoluteDIB(dib, kernal(20), 3, 10); }},
      {"morph=close,Circle 5x5,2",
       [&](auto* dib) { omb_DoKernalMorphDIB(dib, 24, 3, kernal(1), 2); }},
      {"diffuse=9,77", [](auto* dib) { omb_diffuse_seed(dib, 9, 77); }},
      {"granulate=7", [](auto* dib) { omb_granulate(dib, 7, 7); }},
      {"granulate=7,3", [](auto* dib) { omb_granulate(dib, 7, 3); }},
      {"enhancepage=gauss,7x7,2,5",
       [](auto* dib) { omb_EnhancePage(dib, 2, 2, 5, 0, 0, 2, 0, 0); }},
      {"enhancepage=higauss,9x9", [](auto* dib) { omb_EnhancePage(dib, 2, 1, 10, 0, 0, 3, 0, 0); }},
      {"enhancepage=median", [](auto* dib) { omb_EnhancePage(dib, 1, 1, 10, 0, 0, 7, 0, 0); }},
      {"enhancepage=rank,3x3,percentile=80",
       [](auto* dib) { omb_EnhancePage(dib, 0, 1, 10, 0, 80, 8, 0, 0); }},
      {"morphologicalpage=dark,5,column,2",
       [](auto* dib) { omb_MorphologicalPage(dib, 1, 3, 2, 6); }},
      {"whiten", [](auto* dib) { omb_EnhancePage(dib, 2, 100, 5, 16, 0, 4, 1, 2); }},
      {"stretch=20,7,60", [](auto* dib) { omb_EnhancePage(dib, 2, 60, 7, 20, 0, 4, 1, 1); }},
      {"equalize=image,0,50", [](auto* dib) { omb_EnhancePage(dib, 2, 50, 0, 0, 0, 4, 0, 0); }},
      {"logarithm=image,80", [](auto* dib) { omb_EnhancePage(dib, 2, 80, 0, 0, 0, 4, 0, 3); }},
      {"edgepage=roberts", [](auto* dib) { omb_EdgePage(dib, 0, 1, 10, 1); }},
      {"edgepage=vertical,7x7,1,4", [](auto* dib) { omb_EdgePage(dib, 2, 1, 4, 6); }},
  };
  for (const auto& c : cases) {
    Image image = Example(24), expected = Example(24);
    RunCall(ParseCall(c.step), image);
    c.expected(expected.get());
    EXPECT_NE(BytesOf(image.get()), BytesOf(Example(24).get())) << c.step << " does nothing";
    EXPECT_EQ(BytesOf(image.get()), BytesOf(expected.get())) << c.step;
  }
  for (const char* bits : {"4", "8"}) {
    Image image = Example(24);
    RunCall(ParseCall(std::string("dither=") + bits), image);
    EXPECT_EQ(std::to_string(omb_DIBBitCount(image.get())), bits);
  }
}

// On a light spot, gradients are bright where they climb in the direction that they are named
// after; relief is bright at the edge that is turned to the light.
TEST(Kernels, AreNamedAfterTheirDirection) {
  const auto spot = [](int x, int y) { return std::abs(x - 10) < 4 && std::abs(y - 10) < 4; };
  size_t directions = 0;
  for (const char* name : {"convolute", "emboss"}) {
    const bool relief = std::string(name) == "emboss";
    for (const Name& filter : FindStep(name)->parameters[0].names) {
      const std::string words = filter.name;
      const int x = words.ends_with("left") ? -1 : words.ends_with("right") ? 1 : 0;
      const int y = words.find("-up") != words.npos     ? -1
                    : words.find("-down") != words.npos ? 1
                                                        : 0;
      if ((x == 0 && y == 0) || words.starts_with("lines")) continue;
      ImageBuilder builder(24, 21, 21);
      builder.Pixels([&](int c, int r) { return spot(c, r) ? 0xA0A0A0u : 0x606060u; });
      Image result = Taken(builder.Build());
      RunCall(ParseCall(std::string(name) + "=" + words), result);
      const TestImage after(result.release());
      const auto edge = [&](int side) {  // the middle of an edge or corner, inside the spot
        return static_cast<int>(after.Pixel(10 + side * 3 * x, 10 + side * 3 * y) & 255);
      };
      // A difference to a neighbour climbs away from it.
      const bool towards = relief || words.starts_with("difference");
      EXPECT_GT(edge(towards ? 1 : -1), edge(towards ? -1 : 1)) << name << "=" << words;
      ++directions;
    }
  }
  EXPECT_EQ(directions, 48u);
}

TEST(Kernels, AreDrawnAsTheyLieOnThePicture) {
  const std::string wide = DrawKernels(100000), narrow = DrawKernels(1);
  // The upper row is the one that is stored later.
  ASSERT_EQ(omb_getKERNAL(12)->offsets[1] * omb_getKERNAL(12)->weights[0], -1);
  for (const char* part : {"4  Colomn 1x3\n   ■\n  [■]\n   ■\n  3 pixels\n",
                           "\n   -1  -2  -1\n    ·  [·]  ·\n    1   2   1\n  sum 0\n",
                           "\n    ·  [·]  ·\n    ·   ·   1\n  sum 0, then +128\n"}) {
    EXPECT_NE(narrow.find(part), std::string::npos) << part;
  }
  EXPECT_EQ(std::count(wide.begin(), wide.end(), '\n'), 1 + 11 + 1);
}

TEST(Calls, RectanglesAreCheckedAgainstTheImage) {
  Image image = Example(24);
  RunCall(ParseCall("crop=3,1,8,20"), image);
  RunCall(ParseCall("cpydibrect=1,2,4,5"), image);
  EXPECT_EQ(omb_DIBWidth(image.get()), 4u);
  EXPECT_EQ(omb_DIBHeight(image.get()), 5u);
  const uint8_t* top_left = omb_FindDIBBits(image.get()) + 4 * omb_BytesPerLine(image.get());
  const uint32_t expected = Noise(1u << 24, 7)(4, 3);
  EXPECT_EQ(top_left[0] | top_left[1] << 8 | top_left[2] << 16, static_cast<int>(expected));
  for (const char* outside :
       {"crop=0,0,4,4", "cpydibrect=0,2,4,4", "cpydibrect=2147483647,0,2147483647,1"}) {
    EXPECT_THROW(RunCall(ParseCall(outside), image), StepError) << outside;
    EXPECT_EQ(omb_DIBWidth(image.get()), 4u) << outside;
  }
}

TEST(Thumbnail, FitsTheBoxAndIsResizedAtEveryDepth) {
  for (const int bits : {1, 4, 8, 16, 24, 32}) {
    for (const auto& [w, h, box_w, box_h, new_w, new_h] :
         {std::array{9, 4, 9, 9, 9, 4}, {37, 25, 10, 10, 10, 7}, {50, 3, 7, 7, 7, 1}}) {
      ImageBuilder builder(bits, w, h);
      if (bits <= 8) builder.Colors(VariedColors(1 << bits, 3));
      const TestImage image = builder.Pixels(Noise(bits < 32 ? 1u << bits : 0xFFFFFFFF, 5)).Build();
      TestImage expected = image.Clone();
      ASSERT_EQ(omb_transformat(expected.ref()), 1u);
      ASSERT_EQ(
          omb_resize(expected.ref(), static_cast<uint32_t>(new_w), static_cast<uint32_t>(new_h), 4),
          1u);
      TestImage small(Thumbnail(image.get(), box_w, box_h).release());
      EXPECT_EQ(small.Bytes(), expected.Bytes()) << bits << " bits, " << w << " x " << h;
    }
  }
}

}  // namespace
}  // namespace omb
