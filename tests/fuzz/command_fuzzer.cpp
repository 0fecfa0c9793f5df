// Feeds the engine binary random sequences of its commands and watches for
// crashes, sanitizer reports, hangs at the end of input and illegal moves.
// A failing sequence is written to a file that --replay runs again.
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>

#include "fuzz/command_generator.h"
#include "fuzz/game_tracker.h"
#include "protocol/engine_process.h"

namespace {

struct Options {
  std::string engine, replay, out;
  uint64_t seed = 0, sequences = 100;
  int maxCores = 2;
  bool uci = false;
} options;

// What went wrong in a run; no kind is a pass.
struct Failure {
  std::string kind, signature, details;
};

struct RunRecord {
  FuzzSequence sequence;  // the steps as they were sent
  EngineOutcome outcome;
  Failure failure;
  uint64_t movesChecked;
};

// The file form, one step a line: "args -cores 2", "ini ttHashSizeMB = 4",
// "sleep 12", "send usermove e2e4", "glue sd 2" (belongs to the step before),
// "part qui" (no line feed), "close". Bytes that an editor might change,
// trailing blanks included, are written as \xHH.
std::string formatSequence(const FuzzSequence& sequence) {
  std::string text = "# Tolva command fuzzer sequence; replay with --replay <this file>\n# " + sequence.comment + "\nargs";
  for (const std::string& arg : sequence.engineArgs) text += " " + arg;
  for (const std::string& line : sequence.iniLines) text += "\nini " + line;
  for (const FuzzStep& step : sequence.steps) {
    text += step.kind == FuzzStep::Sleep ? "\nsleep " + std::to_string(step.milliseconds) : step.kind == FuzzStep::Close ? "\nclose"
            : step.glue ? "\nglue " : step.newline ? "\nsend " : "\npart ";
    const size_t trailing = step.text.find_last_not_of(' ') + 1;
    for (size_t i = 0; i < step.text.size(); ++i) {
      const unsigned char c = static_cast<unsigned char>(step.text[i]);
      char hex[5];
      std::snprintf(hex, sizeof hex, "\\x%02x", c);
      text += (c > ' ' && c < 0x7f && c != '\\') || (c == ' ' && i < trailing) ? std::string(1, char(c)) : std::string(hex);
    }
  }
  return text + "\n";
}

bool parseSequence(std::istream& in, FuzzSequence& sequence) {
  for (std::string line; std::getline(in, line);) {
    const size_t blank = std::min(line.find(' '), line.size());
    const std::string word = line.substr(0, blank), rest = line.substr(std::min(blank + 1, line.size()));
    if (word == "args")
      for (std::istringstream words(rest); words >> line;) sequence.engineArgs.push_back(line);
    if (word == "ini") sequence.iniLines.push_back(rest);
    if (word.empty() || word[0] == '#' || word == "args" || word == "ini") continue;
    FuzzStep step;
    for (size_t i = 0; i < rest.size(); ++i)
      if (rest.compare(i, 2, "\\x") == 0) step.text += char(std::strtol(rest.substr(i + 2, 2).c_str(), nullptr, 16)), i += 3;
      else step.text += rest[i];
    if (word == "sleep") step.kind = FuzzStep::Sleep, step.milliseconds = std::atoi(rest.c_str());
    else if (word == "close") step.kind = FuzzStep::Close;
    else if (word != "send" && word != "part" && word != "glue") return std::cerr << "unknown step: " << line << "\n", false;
    step.newline = word != "part";
    step.glue = word == "glue" && !sequence.steps.empty();
    sequence.steps.push_back(step);
  }
  return true;
}

size_t countLines(const FuzzSequence& s) {
  return size_t(std::count_if(s.steps.begin(), s.steps.end(), [](const FuzzStep& step) { return step.kind == FuzzStep::Send; }));
}

Failure judge(const EngineOutcome& outcome, const GameTracker& tracker) {
  std::istringstream errors(outcome.errors);
  std::string first, summary;
  for (std::string line; std::getline(errors, line);) {
    if (summary.empty() && line.rfind("SUMMARY: ", 0) == 0) summary = line;
    for (const char* pattern : {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "WARNING: ThreadSanitizer", "runtime error:"})
      if (first.empty() && line.find(pattern) != std::string::npos) first = line.substr(line.find(pattern));
  }
  if (!first.empty() || !summary.empty()) {
    std::string signature = summary.empty() ? first.substr(0, first.find("runtime error:") + 14) : summary;
    // Leak sizes vary from run to run; both colours' instances of a routine are one place.
    if (signature.find("leaked in") != std::string::npos) signature = "SUMMARY: memory leaked";
    for (size_t at; (at = signature.find("(Color)")) != std::string::npos;) signature.replace(at, 8, "*");
    return {"sanitizer report", signature, outcome.errors.substr(0, 6000)};
  }
  if (outcome.hung) return {"hang", "no exit after the end of input", outcome.errors};
  if (outcome.signal) return {"crash", "signal " + std::to_string(outcome.signal) + " (" + strsignal(outcome.signal) + ")", outcome.errors};
  if (outcome.exitCode != 0) return {"exit status", "exit status " + std::to_string(outcome.exitCode), outcome.errors};
  if (outcome.exitedEarly && !tracker.quitRead()) return {"early exit", "exited before the end of input without quit", ""};
  if (!tracker.problem.empty()) return {"illegal move", "illegal engine move", tracker.problem + "\n"};
  return {};
}

using StepSource = std::function<std::vector<FuzzStep>(const Board_0x88*)>;

RunRecord execute(const FuzzSequence& header, const StepSource& source) {
  RunRecord record{header, {}, {}, 0};
  record.sequence.steps.clear();
  // The engine runs in a folder of its own, with its ini file and a FEN file for `test`.
  const std::filesystem::path dir = std::filesystem::temp_directory_path() / ("tolva-fuzz-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  for (std::ofstream ini(dir / "tolva.ini"); const std::string& line : header.iniLines) ini << line << "\n";
  std::ofstream(dir / "fens.txt") << "4k3/8/8/8/8/8/8/4K3 w - - 0 1\n8/8/8/8/8/8/8/8 w - - 0 1\nnot a fen\n\n" << std::string(130, '4');
  EngineProcess engine(options.engine, header.engineArgs, dir.string(), true);
  GameTracker tracker;
  for (bool gone = !engine.started(); !gone;) {
    const std::vector<FuzzStep> group = source(tracker.playableBoard());
    if (group.empty()) break;
    for (size_t i = 0; i < group.size() && !gone; ++i) {
      const FuzzStep& step = group[i];
      record.sequence.steps.push_back(step);
      if (step.kind == FuzzStep::Send && !engine.inputClosed()) {
        tracker.onInput(step.text + (step.newline ? "\n" : ""));
        gone = !engine.send(step.text + (step.newline ? "\n" : ""), 30000);
      }
      if (step.kind == FuzzStep::Sleep) engine.pause(step.milliseconds);
      if (step.kind == FuzzStep::Close) engine.closeInput(), tracker.onInput("", true);
      tracker.onOutput(engine.output());
    }
  }
  record.outcome = engine.finish(30000);
  tracker.onInput("", true);
  tracker.onOutput(record.outcome.output + "\n");
  std::filesystem::remove_all(dir);
  return {record.sequence, record.outcome, judge(record.outcome, tracker), tracker.movesChecked};
}

RunRecord replaySequence(const FuzzSequence& sequence) {
  size_t next = 0;
  return execute(sequence, [&](const Board_0x88*) {
    return next < sequence.steps.size() ? std::vector<FuzzStep>{sequence.steps[next++]} : std::vector<FuzzStep>{};
  });
}

void report(const FuzzSequence& sequence, const RunRecord& record, const std::string& path) {
  const bool written = bool(std::ofstream(path, std::ios::binary) << formatSequence(sequence));
  std::cout << "\n==== " << record.failure.kind << ": " << record.failure.signature << "\n==== sequence (" << countLines(sequence)
            << " lines)" << (written ? ", written to " : ", could not write ") << path << ":\n" << formatSequence(sequence)
            << "==== what the engine reported:\n" << record.failure.details << "\n==== replay: tolva_command_fuzzer --engine "
            << options.engine << " --replay " << path << "\n" << std::endl;
}

int run() {
  GeneratorSettings settings{options.maxCores, TOLVA_TEST_DATA_DIR, TOLVA_GAVIOTA_DIR, {}, options.uci};
  std::ifstream suite(settings.dataDir + "/perft-suite.epd");
  for (std::string line; std::getline(suite, line);) settings.seedFens.push_back(line.substr(0, line.find(" ;")));
  std::cout << "tolva_command_fuzzer: seed " << options.seed << ", " << options.sequences << (options.uci ? " UCI" : "")
            << " sequences" << std::endl;
  uint64_t lines = 0, moves = 0;
  for (uint64_t index = 0; index < options.sequences; ++index) {
    CommandGenerator generator(options.seed * 1000003 + index, settings);
    FuzzSequence header;
    generator.begin(header);
    header.comment = "seed " + std::to_string(options.seed) + ", sequence " + std::to_string(index);
    RunRecord record = execute(header, [&](const Board_0x88* board) { return generator.next(board); });
    lines += countLines(record.sequence);
    moves += record.movesChecked;
    if (record.failure.kind.empty()) continue;
    std::cout << "sequence " << index << " FAILED: " << record.failure.kind << ": " << record.failure.signature << std::endl;
    record.sequence.comment += ", " + record.failure.kind + ": " + record.failure.signature;
    report(record.sequence, record, options.out.empty() ? "fuzz-failure-" + std::to_string(options.seed) + ".txt" : options.out);
    return 1;
  }
  std::cout << "tolva_command_fuzzer: " << lines << " lines sent, " << moves << " engine moves checked, no failure" << std::endl;
  return 0;
}

int replay() {
  std::ifstream file(options.replay, std::ios::binary);
  FuzzSequence sequence;
  if (!file || !parseSequence(file, sequence)) return std::cerr << "tolva_command_fuzzer: cannot read " << options.replay << "\n", 2;
  const RunRecord record = replaySequence(sequence);
  std::cout << "replay: " << countLines(sequence) << " lines, " << record.movesChecked << " engine moves checked: "
            << (record.failure.kind.empty() ? "passed" : record.failure.kind + ": " + record.failure.signature) << std::endl;
  if (record.failure.kind.empty()) return 0;
  return std::cout << record.failure.details, 1;
}

}  // namespace

int main(int argc, char** argv) {
  options.seed = uint64_t(std::chrono::system_clock::now().time_since_epoch().count()) % 1000000000ull;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i], value = i + 1 < argc ? argv[i + 1] : "";
    if (arg == "--uci") options.uci = true, --i;
    else if (arg == "--engine") options.engine = value;
    else if (arg == "--seed") options.seed = std::strtoull(value.c_str(), nullptr, 10);
    else if (arg == "--sequences") options.sequences = std::strtoull(value.c_str(), nullptr, 10);
    else if (arg == "--cores") options.maxCores = std::max(1, std::atoi(value.c_str()));
    else if (arg == "--replay") options.replay = value;
    else if (arg == "--out") options.out = value;
    else options.engine.clear(), i = argc;  // unknown: the usage below
    ++i;
  }
  if (options.engine.empty() || access(options.engine.c_str(), X_OK) != 0) {
    std::cerr << "usage: tolva_command_fuzzer --engine PATH [--uci] [--seed N] [--sequences N] [--cores N] [--out FILE]\n"
                 "       tolva_command_fuzzer --engine PATH --replay FILE\n";
    return 2;
  }
  options.engine = std::filesystem::absolute(options.engine).string();
  // The sanitizers stop at their first report.
  setenv("ASAN_OPTIONS", "detect_leaks=1", 0);
  setenv("UBSAN_OPTIONS", "halt_on_error=1:print_stacktrace=1", 0);
  setenv("TSAN_OPTIONS", "halt_on_error=1:second_deadlock_stack=1", 0);
  std::cout.setf(std::ios::unitbuf);
  return options.replay.empty() ? run() : replay();
}
