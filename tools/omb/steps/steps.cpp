#include "steps/steps.h"

#include <algorithm>
#include <numeric>
#include <sstream>

#include "errors.h"

namespace omb {

namespace {

std::vector<std::string> SplitAtCommas(const std::string& text) {
  std::vector<std::string> parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, ',');) parts.push_back(part);
  if (!text.empty() && text.back() == ',') parts.emplace_back();
  return parts;
}

// The text in lines of a usual terminal, after `indent` columns.
std::string Wrapped(const std::string& text, size_t indent) {
  constexpr size_t kColumns = 80;
  std::string lines;
  size_t column = indent;
  std::istringstream in(text);
  for (std::string word; in >> word;) {
    if (!lines.empty() && column + 1 + word.size() > kColumns) {
      lines += "\n" + std::string(indent, ' ');
      column = indent;
    } else if (!lines.empty()) {
      lines += ' ';
      ++column;
    }
    lines += word;
    column += word.size();
  }
  return lines;
}

std::string WithoutMark(std::string words) {
  std::erase(words, '&');
  return words;
}

[[noreturn]] void Fail(const Step& step, const std::string& reason) {
  throw UsageError(std::string(step.name) + ": " + reason, step.Help());
}

Arguments ParseArguments(const Step& step, const std::vector<std::string>& texts) {
  const size_t count = step.parameters.size();
  if (texts.size() > count) {
    Fail(step, count == 0 ? "takes no arguments"
                          : "takes no more than " + std::to_string(count) +
                                (count == 1 ? " argument" : " arguments"));
  }
  std::vector<Value> values;
  for (size_t i = 0; i < count; ++i) {
    const Parameter& parameter = step.parameters[i];
    const bool given = i < texts.size() && !texts[i].empty();
    if (!given && !parameter.preset) {
      Fail(step, "'" + std::string(parameter.name) + "' is missing");
    }
    const std::string& text = given ? texts[i] : *parameter.preset;
    const auto value = parameter.Parse(text);
    if (!value) {
      Fail(step, "'" + std::string(parameter.name) + "' must be " + parameter.Form() + ", not '" +
                     text + "'");
    }
    values.push_back(*value);
  }
  Arguments arguments(std::move(values));
  const char* conflict = step.conflict == nullptr ? nullptr : step.conflict(arguments);
  if (conflict != nullptr) Fail(step, conflict);
  return arguments;
}

// How many letters must be added, taken away or replaced to make one word of the other.
size_t Distance(const std::string& from, const std::string& to) {
  std::vector<size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < from.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t k = 0; k < to.size(); ++k) {
      const size_t replaced = diagonal + (from[i] == to[k] ? 0 : 1);
      diagonal = row[k + 1];
      row[k + 1] = std::min({replaced, row[k] + 1, diagonal + 1});
    }
  }
  return row.back();
}

std::string DepthReason(const Step& step, int bits) {
  std::string reason = (bits == 8 ? "not possible on an " : "not possible on a ") +
                       std::to_string(bits) + "-bit image (works on " + step.DepthList() + " bits)";
  const bool high_color = bits == 16 || bits == 32;
  if (high_color && step.TakesDepth(24)) {
    reason += "; try transformat first";
  } else if (step.before != nullptr) {
    reason += "; try " + std::string(step.before) + " first";
  }
  return reason;
}

}  // namespace

std::string Step::Title() const { return WithoutMark(title); }

std::string Step::Family() const { return WithoutMark(family); }

std::string Step::Usage() const {
  std::string usage = name;
  bool optional = false;
  for (size_t i = 0; i < parameters.size(); ++i) {
    if (parameters[i].preset && !optional) {
      usage += '[';
      optional = true;
    }
    usage += i == 0 ? '=' : ',';
    usage += parameters[i].name;
  }
  return usage + (optional ? "]" : "");
}

std::string Step::Help() const {
  std::string help = "usage: " + Usage() + "\n";
  size_t width = 0;
  for (const Parameter& p : parameters) width = std::max(width, std::string(p.name).size());
  for (const Parameter& p : parameters) {
    std::string name = p.name;
    name.resize(width, ' ');
    std::string text = p.help + (": " + p.Form());
    if (p.preset) text += " (" + *p.preset + " if left out)";
    help += "  " + name + "  " + Wrapped(text, width + 4) + "\n";
  }
  if (note != nullptr) help += Wrapped(note, 0) + "\n";
  return help;
}

std::string Step::DepthList() const {
  std::string list;
  for (size_t i = 0; i < depths.size(); ++i) {
    if (i > 0) list += i + 1 < depths.size() ? ", " : " and ";
    list += std::to_string(depths[i]);
  }
  return list;
}

bool Step::TakesDepth(int bits) const {
  return std::find(depths.begin(), depths.end(), bits) != depths.end();
}

bool Step::IsFine() const {
  for (const auto family : {FilterSteps(), MorphologySteps(), PageSteps()}) {
    if (this >= family.data() && this < family.data() + family.size()) return true;
  }
  return false;
}

std::vector<std::string> Step::ExampleCalls(const PackedDib* dib) const {
  if (!examples) return {name};
  std::vector<std::string> calls;
  for (const std::string& arguments : examples(dib)) {
    calls.push_back(name + ("=" + arguments));
  }
  return calls;
}

std::vector<const Step*> AllSteps() {
  std::vector<const Step*> steps;
  for (const auto family : {ImageSteps(), ToneSteps(), GeometrySteps(), FilterSteps(),
                            MorphologySteps(), PageSteps(), QuantizeSteps()}) {
    for (const Step& step : family) steps.push_back(&step);
  }
  return steps;
}

const Step* FindStep(const std::string& name) {
  for (const Step* step : AllSteps()) {
    if (step->name == Lowercase(name)) return step;
  }
  return nullptr;
}

const Step& StepNamed(const std::string& name) {
  if (const Step* step = FindStep(name)) return *step;
  std::string meant;
  for (const Step* step : AllSteps()) {
    const std::string candidate = step->name;
    const std::string typed = Lowercase(name);
    const bool contained = typed.size() > 2 && candidate.find(typed) != std::string::npos;
    if (contained || Distance(typed, candidate) <= candidate.size() / 4) {
      meant += (meant.empty() ? "; there is " : ", ") + candidate;
    }
  }
  throw UsageError("there is no step '" + name + "'" + meant,
                   "'omb list' shows the steps there are\n");
}

Call ParseCall(const std::string& text) {
  const size_t equals = text.find('=');
  const Step* step = &StepNamed(text.substr(0, equals));
  const std::string arguments = equals == std::string::npos ? "" : text.substr(equals + 1);
  return {step, ParseArguments(*step, SplitAtCommas(arguments))};
}

std::vector<Call> ParseCalls(const std::vector<std::string>& texts) {
  std::vector<Call> calls;
  for (const std::string& text : texts) calls.push_back(ParseCall(text));
  return calls;
}

void RunCall(const Call& call, Image& image) {
  const int bits = omb_DIBBitCount(image.get());
  if (!call.step->TakesDepth(bits)) throw StepError(DepthReason(*call.step, bits));
  if (call.step->run(image, call.arguments)) return;
  throw StepError("the library refused this image of " + std::to_string(omb_DIBWidth(image.get())) +
                  " x " + std::to_string(omb_DIBHeight(image.get())) + " pixels and " +
                  std::to_string(bits) + " bits: the arguments do not suit it, or memory ran out");
}

}  // namespace omb
