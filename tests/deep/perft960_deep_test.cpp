// Every depth of every position of perft960.epd (Chess960, counted by a
// reference program), in Shredder-FEN and in X-FEN, through the library with
// its table. Registered only with TOLVA_DEEP_TESTS, label deep.
#include <memory>

#include "board/board_test_support.h"
#include "diagnostics/perft.h"

namespace {

class Perft960DeepTest : public ::testing::TestWithParam<SuiteLine> {};

TEST_P(Perft960DeepTest, LeafCounts) {
  const SuiteLine& line = GetParam();
  ::testing::internal::CaptureStdout();  // the table's size line
  auto table = std::make_unique<PerftHashTable>("Perft hash");
  table->sizeFor(256);
  ::testing::internal::GetCapturedStdout();
  for (const std::string& fen : {line.fen, toXFen(line.fen)}) {
    Board_0x88 board;
    std::string error;
    ASSERT_TRUE(setupChess960FromFen(board, fen.c_str(), error)) << fen << ": " << error;
    table->clear();
    for (uint32_t depth = 1; depth <= line.counts.size(); ++depth) {
      PerftStats stats;
      EXPECT_EQ(countLeaves(stats, board, table.get(), depth, false), line.counts[depth - 1]) << fen << " depth " << depth;
    }
  }
}

std::string lineName(const ::testing::TestParamInfo<SuiteLine>& info) { return "line" + std::to_string(info.index + 1); }

INSTANTIATE_TEST_SUITE_P(Epd, Perft960DeepTest, ::testing::ValuesIn(readSuite("perft960.epd")), lineName);

}  // namespace
