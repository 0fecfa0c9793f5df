// Make and unmake: random lines from the suite positions checked against an
// independent model of each move, and the corner cases of rights, slots and clock.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "board/psq_table.h"
#include "board/zobrist.h"

namespace {

Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

Move mv(const char* from, const char* to, unsigned kind = MoveNormal, unsigned detail = 0) {
  return encodeMove88(sq(from), sq(to), kind, detail);
}

std::vector<std::string> suiteFens() {
  std::vector<std::string> fens;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string line;
  while (std::getline(in, line)) {
    std::string::size_type cut = line.find(';');
    std::string fen = line.substr(0, cut);
    while (!fen.empty() && (fen.back() == ' ' || fen.back() == '\r')) fen.pop_back();
    if (!fen.empty()) fens.push_back(fen);
  }
  return fens;
}

// What make and unmake promise to restore at the current ply.
struct Snapshot {
  uint8_t piece[128], color[128], slot[128];
  PieceSet side[2];
  ScorePair psq[2];
  uint32_t ply;
  uint8_t castlingRights, epSquare, halfMoveClock, sideToMove;
  uint64_t hashKey, pawnHashKey;
};

Snapshot take(const Board_0x88& b) {
  Snapshot s;
  std::memcpy(s.piece, b.piece, sizeof s.piece);
  std::memcpy(s.color, b.color, sizeof s.color);
  std::memcpy(s.slot, b.slot, sizeof s.slot);
  std::memcpy(s.side, b.side, sizeof s.side);
  s.psq[0] = b.psq[0];
  s.psq[1] = b.psq[1];
  s.ply = b.ply;
  s.castlingRights = b.castlingRights;
  s.epSquare = b.epSquare;
  s.halfMoveClock = b.halfMoveClock;
  s.sideToMove = b.sideToMove;
  s.hashKey = b.history[b.ply].hashKey;
  s.pawnHashKey = b.history[b.ply].pawnHashKey;
  return s;
}

// The first field that differs, or "" when the two agree.
std::string difference(const Snapshot& a, const Snapshot& b) {
  if (std::memcmp(a.piece, b.piece, sizeof a.piece)) return "piece array";
  if (std::memcmp(a.color, b.color, sizeof a.color)) return "color array";
  if (std::memcmp(a.slot, b.slot, sizeof a.slot)) return "slot array";
  for (int c = 0; c < 2; ++c) {
    if (std::memcmp(a.side[c].square, b.side[c].square, sizeof a.side[c].square)) return "list squares";
    if (std::memcmp(a.side[c].count, b.side[c].count, sizeof a.side[c].count)) return "counts";
    if (a.side[c].total != b.side[c].total) return "total";
    if (!(a.psq[c] == b.psq[c])) return "psq";
  }
  if (a.ply != b.ply) return "ply";
  if (a.castlingRights != b.castlingRights) return "castlingRights";
  if (a.epSquare != b.epSquare) return "epSquare";
  if (a.halfMoveClock != b.halfMoveClock) return "halfMoveClock";
  if (a.sideToMove != b.sideToMove) return "sideToMove";
  if (a.hashKey != b.hashKey) return "hashKey";
  if (a.pawnHashKey != b.pawnHashKey) return "pawnHashKey";
  return "";
}

ScorePair psqFromScratch(const Board_0x88& b, int c) {
  ScorePair sum{0, 0};
  for (int s = 0; s < 128; ++s) {
    if ((s & 0x88) || b.color[s] != c) continue;
    const ScorePair& v = psqTable[c][b.piece[s] - 1][toSquare64(Square(s))];
    sum.mg = int16_t(sum.mg + v.mg);
    sum.eg = int16_t(sum.eg + v.eg);
  }
  return sum;
}

// Arrays and lists agree, class slots hold their class, counts match the board.
std::string listsDisagree(const Board_0x88& b) {
  static const uint8_t classOfSlot[8] = {King, Queen, Rook, Rook, Bishop, Bishop, Knight, Knight};
  int counts[2][7] = {}, totals[2] = {};
  for (int s = 0; s < 128; ++s) {
    if (s & 0x88) continue;
    if (b.piece[s] == NoPiece) {
      if (b.color[s] != NoColor || b.slot[s] != NoSlot) return "empty square with colour or slot";
      continue;
    }
    int c = b.color[s];
    if (c > Black) return "piece without colour";
    if (b.slot[s] >= NoSlot || b.side[c].square[b.slot[s]] != s) return "square and list slot disagree";
    ++counts[c][b.piece[s]];
    ++totals[c];
  }
  for (int c = 0; c < 2; ++c) {
    for (int slot = 0; slot < 16; ++slot) {
      Square s = b.side[c].square[slot];
      if (s & 0x88) continue;
      if (b.slot[s] != slot || b.color[s] != c) return "list slot points to a wrong square";
      if (slot < 8 && b.piece[s] != classOfSlot[slot]) return "class slot holds another class";
    }
    for (int t = 1; t <= 6; ++t)
      if (b.side[c].count[t] != counts[c][t]) return "count";
    if (b.side[c].total != totals[c]) return "total";
  }
  return "";
}

// The position after a move, worked out from the rules alone.
struct Expected {
  uint8_t piece[128], color[128];
  uint8_t castlingRights, epSquare, halfMoveClock;
};

uint8_t rightsLostAt(Square s) {
  switch (s) {
    case 4: return CastleWK | CastleWQ;
    case 7: return CastleWK;
    case 0: return CastleWQ;
    case 116: return CastleBK | CastleBQ;
    case 119: return CastleBK;
    case 112: return CastleBQ;
    default: return 0;
  }
}

Expected expectedAfter(const Board_0x88& b, Move m) {
  Expected e;
  std::memcpy(e.piece, b.piece, sizeof e.piece);
  std::memcpy(e.color, b.color, sizeof e.color);
  const Color us = Color(b.sideToMove), them = opponent(us);
  const int back = us == White ? -16 : 16;
  const Square from = moveFromSquare(m), to = moveToSquare(m);
  const bool capture = b.piece[to] != NoPiece;
  auto shift = [&](Square f, Square t) {
    e.piece[t] = e.piece[f];
    e.color[t] = e.color[f];
    e.piece[f] = NoPiece;
    e.color[f] = NoColor;
  };
  e.castlingRights = b.castlingRights;
  e.epSquare = NoSquare;
  e.halfMoveClock = uint8_t(b.halfMoveClock + 1);
  switch (moveKind(m)) {
    case MoveEnPassant:
      e.piece[to + back] = NoPiece;
      e.color[to + back] = NoColor;
      shift(from, to);
      e.halfMoveClock = 0;
      break;
    case MovePromotion:
      shift(from, to);
      e.piece[to] = promotionPiece(m);
      e.halfMoveClock = 0;
      e.castlingRights &= uint8_t(~rightsLostAt(to));
      break;
    case MoveCastling: {
      static const Square rookFrom[4] = {7, 0, 119, 112}, rookTo[4] = {5, 3, 117, 115};
      shift(from, to);
      shift(rookFrom[moveDetail(m)], rookTo[moveDetail(m)]);
      e.castlingRights &= us == White ? uint8_t(~(CastleWK | CastleWQ)) : uint8_t(~(CastleBK | CastleBQ));
      break;
    }
    default:
      if (capture || b.piece[from] == Pawn) e.halfMoveClock = 0;
      shift(from, to);
      e.castlingRights &= uint8_t(~(rightsLostAt(from) | rightsLostAt(to)));
      if (moveDetail(m) == DetailDoubleStep) {
        bool left = fileOf(to) > 0 && b.piece[to - 1] == Pawn && b.color[to - 1] == them;
        bool right = fileOf(to) < 7 && b.piece[to + 1] == Pawn && b.color[to + 1] == them;
        if (left || right) e.epSquare = Square(to + back);
      }
      break;
  }
  return e;
}

std::string arraysDiffer(const Board_0x88& b, const Expected& e) {
  for (int s = 0; s < 128; ++s) {
    if (s & 0x88) continue;
    if (b.piece[s] != e.piece[s] || b.color[s] != e.color[s])
      return std::string("square ") + char('a' + fileOf(Square(s))) + char('1' + rankOf(Square(s)));
  }
  return "";
}

// The slots of moving pieces survive the move; a promoted piece keeps the pawn's slot.
std::string slotsMoved(const Snapshot& before, const Board_0x88& b, Move m) {
  Square from = moveFromSquare(m), to = moveToSquare(m);
  if (b.slot[to] != before.slot[from]) return "moving piece changed slot";
  if (moveKind(m) == MoveCastling) {
    static const Square rookFrom[4] = {7, 0, 119, 112}, rookTo[4] = {5, 3, 117, 115};
    if (b.slot[rookTo[moveDetail(m)]] != before.slot[rookFrom[moveDetail(m)]]) return "castling rook changed slot";
  }
  return "";
}

// Runs the three make/unmake pairs on one legal move; returns what went wrong.
template <Color C>
std::string checkPairs(Board_0x88& b, Move m) {
  const Snapshot before = take(b);
  const Expected expected = expectedAfter(b, m);
  std::string why;

  {  // Full pair.
    PositionRecord& next = b.history[b.ply + 1];
    next.killer[0] = mv("a1", "h8");
    next.killer[1] = mv("b1", "h7");
    next.movePlayed = mv("c1", "h6");
    next.repetitionCount = 9;
    UndoRecord undo;
    makeMove<C>(b, m, undo);
    if (b.ply != before.ply + 1) return "makeMove: ply";
    if (b.sideToMove != opponent(C)) return "makeMove: sideToMove";
    if (!(why = arraysDiffer(b, expected)).empty()) return "makeMove: board differs at " + why;
    if (!(why = listsDisagree(b)).empty()) return "makeMove: " + why;
    if (!(why = slotsMoved(before, b, m)).empty()) return "makeMove: " + why;
    if (b.castlingRights != expected.castlingRights) return "makeMove: castlingRights";
    if (b.epSquare != expected.epSquare) return "makeMove: epSquare";
    if (b.halfMoveClock != expected.halfMoveClock) return "makeMove: halfMoveClock";
    if (b.currentRecord().hashKey != b.computeFullHash()) return "makeMove: hashKey";
    if (b.currentRecord().pawnHashKey != b.computePawnHash()) return "makeMove: pawnHashKey";
    if (!(b.psq[White] == psqFromScratch(b, White)) || !(b.psq[Black] == psqFromScratch(b, Black)))
      return "makeMove: psq";
    if (next.repetitionCount != 0) return "makeMove: repetitionCount of the new record";
    if (next.killer[0] != mv("a1", "h8") || next.killer[1] != mv("b1", "h7") || next.movePlayed != mv("c1", "h6"))
      return "makeMove: killers or movePlayed of the new record";
    unmakeMove<C>(b, m, undo);
    if (!(why = difference(before, take(b))).empty()) return "makeMove/unmakeMove: " + why;
  }
  {  // Perft pair: keys right, the evaluation data may go stale until unwound.
    UndoRecord undo;
    makePerftMove<C>(b, m, undo);
    if (b.ply != before.ply + 1) return "makePerftMove: ply";
    if (b.sideToMove != opponent(C)) return "makePerftMove: sideToMove";
    if (!(why = arraysDiffer(b, expected)).empty()) return "makePerftMove: board differs at " + why;
    if (!(why = listsDisagree(b)).empty()) return "makePerftMove: " + why;
    if (!(why = slotsMoved(before, b, m)).empty()) return "makePerftMove: " + why;
    if (b.castlingRights != expected.castlingRights) return "makePerftMove: castlingRights";
    if (b.epSquare != expected.epSquare) return "makePerftMove: epSquare";
    if (b.currentRecord().hashKey != b.computeFullHash()) return "makePerftMove: hashKey";
    unmakePerftMove<C>(b, m, undo);
    if (!(why = difference(before, take(b))).empty()) return "makePerftMove/unmakePerftMove: " + why;
  }
  {  // Light pair: pieces and side only.
    UndoRecord undo;
    makeLightMove<C>(b, m, undo);
    if (b.sideToMove != opponent(C)) return "makeLightMove: sideToMove";
    if (!(why = arraysDiffer(b, expected)).empty()) return "makeLightMove: board differs at " + why;
    if (!(why = listsDisagree(b)).empty()) return "makeLightMove: " + why;
    Snapshot light = take(b);
    if (light.ply != before.ply || light.castlingRights != before.castlingRights ||
        light.epSquare != before.epSquare || light.halfMoveClock != before.halfMoveClock ||
        light.hashKey != before.hashKey || light.pawnHashKey != before.pawnHashKey ||
        !(light.psq[0] == before.psq[0]) || !(light.psq[1] == before.psq[1]))
      return "makeLightMove touched keys, psq, rights, en passant, clock or ply";
    unmakeLightMove<C>(b, m, undo);
    if (!(why = difference(before, take(b))).empty()) return "makeLightMove/unmakeLightMove: " + why;
  }
  return "";
}

std::string checkNullMove(Board_0x88& b) {
  const Snapshot before = take(b);
  UndoRecord undo;
  makeNullMove(b, undo);
  if (b.history[before.ply].movePlayed != NoMove) return "null move: movePlayed";
  if (b.ply != before.ply + 1 || b.sideToMove != opponent(Color(before.sideToMove))) return "null move: ply or side";
  if (b.epSquare != NoSquare || b.halfMoveClock != 0 || b.castlingRights != before.castlingRights)
    return "null move: en passant, clock or rights";
  if (std::memcmp(b.piece, before.piece, sizeof b.piece) || std::memcmp(b.side, before.side, sizeof b.side))
    return "null move: pieces moved";
  if (b.currentRecord().hashKey != b.computeFullHash()) return "null move: hashKey";
  if (b.currentRecord().pawnHashKey != before.pawnHashKey) return "null move: pawnHashKey";
  if (b.currentRecord().repetitionCount != 0) return "null move: repetitionCount";
  unmakeNullMove(b, undo);
  std::string why = difference(before, take(b));
  return why.empty() ? "" : "null move unmake: " + why;
}

}  // namespace

TEST(MakeMove, RandomLinesFromSuitePositionsRestoreEverything) {
  const std::vector<std::string> fens = suiteFens();
  ASSERT_GT(fens.size(), 100u);
  std::mt19937 rng(20240611);
  constexpr int pliesPerLine = 40;
  for (const std::string& fen : fens) {
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, fen.c_str())) << fen;
    const Snapshot start = take(b);
    std::vector<Snapshot> stack;
    std::vector<Move> line;
    std::vector<UndoRecord> undos;
    std::string failure;
    std::string lineText;
    for (int step = 0; step < pliesPerLine && failure.empty(); ++step) {
      MoveList list;
      bool inCheck;
      generateLegalMoves(b, list, inCheck);
      if (list.count == 0) break;
      for (uint32_t i = 0; i < list.count && failure.empty(); ++i) {
        Move m = list.moves[i].move;
        failure = b.sideToMove == White ? checkPairs<White>(b, m) : checkPairs<Black>(b, m);
        if (!failure.empty()) failure += " on " + moveToString(m);
      }
      if (failure.empty()) failure = checkNullMove(b);
      if (!failure.empty()) break;
      Move m = list.moves[rng() % list.count].move;
      stack.push_back(take(b));
      b.currentRecord().movePlayed = m;
      UndoRecord undo;
      makeMoveForSide(b, m, undo);
      line.push_back(m);
      undos.push_back(undo);
      lineText += moveToString(m) + " ";
    }
    // Unwinding the whole line passes through the same states again.
    while (failure.empty() && !line.empty()) {
      unmakeMoveForSide(b, line.back(), undos.back());
      std::string why = difference(stack.back(), take(b));
      if (!why.empty()) failure = "unwinding " + moveToString(line.back()) + ": " + why;
      line.pop_back();
      undos.pop_back();
      stack.pop_back();
    }
    if (failure.empty() && !difference(start, take(b)).empty()) failure = "start position not restored";
    EXPECT_EQ(failure, "") << fen << " after " << lineText;
  }
}

TEST(MakeMove, DoubleStepSetsEnPassantOnlyWithAnEnemyPawnBeside) {
  Board_0x88 b, reference;
  UndoRecord undo;

  // No black pawn on d4 or f4: no square, and the key equals that of the plain position.
  ASSERT_TRUE(setupFromFen(b, startPositionFen));
  makeMove<White>(b, mv("e2", "e4", MoveNormal, DetailDoubleStep), undo);
  EXPECT_EQ(b.epSquare, NoSquare);
  ASSERT_TRUE(setupFromFen(reference, "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"));
  EXPECT_EQ(b.currentRecord().hashKey, reference.currentRecord().hashKey);
  EXPECT_EQ(b.currentRecord().pawnHashKey, reference.currentRecord().pawnHashKey);

  // A black pawn on d4: e3 becomes the square and its file enters the key.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/3p4/8/4P3/4K3 w - - 0 1"));
  const uint64_t keyBefore = b.currentRecord().hashKey;
  makeMove<White>(b, mv("e2", "e4", MoveNormal, DetailDoubleStep), undo);
  EXPECT_EQ(b.epSquare, sq("e3"));
  EXPECT_EQ(b.currentRecord().hashKey, keyBefore ^ pieceKey[White][Pawn - 1][toSquare64(sq("e2"))] ^
                                           pieceKey[White][Pawn - 1][toSquare64(sq("e4"))] ^ epKey[4] ^ sideKey);
  // The next move, whatever it is, takes the file out again.
  const uint64_t keyWithEp = b.currentRecord().hashKey;
  UndoRecord undo2;
  makeMove<Black>(b, mv("e8", "d8"), undo2);
  EXPECT_EQ(b.epSquare, NoSquare);
  EXPECT_EQ(b.currentRecord().hashKey, keyWithEp ^ pieceKey[Black][King - 1][toSquare64(sq("e8"))] ^
                                           pieceKey[Black][King - 1][toSquare64(sq("d8"))] ^ epKey[4] ^ sideKey);

  // A black double step beside a white pawn on the h-file edge, and one with the pawn too far.
  ASSERT_TRUE(setupFromFen(b, "4k3/6p1/8/7P/8/8/8/4K3 b - - 0 1"));
  makeMove<Black>(b, mv("g7", "g5", MoveNormal, DetailDoubleStep), undo);
  EXPECT_EQ(b.epSquare, sq("g6"));
  ASSERT_TRUE(setupFromFen(b, "4k3/p7/8/8/7P/8/8/4K3 b - - 0 1"));
  makeMove<Black>(b, mv("a7", "a5", MoveNormal, DetailDoubleStep), undo);
  EXPECT_EQ(b.epSquare, NoSquare);  // h4 is not beside a5
  EXPECT_EQ(b.currentRecord().hashKey, b.computeFullHash());
}

TEST(MakeMove, CastlingRightsAndTheirKeys) {
  Board_0x88 b;
  UndoRecord undo;
  auto pieceKeys = [](Color c, PieceType t, const char* from, const char* to) {
    return pieceKey[c][t - 1][toSquare64(sq(from))] ^ pieceKey[c][t - 1][toSquare64(sq(to))];
  };

  // A rook leaving h1 with bit 1 already gone changes no castling key.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/R3K2R w Q - 0 1"));
  uint64_t key = b.currentRecord().hashKey;
  makeMove<White>(b, mv("h1", "h2"), undo);
  EXPECT_EQ(b.castlingRights, CastleWQ);
  EXPECT_EQ(b.currentRecord().hashKey, key ^ pieceKeys(White, Rook, "h1", "h2") ^ sideKey);

  // The same move with the right present takes castlingKey[1] out.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1"));
  key = b.currentRecord().hashKey;
  makeMove<White>(b, mv("h1", "h2"), undo);
  EXPECT_EQ(b.castlingRights, CastleWQ);
  EXPECT_EQ(b.currentRecord().hashKey, key ^ pieceKeys(White, Rook, "h1", "h2") ^ castlingKey[1] ^ sideKey);

  // A white knight taking on h8 removes black's king-side right.
  ASSERT_TRUE(setupFromFen(b, "r3k2r/8/6N1/8/8/8/8/4K3 w kq - 0 1"));
  key = b.currentRecord().hashKey;
  makeMove<White>(b, mv("g6", "h8"), undo);
  EXPECT_EQ(b.castlingRights, CastleBQ);
  EXPECT_EQ(b.currentRecord().hashKey, key ^ pieceKeys(White, Knight, "g6", "h8") ^
                                           pieceKey[Black][Rook - 1][toSquare64(sq("h8"))] ^ castlingKey[4] ^ sideKey);

  // A black pawn promoting with capture on a1 removes white's queen-side right.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/8/1p6/R3K2R b KQ - 0 1"));
  key = b.currentRecord().hashKey;
  makeMove<Black>(b, encodePromotion(sq("b2"), sq("a1"), Knight), undo);
  EXPECT_EQ(b.castlingRights, CastleWK);
  EXPECT_EQ(b.currentRecord().hashKey, key ^ pieceKey[Black][Pawn - 1][toSquare64(sq("b2"))] ^
                                           pieceKey[Black][Knight - 1][toSquare64(sq("a1"))] ^
                                           pieceKey[White][Rook - 1][toSquare64(sq("a1"))] ^ castlingKey[2] ^ sideKey);
  EXPECT_EQ(b.currentRecord().hashKey, b.computeFullHash());

  // The king leaving e1 loses both rights in one step.
  ASSERT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"));
  key = b.currentRecord().hashKey;
  makeMove<White>(b, mv("e1", "f1"), undo);
  EXPECT_EQ(b.castlingRights, CastleBK | CastleBQ);
  EXPECT_EQ(b.currentRecord().hashKey, key ^ pieceKeys(White, King, "e1", "f1") ^ castlingKey[1] ^ castlingKey[2] ^ sideKey);

  // Castling moves the rook too and drops exactly the mover's rights.
  ASSERT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1"));
  key = b.currentRecord().hashKey;
  makeMove<Black>(b, mv("e8", "c8", MoveCastling, CastleBlackQueenSide), undo);
  EXPECT_EQ(b.castlingRights, CastleWK | CastleWQ);
  EXPECT_EQ(b.piece[sq("d8")], Rook);
  EXPECT_EQ(b.piece[sq("a8")], NoPiece);
  EXPECT_EQ(b.currentRecord().hashKey, key ^ pieceKeys(Black, King, "e8", "c8") ^ pieceKeys(Black, Rook, "a8", "d8") ^
                                           castlingKey[4] ^ castlingKey[8] ^ sideKey);
}

TEST(MakeMove, SlotsSurvivePromotionAndCapture) {
  Board_0x88 b;
  UndoRecord undo;

  // Pawns take slots 8, 9, 10, 11 in text order; the g-pawn promotes from slot 11.
  ASSERT_TRUE(setupFromFen(b, "k7/PPP3P1/8/8/8/8/8/4K3 w - - 0 1"));
  ASSERT_EQ(b.slot[sq("g7")], 11);
  Snapshot before = take(b);
  makeMove<White>(b, encodePromotion(sq("g7"), sq("g8"), Queen), undo);
  EXPECT_EQ(b.piece[sq("g8")], Queen);
  EXPECT_EQ(b.slot[sq("g8")], 11);
  EXPECT_EQ(b.side[White].square[11], sq("g8"));
  EXPECT_EQ(b.side[White].square[1], NoSquare);  // the queen's class slot stays free
  EXPECT_EQ(b.side[White].count[Queen], 1);
  EXPECT_EQ(b.side[White].count[Pawn], 3);
  EXPECT_EQ(b.side[White].total, 5);
  unmakeMove<White>(b, encodePromotion(sq("g7"), sq("g8"), Queen), undo);
  EXPECT_EQ(b.piece[sq("g7")], Pawn);
  EXPECT_EQ(b.slot[sq("g7")], 11);
  EXPECT_EQ(difference(before, take(b)), "");

  // Captured pieces come back into their own slots: a knight of slot 7, and an
  // officer that sat in a pawn slot because its class slots were full.
  ASSERT_TRUE(setupFromFen(b, "rnbqkbnr/pppppppp/7N/8/8/8/8/4K3 w kq - 0 1"));
  ASSERT_EQ(b.slot[sq("g8")], 7);
  before = take(b);
  makeMove<White>(b, mv("h6", "g8"), undo);
  EXPECT_EQ(b.side[Black].square[7], NoSquare);
  EXPECT_EQ(b.side[Black].count[Knight], 1);
  unmakeMove<White>(b, mv("h6", "g8"), undo);
  EXPECT_EQ(b.slot[sq("g8")], 7);
  EXPECT_EQ(difference(before, take(b)), "");

  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/3n4/8/2n1n3/8/4K2R b - - 0 1"));
  ASSERT_EQ(b.slot[sq("e3")], 8);
  before = take(b);
  makeMove<Black>(b, mv("e8", "e7"), undo);
  UndoRecord undo2;
  makeMove<White>(b, mv("h1", "h3"), undo2);
  UndoRecord undo3;
  makeMove<Black>(b, mv("e7", "e6"), undo3);
  UndoRecord undo4;
  makeMove<White>(b, mv("h3", "e3"), undo4);
  EXPECT_EQ(b.side[Black].square[8], NoSquare);
  EXPECT_EQ(b.side[Black].count[Knight], 2);
  unmakeMove<White>(b, mv("h3", "e3"), undo4);
  EXPECT_EQ(b.slot[sq("e3")], 8);
  EXPECT_EQ(b.piece[sq("e3")], Knight);
  unmakeMove<Black>(b, mv("e7", "e6"), undo3);
  unmakeMove<White>(b, mv("h1", "h3"), undo2);
  unmakeMove<Black>(b, mv("e8", "e7"), undo);
  EXPECT_EQ(difference(before, take(b)), "");

  // A promotion that captures, then the capture of the new piece: the pawn's slot
  // stays free along the line and everything returns on the way back.
  ASSERT_TRUE(setupFromFen(b, "1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1"));
  const int pawnSlot = b.slot[sq("a7")];
  const int rookSlot = b.slot[sq("b8")];
  before = take(b);
  makeMove<White>(b, encodePromotion(sq("a7"), sq("b8"), Rook), undo);
  EXPECT_EQ(b.slot[sq("b8")], pawnSlot);
  EXPECT_EQ(b.side[Black].square[rookSlot], NoSquare);
  makeMove<Black>(b, mv("e8", "d8"), undo2);
  makeMove<White>(b, mv("e1", "e2"), undo3);
  makeMove<Black>(b, mv("d8", "c8"), undo4);
  UndoRecord undo5;
  makeMove<White>(b, mv("e2", "e3"), undo5);
  UndoRecord undo6;
  makeMove<Black>(b, mv("c8", "b8"), undo6);
  EXPECT_EQ(b.side[White].square[pawnSlot], NoSquare);
  EXPECT_EQ(b.side[White].total, 1);
  unmakeMove<Black>(b, mv("c8", "b8"), undo6);
  EXPECT_EQ(b.side[White].square[pawnSlot], sq("b8"));
  unmakeMove<White>(b, mv("e2", "e3"), undo5);
  unmakeMove<Black>(b, mv("d8", "c8"), undo4);
  unmakeMove<White>(b, mv("e1", "e2"), undo3);
  unmakeMove<Black>(b, mv("e8", "d8"), undo2);
  unmakeMove<White>(b, encodePromotion(sq("a7"), sq("b8"), Rook), undo);
  EXPECT_EQ(b.slot[sq("b8")], rookSlot);
  EXPECT_EQ(difference(before, take(b)), "");

  // En passant: the captured pawn returns to its slot on its own square.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/pppPp3/8/8/8/4K3 w - e6 0 1"));
  const int victimSlot = b.slot[sq("e5")];
  before = take(b);
  Move ep = mv("d5", "e6", MoveEnPassant);
  makeMove<White>(b, ep, undo);
  EXPECT_EQ(b.piece[sq("e5")], NoPiece);
  EXPECT_EQ(b.side[Black].square[victimSlot], NoSquare);
  EXPECT_EQ(b.side[Black].count[Pawn], 3);
  EXPECT_EQ(b.halfMoveClock, 0);
  unmakeMove<White>(b, ep, undo);
  EXPECT_EQ(b.slot[sq("e5")], victimSlot);
  EXPECT_EQ(difference(before, take(b)), "");
}

TEST(MakeMove, HalfMoveClock) {
  Board_0x88 b;
  UndoRecord undo;
  ASSERT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 5 10"));
  makeMove<White>(b, mv("e1", "g1", MoveCastling, CastleWhiteKingSide), undo);
  EXPECT_EQ(b.halfMoveClock, 6);
  EXPECT_EQ(b.piece[sq("f1")], Rook);
  EXPECT_EQ(b.piece[sq("g1")], King);
  EXPECT_EQ(b.piece[sq("h1")], NoPiece);
  EXPECT_EQ(b.castlingRights, CastleBK | CastleBQ);
  UndoRecord undo2;
  makeMove<Black>(b, mv("a8", "a1"), undo2);
  EXPECT_EQ(b.halfMoveClock, 0);
  EXPECT_EQ(b.castlingRights, CastleBK);  // a8 as from square and a1 as to square

  ASSERT_TRUE(setupFromFen(b, "4k3/P7/8/8/8/8/8/4K3 w - - 7 40"));
  makeMove<White>(b, encodePromotion(sq("a7"), sq("a8"), Queen), undo);
  EXPECT_EQ(b.halfMoveClock, 0);
  unmakeMove<White>(b, encodePromotion(sq("a7"), sq("a8"), Queen), undo);
  EXPECT_EQ(b.halfMoveClock, 7);

  // The null move resets the clock and the en-passant square, and restores both.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/3pP3/8/8/8/4K3 w - d6 3 40"));
  const uint64_t key = b.currentRecord().hashKey;
  makeNullMove(b, undo);
  EXPECT_EQ(b.halfMoveClock, 0);
  EXPECT_EQ(b.epSquare, NoSquare);
  EXPECT_EQ(b.sideToMove, Black);
  EXPECT_EQ(b.currentRecord().hashKey, key ^ sideKey ^ epKey[3]);
  unmakeNullMove(b, undo);
  EXPECT_EQ(b.halfMoveClock, 3);
  EXPECT_EQ(b.epSquare, sq("d6"));
  EXPECT_EQ(b.sideToMove, White);
  EXPECT_EQ(b.ply, 0u);
}
