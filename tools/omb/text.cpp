#include "text.h"

#include "ombrilo/ombrilo.h"

namespace omb {

std::string VersionText() {
  return std::to_string(OMB_VERSION_MAJOR) + "." + std::to_string(OMB_VERSION_MINOR) + "." +
         std::to_string(OMB_VERSION_PATCH);
}

std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      default:
        escaped += c;
    }
  }
  return escaped;
}

std::string ShellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

std::string Lowercase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

std::string BitsText(int bits) { return std::to_string(bits) + (bits == 1 ? " bit" : " bits"); }

std::string Utf8(const std::filesystem::path& path) {
  const std::u8string text = path.u8string();
  return {text.begin(), text.end()};
}

std::filesystem::path PathOf(const std::string& word) {
  return std::u8string(word.begin(), word.end());
}

std::string Grouped(uint64_t number) {
  std::string digits = std::to_string(number);
  for (size_t i = digits.size(); i > 3;) digits.insert(i -= 3, ",");
  return digits;
}

}  // namespace omb
