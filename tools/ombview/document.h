// An image that is being worked on, with the way back through all that was done to it. Portable.
#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "files/files.h"
#include "steps/steps.h"

namespace ombview {

// Images are never changed once they are here, so that any thread may read one that it holds.
using SharedImage = std::shared_ptr<const PackedDib>;
using SharedMetadata = std::shared_ptr<const omb::Metadata>;

// Opening a file, pasting and capturing are actions like every operation: they can be undone.
class Document {
 public:
  // The oldest images are forgotten when all together take more than `history_bytes`.
  explicit Document(size_t history_bytes = size_t{1} << 30) : history_bytes_(history_bytes) {}

  // Add an image: one from a file, one without a name, or what became of the current image, whose
  // profile and EXIF data it keeps.
  void Open(omb::Image image, omb::Metadata metadata, const std::filesystem::path& file);
  void Put(omb::Image image, std::string action);
  void Change(omb::Image image, std::string action);
  // The image is in this file now.
  void MarkSaved(const std::filesystem::path& file);

  bool Undo();
  bool Redo();

  // Null while there is none.
  SharedImage image() const { return empty() ? nullptr : now().image; }
  // What is to be written with the image; null where there is no image.
  SharedMetadata metadata() const { return empty() ? nullptr : now().metadata; }
  // The image before the last action; null when there is none.
  SharedImage before() const { return undo() == nullptr ? nullptr : states_[current_ - 2].image; }
  // The file that the image is in or comes from; empty for others.
  std::filesystem::path file() const { return empty() ? std::filesystem::path() : now().file; }
  // Whether the image differs from its file, or has none.
  bool changed() const { return !empty() && !now().saved; }
  // What Undo() and Redo() would take back and do again: "Crop". Null when there is nothing.
  const std::string* undo() const { return current_ > 1 ? &now().action : nullptr; }
  const std::string* redo() const;

 private:
  struct State {
    SharedImage image;
    SharedMetadata metadata;
    std::string action;  // what made it of the one before
    std::filesystem::path file;
    bool saved;
  };

  bool empty() const { return current_ == 0; }
  const State& now() const { return states_[current_ - 1]; }
  void Push(State state);

  size_t history_bytes_;
  std::vector<State> states_;
  size_t current_ = 0;  // so many states, up to the one that is shown
};

// What a step makes of an image. Throws StepError and std::bad_alloc.
omb::Image After(const PackedDib* image, const omb::Call& call);

// A copy of an image as it is. Throws std::bad_alloc.
omb::Image CopyOf(const PackedDib* dib);

// Bytes that somebody else says are a packed DIB: CF_DIB on the clipboard. They may be of any kind
// that there is; the result is an image as from a file. Throws FileError.
omb::Image ImageOfBytes(std::span<const uint8_t> bytes, const omb::Remark& remark);

}  // namespace ombview
