#pragma once

#include <cstdint>
#include <optional>
#include <ostream>

namespace subsysctl {

struct DoctorOptions {
    std::optional<int32_t> serial;  // why this request is not answered; without it, what is wrong at all
    bool json = false;
};

// Says what is wrong with the service, a finding a line, the worst first. Needs no service: the daemon may be stopped,
// hung or gone. Takes some three seconds at most. Returns 0 only when nothing is wrong, else 1.
[[nodiscard]] int doctor(const DoctorOptions& options, std::ostream& out, std::ostream& err);

}  // namespace subsysctl
