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
  window_class.style = CS_DBLCLKS | CS_HREDRAW | CS_VREDRAW;
  window_class.lpfnWndProc = Procedure;
  window_class.hInstance = instance;
  window_class.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  window_class.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(1));
  window_class.lpszClassName = class_name;
  RegisterClassExW(&window_class);
  CreateWindowExW(extended_style, class_name, L"", style, CW_USEDEFAULT, CW_USEDEFAULT,
                  CW_USEDEFAULT, CW_USEDEFAULT, parent, nullptr, instance, this);
}

LRESULT Window::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_ERASEBKGND) return 1;
  if (message == WM_PAINT) {
    Painting painting(handle_);
    Paint(painting);
    return 0;
  }
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

void Painting::Line(int x1, int y1, int x2, int y2, COLORREF color, int width) {
  const GdiObject<HPEN> pen(CreatePen(PS_SOLID, width, color));
  const HGDIOBJ previous = SelectObject(dc_, pen.get());
  MoveToEx(dc_, x1, y1, nullptr);
  LineTo(dc_, x2, y2);
  SelectObject(dc_, previous);
}

void Painting::Bitmap(HBITMAP bitmap, RECT where) {
  BITMAP shape = {};
  GetObjectW(bitmap, sizeof shape, &shape);
  const HDC source = CreateCompatibleDC(dc_);
  const HGDIOBJ previous = SelectObject(source, bitmap);
  SetStretchBltMode(dc_, COLORONCOLOR);
  StretchBlt(dc_, where.left, where.top, where.right - where.left, where.bottom - where.top, source,
             0, 0, shape.bmWidth, shape.bmHeight, SRCCOPY);
  SelectObject(source, previous);
  DeleteDC(source);
}

namespace {

int current_dpi = 96;
GdiObject<HFONT> font;

}  // namespace

void SetDpi(int dpi) {
  if (dpi == current_dpi) return;
  current_dpi = dpi;
  font.reset();
}

int Dpi() { return current_dpi; }

HFONT WindowFont() {
  if (!font) {
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof metrics;
    SystemParametersInfoForDpi(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0,
                               static_cast<UINT>(current_dpi));
    font.reset(CreateFontIndirectW(&metrics.lfMessageFont));
  }
  return font.get();
}

int Scaled(int pixels) { return MulDiv(pixels, current_dpi, 96); }

}  // namespace ombview
