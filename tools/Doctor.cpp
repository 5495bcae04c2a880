#include "tools/Doctor.h"

#include "tools/Diagnosis.h"
#include "tools/Dump.h"
#include "tools/ExitCode.h"
#include "tools/Json.h"
#include "tools/Request.h"
#include "tools/TraceVerbs.h"

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <device/RuntimeFolder.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace subsysctl {

namespace {

// A daemon that is well answers in a few milliseconds.
constexpr std::chrono::seconds PATIENCE{3};
constexpr const char* FOLDER = "SUBSYS_BINDER_DIR";

std::optional<DumpLines> askForDump(const std::string& service) {
    const ndk::SpAIBinder binder(AServiceManager_checkService(service.c_str()));
    std::string text;
    if (binder.get() == nullptr || dumpOf(binder.get(), {}, text) != STATUS_OK) return std::nullopt;
    return linesOf(text);
}

// A daemon that hangs holds the thread that asks it, which ends with this process.
std::optional<DumpLines> dumpInTime(const std::string& service) {
    std::promise<std::optional<DumpLines>> promise;
    auto answer = promise.get_future();
    std::thread([service, promise = std::move(promise)]() mutable { promise.set_value(askForDump(service)); }).detach();
    return answer.wait_for(PATIENCE) == std::future_status::ready ? answer.get() : std::nullopt;
}

// Where the daemon said which one it is, its own and no other's.
void takeTrace(Evidence& evidence, const std::vector<device::Trace>& traces) {
    const int32_t pid = evidence.dump ? std::atoi((*evidence.dump)["daemon.pid"].c_str()) : 0;
    if (pid == 0) return;
    evidence.daemon = processState(pid);
    const auto own = std::find_if(traces.begin(), traces.end(), [pid](const auto& each) { return each.pid == pid; });
    evidence.trace = own == traces.end() ? std::nullopt : std::optional(*own);
}

void takePeers(Evidence& evidence) {
    constexpr std::string_view PREFIX = "peer.";
    if (!evidence.dump) return;
    for (const auto& [key, value] : *evidence.dump) {
        if (!key.starts_with(PREFIX)) continue;
        const int32_t pid = std::atoi(key.c_str() + PREFIX.size());
        if (auto peer = processState(pid)) evidence.peers.emplace(pid, std::move(*peer));
    }
}

Evidence gather(std::optional<int32_t> serial, Output& output) {
    Evidence evidence;
    evidence.serial = serial;
    evidence.service = serviceName();
    evidence.folder = device::runtimeFolder();
    if (const char* folder = std::getenv(FOLDER)) evidence.environment = std::string(FOLDER) + "=" + folder;
    evidence.isServed = AServiceManager_isDeclared(evidence.service.c_str());
    const auto traces = daemonTraces("doctor", output);
    if (!traces.empty()) evidence.trace = traces.front();
    if (evidence.trace && evidence.trace->isAlive) evidence.daemon = processState(evidence.trace->pid);
    const bool isStopped = evidence.daemon && evidence.daemon->isStopped();
    if (evidence.isServed && !isStopped) evidence.dump = dumpInTime(evidence.service);
    if (!evidence.isServed) evidence.otherDaemons = environmentsOf("subsysd", FOLDER);
    takeTrace(evidence, traces);
    takePeers(evidence);
    if (evidence.trace) evidence.now = nowOf(*evidence.trace);
    return evidence;
}

bool isFault(const Finding& finding) {
    return finding.level == Finding::Level::FAULT;
}

void print(const Finding& finding, bool json, std::ostream& out) {
    const char* level = isFault(finding) ? "fault" : "note";
    if (json) {
        out << dump(Json{
                   {"finding", finding.cause}, {"level", level}, {"text", finding.text}, {"advice", finding.advice}})
            << std::endl;
    } else {
        out << level << ": " << finding.text << "; " << finding.advice << std::endl;
    }
}

void printWell(const Evidence& evidence, bool json, std::ostream& out) {
    const std::string text = "subsysd, pid " + std::to_string(evidence.daemon ? evidence.daemon->pid : 0) +
                             ", serves " + evidence.service + " in " + evidence.folder;
    out << (json ? dump(Json{{"finding", "none"}, {"level", "ok"}, {"text", text}}) : "nothing is wrong: " + text)
        << std::endl;
}

}  // namespace

int doctor(std::optional<int32_t> serial, Output& output) {
    const Evidence evidence = gather(serial, output);
    const bool json = output.style().json;
    const auto findings = diagnose(evidence);
    for (const Finding& finding : findings) print(finding, json, output.stream());
    if (std::any_of(findings.begin(), findings.end(), isFault)) return ANSWERED_WITH_ERROR;
    printWell(evidence, json, output.stream());
    return OK;
}

}  // namespace subsysctl
