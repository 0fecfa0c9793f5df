// Legal move generation: order of the list, the filters at pins, checks and
// castling, the split into captures and quiets, and move counts of the suite.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"

namespace {

Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

enum class Gen { Legal, All, Evasions, Captures, CapturesQueenOnly, Quiets };

template <Color C>
void generateFor(Board_0x88& b, Gen which, MoveList& list) {
  PinMasks pins;
  computePins<C>(b, pins);
  switch (which) {
    case Gen::Legal: {
      bool inCheck;
      generateLegalMoves(b, list, inCheck);
      break;
    }
    case Gen::All: generateAllMoves<C>(b, pins, list); break;
    case Gen::Evasions: generateEvasions<C>(b, list); break;
    case Gen::Captures: generateCaptures<C>(b, pins, list, PromotionsAll); break;
    case Gen::CapturesQueenOnly: generateCaptures<C>(b, pins, list, PromotionsQueenOnly); break;
    case Gen::Quiets: generateQuiets<C>(b, pins, list); break;
  }
}

MoveList generate(Board_0x88& b, Gen which) {
  MoveList list;
  list.count = 0;
  if (b.sideToMove == White)
    generateFor<White>(b, which, list);
  else
    generateFor<Black>(b, which, list);
  return list;
}

std::vector<std::string> texts(const MoveList& list) {
  std::vector<std::string> out;
  for (uint32_t i = 0; i < list.count; ++i) out.push_back(moveToString(list.moves[i].move));
  return out;
}

// The moves of one piece, in list order.
std::vector<std::string> movesFrom(const MoveList& list, const char* from) {
  std::vector<std::string> out;
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveFromSquare(list.moves[i].move) == sq(from)) out.push_back(moveToString(list.moves[i].move));
  return out;
}

bool has(const MoveList& list, const char* text) {
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveToString(list.moves[i].move) == text) return true;
  return false;
}

const ScoredMove* find(const MoveList& list, const char* text) {
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveToString(list.moves[i].move) == text) return &list.moves[i];
  return nullptr;
}

bool inCheck(Board_0x88& b) {
  MoveList list;
  bool check = false;
  generateLegalMoves(b, list, check);
  return check;
}

struct SuiteLine {
  std::string fen;
  std::vector<uint64_t> counts;  // counts[d - 1] for depth d
};

std::vector<SuiteLine> readSuite() {
  std::vector<SuiteLine> lines;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string text;
  while (std::getline(in, text)) {
    std::string::size_type cut = text.find(';');
    if (cut == std::string::npos) continue;
    SuiteLine line;
    line.fen = text.substr(0, cut);
    while (!line.fen.empty() && line.fen.back() == ' ') line.fen.pop_back();
    while (cut != std::string::npos) {
      std::string::size_type next = text.find(';', cut + 1);
      std::string field = text.substr(cut + 1, next == std::string::npos ? std::string::npos : next - cut - 1);
      std::string::size_type blank = field.find(' ');
      if (field.size() > 1 && field[0] == 'D' && blank != std::string::npos)
        line.counts.push_back(std::strtoull(field.c_str() + blank + 1, nullptr, 10));
      cut = next;
    }
    lines.push_back(line);
  }
  return lines;
}

uint64_t perft(Board_0x88& b, int depth) {
  MoveList list;
  bool check;
  generateLegalMoves(b, list, check);
  if (depth == 1) return list.count;
  uint64_t nodes = 0;
  for (uint32_t i = 0; i < list.count; ++i) {
    Move m = list.moves[i].move;
    UndoRecord undo;
    makeMoveForSide(b, m, undo);
    nodes += perft(b, depth - 1);
    unmakeMoveForSide(b, m, undo);
  }
  return nodes;
}

// The same count over the perft pair, which keeps the key but not the evaluation data.
template <Color C>
uint64_t perftLean(Board_0x88& b, int depth, bool& keysRight) {
  MoveList list;
  PinMasks pins;
  computePins<C>(b, pins);
  CheckInfo info;
  if (findCheck<C>(b, b.side[C].square[0], info))
    generateEvasions<C>(b, list);
  else
    generateAllMoves<C>(b, pins, list);
  if (depth == 1) return list.count;
  uint64_t nodes = 0;
  for (uint32_t i = 0; i < list.count; ++i) {
    Move m = list.moves[i].move;
    UndoRecord undo;
    makePerftMove<C>(b, m, undo);
    if (b.currentRecord().hashKey != b.computeFullHash()) keysRight = false;
    nodes += perftLean<opponent(C)>(b, depth - 1, keysRight);
    unmakePerftMove<C>(b, m, undo);
  }
  return nodes;
}

std::vector<Move> sortedMoves(const MoveList& list) {
  std::vector<Move> out;
  for (uint32_t i = 0; i < list.count; ++i) out.push_back(list.moves[i].move);
  std::sort(out.begin(), out.end());
  return out;
}

bool hasDuplicates(const MoveList& list) {
  std::vector<Move> moves = sortedMoves(list);
  return std::adjacent_find(moves.begin(), moves.end()) != moves.end();
}

// Checks the generators against each other on one position; "" when they agree.
std::string generatorsDisagree(Board_0x88& b) {
  MoveList legal;
  bool check = false;
  generateLegalMoves(b, legal, check);
  for (uint32_t i = 0; i < legal.count; ++i)
    if (legal.moves[i].value != 0) return "value not 0";
  if (hasDuplicates(legal)) return "duplicate in the legal list";
  if (check) {
    MoveList evasions = generate(b, Gen::Evasions);
    if (texts(evasions) != texts(legal) || sortedMoves(evasions) != sortedMoves(legal))
      return "evasions differ from the legal list";
    return "";
  }
  MoveList all = generate(b, Gen::All);
  if (sortedMoves(all) != sortedMoves(legal) || texts(all) != texts(legal)) return "all moves differ from legal list";
  MoveList captures = generate(b, Gen::Captures);
  MoveList quiets = generate(b, Gen::Quiets);
  if (hasDuplicates(captures)) return "duplicate in captures";
  if (hasDuplicates(quiets)) return "duplicate in quiets";
  const Color them = opponent(Color(b.sideToMove));
  for (uint32_t i = 0; i < captures.count; ++i) {
    Move m = captures.moves[i].move;
    bool ok = moveKind(m) == MoveEnPassant || moveKind(m) == MovePromotion ||
              (moveKind(m) == MoveNormal && b.color[moveToSquare(m)] == them);
    if (!ok) return "not a capture among captures: " + moveToString(m);
  }
  for (uint32_t i = 0; i < quiets.count; ++i) {
    Move m = quiets.moves[i].move;
    bool ok = (moveKind(m) == MoveNormal || moveKind(m) == MoveCastling) && b.piece[moveToSquare(m)] == NoPiece;
    if (!ok) return "not a quiet move among quiets: " + moveToString(m);
  }
  MoveList joined = captures;
  for (uint32_t i = 0; i < quiets.count; ++i) joined.add(quiets.moves[i].move);
  if (sortedMoves(joined) != sortedMoves(all)) return "captures + quiets differ from all moves";
  // Quiescence mode is the capture list without the under-promotions.
  MoveList queenOnly = generate(b, Gen::CapturesQueenOnly);
  std::vector<std::string> expected;
  for (uint32_t i = 0; i < captures.count; ++i) {
    Move m = captures.moves[i].move;
    if (moveKind(m) != MovePromotion || promotionPiece(m) == Queen) expected.push_back(moveToString(m));
  }
  if (texts(queenOnly) != expected) return "queen-only captures";
  return "";
}

}  // namespace

TEST(MoveGeneration, StartPositionOrder) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, startPositionFen));
  const std::vector<std::string> expected = {"b1a3", "b1c3", "g1f3", "g1h3", "a2a3", "a2a4", "b2b3",
                                             "b2b4", "c2c3", "c2c4", "d2d3", "d2d4", "e2e3", "e2e4",
                                             "f2f3", "f2f4", "g2g3", "g2g4", "h2h3", "h2h4"};
  EXPECT_EQ(texts(generate(b, Gen::Legal)), expected);
  MoveList list = generate(b, Gen::Legal);
  EXPECT_EQ(moveDetail(find(list, "e2e4")->move), DetailDoubleStep);
  EXPECT_EQ(moveDetail(find(list, "e2e3")->move), 0u);

  ASSERT_TRUE(setupFromFen(b, "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"));
  // Knight directions are not mirrored for Black, so c6 comes before a6.
  const std::vector<std::string> black = {"b8c6", "b8a6", "g8h6", "g8f6", "a7a6", "a7a5", "b7b6",
                                          "b7b5", "c7c6", "c7c5", "d7d6", "d7d5", "e7e6", "e7e5",
                                          "f7f6", "f7f5", "g7g6", "g7g5", "h7h6", "h7h5"};
  EXPECT_EQ(texts(generate(b, Gen::Legal)), black);
}

TEST(MoveGeneration, EnPassantHeadsTheList) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/2PpP3/8/8/8/4K3 w - d6 0 1"));
  for (Gen g : {Gen::Legal, Gen::All, Gen::Captures, Gen::CapturesQueenOnly}) {
    MoveList list = generate(b, g);
    ASSERT_GE(list.count, 2u);
    EXPECT_EQ(moveToString(list.moves[0].move), "e5d6");
    EXPECT_EQ(moveToString(list.moves[1].move), "c5d6");
    EXPECT_EQ(moveKind(list.moves[0].move), MoveEnPassant);
    EXPECT_EQ(moveKind(list.moves[1].move), MoveEnPassant);
  }
  EXPECT_EQ(movesFrom(generate(b, Gen::Quiets), "e5"), std::vector<std::string>{"e5e6"});

  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/2pPp3/8/8/4K3 b - d3 0 1"));
  MoveList list = generate(b, Gen::Legal);
  ASSERT_GE(list.count, 2u);
  EXPECT_EQ(moveToString(list.moves[0].move), "c4d3");
  EXPECT_EQ(moveToString(list.moves[1].move), "e4d3");
  EXPECT_EQ(moveKind(list.moves[1].move), MoveEnPassant);

  // Also when the capture is the answer to the pawn's check.
  ASSERT_TRUE(setupFromFen(b, "7k/8/8/3pP3/4K3/8/8/8 w - d6 0 1"));
  ASSERT_TRUE(inCheck(b));
  list = generate(b, Gen::Legal);
  ASSERT_GE(list.count, 1u);
  EXPECT_EQ(moveToString(list.moves[0].move), "e5d6");
  EXPECT_EQ(moveKind(list.moves[0].move), MoveEnPassant);
}

TEST(MoveGeneration, PromotionOrder) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "k7/4P3/8/8/8/8/8/4K3 w - - 0 1"));
  MoveList list = generate(b, Gen::Legal);
  EXPECT_EQ(movesFrom(list, "e7"), (std::vector<std::string>{"e7e8q", "e7e8n", "e7e8r", "e7e8b"}));
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveFromSquare(list.moves[i].move) == sq("e7")) {
      EXPECT_EQ(moveKind(list.moves[i].move), MovePromotion);
    }

  // Captures by offset order, then the push.
  ASSERT_TRUE(setupFromFen(b, "k2r1r2/4P3/8/8/8/8/8/4K3 w - - 0 1"));
  const std::vector<std::string> white = {"e7d8q", "e7d8n", "e7d8r", "e7d8b", "e7f8q", "e7f8n",
                                          "e7f8r", "e7f8b", "e7e8q", "e7e8n", "e7e8r", "e7e8b"};
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "e7"), white);
  EXPECT_EQ(movesFrom(generate(b, Gen::Captures), "e7"), white);
  EXPECT_TRUE(movesFrom(generate(b, Gen::Quiets), "e7").empty());

  ASSERT_TRUE(setupFromFen(b, "7k/8/8/8/8/8/3p4/2R1R1K1 b - - 0 1"));
  const std::vector<std::string> black = {"d2e1q", "d2e1n", "d2e1r", "d2e1b", "d2c1q", "d2c1n",
                                          "d2c1r", "d2c1b", "d2d1q", "d2d1n", "d2d1r", "d2d1b"};
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "d2"), black);
}

TEST(MoveGeneration, QueenOnlyModeLeavesOutUnderPromotions) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "r1r1k3/1P6/8/8/8/8/8/4K3 w - - 0 1"));
  EXPECT_EQ(texts(generate(b, Gen::CapturesQueenOnly)), (std::vector<std::string>{"b7a8q", "b7c8q", "b7b8q"}));
  MoveList all = generate(b, Gen::Captures);
  EXPECT_EQ(all.count, 12u);
  EXPECT_EQ(movesFrom(all, "b7").size(), 12u);
}

TEST(MoveGeneration, Castling) {
  Board_0x88 b;
  // In check nothing castles, however free the squares are.
  for (const char* fen : {"4k3/8/8/8/4q3/8/8/R3K2R w KQ - 0 1", "4k3/8/8/8/8/8/5p2/R3K2R w KQ - 0 1",
                          "r3k2r/8/5N2/8/8/8/8/4K3 b kq - 0 1"}) {
    SCOPED_TRACE(fen);
    ASSERT_TRUE(setupFromFen(b, fen));
    ASSERT_TRUE(inCheck(b));
    for (Gen g : {Gen::Legal, Gen::Evasions}) {
      MoveList list = generate(b, g);
      EXPECT_GT(list.count, 0u);
      for (uint32_t i = 0; i < list.count; ++i) EXPECT_NE(moveKind(list.moves[i].move), MoveCastling);
    }
  }

  // Both castlings stand last, king side first, with their kind and detail.
  ASSERT_TRUE(setupFromFen(b, "1r2k3/8/8/8/8/8/8/R3K2R w KQ - 0 1"));
  MoveList list = generate(b, Gen::Legal);
  ASSERT_GE(list.count, 2u);
  EXPECT_EQ(moveToString(list.moves[list.count - 2].move), "e1g1");
  EXPECT_EQ(moveToString(list.moves[list.count - 1].move), "e1c1");  // b1 attacked, still allowed
  EXPECT_EQ(moveKind(list.moves[list.count - 2].move), MoveCastling);
  EXPECT_EQ(moveDetail(list.moves[list.count - 2].move), CastleWhiteKingSide);
  EXPECT_EQ(moveDetail(list.moves[list.count - 1].move), CastleWhiteQueenSide);
  MoveList quiets = generate(b, Gen::Quiets);
  ASSERT_GE(quiets.count, 2u);
  EXPECT_EQ(moveToString(quiets.moves[quiets.count - 2].move), "e1g1");
  EXPECT_EQ(moveToString(quiets.moves[quiets.count - 1].move), "e1c1");
  EXPECT_FALSE(has(generate(b, Gen::Captures), "e1g1"));

  struct Case {
    const char* fen;
    bool kingSide, queenSide;
  };
  const Case cases[] = {
      {"4kr2/8/8/8/8/8/8/R3K2R w KQ - 0 1", false, true},   // f1 passed under attack
      {"3rk3/8/8/8/8/8/8/R3K2R w KQ - 0 1", true, false},   // d1 passed under attack
      {"2r1k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", true, false},  // c1 is the destination
      {"4k1r1/8/8/8/8/8/8/R3K2R w KQ - 0 1", false, true},  // g1 is the destination
      {"4k3/8/8/8/8/8/8/RN2K2R w KQ - 0 1", true, false},   // b1 occupied
      {"4k3/8/8/8/8/8/8/R3KB1R w KQ - 0 1", false, true},   // f1 occupied
      {"4k3/8/8/8/8/8/8/R3K2R w K - 0 1", true, false},     // no queen-side right
      {"4k3/8/8/8/8/8/8/R3K2R w Q - 0 1", false, true},
      {"4k3/8/8/8/8/8/8/R3K2R w - - 0 1", false, false},
      {"4k3/8/8/8/8/8/7p/R3K2R w KQ - 0 1", false, true},  // the pawn on h2 covers g1
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fen);
    ASSERT_TRUE(setupFromFen(b, c.fen));
    ASSERT_FALSE(inCheck(b));
    for (Gen g : {Gen::Legal, Gen::All, Gen::Quiets}) {
      list = generate(b, g);
      EXPECT_EQ(has(list, "e1g1"), c.kingSide);
      EXPECT_EQ(has(list, "e1c1"), c.queenSide);
    }
  }

  // The king keeps its other moves when f1 is covered.
  ASSERT_TRUE(setupFromFen(b, "4kr2/8/8/8/8/8/8/R3K2R w KQ - 0 1"));
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "e1"), (std::vector<std::string>{"e1d1", "e1e2", "e1d2", "e1c1"}));

  // Black, mirrored: b8 covered is fine, g8 covered is not.
  ASSERT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/1R2K1R1 b kq - 0 1"));
  list = generate(b, Gen::Legal);
  EXPECT_FALSE(has(list, "e8g8"));
  ASSERT_TRUE(has(list, "e8c8"));
  EXPECT_EQ(moveToString(list.moves[list.count - 1].move), "e8c8");
  EXPECT_EQ(moveDetail(list.moves[list.count - 1].move), CastleBlackQueenSide);
  ASSERT_TRUE(setupFromFen(b, "r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1"));
  list = generate(b, Gen::Legal);
  ASSERT_GE(list.count, 2u);
  EXPECT_EQ(moveToString(list.moves[list.count - 2].move), "e8g8");
  EXPECT_EQ(moveDetail(list.moves[list.count - 2].move), CastleBlackKingSide);
  EXPECT_EQ(moveToString(list.moves[list.count - 1].move), "e8c8");
}

TEST(MoveGeneration, PinnedPiecesKeepOnlyMovesAlongThePin) {
  Board_0x88 b;
  ASSERT_TRUE(setupFromFen(b, "4k3/4r3/8/8/8/8/4N3/4K3 w - - 0 1"));
  for (Gen g : {Gen::Legal, Gen::All, Gen::Captures, Gen::Quiets}) EXPECT_TRUE(movesFrom(generate(b, g), "e2").empty());

  ASSERT_TRUE(setupFromFen(b, "4k3/4r3/8/8/8/8/4R3/4K3 w - - 0 1"));
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "e2"),
            (std::vector<std::string>{"e2e3", "e2e4", "e2e5", "e2e6", "e2e7"}));
  EXPECT_EQ(movesFrom(generate(b, Gen::Captures), "e2"), std::vector<std::string>{"e2e7"});
  EXPECT_EQ(movesFrom(generate(b, Gen::Quiets), "e2"), (std::vector<std::string>{"e2e3", "e2e4", "e2e5", "e2e6"}));

  // A queen pinned on a diagonal slides along it only; a bishop likewise.
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/7b/8/5Q2/4K3 w - - 0 1"));
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "f2"), (std::vector<std::string>{"f2g3", "f2h4"}));
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/7q/8/5B2/4K3 w - - 0 1"));
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "f2"), (std::vector<std::string>{"f2g3", "f2h4"}));

  // Pawns: pinned on the file they push, pinned on a diagonal they may take the pinner.
  ASSERT_TRUE(setupFromFen(b, "4k3/4r3/8/8/8/8/4P3/4K3 w - - 0 1"));
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "e2"), (std::vector<std::string>{"e2e3", "e2e4"}));
  ASSERT_TRUE(setupFromFen(b, "4k3/8/8/8/8/5b2/4P3/3K4 w - - 0 1"));
  EXPECT_EQ(movesFrom(generate(b, Gen::Legal), "e2"), std::vector<std::string>{"e2f3"});
}

TEST(MoveGeneration, EnPassantUncoveringTheKingIsNeverGenerated) {
  Board_0x88 b;
  for (const char* fen : {"8/8/8/K2pP2r/8/8/8/7k w - d6 0 1", "8/8/8/K2Pp2q/8/8/8/7k w - e6 0 1",
                          "7K/8/8/8/k2pP2R/8/8/8 b - e3 0 1", "8/8/8/8/R2pP2k/8/8/7K b - e3 0 1",
                          "8/7k/8/8/3pP3/8/8/1B2K3 b - e3 0 1"}) {
    SCOPED_TRACE(fen);
    ASSERT_TRUE(setupFromFen(b, fen));
    ASSERT_NE(b.epSquare, NoSquare);
    ASSERT_FALSE(inCheck(b));
    for (Gen g : {Gen::Legal, Gen::All, Gen::Captures, Gen::CapturesQueenOnly, Gen::Quiets}) {
      MoveList list = generate(b, g);
      for (uint32_t i = 0; i < list.count; ++i) EXPECT_NE(moveKind(list.moves[i].move), MoveEnPassant);
    }
  }

  // In check from the double-stepped pawn: the capture that opens the file is out,
  // the other one is in.
  ASSERT_TRUE(setupFromFen(b, "4r2k/8/8/2PpP3/4K3/8/8/8 w - d6 0 1"));
  ASSERT_TRUE(inCheck(b));
  for (Gen g : {Gen::Legal, Gen::Evasions}) {
    MoveList list = generate(b, g);
    EXPECT_TRUE(has(list, "c5d6"));
    EXPECT_FALSE(has(list, "e5d6"));
  }
}

TEST(MoveGeneration, StalemateAndCheckmate) {
  Board_0x88 b;
  MoveList list;
  bool check = true;
  ASSERT_TRUE(setupFromFen(b, "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"));
  generateLegalMoves(b, list, check);
  EXPECT_EQ(list.count, 0u);
  EXPECT_FALSE(check);

  list.count = 0;
  check = false;
  ASSERT_TRUE(setupFromFen(b, "7k/6Q1/6K1/8/8/8/8/8 b - - 0 1"));
  generateLegalMoves(b, list, check);
  EXPECT_EQ(list.count, 0u);
  EXPECT_TRUE(check);

  // Back-rank mate with the own pawns, and a smothered mate.
  list.count = 0;
  check = false;
  ASSERT_TRUE(setupFromFen(b, "3R2k1/5ppp/8/8/8/8/8/6K1 b - - 0 1"));
  generateLegalMoves(b, list, check);
  EXPECT_EQ(list.count, 0u);
  EXPECT_TRUE(check);

  list.count = 0;
  check = false;
  ASSERT_TRUE(setupFromFen(b, "6rk/5Npp/8/8/8/8/8/6K1 b - - 0 1"));
  generateLegalMoves(b, list, check);
  EXPECT_EQ(list.count, 0u);
  EXPECT_TRUE(check);
}

TEST(MoveGeneration, GeneratorsAgreeOnSuitePositionsAndTheirChildren) {
  const std::vector<SuiteLine> suite = readSuite();
  ASSERT_GT(suite.size(), 100u);
  int evasionPositions = 0;
  for (const SuiteLine& line : suite) {
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, line.fen.c_str())) << line.fen;
    std::string why = generatorsDisagree(b);
    EXPECT_EQ(why, "") << line.fen;
    MoveList list;
    bool check;
    generateLegalMoves(b, list, check);
    for (uint32_t i = 0; i < list.count; ++i) {
      Move m = list.moves[i].move;
      UndoRecord undo;
      makeMoveForSide(b, m, undo);
      evasionPositions += inCheck(b);
      why = generatorsDisagree(b);
      EXPECT_EQ(why, "") << line.fen << " after " << moveToString(m);
      unmakeMoveForSide(b, m, undo);
      }
  }
  EXPECT_GT(evasionPositions, 100);
}

TEST(MoveGeneration, SuiteMoveCounts) {
  constexpr uint64_t maxNodes = 200000;
  const std::vector<SuiteLine> suite = readSuite();
  ASSERT_GT(suite.size(), 100u);
  uint64_t compared = 0;
  for (const SuiteLine& line : suite) {
    Board_0x88 b;
    ASSERT_TRUE(setupFromFen(b, line.fen.c_str())) << line.fen;
    ASSERT_GE(line.counts.size(), 3u) << line.fen;
    for (int depth = 1; depth <= 4 && depth <= int(line.counts.size()); ++depth) {
      if (line.counts[depth - 1] > maxNodes) break;
      EXPECT_EQ(perft(b, depth), line.counts[depth - 1]) << line.fen << " depth " << depth;
      compared += line.counts[depth - 1];
    }
    // The perft pair counts the same, with the key right at every node.
    if (line.counts.size() >= 2 && line.counts[1] <= maxNodes) {
      bool keysRight = true;
      uint64_t nodes = b.sideToMove == White ? perftLean<White>(b, 2, keysRight) : perftLean<Black>(b, 2, keysRight);
      EXPECT_EQ(nodes, line.counts[1]) << line.fen;
      EXPECT_TRUE(keysRight) << line.fen;
    }
  }
  EXPECT_GT(compared, 4000000u);  // guards against a suite file that parsed to nothing
}
