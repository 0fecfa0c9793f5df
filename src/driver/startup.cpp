#include "driver/startup.h"

#include <sys/time.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>

#include "board/fen.h"
#include "driver/command_loop.h"
#include "driver/engine_settings.h"
#include "driver/line_atomic_output.h"
#include "driver/wb_engine.h"

void seedRandomFromClock() {
  timeval now;
  gettimeofday(&now, nullptr);
  uint32_t secondsOfDay = uint32_t(now.tv_sec % 86400);
  uint32_t millisOfDay = secondsOfDay * 1000u + uint32_t(now.tv_usec / 1000);
  srand(unsigned(millisOfDay * uint32_t(time(nullptr))));
}

void parseCommandLine(WBEngine& engine, int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "-cores") == 0) {
      if (i + 1 >= argc) {
        std::cout << "# warning: missing argument for command line option \"-cores\"" << std::endl;
        return;
      }
      int cores = std::atoi(argv[++i]);
      if (cores >= 1) {
        engine.player.setCores(uint32_t(cores));
      } else {
        std::cout << "# warning: found bad argument \"" << cores
                  << "\" for command line option \"-cores\", must be a positive number" << std::endl;
      }
    } else {
      std::cout << "# warning: found unknown command line option \"" << argv[i] << "\"" << std::endl;
    }
  }
}

int runTolva(int argc, char** argv) {
  // The first board builds the shared tables, so the Zobrist keys are drawn
  // before the seed below and are the same in every run.
  WBEngine engine;
  seedRandomFromClock();
  std::ios_base::sync_with_stdio(true);
  // Its warnings and the cores line come before the banner.
  readIniFile(engine.player, "tolva.ini");
  LineAtomicStandardOutput lineAtomicOutput;
  std::cout << "# Tolva 0.7.0" << '\n'
            << "# a chess engine for the xboard protocol; type 'quit' to leave" << '\n'
            << "# " << '\n'
            << "feature done=0" << std::endl;
  parseCommandLine(engine, argc, argv);
  setbuf(stdin, nullptr);
  engine.player.setupSearch(false);
  setupFromFen(*engine.player.board, startPositionFen);
  engine.player.ply = 0;
  engine.player.outOfBook = false;
  engine.boardChanged = true;
  runCommandLoop(engine, stdin);
  return 0;
}
