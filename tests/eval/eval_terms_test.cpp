// The terms of the evaluation, worked out by hand, as the report records them.
#include <gtest/gtest.h>

#include <thread>

#include "eval/eval_record.h"
#include "eval/pawn_structure.h"
#include "eval/scale_factor.h"
#include "eval_test_support.h"

namespace {

// "f<scale> p<phase> w<who can mate>" and each nonzero row of the report as
// its letter and "white mg,eg / black mg,eg": M material, P passed pawns,
// W weak pawns, B mobility, R rooks, Q queens, K king safety.
std::string termsOf(const std::string& fen) {
  initEvalTables();
  auto board = evaltest::boardFrom(fen);
  MaterialInfo info;
  computeMaterial(info, *board);
  PawnHash table;
  table.sizeFor(0);
  evaluateWithReport(*board, table);
  std::string text = "f" + std::to_string(ReportRecord::scaleFactor) + " p" + std::to_string(info.phase) + " w" +
                     "-WB+"[info.canWin[White] + 2 * info.canWin[Black]];
  const std::pair<EvalRowId, char> shown[] = {{RowMaterial, 'M'}, {RowPassedPawns, 'P'}, {RowWeakPawns, 'W'},
                                              {RowMobility, 'B'}, {RowRooks, 'R'},       {RowQueens, 'Q'},
                                              {RowKingSafety, 'K'}};
  for (auto [row, letter] : shown) {
    const EvalRow& r = ReportRecord::rows[row];
    if (r.white == ScorePair{0, 0} && r.black == ScorePair{0, 0}) continue;
    text += std::string(" ") + letter + std::to_string(r.white.mg) + "," + std::to_string(r.white.eg) + "/" +
            std::to_string(r.black.mg) + "," + std::to_string(r.black.eg);
  }
  return text;
}

TEST(EvalTermsTest, TermsOfHandComputedPositions) {
  const struct {
    const char *fen, *terms;
  } cases[] = {
      // isolated, doubled, both passed
      {"4k3/8/8/8/8/P7/P7/4K3 w - - 0 1", "f100 p0 wW M200,200/0,0 P24,36/0,0 W-39,-39/0,0 K-20,0/-20,0"},
      // a2 behind b4: its path is free
      {"4k3/8/8/8/1P6/8/P7/4K3 b - - 0 1", "f100 p0 wW M200,200/0,0 P20,80/0,0 K-20,0/-20,0"},
      // b5 attacks a4: a2 backward; b5 isolated
      {"4k3/8/8/1p6/1P6/8/P7/4K3 w - - 0 1", "f100 p0 w+ M100,100/0,0 W-22,-11/-27,-9 K-20,0/-20,0"},
      // a3 blocks a2's path; b4 passed
      {"4k3/8/8/8/1P6/p7/P7/4K3 w - - 0 1", "f100 p0 w+ M100,100/0,0 P16,52/0,0 W0,-1/-27,-9 K-20,0/-20,0"},
      // the king on f6 is too far
      {"8/8/5k2/P7/8/8/8/K7 b - - 0 1", "f100 p0 wW M100,100/0,0 P202,294/0,0 W-27,-9/0,0 K-10,0/-20,0"},
      // from e6 in time
      {"8/8/4k3/P7/8/8/8/K7 b - - 0 1", "f100 p0 wW M100,100/0,0 P32,79/0,0 W-27,-9/0,0 K-10,0/-20,0"},
      // an enemy knight ahead: quartered
      {"4k3/3n4/3N4/8/3P4/8/8/4K3 w - - 0 1", "f100 p2 wW M106,106/0,0 P5,2/0,0 W-27,-9/0,0 B24,32/18,24 K-20,0/-20,0"},
      // a2 blocked and attacked
      {"4k3/8/8/1p6/pP6/8/P7/4K3 w - - 0 1", "f100 p0 w+ W-22,-12/0,-1 K-20,0/-20,0"},
      // a6 never backward; b7 runs
      {"4k3/pP6/P7/8/8/8/8/4K3 w - - 0 1", "f100 p0 w+ M100,100/0,0 P197,401/0,0 W0,0/-27,-9 K-20,0/-20,0"},
      // h3 too far to cover the king
      {"4k3/8/8/8/8/7P/5P2/6K1 w - - 0 1", "f100 p0 wW M200,200/0,0 P8,56/0,0 W-54,-18/0,0 K-10,0/-20,0"},
      // open files at the king against rook and queen
      {"r2qk3/p6p/8/8/8/8/P6P/4K3 w - - 0 1", "f100 p6 w+ M-1640,-1637/0,0 W-54,-18/-54,-18 B0,0/74,110 Q0,0/0,11 K-98,-80/-20,0"},
      // open and half-open files beside the king
      {"r5k1/ppp3pp/8/8/8/3p4/PPP3PP/5K2 w - - 0 1", "f100 p2 w+ M-588,-588/0,0 B0,0/25,35 K-45,-26/-10,0"},
      // knight a1 trapped
      {"4k3/8/8/8/8/1P6/2P5/N3K3 w - - 0 1", "f100 p1 wW M507,507/0,0 P8,56/0,0 B-12,-58/0,0 K-20,0/-20,0"},
      // bishop c1 with one move
      {"4k3/8/8/8/8/8/1P1n4/2B1K3 w - - 0 1", "f100 p2 wW M130,130/0,0 P4,28/0,0 W-27,-9/0,0 B6,4/18,24 K-20,0/-20,0"},
      // queen a1 hemmed in
      {"4k3/8/8/8/8/8/PP6/QR2K3 w - - 0 1", "f100 p6 wW M1840,1837/0,0 P8,56/0,0 B10,11/0,0 K-20,0/-98,-80"},
      // rook on the king's file, three open files
      {"4k3/pppp3p/8/8/8/8/PPPP3P/4R1K1 w - - 0 1", "f100 p2 w+ M500,500/0,0 W-27,-9/-27,-9 B60,84/0,0 R112,74/0,0 K-10,0/-45,-26"},
      // rook on the only half-open file
      {"3k4/pppppppp/8/8/8/8/PPPP1PPP/4RK2 w - - 0 1", "f100 p2 w+ M376,376/0,0 B50,70/0,0 R12,-14/0,0 K-10,0/0,0"},
      // queen on an open file next to the king's
      {"4k3/ppp5/8/8/8/8/PPP5/3QK3 w - - 0 1", "f100 p4 w+ M1104,1101/0,0 B56,84/0,0 Q0,11/0,0 K-20,0/-59,-40"},
      // rook on the only open file beside the king's
      {"3k4/pppp1ppp/8/8/8/8/PPPP1PPP/4RK2 w - - 0 1", "f100 p2 w+ M476,476/0,0 B55,77/0,0 R62,37/0,0 K-10,0/-14,-14"},
      // phase capped at 24
      {"qnbqkbnq/pppppppp/8/8/8/8/PPPPPPPP/QNBQKBNQ w - - 0 1", "f100 p24 w+ P0,4/0,0 B-20,-61/-20,-67"},
      // a minor each and a pawn: only Black can win
      {"2b1k3/7p/8/8/8/8/8/1N2K3 w - - 0 1", "f100 p2 wB M-130,-130/0,0 P0,0/4,28 W0,0/-27,-9 B9,12/42,28 K-20,0/-20,0"},
      // two knights against a bishop: neither
      {"1n2k1n1/8/8/8/8/8/8/1B2K3 b - - 0 1", "f0 p3 w-"},
      // the fifty-move taper
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 11 60", "f98 p24 w+ B-46,-145/-46,-145"},
      // rook against bishop
      {"3bk3/8/8/8/8/8/8/R3K3 w - - 0 1", "f25 p3 wW"},
      // a fifth man leaves the table
      {"3bk3/7p/8/8/8/8/8/R3K3 w - - 0 1", "f100 p3 w+ M135,135/0,0 P0,0/4,28 W0,0/-27,-9 B50,70/42,28 R-22,-53/0,0 K-20,0/-59,-40"},
      // wrong bishop, king next to the corner
      {"8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1", "f0 p1 wW"},
      // queen against c2, king d1
      {"8/8/8/8/8/8/2p5/3k2QK w - - 0 1", "f25 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B68,102/0,0 K-10,0/-35,-26"},
      // a2, king b1
      {"8/8/8/8/8/8/p7/1k4QK w - - 0 1", "f25 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B76,114/0,0 K-10,0/-35,-26"},
  };
  for (const auto& c : cases) EXPECT_EQ(termsOf(c.fen), c.terms) << c.fen;
}

// Threads share a pawn hash of one slot, so every probe meets another
// structure's entry or a half-written one; none may be used.
TEST(PawnHashThreadTest, SharedTableNeverMixesTwoStructures) {
  initEvalTables();
  std::vector<std::unique_ptr<Board_0x88>> boards;
  std::vector<ScorePair> expected;
  PawnHash fresh;
  fresh.sizeFor(1);
  for (const std::string& fen : evaltest::suiteFens()) {
    boards.push_back(evaltest::boardFrom(fen));
    PawnInfo pawns{};
    expected.push_back(evaluatePawnStructure(*boards.back(), fresh, pawns));
  }
  PawnHash shared;
  shared.sizeFor(0);
  std::atomic<int> wrong{0};
  std::vector<std::thread> pool;
  for (int t = 0; t < 4; ++t)
    pool.emplace_back([&, t] {
      for (int round = 0; round < 200; ++round)
        for (size_t i = size_t(t); i < boards.size(); i += 3) {
          PawnInfo pawns{};
          if (!(evaluatePawnStructure(*boards[i], shared, pawns) == expected[i])) ++wrong;
        }
    });
  for (std::thread& th : pool) th.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
