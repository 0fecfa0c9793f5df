#include "board/move_text.h"

void moveToText(Move m, char* buffer) {
  Square64 from = moveFrom(m), to = moveTo(m);
  char* p = buffer;
  *p++ = char('a' + (from & 7));
  *p++ = char('1' + (from >> 3));
  *p++ = char('a' + (to & 7));
  *p++ = char('1' + (to >> 3));
  if (moveKind(m) == MovePromotion) *p++ = pieceLetters[moveDetail(m) + 2];
  *p = '\0';
}

std::string moveToString(Move m) {
  char buffer[6];
  moveToText(m, buffer);
  return buffer;
}
