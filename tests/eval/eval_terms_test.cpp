// The terms of the evaluation, worked out by hand, as the report records them.
#include <gtest/gtest.h>

#include <thread>

#include "eval/eval_record.h"
#include "eval/pawn_structure.h"
#include "eval/scale_factor.h"
#include "eval_test_support.h"

extern uint32_t kingTropismTable[6][128];

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
      // a knight left to the defender: no race
      {"8/8/5k2/P7/8/8/8/K6n b - - 0 1", "f100 p1 wW M-195,-195/0,0 P32,79/0,0 W-27,-9/0,0 B0,0/6,8 K-10,0/-20,0"},
      // an enemy knight ahead: quartered
      {"4k3/3n4/3N4/8/3P4/8/8/4K3 w - - 0 1", "f100 p2 wW M106,106/0,0 P5,2/0,0 W-27,-9/0,0 B24,32/18,24 K-20,0/-20,0"},
      // a2 blocked and attacked
      {"4k3/8/8/1p6/pP6/8/P7/4K3 w - - 0 1", "f100 p0 w+ W-22,-12/0,-1 K-20,0/-20,0"},
      // two attackers charged once
      {"4k3/8/1p6/1P6/1p6/8/P7/4K3 w - - 0 1", "f100 p0 w+ W-22,-11/-39,-39 K-20,0/-20,0"},
      // a6 never backward; b7 runs
      {"4k3/pP6/P7/8/8/8/8/4K3 w - - 0 1", "f100 p0 w+ M100,100/0,0 P197,401/0,0 W0,0/-27,-9 K-20,0/-20,0"},
      // from e6 a move short with White to move
      {"8/8/4k3/P7/8/8/8/K7 w - - 0 1", "f100 p0 wW M100,100/0,0 P202,294/0,0 W-27,-9/0,0 K-10,0/-20,0"},
      // a black a4: the king on f3 too far
      {"k7/8/8/8/p7/5K2/8/8 w - - 0 1", "f100 p0 wB M-100,-100/0,0 P0,0/202,294 W0,0/-27,-9 K-20,0/-10,0"},
      // the king on e3 a move short
      {"k7/8/8/8/p7/4K3/8/8 b - - 0 1", "f100 p0 wB M-100,-100/0,0 P0,0/202,294 W0,0/-27,-9 K-20,0/-10,0"},
      // h3 too far to cover the king
      {"4k3/8/8/8/8/7P/5P2/6K1 w - - 0 1", "f100 p0 wW M200,200/0,0 P8,56/0,0 W-54,-18/0,0 K-10,0/-20,0"},
      // the a file counts as covered
      {"4k3/8/8/8/8/8/1P6/K7 w - - 0 1", "f100 p0 wW M100,100/0,0 P4,28/0,0 W-27,-9/0,0 K0,0/-20,0"},
      // open files at the king against rook and queen
      {"r2qk3/p6p/8/8/8/8/P6P/4K3 w - - 0 1", "f100 p6 w+ M-1640,-1637/0,0 W-54,-18/-54,-18 B0,0/74,110 Q0,0/0,11 K-98,-80/-20,0"},
      // two queens and two rooks count as two
      {"rq1qk2r/p6p/8/8/8/8/P6P/4K3 w - - 0 1", "f100 p12 w+ M-3280,-3274/0,0 W-54,-18/-54,-18 B0,0/113,146 Q0,0/0,11 K-98,-80/-20,0"},
      // open and half-open files beside the king
      {"r5k1/ppp3pp/8/8/8/3p4/PPP3PP/5K2 w - - 0 1", "f100 p2 w+ M-588,-588/0,0 B0,0/25,35 K-45,-26/-10,0"},
      // Black looks down the board
      {"6k1/5p2/7p/8/8/8/8/4K3 b - - 0 1", "f100 p0 wB M-200,-200/0,0 P0,0/8,56 W0,0/-54,-18 K-20,0/-10,0"},
      // king on rank 6: the last rank covers
      {"4k3/7P/6K1/8/8/8/8/8 w - - 0 1", "f100 p0 wW M100,100/0,0 P197,401/0,0 W-27,-9/0,0 K0,0/-20,0"},
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
      // two rooks on one open file: each its term
      {"4k3/pppp1ppp/8/8/8/8/PPPPRPPP/4RK2 w - - 0 1", "f100 p4 w+ M952,952/0,0 B50,70/0,0 R228,182/0,0 K-10,0/-62,-24"},
      // queens in pawn slots move as queens
      {"qq2k3/8/8/8/8/8/8/QQ2K3 w - - 0 1", "f100 p16 w+ B120,180/120,180 K-20,0/-20,0"},
      // promoted pieces count by type
      {"4k3/p7/8/8/8/8/1PN5/QNNQK3 w - - 0 1", "f100 p11 w+ M3111,3105/0,0 W-27,-9/-27,-9 B101,146/0,0 Q0,11/0,0 K-20,0/-98,-80"},
      // phase capped at 24
      {"qnbqkbnq/pppppppp/8/8/8/8/PPPPPPPP/QNBQKBNQ w - - 0 1", "f100 p24 w+ P0,4/0,0 B-20,-61/-20,-67"},
      // knight with eight own pawns
      {"4k3/pppppppp/8/8/8/8/PPPPPPPP/1N2K3 w - - 0 1", "f100 p1 w+ M343,343/0,0 B6,8/0,0"},
      // Black's rook with eight own pawns
      {"r3k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 w - - 0 1", "f100 p2 w+ M-464,-464/0,0 B0,0/15,21"},
      // five pawns: no adjustment
      {"4k3/pppppppp/8/8/8/8/PPPPP3/RN2K3 w - - 0 1", "f100 p3 w+ M525,525/0,0 P0,0/8,56 B-7,-34/0,0 K-10,0/0,0"},
      // a minor each and a pawn: only Black can win
      {"2b1k3/7p/8/8/8/8/8/1N2K3 w - - 0 1", "f100 p2 wB M-130,-130/0,0 P0,0/4,28 W0,0/-27,-9 B9,12/42,28 K-20,0/-20,0"},
      // two knights against a bishop: neither
      {"1n2k1n1/8/8/8/8/8/8/1B2K3 b - - 0 1", "f0 p3 w-"},
      // the fifty-move taper
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 11 60", "f98 p24 w+ B-46,-145/-46,-145"},
      // rook against bishop
      {"3bk3/8/8/8/8/8/8/R3K3 w - - 0 1", "f25 p3 wW"},
      // rook against knight
      {"3nk3/8/8/8/8/8/8/R3K3 w - - 0 1", "f12 p3 wW"},
      // the taper caps the table
      {"3bk3/8/8/8/8/8/8/R3K3 w - - 90 1", "f19 p3 wW"},
      // a fifth man leaves the table
      {"3bk3/7p/8/8/8/8/8/R3K3 w - - 0 1", "f100 p3 w+ M135,135/0,0 P0,0/4,28 W0,0/-27,-9 B50,70/42,28 R-22,-53/0,0 K-20,0/-59,-40"},
      // wrong bishop, king next to the corner
      {"8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1", "f0 p1 wW"},
      // king two steps away
      {"8/8/2k5/P7/8/8/8/2B1K3 b - - 0 1", "f50 p1 wW M425,425/0,0 P32,79/0,0 W-27,-9/0,0 B42,28/0,0 K-20,0/-20,0"},
      // h pawn, wrong bishop
      {"6k1/8/8/7P/8/8/8/3BK3 w - - 0 1", "f0 p1 wW"},
      // queen against c2, king d1
      {"8/8/8/8/8/8/2p5/3k2QK w - - 0 1", "f25 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B68,102/0,0 K-10,0/-35,-26"},
      // king e1 is no help
      {"8/8/8/8/8/8/2p5/4k1QK w - - 0 1", "f100 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B64,96/0,0 K-10,0/-39,-40"},
      // nor a b pawn
      {"8/8/8/8/8/8/1p6/2k3QK w - - 0 1", "f100 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B72,108/0,0 K-10,0/-35,-26"},
      // a2, king b1
      {"8/8/8/8/8/8/p7/1k4QK w - - 0 1", "f25 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B76,114/0,0 K-10,0/-35,-26"},
      // a2, king c1 is no help
      {"8/8/8/8/8/8/p7/2k3QK w - - 0 1", "f100 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B72,108/0,0 K-10,0/-39,-40"},
      // f2 and g1 mirror to c2 and b1
      {"K7/Q7/8/8/8/8/5p2/6k1 w - - 0 1", "f25 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B76,114/0,0 K0,0/-35,-26"},
      // h1 mirrors to a1, no help
      {"K7/Q7/8/8/8/8/5p2/7k w - - 0 1", "f100 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B76,114/0,0 K0,0/-35,-26"},
      // h2, king g1
      {"K7/Q7/8/8/8/8/7p/6k1 w - - 0 1", "f25 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B80,120/0,0 K0,0/-35,-26"},
      // h2, king f1 is no help
      {"K7/Q7/8/8/8/8/7p/5k2 w - - 0 1", "f100 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B80,120/0,0 K0,0/-39,-40"},
  };
  for (const auto& c : cases) EXPECT_EQ(termsOf(c.fen), c.terms) << c.fen;
}

// The tropism counts weigh nothing yet; the table is the part that exists.
TEST(EvalTermsTest, KingTropismCounts) {
  initEvalTables();
  // Against a king on g7: from e5 (difference 34) and from g4 (difference 48), by piece.
  const uint32_t fromE5[6] = {1, 2, 2, 0, 2, 1}, fromG4[6] = {0, 2, 0, 1, 1, 0};
  for (int piece = 0; piece < 6; ++piece) {
    EXPECT_EQ(kingTropismTable[piece][34], fromE5[piece]) << piece;
    EXPECT_EQ(kingTropismTable[piece][48], fromG4[piece]) << piece;
  }
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
