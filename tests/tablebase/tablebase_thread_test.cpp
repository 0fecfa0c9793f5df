// Probes from several threads at once: they share the store, its one mutex
// and a cache much smaller than what they ask for, and the main thread may
// close and set up the tables under them. Run under ThreadSanitizer in CI.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "tablebase/search_probe.h"

namespace {

const std::string gtb4 = std::string(TOLVA_GAVIOTA_DIR) + "/gtb4";
constexpr int threadCount = 4;

// A 3-man position: the strong side's king and piece, the lone king.
struct ThreeMen {
  PieceType piece;
  uint32_t strongKing, man, loneKing;
  Color strong, toMove;
};

void place(Board_0x88& b, const ThreeMen& s) {
  b.clear();
  b.placePiece(toSquare88(Square64(s.strongKing)), s.strong, King);
  b.placePiece(toSquare88(Square64(s.man)), s.strong, s.piece);
  b.placePiece(toSquare88(Square64(s.loneKing)), opponent(s.strong), King);
  b.sideToMove = s.toMove;
}

struct Answer {
  bool answered;
  int32_t score;
  bool operator==(const Answer&) const = default;
};

Answer probe(const TablebaseState& state, const Board_0x88& b, bool hard) {
  Answer a{false, 0};
  if (b.sideToMove == White)
    a.answered = hard ? probeTablebase<White>(&state, b, a.score) : probeInSearch<White>(&state, b, 1, 20, a.score);
  else
    a.answered = hard ? probeTablebase<Black>(&state, b, a.score) : probeInSearch<Black>(&state, b, 1, 20, a.score);
  return a;
}

std::vector<ThreeMen> randomPositions(size_t count) {
  const PieceType pieces[] = {Queen, Rook, Bishop, Knight, Pawn};
  std::mt19937 random(5);
  auto next = [&](uint32_t below) { return uint32_t(random() % below); };
  std::vector<ThreeMen> setups;
  while (setups.size() < count) {
    ThreeMen s{pieces[next(5)], next(64), next(64), next(64), Color(next(2)), Color(next(2))};
    if (s.strongKing == s.man || s.strongKing == s.loneKing || s.man == s.loneKing) continue;
    if (s.piece == Pawn && (s.man < 8 || s.man > 55)) continue;
    setups.push_back(s);
  }
  return setups;
}

TEST(TablebaseThreadTest, FourThreadsProbeASmallCacheWhileTheTablesAreReplaced) {
  const std::vector<ThreeMen> setups = randomPositions(240);
  TablebaseState state;
  std::vector<Answer> expected;
  auto board = std::make_unique<Board_0x88>();
  initTablebases(state, "gaviota", gtb4.c_str(), 16);
  for (const ThreeMen& s : setups) {
    place(*board, s);
    expected.push_back(probe(state, *board, true));
  }

  // Each thread walks the positions in an order of its own, hard and soft
  // probes mixed. `exact`: hard probes must give the single-threaded answer;
  // otherwise (the tables come and go) only what is answered is checked.
  std::atomic<bool> replacing{false};
  std::atomic<int> mismatches{0}, hardAnswers{0}, softAnswers{0};
  auto work = [&](int id, bool exact) {
    auto own = std::make_unique<Board_0x88>();
    std::mt19937 order{uint32_t(id)};
    for (int n = 0; n < 150 || replacing.load(); ++n) {
      const size_t i = order() % setups.size();
      const bool hard = n % 3 != 0;
      place(*own, setups[i]);
      const Answer a = probe(state, *own, hard);
      if (a.answered) ++(hard ? hardAnswers : softAnswers);
      const bool ok = exact && hard ? a == expected[i] : !a.answered || a == expected[i];
      if (!ok) ++mismatches;
    }
  };
  auto runThreads = [&](bool exact, auto&& mainThread) {
    std::vector<std::thread> threads;
    for (int id = 0; id < threadCount; ++id) threads.emplace_back(work, id, exact);
    mainThread();
    for (std::thread& t : threads) t.join();
  };

  // One block for all (0 MB), then eight.
  for (uint32_t megabytes : {0u, 1u}) {
    initTablebases(state, "gaviota", gtb4.c_str(), megabytes);
    runThreads(true, [] {});
  }
  EXPECT_EQ(mismatches, 0);
  EXPECT_GT(hardAnswers, 500);

  // closeTablebases waits for the probe that holds the store; probes that
  // come later find the tables off, or set up again, and answer rightly or not at all.
  replacing = true;
  runThreads(false, [&] {
    for (int round = 0; round < 20; ++round) initTablebases(state, "gaviota", gtb4.c_str(), round % 2);
    replacing = false;
  });
  EXPECT_EQ(mismatches, 0);
  EXPECT_GT(softAnswers, 0);

  // Set up once more, the store answers as before.
  initTablebases(state, "gaviota", gtb4.c_str(), 1);
  for (size_t i = 0; i < setups.size(); ++i) {
    place(*board, setups[i]);
    ASSERT_EQ(probe(state, *board, true), expected[i]) << i;
  }
  closeTablebases(state);
}

}  // namespace
