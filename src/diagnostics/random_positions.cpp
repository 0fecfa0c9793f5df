#include "diagnostics/random_positions.h"

#include <cstdlib>
#include <memory>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "board/make_move.h"
#include "board/move_generation.h"

namespace {

// Up to this many plies: openings, middlegames and endings alike.
constexpr int MaxRandomPlies = 200;

}  // namespace

std::string randomPositionFen(Board_0x88& scratch) {
  setupFromFen(scratch, startPositionFen);
  const int plies = std::rand() % (MaxRandomPlies + 1);
  UndoRecord undo;
  for (int i = 0; i < plies; ++i) {
    MoveList list;
    bool inCheck;
    generateLegalMoves(scratch, list, inCheck);
    if (list.count == 0) break;  // mate or stalemate: a legal position all the same
    Move move = list.moves[uint32_t(std::rand() & 0x7fffffff) % list.count].move;
    scratch.history[scratch.ply].movePlayed = move;
    makeMoveForSide(scratch, move, undo);
  }
  return positionToFen(scratch);
}

void writeRandomPositions(FILE* out, int count) {
  auto scratch = std::make_unique<Board_0x88>();
  for (int i = 0; i < count; ++i) std::fprintf(out, "%s\n", randomPositionFen(*scratch).c_str());
  std::fflush(out);
}
