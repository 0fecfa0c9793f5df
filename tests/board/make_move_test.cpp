// Make and unmake along random legal walks from every suite position (and a few
// with pieces outside the lists): each move against a model worked out from the
// rules alone, keys and psq against a from-scratch sum, and every pair restoring
// the board bit for bit, on the way down and on the way back.
#include <cstddef>
#include <cstring>
#include <random>

#include "board_test_support.h"

namespace {

// What make and unmake promise to restore at the current ply; laid out
// without padding, so two snapshots compare as bytes.
struct Snapshot {
  uint8_t piece[128], color[128], slot[128];
  PieceSet side[2];
  uint8_t sideToMove, castlingRights, epSquare, halfMoveClock;
  uint32_t ply;
  ScorePair psq[2];
  uint64_t hashKey, pawnHashKey;
  bool operator==(const Snapshot& o) const { return std::memcmp(this, &o, sizeof o) == 0; }
};
static_assert(sizeof(Snapshot) == 3 * 128 + 2 * sizeof(PieceSet) + 8 + 2 * sizeof(ScorePair) + 16);

Snapshot take(const Board_0x88& b) {
  Snapshot s;
  std::memcpy(s.piece, b.piece, sizeof s.piece);
  std::memcpy(s.color, b.color, sizeof s.color);
  std::memcpy(s.slot, b.slot, sizeof s.slot);
  std::memcpy(s.side, b.side, sizeof s.side);
  s.sideToMove = b.sideToMove, s.castlingRights = b.castlingRights, s.epSquare = b.epSquare;
  s.halfMoveClock = b.halfMoveClock, s.ply = b.ply, s.psq[0] = b.psq[0], s.psq[1] = b.psq[1];
  s.hashKey = b.currentRecord().hashKey, s.pawnHashKey = b.currentRecord().pawnHashKey;
  return s;
}

// The board, rights, en-passant square and clock after a move, from the rules alone.
Snapshot expectedAfter(const Board_0x88& b, Move m) {
  Snapshot e = take(b);
  const Color them = opponent(Color(b.sideToMove));
  const int back = them == Black ? -16 : 16;
  const Square from = moveFromSquare(m), to = moveToSquare(m);
  auto shift = [&](Square f, Square t) {
    e.piece[t] = e.piece[f], e.color[t] = e.color[f];
    e.piece[f] = NoPiece, e.color[f] = NoColor;
  };
  // A right goes with a move from or to its king's or its rook's square.
  auto lost = [&](Square s) {
    int bits = 0;
    for (int right = 0; right < 4; ++right)
      if (s == b.castling.path[right].kingFrom || s == b.castling.path[right].rookFrom) bits |= 1 << right;
    return bits;
  };
  e.castlingRights = uint8_t(b.castlingRights & ~(lost(from) | lost(to)));
  e.epSquare = NoSquare;
  if (moveKind(m) == MoveCastling) {
    // King and rook leave before either lands (in Chess960 each may land on the other's square).
    const unsigned right = moveDetail(m);
    const Square rook = b.castling.path[right].rookFrom;
    e.piece[from] = e.piece[rook] = NoPiece, e.color[from] = e.color[rook] = NoColor;
    e.piece[castlingKingTo[right]] = King, e.piece[castlingRookTo[right]] = Rook;
    e.color[castlingKingTo[right]] = e.color[castlingRookTo[right]] = b.sideToMove;
    e.castlingRights = uint8_t(b.castlingRights & ~(3 << (right & 2)));
    e.halfMoveClock = uint8_t(b.halfMoveClock + 1);
    return e;
  }
  e.halfMoveClock = b.piece[to] != NoPiece || b.piece[from] == Pawn ? 0 : uint8_t(b.halfMoveClock + 1);
  shift(from, to);
  if (moveKind(m) == MoveEnPassant) e.piece[to + back] = NoPiece, e.color[to + back] = NoColor;
  if (moveKind(m) == MovePromotion) e.piece[to] = promotionPiece(m);
  if (moveKind(m) == MoveNormal && moveDetail(m) == DetailDoubleStep)
    for (int beside : {to - 1, to + 1})
      if (!(beside & 0x88) && b.piece[beside] == Pawn && b.color[beside] == them) e.epSquare = Square(to + back);
  return e;
}

// A make against the model, by what it keeps: 0 pieces and side (the light
// pair), 1 also rights, en passant, ply and key (perft), 2 everything (full).
std::string afterMake(const Board_0x88& b, const Snapshot& before, const Snapshot& e, Move m, int level) {
  if (std::memcmp(b.piece, e.piece, sizeof e.piece) || std::memcmp(b.color, e.color, sizeof e.color)) return "board";
  if (b.sideToMove != opponent(Color(before.sideToMove))) return "sideToMove";
  if (moveKind(m) == MoveCastling) {
    const unsigned right = moveDetail(m);
    if (b.slot[castlingKingTo[right]] != 0 ||
        b.slot[castlingRookTo[right]] != before.slot[b.castling.path[right].rookFrom])
      return "castling king or rook changed slot";
  } else if (b.slot[moveToSquare(m)] != before.slot[moveFromSquare(m)]) {
    return "moving piece changed slot";
  }
  if (level == 0) {
    Snapshot now = take(b);
    return std::memcmp(&now.castlingRights, &before.castlingRights, sizeof now - offsetof(Snapshot, castlingRights))
               ? "light make touched rights, en passant, clock, ply, psq or keys"
               : sumsDisagree(b, 0);
  }
  if (b.ply != before.ply + 1 || b.castlingRights != e.castlingRights || b.epSquare != e.epSquare) return "state";
  if (level == 2 && b.halfMoveClock != e.halfMoveClock) return "halfMoveClock";
  return sumsDisagree(b, level);
}

// The full, perft and light pairs on one legal move, and a null move; "" when all is right.
template <Color C>
std::string checkPairs(Board_0x88& b, Move m) {
  const Snapshot before = take(b), expected = expectedAfter(b, m);
  std::string why;
  UndoRecord undo;
  PositionRecord& next = b.history[b.ply + 1];
  next.killer[0] = 11, next.killer[1] = 12, next.movePlayed = 13, next.repetitionCount = 9;
  makeMove<C>(b, m, undo);
  if (!(why = afterMake(b, before, expected, m, 2)).empty()) return "makeMove: " + why;
  if (next.repetitionCount != 0 || next.killer[0] != 11 || next.killer[1] != 12 || next.movePlayed != 13)
    return "makeMove: the new record";
  unmakeMove<C>(b, m, undo);
  if (!(take(b) == before)) return "unmakeMove";
  makePerftMove<C>(b, m, undo);
  if (!(why = afterMake(b, before, expected, m, 1)).empty()) return "makePerftMove: " + why;
  unmakePerftMove<C>(b, m, undo);
  if (!(take(b) == before)) return "unmakePerftMove";
  makeLightMove<C>(b, m, undo);
  if (!(why = afterMake(b, before, expected, m, 0)).empty()) return "makeLightMove: " + why;
  unmakeLightMove<C>(b, m, undo);
  if (!(take(b) == before)) return "unmakeLightMove";
  makeNullMove(b, undo);
  if (b.history[before.ply].movePlayed != NoMove || b.ply != before.ply + 1 || b.sideToMove == before.sideToMove ||
      b.epSquare != NoSquare || b.halfMoveClock != 0 || b.castlingRights != before.castlingRights ||
      std::memcmp(b.piece, before.piece, sizeof b.piece) || b.currentRecord().repetitionCount != 0)
    return "null move";
  if (!(why = sumsDisagree(b, 2)).empty()) return "null move: " + why;
  unmakeNullMove(b, undo);
  return take(b) == before ? "" : "unmakeNullMove";
}

TEST(MakeMove, RandomWalksFromEverySuitePositionRestoreEverything) {
  struct Start {
    std::string fen;
    int plies;
    bool chess960 = false;
  };
  std::vector<Start> starts;
  for (const SuiteLine& line : readSuite()) starts.push_back({line.fen, 40});
  ASSERT_GT(starts.size(), 100u);
  for (const SuiteLine& line : readSuite("perft960.epd")) starts.push_back({line.fen, 40, true});
  // An officer in a pawn slot, rights and en passant at the edges, castling
  // beside an en-passant square, a clock near its wrap; and pieces beyond
  // their class's slots, which move but are not taken (a taken one would come
  // back into slot 0).
  for (const char* fen : {"4k3/8/8/3n4/8/2n1n3/8/4K2R b K - 0 1", "1r2k3/P7/8/8/8/8/8/4K3 w - - 0 1",
                          "4k3/6p1/8/7P/8/8/8/4K3 b - - 253 1", "rn2k2r/1P6/8/8/8/8/1p6/RN2K2R w KQkq - 0 1",
                          "4k3/8/8/pppPp3/8/8/8/4K3 w - e6 0 1", "4k3/8/8/3pP3/8/8/8/4K2R w K d6 0 1"})
    starts.push_back({fen, 40});
  for (const char* fen : {"r3k2r/8/8/8/8/P7/PPPPPPPP/RRR1K2R w KQkq - 0 1", "4k3/8/8/8/8/8/NNNNNNNN/NNN1K3 w - - 0 1"})
    starts.push_back({fen, 1});
  std::mt19937 rng(20240611);
  for (const auto& [fen, plies, chess960] : starts) {
    Board_0x88 b;
    std::string error;
    ASSERT_TRUE(chess960 ? setupChess960FromFen(b, fen.c_str(), error) : setupFromFen(b, fen.c_str())) << fen;
    std::vector<Snapshot> stack{take(b)};
    std::vector<std::pair<Move, UndoRecord>> line;
    std::string failure, lineText;
    for (int step = 0; step < plies && failure.empty(); ++step) {
      const MoveList list = legalMoves(b);
      for (uint32_t i = 0; i < list.count && failure.empty(); ++i) {
        failure = b.sideToMove == White ? checkPairs<White>(b, list.moves[i].move) : checkPairs<Black>(b, list.moves[i].move);
        if (!failure.empty()) failure += " on " + moveToString(list.moves[i].move);
      }
      if (list.count == 0) break;
      Move m = list.moves[rng() % list.count].move;
      b.currentRecord().movePlayed = m;
      line.push_back({m, {}});
      makeMoveForSide(b, m, line.back().second);
      stack.push_back(take(b));
      lineText += moveToString(m) + " ";
    }
    // Unwinding the whole line passes through the same states again.
    for (; failure.empty() && !line.empty(); line.pop_back()) {
      unmakeMoveForSide(b, line.back().first, line.back().second);
      stack.pop_back();
      if (!(take(b) == stack.back())) failure = "unwinding to ply " + std::to_string(b.ply);
    }
    EXPECT_EQ(failure, "") << fen << " after " << lineText;
  }
}

}  // namespace
