#include "diagnostics/fixed_depth_bench.h"

#include <chrono>
#include <iostream>
#include <memory>

#include "board/fen.h"
#include "board/move_text.h"
#include "search/search_thread.h"
#include "search/time_control.h"

const char* const benchPositions[] = {
    // Openings from the book.
    "r1bqk2r/1pppbppp/p1n2n2/4p3/B3P3/5N2/PPPP1PPP/RNBQR1K1 b kq - 5 6",
    "rnbq1rk1/pppp1ppp/4pn2/8/1bPP4/2N5/PPQ1PPPP/R1B1KBNR w KQ - 4 5",
    "r1bqk2r/1ppp1ppp/p1n2n2/2b1p3/2B1P3/2PP1N2/PP3PPP/RNBQK2R w KQkq - 1 6",
    "r1b1kb1r/pp2pppp/1qnp1n2/8/2BNP3/2N5/PPP2PPP/R1BQK2R w KQkq - 3 7",
    "rnbq1rk1/pp1p1ppp/4pn2/8/1bPN4/2N3P1/PP2PP1P/R1BQKB1R w KQ - 1 6",
    "r3kbnr/pp1qpppp/2np4/2p5/2P1P3/2N2N2/PP1P1PPP/R1BQK2R b KQkq - 2 6",
    "r1bqk2r/ppp2ppp/2n1pn2/3p4/QbPP4/2N1PN2/PP3PPP/R1B1KB1R b KQkq - 2 6",
    "r2qkb1r/pp1bpppp/2np1n2/1Bp5/4P3/5N2/PPPP1PPP/RNBQR1K1 w kq - 5 6",
    // Middlegames: closed Spanish, Najdorf, orthodox Queen's Gambit, an
    // isolated queen's pawn, a Greek gift and a threat against f7.
    "r1bq1rk1/2p1bppp/p1np1n2/1p2p3/4P3/1BP2N1P/PP1P1PP1/RNBQR1K1 b - - 0 9",
    "rnbqkb1r/1p2pppp/p2p1n2/6B1/3NP3/2N5/PPP2PPP/R2QKB1R b KQkq - 1 6",
    "r1bq1rk1/pp1nbppp/2p1pn2/6B1/2BP4/2N1PN2/PP3PPP/2RQK2R b K - 0 9",
    "r1bq1rk1/pp2bppp/2n1pn2/8/3P4/2NB1N2/PP3PPP/R1BQ1RK1 w - - 0 9",
    "r1bq1rk1/pppnbppp/4p3/3pP3/3P4/3B1N2/PPP2PPP/R1BQK2R w KQ - 0 8",
    "r1bqkbnr/pppp1ppp/2n5/4p3/2B1P3/5Q2/PPPP1PPP/RNB1K1NR b KQkq - 3 3",
    // Sharp positions with promotions, pins and castling on both sides.
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "r3k2r/8/3Q4/8/8/5q2/8/R3K2R b KQkq - 0 1",
    // Unbalanced middlegames from random games.
    "2k2B2/5B1p/1q3pp1/1p3p2/N2P1Q2/6KP/P5P1/3R1rNR b - - 16 53",
    "2r4r/1bp1q1n1/3kp1p1/p4pbp/1nP1P3/1PNp1P1P/Q2P2BR/1RB1K2N b - - 3 29",
    "r7/2pk4/b2r4/1p1qP3/P4b1P/5Bp1/1P1n4/R2K3R w - - 1 54",
    "2b2k2/n2ppp1p/p5rb/1qN3P1/2P4P/N2Pr3/PB2BK2/3R1R2 w - - 1 26",
    "rN1rk3/q1N5/2Pb1nb1/pP4p1/B2PPp1p/PQ4pP/R7/2BK3R b - - 0 44",
    "3k3r/1r4q1/1p1pb1p1/4p1bp/1p2p1n1/3P3P/2Q1KP2/BnN1N1R1 w - - 0 40",
    "5nr1/5kb1/b1N1p1pp/PR1pPp1P/3P1Pq1/P6B/2rB3R/3Q1K2 w - - 0 50",
    "6nr/2Pr2k1/p2qp2p/3p2p1/P2PPpPR/2P2K2/1B1N2P1/2R5 w - - 5 42",
    // Endgames.
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
    "8/8/1k6/2b5/2pP4/8/5K2/8 b - d3 0 1",
    "2K2r2/4P3/8/8/8/8/8/3k4 w - - 0 1",
    "8/8/2k5/5q2/5n2/8/5K2/8 b - - 0 1",
    "3k4/3p4/8/K1P4r/8/8/8/8 b - - 0 1",
    "1K1k4/1P6/8/8/8/8/r7/2R5 w - - 0 1",
    "8/8/8/4k3/8/8/4P3/4K3 w - - 0 1",
    "8/5pk1/6p1/8/R7/6P1/r4PK1/8 w - - 0 1",
    "8/3n1k2/5p2/4p1p1/4P1P1/5P2/3NK3/8 w - - 0 1",
    "8/5k2/3b2p1/p4p2/P4P2/2B3P1/5K2/8 w - - 0 1",
    "8/8/8/4k3/8/8/8/4KBN1 w - - 0 1",
    "8/8/8/3k4/8/8/3r4/3QK3 w - - 0 1",
    "8/pp3k2/2p3p1/3p3p/3P3P/2P3P1/PP3K2/8 w - - 0 1",
};
const uint32_t benchPositionCount = sizeof(benchPositions) / sizeof(benchPositions[0]);

namespace {

// Nothing to report and no clock: only the depth ends a search.
class DepthOnlyInterface : public SearchInterface {
 public:
  bool isTimeUp() override { return false; }
  void reportLine(uint32_t, int32_t, const PvLine&) override {}
  void reportStatistics(uint32_t) override {}
};

}  // namespace

FixedDepthBenchResult runFixedDepthBench(std::ostream& out, const std::string& linePrefix) {
  DepthOnlyInterface quiet;
  TimeControl clock;
  clock.timed = true;
  clock.maxTime = 1u << 30;
  clock.depthLimited = true;
  clock.maxDepth = BenchDepth;

  // The size lines of the tables and the search's remarks (forced mates)
  // aren't part of the report.
  const std::ios_base::iostate coutState = std::cout.rdstate();
  std::cout.setstate(std::ios::failbit);
  TTHashTable table("TT hash");
  table.sizeFor(BenchHashMB);
  PawnHash pawns;
  pawns.sizeFor(4);
  std::cout.clear(coutState);

  FixedDepthBenchResult result;
  const auto start = std::chrono::steady_clock::now();
  for (uint32_t i = 0; i < benchPositionCount; ++i) {
    Board_0x88 game;
    if (!setupFromFen(game, benchPositions[i])) {
      out << linePrefix << "position " << i + 1 << " skipped: the FEN doesn't read: " << benchPositions[i] << std::endl;
      continue;
    }
    // Every position starts from empty tables: its count doesn't depend on the ones before.
    table.clear();
    pawns.clear();
    auto thread = std::make_unique<SearchThread>(0, &table, &pawns, nullptr, &clock, &quiet);
    Move best = NoMove, ponder = NoMove;
    std::cout.setstate(std::ios::failbit);
    thread->searchRootForSide(game, best, ponder);
    std::cout.clear(coutState);
    const uint64_t nodes = thread->stats.nodes.get();
    result.nodes += nodes;
    ++result.positions;
    out << linePrefix << "position " << i + 1 << "/" << benchPositionCount << " best " << moveToString(best)
        << " searched " << nodes << " nodes: " << benchPositions[i] << std::endl;
  }
  result.milliseconds = uint64_t(
      std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start).count());
  result.nodesPerSecond = result.nodes * 1000 / (result.milliseconds ? result.milliseconds : 1);
  out << linePrefix << "positions " << result.positions << " depth " << BenchDepth << " hash " << BenchHashMB
      << " MB threads 1 time " << result.milliseconds << " ms" << std::endl;
  // The line that OpenBench reads: plain digits, no separators.
  out << linePrefix << result.nodes << " nodes " << result.nodesPerSecond << " nps" << std::endl;
  return result;
}
