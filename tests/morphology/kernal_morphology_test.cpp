// omb_DoKernalMorphDIB against a reference that works on the bytes of the block.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/kernals.h"
#include "support/naive.h"

namespace ombrilo::test {
namespace {

std::vector<uint8_t> Reference(const TestImage& image, int bits, int op, const KERNAL& element,
                               int iterations) {
  const auto primitive = [&](const TestImage& from, bool dilate) {
    return NaiveBytes(from, bits / 8, {0, 0, 0, 0}, iterations, [&](const Neighbour& p) {
      int extreme = dilate ? 0 : 255;
      for (int k = 0; k < element.count; ++k) {
        const int value = p(element.offsets[2 * k], element.offsets[2 * k + 1]);
        if (value < 0) continue;
        extreme = dilate ? std::max(extreme, value) : std::min(extreme, value);
      }
      return extreme == (dilate ? 0 : 255) ? p(0, 0) : extreme;
    });
  };
  const std::vector<uint8_t> block = primitive(image, op == 1 || op == 3);
  return op < 2 ? block : primitive(WithBytes(image, block), op == 2);
}

void Expect(const TestImage& image, int bits, const KERNAL& element, int iterations = 1) {
  for (int op = 0; op < 4; ++op) {
    SCOPED_TRACE(testing::Message() << element.name << ", bits " << bits << ", op " << op);
    ExpectAtEveryLevel(image, Reference(image, bits, op, element, iterations), omb_DoKernalMorphDIB,
                       bits, op, &element, iterations);
  }
}

// Mid-gray noise with patches of black and white, so that extremes often reach the ends.
TestImage Patches(int bits, int width, int height) {
  return ImageBuilder(bits, width, height)
      .Filler(0x33)
      .Pixels([=](int x, int y) {
        const uint32_t patch = Noise(3, 61)(x / 6, y / 5);
        return patch == 0 ? 0u : patch == 1 ? (1u << bits) - 1 : Noise(1u << bits, 62)(x, y);
      })
      .Build();
}

TEST(KernalMorphology, BuiltInElementsAgreeWithTheReference) {
  for (const auto& [width, height] : {std::pair{75, 14}, {1, 5}, {5, 1}, {4, 3}, {16, 9}}) {
    const TestImage gray = Patches(8, width, height), color = Patches(24, width, height);
    for (uint32_t i = 0; i < 45; ++i) {
      if (i > 5 && i < 21) continue;
      Expect(gray, 8, *omb_getKERNAL(i));
      Expect(color, 24, *omb_getKERNAL(i));
    }
    Expect(color, 24, *omb_getKERNAL(22), 3);
    // Bytes of a 24-bit image taken as values: a third of each row.
    Expect(color, 8, *omb_getKERNAL(2), 2);
  }
}

TEST(KernalMorphology, AnyElementAgreesWithTheReference) {
  std::vector<Entry> scattered, long_row, many_lengths;
  for (int i = 0; i < 20; ++i) {
    scattered.push_back(
        {static_cast<int>(Noise(40, 71)(i, 0)) - 20, static_cast<int>(Noise(16, 72)(i, 0)) - 8});
  }
  for (int i = 0; i < 60; ++i) long_row.push_back({i - 43, 0});
  for (int length = 1; length <= 40; ++length) {
    for (int i = 0; i < length; ++i) many_lengths.push_back({i - length / 3, length % 9 - 4});
    // Gaps keep the runs of one row apart.
    for (int i = 0; i < length % 7; ++i) many_lengths.push_back({45 + i, length % 9 - 4});
  }
  std::vector<Entry> stairs;  // runs of 1, 2, 3, ... 30 on rows of their own
  for (int length = 1; length <= 30; ++length) {
    for (int i = 0; i < length; ++i) stairs.push_back({i, length - 15});
  }
  const std::vector<Entry> elements[] = {
      {{1, 0}},           {{0, 0}, {0, 0}, {1, 1}},
      {{3, -2}, {-4, 5}}, {{INT32_MAX, 0}, {INT32_MIN, INT32_MIN}, {0, 1}},
      scattered,          long_row,
      many_lengths,       stairs,
  };
  const TestImage gray = Patches(8, 71, 33), color = Patches(24, 23, 11);
  for (const auto& entries : elements) {
    const Kernal element(1, 1, 0, 0, 0, entries);
    Expect(gray, 8, *element.get(), 2);
    Expect(color, 24, *element.get());
  }
}

TEST(KernalMorphology, RefusalsAndNothingToDo) {
  TestImage image = Patches(24, 8, 8);
  const std::vector<uint8_t> before = image.Bytes();
  const KERNAL* element = omb_getKERNAL(0);
  const Kernal none(3, 3, 1, 1, 0, {});
  const Kernal outside(3, 3, 1, 1, 0, {{8, 0}, {0, -8}, {-100, 100}});
  EXPECT_EQ(omb_DoKernalMorphDIB(nullptr, 24, 0, element, 1), 0);
  EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), 24, 0, nullptr, 1), 0);
  for (const int bits : {1, 4, 16, 32}) {
    EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), bits, 0, element, 1), 0);
  }
  for (const int op : {-1, 4}) EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), 24, op, element, 1), 0);
  for (const int iterations : {0, -1, INT32_MIN}) {
    EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), 24, 3, element, iterations), 1);
  }
  EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), 24, 1, none.get(), 1), 1);
  EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), 24, 1, outside.get(), 1), 1);
  EXPECT_EQ(image.Bytes(), before);
  EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), 24, 1, element, INT32_MAX), 1);  // comes to rest
}

}  // namespace
}  // namespace ombrilo::test
