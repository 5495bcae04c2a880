// Whether the daemon's memory stays flat: a million requests from one client, then a thousand clients that come, are
// answered and go.

#include "bench/support/Shape.h"
#include "bench/support/Stats.h"
#include "bench/support/System.h"

#include <sys/wait.h>

#include <cstdio>
#include <cstdlib>

namespace {

using namespace bench;

constexpr uint32_t WINDOW = 64;

void getSwtpStatus(interface::ISubsys& service, int32_t) {
    service.getSwtpStatus(1);
}

void requests(uint32_t count) {
    SystemShape shape(SystemShape::Counted::RESPONSES, getSwtpStatus);
    measurePipelined(shape, count, WINDOW);
}

// In a process of its own, which ends without saying goodbye.
void client(uint32_t count) {
    const pid_t pid = startProcess([count] { requests(count); });
    int status = 0;
    waitpid(pid, &status, 0);
    if (status != 0) {
        std::fprintf(stderr, "a client failed\n");
        std::exit(1);
    }
}

void report(const char* what, int64_t before, int64_t after) {
    std::printf("  %-40s %8lld KiB before, %8lld KiB after, grown by %lld KiB\n", what, static_cast<long long>(before),
                static_cast<long long>(after), static_cast<long long>(after - before));
    std::fflush(stdout);
}

}  // namespace

int main() {
    const Daemon daemon;
    std::printf("Resident memory of subsysd\n");
    // The first requests and clients fill pools, threads and caches.
    client(50'000);
    for (int i = 0; i < 50; ++i) client(1);
    const int64_t start = residentKib(daemon.pid());
    client(1'000'000);
    const int64_t afterRequests = residentKib(daemon.pid());
    report("a million requests", start, afterRequests);
    for (int i = 0; i < 1000; ++i) client(1);
    report("a thousand clients", afterRequests, residentKib(daemon.pid()));
}
