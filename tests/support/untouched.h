// Images for operations that refuse or have nothing to do.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "support/image.h"

namespace ombrilo::test {

// In the end it must be the same block with the same bytes.
class Untouched : public TestImage {
 public:
  explicit Untouched(TestImage image)
      : TestImage(std::move(image)), address_(get()), bytes_(Bytes()) {}
  // Of noise.
  explicit Untouched(int bits, int width = 9, int height = 8)
      : Untouched(ImageBuilder(bits, width, height)
                      .Pixels(Noise(bits < 32 ? 1u << bits : ~0u, 4))
                      .Filler(0x5A)
                      .Build()) {}
  ~Untouched() {
    EXPECT_EQ(get(), address_);
    EXPECT_EQ(Bytes(), bytes_);
  }

 private:
  const PackedDib* address_;
  std::vector<uint8_t> bytes_;
};

}  // namespace ombrilo::test
