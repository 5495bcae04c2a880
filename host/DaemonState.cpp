#include "host/DaemonState.h"

#include "host/LogLevel.h"
#include "host/PluginList.h"

#include <device/DevicePath.h>
#include <device/Escape.h>
#if !defined(__ANDROID__)
#include <binder/peer.h>
#include <device/LoopState.h>
#endif

#include <unistd.h>

#include <sstream>

#if !defined(__ANDROID__)
#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string_view>
#endif

namespace {

void describeProcess(std::ostream& out) {
    out << "daemon.pid: " << getpid() << "\ndaemon.device: " << device::path("/")
        << "\ndaemon.log-level: " << logLevelName() << '\n';
    size_t index = 0;
    for (const std::string& fault : pluginListFaults())
        out << "plugin-list.fault." << index++ << ": " << device::escaped(fault) << '\n';
}

#if !defined(__ANDROID__)

// The class whose virtual table this is or, where its name is not exported, the library that has it.
std::string classWith(const void* virtualTable) {
    constexpr std::string_view PREFIX = "vtable for ";
    Dl_info info{};
    if (dladdr(virtualTable, &info) == 0) return "a handler";
    if (info.dli_sname == nullptr) return "a handler of " + std::filesystem::path(info.dli_fname).filename().string();
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(info.dli_sname, nullptr, nullptr, nullptr),
                                                      std::free);
    const std::string text = name ? name.get() : info.dli_sname;
    return text.starts_with(PREFIX) ? text.substr(PREFIX.size()) : text;
}

std::string threadName(int32_t thread) {
    std::string name;
    std::getline(std::ifstream("/proc/self/task/" + std::to_string(thread) + "/comm"), name);
    return name;
}

void describeLoop(const device::LoopState& loop, std::ostream& out) {
    const int32_t thread = loop.thread;
    const void* const handler = loop.handler;
    out << (thread == 0 ? "not started" : threadName(thread) + ", thread " + std::to_string(thread)) << ", "
        << loop.waiting << " waiting, ";
    if (handler == nullptr) {
        out << "idle\n";
    } else {
        out << "runs " << classWith(handler) << " for " << (device::coarseNanos() - loop.since) / 1'000'000 << " ms\n";
    }
}

void describeLoops(std::ostream& out) {
    size_t index = 0;
    for (const device::LoopState& loop : device::loopStates()) {
        if (!loop.isTaken) continue;
        out << "looper." << index++ << ": ";
        describeLoop(loop, out);
    }
}

void describeBinder(std::ostream& out) {
    uint32_t threads = 0, idle = 0, limit = 0;
    ABinderProcess_getThreadUsage(&threads, &idle, &limit);
    out << "binder.threads: " << threads << " of " << limit << ", " << threads - idle << " busy\n";
    const auto describe = [](const ABinderProcess_Peer* peer, void* cookie) {
        *static_cast<std::ostream*>(cookie)
            << "peer." << peer->pid << ": " << peer->waitingCalls << " calls waiting, " << peer->unreadBytes
            << " bytes unread, " << peer->undelivered << " undelivered\n";
    };
    ABinderProcess_forEachPeer(describe, &out);
}

#endif

}  // namespace

std::string describeDaemon() {
    std::ostringstream out;
    describeProcess(out);
#if !defined(__ANDROID__)
    describeLoops(out);
    describeBinder(out);
#endif
    return out.str();
}
