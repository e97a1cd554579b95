// The dialogs of the system that the viewer uses.
#pragma once

#include <windows.h>

#include <filesystem>
#include <string>
#include <vector>

namespace ombview {

inline constexpr const wchar_t* kTitle = L"Ombrilo";

// The files that a person chooses to open; none when it was cancelled.
std::vector<std::filesystem::path> AskForFiles(HWND owner);
// The name of a file to save; empty when it was cancelled.
std::filesystem::path AskForName(HWND owner, const std::filesystem::path& proposal);
// What to do with unsaved changes: IDYES to save it, IDNO to let it go, IDCANCEL.
int AskToSave(HWND owner, const std::filesystem::path& file);
void ShowAbout(HWND owner);

}  // namespace ombview
