#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_parcel_utils.h>
#include <android/binder_status.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>

// What all interfaces of the package share. An interface lists its methods in methods(), a tuple of Method in the
// order of their codes, and says with `oneway` whether its callers wait for an answer; proxy and server follow from
// that.
namespace subsys_stubs {

template <class I, class... Args>
struct Method {
    uint32_t code;
    const char* name;
    ndk::ScopedAStatus (I::*call)(Args...);
    std::array<const char*, sizeof...(Args)> arguments;
};

template <class I, class... Args, class... Names>
constexpr Method<I, Args...> method(uint32_t code, const char* name, ndk::ScopedAStatus (I::*call)(Args...),
                                    Names... arguments) {
    static_assert(sizeof...(Names) == sizeof...(Args), "each argument has a name");
    return {code, name, call, {arguments...}};
}

// The version of the package, the same for each of its interfaces.
class Versioned : public ndk::ICInterface {
public:
    static inline const int32_t version = 5;
    static inline const std::string hash = "eb915a9f55f7590d55c29b64a7be1f4f97a18f37";

    virtual ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;
};

template <class I>
class Interface : public Versioned {
public:
    // The object itself when it is local, else a proxy; null for null and for an object of another interface. (any)
    static std::shared_ptr<I> fromBinder(const ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<I>& instance);
    // A null object, or one of another interface, is read as a null pointer and is no error.
    static binder_status_t readFromParcel(const AParcel* parcel, std::shared_ptr<I>* instance);
    // What proxies of this process call when the server does not know a method. Call it once, before the first
    // proxy is used: false for null and when there is one already.
    static bool setDefaultImpl(const std::shared_ptr<I>& impl);
    static const std::shared_ptr<I>& getDefaultImpl();

private:
    static std::shared_ptr<I>& defaultImpl();
};

// Answers UNKNOWN_TRANSACTION to everything, so that a default implementation overrides only what it wants.
template <class I>
class Default : public I {
public:
    ndk::SpAIBinder asBinder() override { return {}; }
    bool isRemote() override { return false; }
    ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override {
        *_aidl_return = 0;
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override {
        _aidl_return->clear();
        return ndk::ScopedAStatus::ok();
    }

protected:
    static ndk::ScopedAStatus unknown() { return ndk::ScopedAStatus::fromStatus(STATUS_UNKNOWN_TRANSACTION); }
};

template <class I>
class Server : public ndk::BnCInterface<I> {
public:
    ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) final {
        *_aidl_return = I::version;
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) final {
        *_aidl_return = I::hash;
        return ndk::ScopedAStatus::ok();
    }

protected:
    ndk::SpAIBinder createBinder() override;
};

template <class I>
class Proxy : public ndk::BpCInterface<I> {
public:
    explicit Proxy(const ndk::SpAIBinder& binder) : ndk::BpCInterface<I>(binder) {}

    // Asked once for each proxy; a failure is not kept.
    ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;

protected:
    template <uint32_t Code, class... Args>
    ndk::ScopedAStatus call(const Args&... arguments) {
        constexpr auto kMethod = std::get<Code - FIRST_CALL_TRANSACTION>(I::methods());
        static_assert(kMethod.code == Code && kMethod.arguments.size() == sizeof...(Args));
        ndk::ScopedAParcel request;
        binder_status_t status = AIBinder_prepareTransaction(this->asBinder().get(), request.getR());
        const auto write = [&](const auto& argument) {
            if (status == STATUS_OK) status = ndk::AParcel_writeData(request.get(), argument);
        };
        (write(arguments), ...);
        if (status != STATUS_OK) return ndk::ScopedAStatus::fromStatus(status);
        ndk::ScopedAStatus outcome = send(Code, request);
        const auto& fallback = I::getDefaultImpl();
        const bool unknown = outcome.getStatus() == STATUS_UNKNOWN_TRANSACTION;
        return unknown && fallback ? ((*fallback).*kMethod.call)(arguments...) : std::move(outcome);
    }

private:
    ndk::ScopedAStatus send(uint32_t code, ndk::ScopedAParcel& request);

    std::mutex mMutex;
    int32_t mVersion = -1;  // guarded by mMutex, as is mHash
    std::string mHash;
};

}  // namespace subsys_stubs
