// The whole chain from a board to the Debian files: every legal position of
// the five 3-man endgames, both sides to move and both colourings, against
// an independent retrograde solution; then the stored values, the probe
// rules, en passant, and four threads probing at once.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <random>
#include <thread>

#include "board/fen.h"
#include "gaviota_files.h"
#include "retrograde_solver.h"
#include "tablebase/search_probe.h"
#include "tablebase/tablebase_files.h"
#include "tablebase/tablebase_store.h"
#include "tablebase/tb_value.h"

namespace {

const std::string gtb4 = std::string(TOLVA_GAVIOTA_DIR) + "/gtb4";

// Answered or not, and the score: a hard probe, or a soft one that only reads the cache.
std::pair<bool, int32_t> probe(const TablebaseState& state, const Board_0x88& b, bool hard = true) {
  int32_t score = 0;
  bool answered = b.sideToMove == White
                      ? (hard ? probeTablebase<White>(&state, b, score) : probeInSearch<White>(&state, b, 1, 20, score))
                      : (hard ? probeTablebase<Black>(&state, b, score) : probeInSearch<Black>(&state, b, 1, 20, score));
  return {answered, score};
}

std::pair<bool, int32_t> probe(const TablebaseState& state, const char* fen, bool hard = true) {
  auto b = std::make_unique<Board_0x88>();
  EXPECT_TRUE(setupFromFen(*b, fen)) << fen;
  return probe(state, *b, hard);
}

TEST(TablebaseProbeTest, EveryLegalPositionMatchesTheRetrogradeSolution) {
  TablebaseState state;
  initTablebases(state, "gaviota", gtb4.c_str(), 16);
  retro::Table tables[7];
  const retro::Table* solved[7] = {};
  auto board = std::make_unique<Board_0x88>();
  for (PieceType piece : {Queen, Rook, Bishop, Knight, Pawn}) {
    tables[piece] = retro::solve(piece, solved);
    solved[piece] = &tables[piece];
    uint64_t compared = 0, wins = 0;
    int longest = 0;
    for (uint32_t s = 0; s < retro::StateCount; ++s) {
      const uint32_t wk = s / 4096 % 64, bk = s / 64 % 64;
      if (!tables[piece].legal[s]) continue;
      // Kings side by side can't stand on a board: the tables refuse them.
      const bool touching = std::max(std::abs(int(wk % 8) - int(bk % 8)), std::abs(int(wk / 8) - int(bk / 8))) <= 1;
      const int32_t v = tables[piece].value[s];
      const int32_t expected = retro::isWin(v)    ? 32000 - retro::pliesOf(v)
                               : retro::isLoss(v) ? retro::pliesOf(v) - 32000
                                                  : 0;
      for (bool mirrored : {false, true}) {
        retro::setUp(*board, piece, s, mirrored);
        const auto [answered, score] = probe(state, *board);
        ASSERT_EQ(answered, !touching) << pieceLetters[piece] << " state " << s;
        if (touching) continue;
        ASSERT_EQ(score, expected) << pieceLetters[piece] << " state " << s << (mirrored ? " mirrored" : "");
        ++compared;
      }
      wins += retro::isWin(v);
      longest = std::max(longest, retro::pliesOf(v));
    }
    EXPECT_GT(compared, 300000u) << pieceLetters[piece];
    EXPECT_TRUE((piece != Bishop && piece != Knight) || wins == 0) << pieceLetters[piece];
    EXPECT_TRUE(piece != Queen || longest == 20) << longest;  // mate in ten moves at most
  }
  closeTablebases(state);
}

TEST(TablebaseProbeTest, WhenProbesAreMadeAndAnswered) {
  TablebaseState state;
  const char* kqk = "8/8/8/4k3/8/8/8/KQ6 w - - 0 1";
  // Off for another type; two directories with empty pieces between them.
  initTablebases(state, "syzygy", gtb4.c_str(), 16);
  EXPECT_FALSE(probe(state, kqk).first);
  initTablebases(state, "gaviota", (";/nonexistent;;" + gtb4).c_str(), 16);
  EXPECT_TRUE(probe(state, kqk).first);
  // Soft or hard by the iteration and the depth left, on an empty cache only a
  // hard probe answers; never at depth 0 or with six men.
  auto board = std::make_unique<Board_0x88>();
  ASSERT_TRUE(setupFromFen(*board, kqk));
  int32_t score;
  for (auto [depth, iteration, answers] : {std::tuple{2u, 9u, false}, {3u, 9u, true}, {0u, 3u, false}, {1u, 6u, true},
                                           {4u, 11u, false}, {5u, 11u, true}, {30u, 12u, false}}) {
    initTablebases(state, "gaviota", gtb4.c_str(), 16);
    EXPECT_EQ(probeInSearch<White>(&state, *board, depth, iteration, score), answers) << depth << " " << iteration;
  }
  ASSERT_TRUE(setupFromFen(*board, "8/8/8/4k3/8/8/PPP5/KQ6 w - - 0 1"));
  EXPECT_FALSE(probeInSearch<White>(&state, *board, 5, 1, score));
  // Castling rights: no probe. Two kings: a draw without any file.
  EXPECT_FALSE(probe(state, "4k3/8/8/8/8/8/8/R3K3 w Q - 0 1").first);
  EXPECT_EQ(probe(state, "4k3/8/8/8/8/8/8/4K3 w - - 0 1"), std::pair(true, 0));
  EXPECT_FALSE(probe(state, "4k3/8/8/8/8/8/8/QQ2K3 w - - 0 1").first);  // no such file
  closeTablebases(state);
}

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
  // After exd6 the White pawn on d6 wins against the king on e8 with Black to move.
  const auto [answered, afterCapture] = probe(state, "4k3/8/2KP4/8/8/8/8/8 b - - 0 1");
  ASSERT_TRUE(answered && afterCapture < 0);
  EXPECT_EQ(probe(state, "4k3/8/2K5/3pP3/8/8/8/8 w - d6 0 1"), std::pair(true, -afterCapture - 1));
  EXPECT_EQ(probe(state, "4k3/8/2K5/3pP3/8/8/8/8 w - - 0 1"), std::pair(true, 0));
  EXPECT_EQ(probe(state, "4k3/8/2K5/3p3P/8/8/8/8 w - d6 0 1"), std::pair(true, 0));
  EXPECT_EQ(probe(state, "8/8/8/8/3Pp3/2k5/8/4K3 b - d3 0 1"), std::pair(true, -afterCapture - 1));  // colours exchanged
  closeTablebases(state);
  std::remove((dir + "/kpkp.gtb.cp4").c_str());
  rmdir(dir.c_str());
}

// Four threads probe, hard and soft mixed, sharing the store, its one mutex
// and a cache much smaller than what they ask for, while the main thread may
// close and set up the tables under them. Run under ThreadSanitizer in CI.
TEST(TablebaseThreadTest, FourThreadsProbeASmallCacheWhileTheTablesAreReplaced) {
  const PieceType pieces[] = {Queen, Rook, Bishop, Knight, Pawn};
  std::mt19937 random(5);
  std::vector<std::unique_ptr<Board_0x88>> boards;
  while (boards.size() < 240) {
    const uint32_t state = random() % retro::StateCount;
    const PieceType piece = pieces[random() % 5];
    if (!retro::placeable(piece, state)) continue;
    boards.push_back(std::make_unique<Board_0x88>());
    retro::setUp(*boards.back(), piece, state, random() % 2);
  }
  TablebaseState state;
  initTablebases(state, "gaviota", gtb4.c_str(), 16);
  std::vector<std::pair<bool, int32_t>> expected;
  for (const auto& b : boards) expected.push_back(probe(state, *b));
  // exact: hard probes must give the single-threaded answer; otherwise (the
  // tables come and go) only what is answered is checked.
  std::atomic<bool> replacing{false};
  std::atomic<int> mismatches{0}, hardAnswers{0}, softAnswers{0};
  auto runThreads = [&](bool exact, auto&& mainThread) {
    std::vector<std::thread> threads;
    for (uint32_t id = 0; id < 4; ++id)
      threads.emplace_back([&, id] {
        std::mt19937 order{id};
        for (int n = 0; n < 150 || replacing.load(); ++n) {
          const size_t i = order() % boards.size();
          const bool hard = n % 3 != 0;
          const auto a = probe(state, *boards[i], hard);
          if (a.first) ++(hard ? hardAnswers : softAnswers);
          if (exact && hard ? a != expected[i] : a.first && a != expected[i]) ++mismatches;
        }
      });
    mainThread();
    for (std::thread& t : threads) t.join();
  };
  for (uint32_t megabytes : {0u, 1u}) {  // one block for all, then eight
    initTablebases(state, "gaviota", gtb4.c_str(), megabytes);
    runThreads(true, [] {});
  }
  EXPECT_GT(hardAnswers, 500);
  // closeTablebases waits for the probe that holds the store; later probes
  // find the tables off, or set up again, and answer rightly or not at all.
  replacing = true;
  runThreads(false, [&] {
    for (int round = 0; round < 20; ++round) initTablebases(state, "gaviota", gtb4.c_str(), round % 2);
    replacing = false;
  });
  EXPECT_EQ(mismatches, 0);
  EXPECT_GT(softAnswers, 0);
  initTablebases(state, "gaviota", gtb4.c_str(), 1);
  for (size_t i = 0; i < boards.size(); ++i) ASSERT_EQ(probe(state, *boards[i]), expected[i]) << i;
  closeTablebases(state);
}

}  // namespace
