// Make and unmake along random legal walks from every suite position (and a few
// with pieces outside the lists): each move against a model worked out from the
// rules alone, keys and psq against a from-scratch sum, and every pair restoring
// the board bit for bit, on the way down and on the way back.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "board_test_support.h"

namespace {

// What make and unmake promise to restore at the current ply; all fields are
// laid out without padding, so two snapshots compare as bytes.
struct Snapshot {
  uint8_t piece[128], color[128], slot[128];
  PieceSet side[2];
  ScorePair psq[2];
  uint32_t ply;
  uint8_t castlingRights, epSquare, halfMoveClock, sideToMove;
  uint64_t hashKey, pawnHashKey;
};
static_assert(sizeof(Snapshot) == 3 * 128 + 2 * sizeof(PieceSet) + 2 * sizeof(ScorePair) + 8 + 16);

Snapshot take(const Board_0x88& b) {
  Snapshot s;
  std::memcpy(s.piece, b.piece, sizeof s.piece);
  std::memcpy(s.color, b.color, sizeof s.color);
  std::memcpy(s.slot, b.slot, sizeof s.slot);
  std::memcpy(s.side, b.side, sizeof s.side);
  s.psq[0] = b.psq[0], s.psq[1] = b.psq[1];
  s.ply = b.ply;
  s.castlingRights = b.castlingRights, s.epSquare = b.epSquare;
  s.halfMoveClock = b.halfMoveClock, s.sideToMove = b.sideToMove;
  s.hashKey = b.currentRecord().hashKey, s.pawnHashKey = b.currentRecord().pawnHashKey;
  return s;
}

std::string difference(const Snapshot& a, const Snapshot& b) {
  return std::memcmp(&a, &b, sizeof a) ? "state not restored" : "";
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

const Square rookFrom[4] = {7, 0, 119, 112}, rookTo[4] = {5, 3, 117, 115};

Expected expectedAfter(const Board_0x88& b, Move m) {
  Expected e;
  std::memcpy(e.piece, b.piece, sizeof e.piece);
  std::memcpy(e.color, b.color, sizeof e.color);
  const Color us = Color(b.sideToMove), them = opponent(us);
  const int back = us == White ? -16 : 16;
  const Square from = moveFromSquare(m), to = moveToSquare(m);
  auto shift = [&](Square f, Square t) {
    e.piece[t] = e.piece[f], e.color[t] = e.color[f];
    e.piece[f] = NoPiece, e.color[f] = NoColor;
  };
  e.castlingRights = uint8_t(b.castlingRights & ~(rightsLostAt(from) | rightsLostAt(to)));
  e.epSquare = NoSquare;
  e.halfMoveClock = b.piece[to] != NoPiece || b.piece[from] == Pawn ? 0 : uint8_t(b.halfMoveClock + 1);
  shift(from, to);
  if (moveKind(m) == MoveEnPassant) e.piece[to + back] = NoPiece, e.color[to + back] = NoColor;
  if (moveKind(m) == MovePromotion) e.piece[to] = promotionPiece(m);
  if (moveKind(m) == MoveCastling) shift(rookFrom[moveDetail(m)], rookTo[moveDetail(m)]);
  if (moveKind(m) == MoveNormal && moveDetail(m) == DetailDoubleStep) {
    bool left = fileOf(to) > 0 && b.piece[to - 1] == Pawn && b.color[to - 1] == them;
    bool right = fileOf(to) < 7 && b.piece[to + 1] == Pawn && b.color[to + 1] == them;
    if (left || right) e.epSquare = Square(to + back);
  }
  return e;
}

// The board after a make against the model; the moving pieces keep their slots.
std::string afterMake(const Board_0x88& b, const Snapshot& before, const Expected& e, Move m, int level) {
  if (std::memcmp(b.piece, e.piece, sizeof e.piece) || std::memcmp(b.color, e.color, sizeof e.color)) return "board";
  if (b.sideToMove != opponent(Color(before.sideToMove))) return "sideToMove";
  if (b.slot[moveToSquare(m)] != before.slot[moveFromSquare(m)]) return "moving piece changed slot";
  if (moveKind(m) == MoveCastling && b.slot[rookTo[moveDetail(m)]] != before.slot[rookFrom[moveDetail(m)]])
    return "castling rook changed slot";
  if (level == 0) return sumsDisagree(b, 0);
  if (b.ply != before.ply + 1) return "ply";
  if (b.castlingRights != e.castlingRights || b.epSquare != e.epSquare) return "rights or en passant";
  if (level == 2 && b.halfMoveClock != e.halfMoveClock) return "halfMoveClock";
  return sumsDisagree(b, level);
}

// Runs the full, perft and light pairs on one legal move; "" when all is right.
template <Color C>
std::string checkPairs(Board_0x88& b, Move m) {
  const Snapshot before = take(b);
  const Expected expected = expectedAfter(b, m);
  std::string why;
  UndoRecord undo;

  PositionRecord& next = b.history[b.ply + 1];
  next.killer[0] = 11, next.killer[1] = 12, next.movePlayed = 13, next.repetitionCount = 9;
  makeMove<C>(b, m, undo);
  if (!(why = afterMake(b, before, expected, m, 2)).empty()) return "makeMove: " + why;
  if (next.repetitionCount != 0) return "makeMove: repetitionCount of the new record";
  if (next.killer[0] != 11 || next.killer[1] != 12 || next.movePlayed != 13) return "makeMove: killers touched";
  unmakeMove<C>(b, m, undo);
  if (!(why = difference(before, take(b))).empty()) return "unmakeMove: " + why;

  // The perft pair keeps the keys right; the psq may go stale until unwound.
  makePerftMove<C>(b, m, undo);
  if (!(why = afterMake(b, before, expected, m, 1)).empty()) return "makePerftMove: " + why;
  unmakePerftMove<C>(b, m, undo);
  if (!(why = difference(before, take(b))).empty()) return "unmakePerftMove: " + why;

  // The light pair moves pieces and side only.
  makeLightMove<C>(b, m, undo);
  if (!(why = afterMake(b, before, expected, m, 0)).empty()) return "makeLightMove: " + why;
  const Snapshot light = take(b);
  if (light.ply != before.ply || light.castlingRights != before.castlingRights || light.epSquare != before.epSquare ||
      light.halfMoveClock != before.halfMoveClock || light.hashKey != before.hashKey ||
      light.pawnHashKey != before.pawnHashKey || !(light.psq[0] == before.psq[0]) || !(light.psq[1] == before.psq[1]))
    return "makeLightMove touched keys, psq, rights, en passant, clock or ply";
  unmakeLightMove<C>(b, m, undo);
  if (!(why = difference(before, take(b))).empty()) return "unmakeLightMove: " + why;
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
  std::string why = sumsDisagree(b, 2);
  if (!why.empty()) return "null move: " + why;
  if (b.currentRecord().repetitionCount != 0) return "null move: repetitionCount";
  unmakeNullMove(b, undo);
  why = difference(before, take(b));
  return why.empty() ? "" : "null move unmake: " + why;
}

TEST(MakeMove, RandomWalksFromEverySuitePositionRestoreEverything) {
  std::vector<std::pair<std::string, int>> starts;  // position, plies of the walk
  for (const SuiteLine& line : readSuite()) starts.push_back({line.fen, 40});
  ASSERT_GT(starts.size(), 100u);
  // An officer in a pawn slot, rights and en passant at the edges, a clock
  // near its wrap; and pieces beyond the sixteen slots, which move but are
  // not taken (a taken one would come back into slot 0).
  for (const char* fen : {"4k3/8/8/3n4/8/2n1n3/8/4K2R b K - 0 1", "1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1",
                          "4k3/6p1/8/7P/8/8/8/4K3 b - - 253 1", "rn2k2r/1P6/8/8/8/8/1p6/RN2K2R w KQkq - 0 1",
                          "4k3/8/8/pppPp3/8/8/8/4K3 w - e6 0 1"})
    starts.push_back({fen, 40});
  for (const char* fen : {"r3k2r/8/8/8/8/P7/PPPPPPPP/RRR1K2R w KQkq - 0 1", "4k3/8/8/8/8/8/NNNNNNNN/NNN1K3 w - - 0 1"})
    starts.push_back({fen, 1});
  std::mt19937 rng(20240611);
  for (const auto& [fen, plies] : starts) {
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, fen.c_str())) << fen;
    std::vector<Snapshot> stack{take(b)};
    std::vector<Move> line;
    std::vector<UndoRecord> undos;
    std::string failure, lineText;
    for (int step = 0; step < plies && failure.empty(); ++step) {
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
      Move m = list.moves[rng() % list.count].move;
      b.currentRecord().movePlayed = m;
      undos.emplace_back();
      makeMoveForSide(b, m, undos.back());
      line.push_back(m);
      stack.push_back(take(b));
      lineText += moveToString(m) + " ";
    }
    // Unwinding the whole line passes through the same states again.
    while (failure.empty() && !line.empty()) {
      unmakeMoveForSide(b, line.back(), undos.back());
      line.pop_back(), undos.pop_back(), stack.pop_back();
      std::string why = difference(stack.back(), take(b));
      if (!why.empty()) failure = "unwinding " + std::to_string(line.size()) + ": " + why;
    }
    EXPECT_EQ(failure, "") << fen << " after " << lineText;
  }
}

}  // namespace
