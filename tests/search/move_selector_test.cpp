// The staged move selector: every move set hands out each legal move once,
// in the order of its stages, over every suite position; worked orders pin
// the values; the test of moves from elsewhere agrees with the generators.
#include <gtest/gtest.h>

#include <set>

#include "../eval/eval_test_support.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "search/move_selector.h"

namespace {

using evaltest::boardFrom;

// The legal move with this text, else the plain move between its squares; "-" for none.
Move moveOf(Board_0x88& b, const std::string& text) {
  if (text.empty() || text == "-") return NoMove;
  if (const Move m = legalMove(b, text); m != NoMove) return m;
  return encodeMove88(makeSquare(text[0] - 'a', text[1] - '1'), makeSquare(text[2] - 'a', text[3] - '1'));
}

// Everything a selector hands out, in order; once exhausted it stays so.
std::vector<ScoredMove> drain(Board_0x88& b, uint32_t moveSet, Move pv = NoMove, Move tt = NoMove) {
  CheckInfo info;
  if (b.sideToMove == White)
    findCheck<White>(b, b.side[White].square[0], info);
  else
    findCheck<Black>(b, b.side[Black].square[0], info);
  MoveSelector selector(moveSet, &b, info, NoMove);
  selector.pvMove.move = pv;
  selector.ttMove.move = tt;
  const bool evasions = moveSet == 1 || moveSet == 2;
  auto next = [&] {
    if (b.sideToMove == White) return evasions ? selector.nextEvasion<White>() : selector.nextMove<White>();
    return evasions ? selector.nextEvasion<Black>() : selector.nextMove<Black>();
  };
  std::vector<ScoredMove> out;
  for (ScoredMove* sm; out.size() < 300 && (sm = next());) out.push_back(*sm);
  EXPECT_EQ(next(), nullptr);
  return out;
}

std::multiset<Move> setOf(const std::vector<ScoredMove>& moves) {
  std::multiset<Move> out;
  for (const ScoredMove& sm : moves) out.insert(sm.move);
  return out;
}
std::multiset<Move> setOf(const MoveList& list) { return setOf({list.moves, list.moves + list.count}); }
std::multiset<Move> legalSet(Board_0x88& b, bool& inCheck) { return setOf(legalMoves(b, &inCheck)); }

std::string texts(const std::vector<ScoredMove>& moves, size_t count) {
  std::string out;
  for (size_t i = 0; i < std::min(count, moves.size()); ++i) {
    if (i) out += ' ';
    out += moveToString(moves[i].move);
  }
  return out;
}

// What the quiescence search may play: captures, and promotions to a queen.
template <Color C>
std::multiset<Move> capturesOf(Board_0x88& b) {
  MoveList captures;
  PinMasks pins;
  computePins<C>(b, pins);
  generateCaptures<C>(b, pins, captures, PromotionsQueenOnly);
  return setOf(captures);
}

// Stage of a move handed out by a full node: 0 the line's move, 1 the table's,
// 2 a good capture or promotion, 3 a quiet killer, 4 a quiet move or a bad capture.
template <Color C>
int stageOf(const Board_0x88& b, Move m, Move pv, Move tt) {
  if (m == pv) return 0;
  if (m == tt) return 1;
  bool capture;
  int32_t gain;
  mvvLvaValue(b, m, capture);
  if (capture) return isBadCapture<C>(b, m, gain) ? 4 : 2;
  return isKillerAt(b, b.ply, m) || isKillerAt(b, b.ply + 2, m) ? 3 : 4;
}

TEST(MoveSelector, EveryMoveSetHandsOutEachLegalMoveOnceInStageOrderOnTheSuite) {
  auto b = std::make_unique<Board_0x88>();
  std::vector<Move> previous;
  for (const std::string& fen : evaltest::suiteFens()) {
    ASSERT_TRUE(setupFromFen(*b, fen.c_str())) << fen;
    bool inCheck;
    const std::multiset<Move> expected = legalSet(*b, inCheck);
    const std::vector<Move> all(expected.begin(), expected.end());
    EXPECT_EQ(setOf(drain(*b, inCheck ? 1 : 0)), expected) << fen;
    if (!inCheck) {
      const std::multiset<Move> wanted =
          b->sideToMove == White ? capturesOf<White>(*b) : capturesOf<Black>(*b);
      const std::vector<ScoredMove> quiescence = drain(*b, 4);
      EXPECT_EQ(setOf(quiescence), wanted) << fen;
      for (size_t i = 1; i < quiescence.size(); ++i) EXPECT_GE(quiescence[i - 1].value, quiescence[i].value) << fen;
    }
    if (all.empty()) continue;
    // Hints from this position; killers from this one and, stale, from the one before.
    const Move pv = all[0], tt = all[all.size() / 2];
    for (int i = 0; i < 2; ++i) {
      b->history[b->ply].killer[i] = all[(all.size() - 1 - i) % all.size()];
      b->history[b->ply + 2].killer[i] = previous.empty() ? NoMove : previous[i % previous.size()];
    }
    const std::vector<ScoredMove> out = drain(*b, inCheck ? 2 : 3, pv, tt);
    EXPECT_EQ(setOf(out), expected) << fen;
    for (size_t i = 1; i < out.size(); ++i) {
      const Move m0 = out[i - 1].move, m1 = out[i].move;
      const int s0 = b->sideToMove == White ? stageOf<White>(*b, m0, pv, tt) : stageOf<Black>(*b, m0, pv, tt);
      const int s1 = b->sideToMove == White ? stageOf<White>(*b, m1, pv, tt) : stageOf<Black>(*b, m1, pv, tt);
      if (inCheck) {
        EXPECT_TRUE(std::min(s0, 2) < std::min(s1, 2) || (std::min(s1, 2) == 2 && out[i - 1].value >= out[i].value))
            << fen << " " << moveToString(m0) << " " << moveToString(m1);
      } else {
        EXPECT_TRUE(s0 < s1 || (s0 == s1 && (s0 == 3 || out[i - 1].value >= out[i].value)))
            << fen << " " << moveToString(m0) << " " << moveToString(m1);
      }
    }
    // A table move from another position changes nothing of the set.
    if (!previous.empty()) {
      EXPECT_EQ(setOf(drain(*b, inCheck ? 2 : 3, NoMove, previous[0])), expected) << fen;
    }
    for (int i = 0; i < 2; ++i) b->history[b->ply].killer[i] = b->history[b->ply + 2].killer[i] = NoMove;
    previous = all;
  }
}

TEST(MoveSelector, WorkedOrders) {
  // Black's c4c5 is played first, so that the position has a move before it.
  // Captures: d4xc5, Bf3xc6, Rh1xh7 and Ra1xa6 (a tie), Nc3xb5 (bad: a pawn guards b5).
  const char* ordering = "4k3/7p/p1n5/1p6/2rP4/2N2B2/8/R2QK2R b KQ - 0 1";
  const struct {
    const char* what;
    const char* fen;
    const char* before;                 // a move played first, or ""
    uint32_t moveSet;
    const char *pv, *tt, *killers, *counter;  // killers: of this ply, then two plies deeper
    const char* expected;               // the first moves, then the value of each
  } cases[] = {
      {"captures by MVV/LVA; selection reorders the tie", ordering, "c4c5", 3, "", "", "", "",
       "d4c5 f3c6 h1h7 a1a6|1191 1126 1061 1061"},
      {"hints, captures, killers, castling, the counter move", ordering, "c4c5", 3, "f3g2", "h1h7",
       "c3e4 d1d5 d1d3 c3e4", "f3e2", "f3g2 h1h7 d4c5 f3c6 a1a6 c3e4 d1d3 e1g1 f3e2|- - 1191 1126 1061 148 146 53 48"},
      {"a killer pinned is dropped", "4k3/8/8/8/1b6/8/3N4/4K3 w - - 0 1", "", 3, "", "", "d2f3 e1d1", "",
       "e1d1|145"},
      {"evasions: a rook guarded by a pawn is no bad capture; the killer", "4k3/5p2/4r3/8/2B5/3N4/8/4K3 w - - 0 1",
       "", 2, "", "", "e1d2", "", "c4e6 e1d2|1190 145"},
      {"quiescence: queen promotions, by MVV/LVA", "r1n1k3/1P6/8/3p4/4P3/8/8/4K3 w - - 0 1", "", 4, "", "", "",
       "", "b7a8q b7c8q e4d5 b7b8q|223 159 63 31"},
  };
  for (const auto& c : cases) {
    auto b = boardFrom(c.fen);
    if (*c.before) {
      const Move m = moveOf(*b, c.before);
      b->history[b->ply].movePlayed = m;
      UndoRecord undo;
      makeMoveForSide(*b, m, undo);
    }
    std::istringstream killers(c.killers);
    std::string k;
    for (int i = 0; killers >> k; ++i) b->history[b->ply + (i / 2) * 2].killer[i % 2] = moveOf(*b, k);
    if (*c.counter) updateCounterMove(*b, b->history[b->ply - 1].movePlayed, moveOf(*b, c.counter));
    const std::vector<ScoredMove> out = drain(*b, c.moveSet, moveOf(*b, c.pv), moveOf(*b, c.tt));
    bool inCheck;
    if (c.moveSet != 4) {
      EXPECT_EQ(setOf(out), legalSet(*b, inCheck)) << c.what;
    }
    const std::string expected = c.expected, moves = expected.substr(0, expected.find('|'));
    std::istringstream values(expected.substr(expected.find('|') + 1));
    std::string got = texts(out, size_t(std::count(moves.begin(), moves.end(), ' ') + 1)) + "|";
    for (size_t i = 0; values >> k; ++i) {
      if (i) got += ' ';
      got += k == "-" ? k : std::to_string(out[i].value);
    }
    EXPECT_EQ(got, expected) << c.what;
  }
}

TEST(MoveSelector, BadCaptures) {
  const struct {
    const char* fen;
    const char* move;
    bool bad;
    int32_t gain;
  } cases[] = {
      {"4k3/8/2n5/4p3/8/8/4Q3/4K1N1 w - - 0 1", "e2e5", true, 125},    // queen takes a pawn guarded by a knight
      {"4k3/8/2n5/4n3/8/8/8/4RK2 w - - 0 1", "e1e5", false, 400},      // rook takes a knight guarded by a knight
      {"4k3/8/2n5/4p3/8/2B5/8/4RK2 w - - 0 1", "e1e5", true, 125},     // rook takes a pawn guarded by a knight
      {"4k3/8/2n5/4p3/8/2B5/8/4RK2 w - - 0 1", "c3e5", false, 125},    // the bishop may
      {"3qk3/8/8/3P4/4P3/8/8/4K3 b - - 0 1", "d8d5", true, 125},       // Black: guarded by e4
      {"4k3/8/8/3Pp3/8/8/8/4K3 w - e6 0 1", "d5e6", false, 125},       // en passant
      {"3qk3/8/8/3P4/8/8/8/4K3 b - - 0 1", "d8d5", false, 125},        // unguarded
      {"1n2k3/P7/1p6/8/8/8/8/4K3 w - - 0 1", "a7b8q", false, 1000},    // promotions
  };
  for (const auto& c : cases) {
    auto b = boardFrom(c.fen);
    int32_t gain = -1;
    const Move m = moveOf(*b, c.move);
    EXPECT_EQ(b->sideToMove == White ? isBadCapture<White>(*b, m, gain) : isBadCapture<Black>(*b, m, gain), c.bad)
        << c.fen;
    EXPECT_EQ(gain, c.gain) << c.fen;
  }
}

// The moves of all 65536 that pass the test of moves from elsewhere and the legality check.
template <Color C>
std::multiset<Move> acceptedMoves(Board_0x88& b, bool inCheck) {
  PinMasks pins;
  computePins<C>(b, pins);
  std::multiset<Move> accepted;
  for (uint32_t m = 0; m < 65536; ++m)
    if (isPseudoLegal<C>(b, Move(m)) &&
        (inCheck ? isLegalEvasion<C>(b, Move(m)) : isLegalWhenNotInCheck<C>(b, Move(m), pins)))
      accepted.insert(Move(m));
  return accepted;
}

// Every possible 16-bit move on every suite position and some more: a move
// passes the test and the legality check exactly when a generator makes it.
TEST(MoveSelector, PseudoLegalAgreesWithTheGenerators) {
  std::vector<std::string> fens = evaltest::suiteFens();
  for (const char* fen : {"r3k2r/p2p1p2/1n6/1PpP4/4B3/2N2Q2/P7/R3K2R w KQkq c6 0 1", "r3k2r/8/8/8/8/8/8/R3K2R w Qkq - 0 1",
                          "r3k2r/8/b7/8/8/8/8/R3K2R w KQkq - 0 1",
                          "r3k2r/8/8/8/8/8/8/RN2K1NR w KQkq - 0 1", "4k3/8/8/8/8/8/4r3/R3K2R w KQ - 0 1"})
    fens.push_back(fen);
  auto b = std::make_unique<Board_0x88>();
  for (const std::string& fen : fens) {
    ASSERT_TRUE(setupFromFen(*b, fen.c_str())) << fen;
    bool inCheck;
    const std::multiset<Move> expected = legalSet(*b, inCheck);
    const std::multiset<Move> accepted =
        b->sideToMove == White ? acceptedMoves<White>(*b, inCheck) : acceptedMoves<Black>(*b, inCheck);
    EXPECT_EQ(accepted, expected) << fen;
  }
}

}  // namespace
