// The diagnostic commands perft, divide and randpos through the real binary.
#include <unistd.h>

#include <fstream>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "driver/chess_player.h"
#include "protocol/transcript.h"

namespace {

const std::string newGame = "# new size of TT hash: 256 MB\n# new size of Pawn hash: 32 MB\n" + startBoard;



// Times and rates vary: the rate must follow from the time and the node
// count, then both are masked as "T" and "R". The fill of one entry among the
// sampled buckets (the root at depth 2) is masked as "F".
std::string maskTimes(const std::string& output) {
  static const std::regex report("Total nodes:  ([0-9]+)\n(# )?Time elapsed: ([0-9]+)\\.([0-9]{2}) s\n(# )?Nodes/second: ([0-9]+)\n");
  std::string masked;
  size_t last = 0;
  for (auto it = std::sregex_iterator(output.begin(), output.end(), report); it != std::sregex_iterator(); ++it) {
    const std::smatch& m = *it;
    const uint64_t centis = std::stoull(m[3]) * 100 + std::stoull(m[4]);
    EXPECT_EQ(std::stoull(m[6]), centis == 0 ? 0 : std::stoull(m[1]) * 100 / centis) << m.str();
    masked += output.substr(last, size_t(m.position()) - last) + "Total nodes:  " + m[1].str() + "\n" + m[2].str() +
              "Time elapsed: T s\n" + m[5].str() + "Nodes/second: R\n";
    last = size_t(m.position() + m.length());
  }
  return std::regex_replace(masked + output.substr(last), std::regex("Full%:  (0|0\\.00152588)\n(# perftHashHits:   0\n# Your move: b1a3)"),
                            "Full%:  F\n$2");
}

TEST(DiagnosticCommandsTest, PerftAndDivideReports) {
  auto perft = [](uint64_t leaves, uint64_t nodes, const std::string& fill) {
    return "# Total leaves: " + std::to_string(leaves) + "\n# Total nodes:  " + std::to_string(nodes) +
           "\n# Time elapsed: T s\n# Nodes/second: R\n# perftHashFull%:  " + fill + "\n# perftHashHits:   0\n";
  };
  auto divide = [](uint64_t leaves, uint64_t nodes, const std::string& fill) {
    return "Total leaves: " + std::to_string(leaves) + "\nTotal nodes:  " + std::to_string(nodes) +
           "\nTime elapsed: T s\nNodes/second: R\n# perftHashFull%:  " + fill + "\n";
  };
  const std::string table = "# new size of Perft hash: 64 MB\n";
  // The size line comes with the first command that runs; the fool's mate leaves no moves.
  expectTranscript({{"perft 0", commandError("perft 0")},
                    {"perft 1", table + perft(20, 1, "0")},
                    {"perft 2", perft(400, 21, "F")},
                    {"divide 1", "b1a3 1\nb1c3 1\ng1f3 1\ng1h3 1\na2a3 1\na2a4 1\nb2b3 1\nb2b4 1\nc2c3 1\nc2c4 1\nd2d3 1\n"
                                 "d2d4 1\ne2e3 1\ne2e4 1\nf2f3 1\nf2f4 1\ng2g3 1\ng2g4 1\nh2h3 1\nh2h4 1\n" + divide(20, 1, "0")},
                    {"setboard rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3",
                     "0-1 {Black wins by checkmate}\n" + diagram({"rnb.kbnr", "pppp.ppp", "........", "....p...", "......Pq",
                                                                   ".....P..", "PPPPP..P", "RNBQKBNR"})},
                    {"perft 1", perft(0, 1, "0")}, {"divide 2", divide(0, 1, "0")}},
                   {}, "", maskTimes);
}

struct NoEngine : EngineInterface {
  void makeEngineMove(Move&) override {}
};

// Each random position is accepted, playable, and written back unchanged.
TEST(DiagnosticCommandsTest, RandposWritesPlayablePositions) {
  const std::string path = ::testing::TempDir() + "tolva_positions_" + std::to_string(getpid()) + ".fen";
  std::vector<std::string> out = repliesTo("randpos\nrandpos 1000 " + path + "\n");
  ASSERT_EQ(out.size(), 2u);
  EXPECT_EQ(out[0], startBoard + "\n");  // without a count: the board as it stands
  EXPECT_EQ(out[1], "Wrote 1000 random FENs to file \"" + path + "\"\n" + newGame);
  std::ifstream in(path);
  std::vector<std::string> fens;
  for (std::string line; std::getline(in, line);) fens.push_back(line);
  ASSERT_EQ(fens.size(), 1000u);
  TimeControl clock;
  NoEngine engine;
  ChessPlayer player{&clock, &engine};
  for (const std::string& fen : fens) {
    ASSERT_TRUE(setupFromFen(*player.board, fen.c_str())) << fen;
    EXPECT_TRUE(player.hasPlayablePosition()) << fen;
    EXPECT_EQ(positionToFen(*player.board), fen);
  }
  std::remove(path.c_str());
}

}  // namespace
