// KERNAL records: the built-in ones and those that callers make. The spelling is the interface's.
#pragma once

#include "ombrilo/ombrilo.h"

namespace ombrilo {

inline constexpr uint32_t kKernalCount = 45;

// What omb_getKERNAL hands out, by index.
extern const KERNAL kKernals[kKernalCount];

// Built-in records that omb_getKERNAL does not hand out.
extern const KERNAL kGauss3x3;
extern const KERNAL kGauss5x5;
extern const KERNAL kGauss7x7;

}  // namespace ombrilo
