#include "IBinder.h"

#include "DeathRecipient.h"
#include "Dump.h"
#include "LocalBinder.h"
#include "Log.h"
#include "RemoteBinder.h"
#include "Status.h"

#include <functional>
#include <memory>
#include <new>
#include <utility>

struct AIBinder_Weak {
    AIBinder* binder;
};

namespace {

const char* interfaceOf(const AIBinder& binder) {
    return binder.clazz() == nullptr ? "an object" : binder.clazz()->descriptor.c_str();
}

// Turns the call in `parcel` into its reply.
binder_status_t transact(AIBinder& binder, uint32_t code, AParcel& parcel, bool oneway) try {
    return binder::knownStatus(binder.transact(code, parcel, oneway));
} catch (const std::bad_alloc&) {
    binder::warn("a call %u to %s fails: no memory", code, interfaceOf(binder));
    return STATUS_NO_MEMORY;
}

binder_status_t dump(AIBinder& binder, int fd, const char** args, uint32_t numArgs) try {
    if (binder.remote() != nullptr) return binder::requestDump(&binder, fd, args, numArgs);
    const AIBinder_onDump onDump = binder.clazz()->onDump;
    return onDump == nullptr ? STATUS_OK : onDump(&binder, fd, args, numArgs);
} catch (const std::bad_alloc&) {
    binder::warn("a dump of %s fails: no memory", interfaceOf(binder));
    return STATUS_NO_MEMORY;
}

}  // namespace

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
    AParcel parcel(binder);
    return transact(*binder, binder::PING_CODE, parcel, false);
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    return binder == nullptr ? STATUS_UNEXPECTED_NULL : binder::knownStatus(dump(*binder, fd, args, numArgs));
}

binder_status_t AIBinder_setExtension(AIBinder* binder, AIBinder* ext) {
    if (binder == nullptr || ext == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder->local() == nullptr) return STATUS_INVALID_OPERATION;
    ext->incStrong();
    binder->local()->setExtension(ndk::SpAIBinder(ext));
    return STATUS_OK;
}

binder_status_t AIBinder_getExtension(AIBinder* binder, AIBinder** outExt) {
    if (binder == nullptr || outExt == nullptr) return STATUS_UNEXPECTED_NULL;
    *outExt = nullptr;
    AParcel parcel(binder);
    const binder_status_t status = transact(*binder, binder::EXTENSION_CODE, parcel, false);
    return status == STATUS_OK ? AParcel_readStrongBinder(&parcel, outExt) : status;
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

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) try {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    const AIBinder_Class* clazz = binder->clazz();
    if (clazz == nullptr) return STATUS_INVALID_OPERATION;
    auto parcel = std::make_unique<AParcel>(binder);
    clazz->writeToken(*parcel);
    *in = parcel.release();
    return STATUS_OK;
} catch (const std::bad_alloc&) {
    binder::warn("a call to %s is not made: no memory", binder->clazz()->descriptor.c_str());
    return STATUS_NO_MEMORY;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in, AParcel** out,
                                  binder_flags_t flags) {
    constexpr binder_flags_t KNOWN_FLAGS = FLAG_ONEWAY | FLAG_CLEAR_BUF;
    if (in == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> parcel(std::exchange(*in, nullptr));
    if (binder == nullptr || parcel == nullptr || out == nullptr) return STATUS_UNEXPECTED_NULL;
    *out = nullptr;
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) return STATUS_UNKNOWN_TRANSACTION;
    if ((flags & ~KNOWN_FLAGS) != 0 || parcel->target() != binder) return STATUS_BAD_VALUE;
    const binder_status_t status = transact(*binder, code, *parcel, (flags & FLAG_ONEWAY) != 0);
    if (status == STATUS_OK) *out = parcel.release();
    return status;
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

AIBinder_Weak* AIBinder_Weak_clone(const AIBinder_Weak* weak) {
    return weak == nullptr ? nullptr : AIBinder_Weak_new(weak->binder);
}

// The address of an object is its own as long as a weak reference keeps its memory.
bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs) {
    return std::less<>()(lhs, rhs);
}

bool AIBinder_Weak_lt(const AIBinder_Weak* lhs, const AIBinder_Weak* rhs) {
    return AIBinder_lt(lhs == nullptr ? nullptr : lhs->binder, rhs == nullptr ? nullptr : rhs->binder);
}
