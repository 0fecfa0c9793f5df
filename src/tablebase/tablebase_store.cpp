#include "tablebase/tablebase_store.h"

#include <cstdio>

#include "tablebase/block_cache.h"
#include "tablebase/block_decompression.h"
#include "tablebase/block_offsets.h"
#include "tablebase/endgame_catalogue.h"
#include "tablebase/tablebase_files.h"

std::mutex storeMutex;

namespace {

constexpr uint32_t ListEnd = 64;
constexpr int MaxMen = 17;

uint8_t inputArea[TransferAreaSize];
uint8_t outputArea[TransferAreaSize];

struct SideList {
  uint32_t squares[MaxMen];
  uint8_t pieces[MaxMen];
  int count = 0;
};

SideList copyList(const uint32_t* squares, const uint8_t* pieces) {
  SideList list;
  while (list.count < MaxMen - 1 && pieces[list.count] != 0 && squares[list.count] != ListEnd) {
    list.squares[list.count] = squares[list.count];
    list.pieces[list.count] = pieces[list.count];
    ++list.count;
  }
  list.squares[list.count] = ListEnd;
  list.pieces[list.count] = 0;
  return list;
}

// Highest piece code first, squares kept with their pieces.
void sortByPiece(SideList& list) {
  for (int i = 1; i < list.count; ++i)
    for (int j = i; j > 0 && list.pieces[j] > list.pieces[j - 1]; --j) {
      std::swap(list.pieces[j], list.pieces[j - 1]);
      std::swap(list.squares[j], list.squares[j - 1]);
    }
}

bool isWinFor(TbValue v, uint32_t side) { return tbKind(v) == (side == 0 ? 1u : 2u); }
bool isLossFor(TbValue v, uint32_t side) { return tbKind(v) == (side == 0 ? 2u : 1u); }

// True when `candidate` is better than `current` for the side to move.
bool better(TbValue candidate, TbValue current, uint32_t side) {
  auto rank = [side](TbValue v) { return isWinFor(v, side) ? 2 : isLossFor(v, side) ? 0 : 1; };
  if (rank(candidate) != rank(current)) return rank(candidate) > rank(current);
  if (isWinFor(candidate, side)) return tbPlies(candidate) < tbPlies(current);
  if (isLossFor(candidate, side)) return tbPlies(candidate) > tbPlies(current);
  return false;
}

// Reads, decodes and caches the block of (endgame, side, index). Under the mutex.
bool loadBlock(EndgameRow& row, uint32_t side, uint32_t index) {
  if (index >= row.indexCount || blockCache.blockCount == 0) return false;
  CacheEntry* entry = takeCacheEntry();
  if (!row.file && !openEndgameFile(row.id)) return false;
  if (!loadBlockOffsets(row.id)) return false;
  const BlockOffsets& table = blockOffsets[row.id];
  const uint32_t perSide = (row.indexCount - 1) / BlockPositions + 1;
  const uint32_t block = perSide * side + index / BlockPositions;
  const uint32_t first = index / BlockPositions * BlockPositions;
  const uint32_t length = row.indexCount - first < BlockPositions ? row.indexCount - first : BlockPositions;
  // A block the table doesn't have, or one the areas can't hold, is a damaged file.
  if (block + 1 >= table.count) return false;
  const uint32_t size = table.offsets[block + 1] - table.offsets[block];
  if (size < 2 || size > TransferAreaSize) return false;
  if (std::fseek(row.file, long(table.base + table.offsets[block]), SEEK_SET) != 0 ||
      std::fread(inputArea, 1, size, row.file) != size)
    return false;
  if (!decompressBlock(tablebaseStore.compressionScheme, inputArea + 1, size - 1, outputArea, length)) return false;
  for (uint32_t i = 0; i < length; ++i) entry->values[i] = decodeStoredByte(outputArea[i], side);
  entry->endgame = row.id;
  entry->side = int32_t(side);
  entry->firstIndex = int32_t(first);
  return true;
}

// The cached or loaded value; false when the probe must answer no.
bool lookUp(EndgameRow& row, uint32_t side, uint32_t index, bool hard, TbValue& value) {
  std::lock_guard<std::mutex> lock(storeMutex);
  if (!blockCache.ready) {
    if (hard) row.status = 4;
    return false;
  }
  if (findCachedValue(row.id, int32_t(side), index, value)) return true;
  if (!hard) return false;
  if (!loadBlock(row, side, index)) {
    // One failed read disables the endgame until the tablebases are closed;
    // the entry it was to fill stays empty.
    row.status = 4;
    return false;
  }
  return findCachedValue(row.id, int32_t(side), index, value);
}

}  // namespace

bool probeEndgame(uint32_t side, uint32_t epSquare, const uint32_t* whiteSquares, const uint32_t* blackSquares,
                  const uint8_t* whitePieces, const uint8_t* blackPieces, bool hard, uint32_t& kind,
                  uint32_t& plies) {
  kind = 3;
  plies = 0;
  SideList white = copyList(whiteSquares, whitePieces);
  SideList black = copyList(blackSquares, blackPieces);
  if (white.count == 0 || black.count == 0) return false;

  // Two kings: no file, only the test of their squares.
  if (white.count == 1 && black.count == 1) {
    // The family numbers a third man too: any free square stands in for it.
    uint32_t spare = 0;
    while (spare == white.squares[0] || spare == black.squares[0]) ++spare;
    const uint32_t kings[3] = {white.squares[0], spare, ListEnd};
    uint32_t index;
    kind = indexFamilies[FamilyKxk].positionToIndex(kings, black.squares, index) ? 0 : 3;
    return true;
  }

  sortByPiece(white);
  sortByPiece(black);
  int32_t id;
  bool exchanged = false;
  if (!findEndgame(white.pieces, black.pieces, id)) {
    if (!findEndgame(black.pieces, white.pieces, id)) return false;
    // The table has the other colours: mirror the board rank for rank.
    std::swap(white, black);
    for (int i = 0; i < white.count; ++i) white.squares[i] ^= 56;
    for (int i = 0; i < black.count; ++i) black.squares[i] ^= 56;
    side ^= 1;
    if (epSquare != ListEnd) epSquare ^= 56;
    exchanged = true;
  }
  EndgameRow& row = endgameCatalogue[id];
  if (row.status != 0) return false;

  TbValue value = TbUnknown;
  uint32_t index;
  if (row.positionToIndex(white.squares, black.squares, index)) {
    if (!lookUp(row, side, index, hard, value)) return false;
  }

  bool failed = false;
  if (epSquare != ListEnd) {
    // The pawn that has just made its double step, and the pawns beside it that may take it.
    const uint32_t passed = epSquare ^ 8;
    SideList& mover = side == 0 ? white : black;
    SideList& other = side == 0 ? black : white;
    int victim = -1;
    for (int i = 0; i < other.count; ++i)
      if (other.squares[i] == passed && other.pieces[i] == 1) victim = i;
    for (int i = 0; victim >= 0 && i < mover.count; ++i) {
      uint32_t sq = mover.squares[i];
      if (mover.pieces[i] != 1 || sq / 8 != passed / 8 || (sq % 8 + 1 != passed % 8 && sq % 8 != passed % 8 + 1))
        continue;
      SideList moverAfter = mover, otherAfter = other;
      moverAfter.squares[i] = epSquare;
      for (int j = victim; j < otherAfter.count; ++j) {
        otherAfter.squares[j] = otherAfter.squares[j + 1];
        otherAfter.pieces[j] = otherAfter.pieces[j + 1];
      }
      --otherAfter.count;
      const SideList& w = side == 0 ? moverAfter : otherAfter;
      const SideList& b = side == 0 ? otherAfter : moverAfter;
      uint32_t k, p;
      if (!probeEndgame(side ^ 1, ListEnd, w.squares, b.squares, w.pieces, b.pieces, hard, k, p)) {
        failed = true;
        break;
      }
      TbValue candidate = TbValue(p << 3 | k);
      if (k == 1 || k == 2) candidate = TbValue(candidate + 8);
      if (tbKind(candidate) >= 3) continue;
      if (tbKind(value) >= 3 || better(candidate, value, side)) value = candidate;
    }
  }
  if (failed) return false;
  kind = tbKind(value);
  plies = tbPlies(value);
  if (exchanged && (kind == 1 || kind == 2)) kind ^= 3;
  return true;
}
