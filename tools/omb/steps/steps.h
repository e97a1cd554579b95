// The steps that the host offers: one for each operation of the library, with what a person needs
// to know about it. Each family of operations has a file here with its table.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "image.h"
#include "steps/parameter.h"

namespace omb {

struct Step {
  const char* name;         // the export's name without omb_
  const char* family;       // "Whole images", "Tone and color"
  const char* summary;      // one line
  std::vector<int> depths;  // bits per pixel that the step is for; it is not tried on others
  std::vector<Parameter> parameters;
  // Arguments that show the step well on an image, for the gallery: "10,10,200,300". Left out where
  // the step needs none.
  std::function<std::string(const PackedDib*)> example;
  // Runs the step. False when the library refused; throws StepError where the reason is known. The
  // image is unchanged then.
  bool (*run)(Image& image, const Arguments& arguments);
  // A step without arguments that brings images to where this one takes them, for the gallery.
  const char* before = nullptr;

  // "crop=left,top,right,bottom"; arguments that can be left out stand in brackets.
  std::string Usage() const;
  // The usage, and a line on each parameter.
  std::string Help() const;
  // "1, 4, 8 and 24".
  std::string DepthList() const;
  bool TakesDepth(int bits) const;
};

// For steps whose example does not depend on the image.
inline std::function<std::string(const PackedDib*)> Always(const char* arguments) {
  return [=](const PackedDib*) { return std::string(arguments); };
}

// For steps that replace the image: [&](PackedDib** dib) { return omb_crop(dib, &rectangle); }
template <class Operation>
bool Replace(Image& image, Operation operation) {
  PackedDib* dib = image.release();
  const bool done = operation(&dib) != 0;
  image.reset(dib);
  return done;
}

// The families' tables.
std::span<const Step> ImageSteps();
std::span<const Step> ToneSteps();
std::span<const Step> GeometrySteps();

// All steps, in the order in which they are listed.
std::vector<const Step*> AllSteps();
const Step* FindStep(const std::string& name);  // null when there is none

// A step with its arguments: "crop=10,10,200,300" understood.
struct Call {
  const Step* step;
  Arguments arguments;
};

// Throws UsageError.
Call ParseCall(const std::string& text);
std::vector<Call> ParseCalls(const std::vector<std::string>& texts);

// Runs a step. Throws StepError, the image being unchanged then.
void RunCall(const Call& call, Image& image);

}  // namespace omb
