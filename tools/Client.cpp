#include "tools/Client.h"

#include "tools/Callbacks.h"
#include "tools/Dump.h"
#include "tools/ProcessState.h"
#include "tools/Text.h"

#include <device/Mutex.h>

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <condition_variable>
#include <string_view>
#include <thread>
#include <utility>

namespace subsysctl {

namespace {

constexpr std::chrono::seconds BETWEEN_LOOKS(1);

Json note(const char* what, const Client& client, const std::string& message) {
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

Client clientIn(const std::string& dump, const std::string& place) {
    const DumpLines lines = linesOf(dump);
    const auto found = lines.find(place);
    if (found == lines.end()) return {};
    const std::string& line = found->second;
    constexpr std::string_view PID = "pid ";
    Client client{Client::NONE, 0, ""};
    if (!line.starts_with(PID) || !line.ends_with(", alive")) return client;
    std::from_chars(line.data() + PID.size(), line.data() + line.size(), client.pid);
    if (kill(client.pid, 0) != 0 && errno == ESRCH) return client;  // the service has not seen it yet
    client.kind = client.pid == getpid() ? Client::SELF : Client::OTHER;
    if (const auto process = processState(client.pid)) client.name = process->name;
    return client;
}

std::string describe(const Client& client) {
    return "pid " + std::to_string(client.pid) + (client.name.empty() ? "" : " (" + client.name + ")");
}

struct RfKeeper::State {
    const std::shared_ptr<Request::Service> service;
    const std::shared_ptr<Mailbox> mailbox;
    Client inPlace{};  // of this process; its own thread's
    device::Mutex mutex{};
    std::condition_variable changed{};
    bool stopped SUBSYS_GUARDED_BY(mutex) = false;

    bool waitForNextLook() {
        const auto until = std::chrono::steady_clock::now() + BETWEEN_LOOKS;
        device::MutexLock lock(mutex);
        while (!stopped && std::chrono::steady_clock::now() < until) lock.waitUntil(changed, until);
        return !stopped;
    }

    void look() {
        std::string text;
        if (dumpOf(service->asBinder().get(), {}, text) != STATUS_OK) return;
        const Client now = clientIn(text, RF_PLACE);
        if (now.kind == Client::OTHER && now.pid != inPlace.pid) {
            inPlace = now;
            mailbox->putIndication(note("replaced", now, "replaced by " + describe(now) + " until that is gone"));
        } else if (now.kind == Client::NONE && becomeRfClient(*service, mailbox).isOk()) {
            const Client gone = std::exchange(inPlace, {});
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
    const device::MutexLock lock(mState->mutex);
    mState->stopped = true;
    mState->changed.notify_one();
}

}  // namespace subsysctl
