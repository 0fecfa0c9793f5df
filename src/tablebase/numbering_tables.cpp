#include "tablebase/numbering_tables.h"

#include <algorithm>
#include <cstdlib>
#include <mutex>

uint32_t kingPairFlip[64][64];
uint32_t kingPairIndex[64][64];
uint32_t pairIndex[64][64];
uint32_t pawnPairIndex[24][48];
uint32_t freePawnPairIndex[48][48];
uint32_t pawnTripleIndex[48][48][48];

SquarePair kingPairSquares[kingPairCount];
SquarePair pairSquares[pairCount];
SquarePair pawnPairSquares[pawnPairCount];
SquarePair freePawnPairSquares[freePawnPairCount];
SquareTriple pawnTripleSquares[pawnTripleCount];

namespace {

bool neighbours(uint32_t s, uint32_t t) {
  int df = int(fileOf64(s)) - int(fileOf64(t));
  int dr = int(rankOf64(s)) - int(rankOf64(t));
  return std::max(std::abs(df), std::abs(dr)) <= 1;
}

bool aboveDiagonal(uint32_t s) { return rankOf64(s) > fileOf64(s); }

void buildKingPairs() {
  for (uint32_t bk = 0; bk < 64; ++bk) {
    for (uint32_t wk = 0; wk < 64; ++wk) {
      uint32_t flags = 0, b = bk, w = wk;
      if (onRightHalf(b)) flags |= 1, b = mirrorFiles(b), w = mirrorFiles(w);
      if (rankOf64(b) >= 4) flags |= 2, b = mirrorRanks(b), w = mirrorRanks(w);
      if (aboveDiagonal(b) || (rankOf64(b) == fileOf64(b) && aboveDiagonal(w))) flags |= 4;
      kingPairFlip[bk][wk] = flags;
      kingPairIndex[bk][wk] = noNumber;
    }
  }
  // The ten squares of the a1-d1-d4 triangle, in the order of the files.
  constexpr uint32_t blackKingSquares[] = {0, 1, 2, 3, 9, 10, 11, 18, 19, 27};
  uint32_t counter = 0;
  for (uint32_t bk : blackKingSquares) {
    for (uint32_t wk = 0; wk < 64; ++wk) {
      if (neighbours(bk, wk)) continue;  // also skips wk == bk
      if (rankOf64(bk) == fileOf64(bk) && aboveDiagonal(wk)) continue;
      kingPairSquares[counter] = {uint8_t(bk), uint8_t(wk)};
      kingPairIndex[bk][wk] = counter++;
    }
  }
}

void buildPairs() {
  uint32_t counter = 0;
  for (uint32_t s = 0; s < 64; ++s) {
    pairIndex[s][s] = noNumber;
    for (uint32_t t = s + 1; t < 64; ++t) {
      pairSquares[counter] = {uint8_t(s), uint8_t(t)};
      pairIndex[s][t] = pairIndex[t][s] = counter++;
    }
  }
}

void buildPawnPairs() {
  std::fill_n(&pawnPairIndex[0][0], 24 * 48, noNumber);
  uint32_t counter = 0;
  for (uint32_t s = 55; s >= 12; --s) {
    if (!onRightHalf(s)) continue;
    for (uint32_t t = s - 1; t >= 8; --t) {
      uint32_t anchor = isPawnPairAnchor(s, t) ? s : t;
      uint32_t other = anchor == s ? t : s;
      if (onRightHalf(anchor)) anchor = mirrorFiles(anchor), other = mirrorFiles(other);
      uint32_t& entry = pawnPairIndex[whitePawnSlot(anchor)][mirrorRanks(other) - 8];
      if (entry != noNumber) continue;
      pawnPairSquares[counter] = {uint8_t(anchor), uint8_t(other)};
      entry = counter++;
    }
  }
}

void buildFreePawnPairs() {
  uint32_t counter = 0;
  for (uint32_t x = 0; x < 48; ++x) {
    freePawnPairIndex[x][x] = noNumber;
    for (uint32_t y = x + 1; y < 48; ++y) {
      freePawnPairSquares[counter] = {uint8_t((x + 8) ^ 63), uint8_t((y + 8) ^ 63)};
      freePawnPairIndex[x][y] = freePawnPairIndex[y][x] = counter++;
    }
  }
}

void buildPawnTriples() {
  // Files h to e of ranks 7 down to 2, then files d to a of ranks 7 down to 2.
  uint32_t order[48];
  for (uint32_t i = 0; i < 24; ++i) {
    order[i] = (6 - i / 4) * 8 + 7 - i % 4;
    order[24 + i] = (6 - i / 4) * 8 + 3 - i % 4;
  }
  std::fill_n(&pawnTripleIndex[0][0][0], 48 * 48 * 48, noNumber);
  uint32_t counter = 0;
  for (uint32_t i = 0; i < 48; ++i) {
    for (uint32_t j = i + 1; j < 48; ++j) {
      for (uint32_t k = j + 1; k < 48; ++k) {
        uint32_t a = order[i] - 8, b = order[j] - 8, c = order[k] - 8;
        if (onRightHalf(b + 8) || onRightHalf(c + 8)) continue;
        if (pawnTripleIndex[a][b][c] != noNumber) continue;
        pawnTripleSquares[counter] = {{uint8_t(a + 8), uint8_t(b + 8), uint8_t(c + 8)}};
        for (uint32_t* entry : {&pawnTripleIndex[a][b][c], &pawnTripleIndex[a][c][b], &pawnTripleIndex[b][a][c],
                                &pawnTripleIndex[b][c][a], &pawnTripleIndex[c][a][b], &pawnTripleIndex[c][b][a]})
          *entry = counter;
        ++counter;
      }
    }
  }
}

// Built before main so that no probe can see an empty table.
const bool tablesBuiltAtStart = (buildNumberingTables(), true);

}  // namespace

void buildNumberingTables() {
  static std::once_flag built;
  std::call_once(built, [] {
    buildKingPairs();
    buildPairs();
    buildPawnPairs();
    buildFreePawnPairs();
    buildPawnTriples();
  });
}

SquareTriple tripleSquares(uint32_t number) {
  auto choose3 = [](uint32_t n) { return n * (n - 1) * (n - 2) / 6; };
  auto choose2 = [](uint32_t n) { return n * (n - 1) / 2; };
  uint32_t hi = 2, mid = 1;
  while (hi < 63 && choose3(hi + 1) <= number) ++hi;
  number -= choose3(hi);
  while (mid + 1 < hi && choose2(mid + 1) <= number) ++mid;
  number -= choose2(mid);
  return {{uint8_t(hi), uint8_t(mid), uint8_t(number)}};
}
