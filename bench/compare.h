// Benchmark rows: a call of the library beside the call that a user would otherwise write, on the
// same work. Ratios come from one run, in which both sides alternate.
#pragma once

#include <functional>
#include <string>

namespace ombrilo::bench {

// Adds a row. `pixels` is the work of one call; both callables may be called any number of times.
// A peer may be missing.
void Compare(const std::string& row, double pixels, std::function<void()> ours,
             const std::string& peer_name = "", std::function<void()> peer = nullptr);

// Likewise for calls that use up their input: `prepare` runs before each call of ours, outside the
// measured time.
void ComparePrepared(const std::string& row, double pixels, std::function<void()> prepare,
                     std::function<void()> ours, const std::string& peer_name = "",
                     std::function<void()> peer = nullptr);

// The rows of each family.
void AddGeometryRows();
void AddImageRows();
void AddNeighbourhoodRows();
void AddPageRows();
void AddQuantizeRows();
void AddToneRows();

}  // namespace ombrilo::bench
