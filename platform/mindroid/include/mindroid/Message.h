#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include <mindroid/Object.h>

namespace mindroid {

class Handler;
class Looper;
class MessageCallback;
class Runnable;

// A unit of work for a handler. Obtain one, fill it, send it once.
// The sender owns the fields until it sends; the target's looper thread owns them from then on. A message is spent once
// it was dispatched, removed, dropped by a quit or refused by a looper that is gone: it lets go of its callback, its
// object and its target then, and can't be sent again. So a callback may hold its own message.
class Message final : public Object {
public:
    [[nodiscard]] static sp<Message> obtain();
    [[nodiscard]] static sp<Message> obtain(const sp<Handler>& target);
    [[nodiscard]] static sp<Message> obtain(const sp<Handler>& target, int32_t what);
    [[nodiscard]] static sp<Message> obtain(const sp<Handler>& target, int32_t what, const sp<Object>& obj);
    [[nodiscard]] static sp<Message> obtain(const sp<Handler>& target, int32_t what, int32_t arg1, int32_t arg2);
    [[nodiscard]] static sp<Message> obtain(const sp<Handler>& target, const sp<Runnable>& callback);

    int32_t what = 0;
    int32_t arg1 = 0;
    int32_t arg2 = 0;

    sp<Object> obj;

    ~Message() override;

    // The callback runs instead of the target's handleMessage. Callback and target are fixed once the message is sent:
    // later changes are ignored with a warning.
    void setCallback(const sp<Runnable>& callback);
    [[nodiscard]] const sp<Runnable>& getCallback() const;
    void setTarget(const sp<Handler>& target);
    [[nodiscard]] const sp<Handler>& getTarget() const;

    // Posts the message to its target. False, with a warning, when there is no target, the target has no live looper,
    // or the message was sent before. Any thread.
    bool sendToTarget();

    // True for the first caller only, and only before the message is sent: whoever gets it may fill and send this
    // message. It lets several threads compete to answer one message without touching its fields. Any thread.
    [[nodiscard]] bool claim();

private:
    friend class Handler;
    friend class Looper;
    friend class MessageQueue;
    friend class Registrant;

    Message();
    [[nodiscard]] static sp<Message> create(sp<Handler> target);
    [[nodiscard]] bool wasSent() const { return mSent.load(std::memory_order_relaxed); }
    // False, with a warning, when the message was sent before.
    [[nodiscard]] bool markSent();
    void letGo();

    std::atomic<bool> mSent{false};
    std::atomic<bool> mClaimed{false};
    sp<Runnable> mRunnable;
    // Runs in place of a Runnable, for a registrant.
    sp<MessageCallback> mMessageCallback;
    sp<Handler> mTarget;
};

}  // namespace mindroid
