#include "choice_pictures.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "errors.h"
#include "files/pixels_out.h"
#include "rendering.h"

namespace ombview {

std::vector<std::string> ChoicesOf(const omb::Parameter& parameter) {
  std::vector<std::string> texts;
  for (const omb::Name& name : parameter.names) texts.emplace_back(name.name);
  if (parameter.fits == nullptr) return texts;
  for (uint32_t i = 0; const KERNAL* kernel = omb_getKERNAL(i); ++i) {
    if (parameter.fits(kernel->name)) texts.emplace_back(kernel->name);
  }
  return texts;
}

omb::Image PictureOfChoice(const omb::Step& step, const omb::Arguments& arguments, size_t i,
                           const std::string& choice, const PackedDib* image, int side) {
  const int width = static_cast<int>(omb_DIBWidth(image));
  const int height = static_cast<int>(omb_DIBHeight(image));
  const int w = std::min(side, width), h = std::min(side, height);
  const int left = (width - w) / 2, top = (height - h) / 2;
  std::string text = step.name;
  for (size_t k = 0; k < step.parameters.size(); ++k) {
    text += (k == 0 ? "=" : ",") + (k == i ? choice : arguments.Text(k));
  }
  omb::Image piece = PieceOf(image, {left, top, left + w, top + h});
  if (!piece) throw std::bad_alloc();
  bool done = false;
  try {
    omb::RunCall(omb::ParseCall(text), piece);
    done = true;
  } catch (const omb::StepError&) {
  } catch (const omb::UsageError&) {  // choices that do not go together
  }
  Viewport all;
  all.SetArea(side, side);
  all.SetImage(static_cast<int>(omb_DIBWidth(piece.get())),
               static_cast<int>(omb_DIBHeight(piece.get())));
  omb::Image square(omb_newdib(side, side, 24));
  if (!square) throw std::bad_alloc();
  const auto stride = static_cast<size_t>(omb_BytesPerLine(square.get()));
  std::memset(omb_FindDIBBits(square.get()), 255, stride * static_cast<size_t>(side));
  if (!done) return square;
  const omb::Image shown = Render(piece.get(), all);
  const omb::Picture picture(shown.get());
  for (int y = 0; y < picture.height(); ++y) {
    picture.ColorRow(y, omb_FindDIBBits(square.get()) + stride * static_cast<size_t>(side - 1 - y));
  }
  return square;
}

}  // namespace ombview
