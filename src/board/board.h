#pragma once
#include <cstdint>

#include "board/castling.h"
#include "board/move.h"
#include "board/piece_set.h"
#include "board/position_record.h"
#include "board/score_pair.h"
#include "board/types.h"

constexpr int HistorySize = 1024;

// The side-independent part of a position: keys and per-ply records live here.
class Board_Common {
 public:
  virtual uint64_t computePieceHash(uint32_t color) const = 0;
  virtual uint64_t computePawnHash() const = 0;

  PositionRecord& currentRecord() { return history[ply]; }
  const PositionRecord& currentRecord() const { return history[ply]; }

  ScorePair psq[2];
  PositionRecord history[HistorySize];
  Move counterMove[2][6][64];
  uint32_t ply;
  uint8_t castlingRights;
  uint8_t epSquare;
  uint8_t halfMoveClock;
  uint8_t sideToMove;
  // The full-move number of the set-up position (at ply 0), for writing FEN.
  uint32_t setupMoveNumber;
  // Where the castling kings and rooks start, standard unless a Chess960
  // position was set up.
  CastlingRules castling;

 protected:
  Board_Common() = default;
  Board_Common(const Board_Common&) = default;
  Board_Common& operator=(const Board_Common&) = default;
  ~Board_Common() = default;
};

// The 0x88 mailbox with a piece list per side; plain data of fixed size.
class Board_0x88 : public Board_Common {
 public:
  Board_0x88();
  Board_0x88(const Board_0x88&) = default;
  Board_0x88& operator=(const Board_0x88&) = default;
  virtual ~Board_0x88() = default;

  uint64_t computePieceHash(uint32_t color) const override;
  uint64_t computePawnHash() const override;

  // The cleared state; keeps killer moves in records above 0.
  void clear();

  // Puts a piece on an empty square for set-up: chooses its slot, updates
  // counts, psq and the keys of the current record.
  void placePiece(Square sq, Color c, PieceType type);

  // Key and pawn key of the current position from scratch.
  uint64_t computeFullHash() const;

  uint8_t piece[128];
  uint8_t color[128];
  uint8_t slot[128];
  PieceSet side[2];
};

// Builds the tables shared by all boards once; true after the first board exists.
extern bool boardTablesReady;
void initBoardTables();
