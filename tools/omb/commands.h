// What omb does, one function for each word after `omb`. Each returns the exit status: 0 for done,
// 1 when something failed, which is reported on stderr. Each throws UsageError for a wrong command
// line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace omb {

struct ApplyOptions {
  // INPUT OUTPUT STEP..., or FILES... when there is an output directory.
  std::vector<std::string> words;
  // The words after `--`, which are steps; none if there was no `--`.
  std::optional<std::vector<std::string>> after_dashes;
  std::string out_dir;  // empty for a single file
  std::string format;   // empty: from the extension
  unsigned jobs = 0;    // files at a time; 0: as many as there are processors
  unsigned page = 0;    // from 1; 0: all there are
  int quality = 92;     // of JPEG data
  std::optional<std::string> compression;
  uint64_t memory_limit = 0;  // bytes; 0: none
  bool quiet = false;         // neither remarks nor progress
};

struct HistogramOptions {
  std::string file;
  std::string channel;  // "red", "green", "blue" or "gray"; empty: whatever suits the image
  std::string output;   // an SVG file; empty: stdout
  bool csv = false;     // numbers on stdout
  unsigned page = 1;
};

int Apply(const ApplyOptions& options);
int Info(const std::vector<std::string>& files, bool json);
int List(const std::string& step, bool json);  // empty: all steps
int ShowHistogram(const HistogramOptions& options);
int Gallery(const std::vector<std::string>& words);  // INPUT... DIR

// Writes "omb: where: message" to stderr; without the middle when `where` is empty.
void Complain(const std::string& where, const std::string& message);

}  // namespace omb
