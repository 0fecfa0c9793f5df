#include "eval/pawn_structure.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <mutex>

#include "eval/score_pair_ops.h"
#include "board/relaxed_field.h"

uint64_t frontFileMask[2][64];
uint64_t frontSpanMask[2][64];
uint64_t supportMask[2][64];

namespace {

constexpr ScorePair IsolatedPenalty{-27, -9};
constexpr ScorePair DoubledPenalty{-12, -30};
constexpr ScorePair BackwardAttackedPenalty{-22, -11};
constexpr ScorePair BackwardBlockedPenalty{0, -1};

constexpr ScorePair passedPawnBonus[12] = {{0, 0},  {69, 173}, {82, 131}, {32, 79}, {16, 52}, {4, 28},
                                           {20, 8}, {3, 18},   {11, 12},  {0, 0},   {0, 0},  {0, 0}};
constexpr ScorePair unstoppablePawnBonus[7] = {{0, 0}, {128, 228}, {165, 273}, {170, 215},
                                               {90, 135}, {58, 38}, {238, 0}};

constexpr uint64_t bit(int sq) { return uint64_t(1) << sq; }

// A table, since the baseline x86-64 has no popcount instruction and the
// library's routine costs a call.
constexpr auto bitsInByte = [] {
  std::array<uint8_t, 256> t{};
  for (int v = 1; v < 256; ++v) t[size_t(v)] = uint8_t((v & 1) + t[size_t(v >> 1)]);
  return t;
}();
int popCount8(uint8_t v) { return bitsInByte[v]; }

uint64_t pack(ScorePair score, uint8_t open, uint8_t halfOpen) {
  return uint64_t(uint16_t(score.mg)) | uint64_t(uint16_t(score.eg)) << 16 | uint64_t(open) << 32 |
         uint64_t(halfOpen) << 40;
}

// The backward test of a White pawn on s (Black: mirrored); both outcomes may apply.
template <Color C>
ScorePair backwardPenalty(int s, const uint64_t* pawns, uint8_t isolatedFiles) {
  constexpr Color Them = opponent(C);
  const int f = s & 7, r = s >> 3;  // rank index 0..7
  const int rel = C == White ? r : 7 - r;
  if (isolatedFiles & (1 << f)) return {0, 0};
  if (rel >= 5) return {0, 0};  // ranks 6 and 7 of its own side
  if (supportMask[C][s] & pawns[C]) return {0, 0};
  const uint64_t ahead = pawns[C] & frontSpanMask[C][s] & ~frontFileMask[C][s];
  if (!ahead) return {0, 0};
  // The nearest rank ahead that holds a neighbour.
  const int step = C == White ? 1 : -1;
  int t = r + step;
  while (!(ahead & (0xFFULL << (8 * t)))) t += step;
  bool attacked = false, blocked = false;
  for (int q = r + step; q != t + step; q += step) {
    const int sq = q * 8 + f;
    if (pawns[Them] & bit(sq)) blocked = true;
    // An enemy pawn one rank further on, on a neighbouring file, attacks the square.
    const int beyond = q + step;
    if (beyond < 0 || beyond > 7) continue;
    if (f > 0 && (pawns[Them] & bit(beyond * 8 + f - 1))) attacked = true;
    if (f < 7 && (pawns[Them] & bit(beyond * 8 + f + 1))) attacked = true;
  }
  ScorePair penalty{0, 0};
  if (attacked) penalty += BackwardAttackedPenalty;
  if (blocked) penalty += BackwardBlockedPenalty;
  return penalty;
}

template <Color C>
ScorePair structureOf(const uint64_t* pawns, const uint8_t (&fileCount)[8]) {
  ScorePair sum{0, 0};
  uint8_t isolatedFiles = 0;
  for (int f = 0; f < 8; ++f) {
    if (!fileCount[f]) continue;
    const bool left = f > 0 && fileCount[f - 1], right = f < 7 && fileCount[f + 1];
    if (!left && !right) {
      sum += IsolatedPenalty;
      isolatedFiles |= uint8_t(1 << f);
    }
    if (fileCount[f] >= 2) sum += DoubledPenalty;
  }
  for (uint64_t rest = pawns[C]; rest; rest &= rest - 1)
    sum += backwardPenalty<C>(__builtin_ctzll(rest), pawns, isolatedFiles);
  return sum;
}

// The union of the front spans of these pawns of colour C, all at once: the
// squares ahead of them on their files and both neighbours. A pawn of the
// other colour is passed when it stands on none of them.
template <Color C>
uint64_t frontSpans(uint64_t pawns) {
  uint64_t ahead = C == White ? pawns << 8 : pawns >> 8;
  ahead |= C == White ? ahead << 8 : ahead >> 8;
  ahead |= C == White ? ahead << 16 : ahead >> 16;
  ahead |= C == White ? ahead << 32 : ahead >> 32;
  constexpr uint64_t fileA = 0x0101010101010101ULL, fileH = fileA << 7;
  return ahead | (ahead & ~fileH) << 1 | (ahead & ~fileA) >> 1;
}

thread_local uint64_t probesOnThisThread = 0;  // a statistic only

void buildPawnMasks() {
  for (int c = 0; c < 2; ++c)
    for (int s = 0; s < 64; ++s) {
      const int f = s & 7, r = s >> 3;
      uint64_t front = 0, support = 0;
      if (c == White) {
        for (int q = r + 1; q <= 6; ++q) front |= bit(q * 8 + f);
        for (int q = 1; q <= r; ++q) support |= bit(q * 8 + f);
      } else {
        for (int q = r - 1; q >= 1; --q) front |= bit(q * 8 + f);
        for (int q = 6; q >= r; --q) support |= bit(q * 8 + f);
      }
      uint64_t span = front, sides = 0;
      if (f > 0) span |= front >> 1, sides |= support >> 1;
      if (f < 7) span |= front << 1, sides |= support << 1;
      frontFileMask[c][s] = front;
      frontSpanMask[c][s] = span;
      supportMask[c][s] = sides;
    }
}

}  // namespace

uint64_t pawnHashProbesOnThisThread() { return probesOnThisThread; }

void initPawnStructureTables() {
  // Built once: every search thread asks for them as it is made, maybe while others search.
  static std::once_flag ready;
  std::call_once(ready, buildPawnMasks);
}

template <typename Rec>
ScorePair evaluatePawnStructure(const Board_0x88& board, PawnHash& pawnHash, PawnInfo& info) {
  const uint64_t key = board.history[board.ply].pawnHashKey;
  if (key == 0) return ScorePair{0, 0};
  ++probesOnThisThread;
  // Threads share the table without a lock. Each word is a relaxed atomic
  // of its own, and the key is stored XOR the three data words: an entry
  // torn by two writers fails the key test and is computed afresh.
  PawnHashEntry& slot = pawnHash.bucketFor(key).entries[0];
  const uint64_t stored = loadRelaxed(slot.key), p0 = loadRelaxed(slot.pawns[0]), p1 = loadRelaxed(slot.pawns[1]),
                 packed = loadRelaxed(slot.packed);
  ScorePair score;
  if ((stored ^ p0 ^ p1 ^ packed) == key) {
    ++pawnHash.hits;
    info.pawns[White] = p0;
    info.pawns[Black] = p1;
    score = ScorePair{int16_t(uint16_t(packed)), int16_t(uint16_t(packed >> 16))};
    Rec::add(RowPawnStructure, White, score);
    info.openFiles = uint8_t(packed >> 32);
    info.halfOpenFiles = uint8_t(packed >> 40);
  } else {
    for (int c = 0; c < 2; ++c)
      for (int s = FirstPawnSlot; s <= LastSlot; ++s) {
        const Square sq = board.side[c].square[s];
        if (!onBoard(sq) || board.piece[sq] != Pawn) continue;  // an officer in a pawn slot
        info.pawns[c] |= bit(toSquare64(sq));
        ++info.pawnFileCount[c][fileOf(sq)];
      }
    for (int f = 0; f < 8; ++f) {
      const int owners = (info.pawnFileCount[White][f] > 0) + (info.pawnFileCount[Black][f] > 0);
      if (owners == 0) info.openFiles |= uint8_t(1 << f);
      if (owners == 1) info.halfOpenFiles |= uint8_t(1 << f);
    }
    const ScorePair w = structureOf<White>(info.pawns, info.pawnFileCount[White]);
    const ScorePair b = structureOf<Black>(info.pawns, info.pawnFileCount[Black]);
    score = w - b;
    Rec::add(RowWeakPawns, White, w);
    Rec::add(RowWeakPawns, Black, b);
    const uint64_t data = pack(score, info.openFiles, info.halfOpenFiles);
    storeRelaxed(slot.pawns[0], info.pawns[White]);
    storeRelaxed(slot.pawns[1], info.pawns[Black]);
    storeRelaxed(slot.packed, data);
    storeRelaxed(slot.key, key ^ info.pawns[White] ^ info.pawns[Black] ^ data);
  }
  info.openFileCount = uint8_t(popCount8(info.openFiles));
  info.halfOpenFileCount = uint8_t(popCount8(info.halfOpenFiles));
  // No enemy pawn in a pawn's front span is the same as the pawn standing in
  // no enemy pawn's front span.
  info.passers[White] = info.pawns[White] & ~frontSpans<Black>(info.pawns[Black]);
  info.passers[Black] = info.pawns[Black] & ~frontSpans<White>(info.pawns[White]);
  return score;
}

template <Color C, typename Rec>
ScorePair passedPawnTerms(const Board_0x88& board, const PawnInfo& info, MaterialSignature enemy) {
  constexpr Color Them = opponent(C);
  ScorePair sum{0, 0};
  for (uint64_t rest = info.passers[C]; rest; rest &= rest - 1) {
    const int s = __builtin_ctzll(rest);
    const int f = s & 7, i = C == White ? s >> 3 : 7 - (s >> 3);
    int d = i == 1 ? 5 : 7 - i;
    bool obstructed = false;
    const int step = C == White ? 16 : -16;
    for (int sq = int(toSquare88(Square64(s))) + step; onBoard(sq); sq += step) {
      if (board.piece[sq] == NoPiece) continue;
      ++d;
      if (board.color[sq] == Them) obstructed = true;
    }
    const ScorePair bonus = passedPawnBonus[d];
    sum += obstructed ? ScorePair{int16_t(bonus.mg / 4), int16_t(bonus.eg / 4)} : bonus;
    if (obstructed || signatureField(enemy, SigMen) != signatureField(enemy, SigPawns)) continue;
    // The rule of the square: can the enemy king reach the promotion square in time?
    const Square king = board.side[Them].square[0];
    const int kingRank = C == White ? rankOf(king) : 7 - rankOf(king);
    int kd = std::max(std::abs(f - fileOf(king)), 7 - kingRank);
    if (board.sideToMove == Them) --kd;
    if (kd > d) sum += unstoppablePawnBonus[d];
  }
  Rec::add(RowPassedPawns, C, sum);
  return sum;
}

template ScorePair evaluatePawnStructure<NoRecord>(const Board_0x88&, PawnHash&, PawnInfo&);
template ScorePair evaluatePawnStructure<ReportRecord>(const Board_0x88&, PawnHash&, PawnInfo&);
template ScorePair passedPawnTerms<White, NoRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair passedPawnTerms<Black, NoRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair passedPawnTerms<White, ReportRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair passedPawnTerms<Black, ReportRecord>(const Board_0x88&, const PawnInfo&, MaterialSignature);
