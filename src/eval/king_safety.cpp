#include "eval/king_safety.h"

// No king tables to build yet.
void initKingSafetyTables() {}

// King safety contributes nothing yet.
template <Color C>
ScorePair kingSafety(const Board_0x88&, const PawnInfo&, MaterialSignature) {
  return ScorePair{0, 0};
}

// King tropism contributes nothing yet.
template <Color C>
ScorePair kingTropism(const Board_0x88&, Square, PieceType) {
  return ScorePair{0, 0};
}

template ScorePair kingSafety<White>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair kingSafety<Black>(const Board_0x88&, const PawnInfo&, MaterialSignature);
template ScorePair kingTropism<White>(const Board_0x88&, Square, PieceType);
template ScorePair kingTropism<Black>(const Board_0x88&, Square, PieceType);
