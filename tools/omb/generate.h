// The man page and the shells' completions, made from the commands' options and the table of steps.
#pragma once

#include <string>
#include <vector>

namespace omb {

struct OptionText {
  std::vector<std::string> names;  // "--jobs", "-q"
  std::string argument;            // "N"; empty where it takes none
  std::string help;
};

struct CommandText {
  std::string name, summary, usage;
  std::string footer;
  std::vector<OptionText> options;
};

// `what` is man, bash, zsh or fish. Throws UsageError.
std::string Generate(const std::string& what, const std::string& version,
                     const std::vector<CommandText>& commands);

}  // namespace omb
