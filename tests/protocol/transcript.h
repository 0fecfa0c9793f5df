#pragma once
// Running the engine under test and comparing what it prints, byte for byte.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "protocol/engine_process.h"

inline const std::string prompt = "# Your move: ";

inline std::string commandError(const std::string& line) { return "# command \"" + line + "\" returned an error code \n"; }

// A board diagram from eight rows, rank 8 first.
inline std::string diagram(const std::vector<std::string>& rows) {
  std::string text;
  for (const std::string& row : rows) text += "# " + row + "\n";
  return text + "#\n";
}

inline const std::string startBoard =
    diagram({"rnbqkbnr", "pppppppp", "........", "........", "........", "........", "PPPPPPPP", "RNBQKBNR"});
// The text before the first prompt, without command-line options.
inline const std::string startup = "# Tolva 0.7.0\n# a chess engine for the xboard protocol; type 'quit' to leave\n# \n"
                                   "feature done=0\n# new size of TT hash: 256 MB\n# new size of Pawn hash: 32 MB\n" + startBoard;

inline EngineOutcome run(const std::string& input, const std::vector<std::string>& args = {},
                         const std::string& dir = "", int timeoutSeconds = 60) {
  return runEngine(TOLVA_BINARY, input, args, dir, timeoutSeconds);
}

// A long-lived engine for transcripts that wait for the engine between lines.
struct Session : EngineProcess {
  explicit Session(const std::vector<std::string>& args = {}, const std::string& dir = "")
      : EngineProcess(TOLVA_BINARY, args, dir) {}
  int end(int timeoutSeconds = 60) { return finish(timeoutSeconds * 1000).status(); }
};

inline size_t count(const std::string& text, const std::string& needle, size_t from = 0) {
  return (from = text.find(needle, from)) == std::string::npos ? 0 : 1 + count(text, needle, from + 1);
}

// An input line (or several) and what the engine answers to it. In console
// mode a prompt follows every line; `xboard` ends the prompts.
struct Row { std::string line, reply; };

// Sends all rows and `quit`, and compares the whole output; a difference is
// reported at the first row that it touches.
inline void expectTranscript(const std::vector<Row>& rows) {
  std::string input;
  for (const Row& row : rows) input += row.line + "\n";
  const EngineOutcome out = run(input + "quit\n");
  EXPECT_EQ(out.status(), 0);
  std::string expected = startup + prompt;
  bool console = true;
  for (const Row& row : rows) {
    console = console && row.line != "xboard";
    std::string next = expected + row.reply + (console ? prompt : "");
    if (out.output.compare(0, next.size(), next) != 0) {
      const size_t at = std::min(expected.size(), out.output.size());
      EXPECT_EQ(out.output.substr(at, next.size() - expected.size() + 40), row.reply) << "after `" << row.line << "`";
      return;
    }
    expected = next;
  }
  EXPECT_EQ(out.output, expected);
}

// What the engine prints between its prompts, one piece per input line
// (console mode; `quit` is appended to the input).
inline std::vector<std::string> repliesTo(const std::string& input) {
  const std::string output = run(input + "quit\n").output;
  std::vector<std::string> pieces;
  for (size_t at = output.find(prompt), next; at != std::string::npos; at = next) {
    if ((next = output.find(prompt, at + prompt.size())) == std::string::npos) break;
    pieces.push_back(output.substr(at + prompt.size(), next - at - prompt.size()));
  }
  return pieces;
}

// Every line the engine may print in xboard mode; anything else was cut by
// another line or is a sanitizer's report. Empty when all are well formed.
inline std::string malformedLines(const std::string& output) {
#define TOLVA_MOVE "[a-h][1-8][a-h][1-8][nbrq]?"
  static const std::regex wellFormed(
      "|#|# .*|feature .*|pong -?[0-9]+|move " TOLVA_MOVE "|Error \\(.*|offer draw|(1-0|0-1|1/2-1/2) \\{[^}]*\\}|"
      // depth, score, time, nodes, selective depth, nps, tablebase hits, line
      "[0-9]+ -?[0-9]+ [0-9]+ [0-9]+ [0-9]+ [0-9]+ [0-9]+(\t" TOLVA_MOVE "( " TOLVA_MOVE ")*)?");
#undef TOLVA_MOVE
  static const std::regex pong("pong -?[0-9]+");
  std::string bad;
  for (size_t start = 0, end; (end = output.find('\n', start)) != std::string::npos; start = end + 1) {
    const std::string line = output.substr(start, end - start);
    // A pong inside any other line, a comment included, was cut into it.
    bool ok = line.find("pong") != std::string::npos ? std::regex_match(line, pong) : std::regex_match(line, wellFormed);
    if (!ok && bad.size() < 2000) bad += "  [" + line + "]\n";
  }
  return bad;
}
