// Quantization to 256 colors beside FreeImage's neural quantizer and Leptonica's octree and median
// cut, which dither. All make their result each time.
#include "compare.h"
#include "inputs.h"

#ifdef OMBRILO_HAVE_FREEIMAGE
#include <FreeImage.h>

#include "core/packed_dib.h"
#endif

namespace ombrilo::bench {

namespace {

void AddRow(const std::string& name, int32_t (*quantize)(PackedDib**, int32_t),
            const std::string& peer_name, std::function<void()> peer) {
  auto mine = std::make_shared<Image>();
  ComparePrepared(
      name, Pixels(Photo24()), [=] { *mine = Copy(Photo24()); },
      [=] {
        PackedDib* image = mine->release();
        quantize(&image, 8);
        mine->reset(image);
      },
      peer_name, std::move(peer));
}

#ifdef OMBRILO_HAVE_FREEIMAGE
// It has no setting for how many pixels it learns from.
std::function<void()> NeuralQuantizer() {
  const DibView dib = *DibView::Open(Photo24());
  const std::shared_ptr<FIBITMAP> from(
      FreeImage_ConvertFromRawBits(const_cast<BYTE*>(dib.rows()), dib.width(), dib.height(),
                                   static_cast<int>(dib.stride()), 24, 0xFF0000, 0xFF00, 0xFF),
      FreeImage_Unload);
  return [=] { FreeImage_Unload(FreeImage_ColorQuantizeEx(from.get(), FIQ_NNQUANT)); };
}
#endif

#ifdef OMBRILO_HAVE_LEPTONICA
std::function<void()> Leptonica(PIX* (*quantize)(PIX*)) {
  return [quantize, from = AsPix(Photo24())] {
    PIX* quantized = quantize(from.get());
    pixDestroy(&quantized);
  };
}
#endif

}  // namespace

void AddQuantizeRows() {
  std::function<void()> neural, octree, median_cut;
#ifdef OMBRILO_HAVE_FREEIMAGE
  neural = NeuralQuantizer();
#endif
#ifdef OMBRILO_HAVE_LEPTONICA
  octree = Leptonica([](PIX* from) { return pixOctreeColorQuant(from, 240, 1); });
  median_cut = Leptonica([](PIX* from) { return pixMedianCutQuant(from, 1); });
#endif
  AddRow("neuquant 8, photo", omb_neuquant, "FreeImage NNQUANT", std::move(neural));
  AddRow("dither 8, photo", omb_dither, "Leptonica octree, dithered", std::move(octree));
  AddRow("dither 8, photo (2)", omb_dither, "Leptonica median cut, dithered",
         std::move(median_cut));
}

}  // namespace ombrilo::bench
