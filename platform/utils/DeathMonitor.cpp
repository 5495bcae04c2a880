#include <utils/DeathMonitor.h>

#include <android/binder_auto_utils.h>
#include <android/binder_ibinder.h>
#include <device/Mutex.h>
#include <mindroid/Log.h>
#include <mindroid/Message.h>
#include <mindroid/Runnable.h>

#include <utility>

namespace subsys_utils {

namespace {

constexpr const char* TAG = "DeathMonitor";

// One callback under watch; deleting the recipient ends the watch.
struct Watch {
    // Held, since a watch ends silently with the last reference to the object it watches.
    std::shared_ptr<ndk::ICInterface> callback;
    ndk::ScopedAIBinder_DeathRecipient recipient;
};

}  // namespace

struct DeathMonitor::State : std::enable_shared_from_this<State> {
    // What the binder library holds for one watch; freed when it unlinks, and nowhere else.
    struct Cookie {
        std::weak_ptr<State> state;
        uint64_t generation;
    };
    static void onBinderDied(void* cookie);
    static void onUnlinked(void* cookie) { delete static_cast<Cookie*>(cookie); }

    uint64_t dropWatch();
    void watch(const std::shared_ptr<ndk::ICInterface>& callback, uint64_t generation);
    void keep(Watch watch, uint64_t generation);
    void post(uint64_t generation);
    void deliver(uint64_t generation);

    device::Mutex lock;
    mindroid::sp<mindroid::Handler> handler SUBSYS_GUARDED_BY(lock);
    int32_t what SUBSYS_GUARDED_BY(lock) = 0;
    mindroid::sp<mindroid::Object> obj SUBSYS_GUARDED_BY(lock);
    Watch current SUBSYS_GUARDED_BY(lock);
    // Counts the calls of init. A death that carries an older number is that of a callback that was replaced.
    uint64_t generation SUBSYS_GUARDED_BY(lock) = 0;
};

void DeathMonitor::State::onBinderDied(void* cookie) {
    const auto& died = *static_cast<Cookie*>(cookie);
    if (const auto state = died.state.lock()) state->post(died.generation);
}

uint64_t DeathMonitor::State::dropWatch() {
    Watch dropped;  // goes after the lock was let go
    const device::MutexLock guard(lock);
    std::swap(dropped, current);
    return ++generation;
}

void DeathMonitor::State::watch(const std::shared_ptr<ndk::ICInterface>& callback, uint64_t watched) {
    const ndk::SpAIBinder binder = callback->asBinder();
    if (binder.get() == nullptr || !AIBinder_isRemote(binder.get())) return;
    Watch next{callback, ndk::ScopedAIBinder_DeathRecipient(AIBinder_DeathRecipient_new(onBinderDied))};
    AIBinder_DeathRecipient_setOnUnlinked(next.recipient.get(), onUnlinked);
    const auto status = AIBinder_linkToDeath(binder.get(), next.recipient.get(), new Cookie{weak_from_this(), watched});
    if (status == STATUS_OK) return keep(std::move(next), watched);
    if (status == STATUS_DEAD_OBJECT) return post(watched);
    mindroid::Log::w(TAG, "a callback can't be watched: status %d", status);
}

void DeathMonitor::State::keep(Watch watch, uint64_t watched) {
    const device::MutexLock guard(lock);
    // Another init may have come between; its watch stays, and this one goes when the caller lets go of it.
    if (watched == generation) std::swap(current, watch);
}

// Binder. The message carries a task rather than `what`, so that it can still turn out to be old when its turn comes.
void DeathMonitor::State::post(uint64_t died) {
    mindroid::sp<mindroid::Handler> target;
    {
        const device::MutexLock guard(lock);
        target = handler;
    }
    if (!target) return;
    const auto deliverIt = [state = weak_from_this(), died] {
        if (const auto self = state.lock()) self->deliver(died);
    };
    target->obtainMessage(new mindroid::Runnable(deliverIt))->sendToTarget();
}

// Looper of the handler.
void DeathMonitor::State::deliver(uint64_t died) {
    mindroid::sp<mindroid::Handler> target;
    mindroid::sp<mindroid::Message> message;
    {
        const device::MutexLock guard(lock);
        if (died != generation || !handler) return;
        target = handler;
        message = target->obtainMessage(what, obj);
    }
    target->handleMessage(message);
}

DeathMonitor::DeathMonitor() : mState(std::make_shared<State>()) {}

// A binder thread may hold the state for a moment longer; the watch ends here all the same.
DeathMonitor::~DeathMonitor() {
    mState->dropWatch();
}

void DeathMonitor::registerClientDeathEvent(const mindroid::sp<mindroid::Handler>& handler, int32_t what,
                                            const mindroid::sp<mindroid::Object>& obj) {
    // What was registered before goes after the lock was let go.
    auto droppedHandler = handler;
    auto droppedObj = obj;
    const device::MutexLock guard(mState->lock);
    std::swap(droppedHandler, mState->handler);
    std::swap(droppedObj, mState->obj);
    mState->what = what;
}

void DeathMonitor::init(const std::shared_ptr<ndk::ICInterface>& callback) {
    const uint64_t generation = mState->dropWatch();
    if (callback != nullptr) mState->watch(callback, generation);
}

}  // namespace subsys_utils
