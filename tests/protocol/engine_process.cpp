#include "protocol/engine_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>

namespace {

int spawn(const std::vector<std::string>& args, const std::string& workingDir, int& toChild, int& fromChild) {
  int in[2], out[2];
  if (pipe(in) != 0 || pipe(out) != 0) throw std::runtime_error("pipe failed");
  int pid = fork();
  if (pid < 0) throw std::runtime_error("fork failed");
  if (pid == 0) {
    dup2(in[0], 0);
    dup2(out[1], 1);
    dup2(out[1], 2);
    close(in[0]);
    close(in[1]);
    close(out[0]);
    close(out[1]);
    if (!workingDir.empty() && chdir(workingDir.c_str()) != 0) _exit(126);
    std::vector<char*> argv;
    std::string binary = TOLVA_BINARY;
    argv.push_back(binary.data());
    std::vector<std::string> copies = args;
    for (std::string& a : copies) argv.push_back(a.data());
    argv.push_back(nullptr);
    execv(binary.c_str(), argv.data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  signal(SIGPIPE, SIG_IGN);
  toChild = in[1];
  fromChild = out[0];
  return pid;
}

int waitExit(int pid, int timeoutSeconds) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  for (;;) {
    int status = 0;
    int r = waitpid(pid, &status, WNOHANG);
    if (r == pid) return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    if (std::chrono::steady_clock::now() > deadline) {
      kill(pid, SIGKILL);
      waitpid(pid, &status, 0);
      return -1;
    }
    usleep(2000);
  }
}

}  // namespace

EngineRun runEngine(const std::string& input, const std::vector<std::string>& args, const std::string& workingDir,
                    int timeoutSeconds) {
  EngineSession session(args, workingDir);
  session.send(input);
  EngineRun run;
  run.exitStatus = session.finish(timeoutSeconds);
  run.timedOut = run.exitStatus == -1;
  run.output = session.output();
  return run;
}

EngineSession::EngineSession(const std::vector<std::string>& args, const std::string& workingDir) {
  pid_ = spawn(args, workingDir, toChild_, fromChild_);
}

EngineSession::~EngineSession() {
  if (toChild_ >= 0) close(toChild_);
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    int status;
    waitpid(pid_, &status, 0);
  }
  if (fromChild_ >= 0) close(fromChild_);
}

void EngineSession::send(const std::string& text) {
  size_t done = 0;
  while (done < text.size()) {
    // Keep draining output so that a chatty engine never blocks us both.
    pollfd fds[2] = {{toChild_, POLLOUT, 0}, {fromChild_, POLLIN, 0}};
    if (poll(fds, 2, 1000) < 0 && errno != EINTR) return;
    if (fds[1].revents & (POLLIN | POLLHUP)) readSome(0);
    if (fds[0].revents & POLLOUT) {
      ssize_t n = write(toChild_, text.data() + done, text.size() - done);
      if (n < 0) {
        if (errno == EINTR || errno == EAGAIN) continue;
        return;
      }
      done += size_t(n);
    } else if (fds[0].revents & (POLLERR | POLLHUP)) {
      return;
    }
  }
}

bool EngineSession::readSome(int timeoutMs) {
  pollfd fd = {fromChild_, POLLIN, 0};
  int r = poll(&fd, 1, timeoutMs);
  if (r <= 0) return false;
  char buffer[65536];
  ssize_t n = read(fromChild_, buffer, sizeof buffer);
  if (n <= 0) return false;
  output_.append(buffer, size_t(n));
  return true;
}

bool EngineSession::waitFor(const std::string& needle, int timeoutSeconds) {
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  while (output_.find(needle) == std::string::npos) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    pollfd fd = {fromChild_, POLLIN, 0};
    if (poll(&fd, 1, 50) > 0) {
      char buffer[65536];
      ssize_t n = read(fromChild_, buffer, sizeof buffer);
      if (n <= 0) return output_.find(needle) != std::string::npos;
      output_.append(buffer, size_t(n));
    }
  }
  return true;
}

int EngineSession::finish(int timeoutSeconds) {
  if (toChild_ >= 0) {
    close(toChild_);
    toChild_ = -1;
  }
  auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(timeoutSeconds);
  // Read to the end of output, then reap the child.
  for (;;) {
    pollfd fd = {fromChild_, POLLIN, 0};
    int r = poll(&fd, 1, 100);
    if (r > 0) {
      char buffer[65536];
      ssize_t n = read(fromChild_, buffer, sizeof buffer);
      if (n <= 0) break;
      output_.append(buffer, size_t(n));
    }
    if (std::chrono::steady_clock::now() > deadline) break;
  }
  auto left = std::chrono::duration_cast<std::chrono::seconds>(deadline - std::chrono::steady_clock::now()).count();
  int status = waitExit(pid_, left > 1 ? int(left) : 1);
  pid_ = -1;
  return status;
}

std::string startBoardDiagram() {
  return "# rnbqkbnr\n# pppppppp\n# ........\n# ........\n# ........\n# ........\n# PPPPPPPP\n# RNBQKBNR\n#\n";
}

std::string expectedStartup(bool withBoard) {
  std::string text =
      "# Tolva 0.7.0\n"
      "# a chess engine for the xboard protocol; type 'quit' to leave\n"
      "# \n"
      "feature done=0\n"
      "# new size of TT hash: 256 MB\n"
      "# new size of Pawn hash: 32 MB\n";
  if (withBoard) text += startBoardDiagram();
  return text;
}

std::vector<std::string> repliesTo(const std::string& input, const std::string& workingDir) {
  const std::string prompt = "# Your move: ";
  EngineRun run = runEngine(input + "quit\n", {}, workingDir);
  std::vector<std::string> pieces;
  size_t at = run.output.find(prompt);
  while (at != std::string::npos) {
    size_t next = run.output.find(prompt, at + prompt.size());
    if (next == std::string::npos) break;
    pieces.push_back(run.output.substr(at + prompt.size(), next - at - prompt.size()));
    at = next;
  }
  return pieces;
}
