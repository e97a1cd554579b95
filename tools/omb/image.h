// An image as the host holds it: an owned packed DIB and the remarks made on the way.
#pragma once

#include <cstdlib>
#include <memory>

#include "ombrilo/ombrilo.h"

namespace omb {

struct FreeDib {
  void operator()(PackedDib* dib) const { std::free(dib); }
};
using Image = std::unique_ptr<PackedDib, FreeDib>;

}  // namespace omb
