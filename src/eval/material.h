#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/score_pair.h"

// The men of one side packed in eight 4-bit fields; the shift of each field.
using MaterialSignature = uint32_t;
enum SignatureField : int {
  SigPawns = 0,
  SigKnights = 4,
  SigBishops = 8,
  SigRooks = 12,
  SigQueens = 16,
  SigMinors = 20,  // knights + bishops
  SigMajors = 24,  // rooks + queens
  SigMen = 28,     // everything but the king
};

constexpr int signatureField(MaterialSignature sig, SignatureField field) { return int((sig >> field) & 15); }

// What the piece counts say about a position; rebuilt on every evaluation.
struct MaterialInfo {
  MaterialSignature signature[2];
  int32_t phase;        // 0 (pawn ending) to 24 (all pieces)
  ScorePair material;   // White minus Black, adjustments included
  bool canWin[2];       // the side has enough material to mate
};

// Piece values by PieceType, the same for both colours; the king has none.
inline constexpr ScorePair pieceValue[7] = {{0, 0}, {100, 100}, {325, 325}, {325, 325},
                                            {500, 500}, {1104, 1101}, {0, 0}};

// Fills every field of info from the count and total bytes; reads no squares.
void computeMaterial(MaterialInfo& info, const Board_0x88& board);
