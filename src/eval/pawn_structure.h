#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/score_pair.h"
#include "eval/eval_record.h"
#include "eval/material.h"
#include "eval/pawn_hash.h"

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

// Pawn masks by Color and Square64, for pawns on ranks 2 to 7: the file
// ahead, the three files ahead (both ending at the seventh rank of the
// pawn's side), and the neighbouring files level with and behind the pawn.
extern uint64_t frontFileMask[2][64];
extern uint64_t frontSpanMask[2][64];
extern uint64_t supportMask[2][64];

// Builds the pawn mask tables, once whoever calls.
void initPawnStructureTables();

// Fills info from the pawn hash or from the board and gives the structure
// score, White minus Black.
template <typename Rec = NoRecord>
ScorePair evaluatePawnStructure(const Board_0x88& board, PawnHash& pawnHash, PawnInfo& info);

// Probes of the pawn hash made by the calling thread, for the hit rate
// beside PawnHash::hits: every evaluation of a position with pawns that
// gets past the lazy exit.
uint64_t pawnHashProbesOnThisThread();

// The passed pawn terms of side C.
template <Color C, typename Rec = NoRecord>
ScorePair passedPawnTerms(const Board_0x88& board, const PawnInfo& info, MaterialSignature enemy);
