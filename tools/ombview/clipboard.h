// The clipboard: its CF_DIB is a packed DIB, as the library's images are.
#pragma once

#include <windows.h>

#include <vector>

#include "image.h"

namespace ombview {

bool ClipboardHasImage();
// False when the clipboard cannot be had, or memory ran out.
bool CopyToClipboard(HWND owner, const PackedDib* image);
// What the clipboard says is a packed DIB; empty when there is none.
std::vector<uint8_t> BytesOfClipboard(HWND owner);

}  // namespace ombview
