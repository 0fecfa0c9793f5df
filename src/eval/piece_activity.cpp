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

// Squares a slider reaches along its rays: empty ones and a first enemy piece.
int rayMobility(const Board_0x88& board, Square from, Color us, const int* dirs, int count) {
  int mob = 0;
  for (int d = 0; d < count; ++d) {
    for (int sq = from + dirs[d]; onBoard(sq); sq += dirs[d]) {
      if (board.piece[sq] == NoPiece) {
        ++mob;
        continue;
      }
      if (board.color[sq] != us) ++mob;
      break;
    }
  }
  return mob;
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
    case Bishop: mob = rayMobility(board, sq, C, diagonalDirs, 4); break;
    case Rook: mob = rayMobility(board, sq, C, orthogonalDirs, 4); break;
    case Queen: mob = rayMobility(board, sq, C, diagonalDirs, 4) + rayMobility(board, sq, C, orthogonalDirs, 4); break;
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
