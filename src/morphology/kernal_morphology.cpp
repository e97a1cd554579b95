// omb_DoKernalMorphDIB: dilation and erosion with any structuring element.
#include "core/neighbourhood.h"
#include "morphology/element.h"

namespace ombrilo {

namespace {

struct ElementFilter {
  Element* element;
  bool dilate;

  void Begin(const WindowLayout& layout) { element->Begin(layout); }
  void Prepare(uint8_t* row) { element->Prepare(dilate, row); }
  void Combine(uint8_t* const* rows, size_t first, size_t count, uint8_t* to) {
    element->Combine(dilate, rows, first, count, to);
  }
};

}  // namespace

}  // namespace ombrilo

int32_t omb_DoKernalMorphDIB(PackedDib* image, int32_t bits, int32_t op, const KERNAL* element,
                             int32_t iterations) {
  using namespace ombrilo;
  const auto dib = Dib::Open(image);
  if (!dib || element == nullptr || (element->offsets == nullptr && element->count > 0)) return 0;
  if ((bits != 8 && bits != 24) || op < OMB_MORPH_ERODE || op > OMB_MORPH_CLOSE) return 0;

  // `bits` is believed; the header's bit count only decides how long a row is.
  const PixelRows rows = PixelRows::WithPlanes(*dib, static_cast<uint16_t>(dib->header().width),
                                               static_cast<uint16_t>(bits));
  if (dib->ReadU16(kInfoPlanes) == 0 || !rows.Fits(*dib)) return 0;
  if (iterations < 1) return 1;

  Element shape(*element, rows);
  if (!shape) return 0;
  if (shape.empty()) return 1;
  const bool composed = op == OMB_MORPH_OPEN || op == OMB_MORPH_CLOSE;
  Neighbourhood frame(rows, shape.reach(), shape.memory(), composed ? 2 : 1);
  if (!frame) return 0;
  ElementFilter filters[2] = {{&shape, op == OMB_MORPH_DILATE || op == OMB_MORPH_CLOSE},
                              {&shape, op == OMB_MORPH_OPEN}};
  Pass<ElementFilter> passes[2];
  for (int i = 0; i < 2; ++i) {
    const Border border = Border::Skip(Element::Neutral(filters[i].dilate));
    passes[i] = {shape.reach(), border, &filters[i]};
  }
  if (composed && iterations == 1) {
    frame.Run(passes, 2);
  } else {
    for (int i = 0; i < (composed ? 2 : 1); ++i) frame.Repeat(iterations, passes[i]);
  }
  return 1;
}
