#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/score_pair.h"
#include "eval/eval_record.h"
#include "eval/material.h"
#include "search/pawn_hash.h"

// The pawn facts of one evaluation, on the caller's stack, all zero at the start.
struct PawnInfo {
  uint64_t pawns[2];          // by Color, bit = Square64
  uint64_t passers[2];
  uint8_t pawnFileCount[2][8];
  uint8_t openFiles;          // bit f: no pawn of either colour on file f
  uint8_t halfOpenFiles;      // bit f: pawns of exactly one colour on file f
  uint8_t openFileCount;
  uint8_t halfOpenFileCount;
};

// Builds the pawn mask tables; idempotent.
void initPawnStructureTables();

// Fills info from the pawn hash or from the board and gives the structure
// score, White minus Black.
template <typename Rec = NoRecord>
ScorePair evaluatePawnStructure(const Board_0x88& board, PawnHash& pawnHash, PawnInfo& info);

// The passed pawn terms of side C.
template <Color C, typename Rec = NoRecord>
ScorePair passedPawnTerms(const Board_0x88& board, const PawnInfo& info, MaterialSignature enemy);
