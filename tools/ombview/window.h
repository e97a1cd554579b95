// Windows as objects: messages go to member functions, and handles are released.
#pragma once

#include <windows.h>

#include <memory>
#include <type_traits>

namespace ombview {

class Painting;

// A window of a class of its own. The object outlives the window.
class Window {
 public:
  Window() = default;
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  HWND handle() const { return handle_; }
  RECT ClientRect() const;
  void Repaint() const { InvalidateRect(handle_, nullptr, FALSE); }

 protected:
  ~Window() = default;
  // Registers the class and makes the window. The caller sets its size.
  void Create(const wchar_t* class_name, DWORD style, DWORD extended_style, HWND parent);
  // Draws the client area from scratch.
  virtual void Paint(Painting& painting) = 0;
  // Answers a message. What it does not know goes to the default.
  virtual LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam);

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

  HWND handle_ = nullptr;
};

struct DeleteGdiObject {
  void operator()(void* object) const { DeleteObject(object); }
};
template <class Handle>
using GdiObject = std::unique_ptr<std::remove_pointer_t<Handle>, DeleteGdiObject>;

// Draws a window's client area, and shows it all at once so that nothing flickers.
class Painting {
 public:
  explicit Painting(HWND window);
  ~Painting();
  Painting(const Painting&) = delete;
  Painting& operator=(const Painting&) = delete;

  HDC dc() const { return dc_; }
  // In the font of the system's windows.
  void Text(const wchar_t* text, RECT where, COLORREF color, UINT format = DT_LEFT);
  void Fill(RECT where, COLORREF color);
  void Line(int x1, int y1, int x2, int y2, COLORREF color, int width = 1);
  void Bitmap(HBITMAP bitmap, RECT where);  // stretched when it has another size

 private:
  HWND window_;
  PAINTSTRUCT paint_;
  RECT area_;
  HDC dc_;
  GdiObject<HBITMAP> canvas_;
  HGDIOBJ previous_bitmap_, previous_font_;
};

// The resolution of the screen on which the program's window is, in dots per inch. Windows tells
// when the window comes to another one.
void SetDpi(int dpi);
int Dpi();

// The font that the system uses in its windows, at this resolution. It lives until the resolution
// changes.
HFONT WindowFont();

// Pixels of a usual screen as pixels of this one.
int Scaled(int pixels);

}  // namespace ombview
