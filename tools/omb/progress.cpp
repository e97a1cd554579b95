#include "progress.h"

#include <cstdio>

#include "terminal.h"

namespace omb {

namespace {

constexpr size_t kBarWidth = 30;

}  // namespace

Progress::Progress(size_t total, bool quiet)
    : total_(total), terminal_(!quiet && IsTerminal(stderr)) {
  Draw();
}

Progress::~Progress() { Erase(); }

void Progress::Expect(size_t more) {
  const std::lock_guard lock(mutex_);
  total_ += more;
}

void Progress::Advance(const std::string& name) {
  const std::lock_guard lock(mutex_);
  ++done_;
  name_ = name.size() > 40 ? "..." + name.substr(name.size() - 37) : name;
  Draw();
}

void Progress::Say(const std::string& line) {
  const std::lock_guard lock(mutex_);
  Erase();
  std::fprintf(stderr, "%s\n", line.c_str());
  Draw();
}

void Progress::Draw() const {
  if (!terminal_ || total_ < 2) return;
  const size_t filled = kBarWidth * done_ / total_;
  const std::string bar = std::string(filled, '#') + std::string(kBarWidth - filled, '.');
  std::fprintf(stderr, "\r\033[K[%s] %zu/%zu %s", bar.c_str(), done_, total_, name_.c_str());
  std::fflush(stderr);
}

void Progress::Erase() const {
  if (!terminal_ || total_ < 2) return;
  std::fprintf(stderr, "\r\033[K");
  std::fflush(stderr);
}

}  // namespace omb
