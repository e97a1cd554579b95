// Shows a person at a terminal how far a long job has come.
#pragma once

#include <mutex>
#include <string>

namespace omb {

// A bar on stderr, drawn only where that is a terminal. Any thread may call it.
class Progress {
 public:
  explicit Progress(size_t total, bool quiet = false);
  ~Progress();  // removes the bar

  // There are this many parts more than expected so far.
  void Expect(size_t more);

  // One part, named, is done.
  void Advance(const std::string& name);
  // Writes a line to stderr, above the bar.
  void Say(const std::string& line);

 private:
  void Draw() const;
  void Erase() const;

  std::mutex mutex_;
  size_t total_;
  const bool terminal_;
  size_t done_ = 0;
  std::string name_;
};

}  // namespace omb
