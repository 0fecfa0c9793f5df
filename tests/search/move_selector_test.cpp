// The staged move selector: order of the stages and within them, hints that
// are never repeated, deferred bad captures, killers and the counter move,
// the test of moves from elsewhere, and completeness of every move set.
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "search/move_selector.h"

namespace {

Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

// A board on the heap: it is large, and the tests set up many.
std::unique_ptr<Board_0x88> boardFrom(const char* fen) {
  auto b = std::make_unique<Board_0x88>();
  EXPECT_TRUE(setupFromFen(*b, fen)) << fen;
  return b;
}

MoveList legalMoves(Board_0x88& b, bool& inCheck) {
  MoveList list;
  list.count = 0;
  generateLegalMoves(b, list, inCheck);
  return list;
}

// The legal move with this text; fails the test if there is none.
Move legal(Board_0x88& b, const char* text) {
  bool inCheck;
  MoveList list = legalMoves(b, inCheck);
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveToString(list.moves[i].move) == text) return list.moves[i].move;
  ADD_FAILURE() << "no legal move " << text;
  return NoMove;
}

CheckInfo checkOf(const Board_0x88& b) {
  CheckInfo info;
  if (b.sideToMove == White)
    findCheck<White>(b, b.side[White].square[0], info);
  else
    findCheck<Black>(b, b.side[Black].square[0], info);
  return info;
}

// Everything a selector hands out, in order.
std::vector<ScoredMove> drain(Board_0x88& b, uint32_t moveSet, Move pv = NoMove, Move tt = NoMove) {
  MoveSelector selector(moveSet, &b, checkOf(b), NoMove);
  selector.pvMove.move = pv;
  selector.ttMove.move = tt;
  const bool evasions = moveSet == 1 || moveSet == 2;
  std::vector<ScoredMove> out;
  for (;;) {
    ScoredMove* sm;
    if (b.sideToMove == White)
      sm = evasions ? selector.nextEvasion<White>() : selector.nextMove<White>();
    else
      sm = evasions ? selector.nextEvasion<Black>() : selector.nextMove<Black>();
    if (!sm) break;
    out.push_back(*sm);
    EXPECT_LT(out.size(), 300u) << "selector does not end";
    if (out.size() >= 300) break;
  }
  // Once exhausted it stays exhausted.
  ScoredMove* after = b.sideToMove == White ? (evasions ? selector.nextEvasion<White>() : selector.nextMove<White>())
                                            : (evasions ? selector.nextEvasion<Black>() : selector.nextMove<Black>());
  EXPECT_EQ(after, nullptr);
  return out;
}

std::vector<std::string> texts(const std::vector<ScoredMove>& moves) {
  std::vector<std::string> out;
  for (const ScoredMove& sm : moves) out.push_back(moveToString(sm.move));
  return out;
}

int indexOf(const std::vector<ScoredMove>& moves, const char* text) {
  for (size_t i = 0; i < moves.size(); ++i)
    if (moveToString(moves[i].move) == text) return int(i);
  return -1;
}

template <Color C>
bool pseudoLegal(const Board_0x88& b, Move m) {
  return isPseudoLegal<C>(b, m);
}

// The moves as exact 16-bit values; also reports duplicates.
std::multiset<Move> bitsOf(const std::vector<ScoredMove>& moves) {
  std::multiset<Move> out;
  for (const ScoredMove& sm : moves) out.insert(sm.move);
  return out;
}
std::multiset<Move> bitsOf(const MoveList& list) {
  std::multiset<Move> out;
  for (uint32_t i = 0; i < list.count; ++i) out.insert(list.moves[i].move);
  return out;
}

std::vector<std::string> readSuiteFens() {
  std::vector<std::string> fens;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string text;
  while (std::getline(in, text)) {
    std::string::size_type cut = text.find(';');
    if (cut == std::string::npos) continue;
    std::string fen = text.substr(0, cut);
    while (!fen.empty() && fen.back() == ' ') fen.pop_back();
    fens.push_back(fen);
  }
  return fens;
}

// White to move after Black's c4c5. Captures: Ra1xa6 and Rh1xh7 (tie), Bf3xc6,
// Nc3xb5 (pawn guarded by a pawn: bad), d4xc5.
constexpr const char* orderingBefore = "4k3/7p/p1n5/1p6/2rP4/2N2B2/8/R2QK2R b KQ - 0 1";

// Plays Black's c4c5 so that the position has a move before it, for the counter move.
std::unique_ptr<Board_0x88> orderingPosition() {
  auto b = boardFrom(orderingBefore);
  Move m = legal(*b, "c4c5");
  b->history[b->ply].movePlayed = m;
  UndoRecord undo;
  makeMove<Black>(*b, m, undo);
  return b;
}

TEST(MoveSelector, CapturesByMvvLvaWithTiesAndBadCapturesDeferred) {
  auto b = orderingPosition();
  std::vector<ScoredMove> out = drain(*b, 3);
  std::vector<std::string> t = texts(out);
  ASSERT_GE(t.size(), 4u);
  // Partial selection: the tie Ra1xa6 / Rh1xh7 (both 1061) is reordered by
  // the swaps that brought the better captures forward.
  EXPECT_EQ(std::vector<std::string>(t.begin(), t.begin() + 4),
            (std::vector<std::string>{"d4c5", "f3c6", "h1h7", "a1a6"}));
  EXPECT_EQ(out[0].value, 3 * 64 - 1 + 1000);
  EXPECT_EQ(out[1].value, 2 * 64 - 2 + 1000);
  EXPECT_EQ(out[2].value, 64 - 3 + 1000);
  // The knight takes a pawn guarded by a pawn: put off among the quiet moves
  // with MVV/LVA - 50, and the quiet stage stays sorted by value around it.
  int bad = indexOf(out, "c3b5");
  ASSERT_GE(bad, 4);
  EXPECT_EQ(out[bad].value, 64 - 2 - 50);
  for (size_t i = 5; i < out.size(); ++i) EXPECT_GE(out[i - 1].value, out[i].value) << t[i];

  bool inCheck;
  EXPECT_EQ(bitsOf(out), bitsOf(legalMoves(*b, inCheck)));

  // A tie alone keeps the order of generation: the rook of slot 2 first.
  auto tie = boardFrom("4k3/7p/p7/8/8/8/8/R3K2R w - - 0 1");
  std::vector<std::string> t2 = texts(drain(*tie, 3));
  ASSERT_GE(t2.size(), 2u);
  EXPECT_EQ(t2[0], "a1a6");
  EXPECT_EQ(t2[1], "h1h7");
}

TEST(MoveSelector, HintsFirstThenKillersThenQuietsWithCounterMove) {
  auto b = orderingPosition();
  const uint32_t ply = b->ply;
  ASSERT_EQ(ply, 1u);
  // Killers of this ply: one usable, one a blocked queen move (d4 is own).
  b->history[ply].killer[0] = legal(*b, "c3e4");
  b->history[ply].killer[1] = encodeMove88(sq("d1"), sq("d5"));
  // Two plies deeper: a usable one and a repetition of the first.
  b->history[ply + 2].killer[0] = legal(*b, "d1d3");
  b->history[ply + 2].killer[1] = legal(*b, "c3e4");
  // The reply stored for Black's rook arriving on c5.
  Move counter = legal(*b, "f3e2");
  b->counterMove[Black][Rook - 1][toSquare64(sq("c5"))] = counter;
  EXPECT_TRUE(isCounterMove(*b, b->history[ply - 1].movePlayed, counter));

  Move pv = legal(*b, "f3g2");
  Move tt = legal(*b, "h1h7");
  std::vector<ScoredMove> out = drain(*b, 3, pv, tt);
  std::vector<std::string> t = texts(out);
  ASSERT_GE(t.size(), 9u);
  EXPECT_EQ(std::vector<std::string>(t.begin(), t.begin() + 9),
            (std::vector<std::string>{"f3g2", "h1h7", "d4c5", "f3c6", "a1a6", "c3e4", "d1d3", "e1g1", "f3e2"}));
  EXPECT_EQ(out[5].value, -2 + 150);
  EXPECT_EQ(out[6].value, -4 + 150);
  // Castling gains 58 for the king on the piece-square table; the counter
  // move gets its 50 instead of the bishop's table gain.
  EXPECT_EQ(out[7].value, -5 + 58);
  EXPECT_EQ(out[8].value, -2 + 50);

  bool inCheck;
  EXPECT_EQ(bitsOf(out), bitsOf(legalMoves(*b, inCheck)));  // nothing twice, nothing lost

  // The same position once more: the table move is a killer, and the hints agree.
  std::vector<ScoredMove> again = drain(*b, 3, legal(*b, "c3e4"), legal(*b, "c3e4"));
  std::vector<std::string> t2 = texts(again);
  ASSERT_GE(t2.size(), 6u);
  EXPECT_EQ(std::vector<std::string>(t2.begin(), t2.begin() + 6),
            (std::vector<std::string>{"c3e4", "d4c5", "f3c6", "h1h7", "a1a6", "d1d3"}));
  EXPECT_EQ(bitsOf(again), bitsOf(legalMoves(*b, inCheck)));
}

TEST(MoveSelector, StaleHintsAndKillersAreDropped) {
  auto b = orderingPosition();
  const uint32_t ply = b->ply;
  bool inCheck;
  const std::multiset<Move> all = bitsOf(legalMoves(*b, inCheck));

  // Table moves that can't be made here: a blocked slider, a move of Black's
  // piece, a pawn capture to an empty square, castling shaped as a king step.
  const Move stale[] = {encodeMove88(sq("d1"), sq("d6")), encodeMove88(sq("c6"), sq("e5")),
                        encodeMove88(sq("d4"), sq("e5")), encodeMove88(sq("e1"), sq("g1"))};
  // The line's first move gets the same test: after a table cut-off it is a table move.
  for (Move hint : stale) {
    for (bool asLine : {false, true}) {
      std::vector<ScoredMove> out = asLine ? drain(*b, 3, hint, NoMove) : drain(*b, 3, NoMove, hint);
      EXPECT_EQ(bitsOf(out), all) << moveToString(hint) << (asLine ? " as line move" : " as table move");
      EXPECT_EQ(texts(out)[0], "d4c5") << moveToString(hint);
    }
  }
  // The king step e1g1 shares its squares with castling: castling is still handed out.
  EXPECT_GE(indexOf(drain(*b, 3, NoMove, stale[3]), "e1g1"), 0);

  // A killer from two plies deeper that is illegal here leaves its slot empty.
  b->history[ply].killer[0] = legal(*b, "c3e4");
  b->history[ply].killer[1] = NoMove;
  b->history[ply + 2].killer[0] = encodeMove88(sq("d1"), sq("d6"));  // blocked
  b->history[ply + 2].killer[1] = legal(*b, "a1b1");
  std::vector<ScoredMove> out = drain(*b, 3);
  EXPECT_EQ(texts(out)[4], "c3e4");
  EXPECT_EQ(texts(out)[5], "a1b1");
  EXPECT_EQ(out[5].value, -3 + 150);
  EXPECT_EQ(bitsOf(out), all);
}

TEST(MoveSelector, KillerThatIsIllegalByPinIsDropped) {
  // The knight on d2 is pinned by the bishop on b4; Nf3 is a killer from elsewhere.
  auto b = boardFrom("4k3/8/8/8/1b6/8/3N4/4K3 w - - 0 1");
  b->history[0].killer[0] = encodeMove88(sq("d2"), sq("f3"));
  b->history[0].killer[1] = encodeMove88(sq("e1"), sq("d1"));
  std::vector<ScoredMove> out = drain(*b, 3);
  EXPECT_EQ(indexOf(out, "d2f3"), -1);
  EXPECT_EQ(texts(out)[0], "e1d1");
  bool inCheck;
  EXPECT_EQ(bitsOf(out), bitsOf(legalMoves(*b, inCheck)));
}

TEST(MoveSelector, EvasionsSortedAndHintsOnce) {
  // White in check from the rook on e6, which the pawn on f7 guards.
  // Evasions: the bishop takes the rook, the knight blocks, the king steps aside.
  auto b = boardFrom("4k3/5p2/4r3/8/2B5/3N4/8/4K3 w - - 0 1");
  ASSERT_NE(checkOf(*b).count, 0);
  b->history[0].killer[0] = legal(*b, "e1d2");
  std::vector<ScoredMove> out = drain(*b, 2);
  bool inCheck;
  MoveList all = legalMoves(*b, inCheck);
  ASSERT_TRUE(inCheck);
  EXPECT_EQ(bitsOf(out), bitsOf(all));
  for (size_t i = 1; i < out.size(); ++i) EXPECT_GE(out[i - 1].value, out[i].value);
  // The bishop takes the rook: guarded by the pawn on f7, but a rook is worth
  // more than a bishop, so not bad: MVV/LVA + 1000.
  ASSERT_GE(indexOf(out, "c4e6"), 0);
  EXPECT_EQ(out[indexOf(out, "c4e6")].value, 3 * 64 - 2 + 1000);
  EXPECT_EQ(texts(out)[0], "c4e6");
  // The killer gets MVV/LVA + 150.
  ASSERT_GE(indexOf(out, "e1d2"), 0);
  EXPECT_EQ(out[indexOf(out, "e1d2")].value, -5 + 150);

  // Hints come first and once; a table move that doesn't meet the check is dropped.
  Move pv = legal(*b, "d3e5");
  std::vector<ScoredMove> hinted = drain(*b, 2, pv, encodeMove88(sq("d3"), sq("b4")));
  EXPECT_EQ(texts(hinted)[0], "d3e5");
  EXPECT_EQ(texts(hinted)[1], "c4e6");
  EXPECT_EQ(bitsOf(hinted), bitsOf(all));
  std::vector<ScoredMove> tt = drain(*b, 2, NoMove, legal(*b, "e1f2"));
  EXPECT_EQ(texts(tt)[0], "e1f2");
  EXPECT_EQ(bitsOf(tt), bitsOf(all));
  // Castling is never a table move while in check.
  auto castle = boardFrom("4k3/8/8/8/8/8/4r3/R3K2R w KQ - 0 1");
  Move kingSide = encodeMove88(sq("e1"), sq("g1"), MoveCastling, CastleWhiteKingSide);
  EXPECT_FALSE(pseudoLegal<White>(*castle, kingSide));
  EXPECT_EQ(indexOf(drain(*castle, 2, NoMove, kingSide), "e1g1"), -1);
}

TEST(MoveSelector, QuiescenceSetQueenPromotionsOnlyByMvvLva) {
  // The pawn on b7 can promote on b8 or take on a8 and c8.
  auto b = boardFrom("r1n1k3/1P6/8/3p4/4P3/8/8/4K3 w - - 0 1");
  std::vector<ScoredMove> out = drain(*b, 4);
  EXPECT_EQ(texts(out), (std::vector<std::string>{"b7a8q", "b7c8q", "e4d5", "b7b8q"}));
  EXPECT_EQ(out[0].value, (3 * 8 + 4) * 8 - 1);
  EXPECT_EQ(out[1].value, (2 * 8 + 4) * 8 - 1);
  EXPECT_EQ(out[2].value, 64 - 1);
  EXPECT_EQ(out[3].value, 4 * 8 - 1);
  // The hint is handed out first and skipped later.
  std::vector<ScoredMove> hinted = drain(*b, 4, legal(*b, "e4d5"));
  EXPECT_EQ(texts(hinted), (std::vector<std::string>{"e4d5", "b7a8q", "b7c8q", "b7b8q"}));
  // The full search has all four promotion pieces, by the rank of the new piece.
  std::vector<std::string> full = texts(drain(*b, 3));
  ASSERT_GE(full.size(), 4u);
  EXPECT_EQ(full[0], "b7a8q");
  EXPECT_EQ(full[1], "b7a8r");
  EXPECT_EQ(std::set<std::string>(full.begin() + 2, full.begin() + 4), (std::set<std::string>{"b7a8n", "b7a8b"}));
}

TEST(MoveSelector, BadCaptureRule) {
  int32_t gain = -1;
  // Queen takes a pawn guarded by a knight: bad. Knight takes it: not bad.
  auto b1 = boardFrom("4k3/8/2n5/4p3/8/8/4Q3/4K1N1 w - - 0 1");
  EXPECT_TRUE(isBadCapture<White>(*b1, encodeMove88(sq("e2"), sq("e5")), gain));
  EXPECT_EQ(gain, 125);
  auto b2 = boardFrom("4k3/8/2n5/4p3/8/5N2/8/4K3 w - - 0 1");
  EXPECT_FALSE(isBadCapture<White>(*b2, encodeMove88(sq("f3"), sq("e5")), gain));
  // Knight takes a pawn guarded by a pawn: bad.
  auto b3 = boardFrom("4k3/3p4/4p3/8/3N4/8/8/4K3 w - - 0 1");
  EXPECT_TRUE(isBadCapture<White>(*b3, encodeMove88(sq("d4"), sq("e6")), gain));
  // Rook takes a knight guarded by a knight: not bad; guarded by a pawn: bad.
  auto b4 = boardFrom("4k3/8/2n5/4n3/8/8/8/4RK2 w - - 0 1");
  EXPECT_FALSE(isBadCapture<White>(*b4, encodeMove88(sq("e1"), sq("e5")), gain));
  EXPECT_EQ(gain, 400);
  auto b5 = boardFrom("4k3/5p2/4n3/8/8/8/8/4RK2 w - - 0 1");
  EXPECT_TRUE(isBadCapture<White>(*b5, encodeMove88(sq("e1"), sq("e6")), gain));
  // Rook takes a pawn guarded by a knight: bad; bishop takes it: not.
  auto b6 = boardFrom("4k3/8/2n5/4p3/8/2B5/8/4RK2 w - - 0 1");
  EXPECT_TRUE(isBadCapture<White>(*b6, encodeMove88(sq("e1"), sq("e5")), gain));
  EXPECT_FALSE(isBadCapture<White>(*b6, encodeMove88(sq("c3"), sq("e5")), gain));
  // A king capture is never bad, even of a pawn guarded by a pawn.
  auto b7 = boardFrom("4k3/8/8/5p2/4p3/4K3/8/8 w - - 0 1");
  EXPECT_FALSE(isBadCapture<White>(*b7, encodeMove88(sq("e3"), sq("e4")), gain));
  // Mirrored for Black: a queen takes a pawn guarded by a white pawn.
  auto b8 = boardFrom("3qk3/8/8/3P4/4P3/8/8/4K3 b - - 0 1");
  EXPECT_TRUE(isBadCapture<Black>(*b8, encodeMove88(sq("d8"), sq("d5")), gain));
  auto b9 = boardFrom("3qk3/8/8/3P4/2P5/8/8/4K3 b - - 0 1");
  EXPECT_TRUE(isBadCapture<Black>(*b9, encodeMove88(sq("d8"), sq("d5")), gain));
  auto b10 = boardFrom("3qk3/8/8/3P4/8/8/8/4K3 b - - 0 1");
  EXPECT_FALSE(isBadCapture<Black>(*b10, encodeMove88(sq("d8"), sq("d5")), gain));
  // En passant and promotions are never bad, with their own gain.
  auto ep = boardFrom("4k3/8/8/3Pp3/8/8/8/4K3 w - e6 0 1");
  EXPECT_FALSE(isBadCapture<White>(*ep, encodeMove88(sq("d5"), sq("e6"), MoveEnPassant), gain));
  EXPECT_EQ(gain, 125);
  auto promo = boardFrom("1n2k3/P7/1p6/8/8/8/8/4K3 w - - 0 1");
  EXPECT_FALSE(isBadCapture<White>(*promo, encodePromotion(sq("a7"), sq("b8"), Queen), gain));
  EXPECT_EQ(gain, 1000);
  EXPECT_FALSE(isBadCapture<White>(*promo, encodePromotion(sq("a7"), sq("a8"), Knight), gain));
  EXPECT_EQ(gain, 275);
}

TEST(MoveSelector, MvvLvaValues) {
  bool capture = false;
  auto ep = boardFrom("4k3/8/8/3Pp3/8/8/8/4K3 w - e6 0 1");
  EXPECT_EQ(mvvLvaValue(*ep, encodeMove88(sq("d5"), sq("e6"), MoveEnPassant), capture), 63);
  EXPECT_TRUE(capture);
  auto promo = boardFrom("1r2k3/P7/8/8/8/8/8/4K2R w K - 0 1");
  EXPECT_EQ(mvvLvaValue(*promo, encodePromotion(sq("a7"), sq("a8"), Queen), capture), 31);
  EXPECT_TRUE(capture);  // a promotion counts as a capture without a victim too
  EXPECT_EQ(mvvLvaValue(*promo, encodePromotion(sq("a7"), sq("b8"), Knight), capture), (3 * 8 + 2) * 8 - 1);
  EXPECT_EQ(mvvLvaValue(*promo, encodeMove88(sq("h1"), sq("h8")), capture), -3);
  EXPECT_FALSE(capture);
  EXPECT_EQ(mvvLvaValue(*promo, encodeMove88(sq("e1"), sq("g1"), MoveCastling, CastleWhiteKingSide), capture), -5);
  EXPECT_FALSE(capture);
  auto take = boardFrom("4k3/8/8/8/8/8/3q4/4K3 w - - 0 1");
  EXPECT_EQ(mvvLvaValue(*take, encodeMove88(sq("e1"), sq("d2")), capture), 4 * 64 - 5);
  EXPECT_TRUE(capture);
}

TEST(MoveSelector, PseudoLegalRefusesImpossibleMoves) {
  auto b = boardFrom("r3k2r/p2p1p2/1n6/1PpP4/4B3/2N2Q2/P7/R3K2R w KQkq c6 0 1");
  auto yes = [&](Move m) { return pseudoLegal<White>(*b, m); };
  auto mv = [](const char* f, const char* t, unsigned kind = MoveNormal, unsigned detail = 0) {
    return encodeMove88(sq(f), sq(t), kind, detail);
  };
  EXPECT_FALSE(yes(NoMove));
  // Wrong piece for the step, blocked sliders, empty origin, Black's piece.
  EXPECT_FALSE(yes(mv("c3", "c5")));  // knight moves like a rook
  EXPECT_FALSE(yes(mv("e4", "e6")));  // bishop moves straight
  EXPECT_FALSE(yes(mv("f3", "g5")));  // queen on no line
  EXPECT_FALSE(yes(mv("f3", "f8")));  // queen through the pawn on f7
  EXPECT_FALSE(yes(mv("a1", "a4")));  // rook through its own pawn
  EXPECT_FALSE(yes(mv("e4", "a8")));  // bishop through its own pawn on d5
  EXPECT_FALSE(yes(mv("e3", "e4")));  // nothing on e3
  EXPECT_FALSE(yes(mv("b6", "d5")));  // Black's knight
  EXPECT_FALSE(yes(mv("c3", "e4")));  // onto an own piece
  EXPECT_FALSE(yes(mv("e1", "e3")));  // king two squares
  EXPECT_FALSE(yes(mv("c3", "b1", MoveNormal, 1)));  // a knight with a double-step detail
  // Pawns: capture to an empty square, push onto a piece, double step
  // without its detail or from the wrong rank, a step onto the last rank
  // without promotion, a promotion from the wrong rank.
  EXPECT_FALSE(yes(mv("a2", "b3")));
  EXPECT_FALSE(yes(mv("d5", "d6", MoveNormal, 1)));
  EXPECT_FALSE(yes(mv("a2", "a4")));
  EXPECT_FALSE(yes(mv("b5", "b7", MoveNormal, 1)));
  EXPECT_FALSE(yes(mv("b5", "b4")));  // backwards
  EXPECT_FALSE(yes(encodePromotion(sq("d5"), sq("d6"), Queen)));
  auto last = boardFrom("4k3/3P4/8/8/8/8/8/4K3 w - - 0 1");
  EXPECT_FALSE(pseudoLegal<White>(*last, mv("d7", "d8")));
  EXPECT_TRUE(pseudoLegal<White>(*last, encodePromotion(sq("d7"), sq("d8"), Rook)));
  EXPECT_FALSE(pseudoLegal<White>(*last, encodePromotion(sq("d7"), sq("c8"), Queen)));  // capture of nothing
  // En passant: only onto epSquare, from beside it, by a pawn.
  EXPECT_TRUE(yes(mv("b5", "c6", MoveEnPassant)));
  EXPECT_TRUE(yes(mv("d5", "c6", MoveEnPassant)));
  EXPECT_FALSE(yes(mv("b5", "c6")));               // as a plain capture of an empty square
  EXPECT_FALSE(yes(mv("d5", "e6", MoveEnPassant)));  // not the en-passant square
  EXPECT_FALSE(yes(mv("a2", "c6", MoveEnPassant)));
  // Castling: with the right, empty squares, and no attack on the passed square.
  EXPECT_TRUE(yes(mv("e1", "g1", MoveCastling, CastleWhiteKingSide)));
  EXPECT_TRUE(yes(mv("e1", "c1", MoveCastling, CastleWhiteQueenSide)));
  EXPECT_FALSE(yes(mv("e1", "g1", MoveCastling, CastleBlackKingSide)));  // Black's detail
  EXPECT_FALSE(yes(mv("e1", "c1", MoveCastling, CastleWhiteKingSide)));  // detail and target disagree
  EXPECT_FALSE(yes(mv("e8", "g8", MoveCastling, CastleBlackKingSide)));  // Black's king
  EXPECT_FALSE(yes(mv("e1", "g1")));                                       // shaped as a king step
  auto noRight = boardFrom("r3k2r/8/8/8/8/8/8/R3K2R w Qkq - 0 1");
  EXPECT_FALSE(pseudoLegal<White>(*noRight, mv("e1", "g1", MoveCastling, CastleWhiteKingSide)));
  EXPECT_TRUE(pseudoLegal<White>(*noRight, mv("e1", "c1", MoveCastling, CastleWhiteQueenSide)));
  auto through = boardFrom("r3k2r/8/8/8/8/8/8/RN2K1NR w KQkq - 0 1");
  EXPECT_FALSE(pseudoLegal<White>(*through, mv("e1", "g1", MoveCastling, CastleWhiteKingSide)));
  EXPECT_FALSE(pseudoLegal<White>(*through, mv("e1", "c1", MoveCastling, CastleWhiteQueenSide)));
  auto attacked = boardFrom("r3k2r/8/b7/8/8/8/8/R3K2R w KQkq - 0 1");  // the bishop sees f1
  EXPECT_FALSE(pseudoLegal<White>(*attacked, mv("e1", "g1", MoveCastling, CastleWhiteKingSide)));
  EXPECT_TRUE(pseudoLegal<White>(*attacked, mv("e1", "c1", MoveCastling, CastleWhiteQueenSide)));
  auto blackSide = boardFrom("r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1");
  EXPECT_TRUE(pseudoLegal<Black>(*blackSide, mv("e8", "c8", MoveCastling, CastleBlackQueenSide)));
  EXPECT_FALSE(pseudoLegal<Black>(*blackSide, mv("e1", "g1", MoveCastling, CastleWhiteKingSide)));
  // Moves that can be made are accepted.
  EXPECT_TRUE(yes(mv("c3", "d1")));
  EXPECT_TRUE(yes(mv("f3", "f7")));
  EXPECT_TRUE(yes(mv("e4", "h7")));
  EXPECT_TRUE(yes(mv("a2", "a4", MoveNormal, 1)));
  EXPECT_TRUE(yes(mv("a2", "a3")));
  EXPECT_TRUE(yes(mv("d5", "d6")));
}

// Every possible 16-bit move on every suite position: a move passes the test
// and the legality check exactly when a generator produces it, bit for bit.
TEST(MoveSelector, PseudoLegalAgreesWithTheGeneratorsOnTheSuite) {
  std::vector<std::string> fens = readSuiteFens();
  ASSERT_GT(fens.size(), 100u);
  auto b = std::make_unique<Board_0x88>();
  for (const std::string& fen : fens) {
    ASSERT_TRUE(setupFromFen(*b, fen.c_str())) << fen;
    bool inCheck;
    const std::multiset<Move> expected = bitsOf(legalMoves(*b, inCheck));
    PinMasks pins;
    std::multiset<Move> accepted;
    if (b->sideToMove == White) {
      computePins<White>(*b, pins);
      for (uint32_t m = 0; m < 65536; ++m)
        if (isPseudoLegal<White>(*b, Move(m)) && (inCheck ? isLegalEvasion<White>(*b, Move(m))
                                                          : isLegalWhenNotInCheck<White>(*b, Move(m), pins)))
          accepted.insert(Move(m));
    } else {
      computePins<Black>(*b, pins);
      for (uint32_t m = 0; m < 65536; ++m)
        if (isPseudoLegal<Black>(*b, Move(m)) && (inCheck ? isLegalEvasion<Black>(*b, Move(m))
                                                          : isLegalWhenNotInCheck<Black>(*b, Move(m), pins)))
          accepted.insert(Move(m));
    }
    EXPECT_EQ(accepted, expected) << fen;
  }
}

// Every move set hands out exactly the legal moves, each once, also with
// hints and with killers left over from other positions.
TEST(MoveSelector, MoveSetsAreCompleteOnTheSuite) {
  std::vector<std::string> fens = readSuiteFens();
  ASSERT_GT(fens.size(), 100u);
  auto b = std::make_unique<Board_0x88>();
  MoveList previous;
  previous.count = 0;
  for (const std::string& fen : fens) {
    ASSERT_TRUE(setupFromFen(*b, fen.c_str())) << fen;
    bool inCheck;
    MoveList legalList = legalMoves(*b, inCheck);
    const std::multiset<Move> expected = bitsOf(legalList);

    if (inCheck) {
      EXPECT_EQ(bitsOf(drain(*b, 2)), expected) << fen;
      EXPECT_EQ(bitsOf(drain(*b, 1)), expected) << fen;
    } else {
      EXPECT_EQ(bitsOf(drain(*b, 3)), expected) << fen;
      EXPECT_EQ(bitsOf(drain(*b, 0)), expected) << fen;
      MoveList captures;
      captures.count = 0;
      PinMasks pins;
      if (b->sideToMove == White) {
        computePins<White>(*b, pins);
        generateCaptures<White>(*b, pins, captures, PromotionsQueenOnly);
      } else {
        computePins<Black>(*b, pins);
        generateCaptures<Black>(*b, pins, captures, PromotionsQueenOnly);
      }
      std::vector<ScoredMove> quiescence = drain(*b, 4);
      EXPECT_EQ(bitsOf(quiescence), bitsOf(captures)) << fen;
      for (size_t i = 1; i < quiescence.size(); ++i) EXPECT_GE(quiescence[i - 1].value, quiescence[i].value) << fen;
    }

    // Hints from this position, killers from this one and the one before.
    if (legalList.count > 0) {
      Move pv = legalList.moves[0].move;
      Move tt = legalList.moves[legalList.count / 2].move;
      for (int i = 0; i < 2; ++i) {
        b->history[b->ply].killer[i] = legalList.moves[(legalList.count - 1 - i) % legalList.count].move;
        b->history[b->ply + 2].killer[i] = previous.count ? previous.moves[i % previous.count].move : NoMove;
      }
      std::vector<ScoredMove> out = drain(*b, inCheck ? 2 : 3, pv, tt);
      EXPECT_EQ(bitsOf(out), expected) << fen;
      ASSERT_FALSE(out.empty());
      EXPECT_EQ(out[0].move, pv) << fen;
      if (tt != pv) {
        EXPECT_EQ(out[1].move, tt) << fen;
      }
      // A stale table move from another position changes nothing of the set.
      if (previous.count > 0) {
        EXPECT_EQ(bitsOf(drain(*b, inCheck ? 2 : 3, NoMove, previous.moves[0].move)), expected) << fen;
      }
      for (int i = 0; i < 2; ++i) b->history[b->ply].killer[i] = b->history[b->ply + 2].killer[i] = NoMove;
    }
    previous = legalList;
  }
}

TEST(MoveSelector, KillerAndCounterMoveUpdates) {
  auto b = orderingPosition();  // White to move, Black's rook has just come to c5
  const uint32_t ply = b->ply;
  Move quiet = legal(*b, "c3e4");
  Move other = legal(*b, "d1d3");
  updateKiller(*b, quiet);
  EXPECT_EQ(b->history[ply].killer[0], quiet);
  updateKiller(*b, quiet);  // the same move may fill both entries
  EXPECT_EQ(b->history[ply].killer[1], quiet);
  updateKiller(*b, other);
  EXPECT_EQ(b->history[ply].killer[0], other);
  EXPECT_EQ(b->history[ply].killer[1], quiet);
  // Captures, promotions and en passant are no killers.
  updateKiller(*b, legal(*b, "d4c5"));
  EXPECT_EQ(b->history[ply].killer[0], other);

  Move previous = b->history[ply - 1].movePlayed;
  EXPECT_FALSE(isCounterMove(*b, previous, quiet));
  updateCounterMove(*b, previous, quiet);
  EXPECT_EQ(b->counterMove[Black][Rook - 1][toSquare64(sq("c5"))], quiet);
  EXPECT_TRUE(isCounterMove(*b, previous, quiet));
  EXPECT_FALSE(isCounterMove(*b, previous, other));
  updateCounterMove(*b, previous, legal(*b, "d4c5"));  // a capture doesn't replace it
  EXPECT_TRUE(isCounterMove(*b, previous, quiet));
  // After a null move there is no move before: no counter move.
  EXPECT_FALSE(isCounterMove(*b, NoMove, quiet));
  updateCounterMove(*b, NoMove, other);
  EXPECT_TRUE(isCounterMove(*b, previous, quiet));

  // After a promotion the reply is filed under the pawn.
  auto p = boardFrom("4k3/8/8/8/8/7K/1p6/8 b - - 0 1");
  Move promotion = legal(*p, "b2b1q");
  p->history[p->ply].movePlayed = promotion;
  UndoRecord undo;
  makeMove<Black>(*p, promotion, undo);
  Move reply = legal(*p, "h3h4");
  updateCounterMove(*p, promotion, reply);
  EXPECT_EQ(p->counterMove[Black][Pawn - 1][toSquare64(sq("b1"))], reply);
  EXPECT_TRUE(isCounterMove(*p, promotion, reply));
}

}  // namespace
