// omb apply: steps on one file, or on many.
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <map>
#include <new>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "commands.h"
#include "errors.h"
#include "files/files.h"
#include "files/long_path.h"
#include "memory_limit.h"
#include "progress.h"
#include "steps/steps.h"
#include "terminal.h"
#include "text.h"

namespace omb {

namespace {

namespace fs = std::filesystem;

constexpr const char* kUsage =
    "usage: omb apply INPUT OUTPUT STEP...\n"
    "       omb apply --out-dir DIR [--format FORMAT] [--jobs N] FILES... -- STEP...\n";

struct Job {
  std::string input;
  fs::path output;
  Format format = Format::kBmp;
  std::string problem;  // why there is nothing to be done
};

std::string NameOf(const std::string& input) { return input == "-" ? "standard input" : input; }

std::string NameOf(const fs::path& output) {
  return output == "-" ? "standard output" : Utf8(output);
}

// Runs the command's steps on files. Any thread may call it.
class Work {
 public:
  Work(const ApplyOptions& options, std::vector<Call> calls, Progress& progress)
      : options_(options),
        calls_(std::move(calls)),
        write_options_{options.quality, options.compression},
        progress_(progress) {}

  // Reads, runs and writes. Returns what went wrong, or nothing.
  std::string Do(const Job& job, bool quiet) const {
    size_t parts = 1;  // that the progress still waits for
    const std::string failure = Try(job, quiet || options_.quiet, parts);
    while (parts-- > 0) progress_.Advance(NameOf(job.input));
    return failure;
  }

 private:
  std::string Try(const Job& job, bool quiet, size_t& parts) const {
    const std::string name = NameOf(job.input);
    if (!job.problem.empty()) return name + ": " + job.problem;
    try {
      ImageFile file(PathOf(job.input));
      const size_t pages = file.pages();
      const auto [first, last] = Range(pages, job.format);
      const bool several = last - first > 1;
      progress_.Expect(last - first - 1);
      parts = last - first;
      std::optional<ImageWriter> writer;
      for (size_t page = first; page < last; ++page) {
        const std::string where = several ? "page " + std::to_string(page + 1) + ": " : "";
        const Remark remark = [&](const std::string& text) {
          if (!quiet) progress_.Say("omb: " + name + ": " + where + text);
        };
        Metadata metadata;
        Image image = file.Read(page, remark, &metadata);
        for (const Call& call : calls_) {
          try {
            RunCall(call, image);
          } catch (const StepError& error) {
            return name + ": " + where + call.step->name + ": " + error.what();
          }
        }
        try {
          if (!writer) writer.emplace(job.output, job.format, write_options_, remark);
          writer->Add(image.get(), metadata);
          if (page + 1 == last) writer->Commit();
        } catch (const FileError& error) {
          return NameOf(job.output) + ": " + error.what();
        }
        if (page + 1 < last) progress_.Advance(name);
        --parts;
      }
      parts = 1;
      return {};
    } catch (const std::bad_alloc&) {
      return name + ": memory ran out";
    } catch (const std::exception& error) {
      return name + ": " + error.what();
    }
  }

  // The pages that are wanted of a file that has `pages` of them.
  std::pair<size_t, size_t> Range(size_t pages, Format format) const {
    if (options_.page > pages) {
      throw FileError("there is no page " + std::to_string(options_.page) + "; the file has " +
                      std::to_string(pages));
    }
    if (options_.page > 0) return {options_.page - 1, options_.page};
    if (pages > 1 && format != Format::kTiff) {
      throw FileError(std::string("it has ") + std::to_string(pages) + " pages, and a " +
                      TitleOf(format) + " file holds one: --page N picks one, TIFF takes all");
    }
    return {0, pages};
  }

  const ApplyOptions& options_;
  const std::vector<Call> calls_;
  const WriteOptions write_options_;
  Progress& progress_;
};

// The format of an output. Throws UsageError where an option is at fault, and FileError where a
// name is.
Format FormatFor(const fs::path& path, const ApplyOptions& options) {
  Format format = Format::kBmp;
  if (options.format.empty()) {
    if (path == "-")
      throw UsageError("standard output has no name that says its format; --format does");
    format = FormatOfPath(path);
  } else {
    try {
      format = FormatOfName(options.format);
    } catch (const FileError& error) {
      throw UsageError("--format " + options.format + ": " + error.what());
    }
  }
  try {
    CheckOptions(format, {options.quality, options.compression});
  } catch (const FileError& error) {
    throw UsageError("--compression " + *options.compression + ": " + error.what());
  }
  return format;
}

// One output for each input. Throws where an output would replace another one, or an input.
std::vector<Job> JobsOf(const std::vector<std::string>& files, const ApplyOptions& options) {
  std::vector<Job> jobs;
  std::map<std::string, std::string> inputs;  // by output
  for (const std::string& file : files) {
    const fs::path input = PathOf(file);
    if (file == "-") throw UsageError("standard input has no name that a result could take");
    Format format = Format::kBmp;
    try {
      format = FormatFor(input, options);
    } catch (const FileError& error) {
      jobs.push_back({file, {}, format, error.what()});
      continue;
    }
    fs::path name = input.stem();
    name += std::string(".") + ExtensionOf(format);
    const fs::path output = PathOf(options.out_dir) / name;
    // Some file systems do not tell A from a.
    const auto [other, is_new] = inputs.emplace(Lowercase(Utf8(output)), file);
    if (!is_new) {
      throw UsageError(other->second + " and " + file + " would both become " + Utf8(output));
    }
    std::error_code ignored;
    if (fs::equivalent(LongPath(input), LongPath(output), ignored)) {
      throw UsageError(file + " would be replaced by its own result; choose another --out-dir");
    }
    jobs.push_back({file, output, format, {}});
  }
  return jobs;
}

int ApplyToMany(const ApplyOptions& options) {
  if (!options.after_dashes) throw UsageError("'--' is missing between files and steps", kUsage);
  if (options.words.empty()) throw UsageError("there are no files before '--'", kUsage);
  const std::vector<Call> calls = ParseCalls(*options.after_dashes);
  const std::vector<Job> jobs = JobsOf(options.words, options);
  std::error_code error;
  fs::create_directories(LongPath(PathOf(options.out_dir)), error);
  if (error) {
    Complain(options.out_dir, error.message());
    return 1;
  }

  std::vector<std::string> failures(jobs.size());
  {
    Progress progress(jobs.size(), options.quiet);
    const Work work(options, calls, progress);
    std::atomic<size_t> next = 0;
    const auto run = [&] {
      for (size_t i; (i = next++) < jobs.size();) failures[i] = work.Do(jobs[i], false);
    };
    const unsigned wanted =
        options.jobs != 0 ? options.jobs : std::max(1u, std::thread::hardware_concurrency());
    {
      std::vector<std::jthread> helpers;
      try {
        for (size_t i = 1; i < std::min<size_t>(wanted, jobs.size()); ++i)
          helpers.emplace_back(run);
      } catch (const std::system_error&) {
        // The system gives no more threads: those that run do the work.
      }
      run();
    }
    // Next to others a file may have run out of memory under the limit; alone it gets all.
    for (size_t i = 0; options.memory_limit != 0 && wanted > 1 && i < jobs.size(); ++i) {
      if (!failures[i].empty()) failures[i] = work.Do(jobs[i], true);
    }
  }

  size_t failed = 0;
  for (const std::string& failure : failures) {
    if (failure.empty()) continue;
    ++failed;
    Complain("", failure);
  }
  if (failed == 0) return 0;
  Complain("", std::to_string(failed) + " of " + std::to_string(jobs.size()) + " files failed");
  return 1;
}

int ApplyToOne(const ApplyOptions& options) {
  std::vector<std::string> words = options.words;
  if (options.after_dashes) {
    words.insert(words.end(), options.after_dashes->begin(), options.after_dashes->end());
  }
  if (words.size() < 2) throw UsageError("INPUT and OUTPUT are needed", kUsage);
  const std::vector<Call> calls = ParseCalls({words.begin() + 2, words.end()});
  Job job = {words[0], PathOf(words[1]), {}, {}};
  try {
    job.format = FormatFor(job.output, options);
  } catch (const FileError& error) {
    throw UsageError(words[1] + ": " + error.what());
  }
  if (job.output == "-" && IsTerminal(stdout)) {
    throw UsageError("standard output is a terminal; redirect it to a file or a program");
  }
  std::string failure;
  {
    Progress progress(1, options.quiet);
    failure = Work(options, calls, progress).Do(job, false);
  }
  if (failure.empty()) return 0;
  Complain("", failure);
  return 1;
}

}  // namespace

int Apply(const ApplyOptions& options) {
  if (options.memory_limit != 0) LimitMemory(options.memory_limit);
  return options.out_dir.empty() ? ApplyToOne(options) : ApplyToMany(options);
}

}  // namespace omb
