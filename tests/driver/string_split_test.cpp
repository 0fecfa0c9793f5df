#include <gtest/gtest.h>

#include "board/string_split.h"

namespace {

using Pieces = std::vector<std::string>;

TEST(SplitStringTest, EmptyPiecesCountExceptBehindTheLastDelimiter) {
  EXPECT_EQ(splitString("40 5 0", ' '), (Pieces{"40", "5", "0"}));
  EXPECT_EQ(splitString(" e2e4", ' '), (Pieces{"", "e2e4"}));
  EXPECT_EQ(splitString("a  b", ' '), (Pieces{"a", "", "b"}));
  EXPECT_EQ(splitString("a ", ' '), (Pieces{"a"}));
  EXPECT_EQ(splitString("", ' '), Pieces{});
  EXPECT_EQ(splitString("5:", ':'), (Pieces{"5"}));
  EXPECT_EQ(splitString(":30", ':'), (Pieces{"", "30"}));
  EXPECT_EQ(splitString("ttHashSizeMB=64", '='), (Pieces{"ttHashSizeMB", "64"}));
  EXPECT_EQ(splitString("x==", '='), (Pieces{"x", ""}));
}

}  // namespace
