#include <mindroid/VoteBox.h>

#include <mindroid/Boxes.h>

#include <utility>

namespace mindroid {

namespace {

// Without the lock.
void run(const sp<VoteCallback>& callback) {
    if (callback != nullptr) callback->onVoteComplete(new Boolean(true));
}

}  // namespace

constinit device::Mutex Ticket::sLock;

void Ticket::updateState(bool up) {
    std::vector<sp<VoteCallback>> completed;
    {
        const device::MutexLock lock(sLock);
        mUp = up;
        for (VoteBox* box : mBoxes) completed.push_back(box->complete());
    }
    for (const sp<VoteCallback>& callback : completed) run(callback);
}

VoteBox::~VoteBox() {
    const device::MutexLock lock(Ticket::sLock);
    for (const sp<Ticket>& ticket : mTickets) std::erase(ticket->mBoxes, this);
}

void VoteBox::setCallback(const sp<VoteCallback>& callback) {
    // What it replaces goes after the lock was let go.
    sp<VoteCallback> replaced = callback;
    const device::MutexLock lock(Ticket::sLock);
    std::swap(mCallback, replaced);
}

void VoteBox::AddTicket(const sp<Ticket>& ticket) {
    if (ticket == nullptr) return;
    const device::MutexLock lock(Ticket::sLock);
    mTickets.push_back(ticket);
    ticket->mBoxes.push_back(this);
}

void VoteBox::startVote() {
    sp<VoteCallback> callback;
    {
        const device::MutexLock lock(Ticket::sLock);
        mStarted = true;
        callback = complete();
    }
    run(callback);
}

sp<VoteCallback> VoteBox::complete() {
    if (!mStarted || mCompleted) return nullptr;
    for (const sp<Ticket>& ticket : mTickets) {
        if (!ticket->mUp) return nullptr;
    }
    mCompleted = true;
    return std::exchange(mCallback, nullptr);
}

}  // namespace mindroid
