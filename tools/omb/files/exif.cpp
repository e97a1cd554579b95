// EXIF through libexif.
#include <libexif/exif-data.h>

#include <cstdlib>
#include <memory>

#include "files/metadata.h"
#include "files/pixels_in.h"

namespace omb {

namespace {

struct FreeExif {
  void operator()(ExifData* data) const { exif_data_unref(data); }
};
using Exif = std::unique_ptr<ExifData, FreeExif>;

Exif Parse(Bytes bytes) {
  Exif exif(exif_data_new());
  if (!exif) return nullptr;
  // As it is, unknown tags included.
  exif_data_unset_option(exif.get(), EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS);
  exif_data_unset_option(exif.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
  exif_data_unset_option(exif.get(), EXIF_DATA_OPTION_DONT_CHANGE_MAKER_NOTE);
  exif_data_load_data(exif.get(), bytes.data(), static_cast<unsigned>(bytes.size()));
  return exif;
}

ExifEntry* Find(const Exif& exif, ExifIfd ifd, ExifTag tag) {
  return exif_content_get_entry(exif->ifd[ifd], tag);
}

// A short or long number; `otherwise` where there is none.
uint32_t Number(const Exif& exif, ExifIfd ifd, ExifTag tag, uint32_t otherwise) {
  const ExifEntry* entry = Find(exif, ifd, tag);
  const ExifByteOrder order = exif_data_get_byte_order(exif.get());
  if (entry == nullptr || entry->components < 1) return otherwise;
  if (entry->format == EXIF_FORMAT_SHORT) return exif_get_short(entry->data, order);
  if (entry->format == EXIF_FORMAT_LONG) return exif_get_long(entry->data, order);
  return otherwise;
}

void SetNumber(const Exif& exif, ExifIfd ifd, ExifTag tag, uint32_t value) {
  ExifEntry* entry = Find(exif, ifd, tag);
  const ExifByteOrder order = exif_data_get_byte_order(exif.get());
  if (entry == nullptr || entry->components < 1) return;
  if (entry->format == EXIF_FORMAT_SHORT) {
    exif_set_short(entry->data, order, static_cast<ExifShort>(value));
  } else if (entry->format == EXIF_FORMAT_LONG) {
    exif_set_long(entry->data, order, value);
  }
}

double Fraction(const Exif& exif, ExifTag tag) {
  const ExifEntry* entry = Find(exif, EXIF_IFD_0, tag);
  if (entry == nullptr || entry->format != EXIF_FORMAT_RATIONAL || entry->components < 1) return 0;
  const ExifRational value = exif_get_rational(entry->data, exif_data_get_byte_order(exif.get()));
  return value.denominator == 0 ? 0 : double(value.numerator) / value.denominator;
}

}  // namespace

ExifFacts ReadExif(Bytes bytes) {
  if (bytes.empty()) return {};
  const Exif exif = Parse(bytes);
  if (!exif) return {};
  ExifFacts facts;
  const uint32_t orientation = Number(exif, EXIF_IFD_0, EXIF_TAG_ORIENTATION, 1);
  if (orientation >= 1 && orientation <= 8) facts.orientation = static_cast<int>(orientation);
  const uint32_t unit = Number(exif, EXIF_IFD_0, EXIF_TAG_RESOLUTION_UNIT, 2);
  facts.resolution = ResolutionIn(unit, Fraction(exif, EXIF_TAG_X_RESOLUTION),
                                  Fraction(exif, EXIF_TAG_Y_RESOLUTION));
  return facts;
}

std::vector<uint8_t> RenewedExif(Bytes bytes, int32_t width, int32_t height) {
  const Exif exif = Parse(bytes);
  if (!exif) return {};
  SetNumber(exif, EXIF_IFD_0, EXIF_TAG_ORIENTATION, 1);
  SetNumber(exif, EXIF_IFD_EXIF, EXIF_TAG_PIXEL_X_DIMENSION, static_cast<uint32_t>(width));
  SetNumber(exif, EXIF_IFD_EXIF, EXIF_TAG_PIXEL_Y_DIMENSION, static_cast<uint32_t>(height));
  exif->size = 0;  // of the thumbnail, which stays owned
  ExifContent* thumbnail = exif->ifd[EXIF_IFD_1];
  while (thumbnail->count > 0) exif_content_remove_entry(thumbnail, thumbnail->entries[0]);

  unsigned char* saved = nullptr;
  unsigned size = 0;
  exif_data_save_data(exif.get(), &saved, &size);
  const std::unique_ptr<unsigned char, decltype(&std::free)> owner(saved, std::free);
  if (saved == nullptr) return {};
  return {saved, saved + size};
}

}  // namespace omb
