// The evaluation through its entry: worked scores with their lazy bounds, and
// properties over the suite and random positions, each also colour-mirrored:
// both colours score alike, the report agrees, the lazy exit and the clamp
// fit together, the fifty-move taper scales, the board is left as it was.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <thread>

#include "diagnostics/random_positions.h"
#include "eval/eval_record.h"
#include "eval/evaluation_report.h"
#include "eval/pawn_structure.h"
#include "eval/scale_factor.h"
#include "eval_test_support.h"

namespace {

using evaltest::evaluateFen;
using evaltest::mirrorFen;

constexpr int Inf = 32000;

TEST(EvaluateTest, ScoresAndBoundsOfWorkedPositions) {
  const struct {
    const char* what;
    const char* fen;
    int full, high, low;  // with the full window, one far above, one far below
  } cases[] = {
      {"bare kings", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", 0, 0, 0},
      {"fifty moves in the mate branch", "8/8/8/4k3/8/8/8/R3K3 w - - 100 80", 0, 0, 0},
      {"wrong bishop, king in the corner", "8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1", 0, 0, 0},
      {"start: the side to move has 24", startPositionFen, 24, 224, -176},
      {"the pawn's edge stands, no lazy exit", "8/8/8/8/3k4/8/p7/B6K w - - 0 1", -40, -40, -40},
      {"mate branch from 175", "r1b1kb1r/8/8/8/8/8/3BB3/1NB1KB2 w - - 0 1", -164, -164, -164},
      {"174: the main path with bounds", "rbb1k2r/8/8/8/8/8/8/r2QKQ2 w - - 0 1", -522, -265, -665},
      {"rook against bishop: the mate branch isn't scaled", "3bk3/8/8/8/8/8/8/R3K3 w - - 0 1", 238, 238, 238},
      {"at clock 100 a draw", "3bk3/8/8/8/8/8/8/R3K3 w - - 100 80", 0, 0, 0},
      // The mate branch: material, the move, the kings' distance, the weak king's edge.
      {"rook mate, king in the centre", "8/8/8/4k3/8/8/8/R3K3 w - - 0 1", 560 + 2 + 6 - 192, 376, 376},
      {"queen mate, kings in opposition", "4k3/8/4K3/8/8/8/8/Q7 w - - 0 1", 1101 + 4 + 10, 1115, 1115},
      // Bishop and knight: the defender is safe in the corners the bishop can't reach.
      {"KBNK, safe corner a8", "k7/8/8/8/3K4/8/8/2B1N3 w - - 0 1", 620 + 2 + 6 - 112, 516, 516},
      {"KBNK, the bishop's corner a1", "8/8/8/8/3K4/8/8/k1B1N3 w - - 0 1", 630, 630, 630},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(evaluateFen(c.fen), c.full) << c.what;
    EXPECT_EQ(evaluateFen(c.fen, Inf - 1, Inf), c.high) << c.what;
    EXPECT_EQ(evaluateFen(c.fen, -Inf, -Inf + 1), c.low) << c.what;
  }
}

std::string withClock(const std::string& fen, int clock) {
  std::istringstream in(fen);
  std::string placement, stm, castling, ep;
  in >> placement >> stm >> castling >> ep;
  return placement + " " + stm + " " + castling + " " + ep + " " + std::to_string(clock) + " 40";
}

int printedTotal(const Board_0x88& board, PawnHash& table) {
  testing::internal::CaptureStdout();
  printEvaluation(board, table);
  const std::string report = testing::internal::GetCapturedStdout(), mark = "Total evaluation =";
  const size_t at = report.find(mark);
  return at == std::string::npos ? -99999 : std::atoi(report.c_str() + at + mark.size());
}

TEST(EvaluateTest, PropertiesOverSuiteAndRandomPositions) {
  std::vector<std::string> fens = evaltest::suiteFens();
  ASSERT_GT(fens.size(), 100u);
  auto scratch = std::make_unique<Board_0x88>();
  std::srand(99);
  for (int i = 0; i < 1500; ++i) {
    std::string fen = randomPositionFen(*scratch);
    if (scratch->side[White].count[King] == 1 && scratch->side[Black].count[King] == 1) fens.push_back(fen);
  }
  PawnHash& table = evaltest::pawnHash();
  PawnHash oneSlot;
  oneSlot.sizeFor(0);
  EvalCache cache;
  int lazyChecked = 0, scaledChecked = 0;
  for (const std::string& base : fens) {
    ASSERT_EQ(mirrorFen(mirrorFen(base)), base);
    for (const std::string& fen : {base, mirrorFen(base)}) {
      auto board = evaltest::boardFrom(fen);
      auto before = std::make_unique<Board_0x88>(*board);
      const int full = evaluate(*board, table, -Inf, Inf);
      const int above = evaluate(*board, table, Inf - 1, Inf), below = evaluate(*board, table, -Inf, -Inf + 1);
      EXPECT_EQ(std::memcmp(board->piece, before->piece, sizeof board->piece), 0) << fen;
      EXPECT_EQ(std::memcmp(board->side, before->side, sizeof board->side), 0) << fen;
      EXPECT_EQ(board->currentRecord().hashKey, before->currentRecord().hashKey) << fen;
      // Through one cache, each answer is the evaluation's own, whatever the
      // entry keeps from an earlier window or fifty-move count.
      auto throughCache = [&](int a, int b, int clock) {
        board->halfMoveClock = uint8_t(clock);
        const bool same = evaluate(*board, table, cache, a, b) == evaluate(*board, table, a, b);
        board->halfMoveClock = before->halfMoveClock;
        return same;
      };
      for (int clock : {0, 50, 0, 99, 100, 0})
        for (auto [a, b] : {std::pair{Inf - 1, Inf}, {-Inf, Inf}, {-Inf, -Inf + 1}})
          EXPECT_TRUE(throughCache(a, b, clock)) << fen << " clock " << clock;
      if (fen != base) {
        EXPECT_EQ(full, evaluateFen(base)) << fen;
        EXPECT_EQ(above, evaluateFen(base, Inf - 1, Inf)) << fen;
        EXPECT_EQ(below, evaluateFen(base, -Inf, -Inf + 1)) << fen;
      }
      // The report gives the same score twice: computing the pawn structure, then finding it.
      oneSlot.clear();
      EXPECT_EQ(evaluateWithReport(*board, oneSlot), full) << fen;
      const EvalRow weak = ReportRecord::rows[RowWeakPawns];
      EXPECT_EQ(ReportRecord::rows[RowPawnStructure].white, (ScorePair{0, 0})) << fen;
      EXPECT_EQ(printedTotal(*board, oneSlot), board->sideToMove == White ? full : -full) << fen;
      EXPECT_EQ(ReportRecord::rows[RowPawnStructure].white, weak.white - weak.black) << fen;

      MaterialInfo info;
      computeMaterial(info, *board);
      const bool mateBranch = takesMateBranch(info, taper(info.material, info.phase));
      const int scale = computeScaleFactor(*board, info);
      if (!mateBranch && scale == 100 && info.canWin[White] && info.canWin[Black]) {
        // The bounds name the base score; the full score lies within the clamp of it.
        ++lazyChecked;
        const int b = above - PositionalLimit;
        EXPECT_EQ(below, b - PositionalLimit) << fen;
        EXPECT_LE(std::abs(full - b), PositionalLimit) << fen;
        EXPECT_EQ(evaluateFen(fen, b + 199, Inf), full) << fen;
        EXPECT_EQ(evaluateFen(fen, b + 200, Inf), b + 200) << fen;
        EXPECT_EQ(evaluateFen(fen, -Inf, b - 199), full) << fen;
        EXPECT_EQ(evaluateFen(fen, -Inf, b - 200), b - 200) << fen;
        for (int edge : {b + 199, b + 200}) EXPECT_TRUE(throughCache(edge, Inf, 0)) << fen;
        for (int edge : {b - 199, b - 200}) EXPECT_TRUE(throughCache(-Inf, edge, 0)) << fen;
      }
      if (!mateBranch && computeScaleFactor(*evaltest::boardFrom(withClock(fen, 0)), info) == 100) {
        // At three quarters no window is looked at; rounding is toward zero.
        ++scaledChecked;
        const int fresh = evaluateFen(withClock(fen, 0));
        EXPECT_EQ(evaluateFen(withClock(fen, 50)), fresh * 75 / 100) << fen;
        EXPECT_EQ(evaluateFen(withClock(fen, 50), Inf - 1, Inf), fresh * 75 / 100) << fen;
        EXPECT_EQ(evaluateFen(withClock(fen, 50), -Inf, -Inf + 1), fresh * 75 / 100) << fen;
        EXPECT_EQ(evaluateFen(withClock(fen, 99)), fresh / 100) << fen;
      }
    }
  }
  EXPECT_GT(lazyChecked, 500);
  EXPECT_GT(scaledChecked, 1000);
}

// The terms of the evaluation, worked out by hand, as the report records them.
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
      // an enemy knight ahead: quartered
      {"4k3/3n4/3N4/8/3P4/8/8/4K3 w - - 0 1", "f100 p2 wW M106,106/0,0 P5,2/0,0 W-27,-9/0,0 B24,32/18,24 K-20,0/-20,0"},
      // a2 blocked and attacked
      {"4k3/8/8/1p6/pP6/8/P7/4K3 w - - 0 1", "f100 p0 w+ W-22,-12/0,-1 K-20,0/-20,0"},
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
      // rook on the only open file beside the king's
      {"3k4/pppp1ppp/8/8/8/8/PPPP1PPP/4RK2 w - - 0 1", "f100 p2 w+ M476,476/0,0 B55,77/0,0 R62,37/0,0 K-10,0/-14,-14"},
      // a knight each: neither can win, the score is scaled to nothing
      {"4k3/8/8/8/8/8/8/1n2K1N1 w - - 0 1", "f0 p2 w-"},
      // a minor each and a pawn: only Black can win
      {"2b1k3/7p/8/8/8/8/8/1N2K3 w - - 0 1", "f100 p2 wB M-130,-130/0,0 P0,0/4,28 W0,0/-27,-9 B9,12/42,28 K-20,0/-20,0"},
      // the fifty-move taper
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 11 60", "f98 p24 w+ B-46,-145/-46,-145"},
      // rook against bishop
      {"3bk3/8/8/8/8/8/8/R3K3 w - - 0 1", "f25 p3 wW"},
      // wrong bishop, king next to the corner
      {"8/1k6/8/P7/8/8/8/2B1K3 w - - 0 1", "f0 p1 wW"},
      // queen against c2, king d1
      {"8/8/8/8/8/8/2p5/3k2QK w - - 0 1", "f25 p4 w+ M1004,1001/0,0 P0,0/69,173 W0,0/-27,-9 B68,102/0,0 K-10,0/-35,-26"},
  };
  for (const auto& c : cases) EXPECT_EQ(termsOf(c.fen), c.terms) << c.fen;
}

// Threads share a pawn hash of one slot, so every probe meets another
// structure's entry or a half-written one; none may be used.
TEST(PawnHashThreadTest, SharedTableNeverMixesTwoStructures) {
  initEvalTables();
  std::vector<std::unique_ptr<Board_0x88>> boards;
  std::vector<ScorePair> expected;
  for (const std::string& fen : evaltest::suiteFens()) {
    boards.push_back(evaltest::boardFrom(fen));
    PawnInfo pawns{};
    expected.push_back(evaluatePawnStructure(*boards.back(), evaltest::pawnHash(), pawns));
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
