// Opening positions for engine matches, drawn from a PolyGlot book: walks
// from the start position along book moves chosen by their weights, stops
// at a depth of 8 to 12 plies and keeps each position once. The walk uses
// its own fixed-seed generator, so the same book gives the same file.
//
// usage: tolva_book_openings BOOK [count [seed]] > openings.epd   (defaults 400 and 1)
// bench/openings.epd is `tolva_book_openings tests/data/performance.bin`.
// Each line is an EPD: board, side to move, castling rights, en passant.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "book/opening_book.h"
#include "book/polyglot_key.h"

namespace {

constexpr uint32_t ShallowestPly = 8, DeepestPly = 12;

bool readBook(const char* path, std::vector<BookEntry>& entries) {
  FILE* file = std::fopen(path, "rb");
  if (!file) return false;
  unsigned char raw[16];
  while (std::fread(raw, 1, 16, file) == 16) {
    auto field = [&](int from, int bytes) {
      uint64_t value = 0;
      for (int i = from; i < from + bytes; ++i) value = (value << 8) | raw[i];
      return value;
    };
    entries.push_back(BookEntry{field(0, 8), uint16_t(field(8, 2)), uint16_t(field(10, 2)), uint32_t(field(12, 4))});
  }
  std::fclose(file);
  return !entries.empty();
}

// The legal book moves of this position with their weights (entries of weight 0 are never played).
void bookMoves(const std::vector<BookEntry>& book, Board_0x88& board, std::vector<std::pair<Move, uint32_t>>& moves) {
  moves.clear();
  MoveList legal;
  bool inCheck = false;
  generateLegalMoves(board, legal, inCheck);
  const uint64_t key = polyglotKey(board);
  auto first = std::lower_bound(book.begin(), book.end(), key,
                                [](const BookEntry& e, uint64_t k) { return e.key < k; });
  for (auto e = first; e != book.end() && e->key == key; ++e) {
    const Move move = OpeningBook::decodeMove(board, e->move);
    for (uint32_t i = 0; i < legal.count; ++i)
      if (e->weight > 0 && sameMove(legal.moves[i].move, move)) moves.emplace_back(legal.moves[i].move, e->weight);
  }
}

// The first four fields of the FEN.
std::string epdOf(const Board_0x88& board) {
  const std::string fen = positionToFen(board);
  size_t end = 0;
  for (int field = 0; field < 4; ++field) end = fen.find(' ', end + 1);
  return fen.substr(0, end);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s BOOK [count [seed]]\n", argv[0]);
    return 2;
  }
  const size_t count = argc > 2 ? size_t(std::atoi(argv[2])) : 400;
  const uint64_t seed = argc > 3 ? uint64_t(std::atoll(argv[3])) : 1;
  std::vector<BookEntry> book;
  if (!readBook(argv[1], book)) {
    std::fprintf(stderr, "cannot read the book %s\n", argv[1]);
    return 1;
  }
  // Raw 64-bit draws reduced by hand: the standard distributions differ between libraries.
  std::mt19937_64 random(seed);
  std::set<std::string> seen;
  std::vector<std::pair<Move, uint32_t>> moves;
  size_t written = 0;
  for (size_t walk = 0; written < count && walk < count * 100; ++walk) {
    Board_0x88 board;
    setupFromFen(board, startPositionFen);
    const uint32_t depth = ShallowestPly + uint32_t(random() % (DeepestPly - ShallowestPly + 1));
    uint32_t ply = 0;
    for (; ply < depth; ++ply) {
      bookMoves(book, board, moves);
      if (moves.empty()) break;
      uint64_t total = 0;
      for (const auto& m : moves) total += m.second;
      uint64_t pick = random() % total;
      size_t chosen = 0;
      while (pick >= moves[chosen].second) pick -= moves[chosen++].second;
      board.history[board.ply].movePlayed = moves[chosen].first;
      UndoRecord undo;
      makeMoveForSide(board, moves[chosen].first, undo);
    }
    if (ply < depth) continue;
    const std::string epd = epdOf(board);
    if (!seen.insert(epd).second) continue;
    std::printf("%s\n", epd.c_str());
    ++written;
  }
  if (written < count) std::fprintf(stderr, "only %zu distinct positions found\n", written);
  return written > 0 ? 0 : 1;
}
