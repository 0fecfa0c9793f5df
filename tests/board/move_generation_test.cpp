// Move generation, attacks and legality trials, proved on every suite position
// and every position one move after it: leaf counts, the generators against
// each other, attack queries against a brute-force scan, and the trials against
// the legal list. Then the order of the list.
#include <algorithm>
#include <functional>
#include <set>

#include "board/fen_writer.h"
#include "board_test_support.h"

namespace {

// The moves of a list in its order, or those that `keep` keeps.
std::string texts(const MoveList& list, const std::function<bool(Move)>& keep = [](Move) { return true; }) {
  std::string out;
  for (uint32_t i = 0; i < list.count; ++i)
    if (keep(list.moves[i].move)) {
      if (!out.empty()) out += ' ';
      out += moveToString(list.moves[i].move);
    }
  return out;
}

// Whether a piece of colour `a` attacks `target`, by walking every piece's moves.
bool attackedByScan(const Board_0x88& b, int target, Color a) {
  static const int knight[8] = {-33, -31, -18, -14, 14, 18, 31, 33}, king[8] = {-17, -16, -15, -1, 1, 15, 16, 17};
  for (int s = 0; s < 128; ++s) {
    if ((s & 0x88) || b.color[s] != a) continue;
    const int d = target - s, piece = b.piece[s];
    if ((piece == Pawn && (d == (a == White ? 15 : -15) || d == (a == White ? 17 : -17))) ||
        (piece == Knight && std::count(knight, knight + 8, d)) || (piece == King && std::count(king, king + 8, d)))
      return true;
    if (piece == Pawn || piece == Knight || piece == King) continue;
    for (int step : king) {
      bool straight = step == 1 || step == -1 || step == 16 || step == -16;
      if (piece != Queen && straight != (piece == Rook)) continue;
      for (int t = s + step; t >= 0 && t < 128 && !(t & 0x88); t += step) {
        if (t == target) return true;
        if (b.piece[t] != NoPiece) break;
      }
    }
  }
  return false;
}

// Checks one position; "" when everything agrees.
template <Color C>
std::string disagreement(Board_0x88& b) {
  const uint64_t keyBefore = b.currentRecord().hashKey;
  MoveList legal, pseudo, all, evasions, captures, queenCaptures, quiets;
  bool check = false;
  generateLegalMoves(b, legal, check);
  std::set<Move> distinct;
  for (uint32_t i = 0; i < legal.count; ++i)
    if (legal.moves[i].value != 0 || !distinct.insert(legal.moves[i].move).second) return "value not 0 or a move twice";
  // Attacks against the scan: every square, both colours.
  for (int t = 0; t < 128; ++t) {
    if (t & 0x88) continue;
    const bool w = attackedByScan(b, t, White), k = attackedByScan(b, t, Black);
    const Square wa = attack_detail::findAttacker<White>(b, Square(t));
    const Square ka = attack_detail::findAttacker<Black>(b, Square(t));
    if (isAttacked<White>(b, Square(t)) != w || isAttacked<Black>(b, Square(t)) != k || (wa != NoSquare) != w ||
        (ka != NoSquare) != k)
      return "attack on " + std::to_string(t);
    if ((w && b.color[wa] != White) || (k && b.color[ka] != Black)) return "attacker";
  }
  const Square king = b.side[C].square[0];
  if (king == NoSquare) return "";  // kingless: nothing below applies
  if (check != attackedByScan(b, king, opponent(C))) return "in check";
  // The check found from the last move alone, where the walk made one.
  if (b.ply > 0 && attackedAfterMove<C>(b, b.history[b.ply - 1].movePlayed) != check) return "check after the move";

  // Trials of pseudo-legal moves (the pin filter off) agree with the legal list;
  // castling out of check is no evasion to try.
  PinMasks pins, none, byRays;
  computePins<C>(b, pins);
  attack_detail::pinsByRays<C>(b, byRays);
  if (pins.orthogonal != byRays.orthogonal || pins.diagonal != byRays.diagonal) return "pins";
  if (!check && hasOneLegalMove<C>(b, pins) != (legal.count == 1)) return "one legal move";
  generateAllMoves<C>(b, none, pseudo);
  for (uint32_t i = 0; i < pseudo.count; ++i) {
    Move m = pseudo.moves[i].move;
    if (check && moveKind(m) == MoveCastling) continue;
    if ((check ? isLegalEvasion<C>(b, m) : isLegalWhenNotInCheck<C>(b, m, pins)) != legal.contains(m))
      return "trial of " + moveToString(m);
  }
  // Each generator gives the legal list, or a part of it, in its order.
  auto capture = [&](Move m) { return moveKind(m) != MoveCastling && (moveKind(m) != MoveNormal || b.piece[moveToSquare(m)]); };
  if (check) {
    generateEvasions<C>(b, evasions);
    return texts(evasions) == texts(legal) ? "" : "evasions";
  }
  generateAllMoves<C>(b, pins, all);
  generateCaptures<C>(b, pins, captures, PromotionsAll);
  generateCaptures<C>(b, pins, queenCaptures, PromotionsQueenOnly);
  generateQuiets<C>(b, pins, quiets);
  if (texts(all) != texts(legal)) return "all moves";
  if (texts(captures) != texts(legal, capture)) return "captures";
  if (texts(quiets) != texts(legal, [&](Move m) { return !capture(m); })) return "quiets";
  if (texts(queenCaptures) !=
      texts(legal, [&](Move m) { return capture(m) && (moveKind(m) != MovePromotion || promotionPiece(m) == Queen); }))
    return "queen-only captures";
  return b.currentRecord().hashKey == keyBefore ? "" : "the board changed";
}

std::string disagreement(Board_0x88& b) {
  return b.sideToMove == White ? disagreement<White>(b) : disagreement<Black>(b);
}

// Leaves below the position; the top `checked` levels also pass `disagreement`.
uint64_t perft(Board_0x88& b, int depth, int checked, std::string& failure) {
  if (checked > 0 && failure.empty() && !(failure = disagreement(b)).empty()) failure += " at ply " + std::to_string(b.ply);
  const MoveList list = legalMoves(b);
  if (depth == 1) return list.count;
  uint64_t nodes = 0;
  for (uint32_t i = 0; i < list.count; ++i) {
    UndoRecord undo;
    b.history[b.ply].movePlayed = list.moves[i].move;
    makeMoveForSide(b, list.moves[i].move, undo);
    nodes += perft(b, depth - 1, checked - 1, failure);
    unmakeMoveForSide(b, list.moves[i].move, undo);
  }
  return nodes;
}

// Counts to depth 4 where they stay small; the checks at the root and its children.
TEST(MoveGeneration, SuitePositionsAndTheirChildren) {
  const std::vector<SuiteLine> suite = readSuite();
  ASSERT_GT(suite.size(), 100u);
  uint64_t compared = 0;
  std::vector<std::pair<SuiteLine, bool>> lines;  // the line, Chess960
  for (const SuiteLine& line : suite) lines.push_back({line, false});
  for (const SuiteLine& line : readSuite("perft960.epd")) lines.push_back({line, true});
  for (const auto& [line, chess960] : lines) {
    Board_0x88 b;
    std::string error;
    ASSERT_TRUE(chess960 ? setupChess960FromFen(b, line.fen.c_str(), error) : setupFromFen(b, line.fen.c_str()))
        << line.fen;
    std::string failure;
    for (int depth = 1; depth <= 4 && depth <= int(line.counts.size()) && line.counts[depth - 1] <= 200000; ++depth) {
      EXPECT_EQ(perft(b, depth, depth == 2 ? 2 : 0, failure), line.counts[depth - 1]) << line.fen << " depth " << depth;
      compared += line.counts[depth - 1];
    }
    EXPECT_EQ(failure, "") << line.fen;
  }
  EXPECT_GT(compared, 8000000u);
}

// Chess960 castling, written as the king taking its rook: whether it is
// legal after the moves, and the position it leaves.
TEST(MoveGeneration, Chess960Castling) {
  const struct { const char *fen, *moves, *castling, *after; } cases[] = {
      // The king already on its destination; the rook already on its own.
      {"4k3/8/8/8/8/8/8/R5KR w HA - 0 1", "", "g1h1", "4k3/8/8/8/8/8/8/R4RK1 b - - 1 1"},
      {"4k3/8/8/8/8/8/8/R5KR w HA - 0 1", "", "g1a1", "4k3/8/8/8/8/8/8/2KR3R b - - 1 1"},
      {"4k3/8/8/8/8/8/8/4KR2 w F - 0 1", "", "e1f1", "4k3/8/8/8/8/8/8/5RK1 b - - 1 1"},
      {"4k3/8/8/8/8/8/8/3RK3 w D - 0 1", "", "e1d1", "4k3/8/8/8/8/8/8/2KR4 b - - 1 1"},
      // King and rook trade squares, or the rook stands between the king and its destination.
      {"4k3/8/8/8/8/8/8/5KR1 w G - 0 1", "", "f1g1", "4k3/8/8/8/8/8/8/5RK1 b - - 1 1"},
      {"4k3/8/8/8/8/8/8/1KR5 w C - 0 1", "", "b1c1", "4k3/8/8/8/8/8/8/5RK1 b - - 1 1"},
      {"rk6/8/8/8/8/8/8/4K3 b a - 0 1", "", "b8a8", "2kr4/8/8/8/8/8/8/4K3 w - - 1 2"},
      // The other rook, or any man, in the way of king or rook.
      {"4k3/8/8/8/8/8/8/RRK5 w A - 0 1", "", "c1a1", ""},
      {"4k3/8/8/8/8/8/8/1K1R3R w H - 0 1", "", "b1h1", ""},
      {"4k3/8/8/8/8/8/8/1KRN4 w C - 0 1", "", "b1c1", ""},
      {"4k3/8/8/8/8/8/8/1KR3N1 w C - 0 1", "", "b1c1", ""},
      // Attacked: a square the king passes, its start, its destination; the
      // rook's path alone may be attacked; a rook that shields the king's
      // destination can't leave it.
      {"4r1k1/8/8/8/8/8/8/1KR5 w C - 0 1", "", "b1c1", ""},
      {"1r2k3/8/8/8/8/8/8/1KR5 w C - 0 1", "", "b1c1", ""},
      {"4k1r1/8/8/8/8/8/8/1KR5 w C - 0 1", "", "b1c1", ""},
      {"4k3/8/8/8/8/n7/8/R5K1 w A - 0 1", "", "g1a1", "4k3/8/8/8/8/n7/8/2KR4 b - - 1 1"},
      {"4k3/8/8/8/8/8/8/rR3K2 w B - 0 1", "", "f1b1", ""},
      // Rights go with a move of the king or rook, and with a rook taken on
      // its square: another rook that comes there later has none.
      {"7k/8/8/8/8/8/7b/RK2R1R1 b GA - 0 1", "h2g1 e1g1 h8h7", "b1g1", ""},
      {"7k/8/8/8/8/8/7b/RK2R1R1 b GA - 0 1", "h2g1 e1g1 h8h7", "b1a1", "8/7k/8/8/8/8/8/2KR2R1 b - - 2 3"},
      {"4k3/8/8/8/8/8/8/RK4R1 w GA - 0 1", "g1g2 e8e7 g2g1 e7e8", "b1g1", ""},
      {"4k3/8/8/8/8/8/8/RK4R1 w GA - 0 1", "b1c1 e8e7 c1b1 e7e8", "b1a1", ""},
      // The standard array: the king takes its rook here too.
      {"r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 1", "e1h1", "e8a8", "2kr3r/8/8/8/8/8/8/R4RK1 w - - 2 2"},
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "", "e1g1", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(std::string(c.fen) + " + " + c.moves + ": " + c.castling);
    Board_0x88 b;
    std::string error;
    ASSERT_TRUE(setupChess960FromFen(b, c.fen, error)) << error;
    ASSERT_TRUE(playMoves(b, c.moves));
    EXPECT_EQ(disagreement(b), "");
    const Move m = legalMove(b, c.castling);
    EXPECT_EQ(m != NoMove, *c.after != '\0');
    if (m == NoMove) continue;
    EXPECT_EQ(moveKind(m), MoveCastling);
    UndoRecord undo;
    makeMoveForSide(b, m, undo);
    EXPECT_EQ(positionToFen(b), c.after);
    EXPECT_EQ(sumsDisagree(b, 2), "");
  }
}

// The order of the list: en passant first, then the pieces by slot in the
// direction tables' order, promotions queen first, castling last (the rules
// at pins, checks and castling are the suite's to prove). `from` picks one
// piece's moves, else the whole list; "..." ends a list's head.
TEST(MoveGeneration, OrderOfTheList) {
  const struct { const char *fen, *from, *moves; } cases[] = {
      {startPositionFen, "", "b1a3 b1c3 g1f3 g1h3 a2a3 a2a4 b2b3 b2b4 c2c3 c2c4 d2d3 d2d4 e2e3 e2e4 f2f3 f2f4 g2g3 g2g4 h2h3 h2h4"},
      {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1", "", "b8c6 b8a6 g8h6 g8f6 a7a6 a7a5 b7b6 b7b5 c7c6 c7c5 d7d6 d7d5 e7e6 e7e5 f7f6 f7f5 g7g6 g7g5 h7h6 h7h5"},
      {"4k3/8/8/2PpP3/8/8/8/4K3 w - d6 0 1", "", "e5d6 c5d6 ..."},
      {"4k3/8/8/8/2pPp3/8/8/4K3 b - d3 0 1", "", "c4d3 e4d3 ..."},
      {"7k/8/8/3pP3/4K3/8/8/8 w - d6 0 1", "", "e5d6 ..."},
      {"k2r1r2/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7", "e7d8q e7d8n e7d8r e7d8b e7f8q e7f8n e7f8r e7f8b e7e8q e7e8n e7e8r e7e8b"},
      {"1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1g1 e1c1"},
      {"r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1", "e8", "e8d8 e8f8 e8e7 e8f7 e8d7 e8g8 e8c8"},
      // Mate and stalemate: nothing.
      {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "", ""},
      {"3R2k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", "", ""},
      {"6rk/5Npp/8/8/8/8/8/6K1 b - - 0 1", "", ""},
      {"k7/8/8/8/7p/8/2q4P/K7 w - - 0 1", "", "h2h3"},  // one move, and no check
      // A side without a king is never in check and keeps all its moves; the
      // white pieces stand where 8-bit offsets from square 255 wrap to.
      {"8/8/8/8/8/1B6/n7/n1R4K b - - 0 1", "", "a2b4 a2c3 a2c1 a1b3 a1c2"},
      {"8/8/8/8/8/N7/8/K7 b - - 0 1", "", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fen);
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, c.fen));
    const MoveList list = legalMoves(b);
    std::string expected = c.moves, got = texts(list, [&](Move m) { return !*c.from || moveFromSquare(m) == sq(c.from); });
    if (expected.ends_with(" ...")) expected.resize(expected.size() - 4), got.resize(std::min(got.size(), expected.size()));
    EXPECT_EQ(got, expected);
    EXPECT_EQ(disagreement(b), "");
  }
}

}  // namespace
