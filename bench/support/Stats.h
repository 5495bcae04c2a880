#pragma once

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace bench {

inline int64_t nowNanos() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

// CPU time of the calling thread: for what no other thread has a part in.
inline int64_t cpuNanos() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return int64_t{time.tv_sec} * 1'000'000'000 + time.tv_nsec;
}

// The q-quantile (0 to 1) of a non-empty set of figures.
inline double quantile(std::vector<double> values, double q) {
    const auto at = values.begin() + static_cast<ptrdiff_t>(q * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

inline double median(const std::vector<double>& values) {
    return quantile(values, 0.5);
}

// Ratios of figures that were taken side by side, one pair a round: what counts is the median of the rounds' ratios.
class Ratio {
public:
    void add(double ours, double theirs) { mRatios.push_back(ours / theirs); }
    void print(const std::string& what, const std::string& goal) const {
        std::printf("  %-58s %6.2fx   (rounds %.2f..%.2f, goal %s)\n", what.c_str(), median(mRatios),
                    quantile(mRatios, 0), quantile(mRatios, 1), goal.c_str());
        std::fflush(stdout);
    }

private:
    std::vector<double> mRatios;
};

}  // namespace bench
