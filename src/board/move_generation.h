#pragma once
#include <cstdint>

#include "board/attacks.h"
#include "board/board.h"
#include "board/check_info.h"
#include "board/directions.h"
#include "board/move.h"
#include "board/side_geometry.h"

// Legal move generators: every candidate is filtered as it is appended, by the
// pin test when not in check and by trial otherwise. Order: en passant, then
// the own list by slot with the direction tables' order, castling last.

enum PromotionMode { PromotionsAll, PromotionsQueenOnly };

namespace gen_detail {

// What a walk over the piece list produces.
enum class Walk { All, Evasions, Captures, Quiets };

template <Color C>
using Side = SideGeometry<C>;

inline uint64_t bitOf(Square sq) { return uint64_t(1) << toSquare64(sq); }

// How a candidate is checked: by trial, and in check first against the squares
// where a move other than the king's can end the check at all.
struct Filter {
  bool trial;
  uint64_t targets = ~uint64_t(0);
};

// Appends a move after the legality filter of the walk: trial in check and
// for king moves or pinned pieces, nothing otherwise.
template <Color C, Walk W, typename List>
inline void addFiltered(Board_0x88& b, List& list, Move m, Filter filter) {
  if (list.count >= List::capacity) return;
  if constexpr (W == Walk::Evasions) {
    // A move that neither takes the checker nor blocks its line can't be legal.
    if (!(filter.targets & (uint64_t(1) << moveTo(m)))) return;
  }
  if (W == Walk::Evasions || filter.trial) {
    if (!passesTrial<C>(b, m)) return;
  }
  list.add(m);
}

template <Color C, Walk W, typename List>
inline void addPromotions(Board_0x88& b, List& list, Square from, Square to, Filter needsTrial,
                          PromotionMode mode) {
  addFiltered<C, W>(b, list, encodePromotion(from, to, Queen), needsTrial);
  if (mode == PromotionsQueenOnly) return;
  addFiltered<C, W>(b, list, encodePromotion(from, to, Knight), needsTrial);
  addFiltered<C, W>(b, list, encodePromotion(from, to, Rook), needsTrial);
  addFiltered<C, W>(b, list, encodePromotion(from, to, Bishop), needsTrial);
}

template <Color C, Walk W, typename List>
inline void addEnPassant(Board_0x88& b, List& list) {
  if (b.epSquare == NoSquare) return;
  constexpr int o1 = C == White ? -15 : 15;
  constexpr int o2 = C == White ? -17 : 17;
  constexpr int origins[2] = {o1, o2};
  for (int offset : origins) {
    int from = uint8_t(b.epSquare + offset);
    if ((from & 0x88) || b.piece[from] != Pawn || b.color[from] != C) continue;
    // Both pawns leave the rank at once, so en passant always goes through the trial.
    addFiltered<C, W>(b, list, encodeMove88(Square(from), b.epSquare, MoveEnPassant), Filter{true});
  }
}

template <Color C, Walk W, typename List>
inline void addSlider(Board_0x88& b, List& list, Square from, const int (&dirs)[4], Filter pinned) {
  constexpr Color Them = opponent(C);
  for (int d : dirs) {
    int to = uint8_t(from + d);
    while (!(to & 0x88) && b.color[to] == NoColor) {
      if constexpr (W != Walk::Captures) addFiltered<C, W>(b, list, encodeMove88(from, Square(to)), pinned);
      to = uint8_t(to + d);
    }
    if constexpr (W != Walk::Quiets) {
      if (!(to & 0x88) && b.color[to] == Them) addFiltered<C, W>(b, list, encodeMove88(from, Square(to)), pinned);
    }
  }
}

template <Color C, Walk W, typename List>
inline void addLeaper(Board_0x88& b, List& list, Square from, const int (&dirs)[8], Filter needsTrial) {
  constexpr Color Them = opponent(C);
  for (int d : dirs) {
    int to = uint8_t(from + d);
    if (to & 0x88) continue;
    uint8_t occupant = b.color[to];
    if constexpr (W == Walk::Captures) {
      if (occupant != Them) continue;
    } else if constexpr (W == Walk::Quiets) {
      if (occupant != NoColor) continue;
    } else {
      if (occupant == C) continue;
    }
    addFiltered<C, W>(b, list, encodeMove88(from, Square(to)), needsTrial);
  }
}

template <Color C, Walk W, typename List>
inline void addPawnMoves(Board_0x88& b, List& list, Square from, Filter pinned, PromotionMode mode) {
  using S = Side<C>;
  constexpr Color Them = opponent(C);
  constexpr int captureOffsets[2] = {S::capture1, S::capture2};
  const int rank = from >> 4;
  if (rank == S::promotionSourceRank) {
    if constexpr (W == Walk::Quiets) return;
    for (int offset : captureOffsets) {
      int to = uint8_t(from + offset);
      if (!(to & 0x88) && b.color[to] == Them) addPromotions<C, W>(b, list, from, Square(to), pinned, mode);
    }
    int to = uint8_t(from + S::push);
    if (b.color[to] == NoColor) addPromotions<C, W>(b, list, from, Square(to), pinned, mode);
    return;
  }
  if constexpr (W != Walk::Quiets) {
    for (int offset : captureOffsets) {
      int to = uint8_t(from + offset);
      if (!(to & 0x88) && b.color[to] == Them) addFiltered<C, W>(b, list, encodeMove88(from, Square(to)), pinned);
    }
  }
  if constexpr (W == Walk::Captures) return;
  int to = uint8_t(from + S::push);
  // A pawn on the last rank (only from an odd FEN) has nowhere to go.
  if ((to & 0x88) || b.color[to] != NoColor) return;
  addFiltered<C, W>(b, list, encodeMove88(from, Square(to)), pinned);
  if (rank == S::doubleStepRank) {
    int to2 = uint8_t(to + S::push);
    if (b.color[to2] == NoColor)
      addFiltered<C, W>(b, list, encodeMove88(from, Square(to2), MoveNormal, DetailDoubleStep), pinned);
  }
}

template <Color C, Walk W, typename List>
inline void walkPieces(Board_0x88& b, const PinMasks& pins, List& list, PromotionMode mode,
                       uint64_t evasionTargets = ~uint64_t(0)) {
  const uint64_t pinned = pins.any();
  const PieceSet& set = b.side[C];
  for (int i = 0; i <= LastSlot && list.count < List::capacity; ++i) {
    // A walk that only counts to two leaves the king, whose every move needs
    // a trial, for last.
    const int s = List::kingLast ? (i + 1) & LastSlot : i;
    Square from = set.square[s];
    if (from & 0x88) continue;
    const Filter isPinned{(pinned & bitOf(from)) != 0, evasionTargets};
    // Tests in the order of the slots rather than a jump through a table,
    // which the slot pattern makes hard to predict.
    const int piece = b.piece[from];
    if (piece == Pawn) {
      addPawnMoves<C, W>(b, list, from, isPinned, mode);
    } else if (piece == King) {
      addLeaper<C, W>(b, list, from, kingDirs, Filter{true});
    } else if (piece == Knight) {
      addLeaper<C, W>(b, list, from, knightDirs, isPinned);
    } else {
      if (piece != Bishop) addSlider<C, W>(b, list, from, orthogonalDirs, isPinned);
      if (piece != Rook) addSlider<C, W>(b, list, from, diagonalDirs, isPinned);
    }
  }
}

// Squares where a piece other than the king can end a check: the checker's
// square and, for a slider, the squares between it and the king. None in
// double check. Every candidate that passes still goes through the trial.
template <Color C>
inline uint64_t evasionTargets(const Board_0x88& b) {
  const Square k = b.side[C].square[0];
  if (k & 0x88) return ~uint64_t(0);
  Square checkers[2];
  int found = 0;
  // Leapers and pawns can only be taken.
  constexpr Color Them = opponent(C);
  constexpr int p1 = C == White ? 15 : -15;
  constexpr int p2 = C == White ? 17 : -17;
  constexpr int pawnOffsets[2] = {p1, p2};
  for (int d : pawnOffsets) {
    int t = uint8_t(k + d);
    if (!(t & 0x88) && b.piece[t] == Pawn && b.color[t] == Them && found < 2) checkers[found++] = Square(t);
  }
  for (int d : knightDirs) {
    int t = uint8_t(k + d);
    if (!(t & 0x88) && b.piece[t] == Knight && b.color[t] == Them && found < 2) checkers[found++] = Square(t);
  }
  uint64_t between = 0;
  auto rays = [&](const int (&dirs)[4], PieceType slider) {
    for (int d : dirs) {
      uint64_t path = 0;
      int t = uint8_t(k + d);
      while (!(t & 0x88) && b.color[t] == NoColor) {
        path |= uint64_t(1) << toSquare64(Square(t));
        t = uint8_t(t + d);
      }
      if (!(t & 0x88) && b.color[t] == Them && (b.piece[t] == slider || b.piece[t] == Queen) && found < 2) {
        checkers[found++] = Square(t);
        between |= path;
      }
    }
  };
  rays(orthogonalDirs, Rook);
  rays(diagonalDirs, Bishop);
  if (found != 1) return found == 0 ? ~uint64_t(0) : 0;
  return between | (uint64_t(1) << toSquare64(checkers[0]));
}

// Castling, king side first, by the rules the position was set up with: the
// squares between empty, the squares the king passes not attacked, and, the
// trial of every king move, its destination safe once both have moved. Out
// of line: the generators' own loops keep their registers.
template <Color C, typename List>
[[gnu::noinline]] void addCastlingIfLegal(Board_0x88& b, List& list, unsigned right) {
  const CastlingPath& path = b.castling.path[right];
  if (list.count < List::capacity && castlingPathIsFree<opponent(C)>(b, path) && castlingLandsSafely<C>(b, path, right))
    list.add(path.move);
}

template <Color C, typename List>
inline void addCastling(Board_0x88& b, List& list) {
  constexpr unsigned kingSide = C == White ? CastleWhiteKingSide : CastleBlackKingSide;
  const unsigned rights = b.castlingRights >> kingSide;
  if (!(rights & 3)) return;
  if (rights & 1) addCastlingIfLegal<C>(b, list, kingSide);
  if (rights & 2) addCastlingIfLegal<C>(b, list, kingSide + 1);
}

}  // namespace gen_detail

// All legal moves of a side that is not in check.
template <Color C, typename List>
inline void generateAllMoves(Board_0x88& b, const PinMasks& pins, List& list) {
  using namespace gen_detail;
  addEnPassant<C, Walk::All>(b, list);
  walkPieces<C, Walk::All>(b, pins, list, PromotionsAll);
  addCastling<C>(b, list);
}

// All legal moves of a side in check; every candidate is tried.
template <Color C, typename List>
inline void generateEvasions(Board_0x88& b, List& list) {
  using namespace gen_detail;
  PinMasks none;
  addEnPassant<C, Walk::Evasions>(b, list);
  walkPieces<C, Walk::Evasions>(b, none, list, PromotionsAll, evasionTargets<C>(b));
}

// Captures and promotions (a promotion counts as a capture); side not in check.
template <Color C>
inline void generateCaptures(Board_0x88& b, const PinMasks& pins, MoveList& list, PromotionMode mode) {
  using namespace gen_detail;
  addEnPassant<C, Walk::Captures>(b, list);
  walkPieces<C, Walk::Captures>(b, pins, list, mode);
}

// Moves to empty squares without promotion, and castling; side not in check.
template <Color C>
inline void generateQuiets(Board_0x88& b, const PinMasks& pins, MoveList& list) {
  using namespace gen_detail;
  walkPieces<C, Walk::Quiets>(b, pins, list, PromotionsAll);
  addCastling<C>(b, list);
}

// Room for two moves: enough to tell one legal move from several.
struct FirstTwoMoves {
  static constexpr uint32_t capacity = 2;
  static constexpr bool kingLast = true;
  ScoredMove moves[capacity];
  uint32_t count = 0;
  void add(Move m) { moves[count++] = ScoredMove{m, 0}; }
};

// Counts what a MoveList would hold, without keeping the moves.
struct MoveTally {
  static constexpr uint32_t capacity = MoveList::capacity;
  static constexpr bool kingLast = false;
  uint32_t count = 0;
  void add(Move) { ++count; }
};

// Whether a side that is not in check has exactly one legal move. The walk
// of the generator above stops at the second.
template <Color C>
inline bool hasOneLegalMove(Board_0x88& b, const PinMasks& pins) {
  using namespace gen_detail;
  FirstTwoMoves list;
  addEnPassant<C, Walk::All>(b, list);
  walkPieces<C, Walk::All>(b, pins, list, PromotionsAll);
  addCastling<C>(b, list);
  return list.count == 1;
}

// The entry for game-level callers: pins, check test, then the right generator.
void generateLegalMoves(Board_0x88& b, MoveList& list, bool& inCheck);
