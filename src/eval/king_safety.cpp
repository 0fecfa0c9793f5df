#include "eval/king_safety.h"

#include <cstdlib>
#include <mutex>

#include "eval/score_pair_ops.h"

// Holes in the pawn cover, by the six-bit shield index.
uint8_t pawnShieldTable[64];
// How much a piece (code - 1) bears on the squares around a king, by the
// difference of their 0x88 squares.
uint32_t kingTropismTable[6][128];

namespace {

uint64_t pawnAttackMask[2][64], knightAttackMask[64], kingAttackMask[64], bishopRayMask[64], rookRayMask[64];

constexpr uint64_t bit(int s) { return uint64_t(1) << s; }
int bits(uint64_t v) { return __builtin_popcountll(v); }

uint64_t stepMask(int s, const int (*steps)[2], int count, bool slide) {
  uint64_t mask = 0;
  for (int i = 0; i < count; ++i)
    for (int f = (s & 7) + steps[i][0], r = (s >> 3) + steps[i][1]; f >= 0 && f < 8 && r >= 0 && r < 8;
         f += steps[i][0], r += steps[i][1]) {
      mask |= bit(r * 8 + f);
      if (!slide) break;
    }
  return mask;
}

void buildKingTropismRows(Square reference, uint64_t origins) {
  const uint64_t zone = kingAttackMask[toSquare64(reference)];
  auto sweep = [&](int row, auto value) {
    for (uint64_t rest = origins; rest; rest &= rest - 1) {
      const int o = __builtin_ctzll(rest);
      const int d = std::abs(int(reference) - int(toSquare88(Square64(o))));
      uint32_t v;
      if (value(o, v)) kingTropismTable[row][d] = v;
    }
  };
  for (int c = 0; c < 2; ++c)
    sweep(0, [&](int o, uint32_t& v) { return (v = bits(pawnAttackMask[c][o] & zone)) != 0; });
  sweep(1, [&](int o, uint32_t& v) { return (v = bits(knightAttackMask[o] & zone)) != 0; });
  sweep(2, [&](int o, uint32_t& v) {
    v = 1 + bits(bishopRayMask[o] & kingAttackMask[o] & zone);
    return (bishopRayMask[o] & zone) != 0;
  });
  sweep(3, [&](int o, uint32_t& v) {
    v = 1 + bits(rookRayMask[o] & kingAttackMask[o] & zone);
    return (rookRayMask[o] & zone) != 0;
  });
  sweep(4, [&](int o, uint32_t& v) {
    v = 1 + bits(kingAttackMask[o] & zone);
    return ((bishopRayMask[o] | rookRayMask[o]) & zone) != 0;
  });
  sweep(5, [&](int o, uint32_t& v) { return (v = bits(kingAttackMask[o] & zone)) != 0; });
}

// Own pawns on the two rows ahead of the king, files f-1 to f+1 of each
// shifted down to three bits; missing files and the last rank count as covered.
template <Color C>
int pawnShieldIndex(Square king, uint64_t pawns) {
  const int f = fileOf(king), rank = rankOf(king);
  const int ownRank = C == White ? rank : 7 - rank;
  if (ownRank >= 6) return 63;
  const int ahead = C == White ? 1 : -1;
  // A file left of a reads as the bit shifted in, 0; right of h as bit 8, 0.
  auto row = [&](int r) { return int(((((pawns >> (8 * r)) & 0xFF) << 1) >> f) & 7); };
  int index = row(rank + ahead) | (ownRank == 5 ? 7 : row(rank + 2 * ahead)) << 3;
  if (f == 0) index |= 9;
  if (f == 7) index |= 36;
  return index;
}

void buildKingSafetyTables() {
  for (int i = 0; i < 64; ++i) pawnShieldTable[i] = uint8_t(((i & 9) == 0) + ((i & 4) == 0));
  const int knight[8][2] = {{1, 2}, {2, 1}, {2, -1}, {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
  const int king[8][2] = {{1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}, {-1, -1}, {0, -1}, {1, -1}};
  const int diagonal[4][2] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
  const int straight[4][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
  const int whitePawn[2][2] = {{-1, 1}, {1, 1}}, blackPawn[2][2] = {{-1, -1}, {1, -1}};
  for (int s = 0; s < 64; ++s) {
    pawnAttackMask[White][s] = stepMask(s, whitePawn, 2, false);
    pawnAttackMask[Black][s] = stepMask(s, blackPawn, 2, false);
    knightAttackMask[s] = stepMask(s, knight, 8, false);
    kingAttackMask[s] = stepMask(s, king, 8, false);
    bishopRayMask[s] = stepMask(s, diagonal, 4, true);
    rookRayMask[s] = stepMask(s, straight, 4, true);
  }
  for (auto& row : kingTropismTable)
    for (uint32_t& v : row) v = 0;
  buildKingTropismRows(0x66, 0x3F7F7F7F7F7F7FULL);
  buildKingTropismRows(0x77, 0x1010101010101FFULL);
  buildKingTropismRows(0x61, 0xFCFCFCFCFCFCULL);
  buildKingTropismRows(0x70, 0x808080808080FEULL);
}

}  // namespace

void initKingSafetyTables() {
  // Built once: every search thread asks for them as it is made, maybe while others search.
  static std::once_flag ready;
  std::call_once(ready, buildKingSafetyTables);
}

template <Color C, typename Rec>
ScorePair kingSafety(const Board_0x88& board, const PawnInfo& pawns, MaterialSignature enemy) {
  const Square king = board.side[C].square[0];
  ScorePair sum{int16_t(-10 * pawnShieldTable[pawnShieldIndex<C>(king, pawns.pawns[C])]), 0};
  int heavy = signatureField(enemy, SigRooks) + signatureField(enemy, SigQueens);
  if (heavy > 2) heavy = 2;
  const int f = fileOf(king);
  if (pawns.openFiles & (1 << f)) sum += ScorePair{int16_t(-31 * heavy), int16_t(-12 * heavy)};
  if (f > 0 && (pawns.openFiles & (1 << (f - 1)))) sum += ScorePair{int16_t(-4 * heavy), int16_t(-14 * heavy)};
  if (f < 7 && (pawns.openFiles & (1 << (f + 1)))) sum += ScorePair{int16_t(-4 * heavy), int16_t(-14 * heavy)};
  Rec::add(RowKingSafety, C, sum);
  return sum;
}

template <Color C, typename Rec>
ScorePair kingTropism(const Board_0x88& board, Square sq, PieceType type) {
  const Square king = board.side[opponent(C)].square[0];
  // A pawn past the enemy king's rank bears on it no more.
  if (type == Pawn && (C == White ? rankOf(sq) > rankOf(king) : rankOf(sq) < rankOf(king))) return ScorePair{0, 0};
  const uint32_t count = kingTropismTable[type - 1][std::abs(int(sq) - int(king))];
  const ScorePair w = kingTropismWeight[type];
  const ScorePair tropism{int16_t(count * w.mg), int16_t(count * w.eg)};
  Rec::add(RowKingTropism, C, tropism);
  return tropism;
}

template ScorePair kingSafety<White, NoRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair kingSafety<Black, NoRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair kingSafety<White, ReportRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair kingSafety<Black, ReportRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair kingTropism<White, NoRecord>(const Board_0x88&, Square, PieceType);
template ScorePair kingTropism<Black, NoRecord>(const Board_0x88&, Square, PieceType);
template ScorePair kingTropism<White, ReportRecord>(const Board_0x88&, Square, PieceType);
template ScorePair kingTropism<Black, ReportRecord>(const Board_0x88&, Square, PieceType);
