// Text for pages and drawings.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace omb {

// As it stands in HTML and XML.
std::string Escaped(const std::string& text);

// A file name as UTF-8, whatever the file names of this machine are. That is what words of the
// command line are too.
std::string Utf8(const std::filesystem::path& path);
// The file that a word names.
std::filesystem::path PathOf(const std::string& word);

// 1,234,567
std::string Grouped(uint64_t number);

}  // namespace omb
