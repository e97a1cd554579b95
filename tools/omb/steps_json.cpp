#include "steps_json.h"

#include <nlohmann/json.hpp>

#include "text.h"

namespace omb {

namespace {

using Json = nlohmann::ordered_json;

const char* TypeOf(const Parameter& parameter) {
  switch (parameter.kind) {
    case Parameter::Kind::kWhole:
      return "integer";
    case Parameter::Kind::kReal:
      return "number";
    case Parameter::Kind::kChoice:
      return "choice";
    case Parameter::Kind::kColor:
      return "color";
    default:
      return "text";
  }
}

// A number if the parameter takes numbers and the text is not one of its names.
Json ValueOf(const Parameter& parameter, const std::string& text) {
  const bool whole = parameter.kind == Parameter::Kind::kWhole;
  if (!whole && parameter.kind != Parameter::Kind::kReal) return text;
  for (const Name& name : parameter.names) {
    if (text == name.name) return text;
  }
  const double number = parameter.Parse(text).value().number;
  return whole ? Json(static_cast<int64_t>(number)) : Json(number);
}

Json JsonOf(const Parameter& parameter) {
  Json json = {{"name", parameter.name}, {"help", parameter.help}, {"type", TypeOf(parameter)}};
  const bool whole = parameter.kind == Parameter::Kind::kWhole;
  if (whole || parameter.kind == Parameter::Kind::kReal) {
    json["minimum"] =
        whole ? Json(static_cast<int64_t>(parameter.minimum)) : Json(parameter.minimum);
    json["maximum"] =
        whole ? Json(static_cast<int64_t>(parameter.maximum)) : Json(parameter.maximum);
    if (parameter.usual) json["usual"] = {parameter.usual->minimum, parameter.usual->maximum};
  }
  if (!parameter.names.empty()) {
    json["values"] = Json::array();
    for (const Name& name : parameter.names) {
      json["values"].push_back({{"name", name.name}, {"value", static_cast<int64_t>(name.value)}});
    }
  }
  json["form"] = parameter.Form();
  if (parameter.preset) json["default"] = ValueOf(parameter, *parameter.preset);
  return json;
}

Json JsonOf(const Step& step, const PackedDib* example) {
  Json json = {{"name", step.name},       {"title", step.Title()}, {"family", step.Family()},
               {"summary", step.summary}, {"usage", step.Usage()}, {"depths", step.depths}};
  if (step.note != nullptr) json["note"] = step.note;
  if (step.before != nullptr) json["before"] = step.before;
  json["parameters"] = Json::array();
  for (const Parameter& parameter : step.parameters)
    json["parameters"].push_back(JsonOf(parameter));
  json["examples"] = step.ExampleCalls(example);
  return json;
}

}  // namespace

std::string StepsJson(const std::vector<const Step*>& steps) {
  const Image example(omb_newdib(640, 480, 24));
  if (!example) throw std::bad_alloc();
  Json json = {{"version", VersionText()}, {"steps", Json::array()}};
  for (const Step* step : steps) json["steps"].push_back(JsonOf(*step, example.get()));
  return json.dump(2);
}

}  // namespace omb
