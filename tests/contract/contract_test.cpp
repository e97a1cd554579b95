// What the public header says in numbers, read from its text and held against the library.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "filters/numbered_kernels.h"
#include "morphology/kernal.h"
#include "support/image.h"
#include "support/kernals.h"

namespace ombrilo::test {
namespace {

using Lines = std::vector<std::string>;

const std::string& HeaderText() {
  static const std::string text = [] {
    std::ifstream file(OMBRILO_HEADER);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  return text;
}

std::vector<std::smatch> All(const std::string& text, const std::string& expression) {
  const std::regex regex(expression);
  return {std::sregex_iterator(text.begin(), text.end(), regex), std::sregex_iterator()};
}

// The values of the enumerators that begin like this, by the rest of their names.
std::multimap<std::string, int> Enumerators(const std::string& prefix) {
  std::multimap<std::string, int> values;
  for (const std::smatch& match : All(HeaderText(), "\\b" + prefix + "(\\w+) =\\s+(\\d+)")) {
    values.emplace(match[1], std::stoi(match[2]));
  }
  return values;
}

// The lines that the comment around this title has between @verbatim and @endverbatim.
Lines Drawing(const std::string& title) {
  const std::string& text = HeaderText();
  const size_t begin = text.rfind("@verbatim", text.find(title));
  std::istringstream in(text.substr(begin, text.find("@endverbatim", begin) - begin));
  Lines lines;
  std::string line;
  std::getline(in, line);
  while (std::getline(in, line)) {
    lines.push_back(line.size() > 3 ? line.substr(3) : "");
  }
  return lines;
}

struct Grid {
  int index;  // -1: none
  std::string name;
  Lines lines;
};

// Drawings side by side: a line of titles, and below each its grid.
std::vector<Grid> GridsIn(const Lines& lines) {
  std::vector<Grid> grids;
  for (size_t i = 0; i < lines.size();) {
    const auto titles = All(lines[i], "(\\d+ )?([A-Za-z]+( \\d+x\\d+)?)");
    const size_t first = grids.size();
    for (const std::smatch& title : titles) {
      grids.push_back({title[1].matched ? std::stoi(title[1]) : -1, title[2], {}});
    }
    for (++i; i < lines.size() && !lines[i].empty(); ++i) {
      for (size_t k = 0; k < titles.size(); ++k) {
        const auto begin = static_cast<size_t>(titles[k].position());
        const auto end = k + 1 < titles.size() ? static_cast<size_t>(titles[k + 1].position())
                                               : std::string::npos;
        const std::string cells =
            begin < lines[i].size() ? lines[i].substr(begin, end - begin) : "";
        if (cells.find_first_not_of(' ') != std::string::npos)
          grids[first + k].lines.push_back(cells);
      }
    }
    while (i < lines.size() && lines[i].empty()) ++i;
  }
  return grids;
}

void ExpectDrawn(const KERNAL& record, const Grid& grid) {
  SCOPED_TRACE(grid.name);
  const std::string name = grid.index == 27 ? "sculpt " : grid.name;
  EXPECT_EQ(record.name, name);
  EXPECT_EQ(record.bias, grid.index == 27 ? 128 : 0);
  const auto height = static_cast<int>(grid.lines.size());
  ASSERT_EQ(record.height, height);
  EXPECT_EQ(record.anchorY, (height - 1) / 2);
  EXPECT_EQ(record.anchorX, (record.width - 1) / 2);
  std::vector<int32_t> offsets, weights;
  for (int row = 0; row < height; ++row) {
    std::istringstream in(grid.lines[size_t(row)]);
    int column = 0;
    for (std::string cell; in >> cell; ++column) {
      if (cell == ".") continue;
      offsets.insert(offsets.end(), {column - record.anchorX, record.anchorY - row});
      weights.push_back(cell == "o" ? 0 : std::stoi(cell));
    }
    EXPECT_EQ(record.width, column);
  }
  if (name == "higauss 7x7") {  // as the text below the drawings says
    offsets.insert(offsets.end(), {0, 0, -1, -1, -1, -1, -1, -1});
    weights.insert(weights.end(), 4, -1);
  }
  ASSERT_EQ(static_cast<size_t>(record.count), weights.size());
  EXPECT_EQ(std::vector<int32_t>(record.offsets, record.offsets + 2 * record.count), offsets);
  EXPECT_EQ(std::vector<int32_t>(record.weights, record.weights + record.count), weights);
}

TEST(Contract, RecordsAreAsTheyAreDrawn) {
  const std::vector<Grid> grids = GridsIn(Drawing("0 Circle 3x3"));
  ASSERT_EQ(grids.size(), 48u);
  const auto numbers = Enumerators("OMB_KERNAL_");
  EXPECT_EQ(numbers.size(), 45u);
  for (const Grid& grid : grids) {
    if (grid.index < 0) continue;
    ExpectDrawn(*omb_getKERNAL(static_cast<uint32_t>(grid.index)), grid);
    std::string name = grid.name;
    for (char& c : name) c = c == ' ' ? '_' : static_cast<char>(std::toupper(c));
    EXPECT_EQ(numbers.find(name)->second, grid.index);
  }
  ExpectDrawn(kGauss3x3, grids[45]);
  ExpectDrawn(kGauss5x5, grids[46]);
  ExpectDrawn(kGauss7x7, grids[47]);
  for (const uint32_t index : {45u, 0x80000000u, 0xFFFFFFFFu}) {
    EXPECT_EQ(omb_getKERNAL(index), nullptr);
  }
}

TEST(Contract, NumberedKernelsAreAsTheyAreWritten) {
  const std::string grid = "/\\*\\*<? ([-\\d /]+) \\*/";
  const auto after = All(HeaderText(), "OMB_CONVOLUTE_\\w+ = (\\d+),? +" + grid);
  const auto before = All(HeaderText(), grid + "\\s+OMB_CONVOLUTE_\\w+ = (\\d+)");
  std::map<int, std::string> grids;
  for (const std::smatch& match : after) grids[std::stoi(match[1])] = match[2];
  for (const std::smatch& match : before) grids.try_emplace(std::stoi(match[2]), match[1]);
  ASSERT_EQ(grids.size(), 39u);
  for (const auto& [number, text] : grids) {
    const NumberedKernel& kernel = kNumberedKernel[number - 1];
    std::vector<int32_t> weights;
    const GridSize size =
        ParseGrid(text.c_str(), [&](GridEntry entry) { weights.push_back(entry.weight); });
    EXPECT_EQ(size.width, 2 * kernel.half + 1) << number;
    EXPECT_TRUE(std::equal(weights.begin(), weights.end(), kernel.weights)) << number;
  }
}

// A light square: the side from which it is lit is the brighter one.
TEST(Contract, ReliefIsLitFromTheSideInTheName) {
  const std::map<char, std::pair<int, int>> sides = {
      {'N', {0, -1}}, {'S', {0, 1}}, {'W', {-1, 0}}, {'E', {1, 0}}};
  const auto directions = Enumerators("OMB_EMBOSS_(?:SOFT|FINE|STRONG)_");
  EXPECT_EQ(directions.size(), 24u);
  for (const auto& [name, direction] : directions) {
    int dx = 0, dy = 0;
    for (const char side : name) {
      dx += sides.at(side).first;
      dy += sides.at(side).second;
    }
    const TestImage image = ImageBuilder(24, 24, 24)
                                .Pixels([](int x, int y) {
                                  const bool inside = x >= 8 && x < 16 && y >= 8 && y < 16;
                                  return inside ? Rgb(140, 140, 140) : Rgb(120, 120, 120);
                                })
                                .Build();
    ASSERT_EQ(omb_emboss(image.get(), static_cast<uint32_t>(direction), 0x808080), 1u);
    const auto light = [&](int sign) {  // along the square's edges and a pixel around them
      int sum = 0;
      for (int x = 7; x < 17; ++x) {
        for (int y = 7; y < 17; ++y) {
          if (sign * (dx * (2 * x - 23) + dy * (2 * y - 23)) > 0) sum += image.Pixel(x, y) & 255;
        }
      }
      return sum;
    };
    EXPECT_GT(light(1), light(-1)) << name << " " << direction;
  }
}

// The widths at which functions with sizes of 16 bits change what they do, as their "Limits" say.
TEST(Contract, LimitsOfWidth) {
  enum Outcome { kRefused, kUnchanged, kChanged };
  const auto convolute = [](PackedDib* dib) {
    return omb_DoConvoluteDIB(dib, omb_getKERNAL(0), 1, 10);
  };
  const auto morph = [](PackedDib* dib) {
    return omb_DoKernalMorphDIB(dib, omb_DIBBitCount(dib), OMB_MORPH_OPEN, omb_getKERNAL(0), 1);
  };
  const auto median = [](PackedDib* dib) {
    return omb_EnhancePage(dib, OMB_SIZE_3X3, 1, 10, 0, 0, OMB_ENHANCE_MEDIAN, 0, 0);
  };
  const auto edges = [](PackedDib* dib) {
    return omb_EdgePage(dib, OMB_SIZE_3X3, 1, 10, OMB_EDGE_SOBEL);
  };
  const struct {
    const char* name;
    int32_t (*call)(PackedDib*);
    int bits, width;
    Outcome outcome;
  } cases[] = {
      {"convolute", convolute, 24, 21844, kChanged},  {"convolute", convolute, 24, 21845, kRefused},
      {"convolute", convolute, 8, 65532, kChanged},   {"convolute", convolute, 8, 65533, kRefused},
      {"convolute", convolute, 8, 65536, kUnchanged}, {"morph", morph, 24, 21844, kChanged},
      {"morph", morph, 24, 21845, kRefused},          {"morph", morph, 8, 65532, kChanged},
      {"morph", morph, 8, 65533, kRefused},           {"median", median, 24, 21844, kChanged},
      {"median", median, 24, 21845, kRefused},        {"median", median, 8, 65532, kChanged},
      {"median", median, 8, 65533, kUnchanged},       {"edges", edges, 24, 28087, kChanged},
      {"edges", edges, 8, 70000, kChanged},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.name) + " " + std::to_string(c.width));
    const TestImage image = ImageBuilder(c.bits, c.width, 4).Pixels(Noise(1u << c.bits, 3)).Build();
    const std::vector<uint8_t> before = image.Bytes();
    EXPECT_EQ(c.call(image.get()), c.outcome != kRefused);
    EXPECT_EQ(image.Bytes() != before, c.outcome == kChanged);
  }
}

// "Images of 16, 32 or other bits are erased."
TEST(Contract, FiltersOnPicturesEraseOtherDepths) {
  void (*const filters[])(PackedDib*) = {
      omb_sobel, omb_medianblur, [](PackedDib* dib) { omb_convolute(dib, OMB_CONVOLUTE_BOX_3X3); },
      [](PackedDib* dib) { EXPECT_EQ(omb_emboss(dib, OMB_EMBOSS_SOFT_E, 0x808080), 1u); }};
  for (const auto filter : filters) {
    for (const int bits : {16, 32}) {
      const TestImage image = ImageBuilder(bits, 9, 9).Pixels(Noise(1u << 16, 3)).Build();
      filter(image.get());
      EXPECT_EQ(image.Pixels(), std::vector<uint32_t>(81));
    }
  }
}

// The examples of docs/pictures.md.
TEST(Contract, ExamplesOfThePictures) {
  PackedDib* block = omb_newdib(3, 2, 8);
  EXPECT_EQ(omb_FindDIBBits(block) - reinterpret_cast<uint8_t*>(block), 1064);
  EXPECT_EQ(TestImage(block).Bytes().size(), 1072u);

  const auto gray = [](int width, int height, std::function<uint32_t(int, int)> level) {
    return ImageBuilder(8, width, height).Pixels(std::move(level)).Build();
  };
  const Kernal above(1, 3, 0, 1, 0, {{0, 1, 1}});
  TestImage image = gray(1, 4, [](int, int y) { return 10u * static_cast<uint32_t>(y); });
  EXPECT_EQ(omb_DoConvoluteDIB(image.get(), above.get(), 1, 10), 1);
  EXPECT_EQ(image.Pixels(), (std::vector<uint32_t>{0, 0, 10, 30}));  // the outer rows keep theirs

  const auto speck = [&] { return gray(6, 6, [](int x, int y) { return x == 1 && y == 4; }); };
  const auto lit = [](const TestImage& picture) {
    std::string places;
    for (int y = 0; y < 6; ++y) {
      for (int x = 0; x < 6; ++x) {
        if (picture.Pixel(x, y) != 0) places += std::to_string(x) + std::to_string(y) + " ";
      }
    }
    return places;
  };
  image = speck();
  omb_dilate(image.get());
  EXPECT_EQ(lit(image), "12 22 32 13 23 33 14 24 34 ");
  omb_erode(image.get());
  EXPECT_EQ(lit(image), "14 ");
  const Kernal corner(2, 2, 0, 1, 0, {{0, 0}, {1, 0}, {0, 1}});
  image = speck();
  EXPECT_EQ(omb_DoKernalMorphDIB(image.get(), 8, OMB_MORPH_DILATE, corner.get(), 1), 1);
  EXPECT_EQ(lit(image), "04 14 15 ");

  image = gray(7, 7, [](int, int) { return 9; });
  omb_medianblur(image.get());
  for (int i = 0; i < 49; ++i) EXPECT_EQ(image.Pixel(i % 7, i / 7), i == 24 ? 9u : 0u);

  const auto scaled = [&](std::vector<uint32_t> row, uint32_t width) {
    image = gray(static_cast<int>(row.size()), 2,
                 [&](int x, int) { return row[static_cast<size_t>(x)]; });
    EXPECT_EQ(omb_scale(image.ref(), width, 1, OMB_RESAMPLE_BILINEAR), 1u);
    return image.Pixels();
  };
  EXPECT_EQ(scaled({0, 255}, 8), (std::vector<uint32_t>{0, 63, 127, 191, 0, 63, 127, 191}));
  EXPECT_EQ(scaled({0, 255, 0, 255}, 2), (std::vector<uint32_t>{0, 0}));
}

}  // namespace
}  // namespace ombrilo::test
