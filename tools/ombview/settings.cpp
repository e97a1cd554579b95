#include "settings.h"

#include <windows.h>

#include <string>

namespace ombview {

namespace {

constexpr const wchar_t* kKey = L"Software\\Ombrilo\\Viewer";
constexpr const wchar_t* kRecent = L"RecentFiles";

}  // namespace

RecentFiles LoadRecentFiles() {
  // A list of texts, each ended by a zero, the list by one more.
  DWORD size = 0;
  RecentFiles recent;
  RegGetValueW(HKEY_CURRENT_USER, kKey, kRecent, RRF_RT_REG_MULTI_SZ, nullptr, nullptr, &size);
  std::wstring texts(size / sizeof(wchar_t), L'\0');
  if (texts.empty() || RegGetValueW(HKEY_CURRENT_USER, kKey, kRecent, RRF_RT_REG_MULTI_SZ, nullptr,
                                    texts.data(), &size) != ERROR_SUCCESS) {
    return recent;
  }
  std::vector<std::filesystem::path> files;
  for (const wchar_t* p = texts.c_str(); *p != 0; p += std::wcslen(p) + 1) files.emplace_back(p);
  for (auto file = files.rbegin(); file != files.rend(); ++file) recent.Add(*file);
  return recent;
}

void SaveRecentFiles(const RecentFiles& recent) {
  std::wstring texts;
  for (const auto& file : recent.files()) texts += file.native() + L'\0';
  texts += L'\0';
  RegSetKeyValueW(HKEY_CURRENT_USER, kKey, kRecent, REG_MULTI_SZ, texts.data(),
                  static_cast<DWORD>(texts.size() * sizeof(wchar_t)));
}

}  // namespace ombview
