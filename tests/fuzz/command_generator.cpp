#include "fuzz/command_generator.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "board/fen.h"
#include "board/fen_writer.h"
#include "board/move_generation.h"
#include "board/move_text.h"

namespace {

using Lines = std::vector<std::string>;

// Lines by weight. {a|b} is one of the alternatives, {3..9} a number in the
// range (C: the most cores), {move} a legal move, {odd} a broken or illegal
// one, {num} a boundary number, {fen} a position, {level} a short time
// control, {noise} junk. %G stands for the tables' folder, %D for tests/data.
// A leading "!" marks a line that may lift the bounds of a search: a depth
// limit is glued behind it. Starters may leave a search running.
const std::vector<std::pair<int, std::string>> commands = {
    {16, "usermove {move}"}, {5, "usermove {odd}"}, {1, "{usermove|usermove  e2e4|usermove e2e4 e7e5}"},
    {6, "{go|go|go|go 1}"}, {3, "playother"}, {3, "force"}, {5, "!new"}, {3, "analyze"}, {3, "!exit"},
    {2, "{auto|auto|auto 1|auto x y}"}, {4, "undo"}, {3, "remove"}, {9, "setboard {fen}"},
    {1, "{setboard 8/8/8/8/8/8/8/K1k5 w|setboard a b c d e f g|setboard    |setboard  8/8/8/8/8/8/8/K1k5 w - - 0 1}"},
    {2, "{level}"}, {2, "!level {-1|1|4294967295|99999999999|x||40|0} {999999|-1|1:-30|0:99999999|1:30:15||:|::|a:b|5:|:5|60|2:30} "
                    "{-1|1.5|99999999|x||0|3|4294967295}"},
    {2, "sd {1..5}"}, {1, "!sd {0|-1|x|999|99999999999||-5|2147483648}"},
    {2, "time {-200..500}"}, {1, "!time {99999999|2147483647|4294967295|99999999999|x||-2147483648|1e9}"},
    {3, "ping {num}"}, {2, "{post|nopost}"}, {2, "{eval|eval|eval|eval x}"},
    {2, "{perft|divide} {1..2}"}, {1, "{perft|divide} {3|0|-1|x||1 2|-2147483648}"},
    {2, "cores {1..C}"}, {1, "cores {0|-1|x|999|4294967297||2.5|+2|1 2}"},
    {2, "option {ttHashSizeMB|pawnHashSizeMB|gtbCacheSizeMB}={0..16}"},
    {1, "option {ttHashSizeMB|pawnHashSizeMB|gtbCacheSizeMB|foo||TTHASHSIZEMB}{|=|=-1|=1048577|=abc|=16x|=1=1|=a b}"},
    {1, "option gtbPath={%G/gtb4|%G/gtb1|/nonexistent||.|%G/gtb4;/nonexistent}"}, {1, "option bookFilePath={%D/performance.bin|.|}"},
    {2, "egtpath gaviota %G/gtb{1..4}"}, {1, "{egtpath gaviota /nonexistent|egtpath syzygy /tmp|egtpath gaviota|egtpath gaviota .}"},
    {1, "{protover 2|protover|protover 2 3|protover x}"}, {2, "{book|nobook}"}, {1, "xboard"}, {2, "{randgame|norandgame}"},
    {1, "!randgames {1|1|2|0|-1|x|}"},
    {1, "!{randpos|randpos 1|randpos 3|randpos 2 out.fen|randpos 0|randpos -5|randpos x|randpos 2 /nonexistent/dir/f|randpos 1 2 3}"},
    {1, "!{test|test fens.txt|test /nonexistent|test .|test a b}"}, {1, "{tune x|tune x y|tune|tune a b c|selftest x}"},
    {2, "{QUIT|hard|?|draw|computer|name Fuzzer|result 1-0|e2e4|st 1|otim -5|NEW|Go|setboard|usermove|cores}"},
    {2, "{| |   |\r| \r|\t|\r\r}"}, {1, "!{noise}"}, {1, "{quit|quit   }"},
};
// Lines without the stop flag: they run while the search goes on, which may end in the middle of them.
const Lines concurrent = {"ping {num}", "time {-100..400}", "{level}", "eval", "{post|nopost}", "{| |\r|hard|otim 100|st 1}",
                          "auto", "cores {1..C}", "option {ttHashSizeMB=2|pawnHashSizeMB=1|gtbCacheSizeMB=1|bookFilePath=%D/performance.bin}",
                          "{book|nobook|randgame|norandgame}", "{protover 2|tune x|egtpath gaviota %G/gtb4}", "{randgames 1|ping 5}"};
const Lines starters = {"go", "playother", "auto", "analyze", "usermove "};

// Positions at the edges of the rules: game ends, promotions, en passant, the
// fifty-move count, tablebase endings, and boards that the reader refuses.
const Lines specialFens = {
    "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1", "8/P7/8/8/8/8/8/k6K w - - 0 1",
    "8/8/8/8/8/8/p7/K6k b - - 0 1", "rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 3",
    "4k3/8/8/8/8/8/8/4K2R w K - 99 80", "4k3/8/8/8/8/8/8/4K2R w K - 100 80", "8/8/8/4k3/8/8/3QK3/8 w - - 0 1",
    "8/8/8/4k3/8/8/3PK3/8 w - - 0 1", "8/8/8/3rk3/8/8/3QK3/8 w - - 0 1", "8/8/8/8/8/8/8/8 w - - 0 1",
    "kk6/8/8/8/8/8/8/KK6 w - - 0 1", "4k3/4Q3/8/8/8/8/8/4K3 w - - 0 1", "P3k3/8/8/8/8/8/8/4K3 w - - 0 1",
    "qqqqqqqq/qqqqqqqq/8/3k4/8/8/QQQQQQQQ/QQQQQQQQ w - - 0 1", "3k4/8/8/8/8/8/8/3K4 w - e3 0 1",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "1k6/8/1K6/8/8/8/8/7R w - - 0 1", "pppppppp/8/8/3k4/8/8/8/K6N b - - 0 1",
    "R3k3/8/4K3/8/8/8/8/8 b - - 0 1"};
// UCI lines by weight, with the tokens of the xboard lines and {moves} (a few
// legal moves from the position), {limits} (a go's limits that end by
// themselves) and {option} (a setoption's name and value). Starters leave a
// search running until stop, ponderhit or the end of input.
const std::vector<std::pair<int, std::string>> uciCommands = {
    {8, "position startpos{startmoves}"}, {6, "position fen {fen}{moves}"},
    {3, "{position|position fen|position startpos moves e2e5|position foo|position startpos moves {odd}|position fen {fen} x}"},
    {10, "go {limits}"}, {3, "go {limits} searchmoves {move}{| {move}| {odd}| {move} {move}}"},
    {2, "go perft {1..3}"}, {1, "go {perft|depth|nodes|movetime|wtime} {0|-1|x||99999999999999999999}"},
    {3, "go {infinite|ponder|ponder wtime {0..2000} btime {0..2000}|infinite searchmoves {move}|}"},
    {4, "stop"}, {3, "ponderhit"}, {4, "isready"}, {6, "setoption {option}"}, {2, "ucinewgame"},
    {1, "{debug on|debug off|uci|register later|xboard|new|usermove e2e4|stop stop|isready x}"}, {1, "{noise}"},
    {2, "{| |   |\r|\t}"}, {1, "{quit|quit   }"},
};
const Lines uciConcurrent = {"isready", "stop", "ponderhit", "setoption {option}", "{| |\r|debug on}", "go depth 1",
                             "position startpos", "ucinewgame"};
const Lines uciStarters = {"go infinite", "go ponder", "go  ", "go"};

const Lines boundaryNumbers = {"0", "-1", "1", "2147483647", "2147483648", "-2147483649", "4294967296",
                               "99999999999999999999", "x", "", "12abc", "+3", "0x10", "1.5", " ", "-0"};

}  // namespace

void CommandGenerator::begin(FuzzSequence& sequence) {
  length_ = random_.chance(0.15) ? random_.range(1, 8) : random_.range(8, 70);
  sent_ = burst_ = 0;
  finished_ = false;
  const int cores = random_.range(1, settings_.maxCores);
  sequence.engineArgs = random_.chance(0.85) ? Lines{"-cores", std::to_string(cores)}
                                             : random_.pick(std::vector<Lines>{{}, {"-cores"}, {"-cores", "0"}, {"-foo", "-cores", "2"}});
  // Small tables: each new game clears them, and the sanitizers make that slow.
  sequence.iniLines = {"ttHashSizeMB = " + std::to_string(1 << random_.below(4)), "pawnHashSizeMB = 1"};
  if (random_.chance(0.1)) sequence.iniLines.push_back("numberOfCores = " + std::to_string(cores));
}

std::vector<FuzzStep> CommandGenerator::next(const Board_0x88* board) {
  std::vector<FuzzStep> steps;
  if (finished_) return steps;
  const bool uci = settings_.uci;
  if (uci) board = &uciBoard_;
  auto add = [&](FuzzStep::Kind kind, const std::string& text = "", int ms = 0, bool newline = true, bool glue = false) {
    FuzzStep step;
    step.kind = kind, step.text = text, step.milliseconds = ms, step.newline = newline, step.glue = glue;
    steps.push_back(step);
  };
  const std::string bound = uci ? "" : "sd " + std::to_string(random_.range(1, 4));
  if (sent_++ == 0) {
    // UCI starts with its handshake; xboard with short searches from the first move on.
    if (uci) setupFromFen(uciBoard_, startPositionFen), add(FuzzStep::Send, "uci");
    else add(FuzzStep::Send, random_.chance(0.6) ? bound : expand("{level}", board), 0, true, true);
    return steps;
  }
  if (sent_ > length_) {
    // End of input, now and then in the middle of a line or right behind a search start.
    const uint32_t how = random_.below(10);
    const std::string line = expand(random_.pick(uci ? Lines{"isready", "position startpos{startmoves}", "go {limits}", "go"}
                                                     : Lines{"ping {num}", "usermove {move}", "setboard {fen}", "go"}), board);
    if (how == 0) add(FuzzStep::Send, line.substr(0, random_.below(uint32_t(line.size()) + 1)), 0, false);
    if (how == 1 || how == 2)
      add(FuzzStep::Send, how == 2 ? "quit" : random_.pick(uci ? Lines{"go infinite", "go ponder", "go"} : Lines{"go", "analyze"}));
    add(FuzzStep::Close);
    finished_ = true;
    return steps;
  }
  // Pauses so that stops land at every moment of a search; now and then a
  // longer one, so that searches also end with a move.
  const uint32_t pause = random_.below(100);
  const int ms = pause < 35 ? 0 : pause < 65 ? random_.range(1, 5) : pause < 83 ? random_.range(6, 20)
                                : pause < 93 ? random_.range(21, 50) : random_.range(51, 300);
  if (ms) add(FuzzStep::Sleep, "", ms);
  std::string pattern;
  if (burst_ > 0 && burst_--) {
    pattern = random_.pick(uci ? uciConcurrent : concurrent);
  } else {
    const auto& table = uci ? uciCommands : commands;
    int total = 0;
    for (const auto& c : table) total += c.first;
    int roll = random_.range(0, total - 1);
    for (const auto& c : table)
      if ((roll -= c.first) < 0 && pattern.empty()) pattern = c.second;
  }
  const bool unbounds = pattern[0] == '!';
  std::string line = expand(unbounds ? pattern.substr(1) : pattern, board);
  if (uci && random_.chance(0.05)) line += random_.pick(Lines{"\r", "\t", "  ", " extra"});
  if (!uci && !unbounds && random_.chance(0.06) && line.rfind("level", 0) != 0 && line.rfind("sd", 0) != 0) {
    // The same command dressed up: it may count, or not.
    const uint32_t how = random_.below(6);
    if (how == 0) line += std::string(size_t(random_.range(1, 4)), ' ');
    if (how == 1) line += random_.pick(Lines{"\r", "\t", " extra"});
    if (how == 2) line = " " + line;
    if (how == 3) for (char& c : line) c = char(std::toupper(static_cast<unsigned char>(c)));
    if (how == 4 && line.find(' ') != std::string::npos) line.insert(line.find(' '), " ");
  }
  add(FuzzStep::Send, line);
  if (unbounds) add(FuzzStep::Send, bound, 0, true, true);
  for (const std::string& starter : uci ? uciStarters : starters)
    if (line.rfind(starter, 0) == 0 && random_.chance(0.5)) burst_ = random_.range(2, uci ? 8 : 10);
  if (line == "quit" || line == "quit   ") {
    // Nothing reads after quit; a line more goes into a closed pipe.
    if (random_.chance(0.5)) add(FuzzStep::Send, uci ? "isready" : "ping 1");
    add(FuzzStep::Close);
    finished_ = true;
  }
  return steps;
}

std::string CommandGenerator::uciToken(const std::string& name) {
  if (name == "startmoves") {
    setupFromFen(uciBoard_, startPositionFen);
    uciBoardKnown_ = true;
    return uciToken("moves");
  }
  if (name == "moves") {
    // A few legal moves from the line's position, when the generator knows it.
    if (!uciBoardKnown_) return random_.chance(0.5) ? "" : expand(" moves {odd}", &uciBoard_);
    std::string text = random_.chance(0.3) ? "" : " moves";
    for (int n = random_.range(0, 6); n > 0 && text.size() > 0; --n) {
      MoveList list;
      bool inCheck = false;
      generateLegalMoves(uciBoard_, list, inCheck);
      if (list.count == 0) break;
      const Move move = list.moves[random_.below(list.count)].move;
      text += " " + moveToString(move);
      UndoRecord undo;
      makeMoveForSide(uciBoard_, move, undo);
    }
    return text;
  }
  if (name == "limits")  // each ends by itself, and soon
    return expand(random_.pick(Lines{"depth {1..5}", "nodes {1..20000}", "movetime {0..300}", "movetime {0..50} depth {1..9}",
                                     "wtime {0..3000} btime {0..3000}{| winc {0..100} binc {0..100}}{| movestogo {1..5}}",
                                     "wtime {-100..100} btime 1 movestogo 1", "depth 2 nodes 0", "mate 2 depth 3"}), &uciBoard_);
  // setoption: sizes stay small, for the sanitizers; numbers out of range are refused.
  return expand(random_.pick(Lines{"name {Hash|PawnHash} value {1..8}", "name Threads value {1..C}", "name MultiPV value {1..5}",
                                   "name {Move Overhead|move overhead} value {0..200}", "name {Ponder|OwnBook} value {true|false|TRUE|x}",
                                   "name Clear Hash", "name BookFile value {%D/performance.bin|/nonexistent|<empty>}",
                                   "name UCI_Chess960 value {true|false|x}",
                                   "name GaviotaTbPath value {%G/gtb1|%G/gtb4|/nonexistent|<empty>}", "name GaviotaTbCache value {0..4}",
                                   "name {Hash|Threads|MultiPV|Move Overhead|PawnHash|Ponder|Foo} value {num}",
                                   "{name|value 3|name Hash value|name|name  Hash  value  2}"}), &uciBoard_);
}

std::string CommandGenerator::expand(const std::string& pattern, const Board_0x88* board) {
  std::string out;
  for (size_t at = 0; at < pattern.size();) {
    const size_t open = pattern.find('{', at), close = pattern.find('}', open);
    if (open == std::string::npos || close == std::string::npos) {
      out += pattern.substr(at);
      break;
    }
    out += pattern.substr(at, open - at) + token(pattern.substr(open + 1, close - open - 1), board);
    at = close + 1;
  }
  for (const auto& [mark, value] : {std::pair{"%G", settings_.gaviotaDir}, std::pair{"%D", settings_.dataDir}})
    for (size_t at; (at = out.find(mark)) != std::string::npos;) out.replace(at, 2, value);
  return out;
}

std::string CommandGenerator::token(const std::string& name, const Board_0x88* board) {
  if (name.find('|') != std::string::npos) {
    Lines alternatives(name.back() == '|' ? 1 : 0);
    for (std::istringstream in(name); std::getline(in, alternatives.emplace_back(), '|');) {}
    alternatives.pop_back();
    return random_.pick(alternatives);
  }
  if (const size_t dots = name.find(".."); dots != std::string::npos) {
    const std::string high = name.substr(dots + 2);
    return std::to_string(random_.range(std::stoi(name.substr(0, dots)), high == "C" ? settings_.maxCores : std::stoi(high)));
  }
  if (settings_.uci && (name == "moves" || name == "startmoves" || name == "limits" || name == "option"))
    return uciToken(name);
  if (settings_.uci && name == "fen") {
    // Only a position of the suite, or the last one as it stood, is known to take moves.
    const std::string text = fen(board);
    const std::string current = positionToFen(uciBoard_);
    uciBoardKnown_ = text == current || std::find(settings_.seedFens.begin(), settings_.seedFens.end(), text) != settings_.seedFens.end();
    if (uciBoardKnown_) setupFromFen(uciBoard_, text.c_str());
    return text;
  }
  if (name == "num") return random_.chance(0.5) ? std::to_string(random_.range(-3, 200)) : random_.pick(boundaryNumbers);
  if (name == "fen") return fen(board);
  if (name == "noise") return noise();
  if (name == "level")  // three seconds a session at most
    return expand("level {0|20|40|60} {0:01|0:02|0:03|0|0:00|0:1} {0|0|0|1}", board);
  Lines moves;
  if (board) {
    Board_0x88 copy = *board;
    MoveList list;
    bool inCheck = false;
    generateLegalMoves(copy, list, inCheck);
    for (uint32_t i = 0; i < list.count; ++i) moves.push_back(moveToString(list.moves[i].move));
  }
  if (name == "move" && !moves.empty()) {
    std::string move = random_.pick(moves);
    if (random_.chance(0.1)) for (char& c : move) c = char(std::toupper(static_cast<unsigned char>(c)));
    return move;
  }
  // A legal move with a promotion letter added, dropped or wrong, or moves of every broken shape.
  std::string move = moves.empty() ? "e7e8" : random_.pick(moves);
  if (random_.chance(0.3)) return move.substr(0, 4) + (move.size() == 5 ? "" : std::string(1, "qQxk"[random_.below(4)]));
  return expand(random_.pick(Lines{"{a|b|e|h|i|A}{0|1|2|7|8|9}{a|e|h|z}{1|2|8|9}", "{e2e4e|e2|e2e4qq|0000|@@@@|e1g1|e1c1|e8g8}",
                                   "{e1h1|a1a1|e7e8|e7e8q|e2e5|e2-e4|O-O|Nf3| e2e4||abcdefghijkl|h7h8N|g2g1q}"}), board);
}

std::string CommandGenerator::fen(const Board_0x88* board) {
  const uint32_t kind = random_.below(20);
  std::string fen = kind < 8 && !settings_.seedFens.empty() ? random_.pick(settings_.seedFens)
                    : kind < 16 || !board                    ? random_.pick(specialFens)
                                                             : positionToFen(*board);
  // Edits at random: a character changed, dropped or added, or a field more.
  for (int n = random_.chance(0.4) ? random_.range(1, 3) : 0; n > 0; --n) {
    const size_t at = random_.below(uint32_t(fen.size()) + 1);
    const char c = "pnbrqkPNBRQK12345678/ wb-KQkqabcdefgh09x"[random_.below(40)];
    const uint32_t how = random_.below(4);
    if (how == 0 && at < fen.size()) fen[at] = c;
    if (how == 1 && at < fen.size()) fen.erase(at, 1);
    if (how == 2) fen.insert(at, 1, c);
    if (how == 3) fen += " " + random_.pick(boundaryNumbers);
  }
  return fen;
}

std::string CommandGenerator::noise() {
  std::string text;
  if (random_.chance(0.3)) {
    // Bytes that no command uses, NUL included.
    for (int i = random_.range(1, 40); i > 0; --i)
      if (char c = char(random_.below(256)); c != '\n') text += c;
    return text;
  }
  // Lines around the engine's 1023-byte read: the rest arrives as a line of its own.
  text = random_.pick(Lines{"ping ", "setboard ", "usermove ", "eval", "option gtbPath=", ""});
  text.resize(size_t(random_.chance(0.5) ? random_.range(1020, 1026) : random_.range(1027, 2100)), "1 x/"[random_.below(4)]);
  if (random_.chance(0.3)) {
    // A command right where the second read begins.
    text.resize(1023, ' ');
    text += random_.pick(Lines{"quit", "new", "go", "ping 9", "undo", "eval"});
  }
  return text;
}
