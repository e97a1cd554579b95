#include "generate.h"

#include <sstream>

#include "errors.h"
#include "steps/steps.h"
#include "text.h"

namespace omb {

namespace {

// Text as roff prints it.
std::string Roff(const std::string& text) {
  std::string roff;
  for (const char c : text) {
    if ((c == '.' || c == '\'') && (roff.empty() || roff.back() == '\n')) roff += "\\&";
    if (c == '\\') {
      roff += "\\e";
    } else if (c == '-') {
      roff += "\\-";
    } else {
      roff += c;
    }
  }
  return roff;
}

std::string Joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

// What a step's name completes to: with '=' if it needs arguments.
std::string WordOf(const Step& step) {
  const bool needed = !step.parameters.empty() && !step.parameters.front().preset;
  return step.name + std::string(needed ? "=" : "");
}

// The names that the first argument can be; empty where it is a number or a text.
std::vector<std::string> FirstValues(const Step& step) {
  std::vector<std::string> values;
  if (step.parameters.empty()) return values;
  for (const Name& name : step.parameters.front().names) values.emplace_back(name.name);
  return values;
}

std::vector<std::string> OptionNames(const CommandText& command) {
  std::vector<std::string> names;
  for (const OptionText& option : command.options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return names;
}

void WriteStep(std::ostream& out, const Step& step) {
  out << ".TP\n.B " << Roff(step.Usage()) << "\n" << Roff(step.summary) << ".\n";
  if (!step.parameters.empty()) out << ".RS\n";
  for (const Parameter& parameter : step.parameters) {
    out << ".IP \\fI" << Roff(parameter.name) << "\\fR 4\n"
        << Roff(parameter.help + (": " + parameter.Form()));
    if (parameter.preset) out << Roff(" (" + *parameter.preset + " if left out)");
    out << ".\n";
  }
  if (!step.parameters.empty()) out << ".RE\n";
  if (step.note != nullptr) out << ".IP\n" << Roff(step.note) << "\n";
}

std::string ManPage(const std::string& version, const std::vector<CommandText>& commands) {
  std::ostringstream out;
  out << ".TH OMB 1 \"\" \"" << version << "\" \"Ombrilo\"\n.SH NAME\n"
      << "omb \\- image processing on the command line\n.SH SYNOPSIS\n.nf\n";
  for (const CommandText& command : commands) out << Roff("omb " + command.usage) << "\n";
  out << ".fi\n.SH DESCRIPTION\nReads BMP, PNG, JPEG and TIFF files, runs steps on them and writes "
         "the results. Each step is an operation of the library Ombrilo.\n.SH COMMANDS\n";
  for (const CommandText& command : commands) {
    out << ".SS " << command.name << "\n" << Roff(command.summary) << ".\n";
    for (const OptionText& option : command.options) {
      out << ".TP\n.B " << Roff(Joined(option.names, ", "))
          << (option.argument.empty() ? "" : " \\fI" + Roff(option.argument) + "\\fR") << "\n"
          << Roff(option.help) << ".\n";
    }
    if (!command.footer.empty()) out << ".PP\n" << Roff(command.footer);
  }
  out << ".SH STEPS\nArguments follow '=' in this order, or as name=value in any. From the "
         "bracket on they can be left out.\n";
  std::string family;
  for (const Step* step : AllSteps()) {
    if (step->Family() != family) out << ".SS " << (family = step->Family()) << "\n";
    WriteStep(out, *step);
  }
  out << ".SH EXIT STATUS\n0 when all is done, 1 when something failed, as reported on standard "
         "error, 2 for a wrong command line.\n.SH EXAMPLES\n.nf\n"
      << Roff(
             "omb apply scan.png clean.tif crop=10,10,200,300 enhancepage=median,3x3 binary\n"
             "omb apply --out-dir small --format jpg *.tif -- scale=50%\n"
             "omb apply --format png - - invert < in.png > out.png\n")
      << ".fi\n";
  return out.str();
}

std::string BashCompletion(const std::vector<CommandText>& commands) {
  std::ostringstream out;
  std::vector<std::string> names, words;
  for (const CommandText& command : commands) names.push_back(command.name);
  for (const Step* step : AllSteps()) words.push_back(WordOf(*step));
  out << "# bash completion of omb\n_omb() {\n"
         "  local cur=${COMP_WORDS[COMP_CWORD]} step= steps="
      << ShellQuoted(Joined(words, " "))
      << "\n  compopt +o nospace\n"
         "  # '=' is a word of its own.\n"
         "  if [[ $cur == = ]]; then\n    step=${COMP_WORDS[COMP_CWORD - 1]} cur=\n"
         "  elif ((COMP_CWORD > 1)) && [[ ${COMP_WORDS[COMP_CWORD - 1]} == = ]]; then\n"
         "    step=${COMP_WORDS[COMP_CWORD - 2]}\n  fi\n"
         "  case $step in\n";
  for (const Step* step : AllSteps()) {
    const std::vector<std::string> values = FirstValues(*step);
    if (values.empty()) continue;
    out << "    " << step->name << ") COMPREPLY=($(compgen -W " << ShellQuoted(Joined(values, " "))
        << " -- \"$cur\")); return ;;\n";
  }
  out << "    ?*) return ;;\n  esac\n"
         "  if ((COMP_CWORD == 1)); then\n    COMPREPLY=($(compgen -W "
      << ShellQuoted(Joined(names, " ")) << " -- \"$cur\"))\n    return\n  fi\n"
      << "  case ${COMP_WORDS[1]} in\n";
  for (const CommandText& command : commands) {
    out << "    " << command.name << ")\n      if [[ $cur == -* ]]; then\n"
        << "        COMPREPLY=($(compgen -W " << ShellQuoted(Joined(OptionNames(command), " "))
        << " -- \"$cur\"))\n";
    if (command.name == "list") {
      out << "      else\n        COMPREPLY=($(compgen -W \"kernels ${steps//=/}\" -- \"$cur\"))\n";
    } else if (command.name == "apply") {
      out << "      else\n        COMPREPLY=($(compgen -f -- \"$cur\"))\n"
             "        ((COMP_CWORD < 4)) || COMPREPLY+=($(compgen -W \"$steps\" -- \"$cur\"))\n"
             "        [[ ${COMPREPLY[0]-} != *= ]] || compopt -o nospace\n";
    } else {
      out << "      else\n        COMPREPLY=($(compgen -f -- \"$cur\"))\n";
    }
    out << "      fi\n      ;;\n";
  }
  out << "  esac\n}\ncomplete -o filenames -F _omb omb\n";
  return out.str();
}

// In the lists of _describe a colon separates a word from its description.
std::string ZshEntry(const std::string& word, const std::string& help) {
  return "    " + ShellQuoted(word + ":" + help) + "\n";
}

std::string ZshCompletion(const std::vector<CommandText>& commands) {
  std::ostringstream out;
  out << "#compdef omb\n# zsh completion of omb\n_omb() {\n  local -a commands steps names "
         "options\n"
         "  commands=(\n";
  for (const CommandText& command : commands) out << ZshEntry(command.name, command.summary);
  out << "  )\n  steps=(\n";
  for (const Step* step : AllSteps()) out << ZshEntry(WordOf(*step), step->summary);
  out << "  )\n  names=(\n";
  for (const Step* step : AllSteps()) out << ZshEntry(step->name, step->summary);
  out << "  )\n  if ((CURRENT == 2)); then\n    _describe command commands\n    return\n  fi\n"
         "  case $words[2] in\n";
  for (const CommandText& command : commands) {
    out << "    " << command.name << ") options=(\n";
    for (const OptionText& option : command.options) {
      for (const std::string& name : option.names) out << ZshEntry(name, option.help);
    }
    out << "    ) ;;\n";
  }
  out << "  esac\n  if [[ $PREFIX == -* ]]; then\n    _describe option options\n    return\n  fi\n"
         "  case $words[2] in\n    list) _describe step names ;;\n"
         "    apply)\n      _files\n      ((CURRENT < 5)) || _describe step steps -S ''\n      ;;\n"
         "    *) _files ;;\n  esac\n}\n_omb \"$@\"\n";
  return out.str();
}

std::string FishCompletion(const std::vector<CommandText>& commands) {
  std::ostringstream out;
  out << "# fish completion of omb\n";
  for (const CommandText& command : commands) {
    out << "complete -c omb -n __fish_use_subcommand -f -a " << command.name << " -d "
        << ShellQuoted(command.summary) << "\n";
    for (const OptionText& option : command.options) {
      out << "complete -c omb -n '__fish_seen_subcommand_from " << command.name << "'";
      for (const std::string& name : option.names) {
        out << (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
      }
      out << (option.argument.empty() ? "" : " -r") << " -d " << ShellQuoted(option.help) << "\n";
    }
  }
  for (const Step* step : AllSteps()) {
    const std::string help = " -d " + ShellQuoted(step->summary) + "\n";
    out << "complete -c omb -n '__fish_seen_subcommand_from apply' -a "
        << ShellQuoted(WordOf(*step)) << help
        << "complete -c omb -n '__fish_seen_subcommand_from list' -f -a " << ShellQuoted(step->name)
        << help;
    for (const std::string& value : FirstValues(*step)) {
      out << "complete -c omb -n '__fish_seen_subcommand_from apply' -a "
          << ShellQuoted(std::string(step->name) + "=" + value) << "\n";
    }
  }
  return out.str();
}

}  // namespace

std::string Generate(const std::string& what, const std::string& version,
                     const std::vector<CommandText>& commands) {
  if (what == "man") return ManPage(version, commands);
  if (what == "bash") return BashCompletion(commands);
  if (what == "zsh") return ZshCompletion(commands);
  if (what == "fish") return FishCompletion(commands);
  throw UsageError("generate: man, bash, zsh or fish is needed, not '" + what + "'");
}

}  // namespace omb
