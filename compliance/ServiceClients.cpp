#include "compliance/ServiceRun.h"

#include <optional>
#include <thread>

namespace compliance {

namespace {

using Clock = std::chrono::steady_clock;

// It is answered without a component, and kills nobody.
int32_t askRf(ServiceRun& run) {
    const int32_t serial = run.newSerial();
    (void)run.service->killProcess(serial, getpid(), "subsys-compliance");
    return serial;
}

int32_t askIms(ServiceRun& run) {
    const int32_t serial = run.newSerial();
    (void)run.service->setCallInfo(serial, {});
    return serial;
}

bool registerRf(ServiceRun& run, const Client& client) {
    return run.service->setCallback(client.response, client.indication).isOk();
}

bool registerIms(ServiceRun& run, const Client& client) {
    return run.service->setImsOrtcCallback(client.imsResponse, client.imsIndication).isOk();
}

size_t countAnswers(const Client& client, int32_t serial) {
    return client.inbox->find(answerTo(serial)).size();
}

bool isState(const Call& call) {
    return call.method == "sendSubsysStateChanged";
}

// ---- The RF client

Verdict replaceRf(ServiceRun& run, const Client& second) {
    if (!registerRf(run, second)) return failed("success of setCallback", "an error");
    const int32_t serial = askRf(run);
    if (takeAnswers(second, serial, run.options.limit).size() != 1)
        return failed("one answer to the new client", "none");
    return countAnswers(run.first, serial) == 0 ? ok() : failed("no answer to the client before", "one");
}

Verdict clearRf(ServiceRun& run, const Client& second) {
    if (!run.service->setCallback(nullptr, nullptr).isOk()) return failed("success of setCallback", "an error");
    const int32_t serial = askRf(run);
    std::this_thread::sleep_for(SERVICE_SETTLE);
    const size_t answers = countAnswers(run.first, serial) + countAnswers(second, serial);
    return answers == 0 ? ok() : failed("no answer without a callback", "one");
}

// Each client that follows a dead one is told the state.
Verdict followDead(ServiceRun& run) {
    {
        ClientProcess dying("rf", run.options.name);
        if (!dying.isRegistered()) return notChecked("no second process could register");
    }
    const Client third;
    if (!registerRf(run, third)) return failed("success of setCallback", "an error");
    if (!third.inbox->await(isState, run.options.limit))
        return failed("sendSubsysStateChanged to the new client", "none");
    const bool isAnswered = takeAnswers(third, askRf(run), run.options.limit).size() == 1;
    return isAnswered ? ok() : failed("one answer to the new client", "none");
}

// ---- The IMS ORTC clients

// A client in this process, one in another, and a third that there is no place for.
struct ImsClients {
    explicit ImsClients(ServiceRun& run) : other("ims", run.options.name) {}

    ClientProcess other;
    const Client third;
    // Where another client holds a place, or nobody answers.
    std::optional<std::string> unchecked;
};

Verdict twoIms(ServiceRun& run, ImsClients& clients) {
    const int32_t serial = askIms(run);
    const size_t answers = takeAnswers(run.first, serial, run.options.limit).size();
    if (answers == 0)
        clients.unchecked = "setCallInfo is not answered, or others hold both places";
    else if (!clients.other.awaitAnswer(run.options.limit))
        clients.unchecked = "another client may hold the second place";
    if (clients.unchecked) return notChecked(*clients.unchecked);
    return answers == 1 ? ok() : failed("one answer to each client", std::to_string(answers));
}

Verdict thirdIms(ServiceRun& run, const ImsClients& clients) {
    if (clients.unchecked) return notChecked(*clients.unchecked);
    if (!registerIms(run, clients.third)) return failed("success of setImsOrtcCallback", "an error");
    const int32_t serial = askIms(run);
    const bool isAnswered = takeAnswers(run.first, serial, run.options.limit).size() == 1;
    if (!isAnswered) return failed("one answer to the client that was there", "none");
    return countAnswers(clients.third, serial) == 0 ? ok() : failed("no answer to a third client", "one");
}

// The service hears of the death in its own time.
Verdict followDeadIms(ServiceRun& run, ImsClients& clients) {
    if (clients.unchecked) return notChecked(*clients.unchecked);
    clients.other.kill();
    for (const auto end = Clock::now() + run.options.limit; Clock::now() < end;) {
        (void)registerIms(run, clients.third);
        const int32_t serial = askIms(run);
        if (takeAnswers(clients.third, serial, SERVICE_SETTLE).empty()) continue;
        return countAnswers(run.first, serial) == 1 ? ok() : failed("one answer to the client that lives", "none");
    }
    return failed("a place for the next client", "none in " + std::to_string(run.options.limit.count()) + " ms");
}

}  // namespace

void checkClients(ServiceRun& run) {
    const Client second;
    run.checks.check("RF clients: a new one takes the place", CLIENTS, [&] { return replaceRf(run, second); });
    run.checks.check("RF clients: a null callback clears", CLIENTS, [&] { return clearRf(run, second); });
    run.checks.check("RF clients: one follows a dead one", CLIENTS, [&] { return followDead(run); });
    ImsClients ims(run);
    run.checks.check("IMS clients: both get each answer", CLIENTS, [&] { return twoIms(run, ims); });
    run.checks.check("IMS clients: a third is ignored", CLIENTS, [&] { return thirdIms(run, ims); });
    run.checks.check("IMS clients: one follows a dead one", CLIENTS, [&] { return followDeadIms(run, ims); });
}

}  // namespace compliance
