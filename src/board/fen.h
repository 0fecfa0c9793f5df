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

// The same for Chess960. The castling field names each right by the file of
// its rook (Shredder-FEN: "HAha", "Bb"), or in X-FEN by K and Q for the
// outermost rook on that side of the king, with a file letter where another
// rook is meant. A right whose king or rook isn't on its first rank is
// refused rather than dropped: false, with the reason in `error` (left empty
// when another field is at fault). Castling moves then go to the rook's
// square, the king taking its own rook, and FENs are written in Shredder form.
bool setupChess960FromFen(Board_0x88& board, const char* text, std::string& error);

// The "# warning:" lines that tell a user what the reader dropped; empty when nothing.
std::string describeRepairs(const FenRepairs& repairs);

// Joins the words of a `setboard` line with one blank each and reads them.
bool setPositionFromWords(Board_0x88& board, const std::vector<std::string>& words, FenRepairs* repairs = nullptr);
