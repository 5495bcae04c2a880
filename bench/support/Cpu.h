#pragma once

#include <sched.h>

#include <cstdio>
#include <cstdlib>

namespace bench {

// Binds the calling thread, and what it starts from then on, to one CPU of those that it is allowed, for a scope:
// waking a CPU that sleeps would cost more than what is measured.
class OneCpu {
public:
    OneCpu() {
        cpu_set_t one;
        if (sched_getaffinity(0, sizeof mAllowed, &mAllowed) != 0) fail();
        int cpu = 0;
        while (!CPU_ISSET(cpu, &mAllowed)) ++cpu;
        CPU_ZERO(&one);
        CPU_SET(cpu, &one);
        if (sched_setaffinity(0, sizeof one, &one) != 0) fail();
    }
    ~OneCpu() {
        if (sched_setaffinity(0, sizeof mAllowed, &mAllowed) != 0) fail();
    }
    OneCpu(const OneCpu&) = delete;
    OneCpu& operator=(const OneCpu&) = delete;

private:
    [[noreturn]] static void fail() {
        std::perror("can't choose a CPU");
        std::exit(1);
    }

    cpu_set_t mAllowed{};
};

}  // namespace bench
