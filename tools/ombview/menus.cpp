#include "menus.h"

#include "clipboard.h"
#include "commands.h"
#include "wide.h"

namespace ombview {

namespace {

struct Item {
  Command command;
  const wchar_t* text;  // null: a separator
  char key = 0;         // with Ctrl
};

constexpr Item kSeparator = {};
constexpr Item kFileItems[] = {{kOpen, L"&Open…", 'O'}, {kSaveAs, L"Save &as…", 'S'}};
constexpr Item kFileEnd[] = {kSeparator, {kExit, L"E&xit"}};
constexpr Item kEditItems[] = {{kUndo, L"&Undo", 'Z'},
                               {kRedo, L"&Redo", 'Y'},
                               kSeparator,
                               {kCopy, L"&Copy", 'C'},
                               {kPaste, L"&Paste", 'V'}};
constexpr Item kViewItems[] = {{kFit, L"&Fit to window", 'F'}, {kHistogram, L"&Histogram", 'H'}};

std::wstring TextOf(const Item& item, const std::wstring& addition = {}) {
  std::wstring text = item.text + addition;
  if (item.key != 0) text += L"\tCtrl+" + std::wstring(1, static_cast<wchar_t>(item.key));
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

void Enable(HMENU menu, UINT command, bool enabled) {
  EnableMenuItem(menu, command, enabled ? MF_ENABLED : MF_GRAYED);
}

void Check(HMENU menu, UINT command, bool checked) {
  CheckMenuItem(menu, command, checked ? MF_CHECKED : MF_UNCHECKED);
}

void UpdateHistory(HMENU menu, const Item& item, const std::string* deed) {
  const std::wstring text = TextOf(item, deed == nullptr ? L"" : L" " + Wide(*deed));
  const UINT flags = MF_STRING | (deed == nullptr ? MF_GRAYED : MF_ENABLED);
  ModifyMenuW(menu, item.command, flags, item.command, text.c_str());
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
  return bar;
}

HACCEL MakeAccelerators() {
  std::vector<ACCEL> keys;
  for (const std::span<const Item> items :
       {std::span<const Item>(kFileItems), std::span<const Item>(kEditItems),
        std::span<const Item>(kViewItems)}) {
    for (const Item& item : items) {
      if (item.key == 0) continue;
      keys.push_back({FVIRTKEY | FCONTROL, static_cast<WORD>(item.key), item.command});
    }
  }
  return CreateAcceleratorTableW(keys.data(), static_cast<int>(keys.size()));
}

void UpdateMenu(HMENU menu, const MenuState& state) {
  const PackedDib* image = state.document.image();
  for (int i = GetMenuItemCount(menu) - 1; i >= 0; --i) {
    const UINT command = GetMenuItemID(menu, i);
    switch (command) {
      case kUndo:
        UpdateHistory(menu, kEditItems[0], state.document.undo());
        break;
      case kRedo:
        UpdateHistory(menu, kEditItems[1], state.document.redo());
        break;
      case kSaveAs:
      case kCopy:
        Enable(menu, command, image != nullptr);
        break;
      case kPaste:
        Enable(menu, command, ClipboardHasImage());
        break;
      case kFit:
        Check(menu, command, state.fit);
        break;
      case kHistogram:
        Check(menu, command, state.histogram);
        break;
      default:
        if (const omb::Step* step = StepOf(static_cast<WORD>(command))) {
          Enable(menu, command, image != nullptr && step->TakesDepth(omb_DIBBitCount(image)));
        }
    }
  }
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
}

}  // namespace ombview
