#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace bench {

// Counts what comes back to the client. Some threads note arrivals, another waits for them.
class Arrivals {
public:
    // `originNanos` says when the arriving thing set out, where it tells.
    void note(int64_t originNanos = 0);
    void await(uint32_t count);
    [[nodiscard]] int64_t lastNanos() const { return mLastNanos.load(std::memory_order_relaxed); }
    // The origin of the first arrival since reset.
    [[nodiscard]] int64_t firstOriginNanos() const { return mFirstOriginNanos.load(std::memory_order_relaxed); }
    void reset();

private:
    std::atomic<uint32_t> mCount{0};
    std::atomic<uint32_t> mWanted{0};
    std::atomic<int64_t> mLastNanos{0};
    std::atomic<int64_t> mFirstOriginNanos{0};
};

Arrivals& newSharedArrivals();

// One way for a request to travel: call() returns when the request was taken; what it asked for is noted later, from
// another thread.
class Shape {
public:
    virtual ~Shape() = default;
    // Asks for `count` messages back, or one answer.
    virtual void call(int32_t count) = 0;

    // In shared memory, so that a client in a forked process can note what it gets. Lives as long as the process.
    Arrivals& arrivals = newSharedArrivals();
};

struct BareOptions {
    size_t hops = 1;     // threads of the server between a request and its message back
    size_t payload = 0;  // bytes of the message back that a request does not have
    bool polls = false;  // waits on an epoll before it reads, as a process with many connections has to
};
// The floor: request and reply on one blocking stream socket, futex hops to other threads of the server, one message
// back on a second socket to a thread that waits for it. The server is a process of its own.
std::unique_ptr<Shape> makeBareShape(BareOptions options = {});

struct SdBusOptions {
    size_t peers = 1;    // connections that each message goes to
    size_t payload = 0;  // bytes that each request and each message carries
    size_t hops = 1;     // threads of the server between a request and what it asked for
};
// The same shape with sd-bus, peer to peer.
std::unique_ptr<Shape> makeSdBusShape(SdBusOptions options = {});

struct Latency {
    double medianNanos;
    double p95Nanos;
};
struct Subject {
    Shape& shape;
    uint32_t answers = 1;  // arrivals for each call
};

// From each call to its last arrival. The subjects take short turns, so that what slows the machine for a while slows
// all of them.
std::vector<Latency> measureLatency(const std::vector<Subject>& subjects, uint32_t calls);
// Nanoseconds for each call with at most `window` calls unanswered.
double measurePipelined(Shape& shape, uint32_t calls, uint32_t window);

// Runs the function in a process that ends with this one at the latest.
pid_t startProcess(const std::function<void()>& function);
void stopProcess(pid_t pid);
// Runs it in a process of its own to the end, so that the caller keeps no thread and no connection of it. A function
// that fails ends this process, too.
void inProcess(const std::function<void()>& function);

}  // namespace bench
