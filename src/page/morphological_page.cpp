// omb_MorphologicalPage: erosion, dilation and what can be made of them, for images of pages.
//
// These shapes contain, with each pixel, all pixels nearer to their middle row and column. Dilating
// n times by such a shape is the same as dilating once by its n-fold sum, even where pixels outside
// the image are skipped. And skipping them is the same as taking the nearest pixel of the image
// instead, which the shape contains as well. So every mode is one walk, and one window serves both
// minimum and maximum.
#include "core/neighbourhood.h"
#include "morphology/element.h"
#include "rows/row_functions.h"

namespace ombrilo {

namespace {

// Half the width of a row of the n-fold shape, by its distance from the middle row. `radius` is
// that of the shape itself, 1 to 3.
int64_t HalfWidth(int32_t shape, int64_t radius, int64_t n, int64_t distance) {
  if (shape == OMB_SHAPE_COLUMN) return 0;
  // Circles have full rows up to distance 1, then a pixel less on both sides with each row.
  return radius * n - (shape == OMB_SHAPE_CIRCLE && distance > n ? distance - n : 0);
}

// Applies one of two elements in a walk, or both.
class PageFilter {
 public:
  PageFilter(int32_t mode, Element* minimum, Element* maximum)
      : mode_(mode), minimum_(minimum), maximum_(maximum) {}

  void Begin(const WindowLayout& layout) {
    if (minimum_ != nullptr) minimum_->Begin(layout);
    if (maximum_ != nullptr) maximum_->Begin(layout);
    scratch_ = layout.scratch;
  }
  void Prepare(uint8_t* row) {
    if (minimum_ != nullptr) minimum_->Prepare(false, row);
    if (maximum_ != nullptr) maximum_->Prepare(true, row);
  }
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    const simd::RowFunctions& functions = simd::Active();
    const auto extreme = [&](uint8_t* extremes) {
      const bool dilate = minimum_ == nullptr;
      (dilate ? maximum_ : minimum_)->Combine(dilate, rows, first, count, extremes);
    };
    switch (mode_) {
      case OMB_PAGE_GRADIENT:
        maximum_->Combine(true, rows, first, count, to);
        extreme(scratch_);
        return functions.subtract_saturated(scratch_, count, to);
      case OMB_PAGE_LIGHT:  // here and below, `to` holds the image
        extreme(scratch_);
        return functions.subtract_saturated(scratch_, count, to);
      case OMB_PAGE_DARK:
        extreme(scratch_);
        return functions.subtract_from(scratch_, count, to);
      case OMB_PAGE_CLEAN:
        extreme(scratch_);
        return functions.divide_by_light(scratch_, count, to);
      default:
        return extreme(to);
    }
  }

 private:
  int32_t mode_;
  Element *minimum_, *maximum_;
  uint8_t* scratch_ = nullptr;  // a row
};

bool Morph(const Dib& dib, int64_t radius, int32_t shape, int64_t n, int32_t mode) {
  const PixelRows rows = PixelRows::Of(dib);
  const auto half_width = [=](int64_t distance) { return HalfWidth(shape, radius, n, distance); };
  const int64_t reach = shape == OMB_SHAPE_ROW ? 0 : radius * n;
  Element first(reach, half_width, rows);
  if (!first) return false;
  const int passes =
      mode == OMB_PAGE_ERODE || mode == OMB_PAGE_DILATE || mode == OMB_PAGE_GRADIENT ? 1 : 2;
  FilterMemory memory = first.memory();
  if (mode == OMB_PAGE_GRADIENT) memory.derived.rows *= 2;
  memory.scratch.rows = 1;
  Neighbourhood frame(rows, first.reach(), memory, passes);
  if (!frame) return false;

  const Border border = Border::Nearest();
  if (mode == OMB_PAGE_ERODE || mode == OMB_PAGE_DILATE) {
    PageFilter filter(mode, mode == OMB_PAGE_ERODE ? &first : nullptr,
                      mode == OMB_PAGE_ERODE ? nullptr : &first);
    frame.Run(Pass{first.reach(), border, &filter});
    return true;
  }
  if (mode == OMB_PAGE_GRADIENT) {
    Element second(reach, half_width, rows);
    if (!second) return false;
    second.KeepBehind(first);
    PageFilter filter(mode, &first, &second);
    frame.Run(Pass{first.reach(), border, &filter});
    return true;
  }
  const bool opening = mode == OMB_PAGE_OPEN || mode == OMB_PAGE_LIGHT;
  PageFilter filters[2] = {{opening ? OMB_PAGE_ERODE : OMB_PAGE_DILATE, opening ? &first : nullptr,
                            opening ? nullptr : &first},
                           {mode, opening ? nullptr : &first, opening ? &first : nullptr}};
  const Pass<PageFilter> both[2] = {{first.reach(), border, &filters[0]},
                                    {first.reach(), border, &filters[1]}};
  frame.Run(both, 2);
  return true;
}

}  // namespace

}  // namespace ombrilo

int32_t omb_MorphologicalPage(PackedDib* image, int32_t size, int32_t shape, int32_t iterations,
                              int32_t mode) {
  using namespace ombrilo;
  if (size < 0 || size > 2 || shape < OMB_SHAPE_SQUARE || shape > OMB_SHAPE_COLUMN) return 0;
  if (mode < OMB_PAGE_ERODE || mode > OMB_PAGE_CLEAN) return 0;
  const auto dib = Dib::Open(image);
  if (!dib || (dib->bit_count() != 8 && dib->bit_count() != 24)) return 0;
  if (iterations < 1 || dib->pixel_rows() == 0) return 1;
  return Morph(*dib, size + 1, shape, iterations, mode);
}
