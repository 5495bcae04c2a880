#pragma once

#include <stubs/Sinks.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace compliance {

namespace interface = ::aidl::vendor::nuvex::hardware::subsys_interface::subsys;

// A call of the service to one of the callbacks.
struct Call {
    std::string method;
    interface::SubsysResponseInfo info;  // of a response
    interface::IccMetaRespInfo meta;     // of onIccMetaResp
};

// Whether the call is the answer to a request with a serial.
[[nodiscard]] bool isAnswer(const Call& call);

// What a client's callbacks were told. Thread: any.
class Inbox {
public:
    using Matches = std::function<bool(const Call&)>;

    void put(Call call);
    [[nodiscard]] std::vector<Call> find(const Matches& matches) const;
    // Waits for the first that matches; false when the time is over.
    [[nodiscard]] bool await(const Matches& matches, std::chrono::milliseconds limit) const;

private:
    mutable std::mutex mMutex;
    mutable std::condition_variable mChanged;
    std::vector<Call> mCalls;  // guarded by mMutex
};

// A callback object that puts each call into an inbox.
template <class I>
class Recorder final : public subsys_stubs::Sink<I, Recorder<I>> {
public:
    explicit Recorder(std::shared_ptr<Inbox> inbox) : mInbox(std::move(inbox)) {}

    template <class Method, class... Args>
    ndk::ScopedAStatus onCall(const Method& method, const Args&... arguments) {
        Call call{method.name, {}, {}};
        const auto keep = [&]<class T>(const T& argument) {
            if constexpr (std::is_same_v<T, interface::SubsysResponseInfo>) call.info = argument;
            if constexpr (std::is_same_v<T, interface::IccMetaRespInfo>) call.meta = argument;
        };
        (keep(arguments), ...);
        mInbox->put(std::move(call));
        return ndk::ScopedAStatus::ok();
    }

private:
    const std::shared_ptr<Inbox> mInbox;
};

// A client of the service, with all the callbacks that one can have.
struct Client {
    template <class I>
    std::shared_ptr<I> callback() const {
        return ndk::SharedRefBase::make<Recorder<I>>(inbox);
    }

    const std::shared_ptr<Inbox> inbox = std::make_shared<Inbox>();
    const std::shared_ptr<interface::ISubsysResponse> response = callback<interface::ISubsysResponse>();
    const std::shared_ptr<interface::ISubsysIndication> indication = callback<interface::ISubsysIndication>();
    const std::shared_ptr<interface::IImsOrtcResponse> imsResponse = callback<interface::IImsOrtcResponse>();
    const std::shared_ptr<interface::IImsOrtcIndication> imsIndication = callback<interface::IImsOrtcIndication>();
    const std::shared_ptr<interface::ISubsysIccMetaCallback> meta = callback<interface::ISubsysIccMetaCallback>();
};

// The service with this name, ready to be called, or null. Waits for one that is there and does not answer yet.
[[nodiscard]] std::shared_ptr<interface::ISubsys> connect(const std::string& name, std::chrono::milliseconds limit);

// A client that is a process of its own, and can die. It is this program, called with `subsys-compliance client`.
class ClientProcess {
public:
    // Returns when it is registered. `kind` is rf or ims.
    ClientProcess(const std::string& kind, const std::string& service);
    ~ClientProcess();
    ClientProcess(const ClientProcess&) = delete;
    ClientProcess& operator=(const ClientProcess&) = delete;

    [[nodiscard]] bool isRegistered() const { return mIsRegistered; }
    // Whether it gets a first answer within the time. Once.
    [[nodiscard]] bool awaitAnswer(std::chrono::milliseconds limit);
    // Once. Returns when the process is gone.
    void kill();

private:
    int mSigns = -1;  // a byte when it is registered, another one with the first answer
    pid_t mPid = -1;
    bool mIsRegistered = false;
};

// What that process does: registers and waits for its death. Returns only when it can't register.
int runClient(const std::string& kind, const std::string& service);

}  // namespace compliance
