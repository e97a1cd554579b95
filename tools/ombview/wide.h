// Text between the host's UTF-8 and Windows' UTF-16.
#pragma once

#include <string>

namespace ombview {

std::wstring Wide(const std::string& utf8);
std::string Narrow(const std::wstring& utf16);

}  // namespace ombview
