#include "xboard/startup.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iostream>

#include "board/fen.h"
#include "player/engine_settings.h"
#include "player/line_atomic_output.h"
#include "player/random_seed.h"
#include "xboard/wb_engine.h"

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

void startXboardFrontEnd(WBEngine& engine, int argc, char** argv) {
  seedRandomFromClock();
  std::ios_base::sync_with_stdio(true);
  // Its warnings and the cores line come before the banner.
  readIniFile(engine.player, "tolva.ini");
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
}
