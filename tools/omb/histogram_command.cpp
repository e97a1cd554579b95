// omb histogram: how often each value of a channel occurs, as a plot.
#include <cstdio>
#include <cstdlib>

#include "commands.h"
#include "errors.h"
#include "files/files.h"
#include "files/pixels_out.h"
#include "files/temporary_file.h"
#include "histogram.h"
#include "terminal.h"
#include "text.h"

namespace omb {

namespace {

constexpr int kPlotMargin = 13;  // columns that a plot needs beside its bars

std::vector<Channel> ChannelsOf(const std::string& name, const PackedDib* dib) {
  if (name == "red") return {Channel::kRed};
  if (name == "green") return {Channel::kGreen};
  if (name == "blue") return {Channel::kBlue};
  if (name == "gray" || IsGray(dib)) return {Channel::kGray};
  return {Channel::kRed, Channel::kGreen, Channel::kBlue};
}

int BarsFor(int columns) {
  if (columns == 0) return 64;
  int bars = 32;
  while (bars < 256 && 2 * bars + kPlotMargin <= columns) bars *= 2;
  return bars;
}

void Print(const std::string& title, const std::vector<Histogram>& histograms) {
  const int columns = TerminalWidth(stdout);
  const int bars = BarsFor(columns);
  std::printf(
      "%s, %s\n\n%s", title.c_str(),
      bars == 256 ? "one column for each value"
                  : ("columns of " + std::to_string(256 / bars) + " values").c_str(),
      TextPlot(histograms, bars, columns > 0 && std::getenv("NO_COLOR") == nullptr).c_str());
}

// A line for each value: value,red,green,blue.
void PrintNumbers(const std::vector<Histogram>& histograms) {
  std::printf("value");
  for (const Histogram& histogram : histograms) std::printf(",%s", histogram.name());
  for (size_t value = 0; value < 256; ++value) {
    std::printf("\n%zu", value);
    for (const Histogram& histogram : histograms) {
      std::printf(",%llu", static_cast<unsigned long long>(histogram.counts[value]));
    }
  }
  std::printf("\n");
}

Image ReadPage(const std::string& file, unsigned page) {
  const Remark remark = [&](const std::string& text) { Complain(file, text); };
  if (page == 1) return ReadImage(PathOf(file), remark);
  ImageFile pages(PathOf(file));
  if (page > pages.pages()) throw FileError("there is no page " + std::to_string(page));
  return pages.Read(page - 1, remark);
}

void Save(const std::filesystem::path& path, const std::string& drawing) {
  TemporaryFile file(path);
  file.output().Write(drawing.data(), drawing.size());
  file.Commit();
}

}  // namespace

int ShowHistogram(const HistogramOptions& options) {
  if (!options.output.empty() && !options.output.ends_with(".svg")) {
    throw UsageError(options.output + ": plots are SVG drawings; name it plot.svg, say");
  }
  std::string file = options.file;  // what a failure is about
  try {
    Image image = ReadPage(file, options.page);
    if (omb_DIBNumColors(image.get()) == 0) image = TrueColor(image.get());
    const std::vector<Histogram> histograms =
        Measure(image.get(), ChannelsOf(options.channel, image.get()));
    const std::string title =
        Utf8(PathOf(file).filename()) + ": " + Grouped(histograms[0].total()) + " pixels";
    if (options.csv) {
      PrintNumbers(histograms);
    } else if (options.output.empty()) {
      Print(title, histograms);
    } else {
      file = options.output;
      Save(PathOf(options.output), SvgPlot(histograms, title));
    }
    return 0;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::runtime_error& error) {
    Complain(file, error.what());
    return 1;
  }
}

}  // namespace omb
