#include "protocol/engine_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;

Clock::time_point after(int milliseconds) { return Clock::now() + std::chrono::milliseconds(milliseconds); }

int millisecondsUntil(Clock::time_point deadline) {
  return int(std::max<long>(0, std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count()));
}

}  // namespace

EngineProcess::EngineProcess(const std::string& binary, const std::vector<std::string>& args, const std::string& workingDir,
                             bool errorsApart) {
  int in[2], out[2], err[2] = {-1, -1};
  if (pipe(in) != 0 || pipe(out) != 0 || (errorsApart && pipe(err) != 0)) return;
  signal(SIGPIPE, SIG_IGN);
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(in[0], 0);
    dup2(out[1], 1);
    dup2(errorsApart ? err[1] : out[1], 2);
    for (int fd : {in[0], in[1], out[0], out[1], err[0], err[1]})
      if (fd > 2) close(fd);
    if (!workingDir.empty() && chdir(workingDir.c_str()) != 0) _exit(126);
    std::vector<std::string> copies{binary};
    copies.insert(copies.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& a : copies) argv.push_back(a.data());
    argv.push_back(nullptr);
    execv(binary.c_str(), argv.data());
    _exit(127);
  }
  for (int fd : {in[0], out[1], err[1]})
    if (fd >= 0) close(fd);
  pid_ = pid;
  in_ = in[1], out_ = out[0], err_ = err[0];
  fcntl(in_, F_SETFL, fcntl(in_, F_GETFL) | O_NONBLOCK);
  for (int fd : {in_, out_, err_})
    if (fd >= 0) fcntl(fd, F_SETFD, FD_CLOEXEC);  // no other child inherits them
}

EngineProcess::~EngineProcess() {
  if (pid_ > 0) kill(pid_, SIGKILL), reap(true);
  for (int fd : {in_, out_, err_})
    if (fd >= 0) close(fd);
}

// Reads what there is on the output pipes, waiting at most `timeoutMs` for the first byte.
void EngineProcess::drain(int timeoutMs) {
  pollfd fds[2] = {{out_, POLLIN, 0}, {err_, POLLIN, 0}};
  if (poll(fds, 2, timeoutMs) <= 0) return;
  std::string* texts[2] = {&outcome_.output, &outcome_.errors};
  int* descriptors[2] = {&out_, &err_};
  for (int i = 0; i < 2; ++i) {
    if (*descriptors[i] < 0 || !fds[i].revents) continue;
    char buffer[65536];
    const ssize_t n = read(*descriptors[i], buffer, sizeof buffer);
    if (n > 0) texts[i]->append(buffer, size_t(n));
    else if (n == 0 || (errno != EINTR && errno != EAGAIN)) close(*descriptors[i]), *descriptors[i] = -1;
  }
}

bool EngineProcess::reap(bool block) {
  int status = 0;
  if (pid_ <= 0 || waitpid(pid_, &status, block ? 0 : WNOHANG) != pid_) return pid_ <= 0;
  pid_ = -1;
  if (WIFEXITED(status)) outcome_.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) outcome_.signal = WTERMSIG(status);
  return true;
}

bool EngineProcess::send(const std::string& bytes, int stallMs) {
  auto stall = after(stallMs);
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t n = in_ < 0 ? -1 : write(in_, bytes.data() + done, bytes.size() - done);
    if (n > 0) done += size_t(n), stall = after(stallMs);
    else if (in_ < 0 || (errno != EINTR && errno != EAGAIN)) return outcome_.exitedEarly = reap(false), false;  // gone
    else if (Clock::now() > stall) return false;
    else drain(5);
  }
  drain(0);
  return true;
}

void EngineProcess::pause(int milliseconds) {
  for (auto deadline = after(milliseconds); Clock::now() < deadline;) drain(millisecondsUntil(deadline));
}

bool EngineProcess::waitFor(const std::string& needle, int timeoutSeconds) {
  for (auto deadline = after(timeoutSeconds * 1000); outcome_.output.find(needle) == std::string::npos; drain(50))
    if (Clock::now() > deadline || out_ < 0) return false;
  return true;
}

void EngineProcess::closeInput() {
  if (in_ >= 0) close(in_), in_ = -1;
}

EngineOutcome EngineProcess::finish(int timeoutMs) {
  if (in_ >= 0) outcome_.exitedEarly = reap(false), closeInput();
  for (auto deadline = after(timeoutMs); (pid_ > 0 && !reap(false)) || out_ >= 0 || err_ >= 0; drain(20))
    if (Clock::now() > deadline) break;
  if (pid_ > 0) {
    outcome_.hung = true;
    kill(pid_, SIGKILL), reap(true);
    for (int i = 0; i < 10 && (out_ >= 0 || err_ >= 0); ++i) drain(10);  // what the killed engine left
  }
  return outcome_;
}

EngineOutcome runEngine(const std::string& binary, const std::string& input, const std::vector<std::string>& args,
                        const std::string& workingDir, int timeoutSeconds) {
  EngineProcess engine(binary, args, workingDir);
  engine.send(input, timeoutSeconds * 1000);
  return engine.finish(timeoutSeconds * 1000);
}
