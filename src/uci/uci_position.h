#pragma once
#include <string>
#include <vector>

class ChessPlayer;

// `position startpos|fen <FEN> [moves m1 m2 ...]`, the words behind
// `position`. Sets the game to that position with its moves recorded (so the
// draw rules see the repetitions), or, when the FEN or a move is refused,
// leaves the game exactly as it was and says why in `error`. What the FEN
// reader had to drop (a castling right without its rook, say) is put in
// `notes`, one remark a line. In `chess960` the FEN is read as Shredder-FEN
// or X-FEN, and castling moves are the king taking its own rook.
bool setUciPosition(ChessPlayer& player, const std::vector<std::string>& words, bool chess960, std::string& error,
                    std::string& notes);
