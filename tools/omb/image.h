// An image as the host holds it: a packed DIB that it owns.
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
