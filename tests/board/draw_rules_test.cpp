#include "board/draw_rules.h"

#include "board_test_support.h"

namespace {

// Plays a line as the game and the search do, testing for a draw at the start
// and after every step. Steps: a move in coordinates, "null" for a null move,
// "back" to take the last step back. One letter per test: '-' no draw, 'r' a
// repetition the search scores as a draw (second occurrence), and the reason
// the game ends for: 'R' third repetition, 'F' fifty moves, 'M' material.
std::string drawsAlong(const char* fen, const std::string& steps) {
  Board_0x88 b;
  EXPECT_TRUE(setupFromFen(b, fen)) << fen;
  std::vector<Move> moves;
  std::vector<UndoRecord> undos;
  auto test = [&] {
    GameEndReason reason = ReasonCheckmate;  // anything the test must overwrite
    return !isDrawByRule(b, reason) ? (reason == ReasonNone ? '-' : '?') : "r??FMR"[reason];
  };
  std::string result(1, test()), step;
  std::istringstream in(steps);
  while (in >> step) {
    if (step == "back") {
      moves.back() == NoMove ? unmakeNullMove(b, undos.back()) : unmakeMoveForSide(b, moves.back(), undos.back());
      moves.pop_back(), undos.pop_back();
    } else {
      Move m = step == "null" ? NoMove : legalMove(b, step);
      if (step != "null" && m == NoMove) return "no legal move " + step;
      b.currentRecord().movePlayed = m;
      moves.push_back(m);
      undos.emplace_back();
      m == NoMove ? makeNullMove(b, undos.back()) : makeMoveForSide(b, m, undos.back());
    }
    result += test();
  }
  return result;
}

TEST(DrawRules, RepetitionFiftyMovesAndMaterial) {
  const char* dance = " g1f3 g8f6 f3g1 f6g8";
  const struct { const char* fen; std::string steps; const char* expected; } cases[] = {
      // Second occurrence for the search, third for the game, a fourth still one;
      // taken back, the position before is only a second occurrence again.
      {startPositionFen, std::string(dance) + dance + dance + " back back back back back", "----rrrrRRRRRRRRRr"},
      // Other castling rights make another position: the fifth move makes none.
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "e1f1 e8f8 f1e1 f8e8 e1f1 e8f8 f1e1 f8e8", "------rrr"},
      // After 1. e4 no black pawn can take en passant, so the position repeats;
      // with a black pawn on d4 the square counts and it doesn't.
      {startPositionFen, "e2e4 g8f6 g1f3 f6g8 f3g1", "-----r"},
      {"rnbqkbnr/ppp1pppp/8/8/3p4/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", "e2e4 g8f6 g1f3 f6g8 f3g1", "------"},
      // A six-ply cycle returns at ply 6 and nowhere between.
      {"k6r/8/8/8/8/8/8/K6R w - - 0 1", "a1b1 a8b8 b1b2 b8b7 b2a1 b7a8", "------r"},
      // A clock read from the text doesn't reach behind the first record.
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 20 11", std::string(dance) + dance, "----rrrrR"},
      // Null moves reset the clock: the scan stops there.
      {startPositionFen, std::string(dance) + " null null" + dance, "----r-----r"},
      {startPositionFen, "g1f3 g8f6 null f6g8 f3g1 null", "-------"},
      // The hundredth half-move; a capture resets; the clock byte wraps after 255.
      {"4k3/8/8/8/8/8/8/R3K3 w - - 98 80", "a1a2 e8d8 a2a3", "--FF"},
      {"4k3/8/8/8/8/8/r7/R3K3 w - - 99 80", "a1a2 e8d8", "---"},
      {"6k1/5ppp/8/8/8/8/8/R5K1 w - - 99 60", "a1a8", "-F"},  // mate is the callers' business
      {"4k3/8/8/8/8/8/8/R3K3 w - - 254 200", "a1a2 e8d8", "FF-"},
      // Material: a bare king or a minor piece against it; the clock is tested first.
      {"4k3/8/8/8/8/8/3r4/4KN2 w - - 0 1", "e1d2", "-M"},
      {"4k3/8/8/8/8/8/8/4KN2 w - - 99 80", "f1e3", "MF"},
      {"4k3/8/8/8/8/8/8/4K1n1 b - - 0 1", "", "M"},
      {"4kb2/8/8/8/8/8/8/4K3 w - - 0 1", "", "M"},
      {"4kb2/8/8/8/8/8/8/2B1K3 w - - 0 1", "", "-"},  // bishops, of either colour
      {"4kb2/8/8/8/8/8/8/3BK3 w - - 0 1", "", "-"},
      {"4k3/8/8/8/8/8/8/4KNN1 w - - 0 1", "", "-"},
      {"4kn2/8/8/8/8/8/8/4KN2 w - - 0 1", "", "-"},
      {"4k3/4p3/8/8/8/8/8/4K3 w - - 0 1", "", "-"},
      {"4k3/8/8/8/8/8/8/4K2R w - - 0 1", "", "-"},
      {"3qk3/8/8/8/8/8/8/4KN2 w - - 0 1", "", "-"},
  };
  for (const auto& c : cases) EXPECT_EQ(drawsAlong(c.fen, c.steps), c.expected) << c.fen << ": " << c.steps;
}

}  // namespace
