#pragma once
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

// A long-lived system thread that sleeps between pieces of work.
class Thread {
 public:
  Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  // Joins the system thread, if one was started.
  virtual ~Thread();
  virtual void run() = 0;

  std::unique_ptr<std::thread> systemThread;
};

// What a std::thread runs.
void threadEntry(Thread* thread);

// Run states of a worker.
constexpr uint32_t RunIdle = 0;
constexpr uint32_t RunRunning = 1;
constexpr uint32_t RunExit = 2;

// A thread that runs `work` each time the main thread sets it running, and
// goes idle again when the work returns.
class WorkerThread : public Thread {
 public:
  using WorkFunction = void (*)(uint32_t index, void* argument);

  WorkerThread(uint32_t index, WorkFunction work, void* workArgument);
  ~WorkerThread() override;
  void run() override;

  // Neither idle nor told to exit.
  bool isBusy() const { return (runState.load(std::memory_order_acquire) & ~RunExit) != 0; }
  // Main thread: starts the system thread if needed and sets the worker running.
  void start();
  // Waits until the worker is no longer busy.
  void waitUntilIdle();
  // Waits until idle, then tells the worker to leave its loop.
  void exit();
  // The work has ended: back to idle (called on the worker itself).
  void finishWork() { runState.store(RunIdle, std::memory_order_release); }
  // Called by `start` before the worker runs, so that a stop that arrives
  // before the work begins is not lost.
  virtual void prepareWork() {}

  std::mutex mutex;
  std::condition_variable condition;
  WorkFunction work;
  void* workArgument;
  std::atomic<uint32_t> runState{RunIdle};
  uint32_t index;
};
