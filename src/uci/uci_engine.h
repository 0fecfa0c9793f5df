#pragma once
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "player/engine_interface.h"
#include "board/board.h"
#include "uci/uci_go.h"
#include "uci/uci_time.h"
#include "uci/uci_info.h"
#include "uci/uci_options.h"
#include "search/search_interface.h"

class ChessPlayer;
class TimeControl;

// The UCI front end over the engine's own game and search. It takes the
// place of the xboard front end as the player's EngineInterface (the
// finished move becomes `bestmove`) and as the search's SearchInterface
// (UCI thinking lines, a millisecond deadline, a node limit).
//
// The command thread reads lines while the search runs; `isready` and
// `stop` are answered at once. What the two threads share: the deadline and
// the node limit (atomics; ponderhit moves the deadline), and the state of
// the answer to `go` under answerMutex, so that `bestmove` goes out exactly
// once, by the search or by `stop`.
class UciEngine : public EngineInterface, public SearchInterface {
 public:
  UciEngine(ChessPlayer& player, TimeControl& timeControl);
  ~UciEngine() override;
  UciEngine(const UciEngine&) = delete;
  UciEngine& operator=(const UciEngine&) = delete;

  // Runs one line; false when it was `quit`. `receivedMs` is when it was read.
  bool handleLine(const std::string& line, int64_t receivedMs);
  // Reads and runs lines until `quit` or the end of input.
  void run(int inputFd);

  // EngineInterface, on thread 0 at the end of its think.
  void makeEngineMove(Move& move) override;
  void searchEndedWithoutMove() override;

  // SearchInterface, on thread 0.
  bool isTimeUp() override;
  void reportLine(uint32_t depth, int32_t score, const PvLine& line) override;
  void reportFinalLine(uint32_t depth, int32_t score, const PvLine& line) override;
  void reportLines(uint32_t depth, const RootLine* lines, uint32_t count) override;
  void reportStatistics(uint32_t) override {}

 private:
  void cmdUci();
  void cmdIsready();
  void cmdSetoption(const std::vector<std::string>& words);
  void cmdUcinewgame();
  void cmdPosition(const std::vector<std::string>& words);
  void cmdGo(const std::vector<std::string>& words, int64_t receivedMs);
  void cmdStop();
  void cmdPonderhit();
  void cmdBench();
  void cmdQuit();

  // A go is still waiting for its bestmove.
  bool answerPending();
  // After a bestmove, thread 0 may still be on its way to idle: waits for it,
  // so that the game and the tables can be changed.
  void settle();
  // The plan and hard stop of a search with `limits`, from its start.
  GoBudget budgetFor(const UciGoLimits& limits) const;
  // Prints the bestmove line, or keeps it when the search must not end by
  // itself (infinite, ponder). Caller holds answerMutex.
  void answerLocked(const std::string& bestmove);
  // The searchmoves of `go` as the root's list of moves; each word that is no
  // legal move is reported and left out.
  void setRootMoves(const std::vector<std::string>& words);
  // Prints one thinking line (thread 0); a mate's line is first continued
  // from the table. Line 1 of the output (`multiPv` 0 or 1) is remembered.
  void writeLine(UciInfo info, const PvLine& line);

  ChessPlayer& player_;
  TimeControl& timeControl_;
  EngineInterface* previousEngine_;
  UciSettings settings_;
  bool debug_ = false;

  // Set by the command thread before the search starts; the start hands them over.
  int64_t searchStartMs_ = 0;
  int64_t nodeLimit_ = 0;  // 0: none
  uint32_t timeCheckCalls_ = 0;  // thread 0 only
  std::atomic<int64_t> deadlineMs_{0};  // 0: none
  // The last line 1 printed in this search and its score (thread 0 only):
  // bestmove and ponder come from it.
  PvLine shownLine_;
  int32_t shownScore_ = 0;
  std::unique_ptr<Board_0x88> lineBoard_;  // where a mate's line is played out

  std::mutex answerMutex_;
  bool answerPending_ = false;  // a go waits for its bestmove
  bool holdAnswer_ = false;     // infinite or ponder: the answer waits for stop or ponderhit
  bool pondering_ = false;      // go ponder, no ponderhit yet
  std::string heldAnswer_;      // a bestmove line kept back by holdAnswer_
  UciGoLimits pendingLimits_;   // the go being answered, for ponderhit
};

// The UCI session after the host's first line `uci`: answers it and runs the
// rest of the input, with comment lines kept off the output.
void runUciSession(ChessPlayer& player, TimeControl& timeControl, FILE* input);
