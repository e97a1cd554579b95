// omb_DoConvoluteDIB against a reference that works on the bytes of the block.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "support/kernals.h"
#include "support/naive.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

int32_t Wrap(int64_t value) { return static_cast<int32_t>(static_cast<uint32_t>(value)); }

std::vector<uint8_t> Reference(const TestImage& image, const KERNAL& kernel, int passes,
                               int32_t strength) {
  int32_t divisor = 0;
  for (int i = 0; i < kernel.count; ++i) divisor = Wrap(int64_t{divisor} + kernel.weights[i]);
  const int right = kernel.width - kernel.anchorX - 1, before = kernel.height - kernel.anchorY - 1;
  const Margins margins = {before, kernel.anchorY, kernel.anchorX, right};
  return NaiveBytes(image, image.bit_count() / 8, margins, passes, [&](const Neighbour& p) {
    int32_t value = 0;
    for (int i = 0; i < kernel.count; ++i) {
      const int64_t weight = kernel.weights[i];
      value = Wrap(value + weight * p(kernel.offsets[2 * i], kernel.offsets[2 * i + 1]));
    }
    if (divisor != 0) value = Wrap(int64_t{value} / divisor);
    if (strength != 10) {
      const int own = p(0, 0);
      value = Wrap(int64_t{Wrap(int64_t{Wrap(int64_t{value} - own)} * strength)} / 10 + own);
    }
    return std::clamp(Wrap(int64_t{value} + kernel.bias), 0, 255);
  });
}

void Expect(const TestImage& image, const KERNAL& kernel, int passes, int32_t strength) {
  ExpectAtEveryLevel(image, Reference(image, kernel, passes, strength), omb_DoConvoluteDIB, &kernel,
                     passes, strength);
}

TEST(KernalConvolution, BuiltInRecordsAgreeWithTheReference) {
  for (const int bits : {8, 24}) {
    for (const auto& [width, height] : {std::pair{61, 13}, {7, 7}, {4, 11}}) {
      const TestImage image =
          ImageBuilder(bits, width, height).Pixels(Noise(1u << bits, 21)).Filler(0x77).Build();
      for (uint32_t i = 0; i < 45; ++i) {
        SCOPED_TRACE(omb_getKERNAL(i)->name);
        for (const int32_t strength : {10, 3, -20, 25}) {
          Expect(image, *omb_getKERNAL(i), 1, strength);
        }
        Expect(image, *omb_getKERNAL(i), 3, 7);
      }
    }
  }
}

TEST(KernalConvolution, AnyRecordAgreesWithTheReference) {
  struct Case {
    int width, height, anchor_x, anchor_y, bias;
    std::vector<Entry> entries;
  };
  const Case cases[] = {
      {3, 3, 1, 1, 7, {}},                                              // no entries
      {1, 1, 0, 0, -40, {{0, 0, 5}}},                                   // the pixel alone
      {4, 2, 0, 1, 0, {{0, 0, 3}, {3, 1, 4}, {3, 1, -2}, {3, 1, -2}}},  // repeated, sum to nothing
      {3, 4, 2, 0, 3, {{-2, 0, 77}, {0, -3, 100}, {0, 0, 90}}},         // 32-bit sums
      {2, 2, 0, 0, 0, {{0, 0, 127}, {1, -1, 130}}},  // the most that 16 bits hold
      {2, 2, 0, 0, 0, {{0, 0, 127}, {1, -1, 131}}},
      {2, 2, 0, 0, 255, {{0, 0, 128}, {1, -1, -128}}},
      {3, 2, 0, 0, 0, {{0, 0, 129}, {1, -1, -129}, {2, 0, 1}}},
      {2, 2, 0, 0, 1, {{0, 0, -300}, {1, -1, 170}}},            // negative divisor
      {2, 1, 0, 0, 0, {{0, 0, INT32_MAX}, {1, 0, 12345678}}},   // wraps
      {2, 1, 0, 0, 0, {{0, 0, INT32_MIN}, {1, 0, INT32_MAX}}},  // divided by -1, wraps
      {2, 1, 0, 0, INT32_MAX, {{0, 0, 1 << 23}, {1, 0, 3}}},    // bias wraps
      {3, 3, 1, 1, INT32_MIN, {{0, 0, 1}, {1, 1, -1}}},
      {2, 3, -1, 3, 0, {{1, 3, 1}, {2, 2, 1}}},  // anchors outside the extent
      {6, 1, 5, 0, 0, {{-5, 0, 1}, {-4, 0, 1}, {-3, 0, 1}, {-2, 0, 1}, {-1, 0, 1}, {0, 0, -6}}},
  };
  for (const Case& c : cases) {
    const Kernal kernal(c.width, c.height, c.anchor_x, c.anchor_y, c.bias, c.entries);
    for (const int bits : {8, 24}) {
      const TestImage image =
          ImageBuilder(bits, 37, 9)
              .Pixels([=](int x, int y) {
                const uint32_t kind = Noise(8, 23)(x, y);  // black and white often enough
                return kind == 0 ? 0u : kind == 1 ? (1u << bits) - 1 : Noise(1u << bits, 22)(x, y);
              })
              .Build();
      for (const int32_t strength : {10, 0, 5, INT32_MAX}) {
        SCOPED_TRACE(testing::Message() << (&c - cases) << " strength " << strength);
        Expect(image, *kernal.get(), 2, strength);
      }
    }
  }
}

// Sums just below a multiple of the divisor, where a rounded quotient would show.
TEST(KernalConvolution, DivisionTruncatesForEveryDivisor) {
  const TestImage image =
      ImageBuilder(8, 256, 2)
          .Pixels([](int x, int y) { return static_cast<uint32_t>(y == 0 || x == 0 ? x : x - 1); })
          .Build();
  std::vector<int> divisors = {-65537, 65535, 65537, 100001, 131071, 16777215, 16777217};
  for (int divisor = -300; divisor <= 1000; ++divisor) divisors.push_back(divisor);
  for (const int divisor : divisors) {
    for (const int part : {1, 2, 7}) {
      const Kernal kernal(1, 2, 0, 0, 0, {{0, 0, divisor - part}, {0, -1, part}});
      const auto expected = Reference(image, *kernal.get(), 1, 10);
      TestImage copy = image.Clone();
      omb_DoConvoluteDIB(copy.get(), kernal.get(), 1, 10);
      ASSERT_EQ(copy.Bytes(), expected) << divisor << " " << part;
    }
  }
}

TEST(KernalConvolution, RefusalsAndNothingToDo) {
  const Untouched image(8);
  const auto call = [&](const KERNAL* kernel, int passes = 1) {
    return omb_DoConvoluteDIB(image.get(), kernel, passes, 10);
  };
  const KERNAL* lopass = omb_getKERNAL(18);
  EXPECT_EQ(omb_DoConvoluteDIB(nullptr, lopass, 1, 10), 0);
  EXPECT_EQ(call(nullptr), 0);
  EXPECT_EQ(call(lopass, 0), 1);
  EXPECT_EQ(call(lopass, -5), 1);
  // One step outside the box, on each side; refused whatever else is asked for.
  for (const Entry& entry : std::vector<Entry>{{-2, 0, 1}, {2, 0, 1}, {0, -2, 1}, {0, 2, 1}}) {
    const Kernal kernal(3, 3, 1, 1, 0, {entry});
    EXPECT_EQ(call(kernal.get()), 0);
    EXPECT_EQ(call(kernal.get(), 0), 0);
  }
  const Kernal large(INT32_MAX, INT32_MAX, INT32_MIN, INT32_MAX, 0, {{INT32_MAX, INT32_MAX, 1}});
  EXPECT_EQ(call(large.get()), 0);
  const Kernal huge(INT32_MAX, INT32_MAX, 0, INT32_MAX - 1, 0, {{1 << 30, 1 << 30, 1}});
  EXPECT_EQ(call(huge.get()), 1);  // no pixel has room for it
}

}  // namespace
}  // namespace ombrilo::test
