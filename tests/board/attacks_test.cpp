// Attack scan order, check and pin detection, and the legality trial at their edges.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/move_generation.h"
#include "board/move_text.h"

namespace {

Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

Move mv(const char* from, const char* to, unsigned kind = MoveNormal, unsigned detail = 0) {
  return encodeMove88(sq(from), sq(to), kind, detail);
}

uint64_t bit(const char* name) { return uint64_t(1) << toSquare64(sq(name)); }

// Everything a trial could disturb.
bool sameBoard(const Board_0x88& a, const Board_0x88& b) {
  return std::memcmp(a.piece, b.piece, sizeof a.piece) == 0 && std::memcmp(a.color, b.color, sizeof a.color) == 0 &&
         std::memcmp(a.slot, b.slot, sizeof a.slot) == 0 && std::memcmp(a.side, b.side, sizeof a.side) == 0 &&
         a.psq[0] == b.psq[0] && a.psq[1] == b.psq[1] && a.castlingRights == b.castlingRights &&
         a.epSquare == b.epSquare && a.halfMoveClock == b.halfMoveClock && a.ply == b.ply &&
         a.sideToMove == b.sideToMove && a.history[a.ply].hashKey == b.history[b.ply].hashKey &&
         a.history[a.ply].pawnHashKey == b.history[b.ply].pawnHashKey;
}

// The first white (or black) attacker of `target`, or NoSquare.
template <Color A>
Square attackerOf(const Board_0x88& b, const char* target) {
  CheckInfo info;
  if (!isAttackedBy<A>(b, sq(target), info)) return NoSquare;
  EXPECT_EQ(info.count, 1);
  return info.square[0];
}

bool hasMove(const MoveList& list, Move m) { return list.contains(m); }

std::string squareName(Square s) {
  if (s & 0x88) return "none";
  return std::string{char('a' + fileOf(s)), char('1' + rankOf(s))};
}

}  // namespace

TEST(AttackQueries, KingNextToTheTargetCountsAsAttacker) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "8/8/8/4k3/8/4K3/8/8 w - - 0 1"));
  EXPECT_EQ(squareName(attackerOf<Black>(b, "e4")), "e5");
  EXPECT_EQ(squareName(attackerOf<White>(b, "e4")), "e3");
  EXPECT_EQ(squareName(attackerOf<Black>(b, "d3")), "none");

  // A negative answer leaves the record as it was.
  CheckInfo info;
  info.count = 7;
  info.square[0] = sq("a1");
  EXPECT_FALSE(isAttackedBy<Black>(b, sq("e2"), info));
  EXPECT_EQ(info.count, 7);
  EXPECT_EQ(info.square[0], sq("a1"));

  // So the kings can never step next to each other.
  MoveList list;
  bool inCheck = true;
  generateLegalMoves(b, list, inCheck);
  EXPECT_FALSE(inCheck);
  EXPECT_FALSE(hasMove(list, mv("e3", "e4")));
  EXPECT_FALSE(hasMove(list, mv("e3", "d4")));
  EXPECT_FALSE(hasMove(list, mv("e3", "f4")));
  EXPECT_TRUE(hasMove(list, mv("e3", "d3")));
  EXPECT_EQ(list.count, 5u);
}

TEST(AttackQueries, SideWithoutKingIsNeverInCheckAndHasNoPins) {
  // The white pieces stand where offsets from square 255 wrap to in 8-bit
  // arithmetic (a1 = 255 + 1, a3 = 255 + 33, a2 = 255 + 17), so a scan that
  // trusts the wrap alone would find them.
  const char* fens[] = {
      "8/8/8/8/8/N7/8/K7 b - - 0 1",
      "8/8/8/8/8/8/B7/1R6 b - - 0 1",
      "8/8/8/8/8/1B6/n7/n1R4K b - - 0 1",
      "8/8/8/8/8/8/8/8 w - - 0 1",
  };
  for (const char* fen : fens) {
    SCOPED_TRACE(fen);
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, fen));
    ASSERT_EQ(b.side[Black].square[0], NoSquare);

    CheckInfo info;
    EXPECT_FALSE(findCheck<Black>(b, b.side[Black].square[0], info));
    EXPECT_EQ(info.count, 0);
    EXPECT_FALSE(isAttackedBy<White>(b, NoSquare, info));

    PinMasks pins;
    pins.orthogonal = pins.diagonal = ~uint64_t(0);
    computePins<Black>(b, pins);
    EXPECT_EQ(pins.orthogonal, 0u);
    EXPECT_EQ(pins.diagonal, 0u);
  }

  // The kingless side moves freely: both knights keep their captures.
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "8/8/8/8/8/1B6/n7/n1R4K b - - 0 1"));
  MoveList list;
  bool inCheck = true;
  generateLegalMoves(b, list, inCheck);
  EXPECT_FALSE(inCheck);
  EXPECT_TRUE(hasMove(list, mv("a1", "b3")));
  EXPECT_TRUE(hasMove(list, mv("a2", "c1")));
  EXPECT_EQ(list.count, 5u);  // a1b3 a1c2 a2c1 a2c3 a2b4
}

TEST(AttackQueries, DoubleCheckByRookAndKnightReportsTheKnightOnce) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "4k3/8/3N4/8/8/8/8/4RK2 b - - 0 1"));
  CheckInfo info;
  ASSERT_TRUE(findCheck<Black>(b, sq("e8"), info));
  EXPECT_EQ(info.count, 1);
  EXPECT_EQ(squareName(info.square[0]), "d6");

  // Further calls append until the record holds two, then leave it alone.
  ASSERT_TRUE(findCheck<Black>(b, sq("e8"), info));
  EXPECT_EQ(info.count, 2);
  EXPECT_EQ(squareName(info.square[1]), "d6");
  ASSERT_TRUE(findCheck<Black>(b, sq("e8"), info));
  EXPECT_EQ(info.count, 2);

  // Only king moves survive, and only those off the file and off the knight's squares.
  MoveList list;
  bool inCheck = false;
  generateLegalMoves(b, list, inCheck);
  EXPECT_TRUE(inCheck);
  ASSERT_EQ(list.count, 3u);
  EXPECT_TRUE(hasMove(list, mv("e8", "d8")));
  EXPECT_TRUE(hasMove(list, mv("e8", "d7")));
  EXPECT_TRUE(hasMove(list, mv("e8", "f8")));
}

TEST(AttackQueries, ScanOrderDecidesWhichAttackerIsReported) {
  struct Case {
    const char* fen;
    const char* target;
    Color attacker;
    const char* expected;
  };
  const Case cases[] = {
      // Pawns first, the one on target - 15 before target - 17, then the knight.
      {"4k3/8/8/8/8/3P1PN1/8/4K3 w - - 0 1", "e4", White, "f3"},
      {"4k3/8/8/8/8/3P2N1/8/4K3 w - - 0 1", "e4", White, "d3"},
      {"4k3/8/3p1p2/8/8/8/8/4K3 w - - 0 1", "e5", Black, "d6"},
      {"4k3/8/5p2/8/2n5/8/8/4K3 w - - 0 1", "e5", Black, "f6"},
      // Knights and king interleaved by index: knight +14, king -1, knight +31, ...
      {"4k3/8/8/8/5K2/6N1/5N2/8 w - - 0 1", "e4", White, "g3"},
      {"4k3/8/8/8/5K2/8/5N2/8 w - - 0 1", "e4", White, "f4"},
      // Leapers before sliders.
      {"4k3/8/8/8/8/2N5/8/K3R3 w - - 0 1", "e4", White, "c3"},
      // Rays: east, south, west, north; rooks before bishops.
      {"k3R3/8/8/8/R6R/8/8/4R2K w - - 0 1", "e4", White, "h4"},
      {"k3R3/8/8/8/R7/8/8/4Q2K w - - 0 1", "e4", White, "e1"},
      {"k3R3/8/8/5B2/R7/8/8/7K w - - 0 1", "e4", White, "a4"},
      {"k3Q3/8/8/5B2/8/8/8/7K w - - 0 1", "e4", White, "e8"},
      // Diagonals: south-east, south-west, north-west, north-east.
      {"k7/1B5B/8/8/8/8/6B1/1B5K w - - 0 1", "e4", White, "g2"},
      {"k7/1B5B/8/8/8/8/8/1B5K w - - 0 1", "e4", White, "b1"},
      {"k7/1Q5B/8/8/8/8/8/7K w - - 0 1", "e4", White, "b7"},
      {"k7/7B/8/8/8/8/8/7K w - - 0 1", "e4", White, "h7"},
      // Any piece blocks a ray; the wrong slider on a ray attacks nothing.
      {"k7/8/8/8/8/8/4P3/4R2K w - - 0 1", "e4", White, "none"},
      {"k7/8/8/8/8/8/4p3/4Q2K w - - 0 1", "e4", White, "none"},
      {"k7/8/8/8/B7/8/8/4B2K w - - 0 1", "e4", White, "none"},
      {"k7/7R/8/8/8/8/2R5/7K w - - 0 1", "e4", White, "none"},
      // Colour matters: own pieces are no attackers.
      {"k7/8/8/8/8/3p1n2/8/4r2K w - - 0 1", "e4", White, "none"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fen);
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, c.fen));
    Square found = c.attacker == White ? attackerOf<White>(b, c.target) : attackerOf<Black>(b, c.target);
    EXPECT_EQ(squareName(found), c.expected);
  }
}

TEST(AttackQueries, EnPassantWithBothPawnsShieldingTheKingIsRefusedByTrial) {
  struct Case {
    const char* fen;
    Move capture;
    bool legal;
  };
  const Case cases[] = {
      {"8/8/8/K2pP2r/8/8/8/7k w - d6 0 1", mv("e5", "d6", MoveEnPassant), false},
      {"8/8/8/K2Pp2r/8/8/8/7k w - e6 0 1", mv("d5", "e6", MoveEnPassant), false},
      {"8/8/8/r2pP2K/8/8/8/7k w - d6 0 1", mv("e5", "d6", MoveEnPassant), false},
      {"7K/8/8/8/k2pP2Q/8/8/8 b - e3 0 1", mv("d4", "e3", MoveEnPassant), false},
      // Without the rook the same capture is fine.
      {"8/8/8/K2pP3/8/8/8/7k w - d6 0 1", mv("e5", "d6", MoveEnPassant), true},
      {"7K/8/8/8/k2pP3/8/8/8 b - e3 0 1", mv("d4", "e3", MoveEnPassant), true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fen);
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, c.fen));
    ASSERT_NE(b.epSquare, NoSquare);
    const Board_0x88 before = b;
    PinMasks pins;
    bool legal;
    if (b.sideToMove == White) {
      computePins<White>(b, pins);
      legal = isLegalWhenNotInCheck<White>(b, c.capture, pins);
    } else {
      computePins<Black>(b, pins);
      legal = isLegalWhenNotInCheck<Black>(b, c.capture, pins);
    }
    EXPECT_EQ(pins.orthogonal, 0u);
    EXPECT_EQ(pins.diagonal, 0u);
    EXPECT_EQ(legal, c.legal);
    EXPECT_TRUE(sameBoard(b, before));
  }
}

TEST(AttackQueries, PinNeedsTheEnemySliderDirectlyBehindTheOwnPiece) {
  struct Case {
    const char* fen;
    uint64_t orthogonal;
    uint64_t diagonal;
  };
  const Case cases[] = {
      {"4r2k/8/8/8/8/4R3/8/4K3 w - - 0 1", bit("e3"), 0},
      {"4r2k/8/8/4p3/8/4R3/8/4K3 w - - 0 1", 0, 0},  // enemy pawn behind
      {"4r2k/8/8/4n3/8/4R3/8/4K3 w - - 0 1", 0, 0},  // enemy knight behind
      {"4r2k/8/8/8/4N3/4R3/8/4K3 w - - 0 1", 0, 0},  // two own pieces
      {"4b2k/8/8/8/8/4R3/8/4K3 w - - 0 1", 0, 0},    // bishop on a file pins nothing
      {"7k/8/8/q7/8/8/3B4/4K3 w - - 0 1", 0, bit("d2")},
      {"7k/8/8/q7/1n6/8/3B4/4K3 w - - 0 1", 0, 0},
      {"7k/8/8/q7/8/2p5/3B4/4K3 w - - 0 1", 0, 0},
      {"7k/8/8/r7/8/8/3B4/4K3 w - - 0 1", 0, 0},  // rook on a diagonal pins nothing
      {"7k/8/8/8/8/8/8/q2NK1Br w - - 0 1", bit("d1") | bit("g1"), 0},
      {"k7/8/8/8/8/8/8/r1NK1Q1q w - - 0 1", bit("c1") | bit("f1"), 0},
      {"4q2k/8/8/8/4B3/8/8/4K3 w - - 0 1", bit("e4"), 0},
      {"4k3/8/8/3q4/8/8/6B1/7K w - - 0 1", 0, bit("g2")},
      // Black's own pins, mirrored.
      {"4k3/8/4n3/8/8/8/8/4R2K b - - 0 1", bit("e6"), 0},
      {"4k3/3p4/8/8/Q7/8/8/7K b - - 0 1", 0, bit("d7")},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fen);
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, c.fen));
    PinMasks pins;
    if (b.sideToMove == White)
      computePins<White>(b, pins);
    else
      computePins<Black>(b, pins);
    EXPECT_EQ(pins.orthogonal, c.orthogonal);
    EXPECT_EQ(pins.diagonal, c.diagonal);
  }
}

TEST(AttackQueries, PinnedRookMayMoveOnlyAlongThePinLine) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "4r2k/8/8/8/4R3/8/8/4K3 w - - 0 1"));
  const Board_0x88 before = b;
  PinMasks pins;
  computePins<White>(b, pins);
  ASSERT_EQ(pins.orthogonal, bit("e4"));
  EXPECT_TRUE(isLegalWhenNotInCheck<White>(b, mv("e4", "e6"), pins));
  EXPECT_TRUE(isLegalWhenNotInCheck<White>(b, mv("e4", "e8"), pins));
  EXPECT_TRUE(isLegalWhenNotInCheck<White>(b, mv("e4", "e2"), pins));
  EXPECT_FALSE(isLegalWhenNotInCheck<White>(b, mv("e4", "a4"), pins));
  EXPECT_FALSE(isLegalWhenNotInCheck<White>(b, mv("e4", "h4"), pins));
  EXPECT_TRUE(sameBoard(b, before));

  // A rook pinned on a diagonal has no move at all.
  ASSERT_TRUE(setupFromFen(b, "7k/8/8/8/7b/8/5R2/4K3 w - - 0 1"));
  computePins<White>(b, pins);
  ASSERT_EQ(pins.diagonal, bit("f2"));
  EXPECT_FALSE(isLegalWhenNotInCheck<White>(b, mv("f2", "f5"), pins));
  EXPECT_FALSE(isLegalWhenNotInCheck<White>(b, mv("f2", "a2"), pins));
  EXPECT_FALSE(isLegalWhenNotInCheck<White>(b, mv("f2", "f1"), pins));

  // Without a pin the rook goes anywhere at no cost; king moves are always tried.
  ASSERT_TRUE(setupFromFen(b, "3r3k/8/8/8/8/8/5R2/4K3 w - - 0 1"));
  computePins<White>(b, pins);
  ASSERT_EQ(pins.any(), 0u);
  EXPECT_TRUE(isLegalWhenNotInCheck<White>(b, mv("f2", "a2"), pins));
  EXPECT_TRUE(isLegalWhenNotInCheck<White>(b, mv("e1", "f1"), pins));
  EXPECT_FALSE(isLegalWhenNotInCheck<White>(b, mv("e1", "d1"), pins));
  EXPECT_FALSE(isLegalWhenNotInCheck<White>(b, mv("e1", "d2"), pins));
}

TEST(AttackQueries, EvasionsAreDecidedByTrial) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "4r2k/8/8/8/R7/8/8/4K3 w - - 0 1"));
  const Board_0x88 before = b;
  EXPECT_TRUE(isLegalEvasion<White>(b, mv("a4", "e4")));   // block
  EXPECT_FALSE(isLegalEvasion<White>(b, mv("a4", "a5")));  // ignores the check
  EXPECT_FALSE(isLegalEvasion<White>(b, mv("e1", "e2")));  // stays on the file
  EXPECT_TRUE(isLegalEvasion<White>(b, mv("e1", "d1")));
  EXPECT_TRUE(isLegalEvasion<White>(b, mv("e1", "f2")));
  EXPECT_TRUE(sameBoard(b, before));

  // Capturing the checker, and an en-passant capture of a checking pawn.
  ASSERT_TRUE(setupFromFen(b, "7k/8/8/3pP3/4K3/8/8/8 w - d6 0 1"));
  EXPECT_TRUE(isLegalEvasion<White>(b, mv("e5", "d6", MoveEnPassant)));
  EXPECT_TRUE(isLegalEvasion<White>(b, mv("e4", "d5")));
  // The same capture uncovering the e-file is refused.
  ASSERT_TRUE(setupFromFen(b, "4r2k/8/8/3pP3/4K3/8/8/8 w - d6 0 1"));
  EXPECT_FALSE(isLegalEvasion<White>(b, mv("e5", "d6", MoveEnPassant)));
}
