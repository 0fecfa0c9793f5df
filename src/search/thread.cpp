#include "search/thread.h"

Thread::~Thread() {
  if (systemThread && systemThread->joinable()) systemThread->join();
}

void threadEntry(Thread* thread) { thread->run(); }

WorkerThread::WorkerThread(uint32_t i, WorkFunction w, void* argument) : work(w), workArgument(argument), index(i) {}

WorkerThread::~WorkerThread() {
  std::lock_guard<std::mutex> lock(mutex);
  condition.notify_all();
}

void WorkerThread::run() {
  for (;;) {
    {
      std::unique_lock<std::mutex> lock(mutex);
      while (runState.load(std::memory_order_acquire) == RunIdle) {
        // Tells a waiter that this thread has gone idle.
        condition.notify_all();
        condition.wait(lock);
      }
    }
    if (runState.load(std::memory_order_acquire) == RunExit) return;
    if (work) work(index, workArgument);
    if (!work) finishWork();
    if (runState.load(std::memory_order_acquire) == RunExit) return;
  }
}

void WorkerThread::start() {
  prepareWork();
  if (!systemThread) systemThread = std::make_unique<std::thread>(threadEntry, this);
  std::lock_guard<std::mutex> lock(mutex);
  runState.store(RunRunning, std::memory_order_release);
  condition.notify_all();
}

void WorkerThread::waitUntilIdle() {
  std::unique_lock<std::mutex> lock(mutex);
  while (isBusy()) {
    // A worker that went idle without passing its loop yet still gets here:
    // wake it so that it notifies.
    condition.notify_all();
    condition.wait_for(lock, std::chrono::milliseconds(50));
  }
}

void WorkerThread::exit() {
  waitUntilIdle();
  std::lock_guard<std::mutex> lock(mutex);
  runState.store(RunExit, std::memory_order_release);
  condition.notify_all();
}
