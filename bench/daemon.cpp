// What the daemon costs beside its requests: whether its memory stays flat, whether it sleeps while nothing happens,
// and what a thousand connected clients add to the request of another one.

#include "bench/support/Cpu.h"
#include "bench/support/Shape.h"
#include "bench/support/Stats.h"
#include "bench/support/System.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

namespace {

using namespace bench;

constexpr uint32_t WINDOW = 64;
constexpr uint32_t CLIENTS = 1000;
constexpr std::chrono::minutes IDLE_TIME{1};

// The sum of what the lines with this name say in a file of /proc.
int64_t figureIn(const std::filesystem::path& path, const std::string& name) {
    int64_t sum = 0;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(name)) sum += std::atoll(line.c_str() + name.size());
    }
    return sum;
}

int64_t residentKib(const Daemon& daemon) {
    return figureIn("/proc/" + std::to_string(daemon.pid()) + "/status", "VmRSS:");
}

// How often a thread of the daemon has gone to sleep: each system call of a process that sleeps begins with a wake-up.
int64_t sleeps(const Daemon& daemon) {
    int64_t sum = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(daemon.pid()) + "/task")) {
        sum += figureIn(task.path() / "status", "voluntary_ctxt_switches:");
    }
    return sum;
}

// In a process of its own, which ends without saying goodbye.
void client(uint32_t count) {
    inProcess([count] {
        SystemShape shape(SystemShape::Counted::RESPONSES, getSwtpStatus);
        measurePipelined(shape, count, WINDOW);
    });
}

void report(const char* what, int64_t before, int64_t after) {
    std::printf("  %-40s %8lld KiB before, %8lld KiB after, grown by %lld KiB\n", what, static_cast<long long>(before),
                static_cast<long long>(after), static_cast<long long>(after - before));
    std::fflush(stdout);
}

void reportMemory() {
    const Daemon daemon;
    std::printf("Resident memory of subsysd\n");
    // The first requests and clients fill pools, threads and caches.
    client(50'000);
    for (int i = 0; i < 50; ++i) client(1);
    const int64_t start = residentKib(daemon);
    client(1'000'000);
    const int64_t afterRequests = residentKib(daemon);
    report("a million requests", start, afterRequests);
    for (uint32_t i = 0; i < CLIENTS; ++i) client(1);
    report("a thousand clients", afterRequests, residentKib(daemon));
}

void reportIdle() {
    const Daemon daemon;
    SystemShape shape(SystemShape::Counted::RESPONSES, getSwtpStatus);
    measureLatency({{shape}}, 1000);
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const int64_t before = sleeps(daemon);
    std::this_thread::sleep_for(IDLE_TIME);
    std::printf("Idle for a minute, with a client: %lld wake-ups (goal 0)\n",
                static_cast<long long>(sleeps(daemon) - before));
}

// Clients that only hold the service. They are forked by a process without binder threads.
class Crowd {
public:
    Crowd() : mParent(startProcess([this] { gather(); })) {}
    ~Crowd() { stopProcess(mParent); }
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    void come() {
        mCalled.note();
        mAllCame.await(1);
    }

private:
    void gather() {
        mCalled.await(1);
        for (uint32_t i = 1; i <= CLIENTS; ++i) {
            startProcess([this] {
                const auto service = connect();
                mCame.note();
                pause();
            });
            mCame.await(i);
        }
        mAllCame.note();
        pause();
    }

    Arrivals& mCalled = newSharedArrivals();
    Arrivals& mCame = newSharedArrivals();
    Arrivals& mAllCame = newSharedArrivals();
    const pid_t mParent;
};

// Each beside the bare program, since the two are not measured at the same time.
double besideBare(Shape& ours, Shape& bare) {
    std::vector<double> ratios;
    for (int round = 0; round < 25; ++round) {
        const auto latency = measureLatency({{ours}, {bare}}, 1000);
        ratios.push_back(latency[0].medianNanos / latency[1].medianNanos);
    }
    return median(ratios);
}

void compareCrowd() {
    const OneCpu pinned;
    const Daemon daemon;
    Crowd crowd;
    const auto bare = makeBareShape();
    SystemShape shape(SystemShape::Counted::RESPONSES, getSwtpStatus);
    const double alone = besideBare(shape, *bare);
    crowd.come();
    const double crowded = besideBare(shape, *bare);
    std::printf("getSwtpStatus with 1,000 more clients / alone: %.2fx (goal 1.15)\n", crowded / alone);
}

}  // namespace

int main() {
    inProcess(reportMemory);
    inProcess(compareCrowd);
    inProcess(reportIdle);
}
