#pragma once
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

#include "board/board.h"
#include "board/move.h"

// One 16-byte entry of a PolyGlot book, fields converted from big-endian.
struct BookEntry {
  uint64_t key;
  uint16_t move;
  uint16_t weight;
  uint32_t learn;
};

// A PolyGlot opening book on disk. The file is opened only for the length of
// a probe; nothing is cached and nothing is written. `option bookFilePath`
// may change the path while thread 0 probes, hence the lock.
class OpeningBook {
 public:
  static constexpr uint32_t MaxEntriesPerPosition = 256;

  OpeningBook() { setPath("book.bin"); }
  // Sets the file and reads its size once: entryCount = size / 16, or 0.
  void setPath(const char* text);
  // A copy of the path, for the feature line.
  std::string currentPath();
  // False if `index` is out of range or the entry can't be read whole (only
  // during a probe, while the file is open).
  bool readEntry(uint64_t index, BookEntry& entry);
  // A move of the book for this position, chosen by weight among the entries
  // whose move is legal here and, when `allowedCount` isn't 0, among
  // `allowed`. False when there is none: the engine searches.
  bool probe(Board_0x88& board, Move& move, const Move* allowed = nullptr, uint32_t allowedCount = 0);
  // The book's move field as a move on this board (0 for a promotion field
  // above 4), without any test of legality.
  static Move decodeMove(const Board_0x88& board, uint16_t bookMove);

  char path[256] = {};
  uint64_t entryCount = 0;

 private:
  std::mutex lock;
  // Fills `list` with the entries of `key`; false on a failed read or no entry.
  bool collect(uint64_t key, BookEntry* list, uint32_t& count);
  FILE* file = nullptr;
};
