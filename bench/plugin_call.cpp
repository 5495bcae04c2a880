// What a call through the symbol cache costs: Plugin::call against dlsym and a direct call, a held symbol against a
// function pointer. Each ratio is the median of rounds that run both sides in turn.

#include "plugin/Plugin.h"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using AclFunction = uint8_t(uint8_t, uint16_t, uint8_t, uint8_t);

constexpr const char* LIBRARY = BENCH_PLUGIN;
constexpr int ROUNDS = 41;

volatile uint8_t sSink = 0;

template <typename Call>
double nanosPerCall(int calls, Call call) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i) sSink = call(static_cast<uint8_t>(i));
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() / calls;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + ROUNDS / 2, values.end());
    return values[ROUNDS / 2];
}

template <typename Measured, typename Floor>
void compare(const std::string& what, int calls, double goal, Measured measured, Floor floor) {
    std::vector<double> ratios;
    std::vector<double> times;
    for (int round = 0; round < ROUNDS; ++round) {
        const double floorTime = nanosPerCall(calls, floor);
        times.push_back(nanosPerCall(calls, measured));
        ratios.push_back(times.back() / floorTime);
    }
    std::printf("%-64s %8.1f ns  %.2fx  (goal at most %.1fx)\n", what.c_str(), median(times), median(ratios), goal);
}

void compareCall(hal::Plugin& plugin, void* handle, const char* name) {
    compare(
        std::string("Plugin::call / dlsym and direct call, ") + name, 20'000, 1.3,
        [&](uint8_t i) {
            return plugin.call<uint8_t, uint8_t, uint16_t, uint8_t, uint8_t>(name, i, uint16_t{2}, uint8_t{3},
                                                                             uint8_t{4});
        },
        [&](uint8_t i) { return reinterpret_cast<AclFunction*>(dlsym(handle, name))(i, 2, 3, 4); });
}

}  // namespace

int main() {
    unsetenv("SUBSYS_DEVICE_ROOT");
    hal::Plugin plugin({.name = "bench", .path = LIBRARY});
    if (!plugin.load()) return EXIT_FAILURE;
    void* const handle = dlopen(LIBRARY, RTLD_NOW | RTLD_NOLOAD);

    // The second name is too long for the string that carries it to stay off the heap.
    compareCall(plugin, handle, "iccSetAclState");
    compareCall(plugin, handle, "iccSetCoexAntennaState");

    const auto held = plugin.getSym<AclFunction>("iccSetAclState");
    AclFunction* const volatile pointer = held->function;
    compare(
        "held getSym result / cached function pointer", 200'000, 1.2,
        [&](uint8_t i) { return held->function(i, 2, 3, 4); }, [&](uint8_t i) { return pointer(i, 2, 3, 4); });
}
