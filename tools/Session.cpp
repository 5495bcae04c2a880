#include "tools/Session.h"

#include "tools/CallTimer.h"
#include "tools/Callbacks.h"
#include "tools/Dump.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#if !defined(__ANDROID__)
#include <binder/peer.h>
#include <device/RuntimeFolder.h>
#endif
#include <cutils/trace.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <utility>

namespace subsysctl {

namespace {

namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

using Clock = Mailbox::Clock;

// The cookie of a death link: a share of the mailbox, freed when the link ends.
using Cookie = std::shared_ptr<Mailbox>;
void onDied(void* cookie) {
    (*static_cast<Cookie*>(cookie))->putDeath();
}
void onUnlinked(void* cookie) {
    delete static_cast<Cookie*>(cookie);
}

// Where services are looked up.
std::string searched() {
#if defined(__ANDROID__)
    return "";
#else
    return " in " + device::runtimeFolder();
#endif
}

// The median, since one slow wake-up says nothing about the service.
std::optional<std::chrono::microseconds> roundTrip(AIBinder* binder) {
    std::array<Clock::duration, 11> times{};
    for (auto& time : times) {
        const auto start = Clock::now();
        if (AIBinder_ping(binder) != STATUS_OK) return std::nullopt;
        time = Clock::now() - start;
    }
    std::nth_element(times.begin(), times.begin() + times.size() / 2, times.end());
    return std::chrono::duration_cast<std::chrono::microseconds>(times[times.size() / 2]);
}

}  // namespace

Session::Session(Output& output, std::chrono::milliseconds timeout, int32_t firstSerial, bool takeOver)
    : mOutput(output),
      mTimeout(timeout),
      mNextSerial(firstSerial),
      mTakeOver(takeOver),
      mMailbox(std::make_shared<Mailbox>()) {}

Session::~Session() = default;

Json Session::error(const char* kind, const std::string& message) const {
    Json problem = errorJson(kind, mVerb, message);
    if (mSerial) problem["serial"] = *mSerial;
    return problem;
}

int Session::fail(ExitCode code, const Json& problem) {
    mOutput.report(problem);
    return code;
}

int Session::failCall(const ndk::ScopedAStatus& status) {
    if (status.getStatus() == STATUS_DEAD_OBJECT) return fail(NO_SERVICE, error("died", "the service has died"));
    return fail(ANSWERED_WITH_ERROR, error("callFailed", "the call failed: " + status.getDescription()));
}

Output::Line Session::lateCall() const {
    Json problem = error("noAnswer", "the service did not take the call in time");
    problem["hint"] = "is its process stopped or busy?";
    return mOutput.lineFor(problem);
}

int Session::failLookup(const std::string& name, bool isDeclared) {
    if (!isDeclared) {
        Json missing = error("noService", "no such service: " + name + searched());
        missing["hint"] = "'subsysctl doctor' says what runs, and where";
        return fail(NO_SERVICE, missing);
    }
    Json problem = error("noAnswer", "no answer from " + name);
    problem["hint"] = "is its process stopped or busy?";
    return fail(NO_ANSWER, problem);
}

int Session::connect() {
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    const CallTimer timer(mTimeout, lateCall());
    const std::string name = serviceName();
    const ndk::SpAIBinder binder(AServiceManager_checkService(name.c_str()));
    if (!binder.get()) return failLookup(name, AServiceManager_isDeclared(name.c_str()));
    mService = Service::fromBinder(binder);
    if (!mService) return fail(NO_SERVICE, error("noService", "not an ISubsys: " + name + searched()));
    watchServer();
    return OK;
}

void Session::watchServer() {
    mDeath.set(AIBinder_DeathRecipient_new(onDied));
    AIBinder_DeathRecipient_setOnUnlinked(mDeath.get(), onUnlinked);
    const auto binder = mService->asBinder();
    if (AIBinder_linkToDeath(binder.get(), mDeath.get(), new Cookie(mMailbox)) == STATUS_DEAD_OBJECT) {
        mMailbox->putDeath();
    }
}

int Session::registerRf() {
    if (mIsRfClient) return OK;
    const CallTimer timer(mTimeout, lateCall());
    std::string state;
    if (const auto status = dumpOf(mService->asBinder().get(), {}, state))
        return failCall(ndk::ScopedAStatus::fromStatus(status));
    const Client client = clientIn(state, RF_PLACE);
    const bool isThere = client.kind == Client::OTHER;
    if (isThere && !mTakeOver) return refuseRf(client);
    if (const auto status = becomeRfClient(*mService, mMailbox); !status.isOk()) return failCall(status);
    if (isThere) noteTakeOver(client);
    mIsRfClient = true;
    return OK;
}

int Session::refuseRf(const Client& client) {
    Json problem = error("otherClient", describe(client) + " is the RF client");
    problem["pid"] = client.pid;
    problem["name"] = client.name;
    problem["hint"] = "--take-over takes its place";
    return fail(OTHER_CLIENT, problem);
}

void Session::noteTakeOver(const Client& client) {
    mOutput.report({{"note", "tookOver"},
                    {"verb", mVerb},
                    {"pid", client.pid},
                    {"name", client.name},
                    {"message", "took the RF client's place of " + describe(client)},
                    {"hint", client.name == "subsysctl" ? "a watch comes back when this call ends"
                                                        : "it has to register again itself"}});
}

int Session::registerIms() {
    if (mIsImsClient) return OK;
    const CallTimer timer(mTimeout, lateCall());
    const auto status =
        mService->setImsOrtcCallback(newReporter<interface::IImsOrtcResponse>("response", mMailbox),
                                     newReporter<interface::IImsOrtcIndication>("indication", mMailbox));
    if (!status.isOk()) return failCall(status);
    std::string state;
    if (const auto dumped = dumpOf(mService->asBinder().get(), {}, state))
        return failCall(ndk::ScopedAStatus::fromStatus(dumped));
    const Client clients[] = {clientIn(state, IMS_PLACES[0]), clientIn(state, IMS_PLACES[1])};
    const auto isOther = [](const Client& client) { return client.kind == Client::OTHER; };
    if (std::all_of(std::begin(clients), std::end(clients), isOther)) return refuseIms(clients[0], clients[1]);
    mIsImsClient = true;
    return OK;
}

int Session::refuseIms(const Client& first, const Client& second) {
    Json problem = error("otherClient", describe(first) + " and " + describe(second) + " are the IMS clients");
    problem["pids"] = {first.pid, second.pid};
    problem["hint"] = "one of them has to end first";
    return fail(OTHER_CLIENT, problem);
}

int Session::showRegistered(const char* client) {
    mOutput.print({{"client", "registered"}, {"kind", client}});
    return OK;
}

int Session::request(const Request& request) {
    const auto until = Clock::now() + mTimeout;
    const int32_t serial = mNextSerial;
    mNextSerial = static_cast<int32_t>(static_cast<uint32_t>(serial) + 1);  // wraps
    mSerial = serial;
    for (const std::string& warning : request.warnings) {
        mOutput.report({{"note", "tooLong"}, {"verb", mVerb}, {"serial", serial}, {"message", warning}});
    }
    const std::string mark = request.method + " #" + std::to_string(serial);
    atrace_async_begin(ATRACE_TAG_APP, mark.c_str(), serial);
    {
        const CallTimer timer(mTimeout, lateCall());
        const auto status = request.send(*mService, serial, mMailbox);
        if (!status.isOk()) return failCall(status);
    }
    if (!request.isAnswer) return OK;
    const auto answer = mMailbox->takeAnswer([&](const Json& json) { return request.isAnswer(json, serial); }, until);
    if (!answer) return failAnswer(request);
    atrace_async_end(ATRACE_TAG_APP, mark.c_str(), serial);
    mOutput.print(*answer);
    const Json info = answer->value("info", Json::object());
    const bool succeeded = info.contains("error") ? info["error"] == 0 : info.value("result", false);
    return succeeded ? OK : ANSWERED_WITH_ERROR;
}

int Session::failAnswer(const Request& request) {
    if (mMailbox->serverDied()) return fail(NO_SERVICE, error("died", "the service died before it answered"));
    const auto waited = std::chrono::nanoseconds(mTimeout).count();
    Json problem = error("noAnswer", "no answer in " + durationText(waited));
    problem["hint"] = whyUnanswered(request.needs);
    return fail(NO_ANSWER, problem);
}

std::string Session::whyUnanswered(Needs needs) {
    // A command without a callback of the session has a token instead of the serial.
    const std::string number = needs == Needs::NOTHING ? "" : " " + std::to_string(*mSerial);
    std::string advice = "'subsysctl doctor" + number + "' says why";
    const CallTimer timer(mTimeout, lateCall());
    std::string state;
    if (needs != Needs::RF || dumpOf(mService->asBinder().get(), {}, state) != STATUS_OK) return advice;
    const Client client = clientIn(state, RF_PLACE);
    if (client.kind != Client::OTHER) return advice;
    mIsRfClient = false;
    return describe(client) + " has taken the RF client's place";
}

int Session::watch(const WatchOptions& options) {
    std::optional<RfKeeper> keeper;
    if (options.rf) keeper.emplace(mService, mMailbox);
    return watchIndications(options, *mMailbox, mOutput);
}

int Session::status() {
    const CallTimer timer(mTimeout, lateCall());
    Json status = {{"status", "served"}, {"service", serviceName()}};
    int32_t version = 0;
    std::string hash;
    auto asked = mService->getInterfaceVersion(&version);
    if (asked.isOk()) asked = mService->getInterfaceHash(&hash);
    if (!asked.isOk()) return failCall(asked);
    const auto time = roundTrip(mService->asBinder().get());
    if (!time) return fail(NO_SERVICE, error("died", "the service does not answer a ping"));
    status["version"] = version;
    status["hash"] = hash;
#if !defined(__ANDROID__)  // where no call of the NDK tells it
    status["pid"] = AIBinder_getServerPid(mService->asBinder().get());
#endif
    status["roundTripMicros"] = time->count();
    mOutput.print(status);
    return OK;
}

int Session::dump(const std::vector<const char*>& arguments) {
    const CallTimer timer(mTimeout, lateCall());
    std::string text;
    const binder_status_t status = dumpOf(mService->asBinder().get(), arguments, text);
    if (status != STATUS_OK) return failCall(ndk::ScopedAStatus::fromStatus(status));
    mOutput.printState(text);
    return OK;
}

}  // namespace subsysctl
