// omb apply: steps on one file, or on many.
#include <algorithm>
#include <atomic>
#include <filesystem>
#include <map>
#include <new>
#include <thread>

#include "commands.h"
#include "errors.h"
#include "files/files.h"
#include "files/long_path.h"
#include "progress.h"
#include "steps/steps.h"
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
  Format format;
};

Format FormatFor(const fs::path& path, const std::string& name) {
  try {
    return name.empty() ? FormatOfPath(path) : FormatOfName(name);
  } catch (const FileError& error) {
    throw UsageError((name.empty() ? Utf8(path) : "--format " + name) + ": " + error.what());
  }
}

// Reads, runs and writes. Returns what went wrong, or nothing.
std::string Do(const Job& job, const std::vector<Call>& calls, const Remark& remark) {
  try {
    Image image = ReadImage(PathOf(job.input), remark);
    for (const Call& call : calls) {
      try {
        RunCall(call, image);
      } catch (const StepError& error) {
        return job.input + ": " + call.step->name + ": " + error.what();
      }
    }
    try {
      WriteImage(job.output, job.format, image.get());
    } catch (const FileError& error) {
      return Utf8(job.output) + ": " + error.what();
    }
    return {};
  } catch (const std::bad_alloc&) {
    return job.input + ": memory ran out";
  } catch (const std::exception& error) {
    return job.input + ": " + error.what();
  }
}

// What a file system that does not tell A from a calls the file.
std::string Folded(const fs::path& path) {
  std::string name = Utf8(path);
  for (char& c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return name;
}

// One output for each input. Throws where an output would replace another one, or an input.
std::vector<Job> JobsOf(const std::vector<std::string>& files, const ApplyOptions& options) {
  std::vector<Job> jobs;
  std::map<std::string, std::string> inputs;  // by output
  for (const std::string& file : files) {
    const fs::path input = PathOf(file);
    const Format format = FormatFor(input, options.format);
    fs::path name = input.stem();
    name += std::string(".") + ExtensionOf(format);
    const fs::path output = PathOf(options.out_dir) / name;
    const auto [other, is_new] = inputs.emplace(Folded(output), file);
    if (!is_new) {
      throw UsageError(other->second + " and " + file + " would both become " + Utf8(output));
    }
    std::error_code ignored;
    if (fs::equivalent(LongPath(input), LongPath(output), ignored)) {
      throw UsageError(file + " would be replaced by its own result; choose another --out-dir");
    }
    jobs.push_back({file, output, format});
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
    Progress progress(jobs.size());
    std::atomic<size_t> next = 0;
    const auto work = [&] {
      for (size_t i; (i = next++) < jobs.size();) {
        const std::string& input = jobs[i].input;
        failures[i] = Do(jobs[i], calls, [&](const std::string& remark) {
          progress.Say("omb: " + input + ": " + remark);
        });
        progress.Advance(input);
      }
    };
    const unsigned wanted =
        options.jobs != 0 ? options.jobs : std::max(1u, std::thread::hardware_concurrency());
    std::vector<std::jthread> helpers;
    for (size_t i = 1; i < std::min<size_t>(wanted, jobs.size()); ++i) helpers.emplace_back(work);
    work();
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
  const fs::path output = PathOf(words[1]);
  const Job job = {words[0], output, FormatFor(output, options.format)};
  const std::string failure =
      Do(job, calls, [&](const std::string& remark) { Complain(job.input, remark); });
  if (failure.empty()) return 0;
  Complain("", failure);
  return 1;
}

}  // namespace

int Apply(const ApplyOptions& options) {
  return options.out_dir.empty() ? ApplyToOne(options) : ApplyToMany(options);
}

}  // namespace omb
