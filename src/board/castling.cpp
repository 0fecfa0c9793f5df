#include "board/castling.h"

#include <algorithm>
#include <cstring>

#include "board/zobrist.h"

namespace {

void buildPath(CastlingPath& p, int right, Square king, Square rook, bool chess960) {
  p = CastlingPath{};
  if (king == NoSquare || rook == NoSquare) return;
  const Square kingTo = castlingKingTo[right], rookTo = castlingRookTo[right];
  p.kingFrom = king;
  p.rookFrom = rook;
  p.moveTo = chess960 ? rook : kingTo;
  p.move = encodeMove88(king, p.moveTo, MoveCastling, unsigned(right));
  const int low = std::min({king, rook, kingTo, rookTo});
  const int high = std::max({king, rook, kingTo, rookTo});
  for (int sq = low; sq <= high; ++sq)
    if (sq != king && sq != rook) p.mustBeEmpty[p.emptyCount++] = Square(sq);
  const int step = kingTo > king ? 1 : -1;
  if (king != kingTo)
    for (int sq = king + step; sq != kingTo; sq += step) p.passed[p.passedCount++] = Square(sq);
}

void buildRules(CastlingRules& rules, bool chess960, const Square king[2], const Square rook[4]) {
  rules.chess960 = chess960;
  std::memset(rules.keepRights, 15, sizeof rules.keepRights);
  uint64_t keyOfRight[4] = {};
  for (int right = 0; right < 4; ++right) {
    const int colour = right >> 1;
    CastlingPath& p = rules.path[right];
    buildPath(p, right, king[colour], rook[right], chess960);
    if (p.kingFrom == NoSquare) continue;
    rules.keepRights[p.kingFrom] &= uint8_t(~(3 << (2 * colour)) & 15);
    rules.keepRights[p.rookFrom] &= uint8_t(~(1 << right) & 15);
    keyOfRight[right] = castlingRookKey[colour][fileOf(p.rookFrom)];
  }
  for (int rights = 0; rights < 16; ++rights) {
    rules.rightsKey[rights] = 0;
    for (int right = 0; right < 4; ++right)
      if (rights & (1 << right)) rules.rightsKey[rights] ^= keyOfRight[right];
  }
}

}  // namespace

void setStandardCastling(CastlingRules& rules) {
  const Square king[2] = {4, 116};
  const Square rook[4] = {7, 0, 119, 112};
  buildRules(rules, false, king, rook);
}

void setChess960Castling(CastlingRules& rules, const Square king[2], const Square rook[4]) {
  buildRules(rules, true, king, rook);
}
