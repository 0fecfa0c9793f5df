#pragma once

#include "board/board.h"
#include "eval/material.h"

// Percent, 0 to 100, by which the finished score is scaled: the fifty-move
// taper, 0 when neither side can mate, and a few drawish four-man endings.
int computeScaleFactor(const Board_0x88& board, const MaterialInfo& info);
// Its two parts: the one the men on the board decide, and the fifty-move taper.
int positionScaleFactor(const Board_0x88& board, const MaterialInfo& info);
int fiftyMoveScale(int halfMoveClock);
