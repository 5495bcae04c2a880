#include "tools/Mailbox.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <utility>

namespace subsysctl {

namespace {

int newEvent() {
    const int event = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (event < 0) throw std::system_error(errno, std::generic_category(), "eventfd");
    return event;
}

void post(int event) noexcept {
    const uint64_t count = 1;
    const ssize_t written = write(event, &count, sizeof(count));
    static_cast<void>(written);  // full means that the reader is awake already
}

int millisUntil(Mailbox::Clock::time_point until) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Mailbox::Clock::now()).count();
    return static_cast<int>(std::clamp<decltype(left)>(left, 0, 60000));
}

std::optional<Json> popFront(std::deque<Json>& queue) {
    if (queue.empty()) return std::nullopt;
    Json first = std::move(queue.front());
    queue.pop_front();
    return first;
}

}  // namespace

Mailbox::Mailbox() : mEvent(newEvent()) {}

Mailbox::~Mailbox() {
    close(mEvent);
}

void Mailbox::putAnswer(Json answer) {
    const device::MutexLock lock(mMutex);
    if (mAnswers.size() == MAX_KEPT) mAnswers.pop_front();
    mAnswers.push_back(std::move(answer));
    post(mEvent);
}

void Mailbox::putIndication(Json indication) {
    const device::MutexLock lock(mMutex);
    if (mIndications.size() < MAX_KEPT) {
        mIndications.push_back(std::move(indication));
        post(mEvent);
    } else {
        ++mLost;
    }
}

void Mailbox::putDeath() {
    const device::MutexLock lock(mMutex);
    mDied = true;
    post(mEvent);
}

void Mailbox::interrupt() noexcept {
    mInterrupted = true;
    post(mEvent);
}

bool Mailbox::waitUntil(Clock::time_point until) const {
    pollfd waited{mEvent, POLLIN, 0};
    poll(&waited, 1, millisUntil(until));
    uint64_t count = 0;
    const bool arrived = read(mEvent, &count, sizeof(count)) == sizeof(count);
    return arrived || Clock::now() < until;
}

std::optional<Json> Mailbox::takeAnswer(const Matches& matches, Clock::time_point until) {
    for (bool inTime = true;; inTime = waitUntil(until)) {
        const bool died = serverDied();  // asked first: an answer sent before the death is found
        if (auto answer = popAnswer(matches)) return answer;
        if (died || !inTime) return std::nullopt;
    }
}

std::optional<Json> Mailbox::takeIndication(Clock::time_point until) {
    for (bool inTime = true;; inTime = waitUntil(until)) {
        const bool died = serverDied();
        if (mInterrupted) return std::nullopt;
        if (auto indication = popIndication()) return indication;
        if (died || !inTime) return std::nullopt;
    }
}

std::optional<Json> Mailbox::popAnswer(const Matches& matches) {
    const device::MutexLock lock(mMutex);
    while (auto answer = popFront(mAnswers)) {
        if (matches(*answer)) return answer;
    }
    return std::nullopt;
}

std::optional<Json> Mailbox::popIndication() {
    const device::MutexLock lock(mMutex);
    return popFront(mIndications);
}

bool Mailbox::serverDied() const {
    const device::MutexLock lock(mMutex);
    return mDied;
}

size_t Mailbox::lost() const {
    const device::MutexLock lock(mMutex);
    return mLost;
}

}  // namespace subsysctl
