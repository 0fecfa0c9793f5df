#pragma once
#include <cstdint>
#include <mutex>

// The store's one lock: the cache, the transfer areas, the open files, the
// block-offset tables and the failure marks are touched under it only.
extern std::mutex storeMutex;

// Who mates, and in how many plies, for pieces on squares (Square64 lists
// ended by 64, piece codes 1 to 6 ended by 0, kings included) with `side`
// to move (0 White, 1 Black) and an en-passant square (64 for none). A hard
// probe may read and decode a block; a soft one answers from the cache only.
// Kind 0 draw, 1 White mates, 2 Black mates; false, with kind 3 and plies 0,
// when there is no usable answer.
bool probeEndgame(uint32_t side, uint32_t epSquare, const uint32_t* whiteSquares, const uint32_t* blackSquares,
                  const uint8_t* whitePieces, const uint8_t* blackPieces, bool hard, uint32_t& kind,
                  uint32_t& plies);
