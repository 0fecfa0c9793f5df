#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "board/board.h"

// Follows the game inside the engine from what goes in and what comes out,
// and checks every move that the engine plays against the legal moves.
//
// In console mode the engine prints its prompt before each line that it
// reads, so the output between two prompts belongs to one line: first what
// a search that ended before it printed, then the handler, then what a
// search started after it printed. A handler that changes the board is
// placed among the engine's moves by a line of its own ("# making user
// move: ", a new game's hash size line); for the silent ones (setboard, undo,
// remove) every order is tried. When the order can't be told, or a command
// does things the tracker doesn't model, the position counts as unknown
// until the next new game or set-up position.
class GameTracker {
 public:
  GameTracker();

  void onInput(const std::string& bytes);
  void onInputClosed();
  void onOutput(const std::string& wholeOutputSoFar);
  // Takes the output after the last prompt as the last line's.
  void finish(const std::string& wholeOutput);

  // The engine's position as far as the output tells, when it is a position
  // that can be played; null otherwise.
  const Board_0x88* playableBoard() const;
  bool failed() const { return !problem_.empty(); }
  const std::string& problem() const { return problem_; }
  // True when a line that the engine reads is `quit`.
  bool quitRead() const;
  // The tracked position as FEN, or why there is none.
  std::string describePosition() const;
  // The lines as the engine reads them (cut at 1023 bytes, trimmed).
  const std::vector<std::string>& engineLines() const { return lines_; }

  uint64_t movesChecked = 0;
  uint64_t lostTrack = 0;
  std::vector<std::string> notes;  // why the position was lost, each time

 private:
  struct Game {
    std::unique_ptr<Board_0x88> board;
    std::vector<std::pair<Move, UndoRecord>> played;
    bool known = true;
    Game();
    Game(const Game& other);
    Game& operator=(const Game& other);
  };

  void cutInputLines(bool atEnd);
  void take(const std::string& token, bool prompt);
  void closeWindow();
  bool playEngineMoves(Game& game, const std::vector<std::string>& moves, size_t from, size_t to,
                       std::string* illegal) const;
  void setUnknown(Game& game, const char* why);

  Game game_;
  std::string pendingInput_;
  std::vector<std::string> lines_;
  size_t outputSeen_ = 0;
  std::string partialOutput_;
  long window_ = -1;  // index of the line whose output is being collected
  std::vector<std::string> windowLines_;
  bool stopped_ = false;  // quit read, or prompts gone (xboard)
  std::string problem_;
};

// The moves of a position as the engine writes them.
std::vector<std::string> legalMoveTexts(Board_0x88& board);
// Whether the engine could search this position: lists in order, one king a
// side, no pawn on a first or last rank, the side not to move not in check.
bool isPlayable(const Board_0x88& board);
