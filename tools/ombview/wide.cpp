#include "wide.h"

#include <windows.h>

namespace ombview {

std::wstring Wide(const std::string& utf8) {
  const int length = static_cast<int>(utf8.size());
  std::wstring wide(utf8.size(), L'\0');  // never longer
  const int used = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, wide.data(), length);
  wide.resize(static_cast<size_t>(used));
  return wide;
}

std::string Narrow(const std::wstring& utf16) {
  const int length = static_cast<int>(utf16.size());
  std::string narrow(3 * utf16.size(), '\0');  // never longer
  const int used = WideCharToMultiByte(CP_UTF8, 0, utf16.data(), length, narrow.data(), 3 * length,
                                       nullptr, nullptr);
  narrow.resize(static_cast<size_t>(used));
  return narrow;
}

}  // namespace ombview
