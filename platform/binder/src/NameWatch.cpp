#include "NameWatch.h"

#include "IoThread.h"
#include "Limits.h"
#include "NameFolder.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>

namespace binder {
namespace {

using Clock = std::chrono::steady_clock;

}  // namespace

NameWatch& NameWatch::instance() {
    static const auto* const instance = new std::shared_ptr<NameWatch>(new NameWatch);  // outlives all threads
    return **instance;
}

NameWatch::NameWatch() : mInotify(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {}

bool NameWatch::start(const UniqueFd& folder, OnChange onChange) {
    constexpr uint32_t EVENTS = IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF;
    if (!NameFolder::watch(folder, mInotify, EVENTS)) return false;
    if (mKey != 0) return true;
    mOnChange = onChange;
    IoThread::instance().addTicker([] { return NameWatch::instance().tick(); });
    return IoThread::instance().poller().add(shared_from_this(), EPOLLIN, mKey);
}

void NameWatch::onReady(uint32_t) {
    alignas(inotify_event) std::array<char, 4096> events;
    while (read(mInotify.get(), events.data(), events.size()) > 0) {
    }
    if (!mHasChanged) mDue = Clock::now() + CHANGE_TIME;
    mHasChanged = true;
}

// Not at once: who deletes one file may be about to delete them all.
int NameWatch::tick() {
    if (!mHasChanged) return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(mDue - Clock::now());
    if (left.count() > 0) return static_cast<int>(left.count());
    mHasChanged = !mOnChange();
    if (!mHasChanged) return -1;
    mDue = Clock::now() + RETRY_TIME;
    return static_cast<int>(RETRY_TIME.count());
}

}  // namespace binder
