// The catalogue of endgames and the search for a row by material.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tablebase/endgame_catalogue.h"

namespace {

std::vector<uint8_t> codesOf(const std::string& letters) {
  std::vector<uint8_t> codes;
  for (char c : letters) codes.push_back(uint8_t(std::string("-pnbrqk").find(c)));
  codes.push_back(0);
  return codes;
}

std::pair<std::string, std::string> sidesOf(const std::string& name) {
  size_t second = name.find('k', 1);
  return {name.substr(0, second), name.substr(second)};
}

// The family's pattern of a name: the first side's pieces become x, y, z in
// order of appearance, the second side's piece the next free letter.
std::string familyPattern(const std::string& name) {
  auto [first, second] = sidesOf(name);
  std::string pattern = "k", seen;
  for (char c : first.substr(1)) {
    if (c != 'p' && seen.find(c) == std::string::npos) seen += c;
    pattern += c == 'p' ? 'p' : "xyz"[seen.find(c)];
  }
  pattern += 'k';
  for (char c : second.substr(1)) pattern += c == 'p' ? 'p' : "xyz"[seen.size()];
  return pattern;
}

TEST(EndgameCatalogueTest, RowsAreNumberedUniqueAndFitTheirFamily) {
  std::set<std::string> names;
  for (int32_t id = 0; id < endgameCount; ++id) {
    const EndgameRow& row = endgameCatalogue[id];
    ASSERT_NE(row.name, nullptr) << id;
    std::string name = row.name;
    EXPECT_EQ(row.id, id);
    EXPECT_TRUE(names.insert(name).second) << name;
    const IndexFamily& family = indexFamilies[row.family];
    EXPECT_EQ(familyPattern(name), family.name) << name;
    EXPECT_EQ(row.indexCount, family.indexCount) << name;
    EXPECT_EQ(row.sliceCount, family.sliceCount) << name;
    EXPECT_EQ(row.positionToIndex, family.positionToIndex) << name;
    EXPECT_EQ(row.indexToPosition, family.indexToPosition) << name;
    // Closed tables leave no file and no failure mark; lastPath outlives a close.
    EXPECT_EQ(row.file, nullptr);
    EXPECT_EQ(row.status, 0u);
    // Men: 3-piece rows first, then 4, then 5.
    size_t men = name.size();
    EXPECT_EQ(men, id < 5 ? 3u : id < 35 ? 4u : 5u) << name;
    // Colour order: more men first, then the stronger letters first.
    auto [first, second] = sidesOf(name);
    auto strength = [](const std::string& side) {
      std::string order = "kqrbnp", key;
      for (char c : side) key += char('a' + order.find(c));
      return key;
    };
    EXPECT_TRUE(first.size() > second.size() || (first.size() == second.size() && strength(first) <= strength(second)))
        << name;
  }
  EXPECT_EQ(endgameCatalogue[endgameCount].name, nullptr);
  EXPECT_EQ(names.size(), 145u);
}

TEST(EndgameCatalogueTest, FindEndgameFindsEachRowWhateverTheMemo) {
  for (int32_t start : {0, 144, 77}) {
    int32_t id = -1;
    auto [first, second] = sidesOf(endgameCatalogue[start].name);
    ASSERT_TRUE(findEndgame(codesOf(first).data(), codesOf(second).data(), id));
    for (int32_t row = 0; row < endgameCount; ++row) {
      auto [w, b] = sidesOf(endgameCatalogue[row].name);
      ASSERT_TRUE(findEndgame(codesOf(w).data(), codesOf(b).data(), id)) << row;
      EXPECT_EQ(id, row);
      ASSERT_TRUE(findEndgame(codesOf(w).data(), codesOf(b).data(), id)) << row;  // now through the memo
      EXPECT_EQ(id, row);
    }
  }
}

TEST(EndgameCatalogueTest, MaterialWithoutATableIsNotFound) {
  struct Case {
    std::string first, second;
  };
  const Case cases[] = {
      {"krk", "kq"},     // the other colour order
      {"k", "kq"},       // a lone king on the first side
      {"k", "k"},        // kings alone have no row
      {"kqq", "kqq"},    // six men
      {"kppppk", "k"},   // six men on one side
      {"kqrbnp", "k"},   // longer than any name
      {"kp", "kpp"},     // colour order, five men
      {"kq", "kqq"},     // colour order
  };
  for (const Case& c : cases) {
    int32_t id = 1234;
    EXPECT_FALSE(findEndgame(codesOf(c.first).data(), codesOf(c.second).data(), id)) << c.first << c.second;
    EXPECT_EQ(id, 1234);
  }
  const uint8_t badCode[] = {6, 7, 0}, king[] = {6, 0};
  int32_t id = 0;
  EXPECT_FALSE(findEndgame(badCode, king, id));
}

}  // namespace
