#pragma once
#include <cstdint>
#include <ostream>

class ChessPlayer;

// `go perft N` on the game's position: one line "move: count" per root move,
// in the order of divide, then a blank line and "Nodes searched: N", the
// leaves of the whole tree. Counted with the perft table, as divide counts.
void writeUciPerft(std::ostream& out, ChessPlayer& player, uint32_t depth);
