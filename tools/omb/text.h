// Words and texts: as people, shells, pages and file systems take them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace omb {

// "1.2.3", the version that the program was built from.
std::string VersionText();

// As HTML and XML write it.
std::string Escaped(const std::string& text);

// In single quotes, as shells read it back.
std::string ShellQuoted(const std::string& text);

// ASCII letters in lower case; others stay.
std::string Lowercase(std::string text);

// "1 bit", "8 bits"
std::string BitsText(int bits);

// A file name as UTF-8, whatever encoding the file names of the system have. Words of the command
// line are UTF-8 as well.
std::string Utf8(const std::filesystem::path& path);
// The file that a word names.
std::filesystem::path PathOf(const std::string& word);

// 1,234,567
std::string Grouped(uint64_t number);

}  // namespace omb
