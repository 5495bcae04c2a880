#pragma once

#include <cstring>

#include "stubs/Interface.h"

// The parts of an interface that exist once for it; each interface instantiates them in its own source.
namespace subsys_stubs {

inline constexpr uint32_t GET_INTERFACE_VERSION = 0x00FFFFFF;
inline constexpr uint32_t GET_INTERFACE_HASH = 0x00FFFFFE;

template <class... Methods>
constexpr bool codesInOrder(const std::tuple<Methods...>& methods) {
    return std::apply(
        [](const auto&... method) {
            uint32_t expected = FIRST_CALL_TRANSACTION;
            return ((method.code == expected++) && ...);
        },
        methods);
}

template <class I, class... Args>
binder_status_t serve(I& service, const Method<I, Args...>& method, const AParcel* in, AParcel* out) {
    std::tuple<std::remove_cvref_t<Args>...> arguments;
    binder_status_t status = STATUS_OK;
    const auto readAll = [&](auto&... each) {
        static_cast<void>(((status = ndk::AParcel_readData(in, &each), status == STATUS_OK) && ...));
    };
    std::apply(readAll, arguments);
    if (status != STATUS_OK) return status;
    const ndk::ScopedAStatus outcome =
        std::apply([&](const auto&... each) { return (service.*method.call)(each...); }, arguments);
    return I::oneway ? STATUS_OK : AParcel_writeStatusHeader(out, outcome.get());
}

template <class I>
binder_status_t serveMethod(I& service, transaction_code_t code, const AParcel* in, AParcel* out) {
    static_assert(codesInOrder(I::methods()));
    using Serve = binder_status_t (*)(I&, const AParcel*, AParcel*);
    static constexpr auto kTable = []<size_t... N>(std::index_sequence<N...>) {
        return std::array<Serve, sizeof...(N)>{[](I& target, const AParcel* from, AParcel* to) {
            return serve(target, std::get<N>(I::methods()), from, to);
        }...};
    }
    (std::make_index_sequence<std::tuple_size_v<decltype(I::methods())>>());
    const size_t index = code - FIRST_CALL_TRANSACTION;
    return index < kTable.size() ? kTable[index](service, in, out) : STATUS_UNKNOWN_TRANSACTION;
}

template <class T>
binder_status_t writeResult(AParcel* out, const ndk::ScopedAStatus& outcome, const T& result) {
    const binder_status_t status = AParcel_writeStatusHeader(out, outcome.get());
    return status == STATUS_OK && outcome.isOk() ? ndk::AParcel_writeData(out, result) : status;
}

// Both are answered also on an interface that is otherwise oneway.
template <class I>
binder_status_t onTransact(AIBinder* binder, transaction_code_t code, const AParcel* in, AParcel* out) {
    const auto service = std::static_pointer_cast<I>(ndk::ICInterface::asInterface(binder));
    if (code == GET_INTERFACE_VERSION) {
        int32_t version = 0;
        const ndk::ScopedAStatus outcome = service->getInterfaceVersion(&version);
        return writeResult(out, outcome, version);
    }
    if (code == GET_INTERFACE_HASH) {
        std::string hash;
        const ndk::ScopedAStatus outcome = service->getInterfaceHash(&hash);
        return writeResult(out, outcome, hash);
    }
    return serveMethod<I>(*service, code, in, out);
}

template <class I>
AIBinder_Class* binderClass() {
    static AIBinder_Class* const sClass = ndk::ICInterface::defineClass(I::descriptor, onTransact<I>);
    return sClass;
}

template <class I>
std::shared_ptr<I> proxyFor(const ndk::SpAIBinder& binder);

template <class I>
std::shared_ptr<I> Interface<I>::fromBinder(const ndk::SpAIBinder& binder) {
    if (!binder.get()) return nullptr;
    if (AIBinder_associateClass(binder.get(), binderClass<I>())) {
        if (AIBinder_isRemote(binder.get())) return proxyFor<I>(binder);
        return std::static_pointer_cast<I>(ndk::ICInterface::asInterface(binder.get()));
    }
    // The same interface may have been associated through another copy of its class in this process.
    const AIBinder_Class* other = AIBinder_getClass(binder.get());
    const bool same = other && std::strcmp(AIBinder_Class_getDescriptor(other), I::descriptor) == 0;
    return same ? proxyFor<I>(binder) : nullptr;
}

template <class I>
binder_status_t Interface<I>::writeToParcel(AParcel* parcel, const std::shared_ptr<I>& instance) {
    return AParcel_writeStrongBinder(parcel, instance ? instance->asBinder().get() : nullptr);
}

template <class I>
binder_status_t Interface<I>::readFromParcel(const AParcel* parcel, std::shared_ptr<I>* instance) {
    ndk::SpAIBinder binder;
    const binder_status_t status = AParcel_readStrongBinder(parcel, binder.getR());
    if (status == STATUS_OK) *instance = fromBinder(binder);
    return status;
}

template <class I>
std::shared_ptr<I>& Interface<I>::defaultImpl() {
    static std::shared_ptr<I> sImpl;
    return sImpl;
}

template <class I>
bool Interface<I>::setDefaultImpl(const std::shared_ptr<I>& impl) {
    if (!impl || defaultImpl()) return false;
    defaultImpl() = impl;
    return true;
}

template <class I>
const std::shared_ptr<I>& Interface<I>::getDefaultImpl() {
    return defaultImpl();
}

template <class I>
ndk::SpAIBinder Server<I>::createBinder() {
    return ndk::SpAIBinder(AIBinder_new(binderClass<I>(), static_cast<ndk::ICInterface*>(this)));
}

inline ndk::ScopedAStatus readStatus(const AParcel* reply) {
    ndk::ScopedAStatus status;
    const binder_status_t read = AParcel_readStatusHeader(reply, status.getR());
    return read == STATUS_OK ? std::move(status) : ndk::ScopedAStatus::fromStatus(read);
}

template <class I>
ndk::ScopedAStatus Proxy<I>::send(uint32_t code, ndk::ScopedAParcel& request) {
    ndk::ScopedAParcel reply;
    const binder_flags_t flags = I::oneway ? FLAG_ONEWAY : 0;
    const binder_status_t status = AIBinder_transact(this->asBinder().get(), code, request.getR(), reply.getR(), flags);
    if (status != STATUS_OK) return ndk::ScopedAStatus::fromStatus(status);
    return I::oneway ? ndk::ScopedAStatus::ok() : readStatus(reply.get());
}

// A call without arguments that is answered with one value.
template <class T>
ndk::ScopedAStatus ask(AIBinder* binder, uint32_t code, T* result) {
    ndk::ScopedAParcel request;
    ndk::ScopedAParcel reply;
    binder_status_t status = AIBinder_prepareTransaction(binder, request.getR());
    if (status == STATUS_OK) status = AIBinder_transact(binder, code, request.getR(), reply.getR(), 0);
    if (status != STATUS_OK) return ndk::ScopedAStatus::fromStatus(status);
    ndk::ScopedAStatus outcome = readStatus(reply.get());
    if (!outcome.isOk()) return outcome;
    status = ndk::AParcel_readData(reply.get(), result);
    return status == STATUS_OK ? std::move(outcome) : ndk::ScopedAStatus::fromStatus(status);
}

template <class I>
ndk::ScopedAStatus Proxy<I>::getInterfaceVersion(int32_t* _aidl_return) {
    {
        const std::lock_guard lock(mMutex);
        *_aidl_return = mVersion;
    }
    if (*_aidl_return != -1) return ndk::ScopedAStatus::ok();
    ndk::ScopedAStatus status = ask(this->asBinder().get(), GET_INTERFACE_VERSION, _aidl_return);
    const std::lock_guard lock(mMutex);
    if (status.isOk()) mVersion = *_aidl_return;
    return status;
}

template <class I>
ndk::ScopedAStatus Proxy<I>::getInterfaceHash(std::string* _aidl_return) {
    {
        const std::lock_guard lock(mMutex);
        *_aidl_return = mHash;
    }
    if (!_aidl_return->empty()) return ndk::ScopedAStatus::ok();
    ndk::ScopedAStatus status = ask(this->asBinder().get(), GET_INTERFACE_HASH, _aidl_return);
    const std::lock_guard lock(mMutex);
    if (status.isOk()) mHash = *_aidl_return;
    return status;
}

}  // namespace subsys_stubs
