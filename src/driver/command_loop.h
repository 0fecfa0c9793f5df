#pragma once
#include <cstdio>

#include "driver/wb_engine.h"

constexpr int LineBufferSize = 1024;

// Trims one line feed, one carriage return, then all trailing blanks; returns the new length.
size_t trimLine(char* line);

// Runs one trimmed line through the command table, with the argument checks
// and the error lines.
void dispatchLine(WBEngine& engine, const char* line);

// After a line, with no search running: notices the end of the game.
void checkGameEnd(WBEngine& engine);
// Starts the search threads when it is the engine's turn.
void startSearchIfDue(WBEngine& engine);

// Reads and runs lines until quit or the end of input.
void runCommandLoop(WBEngine& engine, FILE* input);
