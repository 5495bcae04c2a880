#pragma once

#include <memory>

namespace device {

// What output on a message loop's thread collects, to be written when the loop has nothing else to do.
class LoopOutput {
public:
    virtual ~LoopOutput() = default;
    // Writes it. Not called with a lock of the loop.
    virtual void flush() = 0;

    bool isWaiting = false;
};

// A message loop and what collects output on its thread meet here, without knowing each other. The loop has one as long
// as it runs, says whether more messages wait, and flushes the output that waits before it sleeps. The loop's thread
// only.
class LoopThread {
public:
    LoopThread();
    ~LoopThread();
    LoopThread(const LoopThread&) = delete;
    LoopThread& operator=(const LoopThread&) = delete;

    // Of the calling thread; null when no loop runs on it.
    [[nodiscard]] static LoopThread* current();
    [[nodiscard]] bool hasOutput() const { return output != nullptr && output->isWaiting; }

    std::unique_ptr<LoopOutput> output;  // made by its first user, who is the only one
    bool hasMore = false;                // messages were waiting when the loop took the one that it runs

private:
    LoopThread* const mOuter;
};

}  // namespace device
