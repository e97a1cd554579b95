// The steps that the host offers: one for each operation of the library, with what a person needs
// to know about it. Each family of operations has a file here with its table.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "image.h"

namespace omb {

// A named value: "red" for 1.
struct Name {
  const char* name;
  double value;
};

// One argument of a step.
struct Parameter {
  const char* name;
  const char* help;  // with the unit: "pixels from the left edge"
  double minimum;
  double maximum;
  bool integer = true;
  const char* preset = nullptr;  // taken when the argument is left out; null: it must be given
  std::vector<Name> names = {};  // values that also have a name
};

// The arguments of one call, parsed and checked against the parameters.
class Arguments {
 public:
  explicit Arguments(std::vector<double> values) : values_(std::move(values)) {}
  int32_t Integer(size_t i) const { return static_cast<int32_t>(values_[i]); }
  uint32_t Unsigned(size_t i) const {
    return static_cast<uint32_t>(static_cast<int64_t>(values_[i]));
  }
  double Real(size_t i) const { return values_[i]; }

 private:
  std::vector<double> values_;
};

struct Step {
  const char* name;     // the export's name without omb_
  const char* family;   // "Whole images", "Tone and color"
  const char* summary;  // one line
  const char* depths;   // "1, 4, 8, 24"
  std::vector<Parameter> parameters;
  // Arguments that show the step well on the image, for the gallery: "10,10,200,300". Empty where
  // it has none to give.
  std::string (*example)(const PackedDib* dib);
  // Runs the step; false when the library refused.
  bool (*run)(Image& image, const Arguments& arguments);
};

// The families' tables.
std::span<const Step> ImageSteps();

// All steps, in the order in which they are listed.
std::vector<const Step*> AllSteps();
const Step* FindStep(const std::string& name);  // null when there is none

}  // namespace omb
