#pragma once

#include <memory>

#include <mindroid/Object.h>
#include <mindroid/Runnable.h>

namespace mindroid {

class VoteBox;

// One vote in a VoteBox: up or down, down at first. Any thread.
class Ticket : public Object {
public:
    Ticket();
    ~Ticket() override;
    void updateState(bool up);
    [[nodiscard]] bool isUp() const;

private:
    friend class VoteBox;
    struct Ballot;
    const std::shared_ptr<Ballot> mBallot;
};

// Completes once, when it was started and every ticket is up at the same time; an empty box completes at startVote.
// The callback runs with a Boolean(true), on the thread that completed the vote, without a lock held. A ticket that
// goes down after that changes nothing. Any thread.
class VoteBox : public Object {
public:
    VoteBox();
    ~VoteBox() override;
    void setCallback(const sp<VoteCallback>& callback);
    // Null is ignored; a ticket added twice counts once.
    void AddTicket(const sp<Ticket>& ticket);
    void startVote();

private:
    friend class Ticket;
    struct State;
    const std::shared_ptr<State> mState;
};

}  // namespace mindroid
