#include "tools/ProcessState.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>

namespace subsysctl {

namespace {

namespace fs = std::filesystem;

// "4711 (a name) S ...": the name may hold anything.
ProcessState::Thread readThread(const fs::path& folder) {
    std::ifstream in(folder / "stat");
    const std::string text{std::istreambuf_iterator<char>(in), {}};
    const size_t open = text.find('('), close = text.rfind(") ");
    if (open == std::string::npos || close == std::string::npos || close + 2 >= text.size()) return {};
    return {std::atoi(text.c_str()), text.substr(open + 1, close - open - 1), text[close + 2]};
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

std::optional<ProcessState> processState(int32_t pid) {
    const fs::path folder = "/proc/" + std::to_string(pid);
    const auto main = readThread(folder);
    if (main.id == 0) return std::nullopt;
    ProcessState process{pid, main.state, readTracer(folder), {}};
    std::error_code error;  // a thread may end meanwhile
    for (const auto& task : fs::directory_iterator(folder / "task", error)) {
        if (auto thread = readThread(task.path()); thread.id != 0) process.threads.push_back(std::move(thread));
    }
    return process;
}

}  // namespace subsysctl
