// What a mark of the recorder costs, beside the clock that it reads. Each figure is the median of rounds that run all
// sides in turn.

#include "bench/support/Stats.h"

#define ATRACE_TAG ATRACE_TAG_HAL
#include <cutils/trace.h>
#include <device/Recorder.h>
#include <time.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace bench;

constexpr int ROUNDS = 41;
constexpr int MARKS = 20'000;  // in a round
constexpr double GOAL_NANOS = 40;

struct Subject {
    const char* name;
    int marks;                      // of one call
    std::function<void(int)> call;  // with 0, 1, 2...
    std::vector<double> nanos = {};
};

void turnOver(const char* name, int i, int open) {
    ATRACE_ASYNC_BEGIN(name, i);
    ATRACE_ASYNC_END(name, i - open);
}

// The names are as long as those of requests and plugin calls are.
std::vector<Subject> subjects() {
    return {
        {"clock_gettime", 1,
         [](int) {
             timespec time{};
             clock_gettime(CLOCK_MONOTONIC, &time);
         }},
        {"instant", 1, [](int) { ATRACE_INSTANT("client registered"); }},
        {"counter", 1, [](int i) { ATRACE_INT("waiting requests", i); }},
        {"begin and end of a section", 2,
         [](int) {
             ATRACE_BEGIN("plugin iccSetCoexAntennaState");
             ATRACE_END();
         }},
        {"begin and end of an asynchronous section", 2,
         [](int i) {
             ATRACE_ASYNC_BEGIN("setIccTuningState #123456", i);
             ATRACE_ASYNC_END("setIccTuningState #123456", i);
         }},
        {"the same, while 1,000 others are open", 2, [](int i) { turnOver("setIccWifiAntState #123456", i, 1'000); }},
    };
}

void measure(Subject& subject, int round) {
    const int64_t start = cpuNanos();
    const int calls = MARKS / subject.marks;
    for (int i = 0; i < calls; ++i) subject.call(round * calls + i);
    subject.nanos.push_back(static_cast<double>(cpuNanos() - start) / MARKS);
}

void report(std::vector<Subject> all) {
    for (int round = 0; round < ROUNDS; ++round) {
        for (Subject& subject : all) measure(subject, round);
    }
    for (const Subject& subject : all) std::printf("  %-58s %6.1f ns\n", subject.name, median(subject.nanos));
}

}  // namespace

int main() {
    std::string folder = std::filesystem::temp_directory_path() / "bench-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) return EXIT_FAILURE;
    setenv("SUBSYS_BINDER_DIR", folder.c_str(), 1);
    std::printf("one mark, nothing records\n");
    report(subjects());
    const bool records = device::startRecorder("bench");
    std::filesystem::remove_all(folder);
    if (!records) return EXIT_FAILURE;
    std::printf("one mark, recorded (goal at most %.0f ns)\n", GOAL_NANOS);
    report(subjects());
    std::printf("one mark, while 65,536 sections are open, of which most have no place (no goal)\n");
    report({{"begin and end of an asynchronous section", 2,
             [](int i) { turnOver("setIccSatelliteAntState #1", i, 65'536); }}});
}
