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
  const char* name;  // the export's name without omb_
  // What menus call it, and the menu that it is in: "&Brightness and contrast", "&Color". The
  // letter behind & chooses it in its menu.
  const char* title;
  const char* family;
  const char* summary;      // one line
  std::vector<int> depths;  // bits per pixel that the step is for; it is not tried on others
  std::vector<Parameter> parameters;
  // Arguments that show the step well on an image, for the gallery: "10,10,200,300". One picture
  // for each; left out where the step takes none.
  std::function<std::vector<std::string>(const PackedDib*)> examples;
  // Runs the step. False when the library refused; throws StepError where the reason is known. The
  // image is unchanged then.
  bool (*run)(Image& image, const Arguments& arguments);
  // The step that makes images fit for this one: "gray". For hints and the gallery.
  const char* before = nullptr;
  // Why arguments that are right one by one do not go together; null when they do.
  const char* (*conflict)(const Arguments& arguments) = nullptr;
  // What else a person should know; null when nothing.
  const char* note = nullptr;

  // The title and the family without the &.
  std::string Title() const;
  std::string Family() const;
  // "crop=left,top,right,bottom"; from the bracket on, arguments can be left out.
  std::string Usage() const;
  // The usage, and a line on each parameter.
  std::string Help() const;
  // "1, 4, 8 and 24".
  std::string DepthList() const;
  bool TakesDepth(int bits) const;
  // Whether what the step does is too fine for a reduced picture.
  bool IsFine() const;
  // The step as it is written with each of its examples: "crop=10,10,200,300". At least one.
  std::vector<std::string> ExampleCalls(const PackedDib* dib) const;
};

// The note of steps that take the bytes of 8-bit images as values.
inline constexpr const char* kGrayAtEightBits =
    "8-bit images must be gray, with levels from black to white: the bytes are filtered, not "
    "colors. "
    "Bring others to 24 bits with truecolor first.";

// For steps whose examples do not depend on the image.
inline std::function<std::vector<std::string>(const PackedDib*)> Always(
    std::vector<std::string> arguments) {
  return [=](const PackedDib*) { return arguments; };
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
std::span<const Step> FilterSteps();
std::span<const Step> MorphologySteps();
std::span<const Step> PageSteps();
std::span<const Step> QuantizeSteps();

// All steps, in the order in which they are listed.
std::vector<const Step*> AllSteps();
// Whatever the case; null when there is none.
const Step* FindStep(const std::string& name);
// Throws UsageError, with names that may have been meant, when there is none.
const Step& StepNamed(const std::string& name);

// A step with its arguments: "crop=10,10,200,300" understood.
struct Call {
  const Step* step;
  Arguments arguments;
};

// Throws UsageError.
Call ParseCall(const std::string& text);
// A word that is not a step belongs to the one before it if the two make sense: arguments may have
// blanks ("kernel=unsharp 5x5" that a shell took apart).
std::vector<Call> ParseCalls(const std::vector<std::string>& texts);

// Runs a step; images of 16 and 32 bits are brought to 24 if it is not for these depths. Throws
// StepError, the image being unchanged then.
void RunCall(const Call& call, Image& image);

}  // namespace omb
