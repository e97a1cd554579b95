#include "files/long_path.h"

#include <string_view>

namespace omb {

namespace fs = std::filesystem;

#ifdef _WIN32
fs::path LongPath(const fs::path& path) {
  constexpr std::wstring_view kPlain = LR"(\\?\)";  // names that are taken literally
  if (path.native().starts_with(kPlain)) return path;
  constexpr size_t kSafeLength = 200;  // room for a name of a temporary file
  std::error_code error;
  fs::path whole = fs::absolute(path, error).lexically_normal().make_preferred();
  if (error || whole.native().size() < kSafeLength) return path;
  const std::wstring& name = whole.native();
  if (name.starts_with(LR"(\\)")) return LR"(\\?\UNC\)" + name.substr(2);
  return kPlain.data() + name;
}
#else
fs::path LongPath(const fs::path& path) { return path; }
#endif

}  // namespace omb
