// The tone routines of omb_EnhancePage(): curves from histograms, of the whole image or of blocks.
//
// By blocks, a pixel's new level is blended from the curves of the four blocks around it (S. M.
// Pizer et al., "Adaptive histogram equalization and its variations", 1987). For all pixels of a
// row the two rows of curves have the same weights, so they are blended first, which leaves two
// look-ups per pixel. The image is read once for the histograms and once more when it is written.
#include "page/tone.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "core/buffer.h"
#include "core/packed_dib.h"
#include "core/pixels.h"
#include "core/read_ahead.h"
#include "page/tone_curve.h"
#include "rows/row_functions.h"
#include "tone/histogram.h"

namespace ombrilo {

namespace {

constexpr int32_t kPaperReach = 2;  // in blocks

// The levels of an image: its bytes, or the luminances at 24 bits.
class Levels {
 public:
  explicit Levels(const Dib& dib) : dib_(dib), color_(dib.bit_count() == 24) {}

  LevelCounts Count(int32_t x, int32_t width, int32_t y, int32_t height) const {
    Histogram histogram;
    const auto begin = static_cast<size_t>(x), bytes = PixelBytes() * static_cast<size_t>(width);
    const int32_t fetched = width < dib_.width() ? y + height - kRowsAhead : y;
    for (int32_t row = y; row < y + height; ++row) {
      if (row < fetched) ReadAhead(Pixel(begin, row + kRowsAhead), bytes);
      ForRuns(row, x, width, [&](uint8_t*, const uint8_t* levels, size_t, size_t count) {
        histogram.Add(levels, count);
      });
    }
    LevelCounts counts;
    counts.all = 0;
    for (size_t v = 0; v < 256; ++v) counts.all += counts.count[v] = histogram[v];
    return counts;
  }

  // Changes the first `width` levels from row y on by change(levels, first, count).
  template <class Change>
  void ChangeRow(int32_t y, int32_t width, Change&& change) const {
    ForRuns(y, 0, width, [&](uint8_t* pixels, uint8_t* levels, size_t first, size_t count) {
      change(levels, first, count);
      if (color_) simd::Active().give_luminance(pixels, count, levels);
    });
  }

 private:
  static constexpr int32_t kRowsAhead = 8;  // are fetched: a block's do not continue each other

  size_t PixelBytes() const { return color_ ? 3 : 1; }
  uint8_t* Pixel(size_t x, int32_t y) const { return dib_.row(y) + PixelBytes() * x; }

  // use(pixels, levels, first, count) for pixels [x, x + width) of a row.
  template <class Use>
  void ForRuns(int32_t y, int32_t x, int32_t width, Use&& use) const {
    const auto begin = static_cast<size_t>(x), end = begin + static_cast<size_t>(width);
    alignas(simd::kCacheLine) uint8_t luminances[kRun];
    for (size_t first = begin; first < end; first += kRun) {
      const size_t count = std::min(kRun, end - first);
      uint8_t* const pixels = Pixel(first, y);
      if (color_) simd::Active().luminance(pixels, count, luminances);
      use(pixels, color_ ? luminances : pixels, first, count);
    }
  }

  const Dib& dib_;
  bool color_;
};

struct Request {
  int32_t curve, strength, cut;
};

// On one axis, a new level is blended from those of blocks `first` and `first` + 1, the second with
// a weight in 256ths.
struct Place {
  int32_t first, weight;
};

// Blocks along one axis.
struct BlockAxis {
  int32_t size, block, count;

  BlockAxis(int32_t pixels, int32_t block_size)
      : size(pixels),
        block(block_size),
        count(static_cast<int32_t>(
            std::max<int64_t>(1, (int64_t{pixels} + block_size / 2) / block_size))) {}

  int32_t Start(int32_t i) const { return i * block; }
  int32_t Length(int32_t i) const { return i + 1 < count ? block : size - Start(i); }
  Place Find(int32_t at) const {
    const int64_t t = 2 * int64_t{at} + 1 - block;
    if (t < 0) return {0, 0};
    const int64_t first = t / (2 * block);
    if (first >= count - 1) return {count - 1, 0};
    return {static_cast<int32_t>(first), static_cast<int32_t>(t % (2 * block) * 128 / block)};
  }
};

class BlockTone {
 public:
  // Takes its memory at once.
  BlockTone(const Dib& dib, const Request& request, int32_t block)
      : levels_(dib),
        request_(request),
        across_(dib.width(), block),
        down_(dib.height(), block),
        columns_(static_cast<size_t>(across_.count)) {
    const uint64_t blocks = request.curve == OMB_TONE_EQUALIZE
                                ? 0
                                : uint64_t{columns_} * static_cast<uint64_t>(down_.count);
    if (blocks > SIZE_MAX / sizeof(ToneLevels)) return;
    tones_ = NewScratchBuffer<ToneLevels>(static_cast<size_t>(blocks));
    weights_ = NewScratchBuffer<uint8_t>(static_cast<size_t>(dib.width()));
    curves_ = NewScratchBuffer<uint8_t>(2 * 256 * columns_);
    pairs_ = NewScratchBuffer<uint32_t>(256 * columns_);
    if (!*this) return;
    for (int32_t x = 0; x < dib.width(); ++x) {
      weights_[static_cast<size_t>(x)] = static_cast<uint8_t>(across_.Find(x).weight);
    }
  }
  explicit operator bool() const { return tones_ && weights_ && curves_ && pairs_; }

  void Run() {
    if (request_.curve != OMB_TONE_EQUALIZE) MeasureBlocks();
    int32_t made = 0;  // rows of curves; a row's blocks are read before a pixel of theirs changes
    for (int32_t y = 0; y < down_.size; ++y) {
      const Place place = down_.Find(y);
      const int32_t last = std::min(place.first + 1, down_.count - 1);
      for (; made <= last; ++made) MakeCurves(made);
      const uint8_t* const first_row = Curves(place.first);
      simd::Active().blend_curves(first_row, Curves(last), place.weight, columns_, pairs_.get());
      ChangeRow(y);
    }
  }

 private:
  uint8_t* Curves(int32_t row) const {
    return curves_.get() + static_cast<size_t>(row % 2) * 256 * columns_;
  }
  LevelCounts CountBlock(int32_t column, int32_t row) const {
    return levels_.Count(across_.Start(column), across_.Length(column), down_.Start(row),
                         down_.Length(row));
  }

  void MeasureBlocks() {
    LevelCounts whole = {};
    ToneLevels* tone = tones_.get();
    for (int32_t row = 0; row < down_.count; ++row) {
      for (int32_t column = 0; column < across_.count; ++column) {
        const LevelCounts counts = CountBlock(column, row);
        whole.Add(counts);
        *tone++ = MeasureTone(counts, request_.cut, kPaperReach);
      }
    }
    // A block without paper, for example inside a photograph, is not brightened without limit.
    const int32_t paper = MeasureTone(whole, request_.cut, kPaperReach).paper;
    least_paper_ = std::max(1, paper / 4);
  }

  void MakeCurves(int32_t row) {
    uint8_t* curve = Curves(row);
    for (int32_t column = 0; column < across_.count; ++column, curve += 256) {
      if (request_.curve == OMB_TONE_EQUALIZE) {
        EqualiseCurve(CountBlock(column, row), request_.cut, curve);
      } else {
        const auto [low, high, own_paper] =
            tones_[static_cast<size_t>(row) * columns_ + static_cast<size_t>(column)];
        const int32_t paper = std::max<int32_t>(own_paper, least_paper_);
        if (request_.curve == OMB_TONE_STRETCH) {
          StretchCurve(std::min<int32_t>(low, high / 2), high, curve);
        }
        if (request_.curve == OMB_TONE_WHITEN) WhitenCurve(low, paper, curve);
        if (request_.curve == OMB_TONE_LOGARITHM) LogarithmCurve(paper, curve);
      }
      BlendCurve(request_.strength, curve);
    }
  }

  // Changes a row by the curves blended for it.
  void ChangeRow(int32_t y) const {
    levels_.ChangeRow(y, across_.size, [&](uint8_t* levels, size_t first, size_t count) {
      for (size_t done = 0; done < count;) {
        const auto x = static_cast<int32_t>(first + done);
        const int32_t column = across_.Find(x).first;
        // Where the next pair of curves begins.
        const int64_t next = int64_t{column + 1} * across_.block + across_.block / 2;
        const size_t n = column == across_.count - 1
                             ? count - done
                             : std::min(count - done, static_cast<size_t>(next - x));
        simd::Active().map_between_curves(levels + done, n, weights_.get() + first + done,
                                          pairs_.get() + 256 * static_cast<size_t>(column));
        done += n;
      }
    });
  }

  Levels levels_;
  Request request_;
  BlockAxis across_, down_;
  size_t columns_;  // of blocks
  int32_t least_paper_ = 1;
  Buffer<ToneLevels> tones_;  // of all blocks
  Buffer<uint8_t> weights_;   // of the second curve, by column of pixels
  Buffer<uint8_t> curves_;    // of two rows of blocks
  Buffer<uint32_t> pairs_;    // of blended curves: a block's levels, and those of the next
};

// The rows of an image or, if they have no padding, all of them as one.
struct Runs {
  explicit Runs(const Dib& dib) : count(dib.height()), width(dib.width()) {
    if (!dib.unpadded() || dib.pixels() > INT32_MAX) return;
    width = static_cast<int32_t>(dib.pixels());
    count = 1;
  }
  int32_t count, width;
};

void MakeWholeCurve(const Levels& levels, const Runs& runs, const Request& request, int32_t size,
                    uint8_t* curve) {
  if (request.curve == OMB_TONE_LOGARITHM) {
    LogarithmCurve(255, curve);
  } else {
    const LevelCounts counts = levels.Count(0, runs.width, 0, runs.count);
    const ToneLevels tone = MeasureTone(counts, request.cut, size);
    if (request.curve == OMB_TONE_EQUALIZE) EqualiseCurve(counts, request.cut, curve);
    if (request.curve == OMB_TONE_STRETCH) StretchCurve(tone.low, tone.high, curve);
    if (request.curve == OMB_TONE_WHITEN) WhitenCurve(tone.low, tone.paper, curve);
  }
  BlendCurve(request.strength, curve);
}

// The image, if it is one of 8 or 24 bits.
std::optional<Dib> Open(PackedDib* image) {
  const auto dib = Dib::Open(image);
  if (!dib || (dib->bit_count() != 8 && dib->bit_count() != 24)) return std::nullopt;
  return dib;
}

bool IsCurve(int32_t curve) { return curve >= OMB_TONE_EQUALIZE && curve <= OMB_TONE_LOGARITHM; }

}  // namespace

int32_t EnhanceTone(PackedDib* image, int32_t curve, int32_t size, int32_t strength, int32_t cut) {
  const auto dib = Open(image);
  if (!dib || !IsCurve(curve)) return 0;
  if (strength < 1 || dib->pixel_rows() == 0) return 1;
  const Levels levels(*dib);
  uint8_t table[256];
  const Runs runs(*dib);
  MakeWholeCurve(levels, runs, {curve, std::min(strength, 100), cut}, size, table);
  for (int32_t y = 0; y < runs.count; ++y) {
    levels.ChangeRow(y, runs.width, [&](uint8_t* values, size_t, size_t count) {
      simd::Active().apply_table(values, count, table);
    });
  }
  return 1;
}

int32_t EnhanceToneByBlocks(PackedDib* image, int32_t curve, int32_t block, int32_t strength,
                            int32_t cut) {
  const auto dib = Open(image);
  if (!dib || !IsCurve(curve) || block < 16 || block > 32767) return 0;
  if (strength < 1 || dib->pixel_rows() == 0) return 1;
  BlockTone tone(*dib, {curve, std::min(strength, 100), cut}, block);
  if (!tone) return 0;
  tone.Run();
  return 1;
}

}  // namespace ombrilo
