#include "IBinder.h"

#include <utility>

#include "DeathRecipient.h"
#include "LocalBinder.h"
#include "Log.h"
#include "RemoteBinder.h"
#include "Status.h"

struct AIBinder_Weak {
    AIBinder* binder;
};

void AIBinder::decStrong() {
    if (mStrong.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    onLastStrong();
    decWeak();
}

bool AIBinder::tryIncStrong() {
    int32_t count = mStrong.load(std::memory_order_relaxed);
    while (count > 0) {
        if (mStrong.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) return true;
    }
    return false;
}

void AIBinder::decWeak() {
    if (mWeak.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    return clazz == nullptr ? nullptr : new binder::LocalBinder(clazz, clazz->onCreate(args));
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->incStrong();
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder == nullptr) return binder::warn("decStrong of a null object");
    binder->decStrong();
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && const_cast<AIBinder*>(binder)->remote() != nullptr;
}

bool AIBinder_isAlive(const AIBinder* binder) {
    if (binder == nullptr) return false;
    auto* remote = const_cast<AIBinder*>(binder)->remote();
    return remote == nullptr || remote->isAlive();
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    auto parcel = std::make_unique<AParcel>(binder);
    return binder::knownStatus(binder->transact(binder::kPingCode, parcel, false));
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder->local() == nullptr) return STATUS_INVALID_OPERATION;
    const AIBinder_onDump onDump = binder->clazz()->onDump;
    return onDump == nullptr ? STATUS_OK : binder::knownStatus(onDump(binder, fd, args, numArgs));
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    return binder != nullptr && clazz != nullptr && binder->associate(clazz);
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    return binder == nullptr ? nullptr : binder->clazz();
}

void* AIBinder_getUserData(AIBinder* binder) {
    if (binder == nullptr || binder->local() == nullptr) return nullptr;
    return binder->local()->userData();
}

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    const AIBinder_Class* clazz = binder->clazz();
    if (clazz == nullptr) return STATUS_INVALID_OPERATION;
    *in = new AParcel(binder);
    clazz->writeToken(**in);
    return STATUS_OK;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in, AParcel** out,
                                  binder_flags_t flags) {
    if (in == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> parcel(std::exchange(*in, nullptr));
    if (binder == nullptr || parcel == nullptr || out == nullptr) return STATUS_UNEXPECTED_NULL;
    *out = nullptr;
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) return STATUS_UNKNOWN_TRANSACTION;
    if ((flags & ~static_cast<binder_flags_t>(FLAG_ONEWAY)) != 0) return STATUS_BAD_VALUE;
    if (parcel->target() != binder) return STATUS_BAD_VALUE;
    const binder_status_t status = binder->transact(code, parcel, (flags & FLAG_ONEWAY) != 0);
    if (status == STATUS_OK) *out = parcel.release();
    return binder::knownStatus(status);
}

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    binder->incWeak();
    return new AIBinder_Weak{binder};
}

void AIBinder_Weak_delete(AIBinder_Weak* weakBinder) {
    if (weakBinder == nullptr) return;
    weakBinder->binder->decWeak();
    delete weakBinder;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weakBinder) {
    return weakBinder != nullptr && weakBinder->binder->tryIncStrong() ? weakBinder->binder : nullptr;
}
