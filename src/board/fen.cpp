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
      // A side's list has 16 slots: a 17th man could be captured but never put back.
      if (board.side[c].total > 16) return false;
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

// Chess960: rights named by their rook's file (Shredder-FEN "HAha"), or in
// X-FEN by K and Q for the outermost rook on that side of the king. Each
// right needs its king and rook on their first rank; what is wrong is said
// in `error`.
bool readChess960Castling(Board_0x88& board, const char*& p, std::string& error) {
  Square king[2] = {NoSquare, NoSquare};
  Square rook[4] = {NoSquare, NoSquare, NoSquare, NoSquare};
  if (*p == '-' && *++p != ' ') return false;
  for (; *p != ' '; ++p) {
    const char letter = *p;
    if (letter == '\0') return false;
    const Color c = letter >= 'a' && letter <= 'z' ? Black : White;
    const char upper = c == Black ? char(letter - 'a' + 'A') : letter;
    const std::string right = std::string("castling right '") + letter + "': ";
    const char* colour = c == White ? "white" : "black";
    const int rank = c == White ? 0 : 7;
    const std::string rankName = c == White ? "rank 1" : "rank 8";
    if (upper != 'K' && upper != 'Q' && (upper < 'A' || upper > 'H')) {
      error = right + "neither K, Q nor the file letter of a rook";
      return false;
    }
    const Square k = board.side[c].square[0];
    if ((k & 0x88) || board.piece[k] != King || rankOf(k) != rank) {
      error = right + "no " + colour + " king on " + rankName;
      return false;
    }
    auto isRook = [&](int file) {
      const Square sq = makeSquare(file, rank);
      return board.piece[sq] == Rook && board.color[sq] == c;
    };
    int file = -1;
    if (upper == 'K') {
      for (int f = 7; f > fileOf(k) && file < 0; --f)
        if (isRook(f)) file = f;
    } else if (upper == 'Q') {
      for (int f = 0; f < fileOf(k) && file < 0; ++f)
        if (isRook(f)) file = f;
    } else if (isRook(upper - 'A')) {
      file = upper - 'A';
    }
    if (file < 0) {
      error = right + "no " + colour + " rook " +
              (upper == 'K' ? "on the king side of " + rankName
               : upper == 'Q' ? "on the queen side of " + rankName
                              : std::string("on ") + char(letter | 0x20) + char('1' + rank));
      return false;
    }
    const int index = 2 * c + (file > fileOf(k) ? 0 : 1);
    if (rook[index] != NoSquare) {
      error = right + "a second " + colour + " right on the " + (index & 1 ? "queen" : "king") + " side";
      return false;
    }
    rook[index] = makeSquare(file, rank);
    king[c] = k;
    board.castlingRights |= uint8_t(1 << index);
  }
  setChess960Castling(board.castling, king, rook);
  board.currentRecord().hashKey ^= board.castling.rightsKey[board.castlingRights];
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

FieldResult readEnPassant(Board_0x88& board, const char*& p, FenRepairs& repairs) {
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
  // A pawn that has just passed the square left it and the one behind it empty.
  Square behind = Square(ep + (us == White ? 16 : -16));
  if (board.piece[ep] != NoPiece || board.piece[behind] != NoPiece) {
    repairs.droppedEnPassant = ep;
    p += 2;
    if (*p == ' ') return FieldResult::Continue;
    return *p == '\0' ? FieldResult::Accept : FieldResult::Fail;
  }
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

// Rights need their king and rook at home; the others are dropped with their keys.
void dropUnplayableRights(Board_0x88& board, FenRepairs& repairs) {
  struct Right {
    uint8_t bit;
    Square king, rook;
    Color color;
  };
  const Right rights[4] = {{CastleWK, 4, 7, White}, {CastleWQ, 4, 0, White}, {CastleBK, 116, 119, Black},
                           {CastleBQ, 116, 112, Black}};
  for (const Right& r : rights) {
    if (!(board.castlingRights & r.bit)) continue;
    bool home = board.piece[r.king] == King && board.color[r.king] == r.color && board.piece[r.rook] == Rook &&
                board.color[r.rook] == r.color;
    if (home) continue;
    board.castlingRights &= uint8_t(~r.bit);
    board.currentRecord().hashKey ^= castlingKey[r.bit];
    repairs.droppedRights |= r.bit;
  }
}

// `chess960error` is null for standard chess.
bool readFen(Board_0x88& board, const char* text, FenRepairs& repairs, std::string* chess960error);

}  // namespace

std::string describeRepairs(const FenRepairs& repairs) {
  std::string text;
  if (repairs.droppedRights) {
    text += "# warning: castling rights without their king or rook at home dropped: ";
    for (int bit = 0; bit < 4; ++bit)
      if (repairs.droppedRights & (1 << bit)) text += "KQkq"[bit];
    text += '\n';
  }
  if (repairs.droppedEnPassant != NoSquare) {
    text += "# warning: en-passant square ";
    text += char('a' + fileOf(repairs.droppedEnPassant));
    text += char('1' + rankOf(repairs.droppedEnPassant));
    text += " dropped: no pawn can have passed it\n";
  }
  return text;
}

bool setupFromFen(Board_0x88& board, const char* text, FenRepairs* repairs) {
  FenRepairs local;
  FenRepairs& found = repairs ? *repairs : local;
  found = FenRepairs{};
  if (readFen(board, text, found, nullptr)) {
    dropUnplayableRights(board, found);
    return true;
  }
  board.clear();
  found = FenRepairs{};
  return false;
}

bool setupChess960FromFen(Board_0x88& board, const char* text, std::string& error) {
  FenRepairs repairs;
  error.clear();
  if (readFen(board, text, repairs, &error)) return true;
  board.clear();
  return false;
}

namespace {

bool readFen(Board_0x88& board, const char* text, FenRepairs& repairs, std::string* chess960error) {
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
  if (chess960error ? !readChess960Castling(board, p, *chess960error) : !readCastling(board, p)) return false;
  ++p;
  switch (readEnPassant(board, p, repairs)) {
    case FieldResult::Fail: return false;
    case FieldResult::Accept: return true;
    case FieldResult::Continue: break;
  }
  ++p;
  return readNumbers(board, p);
}

}  // namespace

bool setPositionFromWords(Board_0x88& board, const std::vector<std::string>& words, FenRepairs* repairs) {
  std::string text;
  for (size_t i = 0; i < words.size(); ++i) {
    if (i) text += ' ';
    text += words[i];
  }
  return setupFromFen(board, text.c_str(), repairs);
}
