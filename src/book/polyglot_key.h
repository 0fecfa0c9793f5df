#pragma once
#include <cstdint>

#include "board/board.h"

// The 781 published PolyGlot key words: 768 for pieces (64 * kind + square,
// kind 0 black pawn, 1 white pawn, ... 11 white king), 4 for castling rights,
// 8 for the en-passant file, 1 for White to move.
extern const uint64_t polyglotRandom64[781];

// The PolyGlot key of the position, as opening books store it.
uint64_t polyglotKey(const Board_0x88& board);
