// The eval report through the real binary, to the character.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "protocol/engine_process.h"

namespace {

const std::string rule = std::string(78, '=') + "\n";
const std::string header = "Evaluation part                    w-MG w-EG (wTot)   b-MG b-EG (bTot)   Total\n";

std::string row(const char* label, const std::string& values) {
  char text[128];
  std::snprintf(text, sizeof text, "%-32s", label);
  return std::string(text) + values + "\n";
}

std::string zero(const char* label) { return row(label, "      0    0 (   0)      0    0 (   0)      0"); }

TEST(EvalCommandTest, StartPositionInFull) {
  std::vector<std::string> out = repliesTo("eval\n");
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(out[0], rule + header + rule + zero("Material") +
                        row("PST", "   1822  278 (1822)   1822  278 (1822)      0") + zero("Passed pawns") +
                        zero("Weak pawns") + zero("Pawn structure") +
                        row("Mobility", "    -46 -145 ( -46)    -46 -145 ( -46)      0") + zero("Double attacks") +
                        zero("Outpost") + zero("Rooks") + zero("Queens") + zero("King safety") +
                        zero("King tropism") + zero("M: King edge dist") + zero("M: King dist") +
                        zero("M: KBNK safe corner") + row("Side to move", "     24    0 (  24)      0    0 (   0)     24") +
                        rule + "Phase =  24          Scaling factor = 1.00          Total evaluation =     24\n" + rule);
}

// The line of a label, and the closing line, of a report.
std::string lineOf(const std::string& report, const std::string& start) {
  size_t at = report.find("\n" + start);
  if (at == std::string::npos) return "";
  return report.substr(at + 1, report.find('\n', at + 1) - at - 1);
}

TEST(EvalCommandTest, RowsAndClosingLines) {
  const struct {
    const char* fen;
    std::vector<std::string> lines;
  } cases[] = {
      // Isolated and doubled: by side on the first look, as a balance from the pawn hash on the second.
      {"4k3/8/8/8/8/P7/P7/4K3 w - - 0 1",
       {"Weak pawns                          -39  -39 ( -39)      0    0 (   0)    -39",
        "Pawn structure                        0    0 (   0)      0    0 (   0)      0"}},
      // King and rook: the mate branch, no material or piece-square rows.
      {"8/8/8/3k4/8/8/8/R3K3 w - - 0 1",
       {"Material                              0    0 (   0)      0    0 (   0)      0",
        "M: King edge dist                     0    0 (   0)    192  192 ( 192)   -192",
        "M: King dist                          6    6 (   6)      0    0 (   0)      6",
        "Phase =   2          Scaling factor = 1.00          Total evaluation =    376"}},
      // Black to move and a queen ahead.
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNB1KBNR b KQkq - 0 1",
       {"Phase =  20          Scaling factor = 1.00          Total evaluation =  -1378"}},
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 50 10",
       {"Phase =  24          Scaling factor = 0.75          Total evaluation =     18"}},
      // Rook against bishop: scaled to a quarter, the total from the mate branch.
      {"4k3/8/8/8/8/8/b7/R3K3 w - - 0 1", {"Phase =   3          Scaling factor = 0.25          Total evaluation =    238"}},
      // No mating material: every row 0.
      {"4k3/8/8/8/8/8/8/N3K3 w - - 0 1",
       {"Side to move                          0    0 (   0)      0    0 (   0)      0",
        "Phase =   1          Scaling factor = 0.00          Total evaluation =      0"}},
  };
  for (const auto& c : cases) {
    std::vector<std::string> out = repliesTo("setboard " + std::string(c.fen) + "\neval\neval\n");
    ASSERT_EQ(out.size(), 3u);
    for (const std::string& expected : c.lines) {
      const std::string label = expected.substr(0, expected.find("  "));
      EXPECT_EQ(lineOf(out[1], label), expected) << c.fen;
    }
    EXPECT_EQ(lineOf(out[1], "Phase"), lineOf(out[2], "Phase")) << c.fen;
  }
  // The second look at a new structure finds it in the pawn hash.
  std::vector<std::string> out = repliesTo("setboard 4k3/8/8/8/8/P7/P7/4K3 w - - 0 1\neval\neval\n");
  EXPECT_EQ(lineOf(out[2], "Weak pawns"), "Weak pawns                            0    0 (   0)      0    0 (   0)      0");
  EXPECT_EQ(lineOf(out[2], "Pawn structure"), "Pawn structure                      -39  -39 ( -39)      0    0 (   0)    -39");
}

}  // namespace
