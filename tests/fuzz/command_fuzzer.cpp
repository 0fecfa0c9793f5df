// Feeds the engine binary random sequences of its commands and watches for
// crashes, sanitizer reports, hangs at the end of input and illegal moves.
// A failing sequence is shrunk and written to a file that --replay runs again.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <set>
#include <sstream>

#include "fuzz/command_generator.h"
#include "fuzz/engine_driver.h"
#include "fuzz/fuzz_sequence.h"
#include "fuzz/game_tracker.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  std::string engine;
  uint64_t seed = 0;
  bool seedGiven = false;
  uint64_t first = 0;
  uint64_t sequences = 100;
  double seconds = 0;
  int maxCores = 2;
  std::string replay;
  int repeat = 1;
  bool shrinkReplay = false;
  int shrinkTries = 150;
  double shrinkSeconds = 300;
  std::string out;
  bool keepGoing = false;
  int exitTimeout = 30;
  bool moveCheck = true;
  bool verbose = false;
  std::string dataDir = TOLVA_TEST_DATA_DIR;
  std::string gaviotaDir = TOLVA_GAVIOTA_DIR;
  std::string workBase;
  std::string dumpDir;
};

// What went wrong in a run; an empty kind is a pass.
struct Failure {
  std::string kind;
  std::string signature;  // compared while shrinking: the same fault, not just any
  std::string details;
  explicit operator bool() const { return !kind.empty(); }
};

struct RunRecord {
  FuzzSequence sequence;  // the steps as they were sent
  EngineOutcome outcome;
  Failure failure;
  uint64_t movesChecked = 0;
  uint64_t lostTrack = 0;
  std::string position;  // the tracker's last position
  std::vector<std::string> notes;
};

// Groups of steps to send; empty when the input is to end.
using StepSource = std::function<std::vector<FuzzStep>(const Board_0x88*)>;

// The FEN file that `test` reads: good, bad, and one line longer than its buffer.
const char* fenFileText =
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1\n"
    "8/8/8/8/8/8/8/8 w - - 0 1\n"
    "not a fen\n"
    "\n"
    "4k3/8/8/8/8/8/8/4K3 w - - 0 1 rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR/rnbqkbnr/pppppppp/8/8/8/8/"
    "PPPPPPPP/RNBQKBNR w KQkq - 0 1\n"
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1";

std::string stripPid(std::string line) {
  // "==1234==ERROR: ..." -> "ERROR: ..."
  if (line.size() > 2 && line[0] == '=' && line[1] == '=') {
    size_t end = line.find("==", 2);
    if (end != std::string::npos) line.erase(0, end + 2);
  }
  return line;
}

// The lines of a sanitizer report that say what and where.
std::string keyLines(const std::string& errors, size_t maxLines) {
  std::istringstream in(errors);
  std::string result;
  size_t count = 0;
  for (std::string line; std::getline(in, line) && count < maxLines;) {
    if (line.empty()) continue;
    result += line + "\n";
    ++count;
  }
  return result;
}

Failure judge(const EngineOutcome& outcome, const GameTracker& tracker, bool moveCheck) {
  Failure failure;
  static const char* patterns[] = {"ERROR: AddressSanitizer", "ERROR: LeakSanitizer", "WARNING: ThreadSanitizer",
                                   "runtime error:", "ThreadSanitizer:", "AddressSanitizer:",
                                   "UndefinedBehaviorSanitizer:"};
  std::string first, summary;
  std::istringstream in(outcome.errors);
  for (std::string line; std::getline(in, line);) {
    if (summary.empty() && line.rfind("SUMMARY: ", 0) == 0) summary = line;
    if (first.empty())
      for (const char* pattern : patterns)
        if (line.find(pattern) != std::string::npos) first = stripPid(line);
  }
  if (!first.empty() || !summary.empty()) {
    failure.kind = "sanitizer report";
    failure.signature = summary.empty() ? first : summary;
    // Leak sizes vary from run to run; the fact of a leak doesn't. Both
    // colours' instances of a routine count as one place.
    if (failure.signature.find("leaked in") != std::string::npos) failure.signature = "SUMMARY: memory leaked";
    for (size_t at; (at = failure.signature.find("(Color)0")) != std::string::npos;) failure.signature[at + 7] = '*';
    for (size_t at; (at = failure.signature.find("(Color)1")) != std::string::npos;) failure.signature[at + 7] = '*';
    size_t at = failure.signature.find("runtime error:");
    if (summary.empty() && at != std::string::npos) failure.signature.resize(at + 14);
    failure.details = keyLines(outcome.errors, 60);
    return failure;
  }
  if (outcome.hung) {
    failure.kind = "hang";
    failure.signature = "no exit after the end of input";
    failure.details = outcome.stacks.empty() ? "(no thread stacks: gdb failed)\n" : outcome.stacks;
    return failure;
  }
  if (outcome.signal != 0) {
    failure.kind = "crash";
    failure.signature = "signal " + std::to_string(outcome.signal) + " (" + strsignal(outcome.signal) + ")";
    failure.details = keyLines(outcome.errors, 40);
    return failure;
  }
  if (outcome.exitCode != 0) {
    failure.kind = "exit status";
    failure.signature = "exit status " + std::to_string(outcome.exitCode);
    failure.details = keyLines(outcome.errors, 40);
    return failure;
  }
  if (outcome.exitedEarly && !tracker.quitRead()) {
    failure.kind = "early exit";
    failure.signature = "exited before the end of input without quit";
    return failure;
  }
  if (moveCheck && tracker.failed()) {
    failure.kind = "illegal move";
    failure.signature = "illegal engine move";
    failure.details = tracker.problem() + "\n";
  }
  return failure;
}

class Fuzzer {
 public:
  explicit Fuzzer(const Options& options) : options_(options) {}

  int run();
  int replay();

 private:
  RunRecord execute(const FuzzSequence& header, const StepSource& source);
  RunRecord replaySequence(const FuzzSequence& sequence) {
    size_t next = 0;
    return execute(sequence, [&](const Board_0x88*) {
      std::vector<FuzzStep> group;
      if (next < sequence.steps.size()) group.push_back(sequence.steps[next++]);
      return group;
    });
  }
  bool failsAlike(const FuzzSequence& sequence, const Failure& wanted, int attempts, RunRecord* record);
  FuzzSequence shrink(const FuzzSequence& failing, const Failure& failure, RunRecord& last);
  void report(const std::string& title, const FuzzSequence& minimal, const RunRecord& record,
              const std::string& path);
  std::string makeWorkDir(const FuzzSequence& sequence);

  Options options_;
  std::vector<std::string> seedFens_;
  uint64_t commandsSent_ = 0;
  uint64_t movesChecked_ = 0;
  uint64_t lostTrack_ = 0;
  uint64_t runs_ = 0;
};

std::string Fuzzer::makeWorkDir(const FuzzSequence& sequence) {
  std::string pattern = options_.workBase + "/tolva-fuzz-XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (!mkdtemp(buffer.data())) return "";
  std::string dir = buffer.data();
  std::ofstream ini(dir + "/tolva.ini");
  for (const std::string& line : sequence.iniLines) ini << line << '\n';
  std::ofstream fens(dir + "/fens.txt");
  fens << fenFileText;
  return dir;
}

RunRecord Fuzzer::execute(const FuzzSequence& header, const StepSource& source) {
  RunRecord record;
  record.sequence.engineArgs = header.engineArgs;
  record.sequence.iniLines = header.iniLines;
  record.sequence.comment = header.comment;
  const std::string dir = makeWorkDir(header);
  EngineDriver driver(options_.engine, header.engineArgs, dir);
  GameTracker tracker;
  bool engineGone = !driver.started();
  ++runs_;
  while (!engineGone) {
    std::vector<FuzzStep> group = source(tracker.playableBoard());
    if (group.empty()) break;
    for (const FuzzStep& step : group) {
      record.sequence.steps.push_back(step);
      if (step.kind == FuzzStep::Send) {
        const std::string bytes = step.text + (step.newline ? "\n" : "");
        if (driver.inputClosed()) continue;
        ++commandsSent_;
        tracker.onInput(bytes);
        if (!driver.send(bytes, options_.exitTimeout * 1000)) engineGone = true;
      } else if (step.kind == FuzzStep::Sleep) {
        driver.pause(step.milliseconds);
      } else {
        driver.closeInput();
        tracker.onInputClosed();
      }
      tracker.onOutput(driver.output());
      if (engineGone) break;
    }
  }
  record.outcome = driver.finish(options_.exitTimeout * 1000, true);
  tracker.finish(record.outcome.output);
  record.failure = judge(record.outcome, tracker, options_.moveCheck);
  record.movesChecked = tracker.movesChecked;
  record.lostTrack = tracker.lostTrack;
  record.position = tracker.describePosition();
  record.notes = tracker.notes;
  movesChecked_ += tracker.movesChecked;
  lostTrack_ += tracker.lostTrack;
  if (!dir.empty()) {
    std::error_code ignored;
    std::filesystem::remove_all(dir, ignored);
  }
  return record;
}

bool Fuzzer::failsAlike(const FuzzSequence& sequence, const Failure& wanted, int attempts, RunRecord* record) {
  for (int i = 0; i < attempts; ++i) {
    RunRecord run = replaySequence(sequence);
    if (run.failure.kind == wanted.kind && run.failure.signature == wanted.signature) {
      if (record) *record = run;
      return true;
    }
    // Another fault or none: timing may differ, try once more.
  }
  return false;
}

// Delta debugging over groups of steps, then over single steps, then
// without pauses; every candidate must fail with the same signature.
FuzzSequence Fuzzer::shrink(const FuzzSequence& failing, const Failure& failure, RunRecord& last) {
  FuzzSequence best = failing;
  int tries = 0;
  const auto deadline = Clock::now() + std::chrono::milliseconds(int64_t(options_.shrinkSeconds * 1000));
  auto budgetLeft = [&] { return tries < options_.shrinkTries && Clock::now() < deadline; };
  // Hangs and data races need their timing: give each candidate a second chance.
  const int attempts = 2;

  auto pass = [&](bool byGroup) {
    for (size_t chunks = 2; budgetLeft();) {
      // Units: the steps of one group, or single steps that aren't glue.
      std::vector<std::vector<size_t>> units;
      for (size_t i = 0; i < best.steps.size(); ++i) {
        if (byGroup && !units.empty() && best.steps[units.back().back()].group == best.steps[i].group)
          units.back().push_back(i);
        else if (byGroup || !best.steps[i].glue)
          units.push_back({i});
      }
      if (units.size() < 2 && chunks > units.size()) break;
      chunks = std::min(chunks, units.size());
      bool reduced = false;
      for (size_t c = 0; c < chunks && budgetLeft(); ++c) {
        std::vector<bool> drop(best.steps.size(), false);
        for (size_t u = units.size() * c / chunks; u < units.size() * (c + 1) / chunks; ++u)
          for (size_t i : units[u]) drop[i] = true;
        FuzzSequence candidate = best;
        candidate.steps.clear();
        for (size_t i = 0; i < best.steps.size(); ++i)
          if (!drop[i]) candidate.steps.push_back(best.steps[i]);
        ++tries;
        RunRecord run;
        if (failsAlike(candidate, failure, attempts, &run)) {
          best = candidate;
          last = run;
          reduced = true;
          std::cout << "  shrunk to " << countCommands(best) << " lines" << std::endl;
          break;
        }
      }
      if (reduced) {
        chunks = std::max<size_t>(chunks - 1, 2);
      } else if (chunks >= units.size()) {
        break;
      } else {
        chunks = std::min(chunks * 2, units.size());
      }
    }
  };
  pass(true);
  pass(false);
  if (budgetLeft()) {
    FuzzSequence candidate = best;
    std::vector<FuzzStep> kept;
    for (const FuzzStep& step : candidate.steps)
      if (step.kind != FuzzStep::Sleep) kept.push_back(step);
    candidate.steps = kept;
    ++tries;
    RunRecord run;
    if (kept.size() < best.steps.size() && failsAlike(candidate, failure, attempts, &run)) {
      best = candidate;
      last = run;
    }
  }
  std::cout << "  shrinking took " << tries << " candidates" << std::endl;
  return best;
}

void Fuzzer::report(const std::string& title, const FuzzSequence& minimal, const RunRecord& record,
                    const std::string& path) {
  std::cout << "\n==== " << title << "\n"
            << "==== " << record.failure.kind << ": " << record.failure.signature << "\n";
  bool written = writeSequenceFile(path, minimal);
  std::cout << "==== sequence (" << countCommands(minimal) << " lines)"
            << (written ? ", written to " + path : ", could not write " + path) << ":\n"
            << formatSequence(minimal) << "==== what the engine reported:\n"
            << record.failure.details;
  if (record.outcome.exitCode >= 0 || record.outcome.signal)
    std::cout << "==== exit status " << record.outcome.exitCode << ", signal " << record.outcome.signal << "\n";
  std::cout << "==== replay: tolva_command_fuzzer --engine " << options_.engine << " --replay " << path << "\n"
            << std::endl;
}

int Fuzzer::run() {
  GeneratorSettings settings;
  settings.maxCores = options_.maxCores;
  settings.dataDir = options_.dataDir;
  settings.gaviotaDir = options_.gaviotaDir;
  settings.workDir = ".";
  std::ifstream suite(options_.dataDir + "/perft-suite.epd");
  for (std::string line; std::getline(suite, line);) {
    line = line.substr(0, line.find(" ;"));
    if (!line.empty()) settings.seedFens.push_back(line);
  }
  if (settings.seedFens.empty())
    std::cout << "# warning: no seed FENs in " << options_.dataDir << "/perft-suite.epd" << std::endl;

  std::cout << "tolva_command_fuzzer: seed " << options_.seed << ", sequences " << options_.first << ".."
            << options_.first + options_.sequences - 1 << ", up to " << options_.maxCores << " cores, engine "
            << options_.engine << std::endl;
  const auto start = Clock::now();
  std::set<std::string> seen;
  uint64_t done = 0, failures = 0;
  for (uint64_t index = options_.first; index < options_.first + options_.sequences; ++index) {
    if (options_.seconds > 0 &&
        std::chrono::duration<double>(Clock::now() - start).count() > options_.seconds)
      break;
    // Each sequence has a seed of its own, so one can be drawn again alone with --first.
    FuzzRandom mixer(options_.seed ^ (index * 0x9e3779b97f4a7c15ull));
    CommandGenerator generator(mixer.next(), settings);
    FuzzSequence header;
    generator.begin(header);
    header.comment = "seed " + std::to_string(options_.seed) + ", sequence " + std::to_string(index);
    RunRecord record = execute(header, [&](const Board_0x88* board) { return generator.next(board); });
    ++done;
    if (!options_.dumpDir.empty())
      writeSequenceFile(options_.dumpDir + "/sequence-" + std::to_string(index) + ".txt", record.sequence);
    if (options_.verbose) {
      std::cout << "sequence " << index << ": " << countCommands(record.sequence) << " lines, "
                << record.movesChecked << " engine moves checked"
                << (record.failure ? ", FAILED: " + record.failure.signature : "") << std::endl;
      for (const std::string& note : record.notes) std::cout << "  position lost: " << note << "\n";
    }
    if (!record.failure) continue;
    ++failures;
    const std::string key = record.failure.kind + "|" + record.failure.signature;
    if (seen.count(key)) {
      std::cout << "sequence " << index << " fails like an earlier one: " << record.failure.signature << std::endl;
      continue;
    }
    seen.insert(key);
    std::cout << "sequence " << index << " FAILED: " << record.failure.kind << ": " << record.failure.signature
              << "; shrinking " << countCommands(record.sequence) << " lines" << std::endl;
    record.sequence.comment = header.comment + "\n" + record.failure.kind + ": " + record.failure.signature;
    FuzzSequence minimal = record.sequence;
    RunRecord last = record;
    if (failsAlike(record.sequence, record.failure, 3, &last)) {
      minimal = shrink(record.sequence, record.failure, last);
    } else {
      std::cout << "  the failure didn't come back in 3 runs; the whole sequence follows" << std::endl;
      last = record;
    }
    std::string path = options_.out.empty() ? "fuzz-failure-" + std::to_string(options_.seed) + "-" +
                                                  std::to_string(index) + ".txt"
                                            : options_.out;
    if (options_.keepGoing && !options_.out.empty()) path += "." + std::to_string(index);
    report("sequence " + std::to_string(index) + " of seed " + std::to_string(options_.seed), minimal, last, path);
    if (!options_.keepGoing) break;
  }
  double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  std::cout << "tolva_command_fuzzer: " << done << " sequences, " << commandsSent_ << " lines sent, " << runs_
            << " engine runs, " << movesChecked_ << " engine moves checked (" << lostTrack_
            << " times the position was lost), " << failures << " failing sequences, " << int(seconds) << " s"
            << std::endl;
  return failures ? 1 : 0;
}

int Fuzzer::replay() {
  FuzzSequence sequence;
  std::string error;
  if (!readSequenceFile(options_.replay, sequence, error)) {
    std::cerr << "tolva_command_fuzzer: " << error << std::endl;
    return 2;
  }
  int failures = 0;
  for (int i = 0; i < options_.repeat; ++i) {
    RunRecord record = replaySequence(sequence);
    if (options_.verbose) {
      std::cout << "==== standard output:\n" << record.outcome.output << "\n==== standard error:\n"
                << record.outcome.errors << "\n==== position at the end: " << record.position
                << ", position lost " << record.lostTrack << " times" << std::endl;
      for (const std::string& note : record.notes) std::cout << "  position lost: " << note << "\n";
    }
    std::cout << "replay " << i + 1 << ": " << countCommands(sequence) << " lines, " << record.movesChecked
              << " engine moves checked: "
              << (record.failure ? record.failure.kind + ": " + record.failure.signature : std::string("passed"))
              << std::endl;
    if (!record.failure) continue;
    ++failures;
    if (options_.shrinkReplay) {
      RunRecord last = record;
      FuzzSequence minimal = shrink(sequence, record.failure, last);
      report("replay of " + options_.replay, minimal, last,
             options_.out.empty() ? options_.replay + ".min" : options_.out);
      return 1;
    }
    std::cout << record.failure.details;
  }
  return failures ? 1 : 0;
}

void usage() {
  std::cout
      << "usage: tolva_command_fuzzer --engine PATH [options]\n"
         "  --seed N            seed of the run (default: from the clock; printed)\n"
         "  --sequences N       how many sequences (default 100)\n"
         "  --first N           index of the first sequence (default 0)\n"
         "  --seconds S         stop starting sequences after S seconds\n"
         "  --cores N           highest core count the sequences ask for (default 2)\n"
         "  --replay FILE       run a sequence file instead of random ones\n"
         "  --repeat N          with --replay: run it N times\n"
         "  --shrink            with --replay: shrink a failing sequence\n"
         "  --shrink-tries N    candidates tried while shrinking (default 150)\n"
         "  --shrink-seconds S  time spent shrinking at most (default 300)\n"
         "  --out FILE          where the minimal sequence goes\n"
         "  --keep-going        go on after a failure\n"
         "  --exit-timeout S    seconds the engine has to exit after its input ends (default 30)\n"
         "  --no-move-check     don't check the engine's moves\n"
         "  --data DIR          folder with perft-suite.epd and performance.bin\n"
         "  --gaviota DIR       folder with the Gaviota tables (gtb1..gtb4)\n"
         "  --work DIR          where the engine's working folders are made (default $TMPDIR or /tmp)\n"
         "  --verbose           a line per sequence; with --replay the engine's output\n"
         "  --dump DIR          write every sequence to DIR\n";
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    auto value = [&]() -> std::string {
      if (i + 1 >= argc) {
        std::cerr << "tolva_command_fuzzer: " << arg << " needs a value" << std::endl;
        std::exit(2);
      }
      return argv[++i];
    };
    if (arg == "--engine") options.engine = value();
    else if (arg == "--seed") options.seed = std::strtoull(value().c_str(), nullptr, 10), options.seedGiven = true;
    else if (arg == "--sequences") options.sequences = std::strtoull(value().c_str(), nullptr, 10);
    else if (arg == "--first") options.first = std::strtoull(value().c_str(), nullptr, 10);
    else if (arg == "--seconds") options.seconds = std::atof(value().c_str());
    else if (arg == "--cores") options.maxCores = std::max(1, std::atoi(value().c_str()));
    else if (arg == "--replay") options.replay = value();
    else if (arg == "--repeat") options.repeat = std::max(1, std::atoi(value().c_str()));
    else if (arg == "--shrink") options.shrinkReplay = true;
    else if (arg == "--shrink-tries") options.shrinkTries = std::atoi(value().c_str());
    else if (arg == "--shrink-seconds") options.shrinkSeconds = std::atof(value().c_str());
    else if (arg == "--out") options.out = value();
    else if (arg == "--keep-going") options.keepGoing = true;
    else if (arg == "--exit-timeout") options.exitTimeout = std::max(1, std::atoi(value().c_str()));
    else if (arg == "--no-move-check") options.moveCheck = false;
    else if (arg == "--data") options.dataDir = value();
    else if (arg == "--gaviota") options.gaviotaDir = value();
    else if (arg == "--work") options.workBase = value();
    else if (arg == "--verbose") options.verbose = true;
    else if (arg == "--dump") options.dumpDir = value();
    else if (arg == "--help" || arg == "-h") return usage(), 0;
    else {
      std::cerr << "tolva_command_fuzzer: unknown argument " << arg << std::endl;
      usage();
      return 2;
    }
  }
  if (options.engine.empty() || access(options.engine.c_str(), X_OK) != 0) {
    std::cerr << "tolva_command_fuzzer: --engine must name the engine binary" << std::endl;
    usage();
    return 2;
  }
  if (!options.seedGiven)
    options.seed = uint64_t(std::chrono::system_clock::now().time_since_epoch().count()) % 1000000000ull;
  if (options.workBase.empty()) options.workBase = getenv("TMPDIR") ? getenv("TMPDIR") : "/tmp";
  options.engine = std::filesystem::absolute(options.engine).string();
  // The engine runs in a folder of its own; the sanitizers stop at their first report.
  setenv("ASAN_OPTIONS", "detect_leaks=1", 0);
  setenv("UBSAN_OPTIONS", "halt_on_error=1:print_stacktrace=1", 0);
  setenv("TSAN_OPTIONS", "halt_on_error=1:second_deadlock_stack=1", 0);
  std::cout.setf(std::ios::unitbuf);
  Fuzzer fuzzer(options);
  return options.replay.empty() ? fuzzer.run() : fuzzer.replay();
}
