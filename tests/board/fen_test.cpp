// The FEN reader and writer: what is accepted, repaired and refused, and keys,
// lists, counts and psq against a from-scratch sum. (Every suite position is read
// by the move generation and make-move tests, which check the sums after each move.)
#include "board/fen_writer.h"
#include "board_test_support.h"

namespace {

// Read, play the moves, write: the writer's text, with what the reader dropped.
TEST(Fen, ReadPlayAndWriteBack) {
  const struct { const char *fen, *moves, *written, *warnings; } cases[] = {
      {startPositionFen, "e2e4", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1", ""},
      {startPositionFen, "e2e4 d7d5 e4e5 f7f5", "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", ""},
      {"4k3/8/8/8/8/8/8/R3K3 b Q - 7 40", "e8d7 a1a7", "8/R2k4/8/8/8/8/8/4K3 b - - 9 41", ""},
      {"8/8/8/8/8/8/8/8 w - - 0 1", "", "8/8/8/8/8/8/8/8 w - - 0 1", ""},
      {"r3k2r/8/8/8/8/8/8/R3K2R w Kq - 0 1", "", "r3k2r/8/8/8/8/8/8/R3K2R w Kq - 0 1", ""},
      // Two blanks where the castling field stands: no rights.
      {"r3k2r/8/8/8/8/8/8/R3K2R w  - 0 1", "", "r3k2r/8/8/8/8/8/8/R3K2R w - - 0 1", ""},
      // Clock and move number may be missing; one number is the move number.
      {"4k3/8/8/8/8/8/8/4K3 w - -", "", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", ""},
      {"4k3/8/8/8/8/8/8/4K3 w - - 12", "e1d1", "4k3/8/8/8/8/8/8/3K4 b - - 1 12", ""},
      {"4k3/8/8/8/8/8/8/4K3 w - - 300 40", "", "4k3/8/8/8/8/8/8/4K3 w - - 44 40", ""},
      // An en-passant square counts only with a pawn beside to take, on either side.
      {"4k3/8/8/8/3pP3/8/8/4K3 b - e3", "", "4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1", ""},
      {"4k3/8/8/8/4Pp2/8/8/4K3 b - e3 0 1", "", "4k3/8/8/8/4Pp2/8/8/4K3 b - e3 0 1", ""},
      {"4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1", "", "4k3/8/8/8/4P3/8/8/4K3 b - - 0 1", ""},
      {"4k3/8/8/pP6/8/8/8/4K3 w - a6 0 1", "", "4k3/8/8/pP6/8/8/8/4K3 w - a6 0 1", ""},
      {"4k3/8/8/p7/7P/8/8/4K3 w - a6 0 1", "", "4k3/8/8/p7/7P/8/8/4K3 w - - 0 1", ""},
      // What a sloppy editor writes is repaired, with a warning.
      {"8/8/8/8/8/8/8/4K3 b KQkq - 0 1", "", "8/8/8/8/8/8/8/4K3 b - - 0 1",
       "# warning: castling rights without their king or rook at home dropped: KQkq\n"},
      {"r3k2r/8/8/8/8/8/8/RK5R w KQkq - 0 1", "", "r3k2r/8/8/8/8/8/8/RK5R w kq - 0 1",
       "# warning: castling rights without their king or rook at home dropped: KQ\n"},
      {"r3k1r1/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "", "r3k1r1/8/8/8/8/8/8/R3K2R b KQq - 0 1",
       "# warning: castling rights without their king or rook at home dropped: k\n"},
      {"4k3/8/3p4/3pP3/8/8/8/4K3 w - d6 0 1", "", "4k3/8/3p4/3pP3/8/8/8/4K3 w - - 0 1",
       "# warning: en-passant square d6 dropped: no pawn can have passed it\n"},
      {"4k3/3n4/8/3pP3/8/8/8/4K3 w - d6 0 1", "", "4k3/3n4/8/3pP3/8/8/8/4K3 w - - 0 1",
       "# warning: en-passant square d6 dropped: no pawn can have passed it\n"},
  };
  for (const auto& c : cases) {
    Board_0x88 b;
    FenRepairs repairs;
    ASSERT_TRUE(setupFromFen(b, c.fen, &repairs)) << c.fen;
    EXPECT_EQ(sumsDisagree(b, 2), "") << c.fen;
    EXPECT_EQ(describeRepairs(repairs), c.warnings) << c.fen;
    ASSERT_TRUE(playMoves(b, c.moves)) << c.fen;
    EXPECT_EQ(positionToFen(b), c.written) << c.fen << " + " << c.moves;
  }
  Board_0x88 b;
  // The move number may run to any length.
  EXPECT_TRUE(setupFromFen(b, ("4k3/8/8/8/8/8/8/4K3 w - - 3 " + std::string(5000, '9')).c_str()));
  EXPECT_TRUE(setPositionFromWords(b, {"4k3/8/8/8/8/8/8/4K3", "b", "", "-"}));
  EXPECT_EQ(positionToFen(b), "4k3/8/8/8/8/8/8/4K3 b - - 0 1");
  EXPECT_FALSE(setPositionFromWords(b, {"4k3/8/8/8/8/8/8/4K3", "b", "-", "-", "0", "0"}));
}

TEST(Fen, RefusedTextsLeaveAClearedBoard) {
  const char* refused[] = {
      "", " 8/8/8/8/8/8/8/8 w - - 0 1", "8/8/8/8/8/8/8/8", "8/8/8/8/8/8/8 w - - 0 1", "8/8/8/8/8/8/8/8/8 w - - 0 1",
      "9/8/8/8/8/8/8/8 w - - 0 1", "08/8/8/8/8/8/8/8 w - - 0 1", "44p/8/8/8/8/8/8/8 w - - 0 1",
      "8p/8/8/8/8/8/8/8 w - - 0 1", "7/8/8/8/8/8/8/8 w - - 0 1", "8/8/8/8/8/8/8/7 w - - 0 1",
      "8/8/8/8/8/8/8/8 x - - 0 1", "8/8/8/8/8/8/8/8 w- - 0 1", "8/8/8/8/8/8/8/8 W - - 0 1",
      "8/8/8/8/8/8/8/8 w QK - 0 1", "8/8/8/8/8/8/8/8 w KK - 0 1", "8/8/8/8/8/8/8/8 w kQ - 0 1",
      "8/8/8/8/8/8/8/8 w qk - 0 1", "8/8/8/8/8/8/8/8 w -K - 0 1", "8/8/8/8/8/8/8/8 w K- - 0 1",
      "8/8/8/8/8/8/8/8 w KX - 0 1", "8/8/8/8/8/8/8/8 w KQ", "8/8/8/8/8/8/8/8 w - -x 0 1",
      "4k3/8/8/8/4P3/8/8/4K3 w - e3 0 1", "4k3/8/8/8/4P3/8/8/4K3 b - e6 0 1", "4k3/8/8/8/8/8/8/4K3 b - e3 0 1",
      "4k3/8/8/8/4p3/8/8/4K3 b - e3 0 1", "4k3/8/8/8/4P3/8/8/4K3 b - i3 0 1", "4k3/8/8/8/4P3/8/8/4K3 b - e9 0 1",
      "4k3/8/8/8/4P3/8/8/4K3 b - e3x 0 1", "4k3/8/8/8/8/8/8/4K3 w - - 0 0", "4k3/8/8/8/8/8/8/4K3 w - - 0",
      "4k3/8/8/8/8/8/8/4K3 w - - 0 ", "4k3/8/8/8/8/8/8/4K3 w - - 12345 1", "4k3/8/8/8/8/8/8/4K3 w - - -1 1",
      "4k3/8/8/8/8/8/8/4K3 w - - 1 x", "4k3/8/8/8/8/8/8/4K3 w - - 1 -5", "4k3/8/3p4/3pP3/8/8/8/4K3 w - d6 0",
  };
  for (const char* fen : refused) {
    Board_0x88 b;
    EXPECT_FALSE(setupFromFen(b, fen)) << fen;
    EXPECT_EQ(b.sideToMove, NoColor) << fen;
    EXPECT_EQ(b.side[White].total + b.side[Black].total, 0) << fen;
  }
}

// Chess960 castling fields, Shredder-FEN and X-FEN, written back in Shredder
// form; a right without its king or rook on the first rank is refused with
// the reason (none for a fault elsewhere).
TEST(Fen, Chess960CastlingFields) {
  const struct { const char *fen, *written, *error; } cases[] = {
      {"bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9",
       "bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9", ""},
      {"bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w KQkq - 2 9",
       "bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9", ""},
      {"rkr5/8/8/8/8/8/8/RKR5 b KQq - 0 1", "rkr5/8/8/8/8/8/8/RKR5 b CAa - 0 1", ""},
      {"1r2k2r/8/8/8/8/8/8/1K2R2R w Eb - 0 1", "1r2k2r/8/8/8/8/8/8/1K2R2R w Eb - 0 1", ""},
      {"1r2k2r/8/8/8/8/8/8/1K2R2R w Kq - 0 1", "1r2k2r/8/8/8/8/8/8/1K2R2R w Hb - 0 1", ""},
      {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", "4k3/8/8/8/8/8/8/4K3 w - - 0 1", ""},
      {"4k3/8/8/8/8/8/8/4K3 w K - 0 1", "", "castling right 'K': no white rook on the king side of rank 1"},
      {"4k3/8/8/8/8/8/8/4K2R w A - 0 1", "", "castling right 'A': no white rook on a1"},
      {"r3k3/8/8/8/8/8/8/4K3 w Q - 0 1", "", "castling right 'Q': no white rook on the queen side of rank 1"},
      {"4k3/8/8/8/8/8/4K3/7R w H - 0 1", "", "castling right 'H': no white king on rank 1"},
      {"r7/4k3/8/8/8/8/8/4K3 b a - 0 1", "", "castling right 'a': no black king on rank 8"},
      {"4k3/8/8/8/8/8/8/4K1RR w HG - 0 1", "", "castling right 'G': a second white right on the king side"},
      {"4k3/8/8/8/8/8/8/4K2R w X - 0 1", "", "castling right 'X': neither K, Q nor the file letter of a rook"},
      {"4k3/8/8/8/8/8/8/4K2R w H- - 0 1", "", "castling right '-': neither K, Q nor the file letter of a rook"},
      {"4k3/8/8/8/8/8/8/4K2R w -H - 0 1", "", ""},
      {"4k3/8/8/8/8/8/8/4K2X w H - 0 1", "", ""},
  };
  for (const auto& c : cases) {
    Board_0x88 b;
    std::string error = "unchanged";
    EXPECT_EQ(setupChess960FromFen(b, c.fen, error), *c.written != '\0') << c.fen;
    EXPECT_EQ(error, c.error) << c.fen;
    if (!*c.written) continue;
    EXPECT_EQ(positionToFen(b), c.written);
    EXPECT_EQ(sumsDisagree(b, 2), "") << c.fen;
  }
  // One key per rook file: rights on other rooks are other positions, while
  // those of the standard array keep their keys.
  auto key = [](const char* fen, bool chess960) {
    Board_0x88 b;
    std::string error;
    EXPECT_TRUE(chess960 ? setupChess960FromFen(b, fen, error) : setupFromFen(b, fen)) << fen;
    return b.currentRecord().hashKey;
  };
  EXPECT_NE(key("4k3/8/8/8/8/8/8/R1R3K1 w A - 0 1", true), key("4k3/8/8/8/8/8/8/R1R3K1 w C - 0 1", true));
  EXPECT_EQ(key(startPositionFen, false), key("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w HAha - 0 1", true));
}

}  // namespace
