// Constant tables of the board: piece-square mirrors, square shades, Zobrist keys, move helpers.
#include <gtest/gtest.h>

#include <set>

#include "board/board.h"
#include "board/move_text.h"
#include "board/psq_table.h"
#include "board/square_shade.h"
#include "board/zobrist.h"

namespace {

Square64 s64(const char* name) { return Square64((name[1] - '1') * 8 + (name[0] - 'a')); }

TEST(PsqTableTest, MirrorsAcrossFilesAndColours) {
  for (int t = 0; t < 6; ++t)
    for (int s = 0; s < 64; ++s) {
      int rank = s >> 3, file = s & 7;
      EXPECT_EQ(psqTable[White][t][s], psqTable[White][t][rank * 8 + 7 - file]) << t << " " << s;
      EXPECT_EQ(psqTable[Black][t][s], psqTable[White][t][s ^ 56]) << t << " " << s;
    }
  EXPECT_EQ(psqTable[Black][Pawn - 1][s64("c7")], (ScorePair{49, 23}));
  EXPECT_EQ(psqTable[White][Pawn - 1][s64("c2")], (ScorePair{49, 23}));
  EXPECT_EQ(psqTable[White][Knight - 1][s64("c3")], (ScorePair{199, 30}));
  EXPECT_EQ(psqTable[White][Knight - 1][s64("a8")], (ScorePair{-74, -7}));
  EXPECT_EQ(psqTable[White][Knight - 1][s64("h8")], (ScorePair{-74, -7}));
  EXPECT_EQ(psqTable[Black][Knight - 1][s64("h1")], (ScorePair{-74, -7}));
  EXPECT_EQ(psqTable[White][Pawn - 1][s64("e4")], (ScorePair{86, -8}));
  EXPECT_EQ(psqTable[White][King - 1][s64("g1")], (ScorePair{63, 25}));
  EXPECT_EQ(psqTable[Black][King - 1][s64("g8")], (ScorePair{63, 25}));
  EXPECT_EQ(psqTable[White][Queen - 1][s64("d1")], (ScorePair{293, 64}));
  EXPECT_EQ(psqTable[White][Rook - 1][s64("a7")], (ScorePair{251, 50}));
  EXPECT_EQ(psqTable[White][Bishop - 1][s64("f4")], (ScorePair{178, 50}));
  for (int f = 0; f < 8; ++f) {
    EXPECT_EQ(psqTable[White][Pawn - 1][f], (ScorePair{0, 0}));
    EXPECT_EQ(psqTable[White][Pawn - 1][56 + f], (ScorePair{0, 0}));
  }
}

TEST(SquareShadeTest, AlternatesLikeTheBoard) {
  Board_0x88 board;  // builds the tables
  EXPECT_EQ(squareShade[0x00], 1u);  // a1
  EXPECT_EQ(squareShade[0x07], 0u);  // h1
  EXPECT_EQ(squareShade[0x01], 0u);  // b1
  EXPECT_EQ(squareShade[0x10], 0u);  // a2
  EXPECT_EQ(squareShade[0x77], 1u);  // h8
  EXPECT_EQ(squareShade[0x70], 0u);  // a8
  for (int sq = 0; sq < 120; ++sq) {
    if (sq & 0x88) continue;
    int rank = sq >> 4, file = sq & 7;
    EXPECT_EQ(squareShade[sq], uint32_t((rank + file) % 2 == 0));
  }
}

TEST(ZobristTest, KeysAreFixedFullAndDistinct) {
  Board_0x88 board;
  std::set<uint64_t> seen;
  uint64_t orAll = 0;
  auto take = [&](uint64_t k) {
    EXPECT_NE(k, 0u);
    EXPECT_TRUE(seen.insert(k).second);
    orAll |= k;
  };
  for (auto& colour : pieceKey)
    for (auto& type : colour)
      for (uint64_t k : type) take(k);
  for (int bit : {1, 2, 4, 8}) take(castlingKey[bit]);
  for (int i = 0; i < 16; ++i)
    if (i != 1 && i != 2 && i != 4 && i != 8) {
      EXPECT_EQ(castlingKey[i], 0u);
    }
  for (uint64_t k : epKey) take(k);
  take(sideKey);
  EXPECT_EQ(orAll, ~uint64_t(0));  // every bit is used by some key

  // Drawing again from the fixed seed gives the same keys.
  uint64_t first = pieceKey[0][0][0], side = sideKey;
  initZobristKeys();
  EXPECT_EQ(pieceKey[0][0][0], first);
  EXPECT_EQ(sideKey, side);
}

TEST(MoveTest, FieldsSameMoveAndText) {
  Move e2e4 = encodeMove(s64("e2"), s64("e4"), MoveNormal, DetailDoubleStep);
  EXPECT_EQ(moveFrom(e2e4), s64("e2"));
  EXPECT_EQ(moveTo(e2e4), s64("e4"));
  EXPECT_EQ(moveFromSquare(e2e4), 0x14);
  EXPECT_EQ(moveToSquare(e2e4), 0x34);
  EXPECT_EQ(moveKind(e2e4), unsigned(MoveNormal));
  EXPECT_EQ(moveDetail(e2e4), DetailDoubleStep);
  EXPECT_EQ(moveToString(e2e4), "e2e4");

  Move queen = encodeMove(s64("a7"), s64("a8"), MovePromotion, 3);
  Move rook = encodeMove(s64("a7"), s64("a8"), MovePromotion, 2);
  Move knight = encodeMove(s64("a7"), s64("a8"), MovePromotion, 0);
  Move plain = encodeMove(s64("a7"), s64("a8"));
  EXPECT_FALSE(sameMove(queen, rook));
  EXPECT_FALSE(sameMove(queen, plain));
  EXPECT_TRUE(sameMove(queen, encodePromotion(0x60, 0x70, Queen)));
  EXPECT_EQ(moveToString(queen), "a7a8q");
  EXPECT_EQ(moveToString(rook), "a7a8r");
  EXPECT_EQ(moveToString(knight), "a7a8n");
  EXPECT_EQ(moveToString(encodeMove(s64("b2"), s64("b1"), MovePromotion, 1)), "b2b1b");

  // Kind and detail of non-promotions take no part.
  Move ep = encodeMove(s64("e5"), s64("d6"), MoveEnPassant);
  EXPECT_TRUE(sameMove(ep, encodeMove(s64("e5"), s64("d6"))));
  EXPECT_TRUE(sameMove(encodeMove(s64("e1"), s64("g1"), MoveCastling, CastleWhiteKingSide), encodeMove(s64("e1"), s64("g1"))));
  EXPECT_EQ(moveToString(encodeMove(s64("e8"), s64("c8"), MoveCastling, CastleBlackQueenSide)), "e8c8");
  EXPECT_EQ(moveToString(ep), "e5d6");
  EXPECT_FALSE(sameMove(e2e4, encodeMove(s64("e2"), s64("e3"))));
  EXPECT_EQ(moveToString(NoMove), "a1a1");
}

TEST(MoveListTest, HoldsAtMost255) {
  MoveList list;
  for (int i = 0; i < 300; ++i) list.add(Move(i + 1));
  EXPECT_EQ(list.count, 255u);
  EXPECT_EQ(list.moves[254].move, 255);
  EXPECT_TRUE(list.contains(Move(1)));
  EXPECT_FALSE(list.contains(Move(256)));
}

TEST(BoardTest, ClearKeepsKillersAboveRecordZero) {
  Board_0x88 b;
  for (int i = 0; i < HistorySize; ++i) {
    EXPECT_EQ(b.history[i].hashKey, 0u);
    EXPECT_EQ(b.history[i].killer[0], 0);
  }
  b.history[0].killer[0] = 77;
  b.history[5].killer[0] = 99;
  b.counterMove[1][2][3] = 5;
  b.ply = 5;
  b.clear();
  EXPECT_EQ(b.ply, 0u);
  EXPECT_EQ(b.history[0].killer[0], 0);
  EXPECT_EQ(b.history[5].killer[0], 99);
  EXPECT_EQ(b.counterMove[1][2][3], 0);
  EXPECT_EQ(b.sideToMove, NoColor);
  EXPECT_EQ(b.epSquare, NoSquare);
  for (int s = 0; s < 128; ++s) {
    EXPECT_EQ(b.piece[s], NoPiece);
    EXPECT_EQ(b.color[s], NoColor);
    EXPECT_EQ(b.slot[s], NoSlot);
  }
  for (const PieceSet& set : b.side) {
    for (uint8_t s : set.square) EXPECT_EQ(s, NoSquare);
    EXPECT_EQ(set.total, 0);
  }
}

TEST(BoardTest, PawnHashSkipsOfficersInPawnSlots) {
  Board_0x88 b;
  b.sideToMove = White;
  b.placePiece(0x04, White, King);
  b.placePiece(0x10, White, Pawn);       // slot 8
  b.placePiece(0x20, White, Queen);      // slot 1
  b.placePiece(0x21, White, Queen);      // slot 9, an officer in a pawn slot
  EXPECT_EQ(b.slot[0x21], 9);
  EXPECT_EQ(b.computePawnHash(), pieceKey[White][Pawn - 1][8]);
  EXPECT_EQ(b.computePieceHash(White), pieceKey[White][King - 1][4] ^ pieceKey[White][Pawn - 1][8] ^
                                           pieceKey[White][Queen - 1][16] ^ pieceKey[White][Queen - 1][17]);
  EXPECT_EQ(b.computePieceHash(Black), 0u);
}

}  // namespace
