#include "DeathRecipient.h"

#include "RemoteBinder.h"

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

using binder::DeathLink;
using binder::Links;
using binder::RemoteBinder;
using binder::sLinksLock;

struct AIBinder_DeathRecipient {
    explicit AIBinder_DeathRecipient(AIBinder_DeathRecipient_onBinderDied died) : onBinderDied(died) {}

    const AIBinder_DeathRecipient_onBinderDied onBinderDied;
    AIBinder_DeathRecipient_onBinderUnlinked onUnlinked = nullptr;
    Links links SUBSYS_GUARDED_BY(sLinksLock);
    // Obituaries that are running; the count outlives the recipient that one of them deletes.
    const std::shared_ptr<std::atomic<int>> running = std::make_shared<std::atomic<int>>(0);
};

namespace {

// Whether an obituary runs on this thread.
thread_local bool tRunningHere = false;

void eraseFrom(Links& links, const DeathLink* link) {
    std::erase_if(links, [link](const auto& each) { return each.get() == link; });
}

// Takes a link out of both lists.
std::shared_ptr<DeathLink> takeOut(std::shared_ptr<DeathLink> link) SUBSYS_REQUIRES(sLinksLock) {
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

// Ends all links of an object or a recipient.
void endAll(auto& owner) {
    device::MutexLock lock(sLinksLock);
    while (!owner.links.empty()) {
        const auto link = takeOut(owner.links.front());
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
    Links ofBinder{link};
    Links ofRecipient{link};
    const device::MutexLock lock(sLinksLock);
    if (!binder.isAlive()) return STATUS_DEAD_OBJECT;
    binder.links.splice(binder.links.end(), ofBinder);
    recipient->links.splice(recipient->links.end(), ofRecipient);
    return STATUS_OK;
} catch (const std::bad_alloc&) {
    return STATUS_NO_MEMORY;
}

// One obituary; false when no link is left.
bool sendNext(RemoteBinder& binder) {
    device::MutexLock lock(sLinksLock);
    if (binder.links.empty()) return false;
    const auto link = takeOut(binder.links.front());
    const auto onBinderDied = link->recipient->onBinderDied;
    const Ended ended{link->recipient->onUnlinked, link->cookie};
    const auto running = link->recipient->running;
    ++*running;
    lock.unlock();

    const bool outer = std::exchange(tRunningHere, true);
    onBinderDied(link->cookie);
    ended.tell();
    tRunningHere = outer;

    --*running;
    running->notify_all();
    return true;
}

}  // namespace

void binder::unlinkAll(RemoteBinder& binder) {
    endAll(binder);
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
    endAll(*recipient);
    // An obituary waits neither for itself nor for another one, which may delete this one's recipient.
    if (!tRunningHere) {
        for (int count = *recipient->running; count != 0; count = *recipient->running) recipient->running->wait(count);
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
    device::MutexLock lock(sLinksLock);
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
