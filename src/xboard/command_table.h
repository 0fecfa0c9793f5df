#pragma once
#include <cstddef>
#include <cstdint>

#include "xboard/wb_engine.h"

using CommandHandler = bool (WBEngine::*)(const Arguments&);

struct CommandRow {
  const char* name;
  CommandHandler handler;
  uint32_t minArgs;
  uint32_t maxArgs;
  bool stopSearchFirst;
};

// The row whose name equals the word exactly, or null.
const CommandRow* findCommand(const char* word, size_t length);
