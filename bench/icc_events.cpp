// ICC events from the plugin's thread to the client's indication, across two processes, beside sd-bus signals that take
// the same hops. Nothing may be lost or overtaken: the client checks the events' numbers and stops the run otherwise.

#include "bench/support/Cpu.h"
#include "bench/support/Shape.h"
#include "bench/support/Stats.h"
#include "bench/support/System.h"

#include <cstdio>
#include <cstring>

namespace {

using namespace bench;

constexpr int ROUNDS = 9;
constexpr int SINGLES = 1000;
constexpr int BURSTS = 20;
constexpr int32_t BURST = 1000;

void requestEvents(interface::ISubsys& service, int32_t count) {
    interface::IccReqInfo info;
    info.reqId = ICC_BURST_COMMAND;
    info.data.resize(sizeof count);
    std::memcpy(info.data.data(), &count, sizeof count);
    service.sendIccCmd(1, info);
}

// Nanoseconds for each event, from the time the first of `count` set out to the arrival of the last.
double perEvent(Shape& shape, int times, int32_t count) {
    std::vector<double> samples;
    for (int i = 0; i < times; ++i) {
        shape.arrivals.reset();
        shape.call(count);
        shape.arrivals.await(static_cast<uint32_t>(count));
        samples.push_back(static_cast<double>(shape.arrivals.lastNanos() - shape.arrivals.firstOriginNanos()) / count);
    }
    return median(samples);
}

}  // namespace

int main() {
    const OneCpu pinned;
    // From the plugin's thread over the proxy's thread to the service's looper.
    const auto sdBus = makeSdBusShape({.peers = 1, .payload = 20, .hops = 3});
    Daemon daemon;
    SystemShape icc(SystemShape::Counted::ICC_EVENTS, requestEvents);
    Ratio burst, single, bursts;
    std::printf("ICC events, both processes on one CPU\n");
    for (int round = 0; round < ROUNDS; ++round) {
        const double oursAlone = perEvent(icc, SINGLES, 1);
        const double oursInBurst = perEvent(icc, BURSTS, BURST);
        const double theirsAlone = perEvent(*sdBus, SINGLES, 1);
        const double theirsInBurst = perEvent(*sdBus, BURSTS, BURST);
        burst.add(oursAlone, oursInBurst);
        single.add(oursAlone, theirsAlone);
        bursts.add(oursInBurst, theirsInBurst);
        if (round != ROUNDS - 1) continue;
        std::printf("  %-34s alone %7.1f us   in bursts of 1000 %7.2f us an event\n", "ICC event", oursAlone / 1000,
                    oursInBurst / 1000);
        std::printf("  %-34s alone %7.1f us   in bursts of 1000 %7.2f us an event\n", "sd-bus signal",
                    theirsAlone / 1000, theirsInBurst / 1000);
    }
    burst.print("alone / in a burst", "none");
    single.print("ICC event / sd-bus signal, alone", "none");
    bursts.print("ICC event / sd-bus signal, in bursts", "0.45");
}
