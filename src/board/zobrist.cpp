#include "board/zobrist.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "board/castling.h"

uint64_t pieceKey[2][6][64];
uint64_t castlingKey[16];
uint64_t castlingRookKey[2][8];
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

// The Chess960 files come from a generator of their own (splitmix64), so
// that rand() is left as before and every other key stays what it was.
uint64_t nextChess960Key(uint64_t& state) {
  uint64_t z = (state += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
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
  uint64_t state = 960;
  for (int color = 0; color < 2; ++color)
    for (int file = 0; file < 8; ++file)
      castlingRookKey[color][file] = file == 7   ? castlingKey[color == White ? CastleWK : CastleBK]
                                     : file == 0 ? castlingKey[color == White ? CastleWQ : CastleBQ]
                                                 : nextChess960Key(state);
}
