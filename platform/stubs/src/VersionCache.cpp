#include "stubs/VersionCache.h"

#include "Transaction.h"

namespace subsys_stubs {

namespace {

// A call without arguments that is answered with one value.
template <class T>
ndk::ScopedAStatus ask(AIBinder* server, transaction_code_t code, T* result) {
    ndk::ScopedAParcel request;
    ndk::ScopedAParcel reply;
    binder_status_t status = AIBinder_prepareTransaction(server, request.getR());
    if (status == STATUS_OK) status = AIBinder_transact(server, code, request.getR(), reply.getR(), 0);
    if (status != STATUS_OK) return ndk::ScopedAStatus::fromStatus(status);
    ndk::ScopedAStatus outcome = readStatus(reply.get());
    if (!outcome.isOk()) return outcome;
    status = ndk::AParcel_readData(reply.get(), result);
    return status == STATUS_OK ? std::move(outcome) : ndk::ScopedAStatus::fromStatus(status);
}

}  // namespace

// The value that is kept, or the server's, which is then kept. No lock is held while the server is asked.
template <class T>
ndk::ScopedAStatus VersionCache::get(Known<T>& known, const T& unknown, const ndk::SpAIBinder& server,
                                     transaction_code_t code, T* result) {
    {
        const device::MutexLock lock(known.lock);
        *result = known.value;
    }
    if (*result != unknown) return ndk::ScopedAStatus::ok();
    ndk::ScopedAStatus status = ask(server.get(), code, result);
    const device::MutexLock lock(known.lock);
    if (status.isOk()) known.value = *result;
    return status;
}

ndk::ScopedAStatus VersionCache::version(const ndk::SpAIBinder& server, int32_t* result) {
    return get(mVersion, -1, server, GET_INTERFACE_VERSION, result);
}

ndk::ScopedAStatus VersionCache::hash(const ndk::SpAIBinder& server, std::string* result) {
    return get(mHash, std::string(), server, GET_INTERFACE_HASH, result);
}

}  // namespace subsys_stubs
