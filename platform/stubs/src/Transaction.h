#pragma once

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel_utils.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <tuple>
#include <type_traits>
#include <utility>

// The steps of a call that are the same for every method, in the proxy and in the server.
namespace subsys_stubs {

inline constexpr transaction_code_t GET_INTERFACE_VERSION = 0x00FFFFFF;
inline constexpr transaction_code_t GET_INTERFACE_HASH = 0x00FFFFFE;

inline ndk::ScopedAStatus readStatus(const AParcel* reply) {
    ndk::ScopedAStatus status;
    const binder_status_t read = AParcel_readStatusHeader(reply, status.getR());
    return read == STATUS_OK ? std::move(status) : ndk::ScopedAStatus::fromStatus(read);
}

// Sends a call. A server that does not know the method is replaced by the default implementation, where there is one.
template <class I, class... Params>
ndk::ScopedAStatus call(const ndk::SpAIBinder& server, transaction_code_t code, binder_flags_t flags,
                        ndk::ScopedAStatus (I::*method)(Params...), std::type_identity_t<Params>... arguments) {
    ndk::ScopedAParcel request;
    ndk::ScopedAParcel reply;
    binder_status_t status = AIBinder_prepareTransaction(server.get(), request.getR());
    const auto write = [&](const auto& argument) {
        if (status == STATUS_OK) status = ndk::AParcel_writeData(request.get(), argument);
    };
    (write(arguments), ...);
    if (status == STATUS_OK) status = AIBinder_transact(server.get(), code, request.getR(), reply.getR(), flags);
    const auto& fallback = I::getDefaultImpl();
    if (status == STATUS_UNKNOWN_TRANSACTION && fallback) return ((*fallback).*method)(arguments...);
    if (status != STATUS_OK) return ndk::ScopedAStatus::fromStatus(status);
    return (flags & FLAG_ONEWAY) != 0 ? ndk::ScopedAStatus::ok() : readStatus(reply.get());
}

// Reads the arguments, calls the method and answers with its status. `out` is null on a oneway interface, where that
// status concerns nobody.
template <class I, class... Params>
binder_status_t serve(I& service, ndk::ScopedAStatus (I::*method)(Params...), const AParcel* in, AParcel* out) {
    std::tuple<std::remove_cvref_t<Params>...> arguments;
    binder_status_t status = STATUS_OK;
    const auto read = [&](auto&... each) {
        static_cast<void>((((status = ndk::AParcel_readData(in, &each)) == STATUS_OK) && ...));
    };
    std::apply(read, arguments);
    if (status != STATUS_OK) return status;
    const auto outcome = std::apply([&](const auto&... each) { return (service.*method)(each...); }, arguments);
    return out != nullptr ? AParcel_writeStatusHeader(out, outcome.get()) : STATUS_OK;
}

// A reply of success with one value.
template <class T>
binder_status_t answer(AParcel* out, const T& value) {
    const binder_status_t status = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
    return status == STATUS_OK ? ndk::AParcel_writeData(out, value) : status;
}

template <class I, class Bp>
std::shared_ptr<I> fromBinder(const ndk::SpAIBinder& binder, const AIBinder_Class* clazz) {
    if (binder.get() == nullptr) return nullptr;
    if (!AIBinder_associateClass(binder.get(), clazz)) {
        // The same interface may have been associated through another copy of its class in this process.
        const AIBinder_Class* other = AIBinder_getClass(binder.get());
        const bool same = other != nullptr && std::strcmp(AIBinder_Class_getDescriptor(other), I::descriptor) == 0;
        return same ? ndk::SharedRefBase::make<Bp>(binder) : nullptr;
    }
    if (AIBinder_isRemote(binder.get())) return ndk::SharedRefBase::make<Bp>(binder);
    return std::static_pointer_cast<I>(ndk::ICInterface::asInterface(binder.get()));
}

}  // namespace subsys_stubs
