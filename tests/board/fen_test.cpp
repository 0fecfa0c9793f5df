// FEN acceptance and refusal, slot choice, and keys/psq against a from-scratch computation.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "board/fen.h"
#include "board/psq_table.h"
#include "board/zobrist.h"

namespace {

Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

bool allListed(const Board_0x88& b) {
  for (int s = 0; s < 128; ++s)
    if (!(s & 0x88) && b.piece[s] != NoPiece && b.slot[s] == NoSlot) return false;
  return true;
}

// Everything a set-up board must agree on, computed without the board's own helpers.
void expectConsistent(const Board_0x88& b) {
  uint64_t key = 0, pawnKey = 0;
  ScorePair psq[2] = {{0, 0}, {0, 0}};
  int counts[2][7] = {}, totals[2] = {};
  for (int s = 0; s < 128; ++s) {
    if (s & 0x88) continue;
    if (b.piece[s] == NoPiece) {
      EXPECT_EQ(b.color[s], NoColor);
      EXPECT_EQ(b.slot[s], NoSlot);
      continue;
    }
    int c = b.color[s], t = b.piece[s];
    uint64_t k = pieceKey[c][t - 1][toSquare64(Square(s))];
    key ^= k;
    if (t == Pawn) pawnKey ^= k;
    const ScorePair& v = psqTable[c][t - 1][toSquare64(Square(s))];
    psq[c].mg = int16_t(psq[c].mg + v.mg);
    psq[c].eg = int16_t(psq[c].eg + v.eg);
    ++counts[c][t];
    ++totals[c];
    if (b.slot[s] != NoSlot) {
      EXPECT_EQ(b.side[c].square[b.slot[s]], s);
    }
  }
  for (int bit : {1, 2, 4, 8})
    if (b.castlingRights & bit) key ^= castlingKey[bit];
  if (b.epSquare != NoSquare) key ^= epKey[b.epSquare & 15];
  if (b.sideToMove == Black) key ^= sideKey;
  EXPECT_EQ(b.currentRecord().hashKey, key);
  EXPECT_EQ(b.currentRecord().pawnHashKey, pawnKey);
  // The from-scratch helpers walk the lists, which hold every piece of a real game.
  if (b.side[White].total + b.side[Black].total <= 32 && allListed(b)) {
    EXPECT_EQ(b.computeFullHash(), key);
    EXPECT_EQ(b.computePawnHash(), pawnKey);
  }
  for (int c = 0; c < 2; ++c) {
    EXPECT_EQ(b.psq[c], psq[c]);
    EXPECT_EQ(b.side[c].total, totals[c]);
    for (int t = 1; t <= 6; ++t) EXPECT_EQ(b.side[c].count[t], counts[c][t]);
    for (int slot = 0; slot < 16; ++slot) {
      Square s = b.side[c].square[slot];
      if (s & 0x88) continue;
      EXPECT_EQ(b.slot[s], slot);
      EXPECT_EQ(b.color[s], c);
    }
  }
}

TEST(FenTest, StartPositionSlotsAndState) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, startPositionFen));
  EXPECT_EQ(b.sideToMove, White);
  EXPECT_EQ(b.castlingRights, 15);
  EXPECT_EQ(b.epSquare, NoSquare);
  EXPECT_EQ(b.halfMoveClock, 0);
  EXPECT_EQ(b.ply, 0u);
  for (int c = 0; c < 2; ++c) {
    const PieceSet& set = b.side[c];
    int back = c == White ? 0 : 7, pawns = c == White ? 1 : 6;
    EXPECT_EQ(set.square[0], makeSquare(4, back));
    EXPECT_EQ(set.square[1], makeSquare(3, back));
    // The first rook, bishop and knight of the text take the lower slot.
    EXPECT_EQ(set.square[2], makeSquare(0, back));
    EXPECT_EQ(set.square[3], makeSquare(7, back));
    EXPECT_EQ(set.square[4], makeSquare(2, back));
    EXPECT_EQ(set.square[5], makeSquare(5, back));
    EXPECT_EQ(set.square[6], makeSquare(1, back));
    EXPECT_EQ(set.square[7], makeSquare(6, back));
    for (int f = 0; f < 8; ++f) EXPECT_EQ(set.square[8 + f], makeSquare(f, pawns));
    EXPECT_EQ(set.total, 16);
  }
  expectConsistent(b);
}

TEST(FenTest, AcceptsWhatTheRulesAllow) {
  Board_0x88 b;
  // The empty board needs no kings.
  EXPECT_TRUE(setupFromFen(b, "8/8/8/8/8/8/8/8 w - - 0 1"));
  EXPECT_EQ(b.side[White].total, 0);
  EXPECT_EQ(b.currentRecord().hashKey, 0u);
  EXPECT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"));
  EXPECT_EQ(b.castlingRights, 15);
  EXPECT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/R3K2R w Kq - 0 1"));
  EXPECT_EQ(b.castlingRights, CastleWK | CastleBQ);
  // Two blanks where the castling field stands: no rights.
  EXPECT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/R3K2R w  - 0 1"));
  EXPECT_EQ(b.castlingRights, 0);
  // A text may end behind the en-passant field.
  EXPECT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/4K3 w - -"));
  EXPECT_EQ(b.halfMoveClock, 0);
  // One number is the move number; two set the clock.
  EXPECT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/4K3 w - - 17"));
  EXPECT_EQ(b.halfMoveClock, 0);
  EXPECT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/4K3 w - - 17 40"));
  EXPECT_EQ(b.halfMoveClock, 17);
  EXPECT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/4K3 w - - 300 40"));
  EXPECT_EQ(b.halfMoveClock, 44);
  EXPECT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/4K3 w - - 0 1"));
  // The move number may run to any length.
  EXPECT_TRUE(setupFromFen(b, ("4k3/8/8/8/8/8/8/4K3 w - - 3 " + std::string(5000, '9')).c_str()));
  EXPECT_EQ(b.halfMoveClock, 3);
  expectConsistent(b);
}

TEST(FenTest, DropsRightsAndEnPassantSquaresThatCantBePlayed) {
  const struct {
    const char* fen;
    uint8_t rights;
    const char* ep;  // as kept
    const char* warnings;
  } cases[] = {
      {"8/8/8/8/8/8/8/4K3 b KQkq - 0 1", 0, "-",
       "# warning: castling rights without their king or rook at home dropped: KQkq\n"},
      {"r3k2r/8/8/8/8/8/8/RK5R w KQkq - 0 1", CastleBK | CastleBQ, "-",
       "# warning: castling rights without their king or rook at home dropped: KQ\n"},
      {"k7/8/8/8/8/8/8/NNNNKNNN w Kk - 0 1", 0, "-",
       "# warning: castling rights without their king or rook at home dropped: Kk\n"},
      {"r3k1r1/8/8/8/8/8/8/R3K2R b KQkq - 0 1", CastleWK | CastleWQ | CastleBQ, "-",
       "# warning: castling rights without their king or rook at home dropped: k\n"},
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", 15, "-", ""},
      // A pawn stands on the square it is said to have passed, or behind it.
      {"4k3/8/3p4/3pP3/8/8/8/4K3 w - d6 0 1", 0, "-",
       "# warning: en-passant square d6 dropped: no pawn can have passed it\n"},
      {"4k3/3n4/8/3pP3/8/8/8/4K3 w - d6 0 1", 0, "-",
       "# warning: en-passant square d6 dropped: no pawn can have passed it\n"},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", 0, "d6", ""},
  };
  for (const auto& c : cases) {
    Board_0x88 b, clean;
    FenRepairs repairs;
    ASSERT_TRUE(setupFromFen(b, c.fen, &repairs)) << c.fen;
    EXPECT_EQ(b.castlingRights, c.rights) << c.fen;
    EXPECT_EQ(describeRepairs(repairs), c.warnings) << c.fen;
    const std::string ep = b.epSquare == NoSquare ? "-" : std::string{char('a' + fileOf(b.epSquare)), char('1' + rankOf(b.epSquare))};
    EXPECT_EQ(ep, c.ep) << c.fen;
    // The key is that of the repaired position.
    EXPECT_EQ(b.currentRecord().hashKey, b.computeFullHash()) << c.fen;
  }
  // A refused text leaves no half-filled board behind: nothing has a side to move.
  Board_0x88 b;
  EXPECT_FALSE(setupFromFen(b, "4k3/8/3p4/3pP3/8/8/8/4K3 w - d6 0"));
  EXPECT_EQ(b.sideToMove, NoColor);
  EXPECT_EQ(b.side[White].total + b.side[Black].total, 0);
}

TEST(FenTest, RefusesWhatTheRulesForbid) {
  Board_0x88 b;
  const char* refused[] = {
      "",
      " 8/8/8/8/8/8/8/8 w - - 0 1",
      "8/8/8/8/8/8/8/8",
      "8/8/8/8/8/8/8 w - - 0 1",          // seven ranks
      "8/8/8/8/8/8/8/8/8 w - - 0 1",      // nine ranks
      "9/8/8/8/8/8/8/8 w - - 0 1",
      "08/8/8/8/8/8/8/8 w - - 0 1",
      "44p/8/8/8/8/8/8/8 w - - 0 1",      // ninth square
      "8p/8/8/8/8/8/8/8 w - - 0 1",
      "7/8/8/8/8/8/8/8 w - - 0 1",
      "8/8/8/8/8/8/8/7 w - - 0 1",
      "8/8/8/8/8/8/8/8 x - - 0 1",
      "8/8/8/8/8/8/8/8 w- - 0 1",
      "8/8/8/8/8/8/8/8 W - - 0 1",
      "8/8/8/8/8/8/8/8 w QK - 0 1",
      "8/8/8/8/8/8/8/8 w KK - 0 1",
      "8/8/8/8/8/8/8/8 w kQ - 0 1",
      "8/8/8/8/8/8/8/8 w qk - 0 1",
      "8/8/8/8/8/8/8/8 w -K - 0 1",
      "8/8/8/8/8/8/8/8 w K- - 0 1",
      "8/8/8/8/8/8/8/8 w KX - 0 1",
      "8/8/8/8/8/8/8/8 w KQ",
      "8/8/8/8/8/8/8/8 w - -x 0 1",
      "4k3/8/8/8/4P3/8/8/4K3 w - e3 0 1",  // wrong rank for White to move
      "4k3/8/8/8/4P3/8/8/4K3 b - e6 0 1",
      "4k3/8/8/8/8/8/8/4K3 b - e3 0 1",    // no pawn behind the square
      "4k3/8/8/8/4p3/8/8/4K3 b - e3 0 1",  // the pawn must be the opponent's
      "4k3/8/8/8/4P3/8/8/4K3 b - i3 0 1",
      "4k3/8/8/8/4P3/8/8/4K3 b - e9 0 1",
      "4k3/8/8/8/4P3/8/8/4K3 b - e3x 0 1",
      "4k3/8/8/8/8/8/8/4K3 w - - 0 0",
      "4k3/8/8/8/8/8/8/4K3 w - - 0",
      "4k3/8/8/8/8/8/8/4K3 w - - 0 ",
      "4k3/8/8/8/8/8/8/4K3 w - - 12345 1",
      "4k3/8/8/8/8/8/8/4K3 w - - -1 1",
      "4k3/8/8/8/8/8/8/4K3 w - - 1 x",
      "4k3/8/8/8/8/8/8/4K3 w - - 1 -5",
  };
  for (const char* fen : refused) EXPECT_FALSE(setupFromFen(b, fen)) << fen;
  // A refusal halfway leaves no trouble for the next text.
  ASSERT_TRUE(setupFromFen(b, startPositionFen));
  expectConsistent(b);
}

TEST(FenTest, EnPassantSquareOnlyWithACapturingPawn) {
  Board_0x88 b, plain;
  // Black to move, white pawn on e4, no black pawn beside it: field accepted and ignored.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1"));
  ASSERT_TRUE(setupFromFen(plain, "4k3/8/8/8/4P3/8/8/4K3 b - - 0 1"));
  EXPECT_EQ(b.epSquare, NoSquare);
  EXPECT_EQ(b.currentRecord().hashKey, plain.currentRecord().hashKey);
  // A black pawn on d4 can take: the square and its key count.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1"));
  ASSERT_TRUE(setupFromFen(plain, "4k3/8/8/8/3pP3/8/8/4K3 b - - 0 1"));
  EXPECT_EQ(b.epSquare, sq("e3"));
  EXPECT_EQ(b.currentRecord().hashKey, plain.currentRecord().hashKey ^ epKey[4]);
  expectConsistent(b);
  // White to move on the a-file edge: a pawn on b5 beside a6's pawn on a5.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/pP6/8/8/8/4K3 w - a6 0 1"));
  EXPECT_EQ(b.epSquare, sq("a6"));
  // A pawn on the far side of the board edge doesn't count (h4 is not beside a5).
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/p7/7P/8/8/4K3 w - a6 0 1"));
  EXPECT_EQ(b.epSquare, NoSquare);
  // The field may end the text.
  EXPECT_TRUE(setupFromFen(b, "4k3/8/8/8/3pP3/8/8/4K3 b - e3"));
}

TEST(FenTest, SlotsForExtraPieces) {
  Board_0x88 b;
  // Three white queens: slot 1, then the pawn slots in text order.
  ASSERT_TRUE(setupFromFen(b, "QQQ1k3/8/8/8/8/8/P7/4K3 w - - 0 1"));
  EXPECT_EQ(b.side[White].square[1], sq("a8"));
  EXPECT_EQ(b.side[White].square[8], sq("b8"));
  EXPECT_EQ(b.side[White].square[9], sq("c8"));
  EXPECT_EQ(b.side[White].square[10], sq("a2"));
  EXPECT_EQ(b.side[White].count[Queen], 3);
  expectConsistent(b);

  // A second king gets no slot but still counts.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/K3K3 w - - 0 1"));
  EXPECT_EQ(b.side[White].square[0], sq("a1"));
  EXPECT_EQ(b.slot[sq("e1")], NoSlot);
  EXPECT_EQ(b.side[White].count[King], 2);
  EXPECT_EQ(b.side[White].total, 2);

  // Nine pawns: the ninth has no slot.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/P7/PPPPPPPP/4K3 w - - 0 1"));
  EXPECT_EQ(b.slot[sq("h2")], NoSlot);
  EXPECT_EQ(b.side[White].count[Pawn], 9);

  // Eight pawns and a third rook: the rook finds the pawn slots full.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/PPPPPPPP/RRR1K3 w - - 0 1"));
  EXPECT_EQ(b.slot[sq("c1")], NoSlot);
  EXPECT_EQ(b.side[White].count[Rook], 3);
  expectConsistent(b);

  // Knights take their two class slots, then the pawn slots; the eleventh has none.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/NNNNNNNN/NNN1K3 w - - 0 1"));
  EXPECT_EQ(b.side[White].square[6], sq("a2"));
  EXPECT_EQ(b.side[White].square[15], sq("b1"));
  EXPECT_EQ(b.slot[sq("c1")], NoSlot);
  EXPECT_EQ(b.side[White].count[Knight], 11);
  expectConsistent(b);

  // Queens: slot 1 and eight pawn slots; the tenth has none.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/QQQQQQQQ/QQ2K3 w - - 0 1"));
  EXPECT_EQ(b.side[White].square[1], sq("a2"));
  EXPECT_EQ(b.slot[sq("b1")], NoSlot);
  EXPECT_EQ(b.side[White].count[Queen], 10);
  expectConsistent(b);
}

TEST(FenTest, WordsAreJoinedWithOneBlank) {
  Board_0x88 b;
  EXPECT_TRUE(setPositionFromWords(b, {"4k3/8/8/8/8/8/8/4K3", "b", "-", "-", "3", "9"}));
  EXPECT_EQ(b.sideToMove, Black);
  EXPECT_EQ(b.halfMoveClock, 3);
  // An empty word makes two blanks: no castling rights.
  EXPECT_TRUE(setPositionFromWords(b, {"4k3/8/8/8/8/8/8/4K3", "b", "", "-"}));
  EXPECT_FALSE(setPositionFromWords(b, {"4k3/8/8/8/8/8/8/4K3", "b", "-", "-", "0", "0"}));
}

TEST(FenTest, EverySuitePositionMatchesAFromScratchComputation) {
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  ASSERT_TRUE(in.good());
  std::string line;
  int positions = 0;
  Board_0x88 b;
  while (std::getline(in, line)) {
    std::string fen = line.substr(0, line.find(" ;"));
    ASSERT_TRUE(setupFromFen(b, fen.c_str())) << fen;
    expectConsistent(b);
    ++positions;
  }
  EXPECT_GT(positions, 100);
}

}  // namespace
