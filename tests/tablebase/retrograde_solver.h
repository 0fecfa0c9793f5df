#pragma once
// Distance to mate of every position of a three-man endgame (White: king and
// one piece; Black: the king), both sides to move, worked out backwards from
// the mates with the engine's legal move generator only.
#include <cstdint>
#include <memory>
#include <vector>

#include "board/board.h"

namespace retro {

// Values from the view of the side to move: 0 draw, Win(n) mates in n plies,
// Loss(n) is mated in n plies.
constexpr int32_t Unknown = 1 << 20;
constexpr int32_t win(int32_t plies) { return 1000 - plies; }
constexpr int32_t loss(int32_t plies) { return plies - 1000; }
constexpr bool isWin(int32_t v) { return v > 0 && v < Unknown; }
constexpr bool isLoss(int32_t v) { return v < 0; }
constexpr int32_t pliesOf(int32_t v) { return isWin(v) ? 1000 - v : isLoss(v) ? v + 1000 : 0; }

inline uint32_t stateIndex(uint32_t side, uint32_t whiteKing, uint32_t blackKing, uint32_t piece) {
  return ((side * 64 + whiteKing) * 64 + blackKing) * 64 + piece;
}
constexpr uint32_t StateCount = 2 * 64 * 64 * 64;

struct Table {
  PieceType piece;
  std::vector<int32_t> value;    // by stateIndex; Unknown where the placement can't stand
  std::vector<uint8_t> legal;    // squares distinct, pawn placeable, side not to move not in check
};

// Squares distinct, a pawn on ranks 2 to 7.
bool placeable(PieceType piece, uint32_t state);
// The board of a state; mirrored: colours exchanged, the board turned rank for rank.
void setUp(Board_0x88& b, PieceType piece, uint32_t state, bool mirrored = false);

// Solves the table of `piece`; a pawn's promotions are looked up in `solved`
// (indexed by the new piece type), which must hold queen and rook.
Table solve(PieceType piece, const Table* const* solved);

}  // namespace retro
