// The eval report through the real binary, to the character.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "protocol/engine_process.h"

namespace {

const std::string rule = std::string(78, '=') + "\n";
const std::string header = "Evaluation part                    w-MG w-EG (wTot)   b-MG b-EG (bTot)   Total\n";
const char* const labels[] = {"Material",          "PST",          "Passed pawns",        "Weak pawns",
                              "Pawn structure",    "Mobility",     "Double attacks",      "Outpost",
                              "Rooks",             "Queens",       "King safety",         "King tropism",
                              "M: King edge dist", "M: King dist", "M: KBNK safe corner", "Side to move"};

// A whole report: the rows named in `rows` with their columns, every other
// row 0, then the closing line.
std::string report(const std::map<std::string, std::string>& rows, const std::string& closing) {
  std::string text = rule + header + rule;
  for (const char* label : labels) {
    char start[64];
    std::snprintf(start, sizeof start, "%-32s", label);
    auto it = rows.find(label);
    text += start + (it == rows.end() ? "      0    0 (   0)      0    0 (   0)      0" : it->second) + "\n";
  }
  return text + rule + closing + "\n" + rule;
}

TEST(EvalCommandTest, WholeReports) {
  const std::string startRows = "   1822  278 (1822)   1822  278 (1822)      0";
  const std::string startMobility = "    -46 -145 ( -46)    -46 -145 ( -46)      0";
  const struct {
    const char* fen;
    std::string expected;
  } cases[] = {
      // Material and piece-square values cancel; the side to move has 24.
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
       report({{"PST", startRows}, {"Mobility", startMobility},
               {"Side to move", "     24    0 (  24)      0    0 (   0)     24"}},
              "Phase =  24          Scaling factor = 1.00          Total evaluation =     24")},
      // The same at a half-move clock of 50: three quarters of 24.
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 50 10",
       report({{"PST", startRows}, {"Mobility", startMobility},
               {"Side to move", "     24    0 (  24)      0    0 (   0)     24"}},
              "Phase =  24          Scaling factor = 0.75          Total evaluation =     18")},
      // Black to move, a queen ahead: the total from White's view is negative.
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNB1KBNR b KQkq - 0 1",
       report({{"Material", "   -1104 -1101 (-1103)      0    0 (   0)   -1103"},
               {"PST", "   1529  214 (1309)   1822  278 (1564)   -254"},
               {"Mobility", "    -46 -142 ( -62)    -46 -145 ( -62)      0"},
               {"Side to move", "      0    0 (   0)     24    0 (  20)    -20"}},
              "Phase =  20          Scaling factor = 1.00          Total evaluation =  -1378")},
      // King and rook: the mate branch fills its rows, not material or piece-square values.
      {"8/8/8/3k4/8/8/8/R3K3 w - - 0 1",
       report({{"M: King edge dist", "      0    0 (   0)    192  192 ( 192)   -192"},
               {"M: King dist", "      6    6 (   6)      0    0 (   0)      6"},
               {"Side to move", "     24    0 (   2)      0    0 (   0)      2"}},
              "Phase =   2          Scaling factor = 1.00          Total evaluation =    376")},
      // Rook against bishop: the factor 0.25 shows, the mate branch's total is not scaled.
      {"8/8/8/3k4/8/8/b7/R3K3 w - - 0 1",
       report({{"M: King edge dist", "      0    0 (   0)    192  192 ( 192)   -192"},
               {"M: King dist", "      6    6 (   6)      0    0 (   0)      6"},
               {"Side to move", "     24    0 (   3)      0    0 (   0)      3"}},
              "Phase =   3          Scaling factor = 0.25          Total evaluation =     52")},
      // King and knight against king: a factor of 0 and every row 0.
      {"4k3/8/8/8/8/8/8/N3K3 w - - 0 1",
       report({}, "Phase =   1          Scaling factor = 0.00          Total evaluation =      0")},
  };
  for (const auto& c : cases) {
    std::vector<std::string> out = repliesTo("setboard " + std::string(c.fen) + "\neval\n");
    ASSERT_EQ(out.size(), 2u) << c.fen;
    EXPECT_EQ(out[1], c.expected) << c.fen;
  }
}

// A new structure is computed on the first look and shown by side under
// "Weak pawns"; the second look finds it in the pawn hash and shows the
// balance under "Pawn structure". The total is the same.
TEST(EvalCommandTest, TwoLooksAtANewPawnStructure) {
  const std::map<std::string, std::string> rows = {
      {"Material", "    200  200 ( 200)      0    0 (   0)    200"},
      {"PST", "     62   70 (  70)      5   60 (  60)     10"},
      {"Passed pawns", "     24   36 (  36)      0    0 (   0)     36"},
      {"King safety", "    -20    0 (   0)    -20    0 (   0)      0"},
      {"Side to move", "     24    0 (   0)      0    0 (   0)      0"}};
  const std::string weak = "    -39  -39 ( -39)      0    0 (   0)    -39";
  const std::string closing = "Phase =   0          Scaling factor = 1.00          Total evaluation =    207";
  auto first = rows, second = rows;
  first["Weak pawns"] = weak;
  second["Pawn structure"] = weak;
  std::vector<std::string> out = repliesTo("setboard 4k3/8/8/8/8/P7/P7/4K3 w - - 0 1\neval\neval\n");
  ASSERT_EQ(out.size(), 3u);
  EXPECT_EQ(out[1], report(first, closing));
  EXPECT_EQ(out[2], report(second, closing));
}

}  // namespace
