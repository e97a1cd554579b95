// Arguments of steps, and the tables of all steps.
#include "steps/steps.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

#include "errors.h"
#include "support/image.h"

namespace omb {
namespace {

struct ParseCase {
  Parameter parameter;
  const char* text;
  std::optional<double> number;
};

TEST(Parameters, TakeWhatTheyDescribeAndNothingElse) {
  const auto whole = [] { return Whole("n", "", -5, 255).Named({{"auto", -1}}); };
  const auto real = [] { return Real("x", "", 0.5, 10); };
  const auto channel = [] { return Choice("c", "", {{"red", 1}, {"blue", 3}}); };
  const auto color = [] { return Color("c", ""); };
  const ParseCase cases[] = {
      {whole(), "0", 0},
      {whole(), "255", 255},
      {whole(), "+7", 7},
      {whole(), "-5", -5},
      {whole(), "Auto", -1},
      {whole(), "256", {}},
      {whole(), "-6", {}},
      {whole(), "1.5", {}},
      {whole(), "1e2", {}},
      {whole(), "3 ", {}},
      {whole(), " 3", {}},
      {whole(), "+-3", {}},
      {whole(), "0x10", {}},
      {whole(), "99999999999999999999", {}},
      {Whole("n", "", 0), "2147483647", 2147483647.0},
      {Whole("n", "", 0), "2147483648", {}},
      {real(), "2.25", 2.25},
      {real(), "1e1", 10},
      {real(), "nan", {}},
      {real(), "inf", {}},
      {real(), "0.49", {}},
      {real(), "2,5", {}},
      {channel(), "RED", 1},
      {channel(), "blue", 3},
      {channel(), "1", {}},
      {channel(), "re", {}},
      {color(), "#0102fe", 0xFE0201},
      {color(), "#FFFFFF", 0xFFFFFF},
      {color(), "0102fe", {}},
      {color(), "#12345", {}},
      {color(), "#12345g", {}},
      {color(), "#-12345", {}},
  };
  for (const ParseCase& c : cases) {
    const auto value = c.parameter.Parse(c.text);
    ASSERT_EQ(value.has_value(), c.number.has_value()) << c.parameter.Form() << " <- " << c.text;
    EXPECT_EQ(value.value_or(Value{}).number, c.number.value_or(0)) << c.text;
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
      {"", "there is no step ''"},
      {"invert=1", "invert: takes no arguments"},
      {"crop=1,2,3", "crop: 'bottom' is missing"},
      {"crop=1,,3,4", "crop: 'top' is missing"},
      {"crop=1,2,3,4,5", "crop: takes no more than 4 arguments"},
      {"crop=1,2,3,4,", "crop: takes no more than 4 arguments"},
      {"crop=x,2,3,4", "crop: 'left' must be a whole number from 0 up, not 'x'"},
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
  EXPECT_EQ(FindStep("crop")->Usage(), "crop=left,top,right,bottom");
  const Step optional = {"s", "", "", {24}, {Whole("a", "", 0), Whole("b", "", 0).Preset("2")},
                         {},  {}};
  EXPECT_EQ(optional.Usage(), "s=a[,b]");
}

Image Example(int bits) {
  using ombrilo::test::ImageBuilder;
  using ombrilo::test::Noise;
  ombrilo::test::TestImage image =
      ImageBuilder(bits, 64, 48).Pixels(Noise(bits < 24 ? 1u << bits : 1u << 24, 7)).Build();
  return Image(std::exchange(*image.ref(), nullptr));
}

TEST(Tables, ExamplesRunAtEveryDepthTheyPromise) {
  std::set<std::string> names;
  for (const Step* step : AllSteps()) {
    EXPECT_TRUE(names.insert(step->name).second) << step->name << " stands in two tables";
    EXPECT_FALSE(step->depths.empty()) << step->name;
    for (const Parameter& parameter : step->parameters) {
      EXPECT_TRUE(!parameter.preset || parameter.Parse(*parameter.preset)) << parameter.name;
    }
    for (const int bits : {1, 4, 8, 16, 24, 32}) {
      Image image = Example(bits);
      const std::string arguments = step->example ? step->example(image.get()) : "";
      const Call call = ParseCall(step->name + (arguments.empty() ? "" : "=" + arguments));
      if (step->TakesDepth(bits)) {
        EXPECT_NO_THROW(RunCall(call, image)) << step->name << " at " << bits << " bits";
      } else {
        EXPECT_THROW(RunCall(call, image), StepError) << step->name << " at " << bits << " bits";
      }
      EXPECT_NE(image, nullptr);
    }
  }
}

TEST(ImageSteps, PassTheirArgumentsInOrder) {
  Image image = Example(24);
  RunCall(ParseCall("crop=3,1,8,20"), image);
  EXPECT_EQ(omb_DIBWidth(image.get()), 6u);
  EXPECT_EQ(omb_DIBHeight(image.get()), 20u);
  const uint8_t* top_left = omb_FindDIBBits(image.get()) + 19 * omb_BytesPerLine(image.get());
  const uint32_t expected = ombrilo::test::Noise(1u << 24, 7)(3, 1);
  EXPECT_EQ(top_left[0] | top_left[1] << 8 | top_left[2] << 16, static_cast<int>(expected));
  RunCall(ParseCall("cpydibrect=1,2,4,5"), image);
  EXPECT_EQ(omb_DIBWidth(image.get()), 4u);
  EXPECT_EQ(omb_DIBHeight(image.get()), 5u);
  for (const char* outside : {"crop=0,0,4,4", "crop=2,0,1,4", "cpydibrect=0,2,4,4",
                              "cpydibrect=2147483647,0,2147483647,1"}) {
    EXPECT_THROW(RunCall(ParseCall(outside), image), StepError) << outside;
    EXPECT_EQ(omb_DIBWidth(image.get()), 4u) << outside;
  }
}

}  // namespace
}  // namespace omb
