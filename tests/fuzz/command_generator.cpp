#include "fuzz/command_generator.h"

#include <algorithm>
#include <cctype>

#include "board/fen_writer.h"
#include "fuzz/game_tracker.h"

namespace {

using Lines = std::vector<std::string>;

// Positions that reach the rules at the edges: game ends, promotions, en
// passant, the fifty-move count, tablebase endings, and boards that the
// reader refuses or repairs.
const Lines specialFens = {
    "4k3/8/8/8/8/8/8/4K3 w - - 0 1",
    "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1",
    "6k1/5ppp/8/8/8/8/8/R5K1 w - - 0 1",
    "R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1",
    "8/P7/8/8/8/8/8/k6K w - - 0 1",
    "8/8/8/8/8/8/p7/K6k b - - 0 1",
    "rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 3",
    "4k3/8/8/8/8/8/8/4K2R w K - 99 80",
    "4k3/8/8/8/8/8/8/4K2R w K - 100 80",
    "8/8/8/4k3/8/8/3QK3/8 w - - 0 1",
    "8/8/8/4k3/8/8/3PK3/8 w - - 0 1",
    "8/8/8/3rk3/8/8/3QK3/8 w - - 0 1",
    "8/8/4k3/8/8/8/2B1K3/3N4 w - - 0 1",
    "k7/8/8/8/8/8/8/K7 w - - 0 1",
    "8/8/8/8/8/8/8/8 w - - 0 1",
    "kk6/8/8/8/8/8/8/KK6 w - - 0 1",
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1",
    "4k3/8/8/8/8/8/8/R3K2R w KQkq - 0 1",
    "4k3/4Q3/8/8/8/8/8/4K3 w - - 0 1",
    "P3k3/8/8/8/8/8/8/4K3 w - - 0 1",
    "4k3/pppppppp/pppppppp/8/8/PPPPPPPP/PPPPPPPP/4K3 w - - 0 1",
    "qqqqqqqq/qqqqqqqq/8/3k4/8/8/QQQQQQQQ/QQQQQQQQ w - - 0 1",
    "3k4/8/8/8/8/8/8/3K4 w - e3 0 1",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "k7/2Q5/1K6/8/8/8/8/8 b - - 0 1",
    "1k6/8/1K6/8/8/8/8/7R w - - 0 1",
};

const Lines boundaryNumbers = {"0", "-1", "1", "2147483647", "2147483648", "-2147483648", "-2147483649",
                               "4294967295", "4294967296", "99999999999999999999", "x", "", "12abc", "+3",
                               "0x10", "1.5", " ", "-0"};

const Lines unknownLines = {"QUIT", "Quit", "hard", "easy", "?", "draw", "computer", "white", "black", "random",
                            "name Fuzzer", "rating 2000 1800", "accepted setboard", "rejected usermove",
                            "result 1-0 {White mates}", "result *", "e2e4", "memory 64", "st 1", "st 0",
                            "otim 1000", "otim -5", "otim x", "bk", "hint", "pause", "resume", "variant normal",
                            "NEW", "Go", "ics -", "setboard", "usermove", "perft", "cores"};

}  // namespace

CommandGenerator::CommandGenerator(uint64_t seed, const GeneratorSettings& settings)
    : random_(seed), settings_(settings) {}

void CommandGenerator::begin(FuzzSequence& sequence) {
  length_ = random_.chance(0.15) ? random_.range(1, 8) : random_.range(8, 70);
  sent_ = 0;
  group_ = 0;
  finished_ = false;
  int cores = random_.range(1, settings_.maxCores);
  if (random_.chance(0.85)) {
    sequence.engineArgs = {"-cores", std::to_string(cores)};
  } else {
    const std::vector<Lines> odd = {{}, {"-cores"}, {"-cores", "0"}, {"-foo", "-cores", "2"}, {"-cores", "x"}};
    sequence.engineArgs = random_.pick(odd);
  }
  // Small tables: each new game clears them, and the sanitizers make that slow.
  sequence.iniLines = {"ttHashSizeMB = " + std::to_string(1 << random_.below(4)), "pawnHashSizeMB = 1"};
  if (random_.chance(0.1)) sequence.iniLines.push_back("numberOfCores = " + std::to_string(cores));
}

std::vector<FuzzStep> CommandGenerator::next(const Board_0x88* board) {
  std::vector<FuzzStep> steps;
  if (finished_) return steps;
  const int group = group_++;
  auto add = [&](FuzzStep step) {
    step.group = group;
    steps.push_back(step);
  };
  auto sleep = [&](int ms) {
    if (ms <= 0) return;
    FuzzStep step;
    step.kind = FuzzStep::Sleep;
    step.milliseconds = ms;
    add(step);
  };
  auto send = [&](const std::string& text, bool newline = true, bool glue = false) {
    FuzzStep step;
    step.text = text;
    step.newline = newline;
    step.glue = glue;
    add(step);
  };

  if (sent_ == 0) {
    // Short searches from the first move on; shrinking may drop this like any group.
    for (const std::string& line : fastControl()) send(line, true, true);
    ++sent_;
    return steps;
  }
  if (sent_ >= length_) {
    // End of input: now and then in the middle of a line or right behind a search start.
    uint32_t how = random_.below(10);
    if (how == 0) {
      // Only a line that needs nothing glued behind it to keep searches short.
      Lines lines = command(board);
      std::string line = lines.size() == 1 ? lines[0] : "ping 1";
      send(line.substr(0, random_.below(uint32_t(line.size()) + 1)), false);
    } else if (how == 1) {
      send(random_.chance(0.5) ? "go" : "analyze");
    } else if (how == 2) {
      send("quit");
    }
    FuzzStep close;
    close.kind = FuzzStep::Close;
    add(close);
    finished_ = true;
    return steps;
  }

  // Pauses of 0 to 50 ms, so that stops land at every moment of a search;
  // now and then a longer one, so that searches also end with a move.
  uint32_t pause = random_.below(100);
  sleep(pause < 35   ? 0
        : pause < 65 ? random_.range(1, 5)
        : pause < 83 ? random_.range(6, 20)
        : pause < 93 ? random_.range(21, 50)
                     : random_.range(51, 300));
  Lines lines = command(board);
  // Not the lines that keep searches short: a decorated one might not count.
  const bool bounding = lines[0].rfind("sd", 0) == 0 || lines[0].rfind("level", 0) == 0 || lines[0].rfind("time", 0) == 0;
  if (!bounding && random_.chance(0.06)) lines[0] = decorate(lines[0]);
  for (size_t i = 0; i < lines.size(); ++i) send(lines[i], true, i > 0);
  ++sent_;
  if (!lines.empty() && lines[0].rfind("quit", 0) == 0 && lines[0].find_first_not_of(' ', 4) == std::string::npos) {
    // Nothing reads after quit; a line or two more go into a closed pipe.
    if (random_.chance(0.5)) send("ping 1");
    FuzzStep close;
    close.kind = FuzzStep::Close;
    add(close);
    finished_ = true;
  }
  return steps;
}

// A time control that keeps searches to a few seconds, or a small depth.
std::vector<std::string> CommandGenerator::fastControl() {
  Lines lines;
  uint32_t kind = random_.below(20);
  if (kind < 10 || kind >= 17) lines.push_back("sd " + std::to_string(random_.range(1, 4)));
  if (kind >= 10) lines.push_back(saneLevel());
  return lines;
}

// After a command that may lift the bounds: a depth limit, always, so that
// the group stays bounded whatever shrinking removes around it.
void CommandGenerator::afterBound(Lines& lines) { lines.push_back("sd " + std::to_string(random_.range(1, 4))); }

// A time control of three seconds a session at most.
std::string CommandGenerator::saneLevel() {
  const Lines moves = {"0", "20", "40", "60"};
  const Lines times = {"0:01", "0:02", "0:03", "0", "0:00", "0:1"};
  std::string m = random_.pick(moves);
  std::string increment = m == "0" && random_.chance(0.3) ? "1" : "0";
  return "level " + m + " " + random_.pick(times) + " " + increment;
}

// Boundary and broken arguments: maybe a very long search, maybe a refusal.
std::string CommandGenerator::wildLevel() {
  const Lines moves = {"-1", "1", "4294967295", "2147483648", "99999999999", "x", "", "40", "0", "5"};
  const Lines times = {"999999", "-1", "1:-30", "0:99999999", "1:30:15", "", ":", "::", "a:b", "5:", ":5",
                       "1", "60", "-0:01", "35791395", "0:4294967295", "2:30"};
  const Lines increments = {"-1", "1.5", "99999999", "x", "", "0", "3", "4294967295"};
  return "level " + random_.pick(moves) + " " + random_.pick(times) + " " + random_.pick(increments);
}

std::string CommandGenerator::number() {
  if (random_.chance(0.5)) return std::to_string(random_.range(-3, 200));
  return random_.pick(boundaryNumbers);
}

std::string CommandGenerator::noise() {
  uint32_t kind = random_.below(10);
  if (kind < 5) return random_.pick(unknownLines);
  if (kind < 8) {
    const Lines blanks = {"", " ", "   ", "\r", " \r", "\t", "\r\r"};
    return random_.pick(blanks);
  }
  if (kind == 8) {
    // Bytes that no command uses, NUL included.
    std::string text;
    int length = random_.range(1, 40);
    for (int i = 0; i < length; ++i) {
      char c = char(random_.below(256));
      if (c != '\n') text += c;
    }
    return text;
  }
  // Lines around the engine's 1023-byte read: the rest arrives as a line of its own.
  const std::string words[] = {"ping ", "setboard ", "usermove ", "eval", "option gtbPath=", ""};
  std::string text = words[random_.below(6)];
  int length = random_.chance(0.5) ? random_.range(1020, 1026) : random_.range(1027, 2100);
  char fill = "1 x/"[random_.below(4)];
  while (int(text.size()) < length) text += fill;
  if (random_.chance(0.3)) {
    // A command right where the second read begins.
    text.resize(1023, ' ');
    const Lines tails = {"quit", "new", "go", "ping 9", "undo", "eval"};
    text += random_.pick(tails);
  }
  return text;
}

std::string CommandGenerator::decorate(const std::string& line) {
  switch (random_.below(7)) {
    case 0: return line + std::string(size_t(random_.range(1, 4)), ' ');
    case 1: return line + "\r";
    case 2: return line + "\t";
    case 3: return " " + line;
    case 4: {
      std::string upper = line;
      for (char& c : upper) c = char(std::toupper(static_cast<unsigned char>(c)));
      return upper;
    }
    case 5: return line + " extra";
    default: {
      std::string doubled = line;
      size_t blank = doubled.find(' ');
      if (blank != std::string::npos) doubled.insert(blank, " ");
      return doubled;
    }
  }
}

std::string CommandGenerator::userMove(const Board_0x88* board) {
  if (!board) return oddUserMove(board);
  Board_0x88 copy = *board;
  Lines moves = legalMoveTexts(copy);
  if (moves.empty()) return oddUserMove(board);
  std::string text = random_.pick(moves);
  if (random_.chance(0.1)) {
    for (char& c : text) c = char(std::toupper(static_cast<unsigned char>(c)));
  }
  return text;
}

std::string CommandGenerator::oddUserMove(const Board_0x88* board) {
  auto square = [&](const char* files, const char* ranks) {
    std::string s;
    s += files[random_.below(uint32_t(std::char_traits<char>::length(files)))];
    s += ranks[random_.below(uint32_t(std::char_traits<char>::length(ranks)))];
    return s;
  };
  switch (random_.below(8)) {
    case 0: return square("abcdefgh", "12345678") + square("abcdefgh", "12345678");
    case 1: return square("abcdefghiA", "0123456789") + square("abcdefghiz", "1289");
    case 2: {
      // A legal move with a promotion letter, a missing one, or a wrong one.
      std::string text = userMove(board);
      if (text.size() == 5) return text.substr(0, 4) + std::string(1, "qrbnQRBNxkp "[random_.below(12)]);
      return text + std::string(1, "qQxk"[random_.below(4)]);
    }
    case 3: {
      std::string text = userMove(board);
      return text.size() == 5 ? text.substr(0, 4) : text;
    }
    default: {
      const Lines shapes = {"e2e4e", "e2", "e2e4qq", "0000", "@@@@", "e1g1", "e1c1", "e8g8", "e8c8", "e1h1",
                            "a1a1", "e7e8", "e7e8q", "e2e5", "e2-e4", "O-O", "Nf3", "e2e4 e7e5", " e2e4",
                            "", "abcdefghijkl", "h7h8N", "g2g1q"};
      return random_.pick(shapes);
    }
  }
}

std::string CommandGenerator::randomFen() {
  std::string placement;
  const char pieces[] = "pnbrqPNBRQ";
  bool whiteKing = random_.chance(0.9), blackKing = random_.chance(0.9);
  int kingSquares[2] = {random_.range(0, 63), random_.range(0, 63)};
  for (int rank = 7; rank >= 0; --rank) {
    int empty = 0;
    for (int file = 0; file < 8; ++file) {
      int sq = rank * 8 + file;
      char c = 0;
      if (whiteKing && sq == kingSquares[0]) c = 'K';
      else if (blackKing && sq == kingSquares[1]) c = 'k';
      else if (random_.chance(0.15)) c = pieces[random_.below(10)];
      if (!c) {
        ++empty;
        continue;
      }
      if (empty) placement += char('0' + empty);
      empty = 0;
      placement += c;
    }
    if (empty) placement += char('0' + empty);
    if (rank) placement += '/';
  }
  const Lines castling = {"-", "-", "K", "Qk", "KQkq", "kq"};
  std::string ep = "-";
  if (random_.chance(0.2)) ep = std::string(1, char('a' + random_.below(8))) + (random_.chance(0.5) ? "3" : "6");
  return placement + (random_.chance(0.5) ? " w " : " b ") + random_.pick(castling) + " " + ep + " " +
         std::to_string(random_.range(0, 120)) + " " + std::to_string(random_.range(1, 200));
}

std::string CommandGenerator::mutateFen(std::string fen) {
  const std::string alphabet = "pnbrqkPNBRQK12345678/ wb-KQkqabcdefgh09x";
  int count = random_.range(1, 3);
  for (int n = 0; n < count; ++n) {
    std::vector<std::string> fields;
    for (size_t start = 0;;) {
      size_t blank = fen.find(' ', start);
      fields.push_back(fen.substr(start, blank - start));
      if (blank == std::string::npos) break;
      start = blank + 1;
    }
    auto join = [&] {
      std::string text;
      for (size_t i = 0; i < fields.size(); ++i) text += (i ? " " : "") + fields[i];
      return text;
    };
    uint32_t kind = random_.below(10);
    if (fen.empty()) kind = 2;
    size_t at = fen.empty() ? 0 : random_.below(uint32_t(fen.size()));
    switch (kind) {
      case 0: fen[at] = alphabet[random_.below(uint32_t(alphabet.size()))]; break;
      case 1: fen.erase(at, 1); break;
      case 2: fen.insert(at, 1, alphabet[random_.below(uint32_t(alphabet.size()))]); break;
      case 3: {
        // Ranks: one doubled, dropped, or replaced.
        std::vector<std::string> ranks;
        for (size_t start = 0;;) {
          size_t slash = fields[0].find('/', start);
          ranks.push_back(fields[0].substr(start, slash - start));
          if (slash == std::string::npos) break;
          start = slash + 1;
        }
        size_t r = random_.below(uint32_t(ranks.size()));
        const Lines odd = {"9", "44", "ppppppppp", "", "8", "K7", "k7", "PPPPPPPP", "71", "0", "35"};
        uint32_t how = random_.below(3);
        if (how == 0) ranks.insert(ranks.begin() + long(r), ranks[r]);
        else if (how == 1 && ranks.size() > 1) ranks.erase(ranks.begin() + long(r));
        else ranks[r] = random_.pick(odd);
        fields[0].clear();
        for (size_t i = 0; i < ranks.size(); ++i) fields[0] += (i ? "/" : "") + ranks[i];
        fen = join();
        break;
      }
      case 4: {
        uint32_t how = random_.below(4);
        size_t f = random_.below(uint32_t(fields.size()));
        if (how == 0 && fields.size() > 1) fields.erase(fields.begin() + long(f));
        else if (how == 1) fields.insert(fields.begin() + long(f), fields[f]);
        else if (how == 2) fields.push_back(random_.pick(boundaryNumbers));
        else std::swap(fields[f], fields[random_.below(uint32_t(fields.size()))]);
        fen = join();
        break;
      }
      case 5:
        if (fields.size() > 1) fields[1] = random_.pick(Lines{"w", "b", "x", "W", "B", "-", "wb"});
        fen = join();
        break;
      case 6:
        if (fields.size() > 2) fields[2] = random_.pick(Lines{"-", "KQkq", "KKKK", "abc", "HAha", "Kq", "qkQK", ""});
        fen = join();
        break;
      case 7:
        if (fields.size() > 3) {
          std::string ep = std::string(1, char('a' + random_.below(9))) + char('0' + random_.below(10));
          fields[3] = random_.chance(0.7) ? ep : random_.pick(Lines{"-", "e", "e9", "z3", "--"});
        }
        fen = join();
        break;
      case 8:
        if (fields.size() > 4) fields[4 + random_.below(uint32_t(fields.size() > 5 ? 2 : 1))] =
            random_.pick(Lines{"0", "-1", "99", "100", "101", "255", "256", "65535", "4294967295", "4294967296",
                               "99999999999999999999", "x", "1.5"});
        fen = join();
        break;
      default:
        fields[0] = randomFen().substr(0, randomFen().find(' '));
        fen = join();
        break;
    }
  }
  return fen;
}

std::string CommandGenerator::fen(const Board_0x88* board) {
  uint32_t kind = random_.below(20);
  std::string base;
  if (kind < 6 && !settings_.seedFens.empty()) base = random_.pick(settings_.seedFens);
  else if (kind < 11) base = random_.pick(specialFens);
  else if (kind < 14 && board) base = positionToFen(*board);
  else base = randomFen();
  if (random_.chance(0.35)) base = mutateFen(base);
  return base;
}

// Commands without the stop flag: they run while the search goes on, and
// the search may end and play its move in the middle of them.
std::vector<std::string> CommandGenerator::concurrentCommand() {
  Lines lines;
  switch (random_.below(16)) {
    case 0: case 1: lines.push_back("ping " + number()); break;
    case 2: lines.push_back("time " + std::to_string(random_.range(-100, 400))); break;
    case 3: lines.push_back(saneLevel()); break;
    case 4: lines.push_back("eval"); break;
    case 5: lines.push_back(random_.chance(0.5) ? "post" : "nopost"); break;
    case 6: case 7: case 8: lines.push_back(random_.pick(Lines{"", " ", "\r", "hard", "otim 100", "st 1"})); break;
    case 9: lines.push_back("auto"); break;
    case 10: lines.push_back("cores " + std::to_string(random_.range(1, settings_.maxCores))); break;
    case 11: lines.push_back(random_.pick(Lines{"option ttHashSizeMB=2", "option pawnHashSizeMB=1", "option gtbCacheSizeMB=1",
                                                "option bookFilePath=" + settings_.dataDir + "/performance.bin"})); break;
    case 12: lines.push_back(random_.pick(Lines{"book", "nobook", "randgame", "norandgame"})); break;
    case 13: lines.push_back(random_.pick(Lines{"protover 2", "tune x", "egtpath gaviota " + settings_.gaviotaDir + "/gtb4"})); break;
    case 14: lines.push_back(random_.chance(0.2) ? "randgames 1" : "ping 5"); break;
    default: lines.push_back("time " + std::to_string(random_.range(0, 100))); break;
  }
  return lines;
}

std::vector<std::string> CommandGenerator::command(const Board_0x88* board) {
  if (burst_ > 0) {
    --burst_;
    return concurrentCommand();
  }
  // Weights of the cases below, in their order.
  static const int weights[] = {16, 5, 6, 3, 3, 4, 3, 3, 2, 4, 3, 9, 3, 3, 3, 3, 2,
                                2,  3, 2, 3, 3, 1, 2, 1, 2, 1, 1, 1, 1, 4, 1};
  int total = 0;
  for (int w : weights) total += w;
  int roll = random_.range(0, total - 1), id = 0;
  while (roll >= weights[id]) roll -= weights[id++];

  Lines lines;
  const std::string data = settings_.dataDir;
  switch (id) {
    case 0: lines.push_back("usermove " + userMove(board)); break;
    case 1:
      if (random_.chance(0.2)) lines.push_back(random_.pick(Lines{"usermove", "usermove  e2e4", "usermove e2e4 e7e5"}));
      else lines.push_back("usermove " + oddUserMove(board));
      break;
    case 2: lines.push_back(random_.chance(0.9) ? "go" : "go 1"); break;
    case 3: lines.push_back("playother"); break;
    case 4: lines.push_back("force"); break;
    case 5:
      lines.push_back("new");
      for (const std::string& l : fastControl()) lines.push_back(l);
      break;
    case 6: lines.push_back("analyze"); break;
    case 7:
      lines.push_back("exit");
      afterBound(lines);
      break;
    case 8: lines.push_back(random_.pick(Lines{"auto", "auto", "auto", "auto 1", "auto x y"})); break;
    case 9: lines.push_back("undo"); break;
    case 10: lines.push_back("remove"); break;
    case 11: {
      uint32_t kind = random_.below(20);
      if (kind == 0) lines.push_back(random_.pick(Lines{"setboard 8/8/8/8/8/8/8/K1k5 w", "setboard a b c d e f g",
                                                        "setboard    ", "setboard  8/8/8/8/8/8/8/K1k5 w - - 0 1"}));
      else lines.push_back("setboard " + fen(board));
      break;
    }
    case 12:
      if (random_.chance(0.4)) {
        lines.push_back(wildLevel());
        afterBound(lines);
      } else {
        lines.push_back(saneLevel());
      }
      break;
    case 13: {
      if (random_.chance(0.7)) {
        lines.push_back("sd " + std::to_string(random_.range(1, 5)));
      } else {
        lines.push_back("sd " + random_.pick(Lines{"0", "-1", "x", "999", "99999999999", "", "-5", "2147483648"}));
        afterBound(lines);
      }
      break;
    }
    case 14: {
      if (random_.chance(0.7)) {
        lines.push_back("time " + std::to_string(random_.range(-200, 500)));
      } else {
        lines.push_back("time " + random_.pick(Lines{"99999999", "2147483647", "4294967295", "99999999999", "x",
                                                     "", "-2147483648", "1e9"}));
        afterBound(lines);
      }
      break;
    }
    case 15: lines.push_back("ping " + number()); break;
    case 16: lines.push_back(random_.chance(0.5) ? "post" : "nopost"); break;
    case 17: lines.push_back(random_.chance(0.8) ? "eval" : "eval x"); break;
    case 18: {
      const char* word = random_.chance(0.5) ? "perft " : "divide ";
      if (random_.chance(0.75)) lines.push_back(word + std::to_string(random_.chance(0.15) ? 3 : random_.range(1, 2)));
      else lines.push_back(word + random_.pick(Lines{"0", "-1", "x", "", "1 2", "-2147483648"}));
      break;
    }
    case 19: {
      if (random_.chance(0.75)) lines.push_back("cores " + std::to_string(random_.range(1, settings_.maxCores)));
      else lines.push_back("cores " + random_.pick(Lines{"0", "-1", "x", "999", "4294967297", "", "2.5", "+2", "1 2"}));
      break;
    }
    case 20: {
      const Lines names = {"ttHashSizeMB", "pawnHashSizeMB", "gtbCacheSizeMB", "gtbPath", "bookFilePath", "foo",
                           "", "TTHASHSIZEMB"};
      std::string name = random_.pick(names);
      std::string value;
      if (name == "ttHashSizeMB" || name == "pawnHashSizeMB" || name == "gtbCacheSizeMB") {
        // Valid sizes stay small: each new game clears the tables.
        value = random_.chance(0.6) ? std::to_string(random_.range(name == "gtbCacheSizeMB" ? 0 : 1, 16))
                                    : random_.pick(Lines{"0", "-1", "1048577", "abc", "", "99999999999999999999",
                                                         "4294967297", "16x"});
      } else if (name == "gtbPath") {
        value = random_.pick(Lines{settings_.gaviotaDir + "/gtb4", settings_.gaviotaDir + "/gtb1", "/nonexistent",
                                   "", settings_.workDir, settings_.gaviotaDir + "/gtb4;/nonexistent",
                                   std::string(300, 'p')});
      } else if (name == "bookFilePath") {
        value = random_.pick(Lines{data + "/performance.bin", "/nonexistent.bin", data + "/perft-suite.epd", "",
                                   settings_.workDir, "book.bin"});
      } else {
        value = number();
      }
      uint32_t shape = random_.below(12);
      if (shape == 0) lines.push_back("option " + name);
      else if (shape == 1) lines.push_back("option " + name + "=" + value + "=" + value);
      else if (shape == 2) lines.push_back("option " + name + "=a b");
      else if (shape == 3) lines.push_back("option");
      else lines.push_back("option " + name + "=" + value);
      break;
    }
    case 21: {
      uint32_t shape = random_.below(6);
      if (shape < 3) lines.push_back("egtpath gaviota " + settings_.gaviotaDir + "/gtb" + std::to_string(random_.range(1, 4)));
      else lines.push_back(random_.pick(Lines{"egtpath gaviota /nonexistent", "egtpath syzygy /tmp", "egtpath gaviota",
                                              "egtpath gaviota " + settings_.workDir}));
      break;
    }
    case 22: lines.push_back(random_.pick(Lines{"protover 2", "protover", "protover 2 3", "protover x"})); break;
    case 23: lines.push_back(random_.chance(0.5) ? "book" : "nobook"); break;
    case 24: lines.push_back("xboard"); break;
    case 25: lines.push_back(random_.chance(0.5) ? "randgame" : "norandgame"); break;
    case 26: lines.push_back("randgames " + random_.pick(Lines{"1", "1", "2", "0", "-1", "x", ""})); break;
    case 27:
      lines.push_back(random_.pick(Lines{"randpos", "randpos 1", "randpos 3", "randpos 2 out.fen", "randpos 0",
                                         "randpos -5", "randpos x", "randpos 2 /nonexistent/dir/f", "randpos 1 2 3"}));
      break;
    case 28:
      lines.push_back(random_.pick(Lines{"test", "test fens.txt", "test /nonexistent", "test .", "test a b"}));
      break;
    case 29: lines.push_back(random_.pick(Lines{"tune x", "tune x y", "tune", "tune a b c", "selftest x"})); break;
    case 30:
      lines.push_back(noise());
      // A long line whose second read is `new`: the clock is back to its default.
      if (lines[0].size() > 1023 && lines[0].compare(1023, std::string::npos, "new") == 0) afterBound(lines);
      break;
    default: lines.push_back(random_.chance(0.5) ? "quit" : "quit   "); break;
  }
  // After a line that may start a search, often a run of lines that leave it running.
  static const Lines starters = {"go", "playother", "auto", "analyze"};
  bool starts = std::find(starters.begin(), starters.end(), lines[0]) != starters.end() ||
                lines[0].rfind("usermove ", 0) == 0;
  if (starts && random_.chance(0.5)) burst_ = random_.range(2, 10);
  // A new game or a test file resets the clock to its default; keep it short.
  if (lines[0] == "test" || lines[0] == "test fens.txt" || lines[0].rfind("randpos ", 0) == 0)
    for (const std::string& l : fastControl()) lines.push_back(l);
  return lines;
}
