#include "board/fen.h"

#include <cstring>
#include <initializer_list>

#include "board/zobrist.h"

namespace {

PieceType pieceFromLetter(char ch, Color& c) {
  c = (ch >= 'a' && ch <= 'z') ? Black : White;
  switch (ch) {
    case 'P': case 'p': return Pawn;
    case 'N': case 'n': return Knight;
    case 'B': case 'b': return Bishop;
    case 'R': case 'r': return Rook;
    case 'Q': case 'q': return Queen;
    case 'K': case 'k': return King;
    default: return NoPiece;
  }
}

// Fields 1: piece placement, up to the blank behind it.
bool readPlacement(Board_0x88& board, const char*& p) {
  int rank = 7, file = 0;
  for (;; ++p) {
    char ch = *p;
    if (ch == ' ') break;
    if (ch >= '1' && ch <= '8') {
      file += ch - '0';
      if (file > 8) return false;
    } else if (ch == '/') {
      // A slash behind rank 1 can never end well; stop before leaving the board.
      if (file != 8 || rank == 0) return false;
      --rank;
      file = 0;
    } else {
      Color c;
      PieceType type = pieceFromLetter(ch, c);
      // A ninth square on a rank is refused before it is placed off the board.
      if (type == NoPiece || file >= 8) return false;
      board.placePiece(makeSquare(file, rank), c, type);
      ++file;
    }
  }
  return rank == 0 && file == 8;
}

bool readCastling(Board_0x88& board, const char*& p) {
  PositionRecord& rec = board.currentRecord();
  if (*p == ' ') return true;  // two blanks in a row: no rights
  if (*p == '-') {
    ++p;
    return *p == ' ';
  }
  for (; *p != ' '; ++p) {
    uint8_t bit;
    uint8_t forbidden;
    switch (*p) {
      case 'K': bit = CastleWK; forbidden = CastleWK | CastleWQ | CastleBK | CastleBQ; break;
      case 'Q': bit = CastleWQ; forbidden = CastleWQ | CastleBK | CastleBQ; break;
      case 'k': bit = CastleBK; forbidden = CastleBK | CastleBQ; break;
      case 'q': bit = CastleBQ; forbidden = CastleBQ; break;
      default: return false;  // includes '-' behind a letter and the end of the text
    }
    if (board.castlingRights & forbidden) return false;
    board.castlingRights |= bit;
    rec.hashKey ^= castlingKey[bit];
  }
  return true;
}

// atoi that saturates instead of overflowing, so a move number of any length reads sensibly.
long long readInteger(const char* text) {
  while (*text == ' ' || *text == '\t') ++text;
  bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  long long value = 0;
  for (; *text >= '0' && *text <= '9'; ++text) {
    value = value * 10 + (*text - '0');
    if (value > 2147483647LL) value = 2147483647LL;
  }
  return negative ? -value : value;
}

enum class FieldResult { Fail, Accept, Continue };

FieldResult readEnPassant(Board_0x88& board, const char*& p) {
  if (*p == '-') {
    ++p;
    if (*p == '\0') return FieldResult::Accept;
    return *p == ' ' ? FieldResult::Continue : FieldResult::Fail;
  }
  char fileCh = p[0];
  if (fileCh < 'a' || fileCh > 'h') return FieldResult::Fail;
  char rankCh = p[1];
  if (rankCh < '1' || rankCh > '8') return FieldResult::Fail;
  int file = fileCh - 'a', rank = rankCh - '1';
  Color us = Color(board.sideToMove);
  Color them = opponent(us);
  if (rank != (us == White ? 5 : 2)) return FieldResult::Fail;
  Square ep = makeSquare(file, rank);
  Square pawnSq = Square(ep - (us == White ? 16 : -16));
  if (board.piece[pawnSq] != Pawn || board.color[pawnSq] != them) return FieldResult::Fail;
  // Only a usable capture makes an en-passant square, as in make.
  bool capturer = false;
  for (int d : {-1, +1}) {
    int beside = pawnSq + d;
    if (onBoard(beside) && board.piece[beside] == Pawn && board.color[beside] == us) capturer = true;
  }
  if (capturer) {
    board.epSquare = ep;
    board.currentRecord().hashKey ^= epKey[file];
  }
  p += 2;
  if (*p == ' ') return FieldResult::Continue;
  return *p == '\0' ? FieldResult::Accept : FieldResult::Fail;
}

bool readNumbers(Board_0x88& board, const char* text) {
  const char* blank = std::strchr(text, ' ');
  const char* moveText = blank ? blank + 1 : text;  // a lone number is the move number
  long long moveNumber = readInteger(moveText);
  if (moveNumber < 1) return false;
  board.setupMoveNumber = uint32_t(moveNumber);
  if (!blank) return true;
  size_t clockLength = size_t(blank - text);
  if (clockLength > 4) return false;
  char clock[5] = {};
  std::memcpy(clock, text, clockLength);
  long long value = readInteger(clock);
  if (value < 0) return false;
  board.halfMoveClock = uint8_t(value & 0xFF);
  return true;
}

}  // namespace

bool setupFromFen(Board_0x88& board, const char* text) {
  board.clear();
  const char* p = text;
  if (*p == ' ') return false;
  if (!readPlacement(board, p)) return false;
  ++p;
  if (*p == 'w') {
    board.sideToMove = White;
  } else if (*p == 'b') {
    board.sideToMove = Black;
    board.currentRecord().hashKey ^= sideKey;
  } else {
    return false;
  }
  ++p;
  if (*p != ' ') return false;
  ++p;
  if (!readCastling(board, p)) return false;
  ++p;
  switch (readEnPassant(board, p)) {
    case FieldResult::Fail: return false;
    case FieldResult::Accept: return true;
    case FieldResult::Continue: break;
  }
  ++p;
  return readNumbers(board, p);
}

bool setPositionFromWords(Board_0x88& board, const std::vector<std::string>& words) {
  std::string text;
  for (size_t i = 0; i < words.size(); ++i) {
    if (i) text += ' ';
    text += words[i];
  }
  return setupFromFen(board, text.c_str());
}
