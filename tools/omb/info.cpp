// omb info: what an image is.
#include <cmath>
#include <cstdio>

#include "commands.h"
#include "core/packed_dib.h"
#include "files/files.h"
#include "histogram.h"
#include "text.h"

namespace omb {

namespace {

void Line(const char* name, const std::string& text) {
  std::printf("  %-11s %s\n", name, text.c_str());
}

std::string ResolutionOf(const ombrilo::DibView& dib) {
  const uint32_t x = dib.ReadU32(ombrilo::kInfoXPelsPerMeter);
  const uint32_t y = dib.ReadU32(ombrilo::kInfoYPelsPerMeter);
  if (dib.core() || (x == 0 && y == 0)) return "not given";
  const auto dpi = [](uint32_t per_meter) {
    return std::to_string(std::lround(per_meter * 0.0254));
  };
  return dpi(x) + " x " + dpi(y) + " dpi (" + std::to_string(x) + " x " + std::to_string(y) +
         " dots per meter)";
}

std::string ContentOf(const PackedDib* dib) {
  const bool gray = IsGray(dib);
  if (omb_DIBBitCount(dib) <= 8) {
    return gray ? "gray (every color of the table)" : "colorful (by the color table)";
  }
  return gray ? "gray (every pixel)" : "colorful";
}

void Describe(const std::string& file, const PackedDib* image) {
  const ombrilo::DibView dib = ombrilo::DibView::Open(image).value();
  const uint32_t colors = dib.header().color_count;
  std::printf("%s\n", file.c_str());
  Line("file", KindOfFile(PathOf(file)));
  Line("size", std::to_string(dib.width()) + " x " + std::to_string(dib.height()) + " pixels");
  Line("depth",
       std::to_string(dib.bit_count()) + (dib.bit_count() == 1 ? " bit" : " bits") + " per pixel");
  Line("colors", colors == 0 ? "no color table" : std::to_string(colors) + " in the color table");
  Line("stride", std::to_string(dib.stride()) + " bytes per row");
  Line("resolution", ResolutionOf(dib));
  Line("content", ContentOf(image));
}

}  // namespace

int Info(const std::vector<std::string>& files) {
  int status = 0;
  for (const std::string& file : files) {
    try {
      const Image image =
          ReadImage(PathOf(file), [&](const std::string& remark) { Complain(file, remark); });
      Describe(file, image.get());
    } catch (const FileError& error) {
      Complain(file, error.what());
      status = 1;
    }
  }
  return status;
}

}  // namespace omb
