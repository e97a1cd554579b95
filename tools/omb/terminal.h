// The terminal that a person may be sitting at.
#pragma once

#include <cstdio>

namespace omb {

bool IsTerminal(std::FILE* file);

// Columns of the terminal that the file is; 0 when it is none.
int TerminalWidth(std::FILE* file);

// Lets a Windows console show UTF-8 and colors; terminals elsewhere do.
void PrepareTerminal();

}  // namespace omb
