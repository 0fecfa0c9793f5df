#pragma once
#include <cstdio>

#include "board/string_split.h"
#include "xboard/wb_engine.h"

constexpr int LineBufferSize = 1024;

// Runs one trimmed line through the command table, with the argument checks
// and the error lines.
void dispatchLine(WBEngine& engine, const char* line);

// Prints the diagram when the board has changed since the last one.
void printBoardIfChanged(WBEngine& engine);
// After a line, with no search running: notices the end of the game.
void checkGameEnd(WBEngine& engine);
// Starts the search threads when it is the engine's turn.
void startSearchIfDue(WBEngine& engine);

// How the command loop ended.
enum class LoopEnd { Quit, UciRequested };

// Reads and runs lines until quit or the end of input, or until the first
// line is `uci`: the host speaks UCI for the rest of the run, and the caller
// hands the input to the UCI front end.
LoopEnd runCommandLoop(WBEngine& engine, FILE* input);
