#include "printing.h"

#include <commdlg.h>

#include <new>
#include <stdexcept>

#include "rendering.h"
#include "worker.h"

namespace ombview {

namespace {

Paper PaperOf(HDC printer) {
  const auto ask = [&](int what) { return GetDeviceCaps(printer, what); };
  const int left = ask(PHYSICALOFFSETX), top = ask(PHYSICALOFFSETY);
  return {{ask(PHYSICALWIDTH), ask(PHYSICALHEIGHT)},
          {left, top, left + ask(HORZRES), top + ask(VERTRES)},
          {ask(LOGPIXELSX), ask(LOGPIXELSY)}};
}

// What the spooler's functions return when they fail.
void Check(int result) {
  if (result > 0) return;
  const DWORD code = GetLastError();
  // The person was asked for a file to print to.
  if (result == SP_APPABORT || result == SP_USERABORT || code == ERROR_CANCELLED ||
      code == ERROR_PRINT_CANCELLED) {
    throw Cancelled();
  }
  if (result == SP_OUTOFMEMORY || code == ERROR_NOT_ENOUGH_MEMORY) throw std::bad_alloc();
  if (result == SP_OUTOFDISK || code == ERROR_DISK_FULL) {
    throw std::runtime_error("the disk is full");
  }
  throw std::runtime_error("the printer's queue did not take the page (error " +
                           std::to_string(code) + ")");
}

// A document that is given up unless it is brought to its end.
class PrintJob {
 public:
  PrintJob(HDC printer, const std::wstring& name) : printer_(printer) {
    DOCINFOW document = {};
    document.cbSize = sizeof document;
    document.lpszDocName = name.c_str();
    Check(StartDocW(printer, &document));
  }
  ~PrintJob() {
    if (!ended_) AbortDoc(printer_);
  }
  PrintJob(const PrintJob&) = delete;
  PrintJob& operator=(const PrintJob&) = delete;

  void End() {
    ended_ = true;
    Check(EndDoc(printer_));
  }

 private:
  HDC printer_;
  bool ended_ = false;
};

void Draw(HDC page, const PackedDib* image, const Rect& place) {
  const int width = static_cast<int>(omb_DIBWidth(image));
  const int height = static_cast<int>(omb_DIBHeight(image));
  const int rows = StretchDIBits(
      page, place.left, place.top, place.width(), place.height(), 0, 0, width, height,
      omb_FindDIBBits(image), reinterpret_cast<const BITMAPINFO*>(image), DIB_RGB_COLORS, SRCCOPY);
  if (rows == 0 || rows == static_cast<int>(GDI_ERROR)) {
    throw std::runtime_error("the printer does not take images of this kind");
  }
}

}  // namespace

Printer AskForPrinter(HWND owner, const PackedDib* image) {
  PRINTDLGW dialog = {};
  dialog.lStructSize = sizeof dialog;
  // The usual printer's settings; there may be none.
  dialog.Flags = PD_RETURNDEFAULT;
  if (PrintDlgW(&dialog) && dialog.hDevMode != nullptr) {
    auto* mode = static_cast<DEVMODEW*>(GlobalLock(dialog.hDevMode));
    const bool wide = omb_DIBWidth(image) > omb_DIBHeight(image);
    mode->dmFields |= DM_ORIENTATION;
    mode->dmOrientation = wide ? DMORIENT_LANDSCAPE : DMORIENT_PORTRAIT;
    GlobalUnlock(dialog.hDevMode);
  }
  dialog.hwndOwner = owner;
  dialog.Flags = PD_RETURNDC | PD_NOPAGENUMS | PD_NOSELECTION | PD_USEDEVMODECOPIESANDCOLLATE;
  const BOOL chosen = PrintDlgW(&dialog);
  for (const HGLOBAL block : {dialog.hDevMode, dialog.hDevNames}) {
    if (block != nullptr) GlobalFree(block);
  }
  return chosen ? Printer(dialog.hDC, DeleteDC) : nullptr;
}

void DrawOnPage(HDC page, const Paper& paper, const PackedDib* image, const PrintWatch& watch) {
  const int width = static_cast<int>(omb_DIBWidth(image));
  const int height = static_cast<int>(omb_DIBHeight(image));
  // A page's coordinates begin where the printer can print.
  const Rect on_sheet = PlaceOn(paper, width, height);
  const int x = on_sheet.left - paper.printable.left, y = on_sheet.top - paper.printable.top;
  const Point size = {on_sheet.width(), on_sheet.height()};
  SetStretchBltMode(page, HALFTONE);
  SetBrushOrgEx(page, 0, 0, nullptr);
  if (width < size.x || height < size.y) return Draw(page, image, {x, y, x + size.x, y + size.y});
  Reduce(image, {0, 0, width, height}, size, [&](const PackedDib* strip, int top) {
    const int bottom = top + static_cast<int>(omb_DIBHeight(strip));
    Draw(page, strip, {x, y + top, x + size.x, y + bottom});
    watch(double(bottom) / size.y);
  });
}

void PrintImage(HDC printer, const PackedDib* image, const std::wstring& name,
                const PrintWatch& watch) {
  PrintJob job(printer, name);
  Check(StartPage(printer));
  DrawOnPage(printer, PaperOf(printer), image, watch);
  Check(EndPage(printer));
  job.End();
}

}  // namespace ombview
