// A client that runs until SIGTERM: `rf NAME` and `ims NAME NUMBER` are honest and count what comes back, `flood` calls
// as fast as it can.

#include "tests/support/SubsysClient.h"

#include <aidl/vendor/nuvex/hardware/subsys_interface/subsys/ISubsys.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stubs/Sinks.h>

#include <fcntl.h>
#include <signal.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace {

using namespace std::chrono_literals;
namespace interface = test::interface;
using interface::ISubsys;

// How many requests are on their way at a time, and how long one may be.
constexpr size_t WINDOW = 16;
constexpr auto PATIENCE = 20s;
// Of one client: both IMS clients get the answers of either.
constexpr int32_t SERIALS = 500'000'000;

volatile sig_atomic_t sStop = 0;
std::atomic<size_t> sAnswered{0};
std::atomic<size_t> sFaults{0};

void fault(const char* what, const char* method, int32_t serial) {
    ++sFaults;
    printf("%s: %s #%d\n", what, method, serial);
}

// The requests of one connection that are on their way. Thread: any.
class Ledger {
public:
    void enter(const std::string& answer, int32_t serial) {
        const std::lock_guard lock(mLock);
        mClient = serial / SERIALS;
        mWaiting[answer].push_back(serial);
        ++mCount;
    }
    void answer(const char* method, int32_t serial) {
        const std::lock_guard lock(mLock);
        if (serial / SERIALS != mClient) return;
        auto& waiting = mWaiting[method];
        const auto found = std::find(waiting.begin(), waiting.end(), serial);
        if (found == waiting.end()) return fault("answered twice, or never asked", method, serial);
        if (found != waiting.begin()) fault("out of order", method, serial);
        waiting.erase(found);
        --mCount;
        ++sAnswered;
        mChanged.notify_all();
    }
    // How many are on their way once at most `most` are, or after the time.
    size_t await(size_t most, std::chrono::milliseconds time) {
        std::unique_lock lock(mLock);
        mChanged.wait_for(lock, time, [&] { return mCount <= most; });
        return mCount;
    }

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    int32_t mClient = 0;
    std::map<std::string, std::deque<int32_t>> mWaiting;
    size_t mCount = 0;
};

template <class I>
class Answers : public subsys_stubs::Sink<I, Answers<I>> {
public:
    explicit Answers(std::shared_ptr<Ledger> ledger) : mLedger(std::move(ledger)) {}

    template <class Method, class... Values>
    ndk::ScopedAStatus onCall(const Method& method, const interface::SubsysResponseInfo& info, const Values&...) {
        mLedger->answer(method.name, info.serial);
        return ndk::ScopedAStatus::ok();
    }

private:
    const std::shared_ptr<Ledger> mLedger;
};

struct Request {
    const char* answer;
    ndk::ScopedAStatus (*send)(ISubsys& service, int32_t serial);
};

const std::vector<Request> RF{
    {"getLcdInfoResponse", [](ISubsys& service, int32_t serial) { return service.getLcdInfo(serial, 1); }},
    {"getSwtpStatusResponse", [](ISubsys& service, int32_t serial) { return service.getSwtpStatus(serial); }},
    {"getIccStateResponse", [](ISubsys& service, int32_t serial) { return service.getIccState(serial); }},
    {"sendIccCmdResponse", [](ISubsys& service, int32_t serial) { return service.sendIccCmd(serial, {}); }}};
const std::vector<Request> IMS{
    {"setCallInfoResponse", [](ISubsys& service, int32_t serial) { return service.setCallInfo(serial, {}); }},
    {"setOrtcRoomInfoResponse", [](ISubsys& service, int32_t serial) { return service.setOrtcRoomInfo(serial, {}); }},
    {"sendImsRtpDataResponse", [](ISubsys& service, int32_t serial) { return service.sendImsRtpData(serial, {}); }}};

std::shared_ptr<ISubsys> findService() {
    const std::string name = std::string(ISubsys::descriptor) + "/default";
    return ISubsys::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(name.c_str())));
}

// Whether the call was taken; it fails only because the daemon was killed.
bool isTaken(const ndk::ScopedAStatus& status, const char* method, int32_t serial) {
    if (!status.isOk() && status.getStatus() != STATUS_DEAD_OBJECT) fault("the call failed", method, serial);
    return status.isOk();
}

bool connect(ISubsys& service, const std::vector<Request>& requests, const std::shared_ptr<Ledger>& ledger) {
    using ndk::SharedRefBase;
    const auto status =
        &requests == &RF
            ? service.setCallback(SharedRefBase::make<Answers<interface::ISubsysResponse>>(ledger), nullptr)
            : service.setImsOrtcCallback(SharedRefBase::make<Answers<interface::IImsOrtcResponse>>(ledger), nullptr);
    return isTaken(status, "connect", 0);
}

// False when the daemon has died.
bool awaitAnswers(ISubsys& service, Ledger& ledger, size_t most) {
    const auto until = std::chrono::steady_clock::now() + PATIENCE;
    while (ledger.await(most, 100ms) > most) {
        if (!AIBinder_isAlive(service.asBinder().get())) return false;
        if (std::chrono::steady_clock::now() < until) continue;
        fault("no answer", "requests that wait:", static_cast<int32_t>(ledger.await(most, 0ms)));
        return false;
    }
    return true;
}

void ask(const std::vector<Request>& requests, const char* name, int32_t serial) {
    size_t interrupted = 0;
    unsigned connections = 0;
    while (sStop == 0) {
        const auto service = findService();
        const auto ledger = std::make_shared<Ledger>();
        if (service == nullptr || !connect(*service, requests, ledger)) continue;
        ++connections;
        for (bool isAlive = true; isAlive && sStop == 0; ++serial) {
            const Request& request = requests[static_cast<size_t>(serial) % requests.size()];
            ledger->enter(request.answer, serial);
            isAlive = isTaken(request.send(*service, serial), request.answer, serial) &&
                      awaitAnswers(*service, *ledger, WINDOW - 1);
        }
        (void)awaitAnswers(*service, *ledger, 0);
        interrupted += ledger->await(0, 0ms);
    }
    printf("%s: %zu answered, %zu interrupted, %u connections, %zu faults\n", name, sAnswered.load(), interrupted,
           connections, sFaults.load());
}

// With what is answered at once, and one meta command at a time.
void flood() {
    const int sink = open("/dev/null", O_WRONLY | O_CLOEXEC);
    while (const auto service = findService()) {
        const auto meta = ndk::SharedRefBase::make<test::IccMetaClient>();
        size_t asked = 0;
        int32_t version = 0;
        while (service->getInterfaceVersion(&version).isOk() && AIBinder_ping(service->asBinder().get()) == STATUS_OK) {
            (void)AIBinder_dump(service->asBinder().get(), sink, nullptr, 0);
            if (meta->answers.count() == asked && service->sendIccMetaCmd({}, meta).isOk()) ++asked;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    signal(SIGTERM, [](int) { sStop = 1; });
    ABinderProcess_setThreadPoolMaxThreadCount(1);
    ABinderProcess_startThreadPool();
    if (arguments[0] == "flood") flood();
    const int32_t number = arguments.size() > 2 ? std::stoi(arguments[2]) : 0;
    ask(arguments[0] == "rf" ? RF : IMS, arguments[1].c_str(), number * SERIALS);
    fflush(stdout);
    _exit(sFaults != 0);
}
