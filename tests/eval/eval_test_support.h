#pragma once
// Boards from FEN, colour mirrors and the suite positions for the evaluation tests.
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "board/fen.h"
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
  std::string placement, stm, castling, ep, rest;
  in >> placement >> stm >> castling >> ep;
  std::getline(in, rest);

  std::vector<std::string> ranks;
  std::string rank;
  for (char ch : placement) {
    if (ch == '/') {
      ranks.push_back(rank);
      rank.clear();
    } else {
      rank += std::isalpha(static_cast<unsigned char>(ch))
                  ? char(std::isupper(static_cast<unsigned char>(ch)) ? std::tolower(ch) : std::toupper(ch))
                  : ch;
    }
  }
  ranks.push_back(rank);
  std::string out;
  for (auto it = ranks.rbegin(); it != ranks.rend(); ++it) {
    if (!out.empty()) out += '/';
    out += *it;
  }

  out += stm == "w" ? " b " : " w ";
  std::string rights;
  for (char letter : std::string("KQkq")) {
    char source = char(std::isupper(static_cast<unsigned char>(letter)) ? std::tolower(letter) : std::toupper(letter));
    if (castling.find(source) != std::string::npos) rights += letter;
  }
  out += rights.empty() ? "-" : rights;
  out += ' ';
  if (ep == "-")
    out += ep;
  else
    out += std::string{ep[0], char('1' + '8' - ep[1])};
  return out + rest;
}

// The FEN part of every line of the perft suite.
inline std::vector<std::string> suiteFens() {
  std::vector<std::string> fens;
  std::ifstream in(std::string(TOLVA_TEST_DATA_DIR) + "/perft-suite.epd");
  std::string line;
  while (std::getline(in, line)) {
    size_t cut = line.find(';');
    std::string fen = line.substr(0, cut);
    while (!fen.empty() && fen.back() == ' ') fen.pop_back();
    if (!fen.empty()) fens.push_back(fen);
  }
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
  auto board = boardFrom(fen);
  return evaluate(*board, pawnHash(), alpha, beta);
}

}  // namespace evaltest
