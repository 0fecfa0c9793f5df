#include "board/zobrist.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

uint64_t pieceKey[2][6][64];
uint64_t castlingKey[16];
uint64_t epKey[8];
uint64_t sideKey;

namespace {

// Only the low 11 bits of each rand() are trusted.
uint64_t drawKey() {
  uint64_t key = 0;
  key |= uint64_t(rand() & 0x7FF);
  key |= uint64_t(rand() & 0x7FF) << 11;
  key |= uint64_t(rand() & 0x7FF) << 22;
  key |= uint64_t(rand() & 0x7FF) << 33;
  key |= uint64_t(rand() & 0x7FF) << 44;
  key |= uint64_t(rand() & 0x1FF) << 55;
  return key;
}

}  // namespace

void initZobristKeys() {
  srand(327641845);
  std::memset(pieceKey, 0, sizeof pieceKey);
  std::memset(castlingKey, 0, sizeof castlingKey);
  std::memset(epKey, 0, sizeof epKey);
  sideKey = 0;
  for (int color = 0; color < 2; ++color)
    for (int type = 0; type < 6; ++type)
      for (int sq = 0; sq < 64; ++sq) pieceKey[color][type][sq] = drawKey();
  for (int bit : {1, 2, 4, 8}) castlingKey[bit] = drawKey();
  for (int file = 0; file < 8; ++file) epKey[file] = drawKey();
  sideKey = drawKey();
}
