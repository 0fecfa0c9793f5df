// The whole chain from a board to the Debian files: every legal position of
// the five 3-man endgames, both sides to move and both colourings, against
// an independent retrograde solution; then the cache and the probe rules.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <functional>

#include "board/fen.h"
#include "gaviota_files.h"
#include "retrograde_solver.h"
#include "tablebase/block_cache.h"
#include "tablebase/block_decompression.h"
#include "tablebase/endgame_catalogue.h"
#include "tablebase/search_probe.h"
#include "tablebase/tablebase_files.h"
#include "tablebase/tablebase_store.h"

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

namespace {

std::unique_ptr<Board_0x88> boardOf(const char* fen) {
  auto b = std::make_unique<Board_0x88>();
  EXPECT_TRUE(setupFromFen(*b, fen)) << fen;
  return b;
}

// A soft probe: true only when the block is in the cache.
bool cached(const TablebaseState& state, const char* fen) {
  auto b = boardOf(fen);
  int32_t score;
  return b->sideToMove == White ? probeInSearch<White>(&state, *b, 1, 20, score)
                                : probeInSearch<Black>(&state, *b, 1, 20, score);
}

bool hardProbe(const TablebaseState& state, const char* fen, int32_t& score) {
  auto b = boardOf(fen);
  return b->sideToMove == White ? probeTablebase<White>(&state, *b, score) : probeTablebase<Black>(&state, *b, score);
}

// A stored byte b: p = 2 * (b >> 2) and the low two bits give plies and who
// mates, by the side to move; distances beyond 126 plies have codes of their own.
TEST(TablebaseProbeTest, StoredBytesByTheSideToMove) {
  const struct {
    uint8_t byte;
    uint32_t side, plies, kind;
  } cases[] = {
      {0, 0, 0, 0},      {0, 1, 0, 0},      {3, 0, 0, 3},      {3, 1, 0, 3},      {1, 0, 1, 1},
      {2, 1, 1, 2},      {21, 0, 11, 1},    {22, 0, 10, 2},    {23, 0, 136, 2},   {20, 0, 137, 1},
      {21, 1, 10, 1},    {22, 1, 11, 2},    {23, 1, 136, 1},   {20, 1, 137, 2},   {252, 0, 253, 1},
      {252, 1, 254, 1},  {255, 0, 252, 2},  {255, 1, 252, 1},
  };
  for (const auto& c : cases) {
    const TbValue v = decodeStoredByte(c.byte, c.side);
    EXPECT_EQ(tbPlies(v), c.plies) << int(c.byte) << " side " << c.side;
    EXPECT_EQ(tbKind(v), c.kind) << int(c.byte) << " side " << c.side;
  }
}

TEST(TablebaseProbeTest, CacheKeepsTheMostRecentlyUsedBlocks) {
  // One block each: both sides of kqk and krk, kbk, knk; three of kpk's six a side.
  const char* blocks[9] = {"8/8/8/4k3/8/8/8/KQ6 w - - 0 1", "8/8/8/4k3/8/8/8/KQ6 b - - 0 1",
                           "8/8/8/4k3/8/8/8/KR6 w - - 0 1", "8/8/8/4k3/8/8/8/KR6 b - - 0 1",
                           "8/8/8/4k3/8/8/8/KB6 w - - 0 1", "8/8/8/4k3/8/8/8/KN6 w - - 0 1",
                           "k7/8/8/8/8/8/P7/4K3 w - - 0 1", "k7/8/8/8/P7/8/8/4K3 w - - 0 1",
                           "k7/8/P7/8/8/8/8/4K3 w - - 0 1"};
  TablebaseState state;
  int32_t score;
  // 0 MB still gives one block: each new block replaces it.
  initTablebases(state, "gaviota", gtb4.c_str(), 0);
  EXPECT_EQ(blockCache.blockCount, 1u);
  ASSERT_TRUE(hardProbe(state, blocks[0], score));
  EXPECT_TRUE(cached(state, blocks[0]));
  ASSERT_TRUE(hardProbe(state, blocks[2], score));
  EXPECT_FALSE(cached(state, blocks[0]));
  EXPECT_TRUE(cached(state, blocks[2]));
  // 1 MB: eight blocks. Fill them, use the oldest again, then load a ninth: the second goes.
  initTablebases(state, "gaviota", gtb4.c_str(), 1);
  EXPECT_EQ(blockCache.blockCount, 8u);
  for (int i = 0; i < 8; ++i) ASSERT_TRUE(hardProbe(state, blocks[i], score)) << blocks[i];
  for (int i = 0; i < 8; ++i) EXPECT_TRUE(cached(state, blocks[i])) << blocks[i];
  EXPECT_TRUE(cached(state, blocks[0]));  // the oldest becomes the newest
  ASSERT_TRUE(hardProbe(state, blocks[8], score));
  for (int i = 0; i < 9; ++i) EXPECT_EQ(cached(state, blocks[i]), i != 1) << blocks[i];
  closeTablebases(state);
}

TEST(TablebaseProbeTest, WhenProbesAreMadeAndAnswered) {
  TablebaseState state;
  int32_t score;
  const char* kqk = "8/8/8/4k3/8/8/8/KQ6 w - - 0 1";
  auto board = boardOf(kqk);
  // Off until set up, and off again for another type.
  EXPECT_FALSE(hardProbe(state, kqk, score));
  initTablebases(state, "syzygy", gtb4.c_str(), 16);
  EXPECT_FALSE(state.available);

  // Two directories, with an empty piece between them.
  for (const char* paths : {"/nonexistent;", "/nonexistent;;", ";/nonexistent;;"}) {
    std::string list = std::string(paths) + gtb4;
    initTablebases(state, "gaviota", list.c_str(), 16);
    EXPECT_EQ(state.paths.size(), 2u) << paths;
    EXPECT_TRUE(hardProbe(state, kqk, score)) << paths;
  }

  // Soft or hard by the iteration and the depth left; never at depth 0 or with six men.
  initTablebases(state, "gaviota", gtb4.c_str(), 16);
  const struct {
    uint32_t depth, iteration;
    bool answers;  // on an empty cache: only a hard probe
  } rules[] = {{2, 9, false}, {3, 9, true}, {0, 3, false}, {1, 6, true}, {4, 11, false}, {5, 11, true}, {30, 12, false}};
  for (const auto& r : rules) {
    initTablebases(state, "gaviota", gtb4.c_str(), 16);
    EXPECT_EQ(probeInSearch<White>(&state, *board, r.depth, r.iteration, score), r.answers)
        << "depth " << r.depth << " iteration " << r.iteration;
  }
  auto six = boardOf("8/8/8/4k3/8/8/PPP5/KQ6 w - - 0 1");
  EXPECT_FALSE(probeInSearch<White>(&state, *six, 5, 1, score));

  // Castling rights: no probe. Two kings: a draw without any file.
  EXPECT_FALSE(hardProbe(state, "4k3/8/8/8/8/8/8/R3K3 w Q - 0 1", score));
  ASSERT_TRUE(hardProbe(state, "4k3/8/8/8/8/8/8/4K3 w - - 0 1", score));
  EXPECT_EQ(score, 0);
  // A missing file fails its first hard probe and marks the endgame: no second look.
  EXPECT_FALSE(hardProbe(state, "4k3/8/8/8/8/8/8/QQ2K3 w - - 0 1", score));
  int32_t kqqk;
  ASSERT_TRUE(findEndgame((const uint8_t[]){6, 5, 5, 0}, (const uint8_t[]){6, 0}, kqqk));
  EXPECT_EQ(endgameCatalogue[kqqk].status, 4u);
  closeTablebases(state);
  EXPECT_EQ(endgameCatalogue[kqqk].status, 0u);

  // A hard probe that finds the cache gone, as one may while the tables are
  // replaced, marks its endgame; the store's next set-up clears the mark.
  const uint32_t w[] = {0, 9, 64}, b[] = {36, 64};
  const uint8_t strong[] = {King, Queen, 0}, lone[] = {King, 0};
  uint32_t kind, plies;
  EXPECT_FALSE(probeEndgame(0, 64, w, b, strong, lone, true, kind, plies));
  EXPECT_EQ(endgameCatalogue[0].status, 4u);
  initStore(0, 4, {gtb4});
  EXPECT_EQ(endgameCatalogue[0].status, 0u);
  closeStore();
}

}  // namespace

namespace {

// En passant, which the tables don't hold: a made-up kpkp table that calls
// every position a draw, beside the real kpk. Taking en passant into a won
// kpk is then the better choice, one ply longer; without a pawn to take,
// or with the capture not better, the table's draw stands.
TEST(TablebaseProbeTest, EnPassantCaptureCountsWhenItIsBetter) {
  const std::string dir = ::testing::TempDir() + "tolva_kpkp_" + std::to_string(getpid());
  mkdir(dir.c_str(), 0700);
  const std::vector<uint8_t> kpkp = gaviota::syntheticTable(gaviota::indexCountOf("kpkp"), 0);
  FILE* f = std::fopen((dir + "/kpkp.gtb.cp4").c_str(), "wb");
  ASSERT_NE(f, nullptr);
  std::fwrite(kpkp.data(), 1, kpkp.size(), f);
  std::fclose(f);
  TablebaseState state;
  initTablebases(state, "gaviota", (dir + ";" + gtb4).c_str(), 16);

  int32_t afterCapture, score;
  // After exd6 the White pawn on d6 wins against the king on e8 with Black to move.
  ASSERT_TRUE(hardProbe(state, "4k3/8/2KP4/8/8/8/8/8 b - - 0 1", afterCapture));
  ASSERT_LT(afterCapture, 0);
  ASSERT_TRUE(hardProbe(state, "4k3/8/2K5/3pP3/8/8/8/8 w - d6 0 1", score));
  EXPECT_EQ(score, -afterCapture - 1);
  // The same pawns without the en-passant square, or with no pawn beside the one that moved: the table's draw.
  ASSERT_TRUE(hardProbe(state, "4k3/8/2K5/3pP3/8/8/8/8 w - - 0 1", score));
  EXPECT_EQ(score, 0);
  ASSERT_TRUE(hardProbe(state, "4k3/8/2K5/3p3P/8/8/8/8 w - d6 0 1", score));
  EXPECT_EQ(score, 0);
  // Colours exchanged: Black takes en passant into a won kpk for Black.
  ASSERT_TRUE(hardProbe(state, "8/8/8/8/3Pp3/2k5/8/4K3 b - d3 0 1", score));
  EXPECT_EQ(score, -afterCapture - 1);
  closeTablebases(state);
  std::remove((dir + "/kpkp.gtb.cp4").c_str());
  rmdir(dir.c_str());
}

}  // namespace
