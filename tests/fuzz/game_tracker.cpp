#include "fuzz/game_tracker.h"

#include <algorithm>
#include <cctype>

#include "board/attacks.h"
#include "board/check_info.h"
#include "board/fen.h"
#include "board/fen_writer.h"
#include "board/make_move.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "board/string_split.h"
#include "fuzz/fuzz_commands.h"

namespace {

const std::string prompt = "# Your move: ";
const std::string engineMoveTag = "# making engine move: ";
const std::string userMoveTag = "# making user move: ";
const std::string newGameTag = "# new size of TT hash";
const std::string randomGamesTag = "# Playing ";
// Far below the engine's own limit of the game record, so the board's ply records never run out.
constexpr uint32_t trackedPlyLimit = 900;

bool endsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() && text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The index of the first window line that satisfies `match`, or the window's size.
template <typename Match>
size_t findLine(const std::vector<std::string>& lines, Match match) {
  for (size_t i = 0; i < lines.size(); ++i)
    if (match(lines[i])) return i;
  return lines.size();
}

// The squares of the last board diagram among the lines, rank 8 first, or empty.
std::string lastDiagram(const std::vector<std::string>& lines) {
  auto isRank = [](const std::string& line) {
    return line.size() == 10 && line[0] == '#' && line[1] == ' ' &&
           line.find_first_not_of(".pnbrqkPNBRQK", 2) == std::string::npos;
  };
  for (size_t end = lines.size(); end >= 9; --end) {
    if (lines[end - 1] != "#") continue;
    bool whole = true;
    for (size_t i = end - 9; i < end - 1 && whole; ++i) whole = isRank(lines[i]);
    if (!whole) continue;
    std::string squares;
    for (size_t i = end - 9; i < end - 1; ++i) squares += lines[i].substr(2);
    return squares;
  }
  return "";
}

// The board as the engine draws it.
std::string diagramOf(const Board_0x88& board) {
  std::string squares;
  for (int rank = 7; rank >= 0; --rank) {
    for (int file = 0; file < 8; ++file) {
      Square sq = makeSquare(file, rank);
      uint8_t piece = board.piece[sq] <= King ? board.piece[sq] : uint8_t(NoPiece);
      char c = pieceLetters[piece];
      squares += board.color[sq] == White ? char(std::toupper(static_cast<unsigned char>(c))) : c;
    }
  }
  return squares;
}

}  // namespace

bool isPlayable(const Board_0x88& b) {
  if (b.sideToMove != White && b.sideToMove != Black) return false;
  for (int sq = 0; sq < 128; ++sq)
    if (!(sq & 0x88) && b.piece[sq] != NoPiece && b.slot[sq] == NoSlot) return false;
  for (int c = 0; c < 2; ++c)
    if (b.side[c].count[King] != 1) return false;
  for (int file = 0; file < 8; ++file)
    if (b.piece[file] == Pawn || b.piece[0x70 + file] == Pawn) return false;
  CheckInfo info;
  if (b.sideToMove == White) return !findCheck<Black>(b, b.side[Black].square[0], info);
  return !findCheck<White>(b, b.side[White].square[0], info);
}

std::vector<std::string> legalMoveTexts(Board_0x88& board) {
  MoveList list;
  bool inCheck = false;
  generateLegalMoves(board, list, inCheck);
  std::vector<std::string> texts;
  for (uint32_t i = 0; i < list.count; ++i) texts.push_back(moveToString(list.moves[i].move));
  return texts;
}

namespace {

// Plays the legal move with this text (letters in either case); false if there is none.
bool playMoveText(Board_0x88& board, const std::string& text, std::vector<std::pair<Move, UndoRecord>>& played) {
  std::string lower = text;
  for (char& c : lower) c = char(std::tolower(static_cast<unsigned char>(c)));
  MoveList list;
  bool inCheck = false;
  generateLegalMoves(board, list, inCheck);
  for (uint32_t i = 0; i < list.count; ++i) {
    if (moveToString(list.moves[i].move) != lower) continue;
    UndoRecord undo;
    board.history[board.ply].movePlayed = list.moves[i].move;
    makeMoveForSide(board, list.moves[i].move, undo);
    played.emplace_back(list.moves[i].move, undo);
    return true;
  }
  return false;
}

}  // namespace

GameTracker::Game::Game() : board(std::make_unique<Board_0x88>()) { setupFromFen(*board, startPositionFen); }

GameTracker::Game::Game(const Game& other)
    : board(std::make_unique<Board_0x88>(*other.board)), played(other.played), known(other.known) {}

GameTracker::Game& GameTracker::Game::operator=(const Game& other) {
  *board = *other.board;
  played = other.played;
  known = other.known;
  return *this;
}

GameTracker::GameTracker() = default;

const Board_0x88* GameTracker::playableBoard() const {
  if (stopped_ || !game_.known || !isPlayable(*game_.board)) return nullptr;
  return game_.board.get();
}

bool GameTracker::quitRead() const { return std::find(lines_.begin(), lines_.end(), "quit") != lines_.end(); }

std::string GameTracker::describePosition() const {
  if (!game_.known) return "(position not known)";
  if (!isPlayable(*game_.board)) return "(no playable position)";
  return positionToFen(*game_.board);
}

void GameTracker::onInput(const std::string& bytes) {
  pendingInput_ += bytes;
  cutInputLines(false);
}

void GameTracker::onInputClosed() { cutInputLines(true); }

// The lines as fgets hands them to the engine: at most 1023 bytes, the rest
// of a longer line comes as the next one; then trimmed like the engine does.
void GameTracker::cutInputLines(bool atEnd) {
  for (;;) {
    size_t newline = pendingInput_.find('\n');
    size_t length;
    if (newline != std::string::npos && newline < 1023)
      length = newline + 1;
    else if (pendingInput_.size() >= 1023)
      length = 1023;
    else if (atEnd && !pendingInput_.empty())
      length = pendingInput_.size();
    else
      return;
    char buffer[1024];
    std::copy(pendingInput_.begin(), pendingInput_.begin() + long(length), buffer);
    buffer[length] = '\0';
    pendingInput_.erase(0, length);
    trimLine(buffer);
    lines_.emplace_back(buffer);
  }
}

void GameTracker::onOutput(const std::string& whole) {
  if (whole.size() > outputSeen_) partialOutput_.append(whole, outputSeen_, std::string::npos);
  outputSeen_ = whole.size();
  for (;;) {
    if (partialOutput_.compare(0, prompt.size(), prompt) == 0) {
      take("", true);
      partialOutput_.erase(0, prompt.size());
      continue;
    }
    size_t newline = partialOutput_.find('\n');
    if (newline == std::string::npos) return;
    std::string line = partialOutput_.substr(0, newline);
    partialOutput_.erase(0, newline + 1);
    // A prompt can stand in front of, or within, a line of a search thread.
    size_t start = 0;
    for (size_t at; (at = line.find(prompt, start)) != std::string::npos; start = at + prompt.size()) {
      if (at > start) take(line.substr(start, at - start), false);
      take("", true);
    }
    take(line.substr(start), false);
  }
}

void GameTracker::finish(const std::string& whole) {
  onInputClosed();
  onOutput(whole);
  if (!partialOutput_.empty()) {
    partialOutput_ += '\n';
    onOutput(whole);
  }
  if (window_ >= 0 && !stopped_) closeWindow();
  stopped_ = true;
}

void GameTracker::take(const std::string& token, bool isPrompt) {
  if (stopped_) return;
  if (!isPrompt) {
    if (window_ >= 0) windowLines_.push_back(token);
    return;
  }
  if (window_ >= 0) closeWindow();
  ++window_;
  windowLines_.clear();
}

void GameTracker::setUnknown(Game& game, const char* why) {
  if (game.known) {
    ++lostTrack;
    notes.push_back(std::string(why) + " at engine line " + std::to_string(window_ + 1));
  }
  game.known = false;
  game.played.clear();
}

bool GameTracker::playEngineMoves(Game& game, const std::vector<std::string>& moves, size_t from, size_t to,
                                  std::string* illegal) const {
  for (size_t i = from; i < to; ++i) {
    if (!game.known) continue;
    Board_0x88& board = *game.board;
    if (!isPlayable(board)) {
      if (illegal) *illegal = "engine move " + moves[i] + " in a position that can't be played";
      return false;
    }
    const std::string before = positionToFen(board);
    if (!playMoveText(board, moves[i], game.played)) {
      if (illegal) *illegal = "illegal engine move " + moves[i] + " in " + before;
      return false;
    }
    if (board.ply > trackedPlyLimit) game.known = false;
  }
  return true;
}

void GameTracker::closeWindow() {
  const std::vector<std::string>& out = windowLines_;
  const bool hasLine = window_ < long(lines_.size());
  const std::string line = hasLine ? lines_[size_t(window_)] : std::string();

  std::vector<std::string> moves;
  std::vector<size_t> movePositions;
  for (size_t i = 0; i < out.size(); ++i) {
    size_t at = out[i].find(engineMoveTag);
    if (at == std::string::npos) continue;
    std::string text = out[i].substr(at + engineMoveTag.size());
    text = text.substr(0, text.find(' '));
    moves.push_back(text);
    movePositions.push_back(i);
  }
  movesChecked += moves.size();
  auto movesBefore = [&](size_t position) {
    return size_t(std::count_if(movePositions.begin(), movePositions.end(), [&](size_t p) { return p < position; }));
  };
  auto fail = [&](const std::string& what) {
    problem_ = what + " (engine line " + std::to_string(window_ + 1) + ": \"" + line + "\")";
    stopped_ = true;
  };
  auto playAll = [&] {
    std::string illegal;
    if (!playEngineMoves(game_, moves, 0, moves.size(), &illegal)) fail(illegal);
  };

  ParsedLine parsed = parseCommandLine(line);
  if (!hasLine || !parsed.command || !parsed.countOk) return playAll();
  const std::string word = parsed.word;
  const std::string errorLine = "# command \"" + line + "\" returned an error code ";
  const bool handlerFailed = findLine(out, [&](const std::string& l) { return endsWith(l, errorLine); }) < out.size();

  if (word == "quit") {
    playAll();
    stopped_ = true;
    return;
  }
  if (word == "xboard") {
    // No more prompts: the lines after it can't be told apart in the output.
    stopped_ = true;
    return;
  }

  // Handlers that announce themselves: their line splits the moves into those before and after.
  auto splitAt = [&](size_t marker, auto effect) {
    size_t before = movesBefore(marker);
    std::string illegal;
    if (!playEngineMoves(game_, moves, 0, before, &illegal)) return fail(illegal);
    effect(game_);
    if (!playEngineMoves(game_, moves, before, moves.size(), &illegal)) fail(illegal);
  };
  auto toStart = [](Game& game) {
    setupFromFen(*game.board, startPositionFen);
    game.played.clear();
    game.known = true;
  };
  auto newGameMarker = [&] {
    return findLine(out, [&](const std::string& l) { return l.compare(0, newGameTag.size(), newGameTag) == 0; });
  };

  if (word == "usermove") {
    const std::string tag = userMoveTag + parsed.args[0];
    size_t marker = findLine(out, [&](const std::string& l) { return l == tag; });
    if (marker == out.size()) return playAll();
    return splitAt(marker, [&](Game& game) {
      if (!game.known) return;
      if (!playMoveText(*game.board, parsed.args[0], game.played)) setUnknown(game, "user move not legal here");
    });
  }
  if (word == "new" || ((word == "test" || word == "selftest") && !handlerFailed) ||
      (word == "randpos" && !parsed.args.empty() && !handlerFailed)) {
    size_t marker = newGameMarker();
    if (marker == out.size()) {
      setUnknown(game_, "new game without its hash line");
      return;
    }
    return splitAt(marker, toStart);
  }
  if (word == "randgames" && !handlerFailed) {
    size_t marker = findLine(out, [&](const std::string& l) { return l.compare(0, randomGamesTag.size(), randomGamesTag) == 0; });
    if (marker == out.size()) {
      setUnknown(game_, "random games without their first line");
      return;
    }
    return splitAt(marker, toStart);
  }

  const bool silentChange = word == "setboard" || ((word == "undo" || word == "remove") && !handlerFailed);
  if (!silentChange) return playAll();

  // setboard, undo and remove print nothing of their own: try every place among the moves.
  auto effect = [&](Game& game) {
    if (word == "setboard") {
      setPositionFromWords(*game.board, parsed.args);
      game.played.clear();
      game.known = true;
      return true;
    }
    if (!game.known) return true;
    size_t plies = word == "undo" ? 1 : 2;
    if (game.played.size() < plies) return false;
    for (size_t i = 0; i < plies; ++i) {
      unmakeMoveForSide(*game.board, game.played.back().first, game.played.back().second);
      game.played.pop_back();
    }
    return true;
  };
  std::vector<Game> outcomes;
  std::string firstIllegal;
  bool effectImpossible = false;
  for (size_t split = 0; split <= moves.size(); ++split) {
    Game game = game_;
    std::string illegal;
    if (!playEngineMoves(game, moves, 0, split, &illegal)) {
      if (firstIllegal.empty()) firstIllegal = illegal;
      continue;
    }
    if (!effect(game)) {
      effectImpossible = true;
      continue;
    }
    if (!playEngineMoves(game, moves, split, moves.size(), &illegal)) {
      if (firstIllegal.empty()) firstIllegal = illegal;
      continue;
    }
    outcomes.push_back(game);
  }
  if (outcomes.empty()) {
    if (effectImpossible || !game_.known) {
      setUnknown(game_, "take-back of moves not followed");
    } else {
      fail(firstIllegal);
    }
    return;
  }
  if (outcomes.size() > 1) {
    // The diagram printed last shows the board after the line: it tells the orders apart.
    const std::string drawn = lastDiagram(out);
    std::vector<Game> matching;
    for (const Game& game : outcomes)
      if (!drawn.empty() && game.known && diagramOf(*game.board) == drawn) matching.push_back(game);
    if (!matching.empty()) outcomes = matching;
  }
  game_ = outcomes[0];
  for (const Game& other : outcomes) {
    if (other.known != game_.known || other.played.size() != game_.played.size() ||
        (other.known && positionToFen(*other.board) != positionToFen(*game_.board))) {
      setUnknown(game_, "order of a silent command and engine moves unclear");
      return;
    }
  }
}
