#pragma once

#include <device/Mutex.h>
#include <mindroid/Object.h>
#include <mindroid/Runnable.h>

#include <vector>

namespace mindroid {

class VoteBox;

// One vote in a VoteBox: up or down, down at first. Thread: any.
class Ticket : public Object {
public:
    void updateState(bool up);

private:
    friend class VoteBox;

    // Guards every ticket and every box: a ticket may be in several boxes, and a vote is rare.
    static device::Mutex sLock;

    bool mUp SUBSYS_GUARDED_BY(sLock) = false;
    // A box takes itself out of here when it dies.
    std::vector<VoteBox*> mBoxes SUBSYS_GUARDED_BY(sLock);
};

// Completes once, when it was started and every ticket is up at the same time; an empty box completes at startVote.
// The callback runs with a Boolean(true), on the thread that completed the vote, without a lock held. A ticket that
// goes down after that changes nothing. Thread: any.
class VoteBox : public Object {
public:
    ~VoteBox() override;
    void setCallback(const sp<VoteCallback>& callback);
    // Null is ignored; a ticket added twice counts once.
    void AddTicket(const sp<Ticket>& ticket);
    void startVote();

private:
    friend class Ticket;

    // The callback to run, in the one moment in which the vote completes; else null.
    [[nodiscard]] sp<VoteCallback> complete() SUBSYS_REQUIRES(Ticket::sLock);

    bool mStarted SUBSYS_GUARDED_BY(Ticket::sLock) = false;
    bool mCompleted SUBSYS_GUARDED_BY(Ticket::sLock) = false;
    std::vector<sp<Ticket>> mTickets SUBSYS_GUARDED_BY(Ticket::sLock);
    sp<VoteCallback> mCallback SUBSYS_GUARDED_BY(Ticket::sLock);
};

}  // namespace mindroid
