#pragma once
// Small helpers shared by the board tests: squares and moves by name, and the
// positions of perft-suite.epd with their leaf counts.
#include <gtest/gtest.h>

#include <cstdint>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"

inline Square sq(const char* name) { return makeSquare(name[0] - 'a', name[1] - '1'); }

struct SuiteLine {
  std::string fen;
  std::vector<uint64_t> counts;  // counts[d - 1] for depth d
};

// Lines "FEN ;D1 n ;D2 n ...".
inline std::vector<SuiteLine> readSuite() {
  std::vector<SuiteLine> lines;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string text;
  while (std::getline(in, text)) {
    size_t cut = text.find(';');
    if (cut == std::string::npos) continue;
    SuiteLine line{text.substr(0, text.find_last_not_of(' ', cut - 1) + 1), {}};
    std::istringstream fields(text.substr(cut));
    std::string field, name;
    uint64_t n;
    while (std::getline(fields, field, ';'))
      if (std::istringstream(field) >> name >> n) line.counts.push_back(n);
    lines.push_back(line);
  }
  return lines;
}

// The legal move written as `text`, or NoMove.
inline Move legalMove(Board_0x88& b, const std::string& text) {
  MoveList list;
  bool inCheck;
  generateLegalMoves(b, list, inCheck);
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveToString(list.moves[i].move) == text) return list.moves[i].move;
  return NoMove;
}

// Plays the blank-separated moves as the game does; false at the first one that isn't legal.
inline bool playMoves(Board_0x88& b, const std::string& moves) {
  std::istringstream in(moves);
  std::string text;
  while (in >> text) {
    Move m = legalMove(b, text);
    if (m == NoMove) return false;
    b.currentRecord().movePlayed = m;
    UndoRecord undo;
    makeMoveForSide(b, m, undo);
  }
  return true;
}
