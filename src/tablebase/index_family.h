#pragma once
#include <cstdint>

// The position index of one family of endgames: endgames that share the shape
// of their material (such as king, two like pieces and king) share the function
// that numbers their positions.
//
// Square lists are Square64 numbers ended by 64: element 0 is the king, the
// others follow the letters of the endgame's name. The first list is the side
// of the first half of the name, whatever its real colour.

// True with the index of the position, or false with index 0xFFFFFFFF when the
// position has none (kings on or next to the same square where the king pair
// leads the index, two like men on one square, a pawn outside ranks 2 to 7, a
// square above 63). Reads only the men of its family.
using PositionToIndexFn = bool (*)(const uint32_t* w, const uint32_t* b, uint32_t& index);
// The inverse: for an index below indexCount, writes a position with that
// index into w and b (each needs room for its men and the end mark); false,
// lists untouched, for a larger index.
using IndexToPositionFn = bool (*)(uint32_t index, uint32_t* w, uint32_t* b);

// x, y, z stand for different pieces among q, r, b, n; p is a pawn.
enum EndgameFamily : uint8_t {
  FamilyKxk, FamilyKxky, FamilyKxxk, FamilyKxyk, FamilyKxxxk, FamilyKxxyk, FamilyKxyyk,
  FamilyKxyzk, FamilyKxxky, FamilyKxykz, FamilyKpk, FamilyKxpk, FamilyKxkp, FamilyKppk,
  FamilyKpkp, FamilyKxxpk, FamilyKxypk, FamilyKxppk, FamilyKxpky, FamilyKppkx, FamilyKxxkp,
  FamilyKxykp, FamilyKxpkp, FamilyKppkp, FamilyKpppk, FamilyCount
};

struct IndexFamily {
  const char* name;     // "kxk", "kxxpk", ...
  uint32_t indexCount;  // valid indices are below it
  uint32_t sliceCount;  // values of the leading part: 1 for the king pair, else the pawn placements
  uint8_t whiteMen;     // men of the first list, king included
  uint8_t blackMen;
  bool pawnless;        // true: all eight symmetries of the board; false: only the left-right mirror
  IndexToPositionFn indexToPosition;
  PositionToIndexFn positionToIndex;
};

extern const IndexFamily indexFamilies[FamilyCount];
