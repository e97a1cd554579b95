#include "steps/steps.h"

#include <algorithm>
#include <numeric>
#include <optional>
#include <sstream>
#include <utility>

#include "errors.h"
#include "files/pixels_out.h"
#include "text.h"

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

// The texts at their parameters' places; none where one is left out. "name=value" may stand for any
// parameter, in any order.
std::vector<std::optional<std::string>> ArrangeArguments(const Step& step,
                                                         const std::vector<std::string>& texts) {
  const size_t count = step.parameters.size();
  std::vector<std::optional<std::string>> arranged(count);
  size_t next = 0;
  for (const std::string& text : texts) {
    const size_t equals = text.find('=');
    size_t place = next++;
    if (equals != std::string::npos) {
      const std::string name = Lowercase(text.substr(0, equals));
      const auto named = std::ranges::find_if(
          step.parameters, [&](const Parameter& p) { return Lowercase(p.name) == name; });
      if (named == step.parameters.end()) Fail(step, "there is no parameter '" + name + "'");
      place = static_cast<size_t>(named - step.parameters.begin());
      if (arranged[place]) Fail(step, "'" + name + "' is given twice");
    }
    if (place >= count) {
      Fail(step, count == 0 ? "takes no arguments"
                            : "takes no more than " + std::to_string(count) +
                                  (count == 1 ? " argument" : " arguments"));
    }
    const std::string value = equals == std::string::npos ? text : text.substr(equals + 1);
    if (!value.empty()) arranged[place] = value;
  }
  return arranged;
}

Arguments ParseArguments(const Step& step, const std::vector<std::string>& texts) {
  const std::vector<std::optional<std::string>> arranged = ArrangeArguments(step, texts);
  std::vector<Value> values;
  for (size_t i = 0; i < step.parameters.size(); ++i) {
    const Parameter& parameter = step.parameters[i];
    const std::optional<std::string>& text = arranged[i] ? arranged[i] : parameter.preset;
    if (!text) Fail(step, "'" + std::string(parameter.name) + "' is missing");
    const auto value = parameter.Parse(*text);
    if (!value) {
      Fail(step, "'" + std::string(parameter.name) + "' must be " + parameter.Form() + ", not '" +
                     *text + "'");
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

// What people who know other programs type.
constexpr std::pair<const char*, const char*> kOtherWords[] = {
    {"resample", "resize"},
    {"thumbnail", "resize"},
    {"shrink", "resize"},
    {"threshold", "binary"},
    {"otsu", "binary"},
    {"bilevel", "binary"},
    {"monochrome", "binary"},
    {"sharpen", "'kernel=unsharp 5x5' or enhancepage=unsharp"},
    {"unsharp", "'kernel=unsharp 5x5' or enhancepage=unsharp"},
    {"blur", "enhancepage=gauss"},
    {"smooth", "enhancepage=gauss"},
    {"gaussian", "enhancepage=gauss"},
    {"median", "enhancepage=median or medianblur"},
    {"despeckle", "enhancepage=median or denoise"},
    {"grayscale", "gray"},
    {"greyscale", "gray"},
    {"grey", "gray"},
    {"desaturate", "gray"},
    {"negate", "invert"},
    {"negative", "invert"},
    {"flip", "flipvert"},
    {"flop", "fliphor"},
    {"mirror", "fliphor"},
    {"brightness", "brightnesscontrast"},
    {"contrast", "brightnesscontrast or autocontrast"},
    {"gamma", "gammacorrection"},
    {"levels", "autolevel"},
    {"normalize", "autocontrast"},
    {"quantize", "neuquant"},
    {"colors", "neuquant"},
    {"edge", "sobel or edgepage"},
    {"edges", "sobel or edgepage"},
    {"extract", "crop"},
    {"trim", "crop"},
    {"sepia", "pseudocolor=sepia"},
    {"rgb", "truecolor"},
};

std::string DepthReason(const Step& step, int bits) {
  std::string reason = (bits == 8 ? "not possible on an " : "not possible on a ") +
                       std::to_string(bits) + "-bit image (works on " + step.DepthList() + " bits)";
  if (step.before != nullptr) {
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
  const std::string typed = Lowercase(name);
  std::string meant;
  for (const auto& [word, here] : kOtherWords) {
    if (typed == word) meant = std::string("; that is ") + here + " here";
  }
  for (const Step* step : AllSteps()) {
    if (meant.starts_with("; that")) break;
    const std::string candidate = step->name;
    const bool begun = typed.size() > 1 && candidate.starts_with(typed);
    const bool contained = typed.size() > 2 && candidate.find(typed) != std::string::npos;
    if (begun || contained || Distance(typed, candidate) <= candidate.size() / 4) {
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

namespace {

bool NamesStep(const std::string& text) {
  return FindStep(text.substr(0, text.find('='))) != nullptr;
}

}  // namespace

std::vector<Call> ParseCalls(const std::vector<std::string>& texts) {
  std::vector<Call> calls;
  for (size_t i = 0; i < texts.size();) {
    const std::string& head = texts[i];
    std::string whole = head;
    size_t next = i + 1;
    while (whole.find('=') != std::string::npos && next < texts.size() && !NamesStep(texts[next])) {
      whole += " " + texts[next++];
    }
    try {
      calls.push_back(ParseCall(whole));
    } catch (const UsageError&) {
      if (next == i + 1) throw;
      try {
        ParseCall(head);
      } catch (const UsageError&) {
        next = i;
      }
      if (next == i) throw;
      StepNamed(texts[i + 1]);  // throws: the head is complete without it
    }
    i = next;
  }
  return calls;
}

namespace {

void RunStep(const Call& call, Image& image) {
  const int bits = omb_DIBBitCount(image.get());
  if (!call.step->TakesDepth(bits)) throw StepError(DepthReason(*call.step, bits));
  if (call.step->run(image, call.arguments)) return;
  throw StepError("the library refused this image of " + std::to_string(omb_DIBWidth(image.get())) +
                  " x " + std::to_string(omb_DIBHeight(image.get())) + " pixels and " +
                  std::to_string(bits) + " bits: the arguments do not suit it, or memory ran out");
}

}  // namespace

void RunCall(const Call& call, Image& image) {
  const int bits = omb_DIBBitCount(image.get());
  const bool direct = bits == 16 || bits == 32;
  if (!direct || call.step->TakesDepth(bits)) return RunStep(call, image);
  Image wide;
  try {
    wide = TrueColor(image.get());
  } catch (const FileError& error) {
    throw StepError(error.what());
  }
  RunStep(call, wide);
  image = std::move(wide);
}

}  // namespace omb
