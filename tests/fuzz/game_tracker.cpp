#include "fuzz/game_tracker.h"

#include <algorithm>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "board/string_split.h"
#include "xboard/command_loop.h"

namespace {

const std::string prompt = "# Your move: ";

// The legal move of the position with this text (letters in either case), or NoMove.
Move legalMove(Board_0x88& board, std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
  MoveList list;
  bool inCheck = false;
  generateLegalMoves(board, list, inCheck);
  for (uint32_t i = 0; i < list.count; ++i)
    if (moveToString(list.moves[i].move) == text) return list.moves[i].move;
  return NoMove;
}

std::string placementOf(const Board_0x88& board) {
  const std::string fen = positionToFen(board);
  return fen.substr(0, fen.find(' '));
}

}  // namespace

GameTracker::GameTracker() { setupFromFen(*game_.board, startPositionFen); }

const Board_0x88* GameTracker::playableBoard() const {
  return known_ && game_.hasPlayablePosition() ? game_.board.get() : nullptr;
}

// The lines as fgets hands them to the engine, trimmed like the engine does.
void GameTracker::onInput(const std::string& bytes, bool atEnd) {
  pendingInput_ += bytes;
  for (;;) {
    const size_t newline = pendingInput_.find('\n');
    size_t length = pendingInput_.size();
    const size_t most = LineBufferSize - 1;
    if (newline != std::string::npos && newline < most) length = newline + 1;
    else if (length >= most) length = most;
    else if (!atEnd || length == 0) return;
    char line[LineBufferSize];
    std::copy_n(pendingInput_.begin(), length, line);
    line[length] = '\0';
    pendingInput_.erase(0, length);
    trimLine(line);
    const std::string text = line;  // cut at a NUL byte, as the engine's parser sees it
    const std::string word = text.substr(0, text.find(' '));
    quitRead_ = quitRead_ || text == "quit";
    static const char* const silentWords[] = {"setboard", "undo", "remove", "new", "test", "selftest", "randpos", "randgames"};
    if (std::find(std::begin(silentWords), std::end(silentWords), word) != std::end(silentWords)) silent_.push_back(text);
  }
}

void GameTracker::onOutput(const std::string& whole) {
  partialOutput_.append(whole, outputSeen_, std::string::npos);
  outputSeen_ = whole.size();
  for (size_t newline; (newline = partialOutput_.find('\n')) != std::string::npos;) {
    std::string line = partialOutput_.substr(0, newline);
    partialOutput_.erase(0, newline + 1);
    // A console prompt can stand in front of a line of a search thread.
    for (size_t at; (at = line.find(prompt)) != std::string::npos;) line.erase(at, prompt.size());
    take(line);
  }
}

// Whether `command` taking effect now leaves the placement shown; if so, the game follows it.
bool GameTracker::explains(const std::string& command, const std::string& placement) {
  const std::string word = command.substr(0, command.find(' '));
  Board_0x88& board = *game_.board;
  if (word == "setboard") {
    if (command.size() <= 9) return false;
    auto scratch = std::make_unique<Board_0x88>();
    std::vector<std::string> words = splitString(command.c_str() + 9, ' ');
    setPositionFromWords(*scratch, words);
    if (placementOf(*scratch) != placement) return false;
    board = *scratch;
    game_.setupPly = game_.ply;
    return true;
  }
  if (word == "undo" || word == "remove") {
    const uint32_t plies = word == "undo" ? 1 : 2;
    if (!known_ || game_.ply < game_.setupPly + plies || !game_.hasSafeLists()) return false;
    auto before = std::make_unique<Board_0x88>(board);
    for (uint32_t i = 0; i < plies; ++i) unmakeMoveForSide(board, game_.moveHistory[game_.ply - 1 - i], game_.undoHistory[game_.ply - 1 - i]);
    if (placementOf(board) == placement) return game_.ply -= plies, true;
    board = *before;
    return false;
  }
  // The others end with a new game, except randpos with no count, which shows the
  // board; randgames shows none and is placed by its first line.
  if ((word == "randpos" && command.size() == 7) || (word == "randgames") != (placement == "randgames")) return false;
  auto start = std::make_unique<Board_0x88>();
  setupFromFen(*start, startPositionFen);
  if (word != "randgames" && placementOf(*start) != placement) return false;
  board = *start;
  game_.ply = game_.setupPly = 0;
  return true;
}

void GameTracker::take(const std::string& line) {
  if (line.size() == 10 && line.rfind("# ", 0) == 0 && line.find_first_not_of(".pnbrqkPNBRQK", 2) == std::string::npos) {
    diagram_.push_back(line.substr(2));
    return;
  }
  std::string placement = line.rfind("# Playing ", 0) == 0 ? "randgames" : "";
  if (line == "#" && diagram_.size() >= 8) {
    // The placement as FEN writes it, from the eight rows shown last.
    for (size_t row = diagram_.size() - 8; row < diagram_.size(); ++row) {
      int empty = 0;
      for (char c : diagram_[row] + "x") {
        if (c == '.' && ++empty) continue;
        if (empty) placement += char('0' + empty);
        empty = 0;
        if (c != 'x') placement += c;
      }
      placement += row + 1 < diagram_.size() ? "/" : "";
    }
  }
  diagram_.clear();
  if (!placement.empty()) {
    for (size_t i = 0; i < silent_.size(); ++i)
      if (explains(silent_[i], placement)) {
        silent_.erase(silent_.begin(), silent_.begin() + long(i) + 1);
        known_ = true;
        return;
      }
    if (known_ && placementOf(*game_.board) != placement) known_ = false;
    return;
  }
  // A refused line took no effect: its error names it.
  if (line.rfind("# command \"", 0) == 0) {
    auto refused = std::find(silent_.begin(), silent_.end(), line.substr(11, line.size() - 11 - 25));
    if (refused != silent_.end()) silent_.erase(refused);
  }
  const bool engineMove = line.rfind("move ", 0) == 0, userMove = line.rfind("# making user move: ", 0) == 0;
  if (!engineMove && !userMove) return;
  if (!known_) return;
  const std::string text = line.substr(engineMove ? 5 : 20);
  movesChecked += engineMove;
  Move move = game_.hasPlayablePosition() ? legalMove(*game_.board, text) : NoMove;
  if (move == NoMove && engineMove && problem.empty())
    problem = (game_.hasPlayablePosition() ? "illegal engine move " : "engine move in a position that can't be played: ") +
              text + " in " + positionToFen(*game_.board);
  if (move == NoMove || !game_.recordMove(move)) known_ = false;
}
