// What a request costs from the client's call to its response callback, across two processes, beside a bare program of
// the same shape and beside sd-bus.

#include "bench/support/Shape.h"
#include "bench/support/Stats.h"
#include "bench/support/System.h"

#include <cstdio>

namespace {

using namespace bench;

constexpr int ROUNDS = 9;
constexpr uint32_t CALLS = 4000;
constexpr uint32_t WINDOW = 64;

struct Figures {
    Latency latency;
    double pipelined;
};

Figures measure(Shape& shape) {
    return {measureLatency(shape, CALLS), measurePipelined(shape, CALLS, WINDOW)};
}

void printFigures(const char* name, const Figures& f) {
    std::printf("  %-34s median %7.1f us   p99 %7.1f us   64 in flight %7.1f us a request\n", name,
                f.latency.medianNanos / 1000, f.latency.p99Nanos / 1000, f.pipelined / 1000);
    std::fflush(stdout);
}

void getSwtpStatus(interface::ISubsys& service, int32_t) {
    service.getSwtpStatus(1);
}

void sendIccCmd(interface::ISubsys& service, int32_t) {
    interface::IccReqInfo info;
    info.reqId = 1;
    service.sendIccCmd(1, info);
}

void compare(const char* where) {
    const auto bare = makeBareShape();
    const auto sdBus = makeSdBusShape();
    Daemon daemon;
    SystemShape swtp(SystemShape::Counted::RESPONSES, getSwtpStatus);
    Ratio median, p99, pipelined, sdMedian, sdP99, sdPipelined, icc;
    std::printf("One request, %s\n", where);
    for (int round = 0; round < ROUNDS; ++round) {
        const Figures floor = measure(*bare);
        const Figures ours = measure(swtp);
        const Figures peer = measure(*sdBus);
        if (round == ROUNDS - 1) {
            printFigures("bare sockets and futex", floor);
            printFigures("getSwtpStatus", ours);
            printFigures("sd-bus, peer to peer", peer);
        }
        median.add(ours.latency.medianNanos, floor.latency.medianNanos);
        p99.add(ours.latency.p99Nanos, floor.latency.p99Nanos);
        pipelined.add(ours.pipelined, floor.pipelined);
        sdMedian.add(ours.latency.medianNanos, peer.latency.medianNanos);
        sdP99.add(ours.latency.p99Nanos, peer.latency.p99Nanos);
        sdPipelined.add(ours.pipelined, peer.pipelined);
    }
    median.print("getSwtpStatus / bare, median", "1.25");
    p99.print("getSwtpStatus / bare, p99", "1.25");
    pipelined.print("getSwtpStatus / bare, 64 in flight", "1.3");
    sdMedian.print("getSwtpStatus / sd-bus, median", "0.7");
    sdP99.print("getSwtpStatus / sd-bus, p99", "0.7");
    sdPipelined.print("getSwtpStatus / sd-bus, 64 in flight", "0.7");

    // Each new client takes the service over from the one before.
    for (int round = 0; round < ROUNDS; ++round) {
        SystemShape reference(SystemShape::Counted::RESPONSES, getSwtpStatus);
        const Latency status = measureLatency(reference, CALLS);
        SystemShape command(SystemShape::Counted::RESPONSES, sendIccCmd);
        icc.add(measureLatency(command, CALLS).medianNanos, status.medianNanos);
    }
    icc.print("sendIccCmd / getSwtpStatus, median", "1.25");
}

}  // namespace

int main() {
    pinToOneCpu();
    compare("both processes on one CPU");
    unpin();
    compare("unpinned (reported only)");
}
