// Benchmark rows: a call of the library beside the calls that a user would otherwise write, on the
// same work. Both sides take turns in one run, on processor time.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "inputs.h"

namespace ombrilo::bench {

// An image's values, a byte each; the indices of an indexed image.
struct Values {
  int width, height, channels;
  std::vector<uint8_t> bytes;
};

struct Peer {
  std::string name;
  std::function<void()> call;
  std::function<Values()> result;  // of the last call
};

// Results agree where they mean the same: this far from the image's edges, and within a tolerance
// (for other ways to round).
struct Agreement {
  int border = 0;
  int tolerance = 0;
};

// An operation in place, called again and again on its own results.
void InPlace(const std::string& row, const PackedDib* image, std::function<void(PackedDib*)> ours,
             Peer peer = {}, std::optional<Agreement> agreement = {});
// One that only reads.
void Reading(const std::string& row, const PackedDib* image, std::function<void(PackedDib*)> ours,
             Peer peer = {});
// An operation that replaces its image: each call gets a fresh copy, which is not measured, and its
// result is released, which is.
void Replacing(const std::string& row, const PackedDib* image,
               std::function<void(PackedDib**)> ours, Peer peer = {},
               std::optional<Agreement> agreement = {});

// One in place whose work depends on the image: each call gets a fresh copy, which is not measured.
void OnFreshCopies(const std::string& row, const PackedDib* image,
                   std::function<void(PackedDib*)> ours, Peer peer = {});

// Any other row. `pixels` is the work of one call; `prepare` runs before each call of ours, outside
// the measured time.
void Compare(const std::string& row, double pixels, std::function<void()> ours,
             const std::string& peer_name = "", std::function<void()> peer = nullptr);
void ComparePrepared(const std::string& row, double pixels, std::function<void()> prepare,
                     std::function<void()> ours, const std::string& peer_name = "",
                     std::function<void()> peer = nullptr);

// Peers are written as WITH_OPENCV(InMat(...)) and the like, which is no peer where there is none.
#ifdef OMBRILO_HAVE_OPENCV
#define WITH_OPENCV(...) __VA_ARGS__
// In place on a copy, or into a matrix that exists.
Peer InMat(const std::string& name, const PackedDib* image, std::function<void(cv::Mat&)> call);
Peer OntoMat(const std::string& name, const PackedDib* image,
             std::function<void(const cv::Mat&, cv::Mat&)> call);
#else
#define WITH_OPENCV(...) ::ombrilo::bench::Peer()
#endif
#ifdef OMBRILO_HAVE_LEPTONICA
#define WITH_LEPTONICA(...) __VA_ARGS__
// `call` gives its own argument, changed in place, or a new image.
Peer OnPix(const std::string& name, const PackedDib* image, std::function<PIX*(PIX*)> call);
// The same on a colored indexed image: its color table is taken away before the call, and the
// result's colors are mapped to the nearest of the table's.
Peer OnIndexedPix(const std::string& name, const PackedDib* image, std::function<PIX*(PIX*)> call);
#else
#define WITH_LEPTONICA(...) ::ombrilo::bench::Peer()
#endif

// The rows of each family.
void AddGeometryRows();
void AddImageRows();
void AddNeighbourhoodRows();
void AddPageRows();
void AddQuantizeRows();
void AddToneRows();

}  // namespace ombrilo::bench
