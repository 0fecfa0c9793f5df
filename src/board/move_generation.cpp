#include "board/move_generation.h"

namespace {

template <Color C>
void generateFor(Board_0x88& b, MoveList& list, bool& inCheck) {
  PinMasks pins;
  computePins<C>(b, pins);
  CheckInfo info;
  findCheck<C>(b, b.side[C].square[0], info);
  inCheck = info.count != 0;
  if (inCheck)
    generateEvasions<C>(b, list);
  else
    generateAllMoves<C>(b, pins, list);
}

}  // namespace

void generateLegalMoves(Board_0x88& b, MoveList& list, bool& inCheck) {
  inCheck = false;
  // A cleared board (after a refused FEN) has no side to move and no moves.
  if (b.sideToMove == White)
    generateFor<White>(b, list, inCheck);
  else if (b.sideToMove == Black)
    generateFor<Black>(b, list, inCheck);
}
