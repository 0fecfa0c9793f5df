#include "eval/pawn_structure.h"

// No pawn tables to build yet.
void initPawnStructureTables() {}

// The pawn structure contributes nothing yet.
ScorePair evaluatePawnStructure(const Board_0x88&, PawnHash&, PawnInfo&) { return ScorePair{0, 0}; }

// Passed pawns contribute nothing yet.
template <Color C>
ScorePair passedPawnTerms(const Board_0x88&, const PawnInfo&, MaterialSignature) {
  return ScorePair{0, 0};
}

template ScorePair passedPawnTerms<White>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair passedPawnTerms<Black>(const Board_0x88&, const PawnInfo&, MaterialSignature);
