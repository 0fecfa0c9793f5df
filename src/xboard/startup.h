#pragma once

class WBEngine;

// Start-up of the xboard and console front end: the ini file, the banner,
// the command-line options and the start position. The engine's first board
// must exist before this seeds rand(), so that the Zobrist keys are drawn
// from the fixed stream and are the same in every run.
void startXboardFrontEnd(WBEngine& engine, int argc, char** argv);

// Reads the command-line options; warnings go to standard output.
void parseCommandLine(WBEngine& engine, int argc, char** argv);
