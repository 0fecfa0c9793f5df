#pragma once

// The whole run of the engine: start-up, command loop and shutdown. Returns
// the process exit status.
int runTolva(int argc, char** argv);

// Seeds rand() from the time of day (milliseconds) times time(0).
void seedRandomFromClock();

// Reads the command-line options; warnings go to standard output.
class WBEngine;
void parseCommandLine(WBEngine& engine, int argc, char** argv);
