// What a request costs from the client's call to its response callback, across two processes, beside a bare program of
// the same shape and beside sd-bus.

#include "bench/support/Cpu.h"
#include "bench/support/Shape.h"
#include "bench/support/Stats.h"
#include "bench/support/System.h"

#include <cstdio>

namespace {

using namespace bench;

constexpr int ROUNDS = 25;
constexpr uint32_t CALLS = 1000;
constexpr uint32_t WINDOW = 64;

void printFigures(const char* name, const Latency& latency) {
    std::printf("  %-34s median %7.1f us   p95 %7.1f us\n", name, latency.medianNanos / 1000, latency.p95Nanos / 1000);
}

// The bench plugin answers at once, with 256 bytes.
void sendIccCmd(interface::ISubsys& service, int32_t) {
    interface::IccReqInfo info;
    info.reqId = 1;
    service.sendIccCmd(1, info);
}

void compareRequest() {
    const auto bare = makeBareShape();
    const auto polling = makeBareShape({.polls = true});
    const auto sdBus = makeSdBusShape();
    const Daemon daemon;
    SystemShape ours(SystemShape::Counted::RESPONSES, getSwtpStatus);
    Ratio median, p95, pipelined, pollingMedian, sdMedian, sdP95, sdPipelined;
    for (int round = 1; round <= ROUNDS; ++round) {
        const auto latency = measureLatency({{ours}, {*bare}, {*sdBus}, {*polling}}, CALLS);
        const double inFlight = measurePipelined(ours, CALLS, WINDOW);
        median.add(latency[0].medianNanos, latency[1].medianNanos);
        p95.add(latency[0].p95Nanos, latency[1].p95Nanos);
        pipelined.add(inFlight, measurePipelined(*bare, CALLS, WINDOW));
        pollingMedian.add(latency[0].medianNanos, latency[3].medianNanos);
        sdMedian.add(latency[0].medianNanos, latency[2].medianNanos);
        sdP95.add(latency[0].p95Nanos, latency[2].p95Nanos);
        sdPipelined.add(inFlight, measurePipelined(*sdBus, CALLS, WINDOW));
        if (round != ROUNDS) continue;
        printFigures("getSwtpStatus", latency[0]);
        printFigures("bare sockets and futex", latency[1]);
        printFigures("sd-bus, peer to peer", latency[2]);
        printFigures("bare, waiting with epoll", latency[3]);
    }
    median.print("getSwtpStatus / bare, median", "1.10");
    p95.print("getSwtpStatus / bare, p95", "1.15");
    pipelined.print("getSwtpStatus / bare, 64 in flight", "1.12");
    pollingMedian.print("getSwtpStatus / bare with epoll, median", "none");
    sdMedian.print("getSwtpStatus / sd-bus, median", "none");
    sdP95.print("getSwtpStatus / sd-bus, p95", "none");
    sdPipelined.print("getSwtpStatus / sd-bus, 64 in flight", "none");
}

void compareTwoHops() {
    const auto bare = makeBareShape({.hops = 2, .payload = 256});
    const Daemon daemon;
    SystemShape ours(SystemShape::Counted::RESPONSES, sendIccCmd);
    Ratio median;
    for (int round = 1; round <= ROUNDS; ++round) {
        const auto latency = measureLatency({{ours}, {*bare}}, CALLS);
        median.add(latency[0].medianNanos, latency[1].medianNanos);
        if (round != ROUNDS) continue;
        printFigures("sendIccCmd", latency[0]);
        printFigures("bare, two hops, 256 bytes back", latency[1]);
    }
    median.print("sendIccCmd / bare, two hops, 256 bytes back, median", "1.2");
}

// Each daemon with its client in a process of its own, which finds no connections of the one before.
void compare() {
    inProcess(compareRequest);
    inProcess(compareTwoHops);
}

}  // namespace

int main() {
    {
        const OneCpu pinned;
        std::printf("One request, both processes on one CPU\n");
        compare();
    }
    std::printf("One request, on any CPU (no goals: reported only)\n");
    compare();
}
