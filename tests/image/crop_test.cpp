#include <gtest/gtest.h>

#include <cstring>

#include "core/packed_dib.h"
#include "support/untouched.h"

namespace ombrilo::test {
namespace {

constexpr int kWidth = 21, kHeight = 6;

TestImage Source(int bits, uint32_t size_field, int width = kWidth) {
  ImageBuilder builder(bits, width, kHeight);
  builder.Colors(VariedColors(bits <= 8 ? 1 << bits : 0, 3)).CoreHeader(size_field);
  builder.Pixels(Noise(1u << bits, 4)).Filler(0xFF);
  if (size_field == 40) builder.Field(20, 777);
  return builder.Build();
}

struct Piece {
  int x, y, w, h;
};

// The piece made of pixels read one by one, with zeros between its rows and the source's table.
std::vector<uint8_t> Expected(const TestImage& source, const Piece& p, uint32_t size_image) {
  const DibHeader header = DibHeader::Read(source.get());
  ImageBuilder builder(header.bit_count, p.w, p.h);
  builder.Pixels([&](int x, int y) { return source.Pixel(p.x + x, p.y + y); });
  if (header.core) builder.CoreHeader(header.header_size);
  if (!header.core) builder.Field(20, size_image);
  const TestImage piece = builder.Build();
  std::memcpy(piece.raw() + header.header_size, source.raw() + header.header_size,
              header.table_size());
  return piece.Bytes();
}

// The same piece by both functions: one keeps biSizeImage, the other clears it.
void ExpectPiece(int bits, uint32_t size_field, const Piece& p, int width = kWidth) {
  SCOPED_TRACE(testing::Message() << bits << " bits, size field " << size_field << ", " << p.x
                                  << "," << p.y << " " << p.w << "x" << p.h);
  TestImage image = Source(bits, size_field, width);
  const TestImage source = image.Clone();
  const TestImage copy(
      reinterpret_cast<PackedDib*>(omb_cpydibrect(image.get(), p.x, p.y, p.w, p.h)));
  ASSERT_NE(copy.get(), nullptr);
  EXPECT_EQ(copy.Bytes(), Expected(source, p, 0));
  EXPECT_EQ(image.Bytes(), source.Bytes());
  const OmbRect rect = {p.x, p.y, p.x + p.w - 1, p.y + p.h - 1};
  ASSERT_EQ(omb_crop(image.ref(), &rect), 1u);
  EXPECT_EQ(image.Bytes(), Expected(source, p, 777));
}

TEST(Crop, PiecesAtEveryDepthAndHeaderKind) {
  constexpr Piece kPieces[] = {{0, 0, kWidth, kHeight},
                               {3, 1, 9, 2},
                               {1, 5, 20, 1},
                               {0, 2, 1, 3},
                               {20, 0, 1, 6},
                               {7, 3, 8, 3},
                               {5, 0, 16, 1},
                               {6, 0, 3, 2},
                               {7, 1, 14, 3}};
  for (const int bits : {1, 4, 8, 24}) {
    for (const uint32_t size_field : {40u, 12u, 20u}) {
      for (const Piece& p : kPieces) {
        ExpectPiece(bits, size_field, p);
      }
    }
    // Rows without padding: pieces that end where the block does.
    for (const int width : {32, 64, 128}) {
      for (const int x : {1, 3, 8, 17, width - 1}) {
        ExpectPiece(bits, 40, {x, 0, width - x, kHeight}, width);
      }
    }
  }
}

// What no cache holds is written in another way.
TEST(Crop, RowsOfLargePiecesAreThoseOfTheSource) {
  TestImage image = ImageBuilder(24, 2403, 1203).Pixels(Noise(1 << 24, 3)).Build();
  const TestImage source = image.Clone();
  const OmbRect rect = {1, 2, 2401, 1200};
  ASSERT_EQ(omb_crop(image.ref(), &rect), 1u);
  const DibView from = *DibView::Open(source.get()), piece = *DibView::Open(image.get());
  ASSERT_EQ(piece.height(), 1199);
  for (int y = 0; y < piece.height(); ++y) {
    ASSERT_EQ(std::memcmp(piece.row(y), from.row(y + 2) + 3, 3 * 2401), 0) << y;
  }
}

TEST(Crop, RefusesRectanglesThatAreEmptyOrLeaveTheImage) {
  Untouched image(Source(8, 40));
  constexpr int kMin = INT32_MIN, kMax = INT32_MAX;
  const OmbRect rectangles[] = {{-1, 0, 3, 3},      {0, -1, 3, 3},      {0, 0, kWidth, 3},
                                {0, 0, 3, kHeight}, {3, 0, 2, 3},       {0, 3, 3, 2},
                                {kMin, 0, kMax, 3}, {0, kMin, 3, kMax}, {kMax, kMax, kMin, kMin}};
  for (const OmbRect& rect : rectangles) {
    EXPECT_EQ(omb_crop(image.ref(), &rect), 0u);
  }
  EXPECT_EQ(omb_crop(image.ref(), nullptr), 0u);
  const OmbRect one = {0, 0, 0, 0};
  TestImage upside_down = ImageBuilder(8, 4, -4).Build();
  EXPECT_EQ(omb_crop(upside_down.ref(), &one), 0u);
}

TEST(CopyRectangle, RefusesPiecesThatLeaveTheImage) {
  const TestImage image = Source(8, 40);
  struct {
    int32_t x;
    uint32_t y, w, h;
  } const cases[] = {{-1, 0, 1, 1},         {1, 0, kWidth, 1},     {0, 1, 1, kHeight},
                     {0, 0xFFFFFFFF, 1, 1}, {0, 1, 1, 0xFFFFFFFF}, {1, 0, 0xFFFFFFFF, 1},
                     {INT32_MAX, 0, 1, 1}};
  for (const auto& c : cases) EXPECT_EQ(omb_cpydibrect(image.get(), c.x, c.y, c.w, c.h), 0u);
}

TEST(CopyRectangle, EmptyPiecesAreHeaderAndTable) {
  for (const int bits : {8, 16}) {
    const TestImage image = ImageBuilder(bits, 4, 3).Colors(VariedColors(5, 1)).Build();
    const TestImage piece(reinterpret_cast<PackedDib*>(omb_cpydibrect(image.get(), 1, 3, 2, 0)));
    ASSERT_NE(piece.get(), nullptr);
    EXPECT_EQ(piece.width(), 2);
    EXPECT_EQ(piece.height(), 0);
    EXPECT_EQ(piece.Bytes().size(), 60u);
    EXPECT_EQ(piece.Color(4), image.Color(4));
  }
  const TestImage image = Source(1, 40);
  const TestImage narrow(reinterpret_cast<PackedDib*>(omb_cpydibrect(image.get(), 21, 0, 0, 3)));
  ASSERT_NE(narrow.get(), nullptr);
  EXPECT_EQ(narrow.height(), 3);
}

}  // namespace
}  // namespace ombrilo::test
