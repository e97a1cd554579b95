// KERNAL records: the built-in ones and those that callers make. The spelling is the interface's.
#pragma once

#include "ombrilo/ombrilo.h"

namespace ombrilo {

inline constexpr uint32_t kKernalCount = 45;

// What omb_getKERNAL hands out, by index.
extern const KERNAL kKernals[kKernalCount];

// Where series of records for three sizes begin, and a single one.
enum KernalIndex {
  kHipass3x3 = 6,
  kHigauss5x5 = 9,
  kHorzedge3x3 = 12,
  kLaplace3x3 = 15,
  kLopass3x3 = 18,
  kSculpt = 27,
  kUnsharp3x3 = 35,
  kVertedge3x3 = 39,
};

// Built-in records that omb_getKERNAL does not hand out.
extern const KERNAL kGauss3x3;
extern const KERNAL kGauss5x5;
extern const KERNAL kGauss7x7;

}  // namespace ombrilo
