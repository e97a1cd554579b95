#include "status_line.h"

#include "theme.h"

namespace ombview {

namespace {

constexpr int kWidths[] = {190, 64, 230, 130};  // of all fields but the last, on a usual screen

}  // namespace

StatusLine::StatusLine(HWND parent) { Create(L"OmbviewStatus", WS_CHILD | WS_VISIBLE, 0, parent); }

int StatusLine::Height() { return Scaled(24); }

void StatusLine::Set(Field field, const std::wstring& text) {
  if (texts_[field] == text) return;
  texts_[field] = text;
  // For those who read windows from outside.
  if (field == kRemark) SetWindowTextW(handle(), text.c_str());
  Repaint();
}

void StatusLine::SetProgress(double share) {
  if (share == progress_) return;
  progress_ = share;
  Repaint();
}

void StatusLine::Paint(Painting& painting) {
  const Theme& theme = CurrentTheme();
  const RECT area = ClientRect();
  painting.Fill(area, theme.bar);
  painting.Fill({0, 0, area.right, 1}, theme.line);
  int left = Scaled(8);
  for (int i = 0; i < kFields; ++i) {
    const bool last = i + 1 == kFields;
    RECT where = {left, 1, last ? area.right - Scaled(8) : left + Scaled(kWidths[i]), area.bottom};
    if (last && progress_ >= 0) {
      const RECT whole = {where.right - Scaled(160), Scaled(8), where.right,
                          area.bottom - Scaled(7)};
      RECT done = whole;
      done.right = whole.left + static_cast<LONG>(progress_ * (whole.right - whole.left));
      painting.Fill(whole, theme.line);
      painting.Fill(done, RGB(0x3C, 0x8C, 0xE0));
      where.right = whole.left - Scaled(8);
    }
    painting.Text(texts_[static_cast<size_t>(i)].c_str(), where,
                  last ? theme.faint_text : theme.bar_text,
                  DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS);
    left = where.right + Scaled(8);
  }
}

}  // namespace ombview
