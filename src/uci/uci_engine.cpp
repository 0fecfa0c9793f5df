#include "uci/uci_engine.h"

#include <algorithm>
#include <iostream>

#include "board/attacks.h"
#include "board/move_generation.h"
#include "board/move_text.h"
#include "diagnostics/fixed_depth_bench.h"
#include "player/chess_player.h"
#include "player/line_atomic_output.h"
#include "uci/uci_info.h"
#include "uci/uci_input.h"
#include "uci/uci_perft.h"
#include "uci/uci_position.h"
#include "uci/uci_time.h"
#include "search/mate_line.h"
#include "search/search_thread.h"
#include "search/time_control.h"
#include "search/transposition_table.h"

namespace {

// The budget of a search without a clock: no time rule of the root ever fires.
constexpr uint32_t UnlimitedCentiseconds = 0x7fffffff;

void infoString(const std::string& text) { std::cout << "info string " << text << std::endl; }

}  // namespace

UciEngine::UciEngine(ChessPlayer& player, TimeControl& timeControl)
    : player_(player),
      timeControl_(timeControl),
      previousEngine_(player.engine),
      settings_{player, bool(player.bookEnabled)},
      lineBoard_(std::make_unique<Board_0x88>()) {
  player_.engine = this;
  player_.searchOutput = this;
  player_.hostSetsTimeBudget = true;
}

UciEngine::~UciEngine() {
  player_.exitThreads();
  player_.rootRequest = RootRequest();
  player_.hostSetsTimeBudget = false;
  player_.searchOutput = &player_;
  player_.engine = previousEngine_;
}

void UciEngine::run(int inputFd) {
  UciLineReader reader(inputFd);
  std::string line;
  bool tooLong = false;
  while (reader.next(line, tooLong)) {
    if (tooLong) {
      infoString("line ignored: longer than " + std::to_string(UciLineReader::MaxLineLength) + " characters");
      continue;
    }
    if (!handleLine(line, monotonicMs())) return;
  }
  // The end of input, as in the xboard front end: a search with a limit of
  // its own may reach it and answer; one that would wait for stop is stopped.
  bool waitsForStop = false;
  {
    std::lock_guard<std::mutex> hold(answerMutex_);
    waitsForStop = answerPending_ && (holdAnswer_ || (deadlineMs_.load(std::memory_order_relaxed) == 0 &&
                                                      nodeLimit_ == 0 && !timeControl_.depthLimited));
  }
  if (waitsForStop) cmdStop();
  player_.waitForThreads();
  player_.exitThreads();
}

bool UciEngine::handleLine(const std::string& line, int64_t receivedMs) {
  std::vector<std::string> words = splitWords(line);
  // An unknown word is skipped and the rest of the line tried, as the protocol asks.
  for (size_t first = 0; first < words.size(); ++first) {
    const std::string& command = words[first];
    const std::vector<std::string> rest(words.begin() + long(first) + 1, words.end());
    if (command == "uci") cmdUci();
    else if (command == "isready") cmdIsready();
    else if (command == "setoption") cmdSetoption(rest);
    else if (command == "ucinewgame") cmdUcinewgame();
    else if (command == "position") cmdPosition(rest);
    else if (command == "go") cmdGo(rest, receivedMs);
    else if (command == "stop") cmdStop();
    else if (command == "ponderhit") cmdPonderhit();
    else if (command == "bench") cmdBench();
    else if (command == "debug") debug_ = !rest.empty() && rest[0] == "on";
    else if (command == "quit") {
      cmdQuit();
      return false;
    } else {
      continue;
    }
    break;
  }
  return true;
}

void UciEngine::cmdUci() {
  std::cout << "id name Tolva 0.7.0\n"
               "id author the Tolva developers\n";
  writeUciOptions(std::cout, settings_);
  std::cout << "uciok" << std::endl;
}

void UciEngine::cmdIsready() {
  // Idle, the sizes set since the last search are applied now, and the
  // answer waits until the tables' pages are mapped, so that the next timed
  // search doesn't pay for them; under a search it comes at once.
  if (!answerPending()) {
    settle();
    player_.setupSearch(false);
    player_.waitForTablePages();
  }
  std::cout << "readyok" << std::endl;
}

void UciEngine::cmdSetoption(const std::vector<std::string>& words) {
  // setoption name <words> [value <words>]
  std::string name, value;
  bool inValue = false, sawName = false;
  for (const std::string& word : words) {
    if (!sawName) {
      sawName = word == "name";
      continue;
    }
    if (!inValue && word == "value") {
      inValue = true;
      continue;
    }
    std::string& target = inValue ? value : name;
    target += (target.empty() ? "" : " ") + word;
  }
  if (name.empty()) return infoString("setoption ignored: no option name");
  std::string error;
  const bool searching = answerPending();
  // After a bestmove thread 0 may still be finishing; the tablebases are replaced only once it is idle.
  if (!searching) settle();
  if (!setUciOption(settings_, name, value, searching, error)) infoString(error);
}

void UciEngine::cmdUcinewgame() {
  if (answerPending()) return infoString("ucinewgame ignored: a search is running");
  settle();
  // A new game starts with empty tables, and any sizes set are applied.
  player_.setupSearch(true);
  std::string error, notes;
  setUciPosition(player_, {"startpos"}, settings_.chess960, error, notes);
}

void UciEngine::cmdPosition(const std::vector<std::string>& words) {
  if (answerPending()) return infoString("position ignored: a search is running; send stop first");
  settle();
  std::string error, notes;
  if (!setUciPosition(player_, words, settings_.chess960, error, notes)) return infoString("position refused, the last one stays: " + error);
  // The FEN reader's warnings, as the host can show them.
  for (size_t start = 0; start < notes.size();) {
    size_t end = notes.find('\n', start);
    if (end == std::string::npos) end = notes.size();
    std::string note = notes.substr(start, end - start);
    if (note.rfind("# ", 0) == 0) note.erase(0, 2);
    infoString(note);
    start = end + 1;
  }
}

GoBudget UciEngine::budgetFor(const UciGoLimits& limits) const {
  const bool white = player_.board->sideToMove == White;
  const int64_t time = white ? limits.whiteTime : limits.blackTime;
  std::optional<UciClock> clock;
  if (time >= 0) clock = UciClock{time, white ? limits.whiteIncrement : limits.blackIncrement, limits.movesToGo,
                                       settings_.moveOverheadMs};
  return goBudget(clock, limits.moveTime);
}

void UciEngine::cmdGo(const std::vector<std::string>& words, int64_t receivedMs) {
  if (answerPending()) return infoString("go ignored: a search is running");
  UciGoLimits limits;
  std::string error;
  if (!parseGoLimits(words, limits, error)) return infoString("go refused: " + error);
  settle();
  if (limits.perft > 0) {
    // A count ends by itself and answers no bestmove; the command thread
    // counts, so the next command waits for it.
    writeUciPerft(std::cout, player_, uint32_t(std::min<int64_t>(limits.perft, 1000)));
    return;
  }

  Board_0x88& board = *player_.board;
  MoveList moves;
  bool inCheck = false;
  generateLegalMoves(board, moves, inCheck);
  if (moves.count == 0) {
    // Mate or stalemate: nothing to search, and the host still gets its
    // answer; an infinite or ponder search gives it at stop.
    std::cout << "info depth 0 score " << (inCheck ? "mate 0" : "cp 0") << std::endl;
    std::lock_guard<std::mutex> hold(answerMutex_);
    answerPending_ = true;
    holdAnswer_ = limits.infinite || limits.ponder;
    pondering_ = limits.ponder;
    pendingLimits_ = limits;
    answerLocked("bestmove 0000");
    return;
  }

  player_.setupSearch(false);
  setRootMoves(limits.searchMoves);
  player_.rootRequest.lines = settings_.multiPv;
  shownLine_.clear();
  const bool untilStopped = limits.infinite || limits.ponder;
  // A ponder search runs without a clock until ponderhit starts it.
  const GoBudget budget = untilStopped ? GoBudget{} : budgetFor(limits);
  const int64_t deadline = budget.limit < 0 ? 0 : receivedMs + budget.limit;
  // The root's rules that end a search early (an easy move, no time for
  // another iteration) serve a clock and plan with its share; a fixed move
  // time is used to its end.
  const bool onClock = (board.sideToMove == White ? limits.whiteTime : limits.blackTime) >= 0;
  timeControl_.maxTime = deadline && onClock ? uint32_t(std::max<int64_t>(budget.plan / 10, 1)) : UnlimitedCentiseconds;
  timeControl_.depthLimited = limits.depth > 0;
  timeControl_.maxDepth = limits.depth > 0 ? uint32_t(std::min<int64_t>(limits.depth, 1000)) : 0;
  deadlineMs_.store(deadline, std::memory_order_relaxed);
  nodeLimit_ = limits.nodes > 0 ? limits.nodes : 0;
  searchStartMs_ = receivedMs;
  // Only a game move with a clock comes from the book, never an analysis;
  // and never in Chess960, which PolyGlot keys don't know.
  player_.bookEnabled = settings_.ownBook && !settings_.chess960 && !untilStopped && limits.depth < 0 && limits.nodes < 0 &&
                        limits.hasClockFor(board.sideToMove == White);
  player_.outOfBook = true;
  player_.ponderMove = NoMove;
  {
    std::lock_guard<std::mutex> hold(answerMutex_);
    answerPending_ = true;
    holdAnswer_ = untilStopped;
    pondering_ = limits.ponder;
    heldAnswer_.clear();
    pendingLimits_ = limits;
  }
  player_.startSearch();
}

void UciEngine::cmdStop() {
  {
    std::lock_guard<std::mutex> hold(answerMutex_);
    if (!answerPending_) return;
    holdAnswer_ = false;
    pondering_ = false;
    if (!heldAnswer_.empty()) {
      // The search had already ended by itself.
      answerLocked(heldAnswer_);
      return;
    }
  }
  // The search ends at its next time check and answers with the best move
  // found so far. Through the clock rather than the stop flag: a stop that
  // comes before the search has begun must still leave it the root moves to
  // choose from. The answer is out before the next command is read.
  deadlineMs_.store(monotonicMs(), std::memory_order_relaxed);
  player_.waitForThreads();
}

void UciEngine::cmdPonderhit() {
  std::lock_guard<std::mutex> hold(answerMutex_);
  if (!answerPending_ || !pondering_) return;
  // The opponent played the expected move: from now on it is a timed search
  // of the clock that go ponder gave, and the time spent pondering counts as
  // spent on this move (the search has done that much of its work).
  pondering_ = false;
  holdAnswer_ = pendingLimits_.infinite;
  const GoBudget budget = budgetFor(pendingLimits_);
  const bool onClock = (player_.board->sideToMove == White ? pendingLimits_.whiteTime : pendingLimits_.blackTime) >= 0;
  if (budget.limit >= 0) deadlineMs_.store(searchStartMs_ + budget.limit, std::memory_order_relaxed);
  // The centisecond clock of the root's rules counts from the think's start too.
  if (budget.limit >= 0 && onClock) timeControl_.maxTime = uint32_t(std::max<int64_t>(budget.plan / 10, 1));
  if (!holdAnswer_ && !heldAnswer_.empty()) answerLocked(heldAnswer_);
}

void UciEngine::cmdBench() {
  if (answerPending()) return infoString("bench ignored: a search is running");
  settle();
  // Tables of its own: the game, its tables and the settings stay as they are.
  runFixedDepthBench(std::cout, "info string ");
}

void UciEngine::cmdQuit() {
  // A running search is stopped and still answers, as after stop.
  cmdStop();
  player_.exitThreads();
}

bool UciEngine::answerPending() {
  std::lock_guard<std::mutex> hold(answerMutex_);
  return answerPending_;
}

void UciEngine::settle() { player_.waitForThreads(); }

void UciEngine::answerLocked(const std::string& bestmove) {
  if (holdAnswer_) {
    heldAnswer_ = bestmove;
    return;
  }
  std::cout << bestmove << std::endl;
  heldAnswer_.clear();
  answerPending_ = false;
}

void UciEngine::setRootMoves(const std::vector<std::string>& words) {
  RootRequest& request = player_.rootRequest;
  request.allowedCount = 0;
  for (const std::string& word : words) {
    Move move = NoMove;
    if (!player_.parseUserMove(word, move)) {
      infoString("searchmoves: '" + word + "' is no legal move here, left out");
      continue;
    }
    if (request.allowedCount == 0 || !request.allows(move)) request.allowed[request.allowedCount++] = move;
  }
  if (!words.empty() && request.allowedCount == 0) infoString("searchmoves: no legal move listed, all are searched");
}

void UciEngine::makeEngineMove(Move& move) {
  // The ponder move is the second of the line shown last, which starts with
  // the move (the line may have been continued from the table).
  Move ponder = player_.ponderMove;
  if (shownLine_.length >= 2 && sameMove(shownLine_.first(), move)) ponder = shownLine_.moves[1];
  std::string text = "bestmove " + moveToString(move);
  if (ponder != NoMove) text += " ponder " + moveToString(ponder);
  std::lock_guard<std::mutex> hold(answerMutex_);
  answerLocked(text);
}

void UciEngine::searchEndedWithoutMove() {
  std::lock_guard<std::mutex> hold(answerMutex_);
  answerLocked("bestmove 0000");
}

bool UciEngine::isTimeUp() {
  // The clock is read every 128 nodes of thread 0: well under a millisecond.
  if ((++timeCheckCalls_ & 127) != 0) return false;
  if (nodeLimit_) {
    uint64_t nodes = 0;
    for (const auto& t : player_.threads) nodes += t->stats.nodes.get();
    if (nodes >= uint64_t(nodeLimit_)) return true;
  }
  const int64_t deadline = deadlineMs_.load(std::memory_order_relaxed);
  return deadline != 0 && monotonicMs() >= deadline;
}

void UciEngine::reportLine(uint32_t depth, int32_t score, const PvLine& line) {
  UciInfo info;
  info.depth = depth;
  info.score = score;
  writeLine(info, line);
}

void UciEngine::reportLines(uint32_t depth, const RootLine* lines, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    UciInfo info;
    info.depth = depth;
    info.multiPv = i + 1;
    info.score = lines[i].score;
    writeLine(info, lines[i].line);
  }
}

void UciEngine::reportFinalLine(uint32_t depth, int32_t score, const PvLine& line) {
  const bool scored = score != MateScore && score != -MateScore;
  const bool severalLines = player_.rootRequest.lines > 1;
  // One line: the last figures, as every iteration ends. Several: only a new
  // best move, whose line the host hasn't seen.
  if (line.empty() || ((severalLines || !scored) && sameMove(shownLine_.first(), line.first()))) return;
  UciInfo info;
  info.depth = depth;
  info.multiPv = severalLines ? 1 : 0;
  info.score = score;
  if (!scored) {
    // The last iteration was cut short after this move beat the window: it
    // is worth at least the score shown before it.
    info.hasScore = !shownLine_.empty();
    info.lowerBound = true;
    info.score = shownScore_;
  }
  writeLine(info, line);
}

void UciEngine::writeLine(UciInfo info, const PvLine& given) {
  PvLine line = given;
  const bool mate = info.score > MateThreshold || info.score < -MateThreshold;
  if (mate && info.hasScore && !info.lowerBound && player_.ttHash) {
    *lineBoard_ = *player_.board;
    extendMateLine(*player_.ttHash, *lineBoard_, info.score, line);
  }
  player_.collectStatistics();
  info.timeMs = monotonicMs() - searchStartMs_;
  info.hashfullPermille = player_.ttHash ? uint32_t(ttHashFill(*player_.ttHash) * 10.0 + 0.5) : 0;
  writeUciInfo(std::cout, info, player_.totals, line);
  std::cout.flush();
  if (info.multiPv <= 1) {
    shownLine_ = line;
    shownScore_ = info.score;
  }
}

void runUciSession(ChessPlayer& player, TimeControl& timeControl, FILE* input) {
  // The console prompt before the first line has no line end of its own.
  std::cout << std::endl;
  dropCommentLines(true);
  UciEngine engine(player, timeControl);
  engine.handleLine("uci", monotonicMs());
  engine.run(fileno(input));
  std::cout.flush();
  dropCommentLines(false);
}
