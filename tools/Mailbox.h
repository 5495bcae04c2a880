#pragma once

#include "tools/Json.h"

#include <device/Mutex.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>

namespace subsysctl {

// Carries what arrives on binder threads to the thread that waits for it. What nobody takes is kept, up to a limit,
// for a later taker: of indications the first, of answers (a watch gets those of other clients' requests) the latest.
class Mailbox {
public:
    using Clock = std::chrono::steady_clock;
    using Matches = std::function<bool(const Json&)>;
    static constexpr size_t MAX_KEPT = 10000;

    Mailbox();
    ~Mailbox();
    Mailbox(const Mailbox&) = delete;
    Mailbox& operator=(const Mailbox&) = delete;

    void putAnswer(Json answer);
    void putIndication(Json indication);
    void putDeath();
    // Ends the present and every later takeIndication. Allowed in a signal handler. Thread: any.
    void interrupt() noexcept;

    // The first answer that matches; others are dropped, since their requests are over. Empty when the server died or
    // `until` has passed. One thread at a time takes.
    std::optional<Json> takeAnswer(const Matches& matches, Clock::time_point until);
    // Empty also after interrupt().
    std::optional<Json> takeIndication(Clock::time_point until);

    [[nodiscard]] bool serverDied() const;
    [[nodiscard]] bool interrupted() const { return mInterrupted; }
    // Indications lost because too many were waiting.
    [[nodiscard]] size_t lost() const;

private:
    // False when `until` has passed.
    bool waitUntil(Clock::time_point until) const;
    std::optional<Json> popAnswer(const Matches& matches);
    std::optional<Json> popIndication();

    const int mEvent;  // an eventfd, readable when something has come
    std::atomic<bool> mInterrupted = false;
    mutable device::Mutex mMutex;
    std::deque<Json> mAnswers SUBSYS_GUARDED_BY(mMutex);
    std::deque<Json> mIndications SUBSYS_GUARDED_BY(mMutex);
    size_t mLost SUBSYS_GUARDED_BY(mMutex) = 0;
    bool mDied SUBSYS_GUARDED_BY(mMutex) = false;
};

}  // namespace subsysctl
