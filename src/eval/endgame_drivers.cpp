#include "eval/endgame_drivers.h"

#include "board/square_shade.h"

namespace {

constexpr int EdgeWeight = 64;
constexpr int KingDistanceWeight = 2;
constexpr int SafeCornerWeight = 16;
constexpr int MaxDistance = 7;

constexpr Square A1 = 0x00, H1 = 0x07, A8 = 0x70, H8 = 0x77;

}  // namespace

Square endgameBishopSquare(const PieceSet& set) {
  for (int s = 4; s <= 5; ++s)
    if (!(set.square[s] & 0x88)) return set.square[s];
  for (int s = FirstPawnSlot; s <= LastSlot; ++s)
    if (!(set.square[s] & 0x88)) return set.square[s];
  return NoSquare;
}

MateDrivers computeMateDrivers(const Board_0x88& board, int m) {
  MateDrivers d{};
  d.strong = m > 0 ? White : Black;
  d.weak = opponent(d.strong);
  const PieceSet& strongSet = board.side[d.strong];
  Square weakKing = board.side[d.weak].square[0];
  Square strongKing = strongSet.square[0];

  d.kingEdge = EdgeWeight * kingEdgeTable[toSquare64(weakKing)];
  d.kingDistance = KingDistanceWeight * (MaxDistance - squareDistance(weakKing, strongKing));

  // Bishop and knight: mate is only possible in a corner of the bishop's shade,
  // so the weak king is credited for staying near one of the other two.
  bool fourMen = board.side[White].total + board.side[Black].total == 4;
  if (fourMen && strongSet.count[Bishop] == 1 && strongSet.count[Knight] == 1) {
    Square bishop = endgameBishopSquare(strongSet);
    Square cornerA = A1, cornerB = H8;
    if (!(bishop & 0x88) && squareShade[bishop] == 1) {
      cornerA = A8;
      cornerB = H1;
    }
    int toA = squareDistance(weakKing, cornerA);
    int toB = squareDistance(weakKing, cornerB);
    int cd = toA < toB ? toA : toB;
    d.safeCorner = SafeCornerWeight * (MaxDistance - cd);
  }
  return d;
}

template <typename Rec>
int mateBranchScore(const Board_0x88& board, int phase, int m) {
  MateDrivers d = computeMateDrivers(board, m);
  auto both = [](int x) { return ScorePair{int16_t(x), int16_t(x)}; };
  Rec::add(RowKingEdgeDistance, d.weak, both(d.kingEdge));
  Rec::add(RowKingDistance, d.strong, both(d.kingDistance));
  Rec::add(RowSafeCorner, d.weak, both(d.safeCorner));
  Rec::add(RowSideToMove, Color(board.sideToMove), ScorePair{MaxPhase, 0});
  int a[2] = {m, 0};
  Color us = Color(board.sideToMove);
  a[us] += phase;
  a[d.weak] += d.kingEdge + d.safeCorner;
  a[d.strong] += d.kingDistance;
  return a[us] - a[opponent(us)];
}

template int mateBranchScore<NoRecord>(const Board_0x88&, int, int);
template int mateBranchScore<ReportRecord>(const Board_0x88&, int, int);
