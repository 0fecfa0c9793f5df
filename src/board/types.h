#pragma once
#include <cstdint>

// Colours, pieces and squares shared by the whole engine.

enum Color : uint8_t { White = 0, Black = 1, NoColor = 2 };

enum PieceType : uint8_t { NoPiece = 0, Pawn = 1, Knight = 2, Bishop = 3, Rook = 4, Queen = 5, King = 6 };

// 0x88 index: rank * 16 + file. On the board exactly when (sq & 0x88) == 0.
using Square = uint8_t;
// Compact index: rank * 8 + file.
using Square64 = uint8_t;

constexpr Square NoSquare = 255;

constexpr Color opponent(Color c) { return Color(c ^ 1); }

constexpr bool onBoard(int sq) { return (sq & 0x88) == 0; }

// rank * 16 + file and rank * 8 + file differ by rank * 8: two operations each way.
constexpr Square64 toSquare64(Square sq) { return Square64((sq + (sq & 7)) >> 1); }
constexpr Square toSquare88(Square64 s) { return Square(s + (s & 56)); }
static_assert(toSquare64(0x77) == 63 && toSquare64(0x34) == 28 && toSquare88(63) == 0x77 && toSquare88(28) == 0x34);

constexpr int fileOf(Square sq) { return sq & 7; }
constexpr int rankOf(Square sq) { return sq >> 4; }
constexpr Square makeSquare(int file, int rank) { return Square(rank * 16 + file); }

// ".pnbrqk" indexed by PieceType, used wherever a piece is printed.
inline constexpr char pieceLetters[] = ".pnbrqk";
