#include "DeathRecipient.h"

#include "IBinder.h"
#include "RemoteBinder.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
#include <utility>

using binder::DeathLink;
using binder::RemoteBinder;

namespace binder {
// Obituaries of one recipient that are running; outlives the recipient that one of them deletes.
struct RunningObituaries {
    int count = 0;
};
}  // namespace binder

struct AIBinder_DeathRecipient {
    explicit AIBinder_DeathRecipient(AIBinder_DeathRecipient_onBinderDied died) : onBinderDied(died) {}

    const AIBinder_DeathRecipient_onBinderDied onBinderDied;
    AIBinder_DeathRecipient_onBinderUnlinked onUnlinked = nullptr;
    binder::DeathLinks links;
    std::shared_ptr<binder::RunningObituaries> running = std::make_shared<binder::RunningObituaries>();
};

namespace {

// Guards every list of links and every count of running obituaries: death is rare, one lock keeps it simple.
struct Registry {
    std::mutex lock;
    std::condition_variable obituaryDone;
};

Registry& registry() {
    static auto* const instance = new Registry;  // outlives the threads that still use it at exit
    return *instance;
}

// Whether an obituary runs on this thread.
thread_local bool sRunningHere = false;

void eraseFrom(binder::DeathLinks& links, const DeathLink* link) {
    std::erase_if(links, [link](const auto& each) { return each.get() == link; });
}

// Takes a link out of both lists. With the lock held.
std::shared_ptr<DeathLink> takeOut(std::shared_ptr<DeathLink> link) {
    eraseFrom(link->binder->links, link.get());
    eraseFrom(link->recipient->links, link.get());
    return link;
}

struct Ended {
    AIBinder_DeathRecipient_onBinderUnlinked onUnlinked;
    void* cookie;

    void tell() const {
        if (onUnlinked != nullptr) onUnlinked(cookie);
    }
};

// Ends all `links`, a list of an object or a recipient.
void endAll(binder::DeathLinks& links) {
    std::unique_lock lock(registry().lock);
    while (!links.empty()) {
        const auto link = takeOut(links.front());
        const Ended ended{link->recipient->onUnlinked, link->cookie};
        lock.unlock();
        ended.tell();
        lock.lock();
    }
}

// Adds the link unless the object is dead already.
binder_status_t addLink(RemoteBinder& binder, AIBinder_DeathRecipient* recipient, void* cookie) try {
    const auto link = std::make_shared<DeathLink>(DeathLink{&binder, recipient, cookie});
    // In both lists or in none, when there is no memory.
    binder::DeathLinks ofBinder{link};
    binder::DeathLinks ofRecipient{link};
    std::lock_guard lock(registry().lock);
    if (!binder.isAlive()) return STATUS_DEAD_OBJECT;
    binder.links.splice(binder.links.end(), ofBinder);
    recipient->links.splice(recipient->links.end(), ofRecipient);
    return STATUS_OK;
} catch (const std::bad_alloc&) {
    return STATUS_NO_MEMORY;
}

// One obituary; false when no link is left.
bool sendNext(RemoteBinder& binder) {
    std::unique_lock lock(registry().lock);
    if (binder.links.empty()) return false;
    const auto link = takeOut(binder.links.front());
    const auto onBinderDied = link->recipient->onBinderDied;
    const Ended ended{link->recipient->onUnlinked, link->cookie};
    const auto running = link->recipient->running;
    ++running->count;
    lock.unlock();

    const bool outer = std::exchange(sRunningHere, true);
    onBinderDied(link->cookie);
    ended.tell();
    sRunningHere = outer;

    lock.lock();
    --running->count;
    registry().obituaryDone.notify_all();
    return true;
}

}  // namespace

void binder::unlinkAll(RemoteBinder& binder) {
    endAll(binder.links);
}

void binder::sendObituaries(RemoteBinder& binder) {
    while (sendNext(binder)) {
    }
}

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(AIBinder_DeathRecipient_onBinderDied onBinderDied) {
    return onBinderDied == nullptr ? nullptr : new AIBinder_DeathRecipient(onBinderDied);
}

void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    recipient->onUnlinked = onUnlinked;
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    if (recipient == nullptr) return;
    endAll(recipient->links);
    // An obituary waits neither for itself nor for another one, which may delete this one's recipient.
    if (!sRunningHere) {
        std::unique_lock lock(registry().lock);
        registry().obituaryDone.wait(lock, [&] { return recipient->running->count == 0; });
    }
    delete recipient;
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient, void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    RemoteBinder* remote = binder->remote();
    const binder_status_t status = remote != nullptr ? addLink(*remote, recipient, cookie) : STATUS_INVALID_OPERATION;
    if (status != STATUS_OK) Ended{recipient->onUnlinked, cookie}.tell();
    return status;
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient, void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    RemoteBinder* remote = binder->remote();
    if (remote == nullptr) return STATUS_INVALID_OPERATION;
    std::unique_lock lock(registry().lock);
    if (!remote->isAlive()) return STATUS_DEAD_OBJECT;
    const auto found = std::find_if(remote->links.begin(), remote->links.end(), [&](const auto& link) {
        return link->recipient == recipient && link->cookie == cookie;
    });
    if (found == remote->links.end()) return STATUS_NAME_NOT_FOUND;
    takeOut(*found);
    lock.unlock();
    Ended{recipient->onUnlinked, cookie}.tell();
    return STATUS_OK;
}
