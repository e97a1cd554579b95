// Steps on whole images: negative, depth, rectangles.
#include "errors.h"
#include "files/pixels_out.h"
#include "steps/steps.h"

namespace omb {

namespace {

bool InvertStep(Image& image, const Arguments&) { return omb_invert(image.get()) != 0; }

bool TransformatStep(Image& image, const Arguments&) { return Replace(image, omb_transformat); }

bool TruecolorStep(Image& image, const Arguments&) {
  if (omb_DIBBitCount(image.get()) != 24) image = TrueColor(image.get());
  return true;
}

// Refuses, with a reason, a rectangle that the library would refuse; by its last column and row.
void CheckRectangle(const PackedDib* dib, int64_t right, int64_t bottom) {
  if (right >= omb_DIBWidth(dib) || bottom >= omb_DIBHeight(dib)) {
    throw StepError("the rectangle reaches column " + std::to_string(right) + " and row " +
                    std::to_string(bottom) + ", but the image has " +
                    std::to_string(omb_DIBWidth(dib)) + " columns and " +
                    std::to_string(omb_DIBHeight(dib)) + " rows, counted from 0");
  }
}

const char* CropConflict(const Arguments& arguments) {
  const bool empty =
      arguments.Integer(2) < arguments.Integer(0) || arguments.Integer(3) < arguments.Integer(1);
  return empty ? "the rectangle is empty: right and bottom are the last column and row kept"
               : nullptr;
}

bool CropStep(Image& image, const Arguments& arguments) {
  const OmbRect rectangle = {arguments.Integer(0), arguments.Integer(1), arguments.Integer(2),
                             arguments.Integer(3)};
  CheckRectangle(image.get(), rectangle.right, rectangle.bottom);
  return Replace(image, [&](PackedDib** dib) { return omb_crop(dib, &rectangle); });
}

bool CpydibrectStep(Image& image, const Arguments& arguments) {
  const int32_t x = arguments.Integer(0);
  const uint32_t y = arguments.Unsigned(1), w = arguments.Unsigned(2), h = arguments.Unsigned(3);
  CheckRectangle(image.get(), int64_t{x} + w - 1, int64_t{y} + h - 1);
  const uintptr_t copy = omb_cpydibrect(image.get(), x, y, w, h);
  if (copy == 0) return false;
  image.reset(reinterpret_cast<PackedDib*>(copy));
  return true;
}

// The middle of the picture, half as wide and high.
std::vector<std::string> MiddleEdges(const PackedDib* dib) {
  const uint32_t w = omb_DIBWidth(dib), h = omb_DIBHeight(dib);
  return {std::to_string(w / 4) + "," + std::to_string(h / 4) + "," +
          std::to_string(w - 1 - w / 4) + "," + std::to_string(h - 1 - h / 4)};
}

// The top left quarter.
std::vector<std::string> CornerPiece(const PackedDib* dib) {
  return {"0,0," + std::to_string((omb_DIBWidth(dib) + 1) / 2) + "," +
          std::to_string((omb_DIBHeight(dib) + 1) / 2)};
}

constexpr const char* kFamily = "&Image";

}  // namespace

std::span<const Step> ImageSteps() {
  static const Step steps[] = {
      {"invert", "&Negative", kFamily, "Photographic negative", {1, 4, 8, 24}, {}, {}, InvertStep},
      {"transformat",
       "To 24 &bits per pixel",
       kFamily,
       "Bring 16- and 32-bit images to 24 bits; others stay as they are",
       {1, 4, 8, 16, 24, 32},
       {},
       {},
       TransformatStep},
      {"truecolor",
       "&True color",
       kFamily,
       "Bring to 24 bits by the color table; 16 and 32 bits with white as white",
       {1, 4, 8, 16, 24, 32},
       {},
       {},
       TruecolorStep},
      {"crop",
       "&Crop to edges",
       kFamily,
       "Cut down to a rectangle, given by its edges",
       {1, 4, 8, 24},
       {Whole("left", "first column kept, from 0 at the left", 0),
        Whole("top", "first row kept, from 0 at the top", 0), Whole("right", "last column kept", 0),
        Whole("bottom", "last row kept", 0)},
       MiddleEdges,
       CropStep,
       nullptr,
       CropConflict},
      {"cpydibrect",
       "C&rop to corner and size",
       kFamily,
       "Cut down to a rectangle, given by its corner and size",
       {1, 4, 8, 24},
       {Whole("x", "first column kept, from 0 at the left", 0),
        Whole("y", "first row kept, from 0 at the top", 0),
        Whole("width", "pixels kept of each row", 1), Whole("height", "rows kept", 1)},
       CornerPiece,
       CpydibrectStep},
  };
  return steps;
}

}  // namespace omb
