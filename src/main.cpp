#include <cstdio>

#include "player/line_atomic_output.h"
#include "uci/uci_engine.h"
#include "xboard/command_loop.h"
#include "xboard/startup.h"
#include "xboard/wb_engine.h"

// Tolva starts as an xboard and console engine; a host whose first line is
// `uci` speaks UCI for the rest of the run.
int main(int argc, char** argv) {
  WBEngine engine;
  LineAtomicStandardOutput lineAtomicOutput;
  startXboardFrontEnd(engine, argc, argv);
  if (runCommandLoop(engine, stdin) == LoopEnd::UciRequested) runUciSession(engine.player, engine.timeControl, stdin);
  return 0;
}
