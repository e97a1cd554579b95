// omb: the command line of Ombrilo. This file knows the arguments and nothing else.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <new>
#include <system_error>

#include "commands.h"
#include "errors.h"
#include "files/temporary_file.h"
#include "generate.h"
#include "memory_limit.h"
#include "terminal.h"
#include "text.h"

namespace {

constexpr const char* kMoreHelp = "'omb --help' shows how to use it\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  omb apply scan.png page.bmp crop=10,10,200,300 enhancepage=median,3x3 binary\n"
    "  omb apply --out-dir small --format jpg *.png -- scale=50% 'kernel=unsharp 3x3'\n"
    "  omb histogram photo.jpg --channel gray\n"
    "  omb histogram photo.jpg -o plot.svg\n"
    "  omb gallery photo.jpg pages/   then open pages/index.html\n"
    "\n"
    "'omb COMMAND --help' tells more about a command, 'omb list' shows the steps.\n"
    "Files are BMP, PNG, JPEG or TIFF.\n";

constexpr const char* kApplyHelp =
    "Each STEP is a name, with arguments after '=' where it takes some: invert, crop=0,0,99,99.\n"
    "They run in order; without any, the file is only converted. 'omb list' shows them all.\n"
    "\n"
    "All pages of a TIFF file are processed. '-' is standard input or output.\n"
    "\n"
    "With many files, one that fails does not stop the others; failures are reported at the end,\n"
    "and the exit status is then 1.\n";

constexpr const char* kHistogramHelp =
    "Without a channel, gray images show gray, others red, green and blue.\n";

constexpr const char* kGalleryHelp =
    "DIR/index.html is one file with everything in it: it can be mailed or put on a server.\n";

// Writes usage lines as people know them: INPUT OUTPUT STEP... instead of [words...].
class HelpFormatter : public CLI::Formatter {
 public:
  explicit HelpFormatter(std::string usage) : usage_(std::move(usage)) {}
  std::string make_usage(const CLI::App*, std::string) const override {
    return "\nUsage: omb " + usage_ + "\n";
  }
  std::string make_positionals(const CLI::App*) const override { return {}; }
  const std::string& usage() const { return usage_; }

 private:
  std::string usage_;
};

// The help of the commands, for the man page and the completions.
std::vector<omb::CommandText> TextsOf(const CLI::App& app) {
  std::vector<omb::CommandText> texts;
  for (const CLI::App* command : app.get_subcommands({})) {
    if (command->get_group().empty()) continue;
    const auto* formatter = static_cast<const HelpFormatter*>(command->get_formatter().get());
    omb::CommandText text = {command->get_name(),
                             command->get_description(),
                             formatter->usage(),
                             command->get_footer(),
                             {}};
    for (const CLI::Option* option : command->get_options()) {
      if (option->get_positional() || option->get_name() == "--help") continue;
      omb::OptionText& words = text.options.emplace_back();
      for (const std::string& name : option->get_snames()) words.names.push_back("-" + name);
      for (const std::string& name : option->get_lnames()) words.names.push_back("--" + name);
      if (option->get_items_expected_max() > 0) words.argument = option->get_option_text();
      words.help = option->get_description();
    }
    texts.push_back(std::move(text));
  }
  return texts;
}

CLI::App* AddCommand(CLI::App& app, const char* name, const char* summary, const char* usage) {
  CLI::App* command = app.add_subcommand(name, summary);
  command->formatter(std::make_shared<HelpFormatter>(usage));
  return command;
}

int Main(std::vector<std::string> words) {
  omb::ApplyOptions apply_options;
  const auto dashes = std::find(words.begin(), words.end(), "--");
  if (dashes != words.end() && words.front() == "apply") {
    apply_options.after_dashes.emplace(dashes + 1, words.end());
    words.erase(dashes, words.end());
  }

  CLI::App app("Image processing on the command line, with the operations of Ombrilo.", "omb");
  app.require_subcommand(1);
  app.allow_windows_style_options(false);
  const std::string version = "omb " + omb::VersionText();
  app.set_version_flag("-V,--version", version);

  app.formatter(std::make_shared<HelpFormatter>("COMMAND ..."));

  CLI::App* apply =
      AddCommand(app, "apply", "Run steps on an image, or on many",
                 "apply INPUT OUTPUT STEP...\n"
                 "       omb apply --out-dir DIR [--format FORMAT] [--jobs N] FILE... -- STEP...");
  apply->footer(kApplyHelp);
  apply->add_option("words", apply_options.words);
  apply->add_option("--out-dir", apply_options.out_dir, "Where the results of many files go")
      ->option_text("DIR");
  apply
      ->add_option("--format", apply_options.format,
                   "bmp, png, jpg or tiff, whatever the name says")
      ->option_text("FORMAT");
  apply->add_option("--jobs", apply_options.jobs, "Files at a time; all processors if not given")
      ->option_text("N")
      ->check(CLI::Range(1, 256));
  apply->add_option("--page", apply_options.page, "One page of a TIFF file, from 1; otherwise all")
      ->option_text("N")
      ->check(CLI::Range(1, 65535));
  apply->add_option("--quality", apply_options.quality, "Of JPEG, 1 to 100; 92 if not given")
      ->option_text("N")
      ->check(CLI::Range(1, 100));
  apply
      ->add_option("--compression", apply_options.compression,
                   "Of TIFF: none, packbits, lzw, deflate, jpeg, g4; of PNG: 0 to 9")
      ->option_text("NAME");
  std::string memory;
  apply
      ->add_option("--memory-limit", memory,
                   "No more memory than this for all jobs together, such as 500M or 2G")
      ->option_text("SIZE");
  apply->add_flag("-q,--quiet", apply_options.quiet, "No remarks and no progress, failures alone");

  std::vector<std::string> files;
  CLI::App* info =
      AddCommand(app, "info", "Describe images: size, depth, colors", "info [--json] FILE...");
  info->add_option("FILE", files)->required();
  bool json = false;
  info->add_flag("--json", json, "For programs");

  std::string step;
  CLI::App* list = AddCommand(app, "list", "Show the steps there are, or all about one",
                              "list [--json] [STEP | kernels]");
  list->footer("'omb list kernels' draws the built-in kernels and shapes.\n");
  list->add_option("STEP", step);
  list->add_flag("--json", json, "For programs: steps, parameters, ranges, defaults");

  omb::HistogramOptions histogram_options;
  CLI::App* histogram = AddCommand(app, "histogram", "Plot how often each value occurs",
                                   "histogram FILE [--channel CHANNEL] [--csv | -o PLOT.svg]");
  histogram->footer(kHistogramHelp);
  histogram->add_option("FILE", histogram_options.file)->required();
  histogram->add_option("--channel", histogram_options.channel, "red, green, blue or gray")
      ->option_text("CHANNEL")
      ->transform(CLI::IsMember({"red", "green", "blue", "gray"}, CLI::ignore_case));
  histogram
      ->add_option("-o,--output", histogram_options.output,
                   "An SVG file instead of a plot in the terminal")
      ->option_text("PLOT.svg");
  histogram->add_flag("--csv", histogram_options.csv, "Numbers instead of a plot");
  histogram->add_option("--page", histogram_options.page, "Of a TIFF file, from 1")
      ->option_text("N")
      ->check(CLI::Range(1, 65535));

  CLI::App* gallery =
      AddCommand(app, "gallery", "Write a page that shows every step", "gallery INPUT... DIR");
  gallery->footer(kGalleryHelp);
  gallery->add_option("words", files);

  std::string what;
  CLI::App* generate = AddCommand(app, "generate", "Print the man page or a shell's completions",
                                  "generate man | bash | zsh | fish");
  generate->group("");  // for those who install the program
  generate->add_option("WHAT", what)->required();

  app.footer(kExamples);  // last, or the commands above would inherit it

  if (words.empty()) throw omb::UsageError("a command is needed", app.help());
  if (words[0] == "help") {
    words.erase(words.begin());
    words.push_back("--help");
  }
  const bool is_option = words[0].starts_with('-');
  const auto named = [&](const CLI::App* command) { return command->get_name() == words[0]; };
  if (!is_option && app.get_subcommands(named).empty()) {
    throw omb::UsageError("there is no command '" + words[0] + "'", kMoreHelp);
  }
  try {
    std::reverse(words.begin(), words.end());
    app.parse(std::move(words));
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    throw omb::UsageError(error.what(), kMoreHelp);
  }
  if (!memory.empty()) apply_options.memory_limit = omb::ParseMemory(memory);
  if (*apply) return omb::Apply(apply_options);
  if (*info) return omb::Info(files, json);
  if (*list) return omb::List(step, json);
  if (*histogram) return omb::ShowHistogram(histogram_options);
  if (*generate) {
    std::fputs(omb::Generate(what, version, TextsOf(app)).c_str(), stdout);
    return 0;
  }
  return omb::Gallery(files);
}

// Whether all that was printed has arrived.
bool OutputArrived() {
  errno = 0;
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return true;
  const std::error_code error(errno != 0 ? errno : EIO, std::generic_category());
  omb::Complain("standard output", error.message());
  return false;
}

}  // namespace

void omb::Complain(const std::string& where, const std::string& message) {
  std::fprintf(stderr, "omb: %s%s%s\n", where.c_str(), where.empty() ? "" : ": ", message.c_str());
}

#ifdef _WIN32
// The narrow main() would lose characters that the system's code page lacks.
int wmain(int argc, wchar_t** argv) {
#else
int main(int argc, char** argv) {
#endif
  omb::PrepareTerminal();
  omb::RemoveTemporaryFilesOnSignals();
  try {
    std::vector<std::string> words;
    for (int i = 1; i < argc; ++i) words.push_back(omb::Utf8(argv[i]));
    const int status = Main(std::move(words));
    return OutputArrived() ? status : 1;
  } catch (const omb::UsageError& error) {
    omb::Complain("", error.what());
    std::fputs(error.usage().c_str(), stderr);
    return 2;
  } catch (const std::bad_alloc&) {
    omb::Complain("", "memory ran out");
    return 1;
  } catch (const std::exception& error) {
    omb::Complain("", error.what());
    return 1;
  }
}
