// The whole chain from a board to the Debian files: every legal position of
// the five 3-man endgames, both sides to move and both colourings, against
// an independent retrograde solution; then the cache and the probe rules.
#include <gtest/gtest.h>

#include "board/fen.h"
#include "retrograde_solver.h"
#include "tablebase/block_cache.h"
#include "tablebase/search_probe.h"

namespace {

const std::string gtb4 = std::string(TOLVA_GAVIOTA_DIR) + "/gtb4";

// The board of a state; with `mirrored` the colours are exchanged and the board turned rank for rank.
void setUp(Board_0x88& b, PieceType piece, uint32_t state, bool mirrored) {
  const uint32_t side = state / (64 * 64 * 64), wk = state / 4096 % 64, bk = state / 64 % 64, p = state % 64;
  const uint32_t flip = mirrored ? 56 : 0;
  const Color strong = mirrored ? Black : White;
  b.clear();
  b.placePiece(toSquare88(Square64(wk ^ flip)), strong, King);
  b.placePiece(toSquare88(Square64(p ^ flip)), strong, piece);
  b.placePiece(toSquare88(Square64(bk ^ flip)), opponent(strong), King);
  b.sideToMove = uint8_t(side ^ (mirrored ? 1 : 0));
}

int32_t probeAs(const TablebaseState& state, const Board_0x88& b, bool& answered) {
  int32_t score = 0;
  answered = b.sideToMove == White ? probeTablebase<White>(&state, b, score) : probeTablebase<Black>(&state, b, score);
  return score;
}

TEST(TablebaseProbeTest, EveryLegalPositionMatchesTheRetrogradeSolution) {
  TablebaseState state;
  initTablebases(state, "gaviota", gtb4.c_str(), 16);
  const PieceType order[5] = {Queen, Rook, Bishop, Knight, Pawn};
  retro::Table tables[7];
  const retro::Table* solved[7] = {};
  auto board = std::make_unique<Board_0x88>();
  for (PieceType piece : order) {
    tables[piece] = retro::solve(piece, solved);
    solved[piece] = &tables[piece];
    uint64_t compared = 0, wins = 0;
    int longest = 0;
    for (uint32_t s = 0; s < retro::StateCount; ++s) {
      const uint32_t wk = s / 4096 % 64, bk = s / 64 % 64;
      if (!tables[piece].legal[s]) continue;
      const bool touching = std::max(std::abs(int(wk % 8) - int(bk % 8)), std::abs(int(wk / 8) - int(bk / 8))) <= 1;
      const int32_t v = tables[piece].value[s];
      const int32_t expected = retro::isWin(v) ? 32000 - retro::pliesOf(v) : retro::isLoss(v) ? retro::pliesOf(v) - 32000 : 0;
      for (bool mirrored : {false, true}) {
        setUp(*board, piece, s, mirrored);
        bool answered;
        int32_t score = probeAs(state, *board, answered);
        // Kings side by side can't stand on a board: the tables refuse them.
        if (touching) {
          ASSERT_FALSE(answered) << pieceLetters[piece] << " state " << s;
          continue;
        }
        ASSERT_TRUE(answered) << pieceLetters[piece] << " state " << s;
        ASSERT_EQ(score, expected) << pieceLetters[piece] << " state " << s << (mirrored ? " mirrored" : "");
        ++compared;
      }
      wins += retro::isWin(v);
      longest = std::max(longest, retro::pliesOf(v));
    }
    EXPECT_GT(compared, 300000u) << pieceLetters[piece];
    if (piece == Bishop || piece == Knight) {
      EXPECT_EQ(wins, 0u);
    }
    if (piece == Queen) {
      EXPECT_EQ(longest, 20);  // mate in ten moves at most
    }
  }
  closeTablebases(state);
}

}  // namespace
