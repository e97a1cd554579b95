#include "support/every_export.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <tuple>
#include <type_traits>

#include "core/bytes.h"
#include "core/packed_dib.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace ombrilo::test {

namespace {

constexpr uint32_t kFar[] = {0,          1,       0xFFFFFFFF, 0x80000000, 0x7FFFFFFF, 0x40000000,
                             0xFFFF,     0x10000, 0x8000,     0x7FFF,     255,        256,
                             0xFFFF0001, 0x101,   0x55555555, 0xFFFFFF00};

// Parameters that are drawn from a range.
struct Whole {
  int32_t low, high;
  int32_t From(Draw& draw) const { return draw.Whole(low, high); }
};
struct Real {
  double low, high;
  double From(Draw& draw) const { return draw.Real(low, high); }
};
struct Fixed {
  int32_t value;
  int32_t From(Draw&) const { return value; }
};
struct Times {  // of a factor
  int32_t low, high;
  uint64_t factor;
  uint64_t From(Draw& draw) const { return static_cast<uint64_t>(draw.Whole(low, high)) * factor; }
};
template <int32_t... kValues>
struct OneOf {
  int32_t From(Draw& draw) const {
    constexpr int32_t kAll[] = {kValues...};
    return kAll[draw.Byte() % std::size(kAll)];
  }
};
// Few passes: each takes its time.
struct Passes {
  int32_t From(Draw& draw) const { return std::min(draw.Whole(0, 3), 3); }
};

// Functions of an image and such parameters.
template <auto kFunction, auto... kRanges>
uint64_t With(PackedDib** image, Draw& draw, Digest&) {
  const auto call = [&](auto... parameters) {
    if constexpr (requires { kFunction(image, parameters...); }) {
      return kFunction(image, parameters...);
    } else {
      return kFunction(*image, parameters...);
    }
  };
  // In braces, so that they are drawn in their order.
  const std::tuple parameters{kRanges.From(draw)...};
  if constexpr (std::is_void_v<decltype(std::apply(call, parameters))>) {
    std::apply(call, parameters);
    return 1;
  } else {
    return static_cast<uint64_t>(std::apply(call, parameters));
  }
}

// Bytes that rise by a drawn step.
std::vector<uint8_t> Steps(Draw& draw, size_t count) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t step = draw.Byte(), value = 0; uint8_t & byte : bytes) byte = value += step;
  return bytes;
}

uint64_t FindDIBBits(PackedDib** image, Draw&, Digest& digest) {
  const uint8_t* rows = omb_FindDIBBits(*image);
  if (rows != nullptr) {
    digest.Add(static_cast<uint64_t>(rows - reinterpret_cast<const uint8_t*>(*image)));
  }
  return rows != nullptr;
}

uint64_t CreateDIBPalette(PackedDib** image, Draw&, Digest& digest) {
  const uintptr_t palette = omb_CreateDIBPalette(*image);
  if (palette == 0) return 0;
#ifdef _WIN32
  const HPALETTE handle = reinterpret_cast<HPALETTE>(palette);
  std::array<uint8_t, 65536 * 4> entries;
  digest.Add(
      entries.data(),
      4 * GetPaletteEntries(handle, 0, 65535, reinterpret_cast<PALETTEENTRY*>(entries.data())));
  DeleteObject(handle);
#else
  auto* bytes = reinterpret_cast<uint8_t*>(palette);
  digest.Add(bytes + 4, size_t{4} * LoadU16(bytes + 2));
  std::free(bytes);
#endif
  return 1;
}

uint64_t Crop(PackedDib** image, Draw& draw, Digest&) {
  const int32_t width = std::max(1, static_cast<int32_t>(omb_DIBWidth(*image)));
  const int32_t height = std::max(1, static_cast<int32_t>(omb_DIBHeight(*image)));
  OmbRect rectangle;
  rectangle.left = draw.Whole(0, width - 1);
  rectangle.top = draw.Whole(0, height - 1);
  rectangle.right = draw.Whole(rectangle.left, std::max(rectangle.left, width - 1));
  rectangle.bottom = draw.Whole(rectangle.top, std::max(rectangle.top, height - 1));
  return omb_crop(image, &rectangle);
}

uint64_t Copy(PackedDib** image, Draw& draw, Digest& digest) {
  const int32_t width = std::max(1, static_cast<int32_t>(omb_DIBWidth(*image)));
  const int32_t height = std::max(1, static_cast<int32_t>(omb_DIBHeight(*image)));
  const int32_t x = draw.Whole(0, width - 1), y = draw.Whole(0, height - 1);
  const int32_t w = draw.Whole(0, width - 1 - std::clamp(x, 0, width - 1));
  const int32_t h = draw.Whole(0, height - 1 - std::clamp(y, 0, height - 1));
  TestImage piece(reinterpret_cast<PackedDib*>(omb_cpydibrect(
      *image, x, static_cast<uint32_t>(y), static_cast<uint32_t>(w), static_cast<uint32_t>(h))));
  if (!OverlapsItself(*image)) digest.AddImage(piece.get());
  return piece.get() != nullptr;
}

uint64_t NewDib(PackedDib**, Draw& draw, Digest& digest) {
  constexpr uint16_t kDepths[] = {1, 4, 8, 16, 24, 32};
  const uint16_t depth = kDepths[draw.Byte() % 6];
  const int32_t width = draw.Whole(1, 50);
  // One side is small, lest every other call fills gigabytes.
  PackedDib* dib = omb_newdib(width, width > 50 ? 1 + draw.Byte() % 4 : draw.Whole(1, 50), depth);
  if (dib != nullptr && omb_DIBWidth(dib) <= 50 && omb_DIBHeight(dib) <= 50) digest.AddImage(dib);
  const bool made = dib != nullptr;
  omb_freedib(dib);
  return made;
}

constexpr uint32_t kPixelFormats[] = {OMB_PIXELS_BIT, OMB_PIXELS_GRAY, OMB_PIXELS_BGR,
                                      OMB_PIXELS_RGB, OMB_PIXELS_BGRA, OMB_PIXELS_RGBA};

uint64_t FromPixels(PackedDib**, Draw& draw, Digest& digest) {
  const uint32_t format = kPixelFormats[draw.Byte() % 6];
  const int32_t width = draw.Whole(1, 50), height = draw.Whole(1, 50);
  // Other sizes than these come with a stride that refuses them.
  const bool meant = width <= 50 && height <= 50;
  const intptr_t stride = meant ? 200 + draw.Byte() % 10 : 0;
  const std::vector<uint8_t> pixels = Steps(draw, size_t{50} * 210);
  const TestImage made(omb_frompixels(format, width, height, pixels.data(), stride, 0xC08040));
  if (made.get() != nullptr) digest.AddImage(made.get());
  return made.get() != nullptr;
}

uint64_t ToPixels(PackedDib** image, Draw& draw, Digest& digest) {
  const uint32_t format = kPixelFormats[draw.Byte() % 6];
  const uint32_t width = omb_DIBWidth(*image), height = omb_DIBHeight(*image);
  const size_t bits = format == OMB_PIXELS_BIT ? 1 : format / 8 * 8;
  const size_t stride = (bits * width + 7) / 8;
  const bool small = width < 1u << 20 && height < 1u << 20 && stride * height < 1u << 24;
  std::vector<uint8_t> pixels(small ? stride * height : 0);
  const uint64_t result = omb_topixels(*image, format, pixels.empty() ? nullptr : pixels.data(),
                                       static_cast<intptr_t>(stride));
  digest.Add(pixels.data(), pixels.size());
  return result;
}

uint64_t SetPalette(PackedDib** image, Draw& draw, Digest&) {
  const std::vector<uint8_t> colors = Steps(draw, size_t{4} * 65536);
  return omb_setpalette(*image, colors.data(), static_cast<uint32_t>(draw.Whole(0, 20)));
}

uint64_t Histogram(PackedDib** image, Draw& draw, Digest& digest) {
  std::array<int32_t, 256> counters;
  counters.fill(-1);
  const int32_t result = omb_getchannelhistogram(*image, counters.data(), draw.Whole(1, 4));
  digest.Add(counters.data(), sizeof counters);
  return static_cast<uint64_t>(result);
}

uint64_t Pseudocolor(PackedDib** image, Draw& draw, Digest&) {
  // As many entries as a header can announce.
  return omb_pseudocolor(*image, Steps(draw, size_t{4} * 65536).data());
}

// Up to seven points of a tone curve.
template <auto kFunction>
uint64_t Curve(PackedDib** image, Draw& draw, Digest& digest) {
  std::vector<OmbPoint> points;
  const int64_t step = draw.Whole(30, 60);  // far values add up to more than 32 bits
  for (int64_t x = draw.Whole(0, 60); x < 256 && points.size() < 7; x += step) {
    points.push_back({static_cast<int32_t>(x), draw.Whole(0, 255)});
  }
  const auto count = static_cast<uint32_t>(points.size());
  uint8_t curve[256] = {};
  digest.Add(omb_bestfit(points.data(), count, curve));
  digest.Add(curve, sizeof curve);
  return kFunction(*image, points.data(), count, static_cast<uint32_t>(draw.Whole(0, 3)));
}

uint64_t AdjustColor(PackedDib** image, Draw& draw, Digest&) {
  const int32_t mode = draw.Whole(1, 4);
  const int32_t reach = mode < 3 ? 100 : 360, a = draw.Whole(-reach, reach);
  const int32_t b = draw.Whole(-100, 100), c = draw.Whole(-100, 100);
  return omb_adjustcolor(*image, static_cast<uint32_t>(mode), a, b, c);
}

uint64_t Scale(PackedDib** image, Draw& draw, Digest&) {
  int32_t width = draw.Whole(0, 90), height = draw.Whole(0, 90);
  // Sizes beyond 16 bits in one direction, and sizes that are refused; those in between only take
  // long.
  if (width > 90 && draw.Byte() % 2 != 0) {
    width = (draw.Byte() % 16 + 1) * 65536 + draw.Byte();
    height = draw.Byte() % 2;
  } else if (height > 90 && draw.Byte() % 2 != 0) {
    height = (draw.Byte() % 16 + 1) * 65536 + draw.Byte();
    width = draw.Byte() % 2;
  } else {
    if (width > 90) width = std::numeric_limits<int32_t>::min() + draw.Byte();
    if (height > 90) height = std::numeric_limits<int32_t>::max() - draw.Byte();
    if (height > 90 && width > 0) width += 32;
  }
  return omb_scale(image, static_cast<uint32_t>(width), static_cast<uint32_t>(height),
                   static_cast<uint32_t>(draw.Whole(1, 3)));
}

uint64_t Resize(PackedDib** image, Draw& draw, Digest&) {
  int32_t width = draw.Whole(1, 90), height = draw.Whole(1, 90);
  // One side may be long; two would only take long.
  if (std::min(width, height) > 90) height = 1 + height % 4;
  return omb_resize(image, static_cast<uint32_t>(width), static_cast<uint32_t>(height),
                    static_cast<uint32_t>(draw.Whole(1, 4)));
}

uint64_t Rotate(PackedDib** image, Draw& draw, Digest&) {
  constexpr float kTurns[] = {90, 180, 270, -90, 45, 360, 450, 0.02f};
  const uint8_t choice = draw.Byte();
  const float degrees = choice < 8 ? kTurns[choice] : static_cast<float>(draw.Real(-400, 400));
  // A long thin image would become a huge square.
  if (omb_DIBWidth(*image) > 2000 || omb_DIBHeight(*image) > 2000) return 0;
  return omb_rotate(image, degrees, static_cast<uint32_t>(draw.Whole(1, 3)));
}

// Its picture is another one each time: the image gets its own pixels back.
uint64_t DiffuseByClock(PackedDib** image, Draw& draw, Digest&) {
  const auto dib = Dib::Open(*image);
  const auto area = static_cast<uint32_t>(draw.Whole(2, 60));
  if (!dib) return omb_diffuse(*image, area);
  const std::vector<uint8_t> before(dib->block(), dib->block() + dib->extent());
  const uint32_t result = omb_diffuse(*image, area);
  const size_t prefix = std::min(dib->prefix_size(), dib->extent());
  std::copy(before.begin() + static_cast<ptrdiff_t>(prefix), before.end(), dib->block() + prefix);
  return result;
}

// A built-in record, or one with drawn offsets.
std::unique_ptr<KERNAL, decltype(&omb_destroyKERNAL)> DrawKernal(Draw& draw) {
  const int32_t index = draw.Whole(0, 60);
  if (index != 60) {
    const KERNAL* built_in = omb_getKERNAL(static_cast<uint32_t>(index) % 45);
    return {omb_cloneKERNAL(built_in), omb_destroyKERNAL};
  }
  const int32_t count = draw.Byte() % 60;
  const int32_t width = draw.Whole(1, 9), height = draw.Whole(1, 9);
  const int32_t anchor_x = draw.Whole(0, std::max(width, 1) - 1);
  const int32_t anchor_y = draw.Whole(0, std::max(height, 1) - 1);
  const auto fit = [](int32_t side) { return std::clamp(side, 1, 9); };
  KERNAL* kernal =
      omb_newKERNAL(fit(width), fit(height), 0, 0, count, draw.Whole(-20, 20), "drawn");
  if (kernal != nullptr) {
    // A host can write what omb_newKERNAL() would refuse.
    kernal->width = width, kernal->height = height;
    kernal->anchorX = anchor_x, kernal->anchorY = anchor_y;
  }
  for (int32_t i = 0; kernal != nullptr && i < count; ++i) {
    kernal->offsets[2 * i] = draw.Whole(-4, 4);
    kernal->offsets[2 * i + 1] = draw.Whole(-4, 4);
    kernal->weights[i] = draw.Whole(-30, 30);
  }
  return {kernal, omb_destroyKERNAL};
}

uint64_t Records(PackedDib**, Draw& draw, Digest& digest) {
  const auto kernal = DrawKernal(draw);
  KERNAL record;
  omb_zeroKERNAL(&record);
  digest.Add(&record.count, sizeof record.count);
  if (kernal == nullptr) return 0;
  const auto count = static_cast<size_t>(kernal->count);
  digest.Add(kernal->offsets, 2 * count * sizeof *kernal->offsets);
  digest.Add(kernal->weights, count * sizeof *kernal->weights);
  digest.Add(kernal->name, std::strlen(kernal->name));
  return 1;
}

uint64_t ConvoluteKernal(PackedDib** image, Draw& draw, Digest&) {
  const auto kernal = DrawKernal(draw);
  const int32_t passes = Passes().From(draw);
  return static_cast<uint64_t>(omb_DoConvoluteDIB(*image, kernal.get(), passes, draw.Whole(0, 20)));
}

uint64_t MorphKernal(PackedDib** image, Draw& draw, Digest&) {
  const auto kernal = DrawKernal(draw);
  const int32_t bits = draw.Byte() % 4 != 0 ? omb_DIBBitCount(*image) : draw.Whole(8, 24);
  const int32_t op = draw.Whole(0, 3);
  return static_cast<uint64_t>(
      omb_DoKernalMorphDIB(*image, bits, op, kernal.get(), Passes().From(draw)));
}

uint64_t EnhancePage(PackedDib** image, Draw& draw, Digest&) {
  const int32_t size = draw.Whole(0, 2), passes = Passes().From(draw), strength = draw.Whole(0, 20);
  const int32_t percentile = draw.Whole(0, 100), mode = draw.Whole(0, 8);
  const int32_t block = draw.Whole(0, 9), scope = draw.Whole(0, 3), curve = draw.Whole(0, 9);
  if (mode == 4 && (scope == 0 || scope == 1)) return 0;  // "tone" draws better
  return static_cast<uint64_t>(
      omb_EnhancePage(*image, size, passes, strength, block, percentile, mode, scope, curve));
}

constexpr Export kExports[] = {
    {"omb_version", [](PackedDib**, Draw&, Digest&) { return uint64_t(omb_version() != 0); }},
    {"omb_DIBWidth", With<omb_DIBWidth>},
    {"omb_DIBHeight", With<omb_DIBHeight>},
    {"omb_DIBBitCount", With<omb_DIBBitCount>},
    {"omb_DIBNumColors", With<omb_DIBNumColors>},
    {"omb_PaletteSize", With<omb_PaletteSize>},
    {"omb_FindDIBBits", FindDIBBits},
    {"omb_BytesPerLine", With<omb_BytesPerLine>},
    {"omb_newdib, omb_freedib", NewDib},
    {"omb_invert", With<omb_invert>},
    {"omb_CreateDIBPalette", CreateDIBPalette},
    {"omb_transformat", With<omb_transformat>},
    {"omb_crop", Crop},
    {"omb_cpydibrect", Copy},
    {"omb_iscolorful", With<omb_iscolorful>},
    {"omb_can_gray", With<omb_can_gray>},
    {"omb_can_filtersheet", With<omb_can_filtersheet>},
    {"omb_can_pseudocolor", With<omb_can_pseudocolor>},
    {"omb_can_balance", With<omb_can_balance>},
    {"omb_autoclr", [](PackedDib**, Draw&, Digest&) { return uint64_t(omb_autoclr()); }},
    {"omb_getchannelhistogram", Histogram},
    {"omb_brightnesscontrast", With<omb_brightnesscontrast, Whole{-130, 130}, Whole{-130, 130}>},
    {"omb_gammacorrection", With<omb_gammacorrection, Real{0.1, 4}>},
    {"omb_autolevel", With<omb_autolevel, Real{0, 0.3}, Real{0.7, 1}>},
    {"omb_autocontrast", With<omb_autocontrast, Real{0, 0.3}, Real{0.7, 1}>},
    {"omb_gray", With<omb_gray>},
    {"omb_pseudocolor", Pseudocolor},
    {"omb_autothreshold", With<omb_autothreshold>},
    {"omb_binary", With<omb_binary, Whole{0, 255}>},
    {"omb_filtercolor", With<omb_filtercolor, Whole{1, 3}>},
    {"omb_extractcolor", With<omb_extractcolor, Whole{1, 3}>},
    {"omb_adjustghms", With<omb_adjustghms, Whole{-100, 100}, Whole{-100, 100}, Whole{-100, 100}>},
    {"omb_bestfit, omb_curve", Curve<omb_curve>},
    {"omb_segmentoperation", Curve<omb_segmentoperation>},
    {"omb_x1x2_changed", With<omb_x1x2_changed, Whole{0, 255}, Whole{0, 255}, Whole{0, 3}>},
    {"omb_adjustcolor", AdjustColor},
    {"omb_balance", With<omb_balance, Whole{-100, 100}, Whole{-100, 100}, Whole{-100, 100},
                         Whole{0, 3}, Whole{0, 1}>},
    {"omb_scale", Scale},
    {"omb_resize", Resize},
    {"omb_rotate", Rotate},
    {"omb_fliphor", With<omb_fliphor>},
    {"omb_flipvert", With<omb_flipvert>},
    {"omb_newKERNAL, omb_cloneKERNAL, omb_zeroKERNAL, omb_destroyKERNAL, omb_getKERNAL", Records},
    {"omb_convolute", With<omb_convolute, Whole{1, 39}>},
    {"omb_DoConvoluteDIB", ConvoluteKernal},
    {"omb_emboss", With<omb_emboss, Whole{0, 27}, Times{0, 0xFFFF, 199}>},
    {"omb_sobel", With<omb_sobel>},
    {"omb_medianblur", With<omb_medianblur>},
    {"omb_diffuse", DiffuseByClock},
    {"omb_diffuse_seed", With<omb_diffuse_seed, Whole{2, 60}, Times{0, 0xFFFF, 1 << 20}>},
    {"omb_granulate", With<omb_granulate, Whole{1, 12}, Whole{1, 12}>},
    {"omb_dilate", With<omb_dilate>},
    {"omb_erode", With<omb_erode>},
    {"omb_mathopen", With<omb_mathopen>},
    {"omb_mathclose", With<omb_mathclose>},
    {"omb_denoise", With<omb_denoise>},
    {"omb_pickedge", With<omb_pickedge>},
    {"omb_gradientize", With<omb_gradientize>},
    {"omb_opencompose", With<omb_opencompose>},
    {"omb_tophat", With<omb_tophat>},
    {"omb_DoKernalMorphDIB", MorphKernal},
    {"omb_EnhancePage", EnhancePage},
    {"omb_EnhancePage, tone", With<omb_EnhancePage, Whole{-1, 9}, Whole{0, 120}, Whole{-2, 900},
                                   Whole{15, 40}, Fixed{0}, Fixed{4}, Whole{0, 1}, Whole{0, 3}>},
    {"omb_EdgePage", With<omb_EdgePage, Whole{0, 2}, Passes{}, Whole{0, 20}, Whole{0, 6}>},
    {"omb_MorphologicalPage",
     With<omb_MorphologicalPage, Whole{0, 2}, Whole{0, 3}, Passes{}, Whole{0, 7}>},
    {"omb_neuquant", With<omb_neuquant, OneOf<1, 4, 8, 24, 2>{}>},
    {"omb_dither", With<omb_dither, OneOf<1, 2, 4, 8, 24>{}>},
    {"omb_frompixels", FromPixels},
    {"omb_topixels", ToPixels},
    {"omb_setpalette", SetPalette},
    {"omb_setresolution", With<omb_setresolution, Whole{0, 20000}, Whole{0, 20000}>},
};

}  // namespace

std::vector<uint8_t> RandomBytes(uint32_t seed, size_t count) {
  std::vector<uint8_t> bytes(count);
  for (uint8_t& byte : bytes) {
    byte = static_cast<uint8_t>((seed = seed * 1664525 + 1013904223) >> 24);
  }
  return bytes;
}

uint8_t Draw::Byte() {
  if (bytes_.empty()) return 0;
  const uint8_t byte = bytes_.front();
  bytes_ = bytes_.subspan(1);
  return byte;
}

int32_t Draw::Whole(int32_t low, int32_t high) {
  if (values_ == kAny && Byte() % 8 == 7) {
    return static_cast<int32_t>(kFar[Byte() % std::size(kFar)]);
  }
  const int64_t range = int64_t{high} - low + 1;
  return static_cast<int32_t>(low + (Byte() | (range > 256 ? Byte() << 8 : 0)) % range);
}

double Draw::Real(double low, double high) {
  if (values_ == kAny && Byte() % 8 == 7) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kFarReals[] = {0,     -0.0,      1e300, -1e300,     1e-300,
                                    -1e-9, kInfinity, 3e9,   -kInfinity, NAN};
    return kFarReals[Byte() % std::size(kFarReals)];
  }
  return low + (high - low) * Byte() / 255;
}

void Digest::Add(const void* bytes, size_t count) {
  for (size_t i = 0; i < count; ++i) {
    value_ = (value_ ^ static_cast<const uint8_t*>(bytes)[i]) * 0x100000001B3u;
  }
}

void Digest::AddImage(const PackedDib* dib) {
  const auto view = DibView::Open(dib);
  if (view) Add(view->block(), view->extent());
  Add(uint64_t{view.has_value()});
}

bool OverlapsItself(const PackedDib* dib) {
  return dib != nullptr && DibHeader::Read(dib).header_size < kCoreHeaderSize;
}

std::span<const Export> EveryExport() { return kExports; }

TestImage HostileImage(Draw& draw) {
  constexpr uint32_t kSizeFields[] = {40, 40, 40, 12, 12, 64, 108, 16, 0, 41};
  constexpr uint16_t kDepths[] = {1, 4, 8, 24, 1, 4, 8, 24, 16, 32, 2, 0, 3, 48, 0xFFFF};
  std::array<uint8_t, kInfoHeaderSize> header{};
  const uint8_t kind = draw.Byte();
  StoreU32(header.data(), kind < 250 ? kSizeFields[kind % std::size(kSizeFields)]
                                     : static_cast<uint32_t>(draw.Whole(0, 200)));
  const auto width = static_cast<uint32_t>(draw.Whole(0, 70));
  const auto height = static_cast<uint32_t>(draw.Whole(0, 40));
  const auto planes = static_cast<uint16_t>(draw.Byte() % 4 != 3 ? 1 : draw.Whole(0, 3));
  const uint16_t depth = kDepths[draw.Byte() % std::size(kDepths)];
  if (DibHeader::Read(reinterpret_cast<const PackedDib*>(header.data())).core) {
    StoreU16(&header[kCoreWidth], static_cast<uint16_t>(width));
    StoreU16(&header[kCoreHeight], static_cast<uint16_t>(height));
    StoreU16(&header[kCoreHeight + 2], planes);
    StoreU16(&header[kCoreBitCount], depth);
  } else {
    StoreU32(&header[kInfoWidth], width);
    StoreU32(&header[kInfoHeight], height);
    StoreU16(&header[kInfoPlanes], planes);
    StoreU16(&header[kInfoBitCount], depth);
    StoreU32(&header[kInfoCompression], draw.Byte() % 4);
    StoreU32(&header[kInfoSizeImage], static_cast<uint32_t>(draw.Whole(0, 9)));
    StoreU32(&header[kInfoClrUsed],
             draw.Byte() % 4 != 3 ? 0 : static_cast<uint32_t>(draw.Whole(0, 300)));
  }
  const DibHeader read = DibHeader::Read(reinterpret_cast<const PackedDib*>(header.data()));
  const size_t extent = read.Extent().value_or(read.fields_size());
  if (extent > 65536) return TestImage();
  auto* block = static_cast<uint8_t*>(std::malloc(extent));
  // The given bytes, then some that follow from the last.
  uint32_t filler = draw.Byte();
  for (size_t i = 0; i < extent; ++i) {
    filler = filler * 1664525 + 1013904223;
    block[i] = draw.empty() ? static_cast<uint8_t>(filler >> 24) : draw.Byte();
  }
  std::copy_n(header.data(), std::min(extent, read.fields_size()), block);
  return TestImage(reinterpret_cast<PackedDib*>(block));
}

}  // namespace ombrilo::test
