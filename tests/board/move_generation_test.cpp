// Move generation, attacks and legality trials, proved on every suite position
// and every position one move after it: leaf counts, the generators against
// each other, attack queries against a brute-force scan, and the trials against
// the legal list. Then the order of the list and castling at its edges.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "board_test_support.h"

namespace {

enum class Gen { Legal, All, Evasions, Captures, CapturesQueenOnly, Quiets };

template <Color C>
void generateFor(Board_0x88& b, Gen which, MoveList& list, bool withPins) {
  PinMasks pins;
  if (withPins) computePins<C>(b, pins);
  bool inCheck;
  switch (which) {
    case Gen::Legal: generateLegalMoves(b, list, inCheck); break;
    case Gen::All: generateAllMoves<C>(b, pins, list); break;
    case Gen::Evasions: generateEvasions<C>(b, list); break;
    case Gen::Captures: generateCaptures<C>(b, pins, list, PromotionsAll); break;
    case Gen::CapturesQueenOnly: generateCaptures<C>(b, pins, list, PromotionsQueenOnly); break;
    case Gen::Quiets: generateQuiets<C>(b, pins, list); break;
  }
}

// With withPins false the pin filter is off: pseudo-legal moves of pinned pieces come too.
MoveList generate(Board_0x88& b, Gen which, bool withPins = true) {
  MoveList list;
  list.count = 0;
  if (b.sideToMove == White)
    generateFor<White>(b, which, list, withPins);
  else
    generateFor<Black>(b, which, list, withPins);
  return list;
}

std::string texts(const MoveList& list, Square from = NoSquare) {
  std::string out;
  for (uint32_t i = 0; i < list.count; ++i)
    if (from == NoSquare || moveFromSquare(list.moves[i].move) == from)
      out += (out.empty() ? "" : " ") + moveToString(list.moves[i].move);
  return out;
}

std::vector<Move> sorted(const MoveList& list) {
  std::vector<Move> out;
  for (uint32_t i = 0; i < list.count; ++i) out.push_back(list.moves[i].move);
  std::sort(out.begin(), out.end());
  return out;
}

// Whether a piece of colour `a` attacks `target`, by walking every piece's moves.
bool attackedByScan(const Board_0x88& b, int target, Color a) {
  static const int knight[8] = {-33, -31, -18, -14, 14, 18, 31, 33}, king[8] = {-17, -16, -15, -1, 1, 15, 16, 17};
  for (int s = 0; s < 128; ++s) {
    if ((s & 0x88) || b.color[s] != a) continue;
    const int d = target - s;
    switch (b.piece[s]) {
      case Pawn:
        if (d == (a == White ? 15 : -15) || d == (a == White ? 17 : -17)) return true;
        break;
      case Knight:
        if (std::count(knight, knight + 8, d)) return true;
        break;
      case King:
        if (std::count(king, king + 8, d)) return true;
        break;
      default:
        for (int step : king) {
          bool straight = step == 1 || step == -1 || step == 16 || step == -16;
          if (b.piece[s] != Queen && straight != (b.piece[s] == Rook)) continue;
          for (int t = s + step; t >= 0 && t < 128 && !(t & 0x88); t += step) {
            if (t == target) return true;
            if (b.piece[t] != NoPiece) break;
          }
        }
    }
  }
  return false;
}

// Checks one position; "" when everything agrees.
std::string disagreement(Board_0x88& b) {
  const uint64_t keyBefore = b.currentRecord().hashKey;
  MoveList legal;
  bool check = false;
  generateLegalMoves(b, legal, check);
  std::vector<Move> legalSorted = sorted(legal);
  if (std::adjacent_find(legalSorted.begin(), legalSorted.end()) != legalSorted.end()) return "duplicate legal move";
  if (b.side[b.sideToMove].square[0] == NoSquare) return "";  // kingless: the rows below need a king
  for (uint32_t i = 0; i < legal.count; ++i)
    if (legal.moves[i].value != 0) return "value not 0";

  // Attacks against the scan, and check as the scan sees it.
  for (Color a : {White, Black})
    for (int t = 0; t < 128; ++t) {
      if (t & 0x88) continue;
      CheckInfo info;
      bool attacked = a == White ? isAttackedBy<White>(b, Square(t), info) : isAttackedBy<Black>(b, Square(t), info);
      if (attacked != attackedByScan(b, t, a)) return "attack on " + std::to_string(t);
      if (attacked && (info.count != 1 || b.color[info.square[0]] != a)) return "reported attacker";
    }
  const Square king = b.side[b.sideToMove].square[0];
  if (check != attackedByScan(b, king, opponent(Color(b.sideToMove)))) return "in check";

  // Trials on pseudo-legal moves agree with the legal list (castling out of
  // check is no evasion to try).
  PinMasks pins;
  b.sideToMove == White ? computePins<White>(b, pins) : computePins<Black>(b, pins);
  MoveList pseudo = generate(b, Gen::All, false);
  for (uint32_t i = 0; i < pseudo.count; ++i) {
    Move m = pseudo.moves[i].move;
    if (check && moveKind(m) == MoveCastling) continue;
    bool trial = b.sideToMove == White
                     ? (check ? isLegalEvasion<White>(b, m) : isLegalWhenNotInCheck<White>(b, m, pins))
                     : (check ? isLegalEvasion<Black>(b, m) : isLegalWhenNotInCheck<Black>(b, m, pins));
    if (trial != legal.contains(m)) return "trial of " + moveToString(m);
  }

  // The split lists are the legal list filtered, in its order.
  auto only = [&](auto keep) {
    std::string out;
    for (uint32_t i = 0; i < legal.count; ++i)
      if (keep(legal.moves[i].move)) out += (out.empty() ? "" : " ") + moveToString(legal.moves[i].move);
    return out;
  };
  auto capture = [&](Move m) { return moveKind(m) != MoveCastling && (moveKind(m) != MoveNormal || b.piece[moveToSquare(m)]); };
  if (check) return texts(generate(b, Gen::Evasions)) == texts(legal) ? "" : "evasions differ from the legal list";
  if (texts(generate(b, Gen::All)) != texts(legal)) return "all moves differ from the legal list";
  if (texts(generate(b, Gen::Captures)) != only(capture)) return "captures";
  if (texts(generate(b, Gen::Quiets)) != only([&](Move m) { return !capture(m); })) return "quiets";
  if (texts(generate(b, Gen::CapturesQueenOnly)) !=
      only([&](Move m) { return capture(m) && (moveKind(m) != MovePromotion || promotionPiece(m) == Queen); }))
    return "queen-only captures";
  if (b.currentRecord().hashKey != keyBefore) return "the board changed";
  return "";
}

uint64_t perft(Board_0x88& b, int depth) {
  MoveList list;
  bool check;
  generateLegalMoves(b, list, check);
  if (depth == 1) return list.count;
  uint64_t nodes = 0;
  for (uint32_t i = 0; i < list.count; ++i) {
    UndoRecord undo;
    makeMoveForSide(b, list.moves[i].move, undo);
    nodes += perft(b, depth - 1);
    unmakeMoveForSide(b, list.moves[i].move, undo);
  }
  return nodes;
}

TEST(MoveGeneration, SuitePositionsAndTheirChildren) {
  const std::vector<SuiteLine> suite = readSuite();
  ASSERT_GT(suite.size(), 100u);
  uint64_t compared = 0;
  for (const SuiteLine& line : suite) {
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, line.fen.c_str())) << line.fen;
    for (int depth = 1; depth <= 4 && depth <= int(line.counts.size()) && line.counts[depth - 1] <= 200000; ++depth) {
      EXPECT_EQ(perft(b, depth), line.counts[depth - 1]) << line.fen << " depth " << depth;
      compared += line.counts[depth - 1];
    }
    EXPECT_EQ(disagreement(b), "") << line.fen;
    MoveList list;
    bool check;
    generateLegalMoves(b, list, check);
    for (uint32_t i = 0; i < list.count; ++i) {
      UndoRecord undo;
      makeMoveForSide(b, list.moves[i].move, undo);
      EXPECT_EQ(disagreement(b), "") << line.fen << " after " << moveToString(list.moves[i].move);
      unmakeMoveForSide(b, list.moves[i].move, undo);
    }
  }
  EXPECT_GT(compared, 4000000u);
}

// The order of the list: en passant first, then the pieces by slot in the
// direction tables' order, promotions queen first, castling last. `from`
// picks one piece's moves; an empty `from` compares the head of the list.
TEST(MoveGeneration, OrderOfTheList) {
  const struct {
    const char* fen;
    const char* from;
    const char* moves;
    int count;  // of the whole legal list, -1 unchecked
    bool check;
  } cases[] = {
      {startPositionFen, "",
       "b1a3 b1c3 g1f3 g1h3 a2a3 a2a4 b2b3 b2b4 c2c3 c2c4 d2d3 d2d4 e2e3 e2e4 f2f3 f2f4 g2g3 g2g4 h2h3 h2h4", 20, false},
      {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1", "",
       "b8c6 b8a6 g8h6 g8f6 a7a6 a7a5 b7b6 b7b5 c7c6 c7c5 d7d6 d7d5 e7e6 e7e5 f7f6 f7f5 g7g6 g7g5 h7h6 h7h5", 20, false},
      {"4k3/8/8/2PpP3/8/8/8/4K3 w - d6 0 1", "", "e5d6 c5d6", -1, false},
      {"4k3/8/8/8/2pPp3/8/8/4K3 b - d3 0 1", "", "c4d3 e4d3", -1, false},
      {"7k/8/8/3pP3/4K3/8/8/8 w - d6 0 1", "", "e5d6", -1, true},
      {"k2r1r2/4P3/8/8/8/8/8/4K3 w - - 0 1", "e7", "e7d8q e7d8n e7d8r e7d8b e7f8q e7f8n e7f8r e7f8b e7e8q e7e8n e7e8r e7e8b", -1, false},
      {"7k/8/8/8/8/8/3p4/2R1R1K1 b - - 0 1", "d2", "d2e1q d2e1n d2e1r d2e1b d2c1q d2c1n d2c1r d2c1b d2d1q d2d1n d2d1r d2d1b", -1, false},
      {"1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1g1 e1c1", -1, false},
      {"r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1", "e8", "e8d8 e8f8 e8e7 e8f7 e8d7 e8g8 e8c8", -1, false},
      // Castling needs the right, free squares, and no check on the king's way.
      {"4kr2/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1", "e1d1 e1e2 e1d2 e1c1", -1, false},
      {"3rk3/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1", "e1e2 e1f1 e1f2 e1g1", -1, false},
      {"2r1k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1g1", -1, false},
      {"4k1r1/8/8/8/8/8/8/R3K2R w KQ - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1c1", -1, false},
      {"4k3/8/8/8/8/8/8/RN2K2R w KQ - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1g1", -1, false},
      {"4k3/8/8/8/8/8/8/R3KB1R w KQ - 0 1", "e1", "e1d1 e1e2 e1d2 e1f2 e1c1", -1, false},
      {"4k3/8/8/8/8/8/8/R3K2R w K - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1g1", -1, false},
      {"4k3/8/8/8/8/8/8/R3K2R w Q - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1c1", -1, false},
      {"4k3/8/8/8/8/8/7p/R3K2R w KQ - 0 1", "e1", "e1d1 e1e2 e1f1 e1d2 e1f2 e1c1", -1, false},
      {"4k3/8/8/8/4q3/8/8/R3K2R w KQ - 0 1", "e1", "e1d1 e1f1 e1d2 e1f2", -1, true},
      {"r3k2r/8/5N2/8/8/8/8/4K3 b kq - 0 1", "e8", "e8d8 e8f8 e8e7 e8f7", -1, true},
      {"r3k2r/8/8/8/8/8/8/1R2K1R1 b kq - 0 1", "e8", "e8d8 e8f8 e8e7 e8f7 e8d7 e8c8", -1, false},
      // Pins: along the line only; a pawn pinned on a diagonal may take the pinner.
      {"4k3/4r3/8/8/8/8/4N3/4K3 w - - 0 1", "e2", "", -1, false},
      {"4k3/4r3/8/8/8/8/4R3/4K3 w - - 0 1", "e2", "e2e3 e2e4 e2e5 e2e6 e2e7", -1, false},
      {"4k3/8/8/8/7b/8/5Q2/4K3 w - - 0 1", "f2", "f2g3 f2h4", -1, false},
      {"4k3/8/8/8/8/5b2/4P3/3K4 w - - 0 1", "e2", "e2f3", -1, false},
      // En passant that uncovers the own king is never generated.
      {"8/8/8/K2pP2r/8/8/8/7k w - d6 0 1", "e5", "e5e6", -1, false},
      {"8/7k/8/8/3pP3/8/8/1B2K3 b - e3 0 1", "d4", "d4d3", -1, false},
      {"4r2k/8/8/2PpP3/4K3/8/8/8 w - d6 0 1", "", "c5d6", -1, true},
      // Double check: king moves only. Mate and stalemate: nothing.
      {"4k3/8/3N4/8/8/8/8/4RK2 b - - 0 1", "", "e8d8 e8f8 e8d7", 3, true},
      {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "", "", 0, false},
      {"3R2k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", "", "", 0, true},
      {"6rk/5Npp/8/8/8/8/8/6K1 b - - 0 1", "", "", 0, true},
      // A side without a king is never in check and keeps all its moves; the
      // white pieces stand where 8-bit offsets from square 255 wrap to.
      {"8/8/8/8/8/1B6/n7/n1R4K b - - 0 1", "a1", "a1b3 a1c2", 5, false},
      {"8/8/8/8/8/N7/8/K7 b - - 0 1", "", "", 0, false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.fen);
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, c.fen));
    MoveList list;
    bool check = !c.check;
    generateLegalMoves(b, list, check);
    EXPECT_EQ(check, c.check);
    if (c.count >= 0) {
      EXPECT_EQ(int(list.count), c.count);
    }
    std::string got = texts(list, *c.from ? sq(c.from) : NoSquare);
    if (!*c.from) got = got.substr(0, std::string(c.moves).size());
    EXPECT_EQ(got, c.moves);
    EXPECT_EQ(disagreement(b), "");
  }
}

}  // namespace
