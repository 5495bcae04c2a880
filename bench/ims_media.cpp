// RTP payloads through the IMS ORTC path, across processes: a payload out and echoed back to two clients, beside the
// plainest request; and payloads in one direction to two clients, beside sd-bus signals with the same payload.

#include "bench/support/Cpu.h"
#include "bench/support/Shape.h"
#include "bench/support/Stats.h"
#include "bench/support/System.h"

#include <unistd.h>

#include <cstdio>
#include <memory>

namespace {

using namespace bench;

constexpr int ROUNDS = 9;
constexpr uint32_t CALLS = 3000;
constexpr int32_t PAYLOAD = 255;
constexpr int32_t BURST = 100;
constexpr int BURSTS = 100;

void sendRtp(interface::ISubsys& service, int32_t) {
    interface::ImsRtpDataInfo info;
    info.data.assign(PAYLOAD, 0x5a);
    info.dataLen = PAYLOAD;
    service.sendImsRtpData(1, info);
}

// The bench component sends as many payloads as the call's value32 says.
void requestRtp(interface::ISubsys& service, int32_t count) {
    interface::CallInfo info;
    info.value32 = count;
    service.setCallInfo(1, info);
}

// Two clients, the second in a process of its own; the arrivals of both count.
class TwoClients final : public Shape {
public:
    explicit TwoClients(const SystemShape::Request& request)
        : mSecond(startProcess([&] {
              const SystemShape second(SystemShape::Counted::RTP_DATA, request, &arrivals);
              arrivals.note();
              pause();
          })) {
        arrivals.await(1);
        mFirst = std::make_unique<SystemShape>(SystemShape::Counted::RTP_DATA, request, &arrivals);
    }

    ~TwoClients() override { stopProcess(mSecond); }

    void call(int32_t count) override { mFirst->call(count); }

private:
    const pid_t mSecond;
    std::unique_ptr<SystemShape> mFirst;
};

// Nanoseconds for each payload that reached both peers; on one CPU that is the CPU time of everyone involved.
double perPayload(Shape& shape) {
    shape.arrivals.reset();
    const int64_t start = nowNanos();
    for (uint32_t i = 1; i <= BURSTS; ++i) {
        shape.call(BURST);
        shape.arrivals.await(i * 2 * BURST);
    }
    return static_cast<double>(nowNanos() - start) / (BURSTS * BURST);
}

void compareEcho() {
    Daemon daemon;
    TwoClients echo(sendRtp);
    SystemShape status(SystemShape::Counted::RESPONSES, getSwtpStatus);
    Ratio ratio;
    for (int round = 0; round < ROUNDS; ++round) {
        const auto latency = measureLatency({{echo, 2}, {status}}, CALLS);
        ratio.add(latency[0].medianNanos, latency[1].medianNanos);
        if (round == ROUNDS - 1) {
            std::printf("  getSwtpStatus %.1f us, 255 bytes echoed to two clients %.1f us\n",
                        latency[1].medianNanos / 1000, latency[0].medianNanos / 1000);
        }
    }
    ratio.print("sendImsRtpData echoed to two clients / getSwtpStatus", "none");
}

void compareOneDirection() {
    const auto sdBus = makeSdBusShape({.peers = 2, .payload = PAYLOAD, .hops = 1});
    Daemon daemon;
    TwoClients ours(requestRtp);
    Ratio ratio;
    for (int round = 0; round < ROUNDS; ++round) {
        const double theirs = perPayload(*sdBus);
        const double mine = perPayload(ours);
        ratio.add(theirs, mine);
        if (round == ROUNDS - 1) {
            std::printf("  to two peers, for a second of CPU: sd-bus %.0f payloads, IMS ORTC %.0f payloads\n",
                        1e9 / theirs, 1e9 / mine);
        }
    }
    ratio.print("payloads for a second of CPU, IMS ORTC / sd-bus", "at least 4");
}

}  // namespace

int main() {
    const OneCpu pinned;
    std::printf("RTP payloads of 255 bytes, all processes on one CPU\n");
    // Each in a process of its own, since the second client is forked and must find no binder threads yet.
    inProcess(compareEcho);
    inProcess(compareOneDirection);
}
