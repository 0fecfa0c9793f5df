#pragma once
// Boards from FEN, colour mirrors and the suite positions, for the evaluation
// and search tests.
#include <gtest/gtest.h>

#include <cctype>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "board/board_test_support.h"
#include "eval/eval_tables.h"
#include "eval/evaluate.h"
#include "eval/pawn_hash.h"

namespace evaltest {

// Boards are large (the ply records), so they live on the heap in tests.
inline std::unique_ptr<Board_0x88> boardFrom(const std::string& fen) {
  auto board = std::make_unique<Board_0x88>();
  EXPECT_TRUE(setupFromFen(*board, fen.c_str())) << fen;
  return board;
}

// The same position with ranks flipped, colours swapped and the other side to move.
inline std::string mirrorFen(const std::string& fen) {
  std::istringstream in(fen);
  std::string placement, stm, castling, ep, rest, out;
  in >> placement >> stm >> castling >> ep;
  std::getline(in, rest);
  auto swapCase = [](char c) { return char(std::isupper(uint8_t(c)) ? std::tolower(c) : std::toupper(c)); };
  std::vector<std::string> ranks;
  std::istringstream rows(placement);
  for (std::string rank; std::getline(rows, rank, '/');) ranks.insert(ranks.begin(), rank);
  for (const std::string& rank : ranks) {
    if (!out.empty()) out += '/';
    for (char c : rank) out += swapCase(c);
  }
  std::string rights;
  for (char letter : std::string("KQkq"))
    if (castling.find(swapCase(letter)) != std::string::npos) rights += letter;
  out += (stm == "w" ? " b " : " w ") + (rights.empty() ? "-" : rights) + ' ';
  out += ep == "-" ? ep : std::string{ep[0], char('1' + '8' - ep[1])};
  return out + rest;
}

// The FEN part of every line of the perft suite.
inline std::vector<std::string> suiteFens() {
  std::vector<std::string> fens;
  for (const SuiteLine& line : readSuite()) fens.push_back(line.fen);
  return fens;
}

inline PawnHash& pawnHash() {
  static PawnHash* table = [] {
    initEvalTables();
    auto* t = new PawnHash;
    t->sizeFor(1);
    return t;
  }();
  return *table;
}

inline int evaluateFen(const std::string& fen, int alpha = FullWindowAlpha, int beta = FullWindowBeta) {
  return evaluate(*boardFrom(fen), pawnHash(), alpha, beta);
}

}  // namespace evaltest
