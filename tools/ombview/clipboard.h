// The clipboard: its CF_DIB is a packed DIB, as the library's images are.
#pragma once

#include <windows.h>

#include "files/files.h"

namespace ombview {

bool ClipboardHasImage();
// False when the clipboard cannot be had, or memory ran out.
bool CopyToClipboard(HWND owner, const PackedDib* image);
// Null when the clipboard cannot be had. Throws FileError.
omb::Image ImageOfClipboard(HWND owner, const omb::Remark& remark);

}  // namespace ombview
