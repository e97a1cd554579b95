// Rows to be measured, and their report.
#pragma once

#include "compare.h"

namespace ombrilo::bench {

struct Row {
  std::string name;
  double pixels = 0;
  double bytes = 0;  // that have to be read and written; 0 where nobody counts them
  Peer peer = {};
  std::function<void()> check = nullptr;      // ends the program where results differ
  std::function<void(Row&)> start = nullptr;  // before the row, whose sizes it may set
  std::function<void()> prepare = nullptr;    // before each call of ours
  std::function<void()> ours = nullptr;

  double time = 0;   // nanoseconds of processor time for a pixel
  double ratio = 0;  // the peer's time to ours
  double share = 0;  // the time of a memcpy that moves as many bytes to ours
  double beside_time = 0, beside_ratio = 0;  // those of another run

  // Lets go of the images.
  void Forget() {
    start = nullptr, check = prepare = ours = peer.call = nullptr, peer.result = nullptr;
  }
};

void Add(Row row);

// Keeps the rows of a run in a file, for a report of two runs.
bool SaveRun(const std::vector<Row>& rows, const std::string& path);

// Puts the rows into docs/performance.md, between its marks, and draws docs/performance.svg.
// `beside` is a run with narrower row functions that was saved; empty for none.
bool WriteReport(std::vector<Row> rows, const std::string& beside);

// Measures operations at sizes from icons to posters, puts them into docs/performance.md and draws
// docs/sizes.svg. Words choose operations, which are printed only.
bool MeasureSizes(const std::vector<std::string>& words, double seconds);

// What both reports are made with.
double ProcessorTime();  // nanoseconds
// Whether one of the words is in the name; no words choose all.
bool Chosen(const std::string& name, const std::vector<std::string>& words);
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string Machine();
// Puts text into docs/performance.md, between <!-- mark --> and <!-- /mark -->.
bool ReplaceMeasured(const std::string& mark, const std::string& text);

}  // namespace ombrilo::bench
