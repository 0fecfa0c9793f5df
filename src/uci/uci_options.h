#pragma once
#include <ostream>
#include <string>

class ChessPlayer;

// The settings a UCI host may change: the engine's own settings under the
// names UCI hosts know, and those of the UCI front end itself.
struct UciSettings {
  static constexpr int64_t MaxMoveOverheadMs = 5000;
  static constexpr uint32_t MaxMultiPv = 256;

  ChessPlayer& player;
  bool ownBook = true;          // a game move may come from the book
  int64_t moveOverheadMs = 10;  // taken off each move's time on a clock
  bool ponder = false;          // the host may ponder; go ponder is answered either way
  uint32_t multiPv = 1;         // lines shown per iteration
  bool chess960 = false;        // positions and castling moves in Chess960 form
};

// The "option name ..." lines of the `uci` answer; the defaults shown are the
// values in force (tolva.ini may have changed them).
void writeUciOptions(std::ostream& out, const UciSettings& settings);

// `setoption name N [value V]`, split into its name and value (the name's
// case doesn't matter). Sets the option, or leaves everything as it was and
// says why in `error`. A running search is never touched: sizes and threads
// wait for the next search, and what a search reads while it runs (the
// tablebases) is refused while `searching`.
bool setUciOption(UciSettings& settings, const std::string& name, const std::string& value, bool searching,
                  std::string& error);
