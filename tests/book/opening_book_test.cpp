// PolyGlot keys against the published values, and the book: the real book,
// damaged copies of it, and books written here for choice and decoding.
#include <unistd.h>

#include <iterator>
#include <map>
#include <random>

#include "../board/board_test_support.h"
#include "book/opening_book.h"
#include "book/polyglot_key.h"

namespace {

// The book's move field: to, from, promotion piece; castling as the king taking its rook.
uint16_t bookMove(const std::string& m, unsigned promotion = 0) {
  return uint16_t((m[2] - 'a') | (m[3] - '1') << 3 | (m[0] - 'a') << 6 | (m[1] - '1') << 9 | promotion << 12);
}

std::string writeFile(const std::string& bytes, const std::string& name) {
  std::string path = ::testing::TempDir() + "tolva_book_" + std::to_string(getpid()) + name;
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

// The entries in the order given, big-endian as on disk.
std::string writeBook(const std::vector<BookEntry>& entries, const std::string& name) {
  std::string bytes;
  for (const BookEntry& e : entries) {
    for (int i = 56; i >= 0; i -= 8) bytes += char(e.key >> i);
    bytes += {char(e.move >> 8), char(e.move), char(e.weight >> 8), char(e.weight), 0, 0, 0, 0};
  }
  return writeFile(bytes, name);
}

// How often each move comes out of `picks` probes.
std::map<std::string, int> tally(OpeningBook& book, Board_0x88& board, int picks) {
  std::map<std::string, int> counts;
  for (Move m = NoMove; picks-- > 0;) counts[book.probe(board, m) ? moveToString(m) : "none"]++;
  return counts;
}

Board_0x88 after(const std::string& moves) {
  Board_0x88 board;
  EXPECT_TRUE(setupFromFen(board, startPositionFen) && playMoves(board, moves)) << moves;
  return board;
}

TEST(PolyglotKey, PublishedKeysOfPositionsReachedByMoves) {
  const std::pair<const char*, uint64_t> cases[] = {
      {"", 0x463b96181691fc9cULL},
      {"e2e4", 0x823c9b50fd114196ULL},
      {"e2e4 d7d5", 0x0756b94461c50fb0ULL},
      {"e2e4 d7d5 e4e5", 0x662fafb965db29d4ULL},
      {"e2e4 d7d5 e4e5 f7f5", 0x22a48b5a8e47ff78ULL},
      {"e2e4 d7d5 e4e5 f7f5 e1e2", 0x652a607ca3f242c1ULL},
      {"e2e4 d7d5 e4e5 f7f5 e1e2 e8f7", 0x00fdd303c946bdd9ULL},
      {"a2a4 b7b5 h2h4 b5b4 c2c4", 0x3c8123ea7b067637ULL},
      {"a2a4 b7b5 h2h4 b5b4 c2c4 b4c3 a1a3", 0x5c3f9b829b279560ULL},
  };
  for (const auto& [moves, key] : cases) EXPECT_EQ(polyglotKey(after(moves)), key) << moves;
}

TEST(OpeningBook, RealBookAndDamagedCopiesGiveNoMoveOrALegalOne) {
  const std::string realPath = TOLVA_TEST_DATA_DIR "/performance.bin";
  std::ifstream in(realPath, std::ios::binary);
  const std::string real{std::istreambuf_iterator<char>(in), {}};
  ASSERT_GT(real.size(), 16u * 90000);
  OpeningBook book;
  book.setPath(realPath.c_str());
  EXPECT_EQ(book.entryCount, real.size() / 16);
  Board_0x88 board = after("");
  std::srand(3);
  std::map<std::string, int> counts = tally(book, board, 200);
  EXPECT_GT(counts.size(), 1u);  // weighted, not always the same move
  for (const auto& [move, n] : counts) EXPECT_TRUE(move == "e2e4" || move == "d2d4" || move == "c2c4" || move == "g1f3") << move;
  Move m;
  board = after("a2a3 h7h6 h2h3 a7a6");
  EXPECT_FALSE(book.probe(board, m));  // a position no book holds

  // Copies with random move fields, with random bytes anywhere, and in reverse
  // order: every probe ends, and what it gives is legal.
  std::mt19937 random(17);
  std::string fields = real, noise = real, reversed;
  for (size_t at = 8; at < fields.size(); at += 16) fields[at] = char(random()), fields[at + 1] = char(random());
  for (int i = 0; i < 20000; ++i) noise[random() % noise.size()] = char(random());
  for (size_t at = real.size(); at >= 16; at -= 16) reversed += real.substr(at - 16, 16);
  for (const auto& [name, bytes] : {std::pair{"fields", fields}, {"noise", noise}, {"reversed", reversed}}) {
    book.setPath(writeFile(bytes, name).c_str());
    for (const char* line : {"", "e2e4", "d2d4 g8f6", "e2e4 c7c5 g1f3"}) {
      board = after(line);
      for (int i = 0; i < 30; ++i)
        if (book.probe(board, m)) {
          EXPECT_EQ(legalMove(board, moveToString(m)), m) << name << " " << line;
        }
    }
    std::remove(book.path);
  }
  // A file that shrank after its path was set, an empty one, none, a folder.
  board = after("");
  const std::string shrunk = writeFile(real, "shrunk");
  book.setPath(shrunk.c_str());
  ASSERT_EQ(truncate(shrunk.c_str(), 16 * 3 + 7), 0);
  EXPECT_FALSE(book.probe(board, m));
  ASSERT_EQ(truncate(shrunk.c_str(), 0), 0);
  for (const std::string& path : {shrunk, std::string("/nonexistent/book.bin"), ::testing::TempDir()}) {
    book.setPath(path.c_str());
    EXPECT_FALSE(book.probe(board, m)) << path;
  }
  std::remove(shrunk.c_str());
}

TEST(OpeningBook, ChoiceByWeightAmongLegalEntries) {
  Board_0x88 board = after("");
  const uint64_t start = polyglotKey(board);
  // Entries of the start position, between two of other positions; the share
  // of each move in 4000 picks, in tenths of a percent, within 3 points.
  const struct { const char* name; std::vector<BookEntry> entries; std::map<std::string, int> expected; } cases[] = {
      {"weights", {{start, bookMove("e2e4"), 1, 0}, {start, bookMove("d2d4"), 3, 0}, {start, bookMove("c2c4"), 0, 0}},
       {{"e2e4", 250}, {"d2d4", 750}}},
      // All weights 0: the entry where the search landed (the middle of three).
      {"zeros", {{start, bookMove("e2e4"), 0, 0}, {start, bookMove("d2d4"), 0, 0}, {start, bookMove("c2c4"), 0, 0}},
       {{"d2d4", 1000}}},
      // Illegal moves and a promotion field above 4 never reach the board.
      {"illegal", {{start, bookMove("e2e5"), 100, 0}, {start, bookMove("e2e4", 5), 100, 0}, {start, bookMove("g1f3"), 1, 0}},
       {{"g1f3", 1000}}},
      {"only illegal", {{start, bookMove("e2e5"), 100, 0}, {start, bookMove("a7a5", 7), 1, 0}}, {{"none", 1000}}},
  };
  for (const auto& c : cases) {
    std::vector<BookEntry> entries{{start - 1, bookMove("a2a3"), 50, 0}};
    entries.insert(entries.end(), c.entries.begin(), c.entries.end());
    entries.push_back({start + 1, bookMove("h2h3"), 50, 0});
    OpeningBook book;
    book.setPath(writeBook(entries, c.name).c_str());
    std::srand(11);
    std::map<std::string, int> counts = tally(book, board, 4000);
    int listed = 0;
    for (const auto& [move, share] : c.expected) {
      EXPECT_NEAR(counts[move] / 4.0, share, 30) << c.name << " " << move;
      listed += counts[move];
    }
    EXPECT_EQ(listed, 4000) << c.name;  // nothing else, weight 0 included
    std::remove(book.path);
  }
  // At most 256 entries of a position: found at 150, then 149..0 backwards,
  // then 151..255; the heavy entries behind 255 are never collected.
  std::vector<BookEntry> many;
  for (int i = 0; i < 300; ++i) many.push_back({start, bookMove(i < 256 ? "e2e4" : "d2d4"), uint16_t(i < 256 ? 1 : 60000), 0});
  OpeningBook book;
  book.setPath(writeBook(many, "many").c_str());
  EXPECT_EQ(tally(book, board, 200)["e2e4"], 200);
  std::remove(book.path);
}

// Every legal move of every suite position, written as the book writes it,
// reads back as the generated move, flags and all.
TEST(OpeningBook, DecodesEveryMoveOfTheSuitePositions) {
  for (const SuiteLine& line : readSuite()) {
    Board_0x88 board;
    ASSERT_TRUE(setupFromFen(board, line.fen.c_str()));
    const MoveList list = legalMoves(board);
    for (uint32_t i = 0; i < list.count; ++i) {
      const Move m = list.moves[i].move;
      std::string text = moveToString(m);
      if (moveKind(m) == MoveCastling) text[2] = moveDetail(m) % 2 ? 'a' : 'h';
      const unsigned promotion = moveKind(m) == MovePromotion ? std::string("nbrq").find(text[4]) + 1 : 0;
      EXPECT_EQ(OpeningBook::decodeMove(board, bookMove(text, promotion)), m) << line.fen << " " << moveToString(m);
    }
  }
  // With the rook gone a king's step of two squares is a plain move, as the book says.
  Board_0x88 board;
  ASSERT_TRUE(setupFromFen(board, "4k3/8/8/8/8/8/8/4K3 w - - 0 1"));
  EXPECT_EQ(OpeningBook::decodeMove(board, bookMove("e1g1")), encodeMove88(4, 6));
}

}  // namespace
