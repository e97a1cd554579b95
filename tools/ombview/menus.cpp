#include "menus.h"

#include <algorithm>

#include "clipboard.h"
#include "commands.h"
#include "dark_menus.h"
#include "wide.h"

namespace ombview {

namespace {

struct Item {
  WORD command;
  const wchar_t* text;  // null: a separator
  BYTE flags = 0;       // FCONTROL, FSHIFT
  WORD key = 0;
  const wchar_t* key_name = L"";
};

constexpr Item kSeparator = {};
constexpr Item kFileItems[] = {{kOpen, L"&Open…", FCONTROL, 'O', L"Ctrl+O"},
                               {kSave, L"&Save", FCONTROL, 'S', L"Ctrl+S"},
                               {kSaveAs, L"Save &as…", FCONTROL | FSHIFT, 'S', L"Ctrl+Shift+S"},
                               kSeparator,
                               {kPrint, L"&Print…", FCONTROL, 'P', L"Ctrl+P"}};
constexpr Item kFileEnd[] = {kSeparator, {kExit, L"E&xit"}};
constexpr Item kEditItems[] = {
    {kUndo, L"&Undo", FCONTROL, 'Z', L"Ctrl+Z"},
    {kRedo, L"&Redo", FCONTROL, 'Y', L"Ctrl+Y"},
    kSeparator,
    {kCopy, L"&Copy", FCONTROL, 'C', L"Ctrl+C"},
    {kPaste, L"&Paste", FCONTROL, 'V', L"Ctrl+V"},
    kSeparator,
    {kSelecting, L"&Select with the mouse", FCONTROL, 'R', L"Ctrl+R"},
    {kSelectAll, L"Select &all", FCONTROL, 'A', L"Ctrl+A"},
    {kCropToSelection, L"Cr&op to the selection", FCONTROL | FSHIFT, 'X', L"Ctrl+Shift+X"},
    kSeparator,
    {kStop, L"S&top, or select nothing", 0, VK_ESCAPE, L"Esc"}};
constexpr Item kViewItems[] = {{kZoomIn, L"Zoom &in", FCONTROL, VK_OEM_PLUS, L"Ctrl++"},
                               {kZoomOut, L"Zoom &out", FCONTROL, VK_OEM_MINUS, L"Ctrl+−"},
                               {kActualSize, L"&Actual size", FCONTROL, '1', L"Ctrl+1"},
                               {kFit, L"&Fit to window", FCONTROL, '0', L"Ctrl+0"},
                               kSeparator,
                               {kCompare, L"&Compare with before, while held", 0, 0, L"F8"},
                               kSeparator,
                               {kHistogram, L"&Histogram", FCONTROL, 'H', L"Ctrl+H"},
                               {kToolbar, L"&Toolbar", FCONTROL, 'T', L"Ctrl+T"}};
constexpr Item kHelpItems[] = {{kAbout, L"&About Ombrilo…"}};
// Further keys.
constexpr Item kKeys[] = {{kZoomIn, L"", FCONTROL, VK_ADD},
                          {kZoomOut, L"", FCONTROL, VK_SUBTRACT},
                          {kFit, L"", FCONTROL, 'F'}};
constexpr std::span<const Item> kTables[] = {kFileItems, kEditItems, kViewItems, kHelpItems, kKeys};

const Item* ItemOf(WORD command) {
  for (const auto table : kTables) {
    for (const Item& item : table) {
      if (item.text != nullptr && item.command == command) return &item;
    }
  }
  return nullptr;
}

std::wstring TextOf(const Item& item, const std::wstring& addition = {}) {
  std::wstring text = item.text + addition;
  if (*item.key_name != 0) text += std::wstring(L"\t") + item.key_name;
  return text;
}

void Append(HMENU menu, std::span<const Item> items) {
  for (const Item& item : items) {
    if (item.text == nullptr) {
      AppendMenuW(menu, MF_SEPARATOR, 0, nullptr);
    } else {
      AppendMenuW(menu, MF_STRING, item.command, TextOf(item).c_str());
    }
  }
}

HMENU AppendMenu(HMENU bar, const std::wstring& title) {
  const HMENU menu = CreatePopupMenu();
  AppendMenuW(bar, MF_POPUP, reinterpret_cast<UINT_PTR>(menu), title.c_str());
  return menu;
}

// "&Crop to edges…"
std::wstring TextOf(const omb::Step& step) {
  return Wide(step.title) + (step.parameters.empty() ? L"" : L"…");
}

void AppendSteps(HMENU bar) {
  HMENU menu = nullptr;
  std::string family;
  for (const omb::Step* step : omb::AllSteps()) {
    if (family != step->family) {
      family = step->family;
      menu = AppendMenu(bar, Wide(family));
    }
    AppendMenuW(menu, MF_STRING, CommandOf(*step), TextOf(*step).c_str());
  }
}

void SetText(HMENU menu, WORD command, const std::wstring& text) {
  ModifyMenuW(menu, command, MF_STRING, command, text.c_str());
}

// The recent files come at the end of the file menu, before its last item.
void UpdateRecentFiles(HMENU menu, const RecentFiles& recent) {
  for (WORD i = 0; i < RecentFiles::kMost; ++i) DeleteMenu(menu, kFirstRecent + i, MF_BYCOMMAND);
  WORD command = kFirstRecent;
  for (const auto& file : recent.files()) {
    std::wstring name = file.filename().wstring();
    for (size_t at = 0; (at = name.find(L'&', at)) != name.npos; at += 2) name.insert(at, 1, L'&');
    const std::wstring number = std::to_wstring(command - kFirstRecent + 1);
    const std::wstring text = L"&" + number + L"  " + name;
    InsertMenuW(menu, kExit, MF_BYCOMMAND | MF_STRING, command++, text.c_str());
  }
}

bool Contains(HMENU menu, UINT command) {
  return GetMenuState(menu, command, MF_BYCOMMAND) != static_cast<UINT>(-1);
}

}  // namespace

HMENU MakeMenuBar() {
  const HMENU bar = CreateMenu();
  const HMENU file = AppendMenu(bar, L"&File");
  Append(file, kFileItems);
  AppendMenuW(AppendMenu(file, L"&Capture window"), MF_GRAYED, kFirstWindow, L"");
  Append(file, kFileEnd);
  Append(AppendMenu(bar, L"&Edit"), kEditItems);
  Append(AppendMenu(bar, L"&View"), kViewItems);
  AppendSteps(bar);
  Append(AppendMenu(bar, L"&Help"), kHelpItems);
  Darken(bar, true);
  return bar;
}

HACCEL MakeAccelerators() {
  std::vector<ACCEL> keys;
  for (const auto table : kTables) {
    for (const Item& item : table) {
      if (item.key == 0) continue;
      keys.push_back({static_cast<BYTE>(FVIRTKEY | item.flags), item.key, item.command});
    }
  }
  return CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
}

std::wstring TipOf(WORD command) {
  const Item* item = ItemOf(command);
  if (item == nullptr) return {};
  std::wstring text = item->text;
  std::erase(text, L'&');
  std::erase(text, L'…');
  return *item->key_name == 0 ? text : text + L" (" + item->key_name + L")";
}

bool IsPossible(WORD command, const MenuState& state) {
  const SharedImage image = state.document.image();
  if (const omb::Step* step = StepOf(command)) {
    return image && !state.busy && step->TakesDepth(omb_DIBBitCount(image.get()));
  }
  switch (command) {
    case kUndo:
      return !state.busy && state.document.undo() != nullptr;
    case kRedo:
      return !state.busy && state.document.redo() != nullptr;
    case kCompare:
      return state.document.before() != nullptr;
    case kPaste:
      return !state.busy && ClipboardHasImage();
    case kCropToSelection:
      return image && !state.busy && state.selection;
    case kSave:
    case kSaveAs:
    case kPrint:
    case kCopy:
      return image && !state.busy;
    case kSelectAll:
    case kFit:
    case kActualSize:
    case kZoomIn:
    case kZoomOut:
      return image != nullptr;
    case kStop:
      return state.busy || state.selection;
    case kSelecting:
    case kHistogram:
    case kToolbar:
    case kAbout:
    case kExit:
      return true;
  }
  return !state.busy;
}

bool IsOn(WORD command, const MenuState& state) {
  return (command == kFit && state.fit) || (command == kCompare && state.comparing) ||
         (command == kSelecting && state.selecting) || (command == kHistogram && state.histogram) ||
         (command == kToolbar && state.toolbar);
}

void UpdateMenu(HMENU menu, const MenuState& state) {
  if (Contains(menu, kExit)) UpdateRecentFiles(menu, state.recent);
  for (const auto& [command, action] :
       {std::pair(kUndo, state.document.undo()), {kRedo, state.document.redo()}}) {
    if (!Contains(menu, command)) continue;
    SetText(menu, command,
            TextOf(*ItemOf(command), action == nullptr ? L"" : L" " + Wide(*action)));
  }
  for (int i = GetMenuItemCount(menu) - 1; i >= 0; --i) {
    const UINT command = GetMenuItemID(menu, i);
    if (command == 0 || command == static_cast<UINT>(-1)) continue;
    const auto number = static_cast<WORD>(command);
    EnableMenuItem(menu, command, IsPossible(number, state) ? MF_ENABLED : MF_GRAYED);
    CheckMenuItem(menu, command, IsOn(number, state) ? MF_CHECKED : MF_UNCHECKED);
  }
  Darken(menu);
}

bool IsCaptureMenu(HMENU menu) { return GetMenuItemID(menu, 0) == kFirstWindow; }

void FillCaptureMenu(HMENU menu, const std::vector<OpenWindow>& windows) {
  while (DeleteMenu(menu, 0, MF_BYPOSITION)) {
  }
  UINT command = kFirstWindow;
  for (const OpenWindow& window : windows) {
    AppendMenuW(menu, MF_STRING, command++, window.title.c_str());
  }
  if (windows.empty()) AppendMenuW(menu, MF_GRAYED, kFirstWindow, L"There is no other window");
  Darken(menu);
}

}  // namespace ombview
