#include "tools/Session.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#if !defined(__ANDROID__)
#include <binder/peer.h>
#endif
#include <cutils/trace.h>
#include <signal.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <utility>

#include "tools/CallTimer.h"
#include "tools/Callbacks.h"
#include "tools/Dump.h"

namespace subsysctl {

namespace {

namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

using Clock = Mailbox::Clock;

template <class I>
std::shared_ptr<I> report(const char* kind, const std::shared_ptr<Mailbox>& mailbox) {
    return ndk::SharedRefBase::make<Reporter<I>>(kind, mailbox);
}

// The cookie of a death link: a share of the mailbox, freed when the link ends.
using Cookie = std::shared_ptr<Mailbox>;
void onDied(void* cookie) {
    (*static_cast<Cookie*>(cookie))->putDeath();
}
void onUnlinked(void* cookie) {
    delete static_cast<Cookie*>(cookie);
}

std::string serviceName() {
    return std::string(Session::Service::descriptor) + "/default";
}

std::string inSeconds(Clock::duration time) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.1f s", std::chrono::duration<double>(time).count());
    return text.data();
}

const char* whyUnanswered(Needs needs) {
    switch (needs) {
        case Needs::RF:
            return "is the component missing or silent, or has another client taken over the callback?";
        case Needs::IMS:
            return "is the IMS ORTC component missing or silent, or do two other clients hold both places?";
        default:
            return "is the component missing or silent?";
    }
}

// While it lives, SIGINT and SIGTERM end the watch and not the process.
class Interrupt {
public:
    explicit Interrupt(Mailbox& mailbox) {
        sMailbox = &mailbox;
        struct sigaction action {};
        action.sa_handler = [](int) { sMailbox->interrupt(); };
        action.sa_flags = SA_RESTART;
        sigaction(SIGINT, &action, &mOldInt);
        sigaction(SIGTERM, &action, &mOldTerm);
    }
    ~Interrupt() {
        sigaction(SIGINT, &mOldInt, nullptr);
        sigaction(SIGTERM, &mOldTerm, nullptr);
    }
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

private:
    static inline Mailbox* sMailbox = nullptr;
    struct sigaction mOldInt {};
    struct sigaction mOldTerm {};
};

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

Session::Session(Output& output, std::chrono::milliseconds timeout, int32_t firstSerial)
    : mOutput(output), mTimeout(timeout), mNextSerial(firstSerial), mMailbox(std::make_shared<Mailbox>()) {}

Session::~Session() = default;

int Session::fail(ExitCode code, const std::string& message) const {
    std::cerr << "subsysctl: " << message << std::endl;
    return code;
}

int Session::failCall(const std::string& what, const ndk::ScopedAStatus& status) const {
    if (status.getStatus() == STATUS_DEAD_OBJECT) return fail(NO_SERVICE, what + ": the service has died");
    return fail(ANSWERED_WITH_ERROR, what + ": the call failed: " + status.getDescription());
}

int Session::connect() {
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    const CallTimer timer(mTimeout);
    const std::string name = serviceName();
    const ndk::SpAIBinder binder(AServiceManager_checkService(name.c_str()));
    if (!binder.get() && AServiceManager_isDeclared(name.c_str())) {
        return fail(NO_ANSWER, "no answer from " + name + "; is its process stopped or busy?");
    }
    if (!binder.get()) return fail(NO_SERVICE, "no such service: " + name);
    mService = Service::fromBinder(binder);
    if (!mService) return fail(NO_SERVICE, "not an ISubsys: " + name);
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
    const CallTimer timer(mTimeout);
    const auto status = mService->setCallback(report<interface::ISubsysResponse>("response", mMailbox),
                                              report<interface::ISubsysIndication>("indication", mMailbox));
    return status.isOk() ? OK : failCall("setCallback", status);
}

int Session::registerIms() {
    const CallTimer timer(mTimeout);
    const auto status = mService->setImsOrtcCallback(report<interface::IImsOrtcResponse>("response", mMailbox),
                                                     report<interface::IImsOrtcIndication>("indication", mMailbox));
    return status.isOk() ? OK : failCall("setImsOrtcCallback", status);
}

int Session::request(const Request& request) {
    const auto until = Clock::now() + mTimeout;
    const int32_t serial = mNextSerial;
    mNextSerial = static_cast<int32_t>(static_cast<uint32_t>(serial) + 1);  // wraps
    const std::string mark = request.method + " #" + std::to_string(serial);
    atrace_async_begin(ATRACE_TAG_APP, mark.c_str(), serial);
    {
        const CallTimer timer(mTimeout);
        const auto status = request.send(*mService, serial, mMailbox);
        if (!status.isOk()) return failCall(request.method, status);
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

int Session::failAnswer(const Request& request) const {
    if (mMailbox->serverDied()) return fail(NO_SERVICE, request.method + ": the service died before it answered");
    return fail(NO_ANSWER,
                request.method + ": no answer in " + inSeconds(mTimeout) + "; " + whyUnanswered(request.needs));
}

int Session::watch(const WatchOptions& options) {
    const Interrupt interrupt(*mMailbox);
    const auto start = Clock::now();
    const auto length = std::chrono::duration<double>(options.seconds.value_or(0));
    const auto until =
        options.seconds ? start + std::chrono::duration_cast<Clock::duration>(length) : Clock::time_point::max();
    size_t printed = 0;
    while (printed < options.count.value_or(SIZE_MAX) && mOutput.isOpen()) {
        const auto indication = mMailbox->takeIndication(until);
        if (!indication) break;
        mOutput.print(*indication);
        ++printed;
    }
    return summarize(printed, Clock::now() - start, options);
}

int Session::summarize(size_t printed, Clock::duration took, const WatchOptions& options) const {
    const size_t lost = mMailbox->lost();
    std::cerr << "subsysctl: " << printed << (printed == 1 ? " indication in " : " indications in ") << inSeconds(took)
              << (lost == 0 ? "" : ", " + std::to_string(lost) + " lost") << std::endl;
    if (mMailbox->interrupted() || printed == options.count) return OK;
    if (mMailbox->serverDied()) return fail(NO_SERVICE, "watch: the service has died");
    return options.count ? NO_ANSWER : OK;
}

int Session::status() {
    const CallTimer timer(mTimeout);
    Json status = {{"status", "served"}, {"service", serviceName()}};
    int32_t version = 0;
    std::string hash;
    auto asked = mService->getInterfaceVersion(&version);
    if (asked.isOk()) asked = mService->getInterfaceHash(&hash);
    if (!asked.isOk()) return failCall("status", asked);
    const auto time = roundTrip(mService->asBinder().get());
    if (!time) return fail(NO_SERVICE, "status: the service does not answer a ping");
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
    const CallTimer timer(mTimeout);
    std::string text;
    const binder_status_t status = dumpOf(mService->asBinder().get(), arguments, text);
    if (status != STATUS_OK) return failCall("dump", ndk::ScopedAStatus::fromStatus(status));
    mOutput.printState(text);
    return OK;
}

}  // namespace subsysctl
