// PolyGlot keys against the published values, and the book: a real book, and
// books written here for the corner cases of choice, collection and decoding.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "driver/opening_book.h"
#include "driver/polyglot_key.h"

namespace {

std::string text(Move m) {
  char buffer[8];
  moveToText(m, buffer);
  return buffer;
}

// Plays moves given as text from the start position.
void play(Board_0x88& board, const std::string& moves) {
  setupFromFen(board, startPositionFen);
  for (size_t at = 0; at + 4 <= moves.size(); at += 5) {
    MoveList list;
    bool inCheck;
    generateLegalMoves(board, list, inCheck);
    Move played = NoMove;
    for (uint32_t i = 0; i < list.count; ++i)
      if (text(list.moves[i].move) == moves.substr(at, 4)) played = list.moves[i].move;
    ASSERT_NE(played, NoMove) << moves.substr(at, 4);
    UndoRecord undo;
    makeMoveForSide(board, played, undo);
  }
}

uint16_t bookMove(const char* m, unsigned promotion = 0) {
  return uint16_t((m[2] - 'a') | (m[3] - '1') << 3 | (m[0] - 'a') << 6 | (m[1] - '1') << 9 | promotion << 12);
}

// Writes the entries in the order given (a book is sorted by key) and returns the file's path.
std::string writeBook(const std::vector<BookEntry>& entries, const std::string& name) {
  std::string path = ::testing::TempDir() + "tolva_book_" + std::to_string(getpid()) + "_" + name;
  FILE* file = std::fopen(path.c_str(), "wb");
  for (const BookEntry& e : entries) {
    unsigned char bytes[16];
    for (int i = 0; i < 8; ++i) bytes[i] = uint8_t(e.key >> (56 - 8 * i));
    bytes[8] = uint8_t(e.move >> 8), bytes[9] = uint8_t(e.move);
    bytes[10] = uint8_t(e.weight >> 8), bytes[11] = uint8_t(e.weight);
    for (int i = 0; i < 4; ++i) bytes[12 + i] = uint8_t(e.learn >> (24 - 8 * i));
    std::fwrite(bytes, 1, 16, file);
  }
  std::fclose(file);
  return path;
}

// How often each move comes out of `picks` probes.
std::map<std::string, int> tally(OpeningBook& book, Board_0x88& board, int picks) {
  std::map<std::string, int> counts;
  for (int i = 0; i < picks; ++i) {
    Move m = NoMove;
    counts[book.probe(board, m) ? text(m) : "none"]++;
  }
  return counts;
}

TEST(PolyglotKeyTest, PublishedKeysOfPositionsReachedByMoves) {
  const struct {
    const char* moves;
    uint64_t key;
  } cases[] = {
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
  Board_0x88 board;
  for (const auto& c : cases) {
    play(board, c.moves);
    EXPECT_EQ(polyglotKey(board), c.key) << c.moves;
  }
}

TEST(OpeningBookTest, RealBookGivesOneOfItsEntriesForTheStartPosition) {
  OpeningBook book;
  book.setPath(TOLVA_TEST_DATA_DIR "/performance.bin");
  EXPECT_GT(book.entryCount, 90000u);
  Board_0x88 board;
  play(board, "");
  std::srand(3);
  std::map<std::string, int> counts = tally(book, board, 200);
  EXPECT_EQ(counts.count("none"), 0u);
  EXPECT_GT(counts.size(), 1u);  // weighted, not always the same move
  for (const auto& [move, n] : counts) EXPECT_TRUE(move == "e2e4" || move == "d2d4" || move == "c2c4" || move == "g1f3") << move;
  // A position no book holds.
  Move m;
  play(board, "a2a3 h7h6 h2h3 a7a6");
  EXPECT_FALSE(book.probe(board, m));
}

TEST(OpeningBookTest, ChoiceByWeightAmongLegalEntries) {
  Board_0x88 board;
  play(board, "");
  const uint64_t start = polyglotKey(board);
  const BookEntry before{start - 1, bookMove("a2a3"), 50, 0}, after{start + 1, bookMove("h2h3"), 50, 0};
  struct Case {
    const char* name;
    std::vector<BookEntry> entries;  // of the start position, between two of other positions
    std::map<std::string, int> expected;  // share of 4000 picks in tenths of a percent, within 3 points
  } cases[] = {
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
  for (Case& c : cases) {
    std::vector<BookEntry> entries{before};
    entries.insert(entries.end(), c.entries.begin(), c.entries.end());
    entries.push_back(after);
    OpeningBook book;
    book.setPath(writeBook(entries, c.name).c_str());
    std::srand(11);
    std::map<std::string, int> counts = tally(book, board, 4000);
    for (const auto& [move, share] : c.expected) EXPECT_NEAR(counts[move] / 4.0, share, 30) << c.name << " " << move;
    int listed = 0;
    for (const auto& [move, share] : c.expected) listed += counts[move];
    EXPECT_EQ(listed, 4000) << c.name;  // nothing else, weight 0 included
    std::remove(book.path);
  }
}

TEST(OpeningBookTest, AtMost256EntriesOfOnePositionInCollectionOrder) {
  Board_0x88 board;
  play(board, "");
  const uint64_t start = polyglotKey(board);
  // 300 entries: found at 150, then 149..0 backwards, then 151..255. The
  // heavy entries behind 255 are never collected.
  std::vector<BookEntry> entries;
  for (int i = 0; i < 300; ++i) entries.push_back({start, bookMove(i < 256 ? "e2e4" : "d2d4"), uint16_t(i < 256 ? 1 : 60000), 0});
  OpeningBook book;
  book.setPath(writeBook(entries, "many").c_str());
  std::srand(5);
  EXPECT_EQ(tally(book, board, 200)["e2e4"], 200);
  std::remove(book.path);
}

TEST(OpeningBookTest, BrokenFilesAreNoBook) {
  Board_0x88 board;
  play(board, "");
  const uint64_t start = polyglotKey(board);
  OpeningBook book;
  Move m;
  book.setPath(writeBook({}, "empty").c_str());
  EXPECT_EQ(book.entryCount, 0u);
  EXPECT_FALSE(book.probe(board, m));
  std::remove(book.path);
  book.setPath("/nonexistent/book.bin");
  EXPECT_FALSE(book.probe(board, m));
  // A file that shrank below the entry count read when its path was set.
  std::vector<BookEntry> entries(40, BookEntry{start + 5, bookMove("e2e4"), 1, 0});
  entries[0].key = start;
  std::string path = writeBook(entries, "short");
  book.setPath(path.c_str());
  ASSERT_EQ(truncate(path.c_str(), 16 * 3 + 7), 0);
  EXPECT_FALSE(book.probe(board, m));
  std::remove(path.c_str());
  // A folder opens on Linux, but no entry can be read from it.
  book.setPath(::testing::TempDir().c_str());
  EXPECT_FALSE(book.probe(board, m));
}

// Random bytes, unsorted, and entries of the start position with random move
// fields: a probe ends, and whatever it gives is a legal move.
TEST(OpeningBookTest, GarbageGivesNoMoveOrALegalOne) {
  Board_0x88 board;
  play(board, "");
  const uint64_t start = polyglotKey(board);
  MoveList legal;
  bool inCheck;
  generateLegalMoves(board, legal, inCheck);
  auto isLegal = [&](Move m) {
    for (uint32_t i = 0; i < legal.count; ++i)
      if (legal.moves[i].move == m) return true;
    return false;
  };
  std::srand(17);
  auto random16 = [] { return uint16_t(std::rand()); };
  auto random64 = [&] { return uint64_t(random16()) << 48 | uint64_t(random16()) << 32 | uint64_t(random16()) << 16 | random16(); };
  std::vector<BookEntry> noise, fields;
  for (int i = 0; i < 5000; ++i) noise.push_back({random64(), random16(), random16(), uint32_t(random64())});
  noise[2500].key = start;
  for (int i = 0; i < 200; ++i) fields.push_back({start, random16(), random16(), 0});
  fields.push_back({start, bookMove("e2e4"), 1, 0});
  for (auto& [name, entries] : {std::pair{"noise", noise}, std::pair{"fields", fields}}) {
    OpeningBook book;
    book.setPath(writeBook(entries, name).c_str());
    int moves = 0;
    for (int i = 0; i < 300; ++i) {
      Move m = NoMove;
      if (!book.probe(board, m)) continue;
      EXPECT_TRUE(isLegal(m)) << name << " " << text(m);
      ++moves;
    }
    // The legal e2e4 among the fields is always there to be chosen.
    if (std::string(name) == "fields") {
      EXPECT_EQ(moves, 300);
    }
    std::remove(book.path);
  }
}

TEST(OpeningBookTest, DecodesCastlingPromotionEnPassantAndDoubleSteps) {
  const struct {
    const char* fen;
    uint16_t field;
    Move expected;
  } cases[] = {
      {"4k3/8/8/8/8/8/8/4K2R w K - 0 1", bookMove("e1h1"), encodeMove88(4, 6, MoveCastling, CastleWhiteKingSide)},
      {"4k3/8/8/8/8/8/8/4K2R w K - 0 1", bookMove("e1g1"), encodeMove88(4, 6, MoveCastling, CastleWhiteKingSide)},
      {"4k3/8/8/8/8/8/8/R3K3 w Q - 0 1", bookMove("e1a1"), encodeMove88(4, 2, MoveCastling, CastleWhiteQueenSide)},
      {"r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1", bookMove("e8h8"), encodeMove88(116, 118, MoveCastling, CastleBlackKingSide)},
      {"r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1", bookMove("e8c8"), encodeMove88(116, 114, MoveCastling, CastleBlackQueenSide)},
      // The rook gone: a king's step of two squares, as the book says.
      {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", bookMove("e1g1"), encodeMove88(4, 6)},
      {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", bookMove("a7a8", 4), encodePromotion(0x60, 0x70, Queen)},
      {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", bookMove("a7a8", 1), encodePromotion(0x60, 0x70, Knight)},
      {"4k3/P7/8/8/8/8/8/4K3 w - - 0 1", bookMove("a7a8", 5), NoMove},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2", bookMove("e5d6"), encodeMove88(0x44, 0x53, MoveEnPassant)},
      {"4k3/4p3/8/8/8/8/8/4K3 b - - 0 1", bookMove("e7e5"), encodeMove88(0x64, 0x44, MoveNormal, DetailDoubleStep)},
      {"4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", bookMove("e2e4"), encodeMove88(0x14, 0x34, MoveNormal, DetailDoubleStep)},
      {"4k3/8/8/8/8/8/4P3/4K3 w - - 0 1", bookMove("e2e3"), encodeMove88(0x14, 0x24)},
  };
  Board_0x88 board;
  for (const auto& c : cases) {
    ASSERT_TRUE(setupFromFen(board, c.fen)) << c.fen;
    EXPECT_EQ(OpeningBook::decodeMove(board, c.field), c.expected) << c.fen << " " << std::hex << c.field;
  }
}

}  // namespace
