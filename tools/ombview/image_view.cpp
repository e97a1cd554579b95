#include "image_view.h"

#include <algorithm>
#include <new>

#include "files/files.h"
#include "thumbnail.h"

namespace ombview {

namespace {

constexpr COLORREF kGround = RGB(0x3A, 0x3A, 0x3C), kHint = RGB(0xB8, 0xB8, 0xBC);
constexpr int kLine = 48;  // pixels that one click on a scroll bar's arrow moves

}  // namespace

ImageView::ImageView(HWND parent) {
  Create(L"OmbviewImage", WS_CHILD | WS_VISIBLE | WS_HSCROLL | WS_VSCROLL, 0, parent);
}

void ImageView::Show(const PackedDib* image) {
  image_ = image;
  section_.reset();
  Arrange();
}

void ImageView::SetFit(bool fit) {
  fit_ = fit;
  section_.reset();
  Arrange();
}

// Scroll bars as they are needed; hidden ones change the size again.
void ImageView::Arrange() {
  for (int bar : {SB_HORZ, SB_VERT, SB_HORZ}) {
    const RECT area = ClientRect();
    SCROLLINFO info = {sizeof info, SIF_RANGE | SIF_PAGE, 0, 0, 0, 0, 0};
    if (image_ != nullptr && !fit_) {
      const uint32_t size = bar == SB_HORZ ? omb_DIBWidth(image_) : omb_DIBHeight(image_);
      info.nMax = static_cast<int>(size) - 1;
      info.nPage = static_cast<UINT>(bar == SB_HORZ ? area.right : area.bottom);
    }
    SetScrollInfo(handle(), bar, &info, TRUE);
  }
  Repaint();
}

void ImageView::ScrollTo(int bar, int position) {
  const SCROLLINFO info = {sizeof info, SIF_POS, 0, 0, 0, position, 0};
  SetScrollInfo(handle(), bar, &info, TRUE);
  Repaint();
}

void ImageView::Scroll(int bar, int request) {
  SCROLLINFO info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
  GetScrollInfo(handle(), bar, &info);
  const int page = static_cast<int>(info.nPage);
  switch (request) {
    case SB_LINEUP:
      return ScrollTo(bar, info.nPos - kLine);
    case SB_LINEDOWN:
      return ScrollTo(bar, info.nPos + kLine);
    case SB_PAGEUP:
      return ScrollTo(bar, info.nPos - page);
    case SB_PAGEDOWN:
      return ScrollTo(bar, info.nPos + page);
    case SB_THUMBTRACK:
      return ScrollTo(bar, info.nTrackPos);
  }
}

void ImageView::Prepare() {
  if (section_ || image_ == nullptr) return;
  const RECT area = ClientRect();
  const bool reduce = fit_ && (omb_DIBWidth(image_) > static_cast<uint32_t>(area.right) ||
                               omb_DIBHeight(image_) > static_cast<uint32_t>(area.bottom));
  try {
    const omb::Image reduced = reduce && area.right > 0 && area.bottom > 0
                                   ? omb::Thumbnail(image_, area.right, area.bottom)
                                   : nullptr;
    section_.reset(omb_DIBToDIBSection(reduced ? reduced.get() : image_));
  } catch (const std::bad_alloc&) {  // then it is not shown
  } catch (const omb::FileError&) {
  }
}

void ImageView::Paint() {
  Prepare();
  Painting painting(handle());
  const RECT area = ClientRect();
  painting.Fill(area, kGround);
  if (!section_) {
    const wchar_t* hint = image_ == nullptr
                              ? L"Drop an image here, or open one with Ctrl+O"
                              : L"This image cannot be shown: it is too large for the memory";
    painting.Text(hint, area, kHint, DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    return;
  }
  BITMAP shape = {};
  GetObjectW(section_.get(), sizeof shape, &shape);
  const auto offset = [&](int bar, LONG room, LONG size) {
    return size < room ? (room - size) / 2 : -GetScrollPos(handle(), bar);
  };
  painting.Bitmap(section_.get(), offset(SB_HORZ, area.right, shape.bmWidth),
                  offset(SB_VERT, area.bottom, shape.bmHeight));
}

LRESULT ImageView::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  switch (message) {
    case WM_SIZE:
      if (fit_) section_.reset();
      Arrange();
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT:
      Paint();
      return 0;
    case WM_HSCROLL:
      Scroll(SB_HORZ, LOWORD(wparam));
      return 0;
    case WM_VSCROLL:
      Scroll(SB_VERT, LOWORD(wparam));
      return 0;
    case WM_MOUSEWHEEL:
    case WM_MOUSEHWHEEL: {
      const bool across = message == WM_MOUSEHWHEEL || (LOWORD(wparam) & MK_SHIFT) != 0;
      const int bar = across ? SB_HORZ : SB_VERT;
      const int turned = GET_WHEEL_DELTA_WPARAM(wparam) * (message == WM_MOUSEHWHEEL ? -1 : 1);
      ScrollTo(bar, GetScrollPos(handle(), bar) - turned * 2 * kLine / WHEEL_DELTA);
      return 0;
    }
  }
  return Window::OnMessage(message, wparam, lparam);
}

}  // namespace ombview
