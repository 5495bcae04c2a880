#pragma once

#include <mindroid/Object.h>

#include <atomic>
#include <cstdint>

namespace mindroid {

class Handler;
class MessageCallback;
class Runnable;

// A unit of work for a handler: obtain one, fill it, send it once.
// The sender owns the fields until it sends; the target's looper thread owns them from then on. A message is spent once
// it was dispatched, removed, dropped by a quit or refused by a looper that is gone: it lets go of its callback, its
// object and its target then, and can't be sent again. So a callback may hold its own message.
class Message final : public Object {
public:
    // Without a target until a handler sends it.
    [[nodiscard]] static sp<Message> obtain();
    [[nodiscard]] static sp<Message> obtain(const sp<Handler>& target);

    int32_t what = 0;
    int32_t arg1 = 0;
    int32_t arg2 = 0;
    sp<Object> obj;

    ~Message() override;

    // The callback runs instead of the target's handleMessage. It is fixed once the message is sent: a later change is
    // ignored with a warning.
    void setCallback(const sp<Runnable>& callback);

    // Posts the message to its target. False, with a warning, when there is no target, the target has no live looper,
    // or the message was sent before. Thread: any.
    bool sendToTarget();

private:
    friend class Handler;
    friend class Looper;
    friend class MessageQueue;
    friend class Registrant;

    explicit Message(sp<Handler> target);
    // False, with a warning, when the message was sent before.
    [[nodiscard]] bool markSent();
    // Runs the message, on the looper's thread.
    static void dispatch(const sp<Message>& message);
    void letGo();

    std::atomic<bool> mSent{false};
    sp<Runnable> mRunnable;
    // Runs in place of a Runnable, for a registrant.
    sp<MessageCallback> mMessageCallback;
    sp<Handler> mTarget;
};

}  // namespace mindroid
