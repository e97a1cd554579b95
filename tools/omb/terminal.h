// The terminal that a person may be sitting at.
#pragma once

#include <cstdio>

namespace omb {

bool IsTerminal(std::FILE* file);

// Columns of the terminal; 0 if the file is not a terminal.
int TerminalWidth(std::FILE* file);

// Lets a Windows console show UTF-8 and colors; other terminals already do.
void PrepareTerminal();

}  // namespace omb
