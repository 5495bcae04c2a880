#include "tools/RfClient.h"

#include "tools/Callbacks.h"
#include "tools/Dump.h"
#include "tools/Text.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <thread>
#include <utility>

namespace subsysctl {

namespace {

constexpr std::chrono::seconds BETWEEN_LOOKS(1);
constexpr std::string_view KEY = "rf.response: ";

std::string lineOf(const std::string& state, std::string_view key) {
    size_t at = state.starts_with(key) ? 0 : state.find("\n" + std::string(key));
    if (at == std::string::npos) return "";
    at = state.find(key, at) + key.size();
    return state.substr(at, state.find('\n', at) - at);
}

std::string nameOf(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

Json note(const char* what, const RfClient& client, const std::string& message) {
    return {{"note", what},
            {"verb", "watch"},
            {"pid", client.pid},
            {"name", client.name},
            {"time", timestamp(std::chrono::system_clock::now())},
            {"message", message}};
}

}  // namespace

ndk::ScopedAStatus becomeRfClient(Request::Service& service, const std::shared_ptr<Mailbox>& mailbox) {
    namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;
    return service.setCallback(newReporter<interface::ISubsysResponse>("response", mailbox),
                               newReporter<interface::ISubsysIndication>("indication", mailbox));
}

RfClient rfClientIn(const std::string& state) {
    const std::string line = lineOf(state, KEY);
    if (line.empty()) return {};
    constexpr std::string_view PID = "pid ";
    RfClient client{RfClient::NONE, 0, ""};
    if (!line.starts_with(PID) || !line.ends_with(", alive")) return client;
    std::from_chars(line.data() + PID.size(), line.data() + line.size(), client.pid);
    if (kill(client.pid, 0) != 0 && errno == ESRCH) return client;  // the service has not seen it yet
    client.kind = client.pid == getpid() ? RfClient::SELF : RfClient::OTHER;
    client.name = nameOf(client.pid);
    return client;
}

std::string describe(const RfClient& client) {
    return "pid " + std::to_string(client.pid) + (client.name.empty() ? "" : " (" + client.name + ")");
}

struct RfKeeper::State {
    const std::shared_ptr<Request::Service> service;
    const std::shared_ptr<Mailbox> mailbox;
    RfClient inPlace{};  // of this process; its own thread's
    std::mutex mutex{};
    std::condition_variable changed{};
    bool stopped = false;  // guarded by mutex

    bool waitForNextLook() {
        std::unique_lock lock(mutex);
        return !changed.wait_for(lock, BETWEEN_LOOKS, [this] { return stopped; });
    }

    void look() {
        std::string text;
        if (dumpOf(service->asBinder().get(), {}, text) != STATUS_OK) return;
        const RfClient now = rfClientIn(text);
        if (now.kind == RfClient::OTHER && now.pid != inPlace.pid) {
            inPlace = now;
            mailbox->putIndication(note("replaced", now, "replaced by " + describe(now) + " until that is gone"));
        } else if (now.kind == RfClient::NONE && becomeRfClient(*service, mailbox).isOk()) {
            const RfClient gone = std::exchange(inPlace, {});
            const std::string after = gone.pid == 0 ? "another client came and went" : describe(gone) + " is gone";
            mailbox->putIndication(note("registered", gone, "registered again: " + after));
        }
    }
};

// Detached: nothing ends a call into a service that is stopped.
RfKeeper::RfKeeper(std::shared_ptr<Request::Service> service, std::shared_ptr<Mailbox> mailbox)
    : mState(new State{std::move(service), std::move(mailbox)}) {
    std::thread([state = mState] {
        while (state->waitForNextLook()) state->look();
    }).detach();
}

RfKeeper::~RfKeeper() {
    const std::lock_guard lock(mState->mutex);
    mState->stopped = true;
    mState->changed.notify_one();
}

}  // namespace subsysctl
