#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace hal {

class OsUtils {
public:
    static constexpr const char* TAG = "OsUtils";

    // Kills the process if the name is on the list. The name is not compared with the process that the pid denotes: the
    // client vouches for the pairing. True when the signal was sent. Thread: any.
    [[nodiscard]] static bool killProcess(int32_t serial, int32_t pid, const std::string& name);

private:
    // Deliberate: only the first name counts. Clients may kill no other process.
    static constexpr std::array<std::string_view, 1> mAllowedProcessList = {"vendor.dpmd"};
};

}  // namespace hal
