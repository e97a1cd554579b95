// The files that were opened or saved last, the newest first.
#pragma once

#include <filesystem>
#include <vector>

namespace ombview {

class RecentFiles {
 public:
  static constexpr size_t kMost = 9;

  void Add(const std::filesystem::path& file);
  void Remove(const std::filesystem::path& file);
  const std::vector<std::filesystem::path>& files() const { return files_; }

 private:
  std::vector<std::filesystem::path> files_;
};

}  // namespace ombview
