#pragma once
#include <cstdint>
#include <cstdio>
#include <memory>

// The block-offset table of a tablebase file: block n lies from offsets[n]
// to offsets[n + 1], counted from the start of the file.
struct BlockOffsets {
  uint32_t base = 0;
  uint32_t count = 0;  // words in the table, one more than blocks
  std::unique_ptr<uint32_t[]> offsets;
};

// One record per endgame of the catalogue; empty until its table is read.
extern BlockOffsets blockOffsets[];

// Reads the header (ten little-endian words, the ninth the size of header and
// table) and the table of an open file. A table that doesn't fit the file,
// goes backwards or points past the file's end is refused, so a block read
// through it always lies within the file.
bool readBlockOffsetTable(std::FILE* file, BlockOffsets& table);

// The record of an endgame, read from its open file the first time. False
// when the endgame has no open file or its table is refused.
bool loadBlockOffsets(int32_t endgame);

// Empties the records of all endgames.
void clearBlockOffsets();
