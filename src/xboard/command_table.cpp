#include "xboard/command_table.h"

#include <cstring>

const CommandRow* findCommand(const char* word, size_t length) {
  static const CommandRow table[] = {
      {"quit", &WBEngine::cmdQuit, 0, 0, true},
      {"xboard", &WBEngine::cmdXboard, 0, 0, false},
      {"protover", &WBEngine::cmdProtover, 1, 1, false},
      {"new", &WBEngine::cmdNew, 0, 0, true},
      {"force", &WBEngine::cmdForce, 0, 0, true},
      {"ping", &WBEngine::cmdPing, 1, 1, false},
      {"usermove", &WBEngine::cmdUsermove, 1, 1, true},
      {"go", &WBEngine::cmdGo, 0, 0, true},
      {"playother", &WBEngine::cmdPlayother, 0, 0, true},
      {"setboard", &WBEngine::cmdSetboard, 4, 6, true},
      {"level", &WBEngine::cmdLevel, 3, 3, false},
      {"sd", &WBEngine::cmdSd, 1, 1, true},
      {"time", &WBEngine::cmdTime, 1, 1, false},
      {"undo", &WBEngine::cmdUndo, 0, 0, true},
      {"remove", &WBEngine::cmdRemove, 0, 0, true},
      {"analyze", &WBEngine::cmdAnalyze, 0, 0, true},
      {"exit", &WBEngine::cmdExit, 0, 0, true},
      {"auto", &WBEngine::cmdAuto, 0, 1, false},
      {"post", &WBEngine::cmdPost, 0, 0, false},
      {"nopost", &WBEngine::cmdNopost, 0, 0, false},
      {"cores", &WBEngine::cmdCores, 1, 1, false},
      {"egtpath", &WBEngine::cmdEgtpath, 2, 2, false},
      {"option", &WBEngine::cmdOption, 1, 1, false},
      {"book", &WBEngine::cmdBook, 0, 0, false},
      {"nobook", &WBEngine::cmdNobook, 0, 0, false},
      {"perft", &WBEngine::cmdPerft, 1, 1, true},
      {"divide", &WBEngine::cmdDivide, 1, 1, true},
      {"selftest", &WBEngine::cmdSelftest, 0, 0, true},
      {"test", &WBEngine::cmdTest, 0, 1, true},
      {"eval", &WBEngine::cmdEval, 0, 0, false},
      {"tune", &WBEngine::cmdTune, 1, 2, false},
      {"randpos", &WBEngine::cmdRandpos, 0, 2, true},
      {"randgame", &WBEngine::cmdRandgame, 0, 0, false},
      {"norandgame", &WBEngine::cmdNorandgame, 0, 0, false},
      {"randgames", &WBEngine::cmdRandgames, 1, 1, false},
  };
  static_assert(sizeof table / sizeof table[0] == 35);
  for (const CommandRow& row : table)
    if (std::strlen(row.name) == length && std::memcmp(row.name, word, length) == 0) return &row;
  return nullptr;
}
