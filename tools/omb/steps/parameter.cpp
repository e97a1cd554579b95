#include "steps/parameter.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <sstream>

#include "text.h"

namespace omb {

namespace {

// The number that the whole text is. A plus sign is welcome: brightness +20.
template <class Number, class... Base>
std::optional<Number> NumberOf(const std::string& text, Base... base) {
  const char* first = text.data();
  const char* last = first + text.size();
  if (text.size() > 1 && *first == '+' && first[1] != '-') ++first;
  Number number{};
  const auto [end, error] = std::from_chars(first, last, number, base...);
  if (error != std::errc() || end != last) return {};
  return number;
}

std::optional<double> ColorOf(const std::string& text) {
  if (text.size() != 7 || text[0] != '#' || text[1] == '+' || text[1] == '-') return {};
  const auto rgb = NumberOf<uint32_t>(text.substr(1), 16);
  if (!rgb) return {};
  return (*rgb & 0xFF) << 16 | (*rgb & 0xFF00) | *rgb >> 16;
}

std::string ListOf(const std::vector<Name>& names) {
  std::string list;
  for (size_t i = 0; i < names.size(); ++i) {
    if (i > 0) list += i + 1 < names.size() ? ", " : " or ";
    list += names[i].name;
  }
  return list;
}

}  // namespace

Parameter Parameter::Preset(const char* text) && {
  preset = text;
  return std::move(*this);
}

Parameter Parameter::Named(std::vector<Name> values) && {
  names = std::move(values);
  return std::move(*this);
}

Parameter Parameter::Usual(double from, double to) && {
  usual = {from, to};
  return std::move(*this);
}

std::string Parameter::Form() const {
  if (kind == Kind::kChoice) return ListOf(names);
  if (kind == Kind::kColor) return "a color such as #c08040 (red, green, blue)";
  if (kind == Kind::kText) return form;
  std::ostringstream out;
  out.precision(10);  // enough for every whole number of 32 bits
  out << (kind == Kind::kWhole ? "a whole number from " : "a number from ") << minimum;
  if (kind == Kind::kWhole && maximum == kAnyWhole) {
    out << " up";
  } else {
    out << " to " << maximum;
  }
  if (!names.empty()) out << ", or " << ListOf(names);
  return out.str();
}

std::optional<Value> Parameter::Parse(const std::string& text) const {
  if (kind == Kind::kText) {
    if (text.empty() || (fits != nullptr && !fits(text))) return {};
    return Value{text};
  }
  const auto named = std::find_if(names.begin(), names.end(), [&](const Name& name) {
    return Lowercase(name.name) == Lowercase(text);
  });
  if (named != names.end()) return Value{text, named->value};

  std::optional<double> number;
  if (kind == Kind::kColor) number = ColorOf(text);
  if (kind == Kind::kWhole) number = NumberOf<int64_t>(text);
  if (kind == Kind::kReal) number = NumberOf<double>(text);
  if (!number) return {};
  const bool limited = kind != Kind::kColor;
  // Written so that a NaN is refused too.
  if (limited && !(*number >= minimum && *number <= maximum)) return {};
  return Value{text, *number};
}

Parameter Whole(const char* name, const char* help, double minimum, double maximum) {
  return {Parameter::Kind::kWhole, name, help, minimum, maximum};
}

Parameter Real(const char* name, const char* help, double minimum, double maximum) {
  return {Parameter::Kind::kReal, name, help, minimum, maximum};
}

Parameter Choice(const char* name, const char* help, std::vector<Name> values) {
  return Parameter{Parameter::Kind::kChoice, name, help}.Named(std::move(values));
}

Parameter Color(const char* name, const char* help) {
  return {Parameter::Kind::kColor, name, help};
}

Parameter Text(const char* name, const char* help, const char* form,
               bool (*fits)(const std::string&)) {
  Parameter parameter{Parameter::Kind::kText, name, help};
  parameter.form = form;
  parameter.fits = fits;
  return parameter;
}

}  // namespace omb
