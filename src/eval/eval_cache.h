#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "board/board.h"
#include "eval/material.h"

// The last evaluations of one search thread by position key. A third of the
// positions a search evaluates were evaluated a little earlier (the next
// iteration, razoring's quiescence search, transpositions). What is kept is
// what the men on the board decide; the fifty-move taper and the window's
// early exit are applied again at each use, so a cached answer is exactly
// the one the evaluation would give. One per thread: nothing in it is shared.
class EvalCache {
 public:
  enum Flags : uint8_t {
    Known = 1,       // scale is set
    MateBranch = 2,  // score is the mate branch's, used as it is
    BaseKnown = 4,   // base is set and the men allow the early exit
  };
  static constexpr int32_t NoScore = INT32_MIN;
  struct Entry {
    uint64_t key;
    int32_t score;  // before the scale factor; NoScore until worked out
    int16_t base;   // material, piece squares and the move, tapered
    uint8_t scale;  // the men's own scale factor
    uint8_t flags;
  };
  static_assert(sizeof(Entry) == 16);
  // 256 KB: small enough to stay in the core's own cache beside the tables'
  // lines; larger ones hit more often but cost more than they save.
  static constexpr uint32_t entryCount = 1u << 14;

  EvalCache() : entries_(new Entry[entryCount]), materials_(new MaterialEntry[materialCount]) { clear(); }

  void clear() {
    for (uint32_t i = 0; i < entryCount; ++i) entries_[i] = Entry{0, NoScore, 0, 0, 0};
    // No side ever counts 255 men of a kind, so these keys match nothing.
    for (uint32_t i = 0; i < materialCount; ++i) materials_[i].counts[0] = materials_[i].counts[1] = ~uint64_t(0);
  }
  Entry& entryFor(uint64_t key) { return entries_[key & (entryCount - 1)]; }

  // The material terms of the board, worked out once per set of piece
  // counts: a search meets only a few of them.
  const MaterialInfo& materialFor(const Board_0x88& board) {
    uint64_t counts[2];
    std::memcpy(&counts[White], board.side[White].count, sizeof(uint64_t));
    std::memcpy(&counts[Black], board.side[Black].count, sizeof(uint64_t));
    const uint64_t mix = (counts[White] * 0x9E3779B97F4A7C15ULL) ^ (counts[Black] * 0xC2B2AE3D27D4EB4FULL);
    MaterialEntry& entry = materials_[mix >> (64 - materialBits)];
    if (entry.counts[White] != counts[White] || entry.counts[Black] != counts[Black]) {
      computeMaterial(entry.info, board);
      entry.counts[White] = counts[White];
      entry.counts[Black] = counts[Black];
    }
    return entry.info;
  }

 private:
  // The count bytes and the total of a side lie next to each other: eight bytes.
  static_assert(offsetof(PieceSet, total) == offsetof(PieceSet, count) + 7 && sizeof(PieceSet::count) == 7);
  struct MaterialEntry {
    uint64_t counts[2];
    MaterialInfo info;
  };
  static constexpr uint32_t materialBits = 9;
  static constexpr uint32_t materialCount = 1u << materialBits;

  std::unique_ptr<Entry[]> entries_;
  std::unique_ptr<MaterialEntry[]> materials_;
};
