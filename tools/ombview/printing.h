// Images on paper.
#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <string>

#include "image.h"
#include "print_layout.h"

namespace ombview {

// The device context of a printer.
using Printer = std::shared_ptr<std::remove_pointer_t<HDC>>;

// The printer that a person chooses, with the paper lying as the image does until the person says
// otherwise. Null when it was cancelled.
Printer AskForPrinter(HWND owner, const PackedDib* image);

// Told the share that is done; what it throws ends the work.
using PrintWatch = std::function<void(double share)>;

// Prints an image on a page. Throws std::runtime_error with what went wrong, Cancelled when the
// person gave up a file to print to, and what the watch throws; nothing is printed then.
void PrintImage(HDC printer, const PackedDib* image, const std::wstring& name,
                const PrintWatch& watch);

// Draws an image on a page, at most as fine as its dots. Throws as PrintImage() does.
void DrawOnPage(HDC page, const Paper& paper, const PackedDib* image, const PrintWatch& watch);

}  // namespace ombview
