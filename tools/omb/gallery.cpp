// omb gallery: a page that shows every step on each input.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>

#include "commands.h"
#include "core/packed_dib.h"
#include "errors.h"
#include "files/files.h"
#include "files/long_path.h"
#include "files/pixels_out.h"
#include "files/temporary_file.h"
#include "gallery_page.h"
#include "progress.h"
#include "steps/steps.h"
#include "text.h"
#include "thumbnail.h"

namespace omb {

namespace {

namespace fs = std::filesystem;

constexpr int kThumbnailWidth = 480, kThumbnailHeight = 680;
constexpr int kDetailWidth = 180, kDetailHeight = 120;

std::string Base64(const std::string& bytes) {
  static const char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t bits = 0;
    for (size_t k = 0; k < 3; ++k) {
      bits = bits << 8 | (i + k < bytes.size() ? static_cast<uint8_t>(bytes[i + k]) : 0);
    }
    for (size_t k = 0; k < 4; ++k) {
      text += i + k <= bytes.size() ? kDigits[bits >> (18 - 6 * k) & 63] : '=';
    }
  }
  return text;
}

// The bytes of an image file; empty when this build cannot write the format.
std::string Encoded(Format format, const PackedDib* dib, const fs::path& directory) {
  const fs::path scratch =
      LongPath(directory / ("thumbnail.tmp." + std::string(ExtensionOf(format))));
  try {
    WriteImage(scratch, format, dib);
  } catch (const FileError&) {
    return {};
  }
  std::ifstream file(scratch, std::ios::binary);
  std::string bytes{std::istreambuf_iterator<char>(file), {}};
  file.close();
  std::error_code ignored;
  fs::remove(scratch, ignored);
  return bytes;
}

// Drawings and pages are smaller, and sharper, as PNG; photographs as JPEG.
Shown Show(const PackedDib* dib, const fs::path& directory) {
  const Image small = Thumbnail(dib, kThumbnailWidth, kThumbnailHeight);
  const std::string png = Encoded(Format::kPng, small.get(), directory);
  const std::string jpeg = Encoded(Format::kJpeg, small.get(), directory);
  std::string uri = "data:image/";
  if (!png.empty() && (jpeg.empty() || png.size() <= jpeg.size() + jpeg.size() / 4)) {
    uri += "png;base64," + Base64(png);
  } else if (!jpeg.empty()) {
    uri += "jpeg;base64," + Base64(jpeg);
  } else {
    const std::string bmp = Encoded(Format::kBmp, small.get(), directory);
    if (bmp.empty()) throw std::runtime_error(Utf8(directory) + ": cannot be written to");
    uri += "bmp;base64," + Base64(bmp);
  }
  return {std::move(uri), static_cast<int>(omb_DIBWidth(small.get())),
          static_cast<int>(omb_DIBHeight(small.get()))};
}

std::string TimeOf(std::chrono::duration<double, std::milli> time) {
  char text[32];
  const double ms = time.count();
  if (ms < 0.01) return "< 0.01 ms";
  const int digits = ms < 10 ? 2 : ms < 100 ? 1 : 0;
  std::snprintf(text, sizeof text, "%.*f ms", digits, ms);
  return text;
}

// As a shell reads it back, in quotes only if it needs them.
std::string Quoted(const std::string& word) {
  const char* plain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./=,:%@+-\\";
  const bool is_plain = !word.empty() && word.find_first_not_of(plain) == std::string::npos;
  return is_plain ? word : ShellQuoted(word);
}

// The images here were read by this program or made by the library: their headers are sound.
ombrilo::DibView ViewOf(const PackedDib* dib) { return ombrilo::DibView::Open(dib).value(); }

bool SameBytes(const PackedDib* a, const PackedDib* b) {
  const ombrilo::DibView first = ViewOf(a), second = ViewOf(b);
  return first.extent() == second.extent() &&
         std::memcmp(first.block(), second.block(), first.extent()) == 0;
}

std::string SizeOf(const PackedDib* dib) {
  return std::to_string(omb_DIBWidth(dib)) + " × " + std::to_string(omb_DIBHeight(dib)) + " pixels";
}

std::string DepthOf(const PackedDib* dib) { return BitsText(omb_DIBBitCount(dib)); }

// What a picture alone does not show of a change.
std::string RemarkOn(const PackedDib* before, const PackedDib* after) {
  if (SameBytes(before, after)) return "Nothing changes in this image.";
  std::string changes;
  if (SizeOf(before) != SizeOf(after)) changes = SizeOf(after);
  if (DepthOf(before) != DepthOf(after)) changes += (changes.empty() ? "" : ", ") + DepthOf(after);
  return changes.empty() ? "" : "Now " + changes + ".";
}

// Runs a step on the image and returns the time of it.
std::string TimedRun(const std::string& step, Image& image) {
  const Call call = ParseCall(step);
  const auto start = std::chrono::steady_clock::now();
  RunCall(call, image);
  return TimeOf(std::chrono::steady_clock::now() - start);
}

// The piece of the image that has most to show: the one with the largest differences between
// neighbours.
OmbRect DetailOf(const PackedDib* dib) {
  const Picture picture(dib);
  const int width = std::min(kDetailWidth, picture.width());
  const int height = std::min(kDetailHeight, picture.height());
  const int columns = picture.width() / width, rows = picture.height() / height;
  std::vector<int64_t> contrast(static_cast<size_t>(columns) * static_cast<size_t>(rows));
  std::vector<uint8_t> bgr(3 * static_cast<size_t>(picture.width()));
  for (int y = 0; y < rows * height; ++y) {
    picture.ColorRow(y, bgr.data());
    for (int x = 1; x < columns * width; ++x) {
      const auto green = 3 * static_cast<size_t>(x) + 1;
      contrast[static_cast<size_t>(y / height * columns + x / width)] +=
          std::abs(bgr[green] - bgr[green - 3]);
    }
  }
  const auto best = std::max_element(contrast.begin(), contrast.end()) - contrast.begin();
  const int left = static_cast<int>(best) % columns * width;
  const int top = static_cast<int>(best) / columns * height;
  return {left, top, left + width - 1, top + height - 1};
}

// A piece of the image in its full size; of 16 and 32 bits in 24.
Image Piece(const PackedDib* dib, const OmbRect& rectangle) {
  PackedDib* piece = CopyOf(ViewOf(dib)).release();
  const bool done = omb_transformat(&piece) != 0 && omb_crop(&piece, &rectangle) != 0;
  Image image(piece);
  if (!done) throw std::bad_alloc();
  return image;
}

// `text` is the step with arguments.
Exhibit Try(const Step& step, const std::string& text, const PackedDib* input,
            const OmbRect& detail, const std::string& file, const fs::path& directory) {
  Exhibit exhibit;
  exhibit.step = step.name;
  exhibit.title = step.Title();
  exhibit.family = step.Family();
  exhibit.summary = step.summary;
  const std::string command = "omb apply " + Quoted(Utf8(file)) + " out.png ";
  exhibit.command = command + Quoted(text);
  Image image = CopyOf(ViewOf(input));
  try {
    exhibit.time = TimedRun(text, image);
  } catch (const StepError& error) {
    exhibit.refusal = error.what();
  }
  if (!exhibit.refusal.empty() && step.before != nullptr) {
    try {
      TimedRun(step.before, image);
      exhibit.time = TimedRun(text, image);
      exhibit.command = command + step.before + " " + Quoted(text);
      exhibit.refusal.clear();
    } catch (const StepError&) {
      // The first refusal says more.
    }
  }
  if (!exhibit.refusal.empty()) return exhibit;
  if (SizeOf(input) != SizeOf(image.get())) {
    exhibit.frame = Exhibit::Frame::kResized;
  } else if (step.IsFine()) {
    exhibit.frame = Exhibit::Frame::kDetail;
  }
  const bool whole = exhibit.frame != Exhibit::Frame::kDetail;
  exhibit.after = Show(whole ? image.get() : Piece(image.get(), detail).get(), directory);
  exhibit.remark = RemarkOn(input, image.get());
  return exhibit;
}

Room RoomOf(const std::string& file, const PackedDib* input, const fs::path& directory,
            Progress& progress) {
  Room room;
  room.name = Utf8(PathOf(file).filename());
  room.facts = SizeOf(input) + ", " + DepthOf(input);
  room.before = Show(input, directory);
  const OmbRect detail = DetailOf(input);
  room.detail = Show(Piece(input, detail).get(), directory);
  for (const Step* step : AllSteps()) {
    const std::vector<std::string> calls = step->ExampleCalls(input);
    for (const std::string& call : calls) {
      room.exhibits.push_back(Try(*step, call, input, detail, file, directory));
      // Several pictures of a step are told apart by its arguments.
      if (calls.size() > 1) room.exhibits.back().step = call;
    }
    progress.Advance(room.name + " " + step->name);
  }
  return room;
}

void WritePage(const fs::path& path, const std::string& page) {
  try {
    TemporaryFile file(path);
    file.output().Write(page.data(), page.size());
    file.Commit();
  } catch (const FileError& error) {
    throw std::runtime_error(Utf8(path) + ": " + error.what());
  }
}

}  // namespace

int Gallery(const std::vector<std::string>& words) {
  if (words.size() < 2)
    throw UsageError("gallery: INPUT and DIR are needed", "usage: omb gallery INPUT... DIR\n");
  const fs::path directory = PathOf(words.back());
  std::vector<Room> rooms;
  {
    const std::vector<std::string> files(words.begin(), words.end() - 1);
    Progress progress(files.size() * AllSteps().size());
    for (const std::string& file : files) {
      try {
        const Image input = ReadImage(PathOf(file), [&](const std::string& remark) {
          progress.Say("omb: " + file + ": " + remark);
        });
        std::error_code error;
        fs::create_directories(LongPath(directory), error);
        if (error) throw std::runtime_error(words.back() + ": " + error.message());
        rooms.push_back(RoomOf(file, input.get(), directory, progress));
      } catch (const FileError& file_error) {
        throw std::runtime_error(file + ": " + file_error.what());
      }
    }
  }
  const fs::path page = directory / "index.html";
  WritePage(page, PageOf(rooms));
  std::printf("The gallery is at %s\n", Utf8(fs::absolute(page)).c_str());
  return 0;
}

}  // namespace omb
