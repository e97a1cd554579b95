#include "dark_menus.h"

#include <map>
#include <string>

#include "theme.h"
#include "window.h"

namespace ombview {

namespace {

struct Item {
  std::wstring text;
  bool in_bar;
};

// By menu and command or submenu, which items keep wherever they move.
std::map<std::pair<HMENU, UINT_PTR>, Item> items;

const Item* ItemAt(HMENU menu, int position) {
  MENUITEMINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = MIIM_DATA | MIIM_FTYPE;
  GetMenuItemInfoW(menu, static_cast<UINT>(position), TRUE, &info);
  return (info.fType & MFT_OWNERDRAW) == 0 ? nullptr
                                           : reinterpret_cast<const Item*>(info.dwItemData);
}

void DarkenItem(HMENU menu, int position, bool in_bar) {
  wchar_t text[300] = {};
  MENUITEMINFOW info = {};
  info.cbSize = sizeof info;
  info.fMask = MIIM_FTYPE | MIIM_STRING | MIIM_SUBMENU | MIIM_ID;
  info.dwTypeData = text;
  info.cch = ARRAYSIZE(text);
  GetMenuItemInfoW(menu, static_cast<UINT>(position), TRUE, &info);
  if (info.hSubMenu != nullptr) Darken(info.hSubMenu, false);
  if ((info.fType & MFT_OWNERDRAW) != 0) return;
  const auto key =
      info.hSubMenu != nullptr ? reinterpret_cast<UINT_PTR>(info.hSubMenu) : UINT_PTR{info.wID};
  Item& item = items[{menu, key}];
  item = {text, in_bar};
  info.fMask = MIIM_FTYPE | MIIM_DATA;
  info.fType |= MFT_OWNERDRAW;
  info.dwItemData = reinterpret_cast<ULONG_PTR>(&item);
  SetMenuItemInfoW(menu, static_cast<UINT>(position), TRUE, &info);
}

// The text and, from the tab on, the key.
std::pair<std::wstring, std::wstring> Parts(const std::wstring& text) {
  const size_t tab = text.find(L'\t');
  if (tab == text.npos) return {text, L""};
  return {text.substr(0, tab), text.substr(tab + 1)};
}

SIZE SizeOf(HDC dc, const std::wstring& text) {
  RECT area = {};
  DrawTextW(dc, text.c_str(), -1, &area, DT_CALCRECT | DT_SINGLELINE);
  return {area.right, area.bottom};
}

}  // namespace

void Darken(HMENU menu, bool is_bar) {
  if (!CurrentTheme().dark) return;
  static const GdiObject<HBRUSH> ground(CreateSolidBrush(CurrentTheme().bar));
  MENUINFO info = {};
  info.cbSize = sizeof info;
  info.fMask = MIM_BACKGROUND;
  info.hbrBack = ground.get();
  SetMenuInfo(menu, &info);
  for (int i = GetMenuItemCount(menu) - 1; i >= 0; --i) DarkenItem(menu, i, is_bar);
}

void MeasureMenuItem(HWND window, MEASUREITEMSTRUCT& item) {
  const auto* data = reinterpret_cast<const Item*>(item.itemData);
  const HDC dc = GetDC(window);
  const HGDIOBJ previous = SelectObject(dc, WindowFont());
  const auto [text, key] = Parts(data->text);
  const SIZE size = SizeOf(dc, text);
  item.itemWidth = static_cast<UINT>(data->in_bar ? size.cx : size.cx + Scaled(56));
  if (!key.empty()) item.itemWidth += static_cast<UINT>(SizeOf(dc, key).cx + Scaled(16));
  item.itemHeight = static_cast<UINT>(data->text.empty() ? Scaled(9) : size.cy + Scaled(8));
  SelectObject(dc, previous);
  ReleaseDC(window, dc);
}

void DrawMenuItem(const DRAWITEMSTRUCT& item) {
  const auto* data = reinterpret_cast<const Item*>(item.itemData);
  const Theme& theme = CurrentTheme();
  const HDC dc = item.hDC;
  RECT area = item.rcItem;
  const auto fill = [dc](const RECT& where, COLORREF color) {
    SetDCBrushColor(dc, color);
    FillRect(dc, &where, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
  };
  const bool gray = (item.itemState & (ODS_GRAYED | ODS_DISABLED)) != 0;
  const bool hot = (item.itemState & (ODS_SELECTED | ODS_HOTLIGHT)) != 0 && !gray;
  fill(area, hot ? theme.hot : theme.bar);
  if (data->text.empty()) {
    const int middle = (area.top + area.bottom) / 2;
    fill({area.left + Scaled(8), middle, area.right - Scaled(8), middle + 1}, theme.line);
    return;
  }
  const HGDIOBJ previous = SelectObject(dc, WindowFont());
  SetBkMode(dc, TRANSPARENT);
  SetTextColor(dc, gray ? theme.faint_text : theme.bar_text);
  const auto [text, key] = Parts(data->text);
  const UINT prefix = (item.itemState & ODS_NOACCEL) != 0 ? DT_HIDEPREFIX : 0;
  if (data->in_bar) {
    DrawTextW(dc, text.c_str(), -1, &area, DT_SINGLELINE | DT_VCENTER | DT_CENTER | prefix);
  } else {
    if ((item.itemState & ODS_CHECKED) != 0) {
      RECT mark = {area.left, area.top, area.left + Scaled(26), area.bottom};
      DrawTextW(dc, L"✓", -1, &mark, DT_SINGLELINE | DT_VCENTER | DT_CENTER);
    }
    area.left += Scaled(28);
    area.right -= Scaled(20);
    DrawTextW(dc, text.c_str(), -1, &area, DT_SINGLELINE | DT_VCENTER | prefix);
    DrawTextW(dc, key.c_str(), -1, &area, DT_SINGLELINE | DT_VCENTER | DT_RIGHT);
  }
  SelectObject(dc, previous);
}

LRESULT ChooseByLetter(HMENU menu, wchar_t letter) {
  const auto lower = [](wchar_t c) {
    return reinterpret_cast<UINT_PTR>(
        CharLowerW(reinterpret_cast<LPWSTR>(static_cast<UINT_PTR>(c))));
  };
  for (int i = 0; i < GetMenuItemCount(menu); ++i) {
    const Item* item = ItemAt(menu, i);
    if (item == nullptr) continue;
    const size_t mark = item->text.find(L'&');
    if (mark != item->text.npos && lower(item->text[mark + 1]) == lower(letter)) {
      return MAKELRESULT(i, MNC_EXECUTE);
    }
  }
  return MAKELRESULT(0, MNC_IGNORE);
}

void PaintRestOfMenuBar(HWND window) {
  const HMENU menu = GetMenu(window);
  if (!CurrentTheme().dark || menu == nullptr) return;
  MENUBARINFO bar = {};
  bar.cbSize = sizeof bar;
  RECT last = {}, frame = {};
  GetMenuBarInfo(window, OBJID_MENU, 0, &bar);
  GetMenuItemRect(window, menu, static_cast<UINT>(GetMenuItemCount(menu) - 1), &last);
  GetWindowRect(window, &frame);
  // One row more: a light line parts the bar from the window.
  RECT rest = {last.right, bar.rcBar.top, bar.rcBar.right, bar.rcBar.bottom + 1};
  OffsetRect(&rest, -frame.left, -frame.top);
  const HDC dc = GetWindowDC(window);
  SetDCBrushColor(dc, CurrentTheme().bar);
  FillRect(dc, &rest, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
  ReleaseDC(window, dc);
}

}  // namespace ombview
