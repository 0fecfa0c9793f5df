#include "retrograde_solver.h"

#include <algorithm>

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/move_generation.h"

namespace retro {

namespace {

// A successor: a state of the same table (>= 0), or a fixed value of another table.
struct Successor {
  int32_t state;
  int32_t fixed;
};

Square sq88(uint32_t s) { return toSquare88(Square64(s)); }

}  // namespace

bool placeable(PieceType piece, uint32_t state) {
  const uint32_t wk = state / 4096 % 64, bk = state / 64 % 64, p = state % 64;
  return wk != bk && wk != p && bk != p && (piece != Pawn || (p >= 8 && p < 56));
}

void setUp(Board_0x88& b, PieceType piece, uint32_t state, bool mirrored) {
  const uint32_t flip = mirrored ? 56 : 0;
  const Color strong = mirrored ? Black : White;
  b.clear();
  b.placePiece(sq88(state / 4096 % 64 ^ flip), strong, King);
  b.placePiece(sq88(state % 64 ^ flip), strong, piece);
  b.placePiece(sq88(state / 64 % 64 ^ flip), opponent(strong), King);
  b.sideToMove = uint8_t(state / (64 * 64 * 64) ^ (mirrored ? 1 : 0));
  b.currentRecord().hashKey = b.computeFullHash();
}

Table solve(PieceType piece, const Table* const* solved) {
  Table table{piece, std::vector<int32_t>(StateCount, Unknown), std::vector<uint8_t>(StateCount, 0)};
  std::vector<uint32_t> firstSuccessor(StateCount + 1, 0);
  std::vector<Successor> successors;
  std::vector<uint32_t> open;
  auto board = std::make_unique<Board_0x88>();

  for (uint32_t state = 0; state < StateCount; ++state) {
    firstSuccessor[state] = uint32_t(successors.size());
    if (!placeable(piece, state)) continue;
    const uint32_t side = state / (64 * 64 * 64);
    Board_0x88& b = *board;
    setUp(b, piece, state);
    // The side that has just moved may not stand in check.
    const Color mover = Color(side), waiting = opponent(mover);
    CheckInfo info;
    bool waitingInCheck = waiting == White ? findCheck<White>(b, b.side[White].square[0], info)
                                           : findCheck<Black>(b, b.side[Black].square[0], info);
    if (waitingInCheck) continue;
    table.legal[state] = 1;
    MoveList list;
    bool inCheck;
    generateLegalMoves(b, list, inCheck);
    if (list.count == 0) {
      table.value[state] = inCheck ? loss(0) : 0;
      continue;
    }
    for (uint32_t i = 0; i < list.count; ++i) {
      UndoRecord undo;
      const Move m = list.moves[i].move;
      makeMoveForSide(b, m, undo);
      const uint32_t nwk = toSquare64(b.side[White].square[0]), nbk = toSquare64(b.side[Black].square[0]);
      if (b.side[White].total == 1) {
        successors.push_back({-1, 0});  // the piece taken: two kings
      } else {
        uint32_t np = 64;
        for (int s = 1; s <= LastSlot; ++s)
          if (onBoard(b.side[White].square[s])) np = toSquare64(b.side[White].square[s]);
        const PieceType now = PieceType(b.piece[sq88(np)]);
        const uint32_t next = stateIndex(side ^ 1, nwk, nbk, np);
        if (now == piece)
          successors.push_back({int32_t(next), 0});
        else if (now == Queen || now == Rook)
          successors.push_back({-1, solved[now]->value[next]});
        else
          successors.push_back({-1, 0});  // bishop or knight: no mate
      }
      unmakeMoveForSide(b, m, undo);
    }
    open.push_back(state);
  }
  firstSuccessor[StateCount] = uint32_t(successors.size());

  // Round n gives the values of exactly n plies. Values from other tables may
  // start chains late, so quiet rounds end the work only beyond them.
  int32_t lastFixed = 0;
  for (const Successor& s : successors)
    if (s.state < 0 && s.fixed != 0) lastFixed = std::max(lastFixed, pliesOf(s.fixed));
  for (int32_t n = 1, quiet = 0; !open.empty() && (quiet < 2 || n <= lastFixed + 1); ++n) {
    std::vector<uint32_t> still;
    std::vector<std::pair<uint32_t, int32_t>> found;
    for (uint32_t state : open) {
      bool canWin = false, allLose = true;
      int32_t longest = -1;
      for (uint32_t k = firstSuccessor[state]; k < firstSuccessor[state + 1]; ++k) {
        const Successor& s = successors[k];
        const int32_t v = s.state >= 0 ? table.value[uint32_t(s.state)] : s.fixed;
        if (isLoss(v) && pliesOf(v) == n - 1) canWin = true;
        if (isWin(v))
          longest = std::max(longest, pliesOf(v));
        else
          allLose = false;
      }
      if (canWin)
        found.push_back({state, win(n)});
      else if (allLose && longest == n - 1)
        found.push_back({state, loss(n)});
      else
        still.push_back(state);
    }
    for (const auto& [state, v] : found) table.value[state] = v;
    quiet = found.empty() ? quiet + 1 : 0;
    open.swap(still);
  }
  for (uint32_t state : open) table.value[state] = 0;  // never decided: a draw
  return table;
}

}  // namespace retro
