#pragma once
#include <cstdint>

// Zobrist keys, drawn once from a fixed seed so they are the same in every run.
extern uint64_t pieceKey[2][6][64];  // colour, piece code - 1, Square64
extern uint64_t castlingKey[16];     // only the single right bits 1, 2, 4, 8 are drawn
// A castling right by colour and the file of its rook: the a and h files
// share the keys of standard chess (castlingKey), the other files have their own.
extern uint64_t castlingRookKey[2][8];
extern uint64_t epKey[8];            // file of the en-passant square
extern uint64_t sideKey;             // XORed in when Black is to move

void initZobristKeys();
