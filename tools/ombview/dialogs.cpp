#include "dialogs.h"

#include <commctrl.h>
#include <commdlg.h>

namespace ombview {

namespace {

constexpr DWORD kLongestPath = 32768;
constexpr const wchar_t* kImages =
    L"Images\0*.bmp;*.dib;*.png;*.jpg;*.jpeg;*.jpe;*.jfif;*.tif;*.tiff\0All files\0*.*\0";
constexpr const wchar_t* kFormats =
    L"PNG\0*.png\0BMP\0*.bmp;*.dib\0JPEG\0*.jpg;*.jpeg;*.jpe;*.jfif\0TIFF\0*.tif;*.tiff\0"
    L"All files\0*.*\0";

// The place in kFormats, from 1.
DWORD FormatIndex(const std::filesystem::path& file) {
  std::wstring extension = file.extension().wstring();
  for (wchar_t& c : extension) c = static_cast<wchar_t>(towlower(c));
  if (extension == L".bmp" || extension == L".dib") return 2;
  if (extension.starts_with(L".j")) return 3;
  if (extension.starts_with(L".tif")) return 4;
  return 1;
}

OPENFILENAMEW FileDialog(HWND owner, std::wstring& name) {
  name.resize(kLongestPath);
  OPENFILENAMEW dialog = {};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.lpstrFile = name.data();
  dialog.nMaxFile = kLongestPath;
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR;
  return dialog;
}

}  // namespace

std::vector<std::filesystem::path> AskForFiles(HWND owner) {
  std::wstring name;
  OPENFILENAMEW dialog = FileDialog(owner, name);
  dialog.lpstrFilter = kImages;
  dialog.Flags |= OFN_FILEMUSTEXIST | OFN_ALLOWMULTISELECT;
  if (!GetOpenFileNameW(&dialog)) return {};
  // One file, or a folder and the names in it, each after a zero.
  std::vector<std::filesystem::path> files;
  const std::filesystem::path first = name.c_str();
  const wchar_t* next = name.c_str() + first.native().size() + 1;
  for (; *next != 0; next += std::wcslen(next) + 1) files.push_back(first / next);
  if (files.empty()) files.push_back(first);
  return files;
}

std::filesystem::path AskForName(HWND owner, const std::filesystem::path& proposal) {
  std::wstring name = proposal.native();
  OPENFILENAMEW dialog = FileDialog(owner, name);
  dialog.lpstrFilter = kFormats;
  dialog.nFilterIndex = FormatIndex(proposal);
  dialog.lpstrDefExt = L"png";
  dialog.Flags |= OFN_OVERWRITEPROMPT | OFN_PATHMUSTEXIST;
  return GetSaveFileNameW(&dialog) ? std::filesystem::path(name.c_str()) : std::filesystem::path();
}

int AskToSave(HWND owner, const std::filesystem::path& file) {
  const std::wstring name = file.empty() ? L"the image" : file.filename().wstring();
  const std::wstring question = L"Save the changes to " + name + L"?";
  const TASKDIALOG_BUTTON buttons[] = {{IDYES, L"&Save"}, {IDNO, L"Do&n’t save"}};
  TASKDIALOGCONFIG dialog = {};
  dialog.cbSize = sizeof dialog;
  dialog.hwndParent = owner;
  dialog.dwFlags = TDF_ALLOW_DIALOG_CANCELLATION | TDF_POSITION_RELATIVE_TO_WINDOW;
  dialog.dwCommonButtons = TDCBF_CANCEL_BUTTON;
  dialog.pszWindowTitle = kTitle;
  dialog.pszMainInstruction = question.c_str();
  dialog.pszContent = L"They are lost otherwise.";
  dialog.cButtons = ARRAYSIZE(buttons);
  dialog.pButtons = buttons;
  dialog.nDefaultButton = IDYES;
  int answer = IDCANCEL;
  TaskDialogIndirect(&dialog, &answer, nullptr, nullptr);
  return answer;
}

void ShowAbout(HWND owner) {
  TASKDIALOGCONFIG dialog = {};
  dialog.cbSize = sizeof dialog;
  dialog.hwndParent = owner;
  dialog.hInstance = GetModuleHandleW(nullptr);
  dialog.dwFlags = TDF_ALLOW_DIALOG_CANCELLATION | TDF_POSITION_RELATIVE_TO_WINDOW;
  dialog.dwCommonButtons = TDCBF_OK_BUTTON;
  dialog.pszWindowTitle = kTitle;
  dialog.pszMainIcon = MAKEINTRESOURCEW(1);
  dialog.pszMainInstruction = L"Ombrilo " OMBRILO_VERSION;
  dialog.pszContent =
      L"Shows images and works on them with every operation of the Ombrilo library.\n\n"
      L"Reads BMP, PNG, JPEG and TIFF. MIT License.";
  TaskDialogIndirect(&dialog, nullptr, nullptr, nullptr);
}

}  // namespace ombview
