// The FEN writer as the exact inverse of the reader.
#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "board/make_move.h"
#include "board/move_text.h"
#include "board/move_generation.h"

namespace {

TEST(FenWriterTest, GivesBackEverySuiteFenUnchanged) {
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string line;
  Board_0x88 board;
  int positions = 0;
  while (std::getline(in, line)) {
    std::string fen = line.substr(0, line.find(" ;"));
    ASSERT_TRUE(setupFromFen(board, fen.c_str())) << fen;
    EXPECT_EQ(positionToFen(board), fen);
    ++positions;
  }
  EXPECT_GT(positions, 100);
}

TEST(FenWriterTest, MoveNumberCountsOnFromTheSetUpPosition) {
  struct Case {
    const char* fen;
    const char* moves;
    const char* expected;
  } cases[] = {
      {startPositionFen, "e2e4", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"},
      {startPositionFen, "e2e4 d7d5 e4e5 f7f5",
       "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3"},
      {"4k3/8/8/8/8/8/8/R3K3 b Q - 7 40", "e8d7 a1a7", "8/R2k4/8/8/8/8/8/4K3 b - - 9 41"},
      // A lone number is the move number.
      {"4k3/8/8/8/8/8/8/4K3 w - - 12", "e1d1", "4k3/8/8/8/8/8/8/3K4 b - - 1 12"},
  };
  for (const Case& c : cases) {
    Board_0x88 board;
    ASSERT_TRUE(setupFromFen(board, c.fen)) << c.fen;
    std::string moves = c.moves;
    for (size_t at = 0; at < moves.size(); at += 5) {
      MoveList list;
      bool inCheck;
      generateLegalMoves(board, list, inCheck);
      Move played = NoMove;
      for (uint32_t i = 0; i < list.count; ++i) {
        char text[6];
        moveToText(list.moves[i].move, text);
        if (moves.compare(at, 4, text) == 0) played = list.moves[i].move;
      }
      ASSERT_NE(played, NoMove) << moves.substr(at, 4);
      UndoRecord undo;
      makeMoveForSide(board, played, undo);
    }
    EXPECT_EQ(positionToFen(board), c.expected) << c.fen << " + " << c.moves;
  }
}

}  // namespace
