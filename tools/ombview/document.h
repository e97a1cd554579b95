// An image that is being worked on, with the way back through all that was done to it. It knows
// nothing of windows.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "files/files.h"
#include "steps/steps.h"

namespace ombview {

// Opening a file, pasting and capturing are deeds like every operation: they can be undone.
class Document {
 public:
  // The oldest images are forgotten when all of them take more than so many bytes.
  explicit Document(size_t history_bytes = size_t{1} << 30) : history_bytes_(history_bytes) {}

  // Each of these leaves the document unchanged when it throws.
  void Open(const std::filesystem::path& file, const omb::Remark& remark);  // FileError
  void Apply(const omb::Call& call);                                        // StepError
  void Put(omb::Image image, std::string deed);
  void SaveAs(const std::filesystem::path& file);  // FileError; the name says the format

  bool Undo();
  bool Redo();

  // Null as long as there is none.
  const PackedDib* image() const { return empty() ? nullptr : now().image.get(); }
  // The file that the image is in or comes from; empty for others.
  const std::filesystem::path& file() const { return now().file; }
  // Whether the image is in no file as it is.
  bool changed() const { return !empty() && !now().saved; }
  // What Undo() and Redo() would take back and do again: "crop". Null when there is nothing.
  const std::string* undo() const { return current_ > 1 ? &now().deed : nullptr; }
  const std::string* redo() const;

 private:
  struct State {
    omb::Image image;
    std::string deed;  // what made it of the one before
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

// A copy of an image as it is. Throws std::bad_alloc.
omb::Image CopyOf(const PackedDib* dib);

// Bytes that somebody else says are a packed DIB: CF_DIB on the clipboard. They may be of any kind
// that there is; the result is an image as from a file. Throws FileError.
omb::Image ImageOfBytes(std::span<const uint8_t> bytes, const omb::Remark& remark);

}  // namespace ombview
