#include "window.h"

namespace ombview {

RECT Window::ClientRect() const {
  RECT rect = {};
  GetClientRect(handle_, &rect);
  return rect;
}

void Window::Create(const wchar_t* class_name, DWORD style, DWORD extended_style, HWND parent) {
  const HINSTANCE instance = GetModuleHandleW(nullptr);
  WNDCLASSEXW window_class = {};
  window_class.cbSize = sizeof window_class;
  window_class.lpfnWndProc = Procedure;
  window_class.hInstance = instance;
  window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  window_class.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
  window_class.lpszClassName = class_name;
  RegisterClassExW(&window_class);
  CreateWindowExW(extended_style, class_name, L"", style, CW_USEDEFAULT, CW_USEDEFAULT,
                  CW_USEDEFAULT, CW_USEDEFAULT, parent, nullptr, instance, this);
}

LRESULT Window::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  return DefWindowProcW(handle_, message, wparam, lparam);
}

LRESULT CALLBACK Window::Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE) {
    const auto* creation = reinterpret_cast<const CREATESTRUCTW*>(lparam);
    static_cast<Window*>(creation->lpCreateParams)->handle_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(creation->lpCreateParams));
  }
  auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  if (self == nullptr) return DefWindowProcW(window, message, wparam, lparam);
  return self->OnMessage(message, wparam, lparam);
}

Painting::Painting(HWND window) : window_(window) {
  const HDC screen = BeginPaint(window_, &paint_);
  GetClientRect(window_, &area_);
  dc_ = CreateCompatibleDC(screen);
  canvas_.reset(CreateCompatibleBitmap(screen, area_.right, area_.bottom));
  previous_bitmap_ = SelectObject(dc_, canvas_.get());
  previous_font_ = SelectObject(dc_, WindowFont());
  SetBkMode(dc_, TRANSPARENT);
}

Painting::~Painting() {
  BitBlt(paint_.hdc, 0, 0, area_.right, area_.bottom, dc_, 0, 0, SRCCOPY);
  SelectObject(dc_, previous_font_);
  SelectObject(dc_, previous_bitmap_);
  DeleteDC(dc_);
  EndPaint(window_, &paint_);
}

void Painting::Text(const wchar_t* text, RECT where, COLORREF color, UINT format) {
  SetTextColor(dc_, color);
  DrawTextW(dc_, text, -1, &where, format | DT_NOPREFIX);
}

void Painting::Fill(RECT where, COLORREF color) {
  SetDCBrushColor(dc_, color);
  FillRect(dc_, &where, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void Painting::Bitmap(HBITMAP bitmap, int x, int y) {
  BITMAP shape = {};
  GetObjectW(bitmap, sizeof shape, &shape);
  const HDC source = CreateCompatibleDC(dc_);
  const HGDIOBJ previous = SelectObject(source, bitmap);
  BitBlt(dc_, x, y, shape.bmWidth, shape.bmHeight, source, 0, 0, SRCCOPY);
  SelectObject(source, previous);
  DeleteDC(source);
}

HFONT WindowFont() {
  static const GdiObject<HFONT> font = [] {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
    return GdiObject<HFONT>(CreateFontIndirectW(&metrics.lfMessageFont));
  }();
  return font.get();
}

int Scaled(int pixels) {
  static const int dpi = [] {
    const HDC screen = GetDC(nullptr);
    const int value = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return value;
  }();
  return MulDiv(pixels, dpi, 96);
}

}  // namespace ombview
