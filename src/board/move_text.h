#pragma once
#include <string>

#include "board/move.h"

// Coordinate notation: 4 characters, 5 with a lower-case promotion letter, then NUL.
void moveToText(Move m, char* buffer);
std::string moveToString(Move m);
