#include "protocol/engine_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>

namespace {

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point deadline) {
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
  return left < 0 ? 0 : int(left);
}

// Stacks of all threads of a running process through gdb, empty if that fails.
std::string threadStacks(int pid) {
  std::string command = "timeout 60 gdb -q -batch -p " + std::to_string(pid) + " -ex 'thread apply all bt 30' 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return "";
  std::string text;
  char buffer[4096];
  for (size_t n; (n = fread(buffer, 1, sizeof buffer, pipe)) > 0;) text.append(buffer, n);
  pclose(pipe);
  return text;
}

}  // namespace

EngineProcess::EngineProcess(const std::string& binary, const std::vector<std::string>& args,
                             const std::string& workingDir, Errors errors) {
  int in[2], out[2], err[2] = {-1, -1};
  if (pipe(in) != 0 || pipe(out) != 0 || (errors == Errors::Apart && pipe(err) != 0)) return;
  signal(SIGPIPE, SIG_IGN);
  pid_t pid = fork();
  if (pid < 0) return;
  if (pid == 0) {
    dup2(in[0], 0);
    dup2(out[1], 1);
    dup2(errors == Errors::Apart ? err[1] : out[1], 2);
    for (int fd : {in[0], in[1], out[0], out[1], err[0], err[1]})
      if (fd >= 0) close(fd);
    if (!workingDir.empty() && chdir(workingDir.c_str()) != 0) _exit(126);
    std::vector<std::string> copies{binary};
    copies.insert(copies.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : copies) argv.push_back(a.data());
    argv.push_back(nullptr);
    execv(binary.c_str(), argv.data());
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  if (err[1] >= 0) close(err[1]);
  pid_ = pid;
  toChild_ = in[1];
  fromChild_ = out[0];
  errorsFromChild_ = err[0];
  fcntl(toChild_, F_SETFL, fcntl(toChild_, F_GETFL) | O_NONBLOCK);
  for (int fd : {toChild_, fromChild_, errorsFromChild_})
    if (fd >= 0) fcntl(fd, F_SETFD, FD_CLOEXEC);
}

EngineProcess::~EngineProcess() {
  if (toChild_ >= 0) close(toChild_);
  if (pid_ > 0) {
    kill(pid_, SIGKILL);
    int status;
    waitpid(pid_, &status, 0);
  }
  for (int fd : {fromChild_, errorsFromChild_})
    if (fd >= 0) close(fd);
}

// Reads what is there on the output pipes, waiting at most `timeoutMs` for the first byte.
void EngineProcess::drain(int timeoutMs) {
  if (fromChild_ < 0 && errorsFromChild_ < 0) {
    if (timeoutMs > 0) usleep(useconds_t(timeoutMs) * 1000);
    return;
  }
  pollfd fds[2] = {{fromChild_, POLLIN, 0}, {errorsFromChild_, POLLIN, 0}};
  if (poll(fds, 2, timeoutMs) <= 0) return;
  std::string* targets[2] = {&outcome_.output, &outcome_.errors};
  int* descriptors[2] = {&fromChild_, &errorsFromChild_};
  for (int i = 0; i < 2; ++i) {
    if (*descriptors[i] < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
    char buffer[65536];
    ssize_t n = read(*descriptors[i], buffer, sizeof buffer);
    if (n > 0) {
      targets[i]->append(buffer, size_t(n));
    } else if (n == 0 || (errno != EINTR && errno != EAGAIN)) {
      close(*descriptors[i]);
      *descriptors[i] = -1;
    }
  }
}

bool EngineProcess::reap(bool block) {
  if (pid_ <= 0) return true;
  int status = 0;
  if (waitpid(pid_, &status, block ? 0 : WNOHANG) != pid_) return false;
  pid_ = -1;
  outcome_.exited = true;
  if (WIFEXITED(status)) outcome_.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome_.signal = WTERMSIG(status);
  return true;
}

bool EngineProcess::send(const std::string& bytes, int stallMs) {
  size_t done = 0;
  auto stallDeadline = Clock::now() + std::chrono::milliseconds(stallMs);
  while (done < bytes.size()) {
    if (toChild_ < 0) return false;
    ssize_t n = write(toChild_, bytes.data() + done, bytes.size() - done);
    if (n > 0) {
      done += size_t(n);
      stallDeadline = Clock::now() + std::chrono::milliseconds(stallMs);
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    if (n < 0 && errno != EAGAIN) {
      // The engine is gone (quit, or a crash).
      if (!outcome_.exited && pid_ > 0 && reap(false)) outcome_.exitedEarly = true;
      return false;
    }
    if (Clock::now() > stallDeadline) return false;
    pollfd fd = {toChild_, POLLOUT, 0};
    poll(&fd, 1, 5);
    drain(0);
  }
  drain(0);
  return true;
}

void EngineProcess::pause(int milliseconds) {
  auto deadline = Clock::now() + std::chrono::milliseconds(milliseconds);
  do drain(millisecondsUntil(deadline));
  while (Clock::now() < deadline);
}

bool EngineProcess::waitFor(const std::string& needle, int timeoutSeconds) {
  auto deadline = Clock::now() + std::chrono::seconds(timeoutSeconds);
  while (outcome_.output.find(needle) == std::string::npos) {
    if (Clock::now() > deadline || fromChild_ < 0) return false;
    drain(50);
  }
  return true;
}

void EngineProcess::closeInput() {
  if (toChild_ < 0) return;
  close(toChild_);
  toChild_ = -1;
}

EngineOutcome EngineProcess::finish(int timeoutMs, bool takeStacks) {
  if (toChild_ >= 0) {
    drain(0);
    if (reap(false)) outcome_.exitedEarly = true;
    closeInput();
  }
  auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
  while (pid_ > 0 || fromChild_ >= 0 || errorsFromChild_ >= 0) {
    drain(pid_ > 0 ? 20 : 100);
    if (pid_ > 0) reap(false);
    if (Clock::now() > deadline) break;
  }
  if (pid_ > 0) {
    outcome_.hung = true;
    if (takeStacks) outcome_.stacks = threadStacks(pid_);
    kill(pid_, SIGKILL);
    reap(true);
    outcome_.exited = false;
  }
  // Whatever the killed engine left in the pipes.
  for (int i = 0; i < 10 && (fromChild_ >= 0 || errorsFromChild_ >= 0); ++i) drain(10);
  return outcome_;
}

EngineOutcome runEngine(const std::string& binary, const std::string& input, const std::vector<std::string>& args,
                        const std::string& workingDir, int timeoutSeconds) {
  EngineProcess engine(binary, args, workingDir);
  engine.send(input, timeoutSeconds * 1000);
  return engine.finish(timeoutSeconds * 1000);
}
