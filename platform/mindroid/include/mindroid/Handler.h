#pragma once

#include <mindroid/Looper.h>
#include <mindroid/Message.h>
#include <mindroid/Object.h>
#include <mindroid/Runnable.h>

#include <cstdint>

namespace mindroid {

// Receives messages on the thread of one looper. All operations: any thread; handleMessage: looper.
// Messages run in the order of their due time, first sent first run where equal.
class Handler : public Object {
public:
    // Binds to the looper of the calling thread. Without one the handler exists all the same, and sending to it fails.
    Handler();
    explicit Handler(const sp<Looper>& looper);
    ~Handler() override;

    // The base ignores the message.
    virtual void handleMessage(const sp<Message>& message);

    [[nodiscard]] sp<Message> obtainMessage();
    [[nodiscard]] sp<Message> obtainMessage(int32_t what);
    [[nodiscard]] sp<Message> obtainMessage(int32_t what, const sp<Object>& obj);
    [[nodiscard]] sp<Message> obtainMessage(int32_t what, int32_t arg1, int32_t arg2);
    [[nodiscard]] sp<Message> obtainMessage(const sp<Runnable>& callback);

    // Each answers whether the message was queued: false, with a warning, when the handler has no looper, the looper
    // has quit or the message was sent before. A time in the past counts as now; delays below 0 count as 0. The
    // message's target becomes this handler.
    bool sendMessageAtTime(const sp<Message>& message, uint64_t uptimeMillis);
    bool sendEmptyMessageDelayed(int32_t what, int64_t delayMillis);

    // Drops this handler's pending messages with the callback: when it returns, none of them will run (one under way
    // goes on). Null drops nothing.
    void removeCallbacks(const sp<Runnable>& callback);

private:
    friend class Message;

    // Takes a message that is marked as sent, and whose target this is.
    bool enqueue(Message& message, uint64_t dueTime);

    const sp<Looper> mLooper;
};

}  // namespace mindroid
