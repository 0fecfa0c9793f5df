// Worked examples and edge cases of the position index, one table.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "tablebase/endgame_catalogue.h"
#include "tablebase/numbering_tables.h"

namespace {

// "--" stands for the end mark 64, here a square beyond the board.
constexpr uint32_t sq(const char* name) {
  return name[0] == '-' ? 64 : uint32_t((name[1] - '1') * 8 + (name[0] - 'a'));
}
constexpr uint32_t refused = 0xFFFFFFFF;

const EndgameRow& rowNamed(const std::string& name) {
  for (const EndgameRow& row : endgameCatalogue)
    if (row.name && row.name == name) return row;
  throw std::invalid_argument(name);
}

struct Example {
  const char* what;
  const char* endgame;
  std::vector<const char*> w, b;  // king first
  uint32_t index;
};

// kqqk: bk f3 mirrors to c3, wk a1 to h1, the queens to f3 and e4. c3 is the
// eighth square of the triangle, after 347 pairs, and h1 its eighth partner;
// (f3, e4) follow the 1113 pairs whose first square is below f3, and six more.
constexpr uint32_t kqqkExample = (347 + 7) * 2016 + 1113 + 6;

TEST(PositionIndexExamplesTest, WorkedExamplesAndEdges) {
  const Example examples[] = {
      {"first king pair", "kqk", {"c1", "h8"}, {"a1"}, 63},
      {"a3 flips to c1", "kqk", {"a3", "h8"}, {"a1"}, 63},
      {"kings side by side", "kqk", {"e4", "a1"}, {"e5"}, refused},
      {"kings on one square", "krk", {"e4", "a1"}, {"e4"}, refused},
      {"the kqqk example", "kqqk", {"a1", "c3", "d4"}, {"f3"}, kqqkExample},
      {"the same with the queens exchanged", "kqqk", {"a1", "d4", "c3"}, {"f3"}, kqqkExample},
      {"queens on one square", "kqqk", {"a1", "c3", "c3"}, {"f3"}, refused},
      {"h7 is mirrored to a7", "kpk", {"e1", "h7"}, {"e8"}, (0 * 64 + sq("d1")) * 64 + sq("d8")},
      {"a7 as it is", "kpk", {"d1", "a7"}, {"d8"}, (0 * 64 + sq("d1")) * 64 + sq("d8")},
      {"pawn on the first rank", "kpk", {"d1", "a1"}, {"d8"}, refused},
      {"pawn on the last rank", "kpk", {"d1", "h8"}, {"d8"}, refused},
      {"black pawn on h1 against a7", "kpkp", {"d1", "a7"}, {"d8", "h1"}, refused},
      {"S of a7 against a2", "kpkp", {"d1", "a7"}, {"d8", "a2"}, ((0 * 48 + 0) * 64 + sq("d1")) * 64 + sq("d8")},
      {"black key pawn e2 mirrors", "kqkp", {"a1", "a8"}, {"h8", "e2"},
       ((3 * 64 + sq("h1")) * 64 + sq("a8")) * 64 + sq("h8")},
      {"kpppk all on e to h: found after the mirror", "kpppk", {"a1", "e2", "f2", "g2"}, {"a8"},
       (8644 * 64 + sq("h1")) * 64 + sq("h8")},
      {"kpppk on b to d at once", "kpppk", {"h1", "d2", "c2", "b2"}, {"h8"}, (8644 * 64 + sq("h1")) * 64 + sq("h8")},
      {"kpppk last triple", "kpppk", {"e1", "a2", "b2", "c2"}, {"e8"}, (8647 * 64 + sq("e1")) * 64 + sq("e8")},
      {"kpppk pawns on one square", "kpppk", {"e1", "a2", "a2", "c2"}, {"e8"}, refused},
      {"kppk pawns on one square", "kppk", {"e1", "c4", "c4"}, {"e8"}, refused},
      {"kppkp white pawns on one square", "kppkp", {"e1", "c4", "c4"}, {"e8", "c6"}, refused},
      {"a square beyond the board", "krk", {"e1", "--"}, {"e8"}, refused},
      {"a king beyond the board", "kqkq", {"e1", "a1"}, {"--", "a2"}, refused},
  };
  for (const Example& e : examples) {
    const EndgameRow& row = rowNamed(e.endgame);
    uint32_t w[5], b[3], index = 12345;
    size_t i = 0;
    for (; i < e.w.size(); ++i) w[i] = sq(e.w[i]);
    w[i] = 64;
    for (i = 0; i < e.b.size(); ++i) b[i] = sq(e.b[i]);
    b[i] = 64;
    EXPECT_EQ(row.positionToIndex(w, b, index), e.index != refused) << e.what;
    EXPECT_EQ(index, e.index) << e.what;
  }
}

// kppk with pawns a2 and h2: equal rank and edge distance, so the anchor is
// a2, the smaller square, and nothing is mirrored.
TEST(PositionIndexExamplesTest, PawnPairOnMirrorFilesIsAnchoredOnTheSmallerSquare) {
  uint32_t pp = pawnPairIndex[whitePawnSlot(sq("a2"))][mirrorRanks(sq("h2")) - 8];
  for (auto [first, second] : {std::pair{"a2", "h2"}, std::pair{"h2", "a2"}}) {
    uint32_t w[] = {sq("e1"), sq(first), sq(second), 64}, b[] = {sq("e8"), 64}, index = 0;
    ASSERT_TRUE(rowNamed("kppk").positionToIndex(w, b, index));
    EXPECT_EQ(index, (pp * 64 + sq("e1")) * 64 + sq("e8"));
  }
}

TEST(PositionIndexExamplesTest, FamilySizes) {
  struct Size {
    EndgameFamily family;
    uint32_t indexCount, sliceCount;
  };
  const Size sizes[] = {
      {FamilyKxk, 29568, 1},          {FamilyKxky, 1892352, 1},       {FamilyKxxk, 931392, 1},
      {FamilyKxyk, 1892352, 1},       {FamilyKxxxk, 19248768, 1},     {FamilyKxxyk, 59609088, 1},
      {FamilyKxyyk, 59609088, 1},     {FamilyKxyzk, 121110528, 1},    {FamilyKxxky, 59609088, 1},
      {FamilyKxykz, 121110528, 1},    {FamilyKpk, 98304, 24},         {FamilyKxpk, 6291456, 24},
      {FamilyKxkp, 6291456, 24},      {FamilyKppk, 2359296, 576},     {FamilyKpkp, 4718592, 1152},
      {FamilyKxxpk, 198180864, 24},   {FamilyKxypk, 402653184, 24},   {FamilyKxppk, 150994944, 576},
      {FamilyKxpky, 402653184, 24},   {FamilyKppkx, 150994944, 576},  {FamilyKxxkp, 198180864, 24},
      {FamilyKxykp, 402653184, 24},   {FamilyKxpkp, 301989888, 1152}, {FamilyKppkp, 110886912, 27072},
      {FamilyKpppk, 35422208, 8648},
  };
  for (const Size& s : sizes) {
    EXPECT_EQ(indexFamilies[s.family].indexCount, s.indexCount) << indexFamilies[s.family].name;
    EXPECT_EQ(indexFamilies[s.family].sliceCount, s.sliceCount) << indexFamilies[s.family].name;
  }
}

}  // namespace
