// omb info: what an image is, by its header.
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "commands.h"
#include "core/packed_dib.h"
#include "files/files.h"
#include "files/pixels_in.h"
#include "text.h"

namespace omb {

namespace {

using Json = nlohmann::ordered_json;

void Line(const char* name, const std::string& text) {
  std::printf("  %-11s %s\n", name, text.c_str());
}

std::string ResolutionOf(const Resolution& r) {
  if (r.x == 0 && r.y == 0) return "not given";
  return std::to_string(std::lround(DotsPerInch(r.x))) + " x " +
         std::to_string(std::lround(DotsPerInch(r.y))) + " dpi (" + std::to_string(r.x) + " x " +
         std::to_string(r.y) + " dots per meter)";
}

uint32_t ColorsOf(const PageInfo& page) {
  return page.bit_count <= 8 ? ombrilo::ColorsOfDepth(page.bit_count) : 0;
}

std::string ContentOf(const PageInfo& page) {
  if (!page.gray) return "colors (whether all are gray, the pixels alone tell)";
  return *page.gray ? "gray" : "colorful (by the color table)";
}

void Describe(const PageInfo& page) {
  const uint32_t colors = ColorsOf(page);
  Line("size", std::to_string(page.width) + " x " + std::to_string(page.height) + " pixels");
  Line("depth", BitsText(page.bit_count) + " per pixel");
  Line("stored", page.stored);
  Line("colors", colors == 0 ? "no color table" : std::to_string(colors) + " in the color table");
  Line("stride", std::to_string(ombrilo::StrideOf(page.width, page.bit_count)) + " bytes per row");
  Line("resolution", ResolutionOf(page.resolution));
  Line("content", ContentOf(page));
  if (page.profile > 0) Line("profile", "ICC, " + Grouped(page.profile) + " bytes");
  if (page.exif) Line("metadata", "EXIF");
}

void Describe(const std::string& name, const std::string& kind,
              const std::vector<PageInfo>& pages) {
  std::printf("%s\n", name.c_str());
  Line("file", kind);
  for (size_t i = 0; i < pages.size(); ++i) {
    if (pages.size() > 1) {
      std::printf("  page %zu of %zu\n", i + 1, pages.size());
    }
    Describe(pages[i]);
  }
}

Json JsonOf(const PageInfo& page) {
  Json json = {{"width", page.width},
               {"height", page.height},
               {"bits", page.bit_count},
               {"stored", page.stored},
               {"colors", ColorsOf(page)},
               {"stride", ombrilo::StrideOf(page.width, page.bit_count)},
               {"dots_per_meter", {page.resolution.x, page.resolution.y}},
               {"gray", nullptr},
               {"profile_bytes", page.profile},
               {"exif", page.exif}};
  if (page.gray) json["gray"] = *page.gray;
  return json;
}

}  // namespace

int Info(const std::vector<std::string>& files, bool json) {
  int status = 0;
  Json all = Json::array();
  for (const std::string& name : files) {
    try {
      ImageFile file(PathOf(name));
      std::vector<PageInfo> pages;
      for (size_t page = 0; page < file.pages(); ++page) pages.push_back(file.Info(page));
      if (!json) {
        Describe(name, file.kind(), pages);
        continue;
      }
      Json list = Json::array();
      for (const PageInfo& page : pages) list.push_back(JsonOf(page));
      all.push_back({{"file", name},
                     {"format", ExtensionOf(file.format())},
                     {"kind", file.kind()},
                     {"pages", std::move(list)}});
    } catch (const FileError& error) {
      Complain(name, error.what());
      status = 1;
    }
  }
  // A name that is not UTF-8 shows replacement characters.
  if (json) std::printf("%s\n", all.dump(2, ' ', false, Json::error_handler_t::replace).c_str());
  return status;
}

}  // namespace omb
