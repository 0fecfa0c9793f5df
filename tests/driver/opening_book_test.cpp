// PolyGlot keys against the published values, and the book: the real book,
// damaged copies of it, and books written here for choice and decoding.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <sstream>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "driver/opening_book.h"
#include "driver/polyglot_key.h"

namespace {

bool isLegal(Board_0x88& board, Move m) {
  MoveList list;
  bool inCheck;
  generateLegalMoves(board, list, inCheck);
  return list.contains(m);
}

// Plays moves given as text from the start position.
void play(Board_0x88& board, const std::string& moves) {
  ASSERT_TRUE(setupFromFen(board, startPositionFen));
  std::istringstream in(moves);
  std::string text;
  while (in >> text) {
    MoveList list;
    bool inCheck;
    generateLegalMoves(board, list, inCheck);
    Move played = NoMove;
    for (uint32_t i = 0; i < list.count; ++i)
      if (moveToString(list.moves[i].move) == text) played = list.moves[i].move;
    ASSERT_NE(played, NoMove) << text;
    UndoRecord undo;
    makeMoveForSide(board, played, undo);
  }
}

uint16_t bookMove(const char* m, unsigned promotion = 0) {
  return uint16_t((m[2] - 'a') | (m[3] - '1') << 3 | (m[0] - 'a') << 6 | (m[1] - '1') << 9 | promotion << 12);
}

std::string tempPath(const std::string& name) { return ::testing::TempDir() + "tolva_book_" + std::to_string(getpid()) + name; }

std::string writeFile(const std::string& bytes, const std::string& name) {
  std::string path = tempPath(name);
  std::ofstream(path, std::ios::binary) << bytes;
  return path;
}

// The entries in the order given, big-endian as on disk.
std::string writeBook(const std::vector<BookEntry>& entries, const std::string& name) {
  std::string bytes;
  for (const BookEntry& e : entries) {
    for (int i = 56; i >= 0; i -= 8) bytes += char(e.key >> i);
    bytes += {char(e.move >> 8), char(e.move), char(e.weight >> 8), char(e.weight)};
    for (int i = 24; i >= 0; i -= 8) bytes += char(e.learn >> i);
  }
  return writeFile(bytes, name);
}

// How often each move comes out of `picks` probes.
std::map<std::string, int> tally(OpeningBook& book, Board_0x88& board, int picks) {
  std::map<std::string, int> counts;
  for (int i = 0; i < picks; ++i) {
    Move m = NoMove;
    counts[book.probe(board, m) ? moveToString(m) : "none"]++;
  }
  return counts;
}

TEST(PolyglotKey, PublishedKeysOfPositionsReachedByMoves) {
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

TEST(OpeningBook, RealBookAndDamagedCopiesGiveNoMoveOrALegalOne) {
  const std::string realPath = TOLVA_TEST_DATA_DIR "/performance.bin";
  std::ifstream in(realPath, std::ios::binary);
  const std::string real{std::istreambuf_iterator<char>(in), {}};
  ASSERT_GT(real.size(), 16u * 90000);
  OpeningBook book;
  Board_0x88 board;
  book.setPath(realPath.c_str());
  EXPECT_EQ(book.entryCount, real.size() / 16);
  play(board, "");
  std::srand(3);
  std::map<std::string, int> counts = tally(book, board, 200);
  EXPECT_GT(counts.size(), 1u);  // weighted, not always the same move
  for (const auto& [move, n] : counts) EXPECT_TRUE(move == "e2e4" || move == "d2d4" || move == "c2c4" || move == "g1f3") << move;
  Move m;
  play(board, "a2a3 h7h6 h2h3 a7a6");
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
      play(board, line);
      for (int i = 0; i < 30; ++i)
        if (book.probe(board, m)) {
          EXPECT_TRUE(isLegal(board, m)) << name << " " << line << " " << moveToString(m);
        }
    }
    std::remove(book.path);
  }

  // No file, an empty one, a folder, a file that shrank after its path was set.
  play(board, "");
  for (const std::string& path : {std::string("/nonexistent/book.bin"), writeFile("", "empty"), ::testing::TempDir()}) {
    book.setPath(path.c_str());
    EXPECT_FALSE(book.probe(board, m)) << path;
  }
  const std::string shrunk = writeFile(real, "shrunk");
  book.setPath(shrunk.c_str());
  ASSERT_EQ(truncate(shrunk.c_str(), 16 * 3 + 7), 0);
  EXPECT_FALSE(book.probe(board, m));
  std::remove(shrunk.c_str());
  std::remove(tempPath("empty").c_str());
}

TEST(OpeningBook, ChoiceByWeightAmongLegalEntries) {
  Board_0x88 board;
  play(board, "");
  const uint64_t start = polyglotKey(board);
  const BookEntry before{start - 1, bookMove("a2a3"), 50, 0}, after{start + 1, bookMove("h2h3"), 50, 0};
  struct Case {
    const char* name;
    std::vector<BookEntry> entries;       // of the start position, between two of other positions
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

TEST(OpeningBook, DecodesCastlingPromotionEnPassantAndDoubleSteps) {
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
