#include "recent_files.h"

namespace ombview {

void RecentFiles::Add(const std::filesystem::path& file) {
  if (file.empty()) return;
  std::error_code error;
  const std::filesystem::path whole = std::filesystem::absolute(file, error);
  if (error) return;
  Remove(whole);
  files_.insert(files_.begin(), whole);
  if (files_.size() > kMost) files_.resize(kMost);
}

void RecentFiles::Remove(const std::filesystem::path& file) { std::erase(files_, file); }

}  // namespace ombview
