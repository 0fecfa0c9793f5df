#pragma once
#include <string>
#include <vector>

#include "board/board.h"

inline constexpr const char* startPositionFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// What the reader dropped from a text that a sloppy position editor may
// write: rights whose king or rook isn't at home, an en-passant square that
// no pawn can have passed (occupied, or with the square behind it occupied).
struct FenRepairs {
  uint8_t droppedRights = 0;  // castling right bits
  uint8_t droppedEnPassant = NoSquare;
};

// Clears the board and reads a FEN text into it, dropping what can't be
// played (see FenRepairs) so that no generator or search ever meets it.
// False on the first field that breaks the rules; the board is then left
// cleared, with no side to move, so that nothing walks a half-filled board.
bool setupFromFen(Board_0x88& board, const char* text, FenRepairs* repairs = nullptr);

// The "# warning:" lines that tell a user what the reader dropped; empty when nothing.
std::string describeRepairs(const FenRepairs& repairs);

// Joins the words of a `setboard` line with one blank each and reads them.
bool setPositionFromWords(Board_0x88& board, const std::vector<std::string>& words, FenRepairs* repairs = nullptr);
