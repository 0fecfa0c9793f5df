// What the engine prints, byte for byte, for each line it reads: start-up,
// the command loop's parsing and its errors, the xboard commands, settings
// and the eval report.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <thread>

#include "protocol/transcript.h"

namespace {

const unsigned maxCores = std::max(1u, std::thread::hardware_concurrency());
const std::string gtb4 = "/usr/share/gaviotatb/gtb4";

std::string missingArgs(unsigned n, const std::string& line) {
  return "Error (missing arguments, expected at least " + std::to_string(n) + "): " + line + "\n" + commandError(line);
}
std::string tooManyArgs(unsigned n, const std::string& line) {
  return "Error (too many arguments, expected at most " + std::to_string(n) + "): " + line + "\n" + commandError(line);
}
Row missing(unsigned n, const std::string& line) { return {line, missingArgs(n, line)}; }
Row tooMany(unsigned n, const std::string& line) { return {line, tooManyArgs(n, line)}; }
std::string coresLine(unsigned requested, unsigned current) {
  return "# will now use " + std::to_string(std::min(requested, maxCores)) + " cores (requested=" +
         std::to_string(requested) + ", current=" + std::to_string(current) + ", max=" + std::to_string(maxCores) + ")\n";
}
std::string sizes(unsigned tt, unsigned pawn) {
  return "# new size of TT hash: " + std::to_string(tt) + " MB\n# new size of Pawn hash: " + std::to_string(pawn) + " MB\n";
}
std::string features(const std::string& cache = "16", const std::string& gtb = "C:/gtb", const std::string& book = "book.bin") {
  return "feature ping=1\nfeature setboard=1\nfeature playother=1\nfeature usermove=1\nfeature colors=0\n"
         "feature sigint=0\nfeature sigterm=0\nfeature analyze=1\nfeature name=0\nfeature nps=0\nfeature debug=1\n"
         "feature egt=\"gaviota\"\nfeature smp=1\nfeature variants=\"normal\"\n"
         "feature option=\"ttHashSizeMB -spin 256 1 1048576\"\nfeature option=\"pawnHashSizeMB -spin 32 1 1048576\"\n"
         "feature option=\"gtbCacheSizeMB -spin " + cache + " 0 1048576\"\nfeature option=\"gtbPath -path " + gtb +
         "\"\nfeature option=\"bookFilePath -path " + book + "\"\nfeature myname=\"Tolva 0.7.0\"\n";
}
const std::string cleared = diagram({"........", "........", "........", "........", "........", "........", "........", "........"});
const std::string unplayable =
    "# warning: this position can't be played: a side lacks its king or has too many pieces, a pawn stands on its "
    "first or last rank, or the side not to move is in check\n";
std::string setting(const std::string& s) { return "# setting option: " + s + "\n"; }
std::string illegalMove(const std::string& move) { return "Error (illegal move): " + move + "\n" + commandError("usermove " + move); }
const std::string gameOver = "Error (cannot make a move at end of game)\n";
Row fails(const std::string& line, const std::string& message = "") { return {line, message + commandError(line)}; }
Row refused(const std::string& name, const std::string& value, std::string line = "") {
  if (line.empty()) line = "option " + name + "=" + value;
  return fails(line, "Error (illegal value for '" + name + "' option): " + value + "\n");
}

// Start-up with command-line options, and with a tolva.ini whose lines come
// in order with their warnings. Skipped without a word there: no "=", unknown
// keys (a tab isn't a blank, so it stays in the key), binary bytes, a key cut
// by a NUL byte. A line over 1023 characters goes on as a line of its own.
TEST(StartupTest, Transcripts) {
  const std::string head = "# Tolva 0.7.0\n# a chess engine for the xboard protocol; type 'quit' to leave\n# \nfeature done=0\n";
  const std::string tail = sizes(256, 32) + startBoard + prompt;
  auto bad = [](const std::string& v) { return "# warning: found bad argument \"" + v + "\" for command line option \"-cores\", must be a positive number\n"; };
  auto range = [](const std::string& key, const std::string& limits) { return "# WARNING: " + key + " out of range in ini file (" + limits + ")\n"; };
  const struct {
    std::vector<std::string> args;
    std::string ini, input, output;
  } cases[] = {
      {{}, "", "quit\n", startup + prompt}, {{}, "", "", startup + prompt},
      // A last line without a line feed is still a command; blanks after it are trimmed.
      {{}, "", "quit", startup + prompt}, {{}, "", "quit   \n", startup + prompt},
      {{}, "", "\nxboard\n\nforce\nquit\n", startup + prompt + prompt + "\n"},
      {{"-cores", "0"}, "", "quit\n", head + bad("0") + tail}, {{"-cores", "two"}, "", "quit\n", head + bad("0") + tail},
      {{"-cores", "-3"}, "", "quit\n", head + bad("-3") + tail},
      {{"-cores"}, "", "quit\n", head + "# warning: missing argument for command line option \"-cores\"\n" + tail},
      {{"-foo", "-cores", "2", "bar"}, "", "quit\n", head + "# warning: found unknown command line option \"-foo\"\n" +
                                                       coresLine(2, 0) + "# warning: found unknown command line option \"bar\"\n" + tail},
      {{}, "numberOfCores = zero\nnumberOfCores = 4\nttHashSizeMB = 0\n  # ttHashSizeMB = 2\nFoo = 1\n[section]\nno equals sign\n"
           "ttHashSizeMB\t= 5\n\x01\x02\xff=\xfe\n" + std::string("ttHash\0SizeMB = 3\n", 18) + "gtbCacheSizeMB=-1\r\n"
           "gtbCacheSizeMB = 0   \n" + std::string(1023, 'x') + "gtbCacheSizeMB = 7\ngtbPath = \"/tb dir\"  \n"
           "pawnHashSizeMB =\t8\nttHashSizeMB=64\nttHashSizeMB = 1048577\nbookFilePath = \"\n", "protover 2\nquit\n",
       range("numberOfCores = zero", "min = 1") + coresLine(4, 0) + range("ttHashSizeMB = 0", "min = 1, max = 1048576") +
           range("gtbCacheSizeMB = -1", "min = 0, max = 1048576") + range("ttHashSizeMB = 1048577", "min = 1, max = 1048576") +
           head + sizes(64, 8) + startBoard + prompt + features("7", "/tb dir", "") + "feature done=1\n" + prompt},
  };
  const std::string dir = ::testing::TempDir() + "tolva_ini_" + std::to_string(getpid());
  mkdir(dir.c_str(), 0700);
  for (const auto& c : cases) {
    std::ofstream(dir + "/tolva.ini") << c.ini;
    EngineOutcome out = run(c.input, c.args, dir);
    EXPECT_EQ(out.status(), 0) << c.input;
    EXPECT_EQ(out.output, c.output) << c.input;
  }
  std::remove((dir + "/tolva.ini").c_str());
  rmdir(dir.c_str());
}

TEST(CommandLoopTest, ConsoleTranscript) {
  const std::string kr = diagram({"....k...", "........", "........", "........", "........", "........", "........", "....K..R"});
  const std::string kings = diagram({"........", "........", "........", "........", "........", "........", "........", "K.k....."});
  const std::string lone = diagram({"........", "........", "........", "........", "........", "........", "........", "K......."});
  const std::string longLine = std::string(1023, 'x') + "protover 1 2";
  std::vector<Row> rows = {
      // Argument counts, checked before any handler runs.
      missing(1, "protover"), tooMany(1, "protover 2 3"), tooMany(3, "level 40 5 0 1"),
      missing(4, "setboard 8/8/8/8/8/8/8/K1k5 w"),
      missing(1, "tune"), {"tune x", ""}, {"tune x y", ""}, tooMany(2, "tune x y z"),
      // Two blanks make an empty argument.
      tooMany(1, "usermove  e2e4"), missing(1, "ping"), tooMany(0, "quit 1"), tooMany(0, "exit 1"), tooMany(0, "eval 1"),
      fails("auto 1"),
      // Unknown words and empty lines are dropped without a word.
      {"QUIT", ""}, {"e2e4", ""}, {"usermove\t e2e4", ""}, {" quit", ""}, {"hello world", ""}, {"", ""},
      {"   ", ""}, {"\r", ""}, {"\t", ""}, {"\t ", ""}, {"st 10", ""}, {"computer", ""},
      // CR LF and trailing blanks go; a blank before the CR stays and so does a tab.
      {"tune x \r", ""}, {"protover \r", missingArgs(1, "protover")}, {"protover\t\r", ""},
      // Lines longer than 1023 bytes are read as several lines.
      {longLine, prompt + tooManyArgs(1, "protover 1 2")}, {std::string(2000, 'y'), prompt},
      {"\x01\x02\xff\xfe garbage", ""}, {std::string("qu\0it", 5), ""}, {std::string("\0\0\0", 3), ""},
      {"\x7f\x1b[A", ""},
      // A refused position leaves an empty board, never a half-filled one.
      {"setboard 4k3/8/8/8/8/8/8/4K2R w K - 0 1", kr},
      {"setboard 4k3/8/8/8/8/8/8/4K2R w K - 0 0", commandError("setboard 4k3/8/8/8/8/8/8/4K2R w K - 0 0") + cleared},
      {"setboard 4k3/8/8/8/4X3/8/8/4K2R w K - 0 1", commandError("setboard 4k3/8/8/8/4X3/8/8/4K2R w K - 0 1") + cleared},
      // A 17th man of one side has no list slot to come back to after a capture.
      {"setboard QQQQQQQQ/PPPPPPPP/8/8/8/8/pppppppp/Q3k2K w - - 0 1",
       commandError("setboard QQQQQQQQ/PPPPPPPP/8/8/8/8/pppppppp/Q3k2K w - - 0 1") + cleared},
      {"setboard 8/8/8/8/8/8/8/K1k5 b - - 17 40", "1/2-1/2 {Draw by insufficient material}\n" + kings},
      // Positions without kings are judged but not played.
      {"setboard 8/8/8/8/8/8/8/8 w - - 0 1", unplayable + "1/2-1/2 {Stalemate}\n" + cleared}, fails("go", gameOver),
      {"setboard 8/8/8/8/8/8/8/K7 w - - 0 1", unplayable + "1/2-1/2 {Draw by insufficient material}\n" + lone},
      {"new", sizes(256, 32) + startBoard},
      // Time controls: bad ones give only the loop's line, odd numbers don't hurt.
      {"level 0 1:30 0", ""}, {"level 40 0:30 1.5", ""}, {"level 40 :30 0", ""}, {"level 40 5: 0", ""}, {"sd 0", ""},
      fails("level 40 1:30:15 0"), fails("sd -1"), fails("level 40  0"), {"time -5", ""}, {"time x", ""},
      {"level 99999999999 99999999999:99999999999 99999999999", ""}, {"time 99999999999999999999", ""},
      // Diagnostics that refuse their arguments leave the engine working.
      fails("randgames 0"), fails("randgames -5"), fails("randgames x"), fails("randpos 0"),
      fails("randpos 3 /no/file", "# ERROR: failed to open file \"/no/file\" for writing\n"),
      fails("test /etc", "# ERROR: failed to open file \"/etc\" for reading\n"), fails("perft x"), fails("divide 0"),
      {"egtpath syzygy /tb", "# invalid TB type: syzygy\n" + commandError("egtpath syzygy /tb")},
      missing(2, "egtpath gaviota"), {"egtpath gaviota " + gtb4, "# initializing TB: type=gaviota path=" + gtb4 + "\n"},
      {"randgame", ""}, {"norandgame", ""}, {"nobook", ""}, {"book", ""}, {"post", ""}, {"nopost", ""},
      // Options: set, printed, or refused; sizes wait for the next set-up.
      {"option ttHashSizeMB=1048576", setting("ttHashSizeMB=1048576")},
      {"option ttHashSizeMB=16", setting("ttHashSizeMB=16")}, {"option pawnHashSizeMB=4x", setting("pawnHashSizeMB=4")},
      {"option gtbCacheSizeMB=0", setting("gtbCacheSizeMB=0")},
      {"option gtbPath", setting("gtbPath=")},  // with no value a path is empty
      {"option gtbPath=/a;/b", setting("gtbPath=/a;/b")}, {"option bookFilePath=", setting("bookFilePath=")},
      {"option bookFilePath=my.bin=x", setting("bookFilePath=my.bin")}, refused("ttHashSizeMB", "abc"),
      refused("pawnHashSizeMB", "0"), refused("ttHashSizeMB", "1048577"),
      refused("ttHashSizeMB", "99999999999999999999"), refused("gtbCacheSizeMB", "-1"),
      // With no value a size is illegal.
      refused("ttHashSizeMB", "", "option ttHashSizeMB"), refused("pawnHashSizeMB", ""),
      fails("option foo=1", "Error (unknown option name): foo\n"),
      fails("option TTHASHSIZEMB=5", "Error (unknown option name): TTHASHSIZEMB\n"),
      tooMany(1, "option gtbPath=C:/a b"), missing(1, "option"),
      fails("cores 0"), fails("cores x"), {"cores 3", coresLine(3, 1)},
      // The argument of protover isn't looked at; the changed sizes come before "done".
      {"protover x", features("0", "/a;/b", "my.bin") + sizes(16, 4) + "feature done=1\n"},
      {"protover 1", features("0", "/a;/b", "my.bin") + "feature done=1\n"},
  };
  expectTranscript(rows);
}

TEST(ProtocolCommandsTest, XboardTranscript) {
  auto board = [](std::vector<std::string> rows) { return diagram(rows); };
  const std::string e4 = board({"rnbqkbnr", "pppppppp", "........", "........", "....P...", "........", "PPPP.PPP", "RNBQKBNR"});
  const std::string pawnAt = board({"k.......", "....P...", "........", "........", "........", "........", "........", "....K..."});
  std::vector<Row> rows = {
      {"xboard", "\n"}, {"protover 2", features() + "feature done=1\n"},
      {"ping 7", "pong 7\n"}, {"ping x", "pong 0\n"}, {"ping -3", "pong -3\n"}, {"ping 12abc", "pong 12\n"},
      {"ping 0007", "pong 7\n"}, {"option ttHashSizeMB=16", setting("ttHashSizeMB=16")},
      {"option pawnHashSizeMB=8", setting("pawnHashSizeMB=8")},
      {"protover 2", features() + sizes(16, 8) + "feature done=1\n"}, {"protover 2", features() + "feature done=1\n"},
      {"force", ""},
      {"usermove e2", "Error (illegal argument to 'usermove' command): e2\n" + commandError("usermove e2")},
      {"usermove e2e4qq", "Error (illegal argument to 'usermove' command): e2e4qq\n" + commandError("usermove e2e4qq")},
      {"usermove e2e5", illegalMove("e2e5")}, {"usermove e2e4e", illegalMove("e2e4e")},
      {"usermove i2i4", illegalMove("i2i4")}, {"usermove e7e5", illegalMove("e7e5")},
      fails("undo"), fails("remove"), fails("exit"),
      // Files in either case; the text is shown as sent.
      {"usermove E2E4", "# making user move: E2E4\n" + e4}, fails("remove"),
      {"usermove a7A6", "# making user move: a7A6\n" +
                            board({"rnbqkbnr", ".ppppppp", "p.......", "........", "....P...", "........", "PPPP.PPP", "RNBQKBNR"})},
      {"undo", e4}, {"undo", startBoard}, fails("undo"),
      // A promotion needs its letter; a set-up position can't be taken back.
      {"setboard k7/4P3/8/8/8/8/8/4K3 w - - 0 1", pawnAt},
      {"usermove e7e8", illegalMove("e7e8")}, {"usermove e7e8x", illegalMove("e7e8x")},
      {"usermove e7e8Q", "# making user move: e7e8Q\n" +
                             board({"k...Q...", "........", "........", "........", "........", "........", "........", "....K..."})},
      {"undo", pawnAt}, fails("undo"),
      // A knight alone can't mate: the game ends with the move.
      {"usermove e7e8n", "# making user move: e7e8n\n" +
                             board({"k...N...", "........", "........", "........", "........", "........", "........", "....K..."}) +
                             "1/2-1/2 {Draw by insufficient material}\n"},
      fails("usermove a8a7", gameOver), {"new", sizes(16, 8) + startBoard}, {"force", ""},
      {"usermove f2f3", "# making user move: f2f3\n" +
                            board({"rnbqkbnr", "pppppppp", "........", "........", "........", ".....P..", "PPPPP.PP", "RNBQKBNR"})},
      {"usermove e7e5", "# making user move: e7e5\n" +
                            board({"rnbqkbnr", "pppp.ppp", "........", "....p...", "........", ".....P..", "PPPPP.PP", "RNBQKBNR"})},
      {"usermove g2g4", "# making user move: g2g4\n" +
                            board({"rnbqkbnr", "pppp.ppp", "........", "....p...", "......P.", ".....P..", "PPPPP..P", "RNBQKBNR"})},
      // The result comes after the move's board; afterwards no move is taken.
      {"usermove d8h4", "# making user move: d8h4\n" +
                            board({"rnb.kbnr", "pppp.ppp", "........", "....p...", "......Pq", ".....P..", "PPPPP..P", "RNBQKBNR"}) +
                            "0-1 {Black wins by checkmate}\n"},
      fails("usermove a2a3", gameOver), fails("go", gameOver), fails("randpos 0"),
      // A refused position is never played on.
      {"setboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNX w KQkq - 0 1",
       commandError("setboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNX w KQkq - 0 1") + cleared},
      {"usermove e2e4", illegalMove("e2e4")}, {"go", ""},
  };
  expectTranscript(rows);
}

// A whole eval report: the rows named with their columns, every other row 0.
std::string report(const std::map<std::string, std::string>& rows, const std::string& closing) {
  static const char* const labels[] = {"Material", "PST", "Passed pawns", "Weak pawns", "Pawn structure", "Mobility",
                                       "Double attacks", "Outpost", "Rooks", "Queens", "King safety", "King tropism",
                                       "M: King edge dist", "M: King dist", "M: KBNK safe corner", "Side to move"};
  const std::string rule = std::string(78, '=') + "\n";
  std::string text = rule + "Evaluation part                    w-MG w-EG (wTot)   b-MG b-EG (bTot)   Total\n" + rule;
  for (const char* label : labels) {
    char start[64];
    std::snprintf(start, sizeof start, "%-32s", label);
    auto it = rows.find(label);
    text += start + (it == rows.end() ? "      0    0 (   0)      0    0 (   0)      0" : it->second) + "\n";
  }
  return text + rule + closing + "\n" + rule;
}

// A new pawn structure is shown by side under "Weak pawns"; the second look
// finds it in the pawn hash and shows the balance under "Pawn structure".
TEST(EvalCommandTest, TwoLooksAtANewPawnStructure) {
  std::map<std::string, std::string> rows = {{"Material", "    200  200 ( 200)      0    0 (   0)    200"},
                                             {"PST", "     62   70 (  70)      5   60 (  60)     10"},
                                             {"Passed pawns", "     24   36 (  36)      0    0 (   0)     36"},
                                             {"King safety", "    -20    0 (   0)    -20    0 (   0)      0"},
                                             {"Side to move", "     24    0 (   0)      0    0 (   0)      0"}};
  const std::string closing = "Phase =   0          Scaling factor = 1.00          Total evaluation =    207";
  std::vector<std::string> out = repliesTo("setboard 4k3/8/8/8/8/P7/P7/4K3 w - - 0 1\neval\neval\n");
  ASSERT_EQ(out.size(), 3u);
  rows["Weak pawns"] = "    -39  -39 ( -39)      0    0 (   0)    -39";
  EXPECT_EQ(out[1], report(rows, closing));
  rows["Pawn structure"] = rows["Weak pawns"];
  rows.erase("Weak pawns");
  EXPECT_EQ(out[2], report(rows, closing));
}

}  // namespace
