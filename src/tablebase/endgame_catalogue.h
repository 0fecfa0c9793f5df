#pragma once
#include <atomic>
#include <cstdint>
#include <cstdio>

#include "tablebase/index_family.h"

// One endgame of the tablebases: its name, the size of its index and the index
// functions of its family, and the fields that the tablebase store keeps for
// it while the engine runs.
struct EndgameRow {
  int32_t id;            // place in endgameCatalogue
  const char* name;      // "kqkr": the first side's letters, then the second's; null in the end row
  uint32_t indexCount;   // positions per side to move; valid indices are below it
  uint32_t sliceCount;   // values of the index's leading part
  IndexToPositionFn indexToPosition;
  PositionToIndexFn positionToIndex;
  EndgameFamily family;

  // Run-time fields of the store, empty in the static table.
  std::FILE* file = nullptr;       // open file or null
  std::atomic<uint32_t> status{0};  // 0 usable, 4 a failure has been seen; read outside the store's lock
  int32_t lastPath = 0;            // place behind the directory where the file was last found

  EndgameRow(int32_t rowId, const char* rowName, EndgameFamily rowFamily)
      : id(rowId),
        name(rowName),
        indexCount(indexFamilies[rowFamily].indexCount),
        sliceCount(indexFamilies[rowFamily].sliceCount),
        indexToPosition(indexFamilies[rowFamily].indexToPosition),
        positionToIndex(indexFamilies[rowFamily].positionToIndex),
        family(rowFamily) {}
  EndgameRow() : id(-1), name(nullptr), indexCount(0), sliceCount(0), indexToPosition(nullptr),
                           positionToIndex(nullptr), family(FamilyCount) {}
};

// The 145 endgames of up to five men, 3-piece ones at 0 to 4, 4-piece at 5 to
// 34, 5-piece at 35 to 144, then a row without a name.
inline constexpr int32_t endgameCount = 145;
extern EndgameRow endgameCatalogue[endgameCount + 1];

// Finds the endgame of two lists of piece codes (1 pawn to 6 king), each ended
// by 0 and given king first and then by falling code, first list first. True
// with the row's id; false when no table has this material in this colour order.
bool findEndgame(const uint8_t* whiteCodes, const uint8_t* blackCodes, int32_t& id);
