#pragma once
#include <cstdio>

#include "board/string_split.h"
#include "driver/wb_engine.h"

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

// Reads and runs lines until quit or the end of input.
void runCommandLoop(WBEngine& engine, FILE* input);
