#include "steps/color_ramps.h"

namespace omb {

namespace {

struct Ramp {
  const char* name;
  std::vector<uint32_t> stops;  // 0xRRGGBB at even distances from black to white
};

const std::vector<Ramp>& Ramps() {
  static const std::vector<Ramp> ramps = {
      {"fire", {0x000000, 0x5a0a1e, 0xc8280a, 0xff8c00, 0xffdc50, 0xffffff}},
      {"ocean", {0x000014, 0x05286e, 0x0078a0, 0x3cc8b4, 0xf0ffe6}},
      {"rainbow", {0x0000ff, 0x00ffff, 0x00ff00, 0xffff00, 0xff0000}},
      {"sepia", {0x000000, 0x6e4628, 0xc8a078, 0xfff5e1}},
  };
  return ramps;
}

}  // namespace

std::vector<Name> RampNames() {
  std::vector<Name> names;
  for (const Ramp& ramp : Ramps()) names.push_back({ramp.name, static_cast<double>(names.size())});
  return names;
}

uint32_t RampColor(int ramp, int level) {
  const std::vector<uint32_t>& stops = Ramps()[static_cast<size_t>(ramp)].stops;
  const auto parts = static_cast<uint32_t>(stops.size() - 1);
  // In 255ths of the way from one stop to the next.
  const uint32_t position = static_cast<uint32_t>(level) * parts;
  const uint32_t first = level == 255 ? parts - 1 : position / 255;
  const uint32_t share = position - first * 255;
  uint32_t color = 0;
  for (const int shift : {16, 8, 0}) {
    const uint32_t from = stops[first] >> shift & 255, to = stops[first + 1] >> shift & 255;
    color |= (from * (255 - share) + to * share + 127) / 255 << shift;
  }
  return color;
}

}  // namespace omb
