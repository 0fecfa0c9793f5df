#pragma once
// Helpers shared by the board tests (and a few others): squares and moves by
// name, the positions of perft-suite.epd with their leaf counts, and a board
// checked against sums made from scratch.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <sstream>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "board/psq_table.h"
#include "board/zobrist.h"

inline Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

struct SuiteLine {
  std::string fen;
  std::vector<uint64_t> counts;  // counts[d - 1] for depth d
};

// Lines "FEN ;D1 n ;D2 n ..." of perft-suite.epd, or of another file of the data folder.
inline std::vector<SuiteLine> readSuite(const char* file = "perft-suite.epd") {
  std::vector<SuiteLine> lines;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/" + file);
  std::string text;
  while (std::getline(in, text)) {
    size_t cut = text.find(';');
    if (cut == std::string::npos) continue;
    SuiteLine line{text.substr(0, text.find_last_not_of(' ', cut - 1) + 1), {}};
    std::replace(text.begin() + cut, text.end(), ';', ' ');
    std::string depth;
    uint64_t n;
    for (std::istringstream fields(text.substr(cut)); fields >> depth >> n;) line.counts.push_back(n);
    lines.push_back(line);
  }
  return lines;
}

// A Chess960 FEN with its castling field in X-FEN: K or Q where a right's
// rook is the outermost on that side of its king, the rook's file otherwise.
inline std::string toXFen(const std::string& fen) {
  std::istringstream in(fen);
  std::string placement, side, castling, rest;
  in >> placement >> side >> castling;
  std::getline(in, rest);
  std::string rank8 = placement.substr(0, placement.find('/')), rank1 = placement.substr(placement.rfind('/') + 1);
  for (std::string* rank : {&rank8, &rank1})
    for (size_t i = 0; i < rank->size(); ++i)
      if ((*rank)[i] >= '1' && (*rank)[i] <= '8') rank->replace(i, 1, size_t((*rank)[i] - '0'), '.');
  std::string written;
  for (char letter : castling) {
    const bool white = letter >= 'A' && letter <= 'H';
    const std::string& rank = white ? rank1 : rank8;
    const int file = (white ? letter - 'A' : letter - 'a'), king = int(rank.find(white ? 'K' : 'k'));
    const int step = file > king ? 1 : -1;
    bool outermost = letter != '-';
    for (int f = file + step; outermost && f >= 0 && f < 8; f += step) outermost = rank[f] != (white ? 'R' : 'r');
    written += !outermost ? letter : file > king ? (white ? 'K' : 'k') : (white ? 'Q' : 'q');
  }
  return placement + " " + side + " " + written + rest;
}

// The legal moves; `inCheck`, when given, tells whether the side to move is in check.
inline MoveList legalMoves(Board_0x88& b, bool* inCheck = nullptr) {
  MoveList list;
  bool check;
  generateLegalMoves(b, list, inCheck ? *inCheck : check);
  return list;
}

// The legal move written as `text`, or NoMove.
inline Move legalMove(Board_0x88& b, const std::string& text) {
  const MoveList list = legalMoves(b);
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveToString(list.moves[i].move) == text) return list.moves[i].move;
  return NoMove;
}

// Plays the blank-separated moves as the game does; false at the first one that isn't legal.
inline bool playMoves(Board_0x88& b, const std::string& moves) {
  std::istringstream in(moves);
  for (std::string text; in >> text;) {
    Move m = legalMove(b, text);
    if (m == NoMove) return false;
    b.currentRecord().movePlayed = m;
    UndoRecord undo;
    makeMoveForSide(b, m, undo);
  }
  return true;
}

// Lists and counts agree with the board; what a make keeps, by level: 0 nothing
// more, 1 the key, 2 also the pawn key and psq, summed over the board.
inline std::string sumsDisagree(const Board_0x88& b, int level) {
  static constexpr uint8_t classOfSlot[8] = {King, Queen, Rook, Rook, Bishop, Bishop, Knight, Knight};
  uint64_t key = 0, pawnKey = 0;
  ScorePair psq[2] = {{0, 0}, {0, 0}};
  int counts[2][7] = {}, totals[2] = {};
  for (int s = 0; s < 128; ++s) {
    if (s & 0x88) continue;
    if (b.piece[s] == NoPiece) {
      if (b.color[s] != NoColor || b.slot[s] != NoSlot) return "empty square with colour or slot";
      continue;
    }
    int c = b.color[s], t = b.piece[s];
    if (c > Black) return "piece without colour";
    if (b.slot[s] != NoSlot && b.side[c].square[b.slot[s]] != s) return "square and list slot disagree";
    uint64_t k = pieceKey[c][t - 1][toSquare64(Square(s))];
    key ^= k;
    if (t == Pawn) pawnKey ^= k;
    const ScorePair& v = psqTable[c][t - 1][toSquare64(Square(s))];
    psq[c] = ScorePair{int16_t(psq[c].mg + v.mg), int16_t(psq[c].eg + v.eg)};
    ++counts[c][t], ++totals[c];
  }
  for (int c = 0; c < 2; ++c) {
    for (int slot = 0; slot < 16; ++slot) {
      Square s = b.side[c].square[slot];
      if (s & 0x88) continue;
      if (b.slot[s] != slot || b.color[s] != c) return "list slot points to a wrong square";
      if (slot < 8 && b.piece[s] != classOfSlot[slot]) return "class slot holds another class";
    }
    for (int t = 1; t <= 6; ++t)
      if (b.side[c].count[t] != counts[c][t]) return "count";
    if (b.side[c].total != totals[c]) return "total";
    if (level == 2 && !(b.psq[c] == psq[c])) return "psq";
  }
  // One key per colour and file of a right's rook.
  for (int right = 0; right < 4; ++right)
    if (b.castlingRights & (1 << right)) key ^= castlingRookKey[right >> 1][fileOf(b.castling.path[right].rookFrom)];
  if (b.epSquare != NoSquare) key ^= epKey[b.epSquare & 15];
  if (b.sideToMove == Black) key ^= sideKey;
  if (level >= 1 && b.currentRecord().hashKey != key) return "hashKey";
  if (level == 2 && b.currentRecord().pawnHashKey != pawnKey) return "pawnHashKey";
  return "";
}

