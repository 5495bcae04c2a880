#include "tools/Diagnosis.h"

#include "tools/Requests.h"
#include "tools/TraceCalls.h"
#include "tools/TraceRequests.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

namespace subsysctl {

namespace {

using device::MarkKind;
using device::TraceMark;
using Level = Finding::Level;

constexpr int64_t SECOND = 1'000'000'000;
// What takes longer than a call should is worth a line.
constexpr int64_t SLOW = SECOND;
// What a command to the plugin may take.
constexpr int64_t PLUGIN_TIME = 4 * SECOND;
// How long ago an answer may have been lost to be told without its serial.
constexpr int64_t LATELY = 60 * SECOND;

// Marks of the service.
constexpr std::string_view PLUGIN_CALL = "plugin ";
constexpr std::string_view CLIENT_SET = "RF client set";
constexpr std::string_view CLIENT_DIED = "RF client died";

// Of the components.
constexpr int TYPE_VS = 0;
constexpr int TYPE_IMS_ORTC = 21;

template <typename Number>
std::string number(Number value) {
    return std::to_string(value);
}

// What each request needs to be answered.
const std::map<std::string, Needs>& needsOfRequests() {
    static const auto needs = [] {
        std::map<std::string, Needs> all;
        for (const RequestVerb& verb : requestVerbs()) {
            const Request request = verb.take([](const char*) { return false; });
            all[request.method] = request.needs;
        }
        return all;
    }();
    return needs;
}

bool needsRfClient(const TracedRequest& request) {
    const auto found = needsOfRequests().find(request.operation);
    return found != needsOfRequests().end() && found->second == Needs::RF;
}

class Diagnosis {
public:
    explicit Diagnosis(const Evidence& evidence) : mEvidence(evidence) {
        if (evidence.trace) takeTrace(*evidence.trace);
        if (evidence.serial) {
            std::erase_if(mRequests, [&](const auto& each) { return each.number != *evidence.serial; });
        }
    }

    std::vector<Finding> findings() {
        checkService();
        checkDaemon();
        checkRecording();
        checkThreads();
        checkLoopers();
        checkPeers();
        checkPluginList();
        checkComponents();
        checkWaiting();
        checkAnswered();
        checkSerial();
        checkClients();
        std::stable_partition(mFindings.begin(), mFindings.end(),
                              [](const Finding& each) { return each.level == Level::FAULT; });
        return std::move(mFindings);
    }

private:
    void takeTrace(const device::Trace& trace) {
        mRequests = tracedSections(trace).requests;
        for (const TracedRequest& request : mRequests) {
            if (!request.section.end) ++mUnanswered;
            for (const TraceSection& stage : request.stages) {
                if (stage.name == "plugin" && stage.end) mEnteredPlugin = true;
            }
        }
        std::copy_if(trace.marks.begin(), trace.marks.end(), std::back_inserter(mClientMarks),
                     [](const TraceMark& mark) { return mark.name == CLIENT_SET || mark.name == CLIENT_DIED; });
    }

    void add(Level level, const char* cause, std::string text, std::string advice) {
        mFindings.push_back({level, cause, std::move(text), std::move(advice)});
    }
    void fault(const char* cause, std::string text, std::string advice) {
        add(Level::FAULT, cause, std::move(text), std::move(advice));
    }
    void note(const char* cause, std::string text, std::string advice) {
        add(Level::NOTE, cause, std::move(text), std::move(advice));
    }

    std::string ago(int64_t time) const { return durationText(std::max<int64_t>(0, mEvidence.now - time)); }
    std::string name(const TracedRequest& request) const { return request.operation + " #" + number(request.number); }
    std::string daemonName() const {
        const auto& [daemon, trace] = std::tie(mEvidence.daemon, mEvidence.trace);
        return "subsysd, pid " + number(daemon ? daemon->pid : trace ? trace->pid : 0);
    }
    std::string threadName(int32_t thread) const {
        const auto& names = mEvidence.trace->threadNames;
        const auto found = names.find(thread);
        return "thread " + number(thread) + (found == names.end() ? "" : ", " + found->second);
    }
    std::string backtrace() const {
        return "gdb -p " + number(mEvidence.daemon ? mEvidence.daemon->pid : 0) +
               " and 'thread apply all bt' show where";
    }

    // The values of the lines with "<prefix>.<anything>", by key.
    std::vector<std::pair<std::string, std::string>> lines(const std::string& prefix) const {
        std::vector<std::pair<std::string, std::string>> found;
        if (!mEvidence.dump) return found;
        for (const auto& [key, value] : *mEvidence.dump) {
            if (key.starts_with(prefix + ".")) found.emplace_back(key.substr(prefix.size() + 1), value);
        }
        return found;
    }
    std::string line(const std::string& key) const {
        if (!mEvidence.dump) return "";
        const auto found = mEvidence.dump->find(key);
        return found == mEvidence.dump->end() ? "" : found->second;
    }

    void checkService() {
        if (mEvidence.isServed) return;
        const std::string where = mEvidence.service + " in " + mEvidence.folder;
        if (mEvidence.daemon) {
            return fault("notServed", daemonName() + ", runs but does not serve " + where,
                         "it has not finished its start: its log says what it does; " + backtrace());
        }
        std::string text = "nobody serves " + where;
        if (mEvidence.trace) {
            text += ": " + daemonName() + ", has ended; requests unanswered: " + number(mUnanswered);
        }
        std::string advice = mUnanswered == 0 ? "start subsysd" : "subsysctl requests lists them; start subsysd";
        for (const auto& [pid, environment] : mEvidence.otherDaemons) {
            if (environment == mEvidence.environment) {
                advice = "process " + number(pid) +
                         " was started for this folder; its files are gone or it is still starting: restart it";
                break;
            }
            advice += ", or look where process " + number(pid) + " serves (" +
                      (environment.empty() ? "SUBSYS_BINDER_DIR is not set" : environment) + ")";
        }
        fault("notServed", text, advice);
    }

    void checkDaemon() {
        const bool isMute = mEvidence.isServed && !mEvidence.dump;
        if (!mEvidence.daemon && isMute) {
            fault("noAnswer", "the process that serves " + mEvidence.service + " did not answer in time",
                  "look whether it is stopped, or no subsysd");
        }
        if (!mEvidence.daemon) return;
        const ProcessState& daemon = *mEvidence.daemon;
        if (daemon.state == 'T') {
            return fault("stopped", daemonName() + ", is stopped by a signal",
                         "let it go on: kill -CONT " + number(daemon.pid));
        }
        if (daemon.state == 't') {
            return fault("debugged", daemonName() + ", is held by a debugger, process " + number(daemon.tracer),
                         "continue it there");
        }
        if (isMute) {
            fault("noAnswer", daemonName() + ", did not answer in time",
                  "all its binder threads are busy: " + backtrace());
        }
    }

    // What a thread does not come out of: the innermost of its sections.
    void checkThreads() {
        if (!mEvidence.daemon || !mEvidence.trace) return;
        std::map<int32_t, const TraceMark*> inside;
        for (const TraceMark& mark : mEvidence.trace->open) {
            if (mark.kind == MarkKind::BEGIN) inside[mark.thread] = &mark;
        }
        for (const auto& [thread, mark] : inside) {
            if (mEvidence.now - mark->time >= SLOW) addStuck(*mark);
        }
    }

    void addStuck(const TraceMark& mark) {
        const std::string where = mark.name + " for " + ago(mark.time) + " (" + threadName(mark.thread) + ")";
        if (mark.name.starts_with(PLUGIN_CALL)) {
            mPluginThread = mark.thread;
            if (mEvidence.now - mark.time < PLUGIN_TIME) mPluginLevel = Level::NOTE;
            add(mPluginLevel, "pluginHangs", "the plugin has not returned from " + where.substr(PLUGIN_CALL.size()),
                "requests to the plugin wait behind it; a command may take 4 s, more is the plugin's fault: " +
                    backtrace());
        } else {
            fault("componentHangs",
                  (isCall(mark) ? "the service" : "the component") + (" has not returned from " + where),
                  "a binder thread must not wait: " + backtrace());
        }
    }

    void checkLoopers() {
        for (const auto& [index, value] : lines("looper")) {
            const size_t runs = value.find(", runs "), at = value.rfind(" for ");
            int thread = 0;
            long long millis = 0;
            const size_t id = value.find(", thread ");
            if (runs == std::string::npos || at == std::string::npos || id == std::string::npos) continue;
            std::sscanf(value.c_str() + id, ", thread %d", &thread);
            std::sscanf(value.c_str() + at, " for %lld ms", &millis);
            if (millis * 1'000'000 < SLOW || thread == mPluginThread) continue;
            fault("looperBusy",
                  "the looper of " + value.substr(0, runs) + ", is inside " + value.substr(runs + 7, at - runs - 7) +
                      " for " + durationText(millis * 1'000'000),
                  "what waits there, answers included, is late: " + backtrace());
        }
    }

    void checkPeers() {
        for (const auto& [pid, value] : lines("peer")) {
            unsigned long long calls = 0, bytes = 0, lost = 0;
            std::sscanf(value.c_str(), "%llu calls waiting, %llu bytes unread, %llu", &calls, &bytes, &lost);
            const auto peer = mEvidence.peers.find(std::atoi(pid.c_str()));
            const bool isStopped = peer != mEvidence.peers.end() && peer->second.isStopped();
            if (isStopped) {
                fault("clientStopped", "client process " + pid + " is stopped, " + number(bytes) + " bytes unread",
                      "let it go on: kill -CONT " + pid);
            } else if (lost > 0) {
                fault("undelivered", "client process " + pid + " missed " + number(lost) + " calls",
                      "it was stopped or is too slow: its callbacks must return at once");
            }
        }
    }

    void checkPluginList() {
        const char* const advice = line("daemon.device") == "/"
                                       ? "correct it, or give subsysd a --device"
                                       : "correct it; a changed list is read when subsysd starts again";
        for (const auto& [index, value] : lines("plugin-list.fault")) {
            fault("pluginList", value, std::string("requests to the plugin fail: ") + advice);
        }
        if (mEnteredPlugin && lines("plugin-list.fault").empty()) checkPlugin();
    }

    // The service opens it for the first request that needs it.
    void checkPlugin() {
        for (const auto& [index, value] : lines("plugin")) {
            if (!value.starts_with("libiccapis, ") || !value.ends_with(", not open")) continue;
            fault("pluginNotOpen", "a request needed the plugin: " + value,
                  "the daemon's log says why, in a line of DeviceLibrary");
        }
    }

    void checkComponents() {
        if (!mEvidence.dump) return;
        std::set<int> types;
        for (const auto& [index, value] : lines("component")) {
            int type = 0;
            if (std::sscanf(value.c_str(), "type %d", &type) == 1) types.insert(type);
        }
        const auto expect = [&](int type, const char* what) {
            if (types.contains(type)) return;
            fault("componentMissing", "there is no component of type " + number(type) + ": " + what,
                  "give subsysd its library with --load; its log says when it can't load one");
        };
        expect(TYPE_IMS_ORTC, "no IMS request is answered");
        expect(TYPE_VS, "the ICC plugin is not initialised");
    }

    // One line for all that wait in the same place.
    void checkWaiting() {
        using Place = std::pair<std::string, std::string>;
        std::map<Place, std::vector<const TracedRequest*>> waiting;
        std::vector<Place> places;  // the one with the oldest request first
        for (const TracedRequest& request : mRequests) {
            const bool isOld = mEvidence.now - request.section.begin.time >= SLOW;
            if (!mEvidence.daemon || request.section.end || (!isOld && !mEvidence.serial)) continue;
            const TraceSection* stage = request.where();
            const Place place{request.operation, stage == nullptr ? "" : stage->name};
            auto& together = waiting[place];
            if (together.empty()) places.push_back(place);
            together.push_back(&request);
        }
        for (const Place& place : places) addWaiting(*waiting[place].front(), place.second, waiting[place].size());
    }

    void addWaiting(const TracedRequest& oldest, const std::string& stage, size_t count) {
        std::string text = name(oldest) + " waits for " + ago(oldest.section.begin.time);
        if (count > 1) text += ", and " + number(count - 1) + " more of its kind do";
        if (const auto died = clientLoss(oldest)) text += "; " + *died;
        if (stage == "plugin") {
            add(mPluginLevel, "waitsForPlugin", text + ": it is inside the plugin",
                "see the plugin's call with subsysctl requests");
        } else if (stage == "reply") {
            fault("waitsForClient", text + ": the call to its client has not returned", backtrace());
        } else if (mPluginThread != 0 && oldest.operation.find("Icc") != std::string::npos) {
            add(mPluginLevel, "waitsBehindPlugin", text + ": it waits for the plugin", "see the line of the plugin");
        } else {
            fault("componentSilent", text + ": its component has not replied",
                  "the component dropped the reply message, sent another one, or is at work still: look at its log");
        }
    }

    // What became of the RF client that sent the request, while it waited; nothing when it is there.
    std::optional<std::string> clientLoss(const TracedRequest& request) const {
        if (!needsRfClient(request)) return std::nullopt;
        std::optional<std::string> loss;
        const auto& [begin, end] = std::tie(request.section.begin, request.section.end);
        for (const TraceMark& mark : mClientMarks) {
            if (mark.time < begin.time || (end && mark.time > end->time)) continue;
            if (mark.name == CLIENT_SET) loss = "the RF client was replaced " + ago(mark.time) + " ago";
            if (mark.name == CLIENT_DIED && !hasSuccessor(mark))
                loss = "the RF client ended " + ago(mark.time) + " ago";
        }
        return loss;
    }

    // Whether the RF client of now registered before the death of an earlier one was noticed.
    bool hasSuccessor(const TraceMark& death) const {
        return line("rf.response").ends_with("alive") &&
               std::none_of(mClientMarks.begin(), mClientMarks.end(),
                            [&](const TraceMark& mark) { return mark.name == CLIENT_SET && mark.time > death.time; });
    }

    void checkAnswered() {
        std::vector<std::string> lost;
        for (const TracedRequest& request : mRequests) {
            const auto& end = request.section.end;
            if (!end || (!mEvidence.serial && mEvidence.now - end->time > LATELY)) continue;
            const std::string text = name(request) + " was answered " + ago(end->time) + " ago";
            if (const auto loss = clientLoss(request)) {
                lost.push_back(text + ", but " + *loss);
            } else if (mEvidence.serial) {
                note("answered", text + ", after " + durationText(end->time - request.section.begin.time),
                     "look at the client");
            }
        }
        if (lost.empty()) return;
        const std::string more = lost.size() == 1 ? "" : ", and so for " + number(lost.size() - 1) + " more";
        fault("clientLost", lost.back() + more, "a client has to live, and stay registered, until the answer comes");
    }

    void checkRecording() {
        if (mEvidence.trace || !mEvidence.daemon) return;
        fault("noRecording", daemonName() + ", records nothing, so nothing is known of its requests",
              "its log says at the start why not, or the file was deleted: start it again");
    }

    void checkSerial() {
        if (!mEvidence.serial || !mEvidence.trace || !mRequests.empty()) return;
        fault(
            "noRequest", "there is no request #" + number(*mEvidence.serial) + " in the recording",
            "it did not arrive, no component took it, it needs none (getLcdInfo, killProcess), or it is too long ago");
    }

    void checkClients() {
        for (const char* key : {"rf.response", "ims.0.response", "ims.1.response"}) {
            if (line(key).ends_with("dead")) {
                fault("clientDead", std::string(key) + " is that of a dead client: " + line(key),
                      "the main looper has not come to forget it: " + backtrace());
            }
        }
        if (line("rf.response") != "none" || mClientMarks.empty() || mClientMarks.back().name != CLIENT_DIED) return;
        note("noClient", "the RF client ended " + ago(mClientMarks.back().time) + " ago, and none has registered since",
             "events reach nobody until a client registers");
    }

    const Evidence& mEvidence;
    std::vector<TracedRequest> mRequests;
    std::vector<TraceMark> mClientMarks;  // of the RF client
    std::vector<Finding> mFindings;
    size_t mUnanswered = 0;
    bool mEnteredPlugin = false;  // by a request that has left it
    int32_t mPluginThread = 0;
    Level mPluginLevel = Level::FAULT;  // a note while its call may still take time
};

}  // namespace

std::vector<Finding> diagnose(const Evidence& evidence) {
    return Diagnosis(evidence).findings();
}

}  // namespace subsysctl
