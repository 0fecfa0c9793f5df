#include "eval/piece_activity.h"

#include "board/directions.h"
#include "eval/score_pair_ops.h"

namespace {

struct MobilityValues {
  ScorePair perSquare;
  ScorePair trapped;  // further, when the piece has no move at all
};

// Indexed by PieceType; pawns and kings have none.
constexpr MobilityValues mobilityValues[7] = {
    {}, {}, {{3, 4}, {-12, -58}}, {{6, 4}, {-16, -37}}, {{5, 7}, {-13, -42}}, {{4, 6}, {0, -3}}, {}};

// By the number of open files on the whole board, and of open plus half-open ones.
constexpr ScorePair rookOpenFileBonus[9] = {{0, 0},  {47, 37}, {54, 26}, {45, 20}, {42, 10},
                                            {0, -1}, {13, -26}, {-22, -53}, {0, 0}};
constexpr ScorePair rookHalfOpenFileBonus[9] = {{0, 0},   {12, -14}, {26, 11}, {30, 8}, {32, 26},
                                                {19, 40}, {-11, 51}, {-33, 52}, {0, 0}};

constexpr ScorePair rookOnKingFile{67, 54}, rookNextToKingFile{15, 0};
constexpr ScorePair queenOnKingFile{18, 99}, queenNextToKingFile{0, 11};

// Squares a slider reaches along one ray: empty ones and a first enemy piece.
// The step is a constant, so that each ray is a tight loop of its own.
template <int Step>
int ray(const Board_0x88& board, int from, Color us) {
  int mob = 0, sq = from + Step;
  for (; onBoard(sq) && board.piece[sq] == NoPiece; sq += Step) ++mob;
  return mob + (onBoard(sq) && board.color[sq] != us);
}

template <int... Steps>
int rayMobility(const Board_0x88& board, int from, Color us) {
  return (ray<Steps>(board, from, us) + ...);
}

// The on-board knight targets of each 0x88 square, in the order of knightDirs.
struct KnightTargets {
  uint8_t count[128];
  uint8_t square[128][8];
};

constexpr KnightTargets buildKnightTargets() {
  KnightTargets t{};
  for (int sq = 0; sq < 128; ++sq) {
    if (!onBoard(sq)) continue;
    for (int d : knightDirs)
      if (onBoard(sq + d)) t.square[sq][t.count[sq]++] = uint8_t(sq + d);
  }
  return t;
}

constexpr KnightTargets knightTargets = buildKnightTargets();

template <Color C, PieceType Type>
int mobilityOf(const Board_0x88& board, Square sq) {
  if constexpr (Type == Knight) {
    // Every target but one held by an own piece: no branch on the contents.
    const uint8_t* targets = knightTargets.square[sq];
    int mob = 0;
    for (int i = 0, n = knightTargets.count[sq]; i < n; ++i) mob += board.color[targets[i]] != C;
    return mob;
  } else if constexpr (Type == Bishop) {
    // The steps of diagonalDirs and orthogonalDirs.
    return rayMobility<15, 17, -15, -17>(board, sq, C);
  } else if constexpr (Type == Rook) {
    return rayMobility<-1, 16, 1, -16>(board, sq, C);
  } else {
    return rayMobility<15, 17, -15, -17, -1, 16, 1, -16>(board, sq, C);
  }
}

// The terms of one piece whose type is known at compile time.
template <Color C, PieceType Type, typename Rec>
ScorePair activityOf(const Board_0x88& board, Square sq, const PawnInfo& pawns) {
  const int mob = mobilityOf<C, Type>(board, sq);
  constexpr MobilityValues values = mobilityValues[Type];
  ScorePair sum{int16_t(values.perSquare.mg * mob), int16_t(values.perSquare.eg * mob)};
  if (mob == 0) sum += values.trapped;
  Rec::add(RowMobility, C, sum);
  if constexpr (Type != Rook && Type != Queen) {
    return sum;
  } else {
    const ScorePair mobility = sum;
    const int file = fileOf(sq);
    const int kingFile = fileOf(board.side[opponent(C)].square[0]);
    const int apart = file > kingFile ? file - kingFile : kingFile - file;
    if (pawns.openFiles & (1 << file)) {
      if constexpr (Type == Rook) sum += rookOpenFileBonus[pawns.openFileCount];
      if (apart == 0) sum += Type == Rook ? rookOnKingFile : queenOnKingFile;
      if (apart == 1) sum += Type == Rook ? rookNextToKingFile : queenNextToKingFile;
    } else if (Type == Rook && (pawns.halfOpenFiles & (1 << file))) {
      sum += rookHalfOpenFileBonus[pawns.openFileCount + pawns.halfOpenFileCount];
    }
    Rec::add(Type == Rook ? RowRooks : RowQueens, C, sum - mobility);
    return sum;
  }
}

}  // namespace

template <Color C, typename Rec>
ScorePair pieceActivity(const Board_0x88& board, Square sq, PieceType type, const PawnInfo& pawns) {
  switch (type) {
    case Knight: return activityOf<C, Knight, Rec>(board, sq, pawns);
    case Bishop: return activityOf<C, Bishop, Rec>(board, sq, pawns);
    case Rook: return activityOf<C, Rook, Rec>(board, sq, pawns);
    case Queen: return activityOf<C, Queen, Rec>(board, sq, pawns);
    default: return ScorePair{0, 0};
  }
}

template <Color C, typename Rec>
ScorePair sideActivity(const Board_0x88& board, const PawnInfo& pawns) {
  // Slots 1 to 7 hold only their own class, so their type needs no test;
  // an officer in a pawn slot is found by its piece code. The pairs add up
  // in 16-bit wrapping arithmetic, so the order of the pieces doesn't matter.
  const uint8_t* square = board.side[C].square;
  ScorePair sum{0, 0};
  int officers = board.side[C].total - board.side[C].count[Pawn] - 1;
  if (onBoard(square[1])) sum += activityOf<C, Queen, Rec>(board, square[1], pawns), --officers;
  for (int s = 2; s <= 3; ++s)
    if (onBoard(square[s])) sum += activityOf<C, Rook, Rec>(board, square[s], pawns), --officers;
  for (int s = 4; s <= 5; ++s)
    if (onBoard(square[s])) sum += activityOf<C, Bishop, Rec>(board, square[s], pawns), --officers;
  for (int s = 6; s <= 7; ++s)
    if (onBoard(square[s])) sum += activityOf<C, Knight, Rec>(board, square[s], pawns), --officers;
  // Officers left over sit in pawn slots: promoted pieces, or a third of a class.
  for (int s = FirstPawnSlot; officers > 0 && s <= LastSlot; ++s) {
    const Square sq = square[s];
    if (!onBoard(sq) || board.piece[sq] == Pawn) continue;
    sum += pieceActivity<C, Rec>(board, sq, PieceType(board.piece[sq]), pawns);
    --officers;
  }
  return sum;
}

template ScorePair pieceActivity<White, NoRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair pieceActivity<Black, NoRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair pieceActivity<White, ReportRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair pieceActivity<Black, ReportRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair sideActivity<White, NoRecord>(const Board_0x88&, const PawnInfo&);
template ScorePair sideActivity<Black, NoRecord>(const Board_0x88&, const PawnInfo&);
