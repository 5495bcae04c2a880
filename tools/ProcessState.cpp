#include "tools/ProcessState.h"

#include <device/Escape.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace subsysctl {

namespace {

namespace fs = std::filesystem;

// Those that are there while it looks: processes come and go.
std::vector<fs::path> entriesOf(const fs::path& folder) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
        entries.push_back(at->path());
    }
    return entries;
}

int32_t readTracer(const fs::path& folder) {
    std::ifstream status(folder / "status");
    for (std::string line; std::getline(status, line);) {
        int32_t tracer = 0;
        if (std::sscanf(line.c_str(), "TracerPid: %d", &tracer) == 1) return tracer;
    }
    return 0;
}

}  // namespace

// "4711 (a name) S ...": the name may hold anything.
std::optional<ProcessState> processState(int32_t pid) {
    const fs::path folder = "/proc/" + std::to_string(pid);
    std::ifstream in(folder / "stat");
    std::string text;
    std::getline(in, text, '\0');  // all of it
    const size_t open = text.find('('), close = text.rfind(") ");
    if (open == std::string::npos || close == std::string::npos || close + 2 >= text.size()) return std::nullopt;
    const char state = text[close + 2];
    if (state == 'Z' || state == 'X') return std::nullopt;
    return ProcessState{pid, device::escaped(text.substr(open + 1, close - open - 1)), state, readTracer(folder)};
}

std::map<int32_t, std::string> environmentsOf(const std::string& process, const std::string& variable) {
    std::map<int32_t, std::string> environments;
    for (const fs::path& folder : entriesOf("/proc")) {
        const auto state = processState(std::atoi(folder.filename().c_str()));
        std::ifstream in(folder / "environ");
        if (!state || state->name != process || !in) continue;
        auto& found = environments[state->pid];
        for (std::string each; std::getline(in, each, '\0');) {
            if (each.starts_with(variable + "=")) found = each;
        }
    }
    return environments;
}

}  // namespace subsysctl
