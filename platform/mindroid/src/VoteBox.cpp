#include <mindroid/VoteBox.h>

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

#include <mindroid/Boxes.h>

namespace mindroid {

namespace {

// Guards every ballot and every box: a ticket may be in several boxes, and a vote is rare.
std::mutex sLock;

}  // namespace

struct Ticket::Ballot {
    bool up = false;
    std::vector<std::weak_ptr<VoteBox::State>> boxes;
};

struct VoteBox::State {
    bool started = false;
    bool completed = false;
    std::vector<std::shared_ptr<Ticket::Ballot>> ballots;
    sp<VoteCallback> callback;

    // The callback to run, in the one moment in which the vote completes; else null. With the lock.
    [[nodiscard]] sp<VoteCallback> complete() {
        const auto isUp = [](const std::shared_ptr<Ticket::Ballot>& ballot) { return ballot->up; };
        if (!started || completed || !std::all_of(ballots.begin(), ballots.end(), isUp)) return nullptr;
        completed = true;
        return std::exchange(callback, nullptr);
    }
};

namespace {

// Without the lock.
void run(const sp<VoteCallback>& callback) {
    if (callback != nullptr) callback->onVoteComplete(new Boolean(true));
}

}  // namespace

Ticket::Ticket() : mBallot(std::make_shared<Ballot>()) {}

Ticket::~Ticket() = default;

void Ticket::updateState(bool up) {
    std::vector<sp<VoteCallback>> completed;
    {
        // Boxes that die meanwhile do so after the lock is let go.
        std::vector<std::shared_ptr<VoteBox::State>> boxes;
        const std::lock_guard lock(sLock);
        mBallot->up = up;
        for (const auto& box : mBallot->boxes) boxes.push_back(box.lock());
        for (const auto& box : boxes) {
            if (box != nullptr) completed.push_back(box->complete());
        }
    }
    for (const sp<VoteCallback>& callback : completed) run(callback);
}

bool Ticket::isUp() const {
    const std::lock_guard lock(sLock);
    return mBallot->up;
}

VoteBox::VoteBox() : mState(std::make_shared<State>()) {}

VoteBox::~VoteBox() = default;

void VoteBox::setCallback(const sp<VoteCallback>& callback) {
    sp<VoteCallback> replaced = callback;
    const std::lock_guard lock(sLock);
    mState->callback.swap(replaced);
}

void VoteBox::AddTicket(const sp<Ticket>& ticket) {
    if (ticket == nullptr) return;
    const std::lock_guard lock(sLock);
    auto& ballots = mState->ballots;
    if (std::find(ballots.begin(), ballots.end(), ticket->mBallot) != ballots.end()) return;
    auto& boxes = ticket->mBallot->boxes;
    std::erase_if(boxes, [](const auto& box) { return box.expired(); });
    ballots.push_back(ticket->mBallot);
    boxes.push_back(mState);
}

void VoteBox::startVote() {
    sp<VoteCallback> callback;
    {
        const std::lock_guard lock(sLock);
        mState->started = true;
        callback = mState->complete();
    }
    run(callback);
}

}  // namespace mindroid
