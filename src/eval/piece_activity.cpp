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

}  // namespace

template <Color C, typename Rec>
ScorePair pieceActivity(const Board_0x88& board, Square sq, PieceType type, const PawnInfo& pawns) {
  int mob;
  switch (type) {
    case Knight:
      mob = 0;
      for (int d : knightDirs) {
        int to = sq + d;
        if (onBoard(to) && !(board.piece[to] != NoPiece && board.color[to] == C)) ++mob;
      }
      break;
    // The steps of diagonalDirs and orthogonalDirs.
    case Bishop: mob = rayMobility<15, 17, -15, -17>(board, sq, C); break;
    case Rook: mob = rayMobility<-1, 16, 1, -16>(board, sq, C); break;
    case Queen: mob = rayMobility<15, 17, -15, -17, -1, 16, 1, -16>(board, sq, C); break;
    default: return ScorePair{0, 0};
  }
  const MobilityValues& values = mobilityValues[type];
  ScorePair sum{int16_t(values.perSquare.mg * mob), int16_t(values.perSquare.eg * mob)};
  if (mob == 0) sum += values.trapped;
  Rec::add(RowMobility, C, sum);
  if (type != Rook && type != Queen) return sum;
  const ScorePair mobility = sum;

  const int file = fileOf(sq);
  const int kingFile = fileOf(board.side[opponent(C)].square[0]);
  const int apart = file > kingFile ? file - kingFile : kingFile - file;
  if (pawns.openFiles & (1 << file)) {
    if (type == Rook) sum += rookOpenFileBonus[pawns.openFileCount];
    if (apart == 0) sum += type == Rook ? rookOnKingFile : queenOnKingFile;
    if (apart == 1) sum += type == Rook ? rookNextToKingFile : queenNextToKingFile;
  } else if (type == Rook && (pawns.halfOpenFiles & (1 << file))) {
    sum += rookHalfOpenFileBonus[pawns.openFileCount + pawns.halfOpenFileCount];
  }
  Rec::add(type == Rook ? RowRooks : RowQueens, C, sum - mobility);
  return sum;
}

template ScorePair pieceActivity<White, NoRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair pieceActivity<Black, NoRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair pieceActivity<White, ReportRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
template ScorePair pieceActivity<Black, ReportRecord>(const Board_0x88&, Square, PieceType, const PawnInfo&);
