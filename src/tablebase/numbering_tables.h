#pragma once
#include <cstdint>

#include "tablebase/square_symmetry.h"

// The numbering tables of the Gaviota position index and their inverses. All
// of them are built once, before main runs (buildNumberingTables may be called
// again and does nothing then), and are read-only afterwards. Entries with no
// number hold noNumber.

inline constexpr uint32_t noNumber = 0xFFFFFFFF;

inline constexpr uint32_t kingPairCount = 462;
inline constexpr uint32_t pairCount = 2016;          // unordered pairs of squares
inline constexpr uint32_t tripleCount = 41664;       // unordered triples of squares
inline constexpr uint32_t pawnSlotCount = 24;        // a pawn on files a to d, ranks 2 to 7
inline constexpr uint32_t pawnPairCount = 576;       // two White pawns, up to the mirror
inline constexpr uint32_t freePawnPairCount = 1128;  // two White pawns, mirror carried elsewhere
inline constexpr uint32_t pawnTripleCount = 8648;    // three White pawns, up to the mirror

// Flags of the king pair's normal form, index [bk][wk]: 1 mirror the files,
// 2 mirror the ranks, 4 flip on the a1-h8 diagonal, applied in that order.
extern uint32_t kingPairFlip[64][64];
// Number of a king pair in normal form, index [bk][wk].
extern uint32_t kingPairIndex[64][64];
// Number of an unordered pair of squares; symmetric.
extern uint32_t pairIndex[64][64];
// Two White pawns: [slot of the anchor][(other pawn XOR 56) - 8], after the
// mirror that brings the anchor to files a to d.
extern uint32_t pawnPairIndex[24][48];
// Two White pawns numbered from h7: index [(u XOR 63) - 8][(v XOR 63) - 8].
extern uint32_t freePawnPairIndex[48][48];
// Three White pawns, index [s - 8] for each; a number only when at least two
// stand on files a to d.
extern uint32_t pawnTripleIndex[48][48][48];

struct SquarePair {
  uint8_t first, second;
};
struct SquareTriple {
  uint8_t squares[3];
};
// Inverses: the squares that carry each number (kings as bk then wk, pawn
// pairs as anchor then other, all in the form that the lookup accepts as is).
extern SquarePair kingPairSquares[kingPairCount];
extern SquarePair pairSquares[pairCount];
extern SquarePair pawnPairSquares[pawnPairCount];
extern SquarePair freePawnPairSquares[freePawnPairCount];
extern SquareTriple pawnTripleSquares[pawnTripleCount];

void buildNumberingTables();

constexpr uint32_t pieceFlip(uint32_t s, uint32_t flags) {
  if (flags & 1) s = mirrorFiles(s);
  if (flags & 2) s = mirrorRanks(s);
  if (flags & 4) s = flipDiagonal(s);
  return s;
}

// Slot of a White pawn on files a to d, counted from the seventh rank down
// (a7 0, d7 3, a6 4, d2 23); of a Black pawn from the second rank up.
constexpr uint32_t whitePawnSlot(uint32_t s) {
  uint32_t x = mirrorRanks(s) - 8;
  return (x + (x & 3)) / 2;
}
constexpr uint32_t blackPawnSlot(uint32_t s) {
  uint32_t x = s - 8;
  return (x + (x & 3)) / 2;
}
constexpr uint32_t whitePawnSquare(uint32_t slot) { return mirrorRanks(slot / 4 * 8 + slot % 4 + 8); }
constexpr uint32_t blackPawnSquare(uint32_t slot) { return slot / 4 * 8 + slot % 4 + 8; }

// The pawn of a White pair that fixes the mirror: the one on the higher rank,
// then the one nearer the edge, then the one with the smaller square number.
constexpr bool isPawnPairAnchor(uint32_t u, uint32_t v) {
  if (rankOf64(u) != rankOf64(v)) return rankOf64(u) > rankOf64(v);
  auto edge = [](uint32_t s) { return fileOf64(s) > 3 ? fileOf64(s) : 7 - fileOf64(s); };
  if (edge(u) != edge(v)) return edge(u) > edge(v);
  return u < v;
}

// Number of a sorted triple hi > mid > lo: C(hi, 3) + C(mid, 2) + lo.
constexpr uint32_t tripleIndex(uint32_t s, uint32_t t, uint32_t u) {
  if (s < t) { uint32_t x = s; s = t; t = x; }
  if (t < u) { uint32_t x = t; t = u; u = x; }
  if (s < t) { uint32_t x = s; s = t; t = x; }
  if (s == t || t == u) return noNumber;
  return s * (s - 1) * (s - 2) / 6 + t * (t - 1) / 2 + u;
}
SquareTriple tripleSquares(uint32_t number);
