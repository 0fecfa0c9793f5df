#pragma once
#include <cstdint>

#include "board/board.h"
#include "board/psq_table.h"
#include "board/zobrist.h"

// Three make/unmake pairs that keep more or less derived state:
//  - makeMove: everything, for the game and the search;
//  - makePerftMove: no psq, pawn key or clock, for perft;
//  - makeLightMove: arrays, lists, counts and side only, for legality trials.
// Each exists per moving colour; no pair checks the move.

namespace make_detail {

enum class Mode { Full, Perft, Light };

inline void addPsq(ScorePair& sum, const ScorePair& v) {
  sum.mg = int16_t(sum.mg + v.mg);
  sum.eg = int16_t(sum.eg + v.eg);
}
inline void subPsq(ScorePair& sum, const ScorePair& v) {
  sum.mg = int16_t(sum.mg - v.mg);
  sum.eg = int16_t(sum.eg - v.eg);
}

inline void updateCastlingKey(const Board_0x88& b, uint8_t before, uint8_t after, uint64_t& key) {
  if (before != after) key ^= b.castling.rightsKey[(before ^ after) & 15];
}

// The legality trial's castling, out of line: rare in a tree, it would
// otherwise cost the trial's common moves their registers.
template <Color C>
[[gnu::noinline]] void castleLight(Board_0x88& b, Square kingFrom, unsigned detail);
template <Color C>
[[gnu::noinline]] void uncastleLight(Board_0x88& b, Square kingFrom, unsigned detail);

// Takes the piece on sq off the board; keys and psq as the mode keeps them.
template <Mode M>
[[gnu::always_inline]] inline void removePiece(Board_0x88& b, Square sq) {
  uint8_t c = b.color[sq], t = b.piece[sq], s = b.slot[sq];
  if constexpr (M != Mode::Light) {
    PositionRecord& r = b.history[b.ply];
    uint64_t k = pieceKey[c][t - 1][toSquare64(sq)];
    r.hashKey ^= k;
    if constexpr (M == Mode::Full) {
      if (t == Pawn) r.pawnHashKey ^= k;
      subPsq(b.psq[c], psqTable[c][t - 1][toSquare64(sq)]);
    }
  }
  // A piece beyond the list's capacity has no slot to free.
  if (s < NoSlot) b.side[c].square[s] = NoSquare;
  --b.side[c].count[t];
  --b.side[c].total;
  b.piece[sq] = NoPiece;
  b.color[sq] = NoColor;
  b.slot[sq] = NoSlot;
}

// The arrays and the list slot follow a piece from one square to another.
[[gnu::always_inline]] inline void shiftPiece(Board_0x88& b, Square from, Square to) {
  uint8_t c = b.color[from], t = b.piece[from], s = b.slot[from];
  if (s < NoSlot) b.side[c].square[s] = to;
  b.piece[to] = t;
  b.color[to] = c;
  b.slot[to] = s;
  b.piece[from] = NoPiece;
  b.color[from] = NoColor;
  b.slot[from] = NoSlot;
}

// Castling: king and rook leave their squares before either lands, since in
// Chess960 each may land where the other stood (or stay where it is).
inline void relocateKingAndRook(Board_0x88& b, Square kingFrom, Square rookFrom, Square kingTo, Square rookTo) {
  const uint8_t c = b.color[kingFrom], kingSlot = b.slot[kingFrom], rookSlot = b.slot[rookFrom];
  b.piece[kingFrom] = b.piece[rookFrom] = NoPiece;
  b.color[kingFrom] = b.color[rookFrom] = NoColor;
  b.slot[kingFrom] = b.slot[rookFrom] = NoSlot;
  b.piece[kingTo] = King;
  b.color[kingTo] = c;
  b.slot[kingTo] = kingSlot;
  b.piece[rookTo] = Rook;
  b.color[rookTo] = c;
  b.slot[rookTo] = rookSlot;
  if (kingSlot < NoSlot) b.side[c].square[kingSlot] = kingTo;
  if (rookSlot < NoSlot) b.side[c].square[rookSlot] = rookTo;
}

template <Color C, Mode M>
inline void castle(Board_0x88& b, Square kingFrom, unsigned detail) {
  const Square rookFrom = b.castling.path[detail].rookFrom;
  const Square kingTo = castlingKingTo[detail], rookTo = castlingRookTo[detail];
  if constexpr (M != Mode::Light) {
    b.history[b.ply].hashKey ^= pieceKey[C][King - 1][toSquare64(kingFrom)] ^ pieceKey[C][King - 1][toSquare64(kingTo)] ^
                                pieceKey[C][Rook - 1][toSquare64(rookFrom)] ^ pieceKey[C][Rook - 1][toSquare64(rookTo)];
  }
  if constexpr (M == Mode::Full) {
    subPsq(b.psq[C], psqTable[C][King - 1][toSquare64(kingFrom)]);
    addPsq(b.psq[C], psqTable[C][King - 1][toSquare64(kingTo)]);
    subPsq(b.psq[C], psqTable[C][Rook - 1][toSquare64(rookFrom)]);
    addPsq(b.psq[C], psqTable[C][Rook - 1][toSquare64(rookTo)]);
  }
  relocateKingAndRook(b, kingFrom, rookFrom, kingTo, rookTo);
}

template <Mode M>
[[gnu::always_inline]] inline void movePsq(Board_0x88& b, Square from, Square to) {
  if constexpr (M == Mode::Full) {
    uint8_t c = b.color[from], t = b.piece[from];
    subPsq(b.psq[c], psqTable[c][t - 1][toSquare64(from)]);
    addPsq(b.psq[c], psqTable[c][t - 1][toSquare64(to)]);
  }
}

// Moves a piece within its slot; keys and psq as the mode keeps them.
template <Mode M>
[[gnu::always_inline]] inline void movePiece(Board_0x88& b, Square from, Square to) {
  if constexpr (M != Mode::Light) {
    uint8_t c = b.color[from], t = b.piece[from];
    PositionRecord& r = b.history[b.ply];
    uint64_t k = pieceKey[c][t - 1][toSquare64(from)] ^ pieceKey[c][t - 1][toSquare64(to)];
    r.hashKey ^= k;
    if (M == Mode::Full && t == Pawn) r.pawnHashKey ^= k;
  }
  movePsq<M>(b, from, to);
  shiftPiece(b, from, to);
}

// Puts a captured piece back into its former slot during unmake; the psq
// sums come back from the undo record as a whole.
[[gnu::always_inline]] inline void restorePiece(Board_0x88& b, Square sq, uint8_t type, uint8_t c, uint8_t s) {
  b.piece[sq] = type;
  b.color[sq] = c;
  b.slot[sq] = s;
  b.side[c].square[s] = sq;
  ++b.side[c].count[type];
  ++b.side[c].total;
}

inline uint8_t capturedCode(const Board_0x88& b, Square sq) {
  return uint8_t((b.piece[sq] << 4) | (b.slot[sq] & 15));
}

template <Color C, Mode M>
inline void make(Board_0x88& b, Move m, UndoRecord& u) {
  constexpr Color Them = opponent(C);
  constexpr int back = C == White ? -16 : 16;
  const Square from = moveFromSquare(m), to = moveToSquare(m);
  const unsigned kind = moveKind(m);

  if constexpr (M == Mode::Light) {
    if (kind == MoveEnPassant) {
      Square victim = Square(to + back);
      u.captured = capturedCode(b, victim);
      removePiece<M>(b, victim);
      movePiece<M>(b, from, to);
    } else if (kind == MoveCastling) {
      // In Chess960 `to` is the own rook: nothing is taken.
      u.captured = 0;
      castleLight<C>(b, from, moveDetail(m));
    } else {
      u.captured = capturedCode(b, to);
      if (b.piece[to] != NoPiece) removePiece<M>(b, to);
      movePiece<M>(b, from, to);
      if (kind == MovePromotion) {
        PieceType promoted = promotionPiece(m);
        b.piece[to] = promoted;
        --b.side[C].count[Pawn];
        ++b.side[C].count[promoted];
      }
    }
    b.sideToMove = Them;
    return;
  } else {
    PositionRecord& next = b.history[b.ply + 1];
    const PositionRecord& prev = b.history[b.ply];
    next.hashKey = prev.hashKey;
    next.pawnHashKey = prev.pawnHashKey;
    next.repetitionCount = 0;
    ++b.ply;
    u.castlingRights = b.castlingRights;
    u.epSquare = b.epSquare;
    u.halfMoveClock = b.halfMoveClock;
    if constexpr (M == Mode::Full) {
      u.psq[White] = b.psq[White];
      u.psq[Black] = b.psq[Black];
    }
    uint64_t& key = next.hashKey;
    const uint8_t oldEp = b.epSquare;
    const uint8_t rightsBefore = b.castlingRights;

    if (kind == MoveEnPassant) {
      Square victim = Square(to + back);
      u.captured = capturedCode(b, victim);
      removePiece<M>(b, victim);
      movePiece<M>(b, from, to);
      if constexpr (M == Mode::Full) b.halfMoveClock = 0;
      b.epSquare = NoSquare;
      if (oldEp != NoSquare) key ^= epKey[oldEp & 15];
      b.sideToMove = Them;
      key ^= sideKey;
      return;
    }

    if (kind == MovePromotion) {
      u.captured = capturedCode(b, to);
      if (b.piece[to] != NoPiece) removePiece<M>(b, to);
      movePiece<M>(b, from, to);
      PieceType promoted = promotionPiece(m);
      Square64 to64 = toSquare64(to);
      key ^= pieceKey[C][Pawn - 1][to64] ^ pieceKey[C][promoted - 1][to64];
      if constexpr (M == Mode::Full) {
        next.pawnHashKey ^= pieceKey[C][Pawn - 1][to64];
        subPsq(b.psq[C], psqTable[C][Pawn - 1][to64]);
        addPsq(b.psq[C], psqTable[C][promoted - 1][to64]);
        b.halfMoveClock = 0;
      }
      b.piece[to] = promoted;
      --b.side[C].count[Pawn];
      ++b.side[C].count[promoted];
      b.epSquare = NoSquare;
      b.castlingRights &= b.castling.keepRights[to];
      if (oldEp != NoSquare) key ^= epKey[oldEp & 15];
    } else if (kind == MoveCastling) {
      u.captured = 0;
      castle<C, M>(b, from, moveDetail(m));
      if constexpr (M == Mode::Full) ++b.halfMoveClock;
      b.epSquare = NoSquare;
      b.castlingRights &= C == White ? uint8_t(~(CastleWK | CastleWQ)) : uint8_t(~(CastleBK | CastleBQ));
      if (oldEp != NoSquare) key ^= epKey[oldEp & 15];
    } else {
      u.captured = capturedCode(b, to);
      if (b.piece[to] != NoPiece) {
        removePiece<M>(b, to);
        if constexpr (M == Mode::Full) b.halfMoveClock = 0;
      } else if constexpr (M == Mode::Full) {
        if (b.piece[from] == Pawn)
          b.halfMoveClock = 0;
        else
          ++b.halfMoveClock;
      }
      movePiece<M>(b, from, to);
      uint8_t newEp = NoSquare;
      if (moveDetail(m) == DetailDoubleStep) {
        // Only a usable capture makes an en-passant square, so transpositions hash alike.
        if (((to & 7) != 0 && b.piece[to - 1] == Pawn && b.color[to - 1] == Them) ||
            ((to & 7) != 7 && b.piece[to + 1] == Pawn && b.color[to + 1] == Them))
          newEp = uint8_t(to + back);
      }
      b.epSquare = newEp;
      b.castlingRights &= b.castling.keepRights[from] & b.castling.keepRights[to];
      if (oldEp != NoSquare) key ^= epKey[oldEp & 15];
      if (newEp != NoSquare) key ^= epKey[newEp & 15];
    }
    updateCastlingKey(b, rightsBefore, b.castlingRights, key);
    b.sideToMove = Them;
    key ^= sideKey;
  }
}

template <Color C, Mode M>
inline void unmake(Board_0x88& b, Move m, const UndoRecord& u) {
  constexpr Color Them = opponent(C);
  constexpr int back = C == White ? -16 : 16;
  const Square from = moveFromSquare(m), to = moveToSquare(m);
  const unsigned kind = moveKind(m);
  b.sideToMove = C;
  switch (kind) {
    case MovePromotion: {
      PieceType promoted = promotionPiece(m);
      --b.side[C].count[promoted];
      ++b.side[C].count[Pawn];
      b.piece[to] = Pawn;
      shiftPiece(b, to, from);
      if (u.captured >> 4) restorePiece(b, to, u.captured >> 4, Them, u.captured & 15);
      break;
    }
    case MoveCastling: {
      const unsigned detail = moveDetail(m);
      if constexpr (M == Mode::Light)
        uncastleLight<C>(b, from, detail);
      else
        relocateKingAndRook(b, castlingKingTo[detail], castlingRookTo[detail], from, b.castling.path[detail].rookFrom);
      break;
    }
    case MoveEnPassant:
      shiftPiece(b, to, from);
      restorePiece(b, Square(to + back), Pawn, Them, u.captured & 15);
      break;
    default:
      shiftPiece(b, to, from);
      if (u.captured >> 4) restorePiece(b, to, u.captured >> 4, Them, u.captured & 15);
      break;
  }
  if constexpr (M == Mode::Full) {
    b.psq[White] = u.psq[White];
    b.psq[Black] = u.psq[Black];
  }
  if constexpr (M != Mode::Light) {
    b.castlingRights = u.castlingRights;
    b.epSquare = u.epSquare;
    b.halfMoveClock = u.halfMoveClock;
    --b.ply;
  }
}

template <Color C>
void castleLight(Board_0x88& b, Square kingFrom, unsigned detail) {
  castle<C, Mode::Light>(b, kingFrom, detail);
}
template <Color C>
void uncastleLight(Board_0x88& b, Square kingFrom, unsigned detail) {
  relocateKingAndRook(b, castlingKingTo[detail], castlingRookTo[detail], kingFrom, b.castling.path[detail].rookFrom);
}

}  // namespace make_detail

// The key after m as a plain move: right for most moves, while castling,
// rights and en passant may make it another. Enough to prefetch a table entry.
template <Color C>
inline uint64_t plainKeyAfter(const Board_0x88& b, Move m) {
  const Square from = moveFromSquare(m), to = moveToSquare(m);
  const uint64_t* moving = pieceKey[C][b.piece[from] - 1];
  uint64_t key = b.history[b.ply].hashKey ^ sideKey ^ moving[moveFrom(m)] ^ moving[moveTo(m)];
  if (b.piece[to] != NoPiece) key ^= pieceKey[opponent(C)][b.piece[to] - 1][moveTo(m)];
  if (b.epSquare != NoSquare) key ^= epKey[b.epSquare & 15];
  return key;
}

template <Color C>
inline void makeMove(Board_0x88& b, const Move& m, UndoRecord& u) {
  make_detail::make<C, make_detail::Mode::Full>(b, m, u);
}
template <Color C>
inline void unmakeMove(Board_0x88& b, const Move& m, const UndoRecord& u) {
  make_detail::unmake<C, make_detail::Mode::Full>(b, m, u);
}
template <Color C>
inline void makePerftMove(Board_0x88& b, const Move& m, UndoRecord& u) {
  make_detail::make<C, make_detail::Mode::Perft>(b, m, u);
}
template <Color C>
inline void unmakePerftMove(Board_0x88& b, const Move& m, const UndoRecord& u) {
  make_detail::unmake<C, make_detail::Mode::Perft>(b, m, u);
}
template <Color C>
inline void makeLightMove(Board_0x88& b, const Move& m, UndoRecord& u) {
  make_detail::make<C, make_detail::Mode::Light>(b, m, u);
}
template <Color C>
inline void unmakeLightMove(Board_0x88& b, const Move& m, const UndoRecord& u) {
  make_detail::unmake<C, make_detail::Mode::Light>(b, m, u);
}

inline void makeNullMove(Board_0x88& b, UndoRecord& u) {
  b.history[b.ply].movePlayed = NoMove;
  PositionRecord& next = b.history[b.ply + 1];
  next.hashKey = b.history[b.ply].hashKey;
  next.pawnHashKey = b.history[b.ply].pawnHashKey;
  next.repetitionCount = 0;
  ++b.ply;
  u.castlingRights = b.castlingRights;
  u.epSquare = b.epSquare;
  u.halfMoveClock = b.halfMoveClock;
  b.sideToMove = opponent(Color(b.sideToMove));
  b.halfMoveClock = 0;
  next.hashKey ^= sideKey;
  if (b.epSquare != NoSquare) next.hashKey ^= epKey[b.epSquare & 15];
  b.epSquare = NoSquare;
}

inline void unmakeNullMove(Board_0x88& b, const UndoRecord& u) {
  b.sideToMove = opponent(Color(b.sideToMove));
  --b.ply;
  b.castlingRights = u.castlingRights;
  b.epSquare = u.epSquare;
  b.halfMoveClock = u.halfMoveClock;
}

// Game-level conveniences that pick the instance from the side to move.
inline void makeMoveForSide(Board_0x88& b, Move m, UndoRecord& u) {
  if (b.sideToMove == White)
    makeMove<White>(b, m, u);
  else
    makeMove<Black>(b, m, u);
}
inline void unmakeMoveForSide(Board_0x88& b, Move m, const UndoRecord& u) {
  if (b.sideToMove == Black)
    unmakeMove<White>(b, m, u);
  else
    unmakeMove<Black>(b, m, u);
}
