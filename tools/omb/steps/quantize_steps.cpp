// Steps to fewer colors.
#include "steps/steps.h"

namespace omb {

namespace {

bool NeuquantStep(Image& image, const Arguments& arguments) {
  const int32_t bits = arguments.Integer(0);
  // The library refuses the depth that an image has; to a person it is simply reached.
  if (omb_DIBBitCount(image.get()) == bits) return true;
  return Replace(image, [=](PackedDib** dib) { return omb_neuquant(dib, bits); });
}

bool DitherStep(Image& image, const Arguments& arguments) {
  return Replace(image, [&](PackedDib** dib) { return omb_dither(dib, arguments.Integer(0)); });
}

constexpr const char* kFamily = "Pale&tte";

}  // namespace

std::span<const Step> QuantizeSteps() {
  static const Step steps[] = {
      {"neuquant",
       "&Learned palette",
       kFamily,
       "Reduce to a learned palette, or expand to 24 bits",
       {1, 4, 8, 24},
       {Choice("bits", "per pixel", {{"1", 1}, {"4", 4}, {"8", 8}, {"24", 24}})},
       Always({"8", "4"}),
       NeuquantStep},
      // The library's 1 and 2 bits give rows that overlap: nothing that a file could hold.
      {"dither",
       "&Dither",
       kFamily,
       "Reduce to a learned palette and spread the error of each pixel",
       {24},
       {Choice("bits", "per pixel", {{"4", 4}, {"8", 8}})},
       Always({"4"}),
       DitherStep,
       "truecolor"},
  };
  return steps;
}

}  // namespace omb
