// Feeds the engine binary random sequences of its commands and watches for
// crashes, sanitizer reports, hangs at the end of input and illegal moves.
// A failing sequence is shrunk and written to a file that --replay runs again.
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <set>
#include <sstream>

#include "fuzz/command_generator.h"
#include "fuzz/game_tracker.h"
#include "protocol/engine_process.h"

namespace {

struct Options {
  std::string engine, replay, out;
  uint64_t seed = 0, first = 0, sequences = 100;
  int maxCores = 2, repeat = 1;
  bool shrinkReplay = false, verbose = false;
};

// What went wrong in a run; an empty kind is a pass. Shrinking keeps only
// candidates that fail with the same signature.
struct Failure {
  std::string kind, signature, details;
  explicit operator bool() const { return !kind.empty(); }
  bool operator==(const Failure& o) const { return kind == o.kind && signature == o.signature; }
};

struct RunRecord {
  FuzzSequence sequence;  // the steps as they were sent
  EngineOutcome outcome;
  Failure failure;
  uint64_t movesChecked = 0;
};

// The FEN file that `test fens.txt` reads: good, bad, and one line longer than its buffer.
const char* const fenFileText =
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1\n8/8/8/8/8/8/8/8 w - - 0 1\nnot a fen\n\n"
    "4k3/8/8/8/8/8/8/4K3 w - - 0 1 rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR/rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1\n"
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";

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
  if (outcome.hung) return {"hang", "no exit after the end of input", outcome.stacks.empty() ? "(no thread stacks)\n" : outcome.stacks};
  if (outcome.signal) return {"crash", "signal " + std::to_string(outcome.signal) + " (" + strsignal(outcome.signal) + ")", outcome.errors};
  if (outcome.exitCode != 0) return {"exit status", "exit status " + std::to_string(outcome.exitCode), outcome.errors};
  if (outcome.exitedEarly && !tracker.quitRead()) return {"early exit", "exited before the end of input without quit", ""};
  if (!tracker.problem.empty()) return {"illegal move", "illegal engine move", tracker.problem + "\n"};
  return {};
}

class Fuzzer {
 public:
  explicit Fuzzer(const Options& options) : options_(options) {}
  int run();
  int replay();

 private:
  using StepSource = std::function<std::vector<FuzzStep>(const Board_0x88*)>;
  RunRecord execute(const FuzzSequence& header, const StepSource& source);
  RunRecord replaySequence(const FuzzSequence& sequence) {
    size_t next = 0;
    return execute(sequence, [&](const Board_0x88*) {
      return next < sequence.steps.size() ? std::vector<FuzzStep>{sequence.steps[next++]} : std::vector<FuzzStep>{};
    });
  }
  // Hangs and data races need their timing: each candidate gets a second chance.
  bool failsAlike(const FuzzSequence& sequence, const Failure& wanted, RunRecord& record, int attempts = 2) {
    for (int i = 0; i < attempts; ++i)
      if (RunRecord run = replaySequence(sequence); run.failure == wanted) return record = run, true;
    return false;
  }
  FuzzSequence shrink(const FuzzSequence& failing, RunRecord& last);
  void report(const FuzzSequence& minimal, const RunRecord& record, const std::string& path);

  Options options_;
  uint64_t linesSent_ = 0, movesChecked_ = 0;
};

RunRecord Fuzzer::execute(const FuzzSequence& header, const StepSource& source) {
  RunRecord record;
  record.sequence = header;
  record.sequence.steps.clear();
  // The engine runs in a folder of its own, with its ini file and a FEN file.
  const std::filesystem::path dir = std::filesystem::temp_directory_path() / ("tolva-fuzz-" + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  std::ofstream(dir / "tolva.ini") << [&] { std::string t; for (const auto& l : header.iniLines) t += l + "\n"; return t; }();
  std::ofstream(dir / "fens.txt") << fenFileText;
  EngineProcess engine(options_.engine, header.engineArgs, dir.string(), EngineProcess::Errors::Apart);
  GameTracker tracker;
  for (bool gone = !engine.started(); !gone;) {
    const std::vector<FuzzStep> group = source(tracker.playableBoard());
    if (group.empty()) break;
    for (const FuzzStep& step : group) {
      record.sequence.steps.push_back(step);
      if (step.kind == FuzzStep::Send && !engine.inputClosed()) {
        const std::string bytes = step.text + (step.newline ? "\n" : "");
        ++linesSent_;
        tracker.onInput(bytes);
        gone = !engine.send(bytes, 30000);
      }
      if (step.kind == FuzzStep::Sleep) engine.pause(step.milliseconds);
      if (step.kind == FuzzStep::Close) engine.closeInput(), tracker.onInput("", true);
      tracker.onOutput(engine.output());
      if (gone) break;
    }
  }
  record.outcome = engine.finish(30000, true);
  tracker.onInput("", true);
  tracker.onOutput(record.outcome.output + "\n");
  record.failure = judge(record.outcome, tracker);
  movesChecked_ += record.movesChecked = tracker.movesChecked;
  std::filesystem::remove_all(dir);
  return record;
}

// Delta debugging over groups of steps, then over single steps that aren't
// glue, then without pauses.
FuzzSequence Fuzzer::shrink(const FuzzSequence& failing, RunRecord& last) {
  FuzzSequence best = failing;
  const Failure wanted = last.failure;
  int tries = 0;
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
  auto budgetLeft = [&] { return tries < 150 && std::chrono::steady_clock::now() < deadline; };
  auto attempt = [&](std::function<bool(size_t, const FuzzStep&)> keep) {
    FuzzSequence candidate = best;
    candidate.steps.clear();
    for (size_t i = 0; i < best.steps.size(); ++i)
      if (keep(i, best.steps[i])) candidate.steps.push_back(best.steps[i]);
    if (candidate.steps.size() == best.steps.size() || (++tries, !failsAlike(candidate, wanted, last))) return false;
    best = candidate;
    std::cout << "  shrunk to " << countCommands(best) << " lines" << std::endl;
    return true;
  };
  for (bool byGroup : {true, false}) {
    for (size_t chunks = 2; budgetLeft();) {
      std::vector<size_t> unitOf(best.steps.size());  // the unit that each step belongs to
      size_t units = 0;
      for (size_t i = 0; i < best.steps.size(); ++i)
        unitOf[i] = i > 0 && (byGroup ? best.steps[i].group == best.steps[i - 1].group : best.steps[i].glue) ? units - 1 : units++;
      if (units < 2) break;
      chunks = std::min(chunks, units);
      bool reduced = false;
      for (size_t c = 0; c < chunks && budgetLeft() && !reduced; ++c)
        reduced = attempt([&](size_t i, const FuzzStep&) { return unitOf[i] < units * c / chunks || unitOf[i] >= units * (c + 1) / chunks; });
      if (reduced) chunks = std::max<size_t>(chunks - 1, 2);
      else if (chunks >= units) break;
      else chunks = std::min(chunks * 2, units);
    }
  }
  if (budgetLeft()) attempt([](size_t, const FuzzStep& step) { return step.kind != FuzzStep::Sleep; });
  std::cout << "  shrinking took " << tries << " candidates" << std::endl;
  return best;
}

void Fuzzer::report(const FuzzSequence& minimal, const RunRecord& record, const std::string& path) {
  const bool written = bool(std::ofstream(path, std::ios::binary) << formatSequence(minimal));
  std::cout << "\n==== " << record.failure.kind << ": " << record.failure.signature << "\n==== sequence ("
            << countCommands(minimal) << " lines)" << (written ? ", written to " : ", could not write ") << path << ":\n"
            << formatSequence(minimal) << "==== what the engine reported:\n" << record.failure.details
            << "\n==== replay: tolva_command_fuzzer --engine " << options_.engine << " --replay " << path << "\n" << std::endl;
}

int Fuzzer::run() {
  GeneratorSettings settings{options_.maxCores, TOLVA_TEST_DATA_DIR, TOLVA_GAVIOTA_DIR, {}};
  std::ifstream suite(settings.dataDir + "/perft-suite.epd");
  for (std::string line; std::getline(suite, line);)
    if (line = line.substr(0, line.find(" ;")); !line.empty()) settings.seedFens.push_back(line);
  std::cout << "tolva_command_fuzzer: seed " << options_.seed << ", sequences " << options_.first << ".."
            << options_.first + options_.sequences - 1 << ", up to " << options_.maxCores << " cores" << std::endl;
  std::set<std::string> seen;
  uint64_t failures = 0;
  for (uint64_t index = options_.first; index < options_.first + options_.sequences; ++index) {
    // Each sequence has a seed of its own, so one can be drawn again alone with --first.
    CommandGenerator generator(FuzzRandom(options_.seed ^ (index * 0x9e3779b97f4a7c15ull)).next(), settings);
    FuzzSequence header;
    generator.begin(header);
    header.comment = "seed " + std::to_string(options_.seed) + ", sequence " + std::to_string(index);
    RunRecord record = execute(header, [&](const Board_0x88* board) { return generator.next(board); });
    if (options_.verbose)
      std::cout << "sequence " << index << ": " << countCommands(record.sequence) << " lines, " << record.movesChecked
                << " engine moves checked " << record.failure.signature << std::endl;
    if (!record.failure) continue;
    ++failures;
    std::cout << "sequence " << index << " FAILED: " << record.failure.kind << ": " << record.failure.signature << std::endl;
    if (!seen.insert(record.failure.kind + record.failure.signature).second) continue;
    record.sequence.comment += "\n" + record.failure.kind + ": " + record.failure.signature;
    RunRecord last = record;
    FuzzSequence minimal = failsAlike(record.sequence, record.failure, last, 3) ? shrink(record.sequence, last) : record.sequence;
    report(minimal, last, options_.out.empty() ? "fuzz-failure-" + std::to_string(options_.seed) + ".txt" : options_.out);
    break;
  }
  std::cout << "tolva_command_fuzzer: " << linesSent_ << " lines sent, " << movesChecked_ << " engine moves checked, "
            << failures << " failing sequences" << std::endl;
  return failures ? 1 : 0;
}

int Fuzzer::replay() {
  std::ifstream file(options_.replay, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  FuzzSequence sequence;
  std::string error = file ? "" : "cannot read " + options_.replay;
  if (!file || !parseSequence(text.str(), sequence, error)) return std::cerr << "tolva_command_fuzzer: " << error << std::endl, 2;
  int failures = 0;
  for (int i = 0; i < options_.repeat; ++i) {
    RunRecord record = replaySequence(sequence);
    if (options_.verbose) std::cout << "==== output:\n" << record.outcome.output << "\n==== errors:\n" << record.outcome.errors << "\n";
    std::cout << "replay " << i + 1 << ": " << countCommands(sequence) << " lines, " << record.movesChecked << " engine moves checked: "
              << (record.failure ? record.failure.kind + ": " + record.failure.signature : "passed") << std::endl;
    if (!record.failure) continue;
    ++failures;
    if (options_.shrinkReplay) {
      FuzzSequence minimal = shrink(sequence, record);
      report(minimal, record, options_.out.empty() ? options_.replay + ".min" : options_.out);
      return 1;
    }
    std::cout << record.failure.details;
  }
  return failures ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  options.seed = uint64_t(std::chrono::system_clock::now().time_since_epoch().count()) % 1000000000ull;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const std::string value = i + 1 < argc ? argv[i + 1] : "";
    const bool flag = arg == "--shrink" || arg == "--verbose";
    if (!flag && i + 1 >= argc) arg == "--help" ? void() : void(std::cerr << arg << " needs a value\n");
    if (arg == "--engine") options.engine = value;
    else if (arg == "--seed") options.seed = std::strtoull(value.c_str(), nullptr, 10);
    else if (arg == "--sequences") options.sequences = std::strtoull(value.c_str(), nullptr, 10);
    else if (arg == "--first") options.first = std::strtoull(value.c_str(), nullptr, 10);
    else if (arg == "--cores") options.maxCores = std::max(1, std::atoi(value.c_str()));
    else if (arg == "--replay") options.replay = value;
    else if (arg == "--repeat") options.repeat = std::max(1, std::atoi(value.c_str()));
    else if (arg == "--out") options.out = value;
    else if (arg == "--shrink") options.shrinkReplay = true;
    else if (arg == "--verbose") options.verbose = true;
    else options.engine.clear(), i = argc;  // unknown: the usage below
    i += !flag;
  }
  if (options.engine.empty() || access(options.engine.c_str(), X_OK) != 0) {
    std::cerr << "usage: tolva_command_fuzzer --engine PATH [--seed N] [--sequences N] [--first N] [--cores N] [--out FILE]"
                 " [--verbose]\n       tolva_command_fuzzer --engine PATH --replay FILE [--repeat N] [--shrink] [--out FILE]\n";
    return 2;
  }
  options.engine = std::filesystem::absolute(options.engine).string();
  // The sanitizers stop at their first report.
  setenv("ASAN_OPTIONS", "detect_leaks=1", 0);
  setenv("UBSAN_OPTIONS", "halt_on_error=1:print_stacktrace=1", 0);
  setenv("TSAN_OPTIONS", "halt_on_error=1:second_deadlock_stack=1", 0);
  std::cout.setf(std::ios::unitbuf);
  Fuzzer fuzzer(options);
  return options.replay.empty() ? fuzzer.run() : fuzzer.replay();
}
