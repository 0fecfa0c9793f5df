#include "diagnostics/self_test.h"

#include <iostream>

#include "board/fen.h"
#include "diagnostics/perft.h"
#include "search/time_control.h"

namespace {

const char* const fenA = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
const char* const fenB = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";
const char* const fenC = "8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67";
const char* const fenD = "8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28";
const char* const fenE = "rnbqkb1r/ppppp1pp/7n/4Pp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3";
const char* const fenF = "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1";

}  // namespace

const SelfTestCase selfTestCases[18] = {
    {1, fenA, 1, 20},         {2, fenA, 2, 400},        {3, fenA, 3, 8902},
    {4, fenA, 4, 197281},     {5, fenA, 5, 4865609},    {6, fenA, 6, 119060324},
    {8, fenB, 1, 48},         {9, fenB, 2, 2039},       {10, fenB, 3, 97862},
    {11, fenB, 4, 4085603},   {12, fenB, 5, 193690690}, {14, fenC, 1, 50},
    {15, fenC, 2, 279},       {16, fenD, 6, 38633283},  {17, fenE, 5, 11139762},
    {18, fenF, 6, 11030083},  {19, fenF, 7, 178633661}, {20, fenB, 5, 193690690},
};

void runSelfTests(Board_0x88& board, PerftTable& perft) {
  uint32_t passed = 0, failed = 0, totalTime = 0;
  uint64_t totalLeaves = 0, totalNodes = 0;

  for (const SelfTestCase& test : selfTestCases) {
    uint32_t start = TimeControl::timeStamp();
    if (!setupFromFen(board, test.fen)) {
      std::cout << "# Self-test no. " << test.number << " FAILED  (illegal FEN)" << std::endl;
      ++failed;
      continue;
    }
    // Every row starts from an empty table, so none profits from the one before.
    preparePerftHash(perft);
    PerftStats stats;
    uint64_t leaves = countLeaves(stats, board, perft.hash.get(), test.depth, false);
    uint32_t time = TimeControl::timeStamp() - start;
    totalLeaves += leaves;
    totalNodes += stats.nodes;
    totalTime += time;

    if (leaves == test.expectedLeaves) {
      ++passed;
      std::cout << "# Self-test no. " << test.number << " passed: n=" << leaves << ", t=" << time
                << ", lps=" << (time ? leaves * 100 / time : 0) << ", nps=" << (time ? stats.nodes * 100 / time : 0)
                << std::endl;
    } else {
      ++failed;
      std::cout << "# Self-test no. " << test.number << " FAILED  (expected " << test.expectedLeaves << ", got "
                << leaves << ")" << std::endl;
    }
  }

  std::cout << passed << " tests passed, " << failed << " tests failed, " << 0 << " tests skipped, total "
            << passed + failed << " tests run:" << '\n';
  // Here n counts nodes, where a row's line counts leaves.
  std::cout << "n=" << totalNodes << ", t=" << totalTime << ", lps=" << (totalTime ? totalLeaves * 100 / totalTime : 0)
            << ", nps=" << (totalTime ? totalNodes * 100 / totalTime : 0) << std::endl;
}
