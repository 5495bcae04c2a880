#pragma once

#include <memory>

namespace binder {

class Outbox;

// Oneway calls of a message loop leave together. The first call to a peer after the loop slept is written at once;
// those behind it wait until the loop has nothing to do, until there are many, or for a millisecond. On other threads
// each is written at once. Thread: any.
//
// True when a call to this peer is to wait: the loop of this thread has written to it since it slept.
[[nodiscard]] bool mayDefer(const std::shared_ptr<Outbox>& outbox);

// A call waits from now on: Session::flushAll() runs within DEFERRAL. False when the system refuses.
[[nodiscard]] bool startDeferral();

}  // namespace binder
