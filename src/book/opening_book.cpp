#include "book/opening_book.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "board/move_generation.h"
#include "book/polyglot_key.h"

namespace {

bool readBigEndian(FILE* file, int bytes, uint64_t& value) {
  unsigned char buffer[8];
  if (std::fread(buffer, 1, size_t(bytes), file) != size_t(bytes)) return false;
  value = 0;
  for (int i = 0; i < bytes; ++i) value = (value << 8) | buffer[i];
  return true;
}

}  // namespace

void OpeningBook::setPath(const char* text) {
  std::lock_guard<std::mutex> guard(lock);
  path[255] = '\0';
  std::strncpy(path, text, 255);
  struct stat info;
  entryCount = stat(path, &info) == 0 ? uint64_t(info.st_size) / 16 : 0;
}

std::string OpeningBook::currentPath() {
  std::lock_guard<std::mutex> guard(lock);
  return path;
}

bool OpeningBook::readEntry(uint64_t index, BookEntry& entry) {
  if (!file || index >= entryCount || std::fseek(file, long(index * 16), SEEK_SET) != 0) return false;
  uint64_t key, move, weight, learn;
  if (!readBigEndian(file, 8, key) || !readBigEndian(file, 2, move) || !readBigEndian(file, 2, weight) ||
      !readBigEndian(file, 4, learn))
    return false;
  entry = BookEntry{key, uint16_t(move), uint16_t(weight), uint32_t(learn)};
  return true;
}

bool OpeningBook::collect(uint64_t key, BookEntry* list, uint32_t& count) {
  // Binary search over signed indices, so that an empty book gives hi = -1.
  int64_t lo = 0, hi = int64_t(entryCount) - 1, found = -1;
  errno = 0;
  while (lo <= hi) {
    int64_t mid = (lo + hi + 1) / 2;
    uint64_t midKey;
    if (std::fseek(file, long(mid * 16), SEEK_SET) != 0 || !readBigEndian(file, 8, midKey)) {
      if (errno) std::printf("ERROR: %s\n", std::strerror(errno));
      return false;
    }
    if (midKey == key) {
      found = mid;
      break;
    }
    if (key < midKey)
      hi = mid - 1;
    else
      lo = mid + 1;
  }
  if (found < 0) return false;

  // The entry found, then its equals before it going back, then those behind it.
  count = 0;
  if (!readEntry(uint64_t(found), list[count++])) return false;
  for (int64_t i = found - 1; i >= 0 && count < MaxEntriesPerPosition; --i) {
    if (!readEntry(uint64_t(i), list[count])) return false;
    if (list[count].key != key) break;
    ++count;
  }
  for (uint64_t i = uint64_t(found) + 1; i < entryCount && count < MaxEntriesPerPosition; ++i) {
    if (!readEntry(i, list[count])) return false;
    if (list[count].key != key) break;
    ++count;
  }
  return true;
}

bool OpeningBook::probe(Board_0x88& board, Move& move, const Move* allowed, uint32_t allowedCount) {
  const uint64_t key = polyglotKey(board);
  BookEntry list[MaxEntriesPerPosition];
  uint32_t count = 0;
  {
    std::lock_guard<std::mutex> guard(lock);
    file = std::fopen(path, "rb");
    if (!file) return false;
    bool found = collect(key, list, count);
    std::fclose(file);
    file = nullptr;
    if (!found) return false;
  }

  // A wrong entry must never reach makeMove: only legal moves take part in
  // the choice, each as the generator made it.
  MoveList legal;
  bool inCheck;
  generateLegalMoves(board, legal, inCheck);
  Move candidates[MaxEntriesPerPosition];
  uint16_t weights[MaxEntriesPerPosition];
  uint32_t playable = 0;
  uint32_t total = 0;
  for (uint32_t i = 0; i < count; ++i) {
    Move decoded = decodeMove(board, list[i].move);
    if (decoded == NoMove) continue;
    bool listed = allowedCount == 0;
    for (uint32_t j = 0; j < allowedCount && !listed; ++j) listed = sameMove(allowed[j], decoded);
    if (!listed) continue;
    for (uint32_t j = 0; j < legal.count; ++j) {
      if (!sameMove(legal.moves[j].move, decoded)) continue;
      candidates[playable] = legal.moves[j].move;
      weights[playable++] = list[i].weight;
      total += list[i].weight;
      break;
    }
  }
  if (playable == 0) return false;
  if (total == 0) {
    move = candidates[0];
    return true;
  }
  uint32_t r = uint32_t(std::rand() & 0x7fffffff) % total;
  uint32_t sum = 0;
  for (uint32_t i = 0; i < playable; ++i) {
    sum += weights[i];
    if (sum > r) {
      move = candidates[i];
      return true;
    }
  }
  return false;
}

Move OpeningBook::decodeMove(const Board_0x88& board, uint16_t bookMove) {
  Square to = makeSquare(bookMove & 7, (bookMove >> 3) & 7);
  Square from = makeSquare((bookMove >> 6) & 7, (bookMove >> 9) & 7);
  unsigned promotion = (bookMove >> 12) & 7;
  auto holds = [&](Square sq, Color c, PieceType type) { return board.piece[sq] == type && board.color[sq] == c; };
  // Castling stands as the king taking its own rook or as its two-step.
  for (Color c : {White, Black}) {
    Square kingHome = c == White ? 4 : 116;
    if (from != kingHome || !holds(from, c, King)) continue;
    unsigned base = c == White ? CastleWhiteKingSide : CastleBlackKingSide;
    if ((to == kingHome + 2 || to == kingHome + 3) && holds(Square(kingHome + 3), c, Rook))
      return encodeMove88(from, Square(kingHome + 2), MoveCastling, base);
    if ((to == kingHome - 2 || to == kingHome - 4) && holds(Square(kingHome - 4), c, Rook))
      return encodeMove88(from, Square(kingHome - 2), MoveCastling, base + 1);
  }
  if (promotion > 4) return NoMove;
  if (promotion) return encodeMove88(from, to, MovePromotion, promotion - 1);
  if (board.piece[from] == Pawn) {
    if (to == board.epSquare) return encodeMove88(from, to, MoveEnPassant);
    bool white = board.color[from] == White;
    if (rankOf(from) == (white ? 1 : 6) && to == from + (white ? 32 : -32))
      return encodeMove88(from, to, MoveNormal, DetailDoubleStep);
  }
  return encodeMove88(from, to);
}
