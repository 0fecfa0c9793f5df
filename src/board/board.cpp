#include "board/board.h"

#include <cstring>

#include "board/psq_table.h"
#include "board/square_shade.h"
#include "board/zobrist.h"

bool boardTablesReady = false;

void initBoardTables() {
  if (boardTablesReady) return;
  initSquareShade();
  initZobristKeys();
  boardTablesReady = true;
}

Board_0x88::Board_0x88() {
  initBoardTables();
  std::memset(history, 0, sizeof history);
  clear();
}

void Board_0x88::clear() {
  psq[White] = psq[Black] = ScorePair{0, 0};
  std::memset(&history[0], 0, sizeof history[0]);
  std::memset(counterMove, 0, sizeof counterMove);
  ply = 0;
  castlingRights = 0;
  epSquare = NoSquare;
  halfMoveClock = 0;
  setupMoveNumber = 1;
  sideToMove = NoColor;
  setStandardCastling(castling);
  std::memset(piece, NoPiece, sizeof piece);
  std::memset(color, NoColor, sizeof color);
  std::memset(slot, NoSlot, sizeof slot);
  for (PieceSet& set : side) {
    std::memset(set.square, NoSquare, sizeof set.square);
    std::memset(set.count, 0, sizeof set.count);
    set.total = 0;
  }
}

namespace {

int firstFreePawnSlot(const PieceSet& set) {
  for (int s = FirstPawnSlot; s <= LastSlot; ++s)
    if (set.square[s] & 0x88) return s;
  return NoSlot;
}

int freeClassSlot(const PieceSet& set, int first, int last) {
  for (int s = first; s <= last; ++s)
    if (set.square[s] & 0x88) return s;
  return firstFreePawnSlot(set);
}

int chooseSlot(const PieceSet& set, PieceType type) {
  switch (type) {
    case King:
      return (set.count[King] == 0 && (set.square[0] & 0x88)) ? 0 : NoSlot;
    case Queen:
      return set.count[Queen] >= 9 ? NoSlot : freeClassSlot(set, 1, 1);
    case Rook:
      return set.count[Rook] >= 10 ? NoSlot : freeClassSlot(set, 2, 3);
    case Bishop:
      return set.count[Bishop] >= 10 ? NoSlot : freeClassSlot(set, 4, 5);
    case Knight:
      return set.count[Knight] >= 10 ? NoSlot : freeClassSlot(set, 6, 7);
    case Pawn:
      return set.count[Pawn] >= 8 ? NoSlot : firstFreePawnSlot(set);
    default:
      return NoSlot;
  }
}

}  // namespace

void Board_0x88::placePiece(Square sq, Color c, PieceType type) {
  PieceSet& set = side[c];
  int s = chooseSlot(set, type);
  piece[sq] = type;
  color[sq] = c;
  slot[sq] = uint8_t(s);
  if (s != NoSlot) set.square[s] = sq;
  ++set.count[type];
  ++set.total;
  const ScorePair& v = psqTable[c][type - 1][toSquare64(sq)];
  psq[c].mg = int16_t(psq[c].mg + v.mg);
  psq[c].eg = int16_t(psq[c].eg + v.eg);
  PositionRecord& rec = history[ply];
  uint64_t key = pieceKey[c][type - 1][toSquare64(sq)];
  rec.hashKey ^= key;
  if (type == Pawn) rec.pawnHashKey ^= key;
}

uint64_t Board_0x88::computePieceHash(uint32_t c) const {
  uint64_t key = 0;
  const PieceSet& set = side[c];
  for (int s = 0; s <= LastSlot; ++s) {
    Square sq = set.square[s];
    if (sq & 0x88) continue;
    key ^= pieceKey[c][piece[sq] - 1][toSquare64(sq)];
  }
  return key;
}

uint64_t Board_0x88::computePawnHash() const {
  uint64_t key = 0;
  for (int c = 0; c < 2; ++c) {
    const PieceSet& set = side[c];
    for (int s = FirstPawnSlot; s <= LastSlot; ++s) {
      Square sq = set.square[s];
      if ((sq & 0x88) || piece[sq] != Pawn) continue;
      key ^= pieceKey[c][Pawn - 1][toSquare64(sq)];
    }
  }
  return key;
}

uint64_t Board_0x88::computeFullHash() const {
  uint64_t key = computePieceHash(White) ^ computePieceHash(Black);
  key ^= castling.rightsKey[castlingRights & 15];
  if (epSquare != NoSquare) key ^= epKey[epSquare & 15];
  if (sideToMove == Black) key ^= sideKey;
  return key;
}
