#include <cstdio>
#include <cstring>
#include <iostream>

#include "diagnostics/fixed_depth_bench.h"
#include "player/line_atomic_output.h"
#include "uci/uci_engine.h"
#include "xboard/command_loop.h"
#include "xboard/startup.h"
#include "xboard/wb_engine.h"

// Tolva starts as an xboard and console engine; a host whose first line is
// `uci` speaks UCI for the rest of the run. `tolva bench` searches the bench
// positions, prints the node count and exits.
int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "bench") == 0) return runFixedDepthBench(std::cout).positions > 0 ? 0 : 1;
  WBEngine engine;
  LineAtomicStandardOutput lineAtomicOutput;
  startXboardFrontEnd(engine, argc, argv);
  if (runCommandLoop(engine, stdin) == LoopEnd::UciRequested) runUciSession(engine.player, engine.timeControl, stdin);
  return 0;
}
