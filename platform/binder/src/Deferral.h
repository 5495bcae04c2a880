#pragma once

#include <memory>

namespace binder {

class Outbox;

// Oneway calls of a message loop leave together. While more messages wait, a call waits until the loop has nothing to
// run, until there are many calls, or for a millisecond. The last message's calls, and those of other threads, are
// written at once. Thread: any.
//
// True when a call to this peer is to wait: the loop of this thread will flush it.
[[nodiscard]] bool mayDefer(const std::shared_ptr<Outbox>& outbox);

// A call waits from now on: Session::flushAll() runs within DEFERRAL. False when the system refuses.
[[nodiscard]] bool startDeferral();

}  // namespace binder
