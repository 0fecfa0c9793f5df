// The catalogue of endgames and the position index: worked examples of the
// numbering, the sizes of the families, and the index properties over every
// placement of three men and random placements of every row (all placements
// of up to four men under the label deep).
#include <gtest/gtest.h>

#include <set>

#include "index_properties.h"

namespace {

using indextest::expectPasses;
using indextest::IndexChecker;
using indextest::Placement;

// Squares by name; "--" stands for 64, beyond the board.
uint32_t sq(const std::string& name) { return name[0] == '-' ? 64 : uint32_t((name[1] - '1') * 8 + (name[0] - 'a')); }
constexpr uint32_t refused = 0xFFFFFFFF;

std::vector<uint8_t> codesOf(const std::string& letters) {
  std::vector<uint8_t> codes;
  for (char c : letters) codes.push_back(uint8_t(std::string("-pnbrqk").find(c)));
  codes.push_back(0);
  return codes;
}

int32_t rowNamed(const std::string& name) {
  int32_t id = -1;
  const size_t second = name.find('k', 1);
  return findEndgame(codesOf(name.substr(0, second)).data(), codesOf(name.substr(second)).data(), id) ? id : -1;
}

// kqqk: bk f3 mirrors to c3, wk a1 to h1, the queens to f3 and e4. c3 is the
// eighth square of the triangle, after 347 pairs, and h1 its eighth partner;
// (f3, e4) follow the 1113 pairs whose first square is below f3, and six more.
constexpr uint32_t kqqkExample = (347 + 7) * 2016 + 1113 + 6;
constexpr uint32_t d1d8 = 3 * 64 + 59;

// The 3-man numbering is checked against the real files by the probe test.
TEST(PositionIndexTest, WorkedExamplesAndEdges) {
  const struct {
    const char* what;
    const char* endgame;
    const char* white;  // king first
    const char* black;
    uint32_t index;
  } examples[] = {
      {"the kqqk example", "kqqk", "a1 c3 d4", "f3", kqqkExample},
      {"the same with the queens exchanged", "kqqk", "a1 d4 c3", "f3", kqqkExample},
      {"queens on one square", "kqqk", "a1 c3 c3", "f3", refused},
      {"black pawn on h1 against a7", "kpkp", "d1 a7", "d8 h1", refused},
      {"S of a7 against a2", "kpkp", "d1 a7", "d8 a2", d1d8},
      {"black key pawn e2 mirrors", "kqkp", "a1 a8", "h8 e2", ((3 * 64 + sq("h1")) * 64 + sq("a8")) * 64 + sq("h8")},
      {"kpppk on e to h: found after the mirror", "kpppk", "a1 e2 f2 g2", "a8", (8644 * 64 + sq("h1")) * 64 + sq("h8")},
      {"kpppk on b to d at once", "kpppk", "h1 d2 c2 b2", "h8", (8644 * 64 + sq("h1")) * 64 + sq("h8")},
      {"kpppk last triple", "kpppk", "e1 a2 b2 c2", "e8", (8647 * 64 + sq("e1")) * 64 + sq("e8")},
      {"kpppk pawns on one square", "kpppk", "e1 a2 a2 c2", "e8", refused},
      {"kppk pawns on one square", "kppk", "e1 c4 c4", "e8", refused},
      {"kppk a2 h2: anchored on the smaller square", "kppk", "e1 a2 h2", "e8", (566 * 64 + sq("e1")) * 64 + sq("e8")},
      {"kppk h2 a2 alike", "kppk", "e1 h2 a2", "e8", (566 * 64 + sq("e1")) * 64 + sq("e8")},
      {"kppkp white pawns on one square", "kppkp", "e1 c4 c4", "e8 c6", refused},
      {"a king beyond the board", "kqkq", "e1 a1", "-- a2", refused},
  };
  for (const auto& e : examples) {
    uint32_t w[5], b[3], index = 12345, n = 0;
    std::istringstream white(e.white), black(e.black);
    for (std::string s; white >> s;) w[n++] = sq(s);
    w[n] = 64;
    n = 0;
    for (std::string s; black >> s;) b[n++] = sq(s);
    b[n] = 64;
    ASSERT_GE(rowNamed(e.endgame), 0) << e.endgame;
    EXPECT_EQ(endgameCatalogue[rowNamed(e.endgame)].positionToIndex(w, b, index), e.index != refused) << e.what;
    EXPECT_EQ(index, e.index) << e.what;
  }
}

// Every row: its number, found by its material, and its family's index
// properties on random placements.
TEST(PositionIndexTest, EveryRowOfTheCatalogue) {
  std::mt19937_64 random(12);
  std::set<std::string> names;
  for (int32_t id = 0; id < endgameCount; ++id) {
    const EndgameRow& row = endgameCatalogue[id];
    ASSERT_NE(row.name, nullptr) << id;
    EXPECT_EQ(row.id, id);
    EXPECT_TRUE(names.insert(row.name).second) << row.name;
    EXPECT_EQ(rowNamed(row.name), id) << row.name;
    EXPECT_EQ(strlen(row.name), id < 5 ? 3u : id < 35 ? 4u : 5u) << row.name;
    IndexChecker checker(row.name, indexFamilies[row.family]);
    int failures = 0;
    for (int n = 0; n < 3000; ++n) expectPasses(checker, checker.randomLegal(random), row.name, failures);
  }
  EXPECT_EQ(endgameCatalogue[endgameCount].name, nullptr);
  EXPECT_EQ(names.size(), 145u);
  // Material without a table: the other colour order, a lone king first, six men, bad codes.
  for (const char* name : {"krkq", "kkq", "kk", "kqqkqq", "kppppkk", "kpkpp", "kqkqq"}) EXPECT_EQ(rowNamed(name), -1) << name;
  const uint8_t badCode[] = {6, 7, 0}, king[] = {6, 0};
  int32_t id = 0;
  EXPECT_FALSE(findEndgame(badCode, king, id));
}

TEST(PositionIndexTest, EveryPlacementOfThreeMen) {
  for (EndgameFamily f : {FamilyKxk, FamilyKpk}) {
    IndexChecker checker(indexFamilies[f].name, indexFamilies[f]);
    int failures = 0;
    checker.forEachLegal([&](const Placement& p) { expectPasses(checker, p, indexFamilies[f].name, failures); });
  }
}

// Sampled indices name positions that map back to them; any squares at all,
// 64 and above included, give an index below the count or a refusal with all ones.
TEST(PositionIndexTest, IndicesAndArbitraryLists) {
  std::mt19937_64 random(7);
  for (const IndexFamily& family : indexFamilies) {
    uint32_t w[5], b[3], index = 0, again = 0;
    EXPECT_FALSE(family.indexToPosition(family.indexCount, w, b)) << family.name;
    for (int n = 0; n < 20000; ++n) {
      index = n == 0 ? 0 : n == 1 ? family.indexCount - 1 : uint32_t(random() % family.indexCount);
      ASSERT_TRUE(family.indexToPosition(index, w, b) && w[family.whiteMen] == 64 && b[family.blackMen] == 64);
      ASSERT_TRUE(family.positionToIndex(w, b, again) && again == index) << family.name << " " << index;
      for (uint32_t& s : w) s = uint32_t(random() % (n % 2 ? 64 : 80));
      for (uint32_t& s : b) s = uint32_t(random() % (n % 2 ? 64 : 80));
      w[family.whiteMen] = b[family.blackMen] = 64;
      const bool indexed = family.positionToIndex(w, b, index);
      EXPECT_TRUE(indexed ? index < family.indexCount : index == refused) << family.name << " " << index;
    }
  }
}

}  // namespace
