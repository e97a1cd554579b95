// One argument of a step: what a person may write for it, and the value that this means.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace omb {

// A named value: "red" for 1.
struct Name {
  const char* name;
  double value;
};

inline constexpr double kAnyWhole = std::numeric_limits<int32_t>::max();

struct Range {
  double minimum, maximum;
};

// The value of an argument: its text, and the number that it means unless it is a text.
struct Value {
  std::string text;
  double number = 0;
};

// Tables write parameters with the functions below: Whole("amount", "how much", 0,
// 255).Preset("9").
struct Parameter {
  enum class Kind { kWhole, kReal, kChoice, kColor, kText };

  Kind kind;
  const char* name;
  const char* help;  // with the unit: "pixels from the left edge"
  double minimum = 0;
  double maximum = 0;
  std::vector<Name> names = {};                // all values of a choice; other names of numbers
  const char* form = "";                       // what a text must be: "a size such as 800x600"
  bool (*fits)(const std::string&) = nullptr;  // whether a text has this form; null: any has
  std::optional<std::string> preset = {};      // taken when the argument is left out
  std::optional<Range> usual = {};             // what a slider offers; none: the whole range

  // Makes the argument one that can be left out.
  Parameter Preset(const char* text) &&;
  // Gives some of the numbers a name: {{"auto", -1}}.
  Parameter Named(std::vector<Name> values) &&;

  // Narrows the range of a slider to what people use.
  Parameter Usual(double from, double to) &&;

  // What the argument must be: "a whole number from 0 to 255 or auto".
  std::string Form() const;
  // The value of a text; none when it does not have the form.
  std::optional<Value> Parse(const std::string& text) const;
};

Parameter Whole(const char* name, const char* help, double minimum, double maximum = kAnyWhole);
Parameter Real(const char* name, const char* help, double minimum, double maximum);
Parameter Choice(const char* name, const char* help, std::vector<Name> values);
Parameter Color(const char* name, const char* help);
// A text without commas that only the step interprets.
Parameter Text(const char* name, const char* help, const char* form,
               bool (*fits)(const std::string&) = nullptr);

// The arguments of one call, one for each parameter, checked against them.
class Arguments {
 public:
  explicit Arguments(std::vector<Value> values) : values_(std::move(values)) {}
  int32_t Integer(size_t i) const { return static_cast<int32_t>(values_[i].number); }
  uint32_t Unsigned(size_t i) const { return static_cast<uint32_t>(values_[i].number); }
  double Real(size_t i) const { return values_[i].number; }
  // 0x00BBGGRR, as the library takes colors.
  uint32_t Color(size_t i) const { return static_cast<uint32_t>(values_[i].number); }
  const std::string& Text(size_t i) const { return values_[i].text; }

 private:
  std::vector<Value> values_;
};

}  // namespace omb
