#pragma once
#include <cstdint>

#include "board/move.h"

// The line handed between nodes: the first entry is the move played at that node.
struct PvLine {
  static constexpr uint16_t capacity = 63;
  Move moves[capacity];
  uint16_t length = 0;

  void clear() { length = 0; }
  bool empty() const { return length == 0; }
  Move first() const { return length ? moves[0] : NoMove; }

  // This line becomes `move` followed by at most 62 moves of `child`.
  void assign(Move move, const PvLine& child) {
    moves[0] = move;
    uint16_t n = child.length < capacity - 1 ? child.length : uint16_t(capacity - 1);
    for (uint16_t i = 0; i < n; ++i) moves[i + 1] = child.moves[i];
    length = uint16_t(n + 1);
  }
  // This line becomes `parent` without its first move.
  void assignTail(const PvLine& parent) {
    length = parent.length ? uint16_t(parent.length - 1) : 0;
    for (uint16_t i = 0; i < length; ++i) moves[i] = parent.moves[i + 1];
  }
};
